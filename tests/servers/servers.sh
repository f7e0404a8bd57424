#!/usr/bin/env bash
# servers.sh start FOLDER [postgresql|mariadb|sqlserver], servers.sh stop FOLDER: the engines that tests need besides the
# program's own, or one of them, in a folder of their own, on sockets and the loopback. FOLDER gets one file per engine
# that says where it is. What cannot be had is a failure.
set -euo pipefail

action=$1
folder=$2
wanted=${3:-postgresql mariadb sqlserver}

say() { echo "servers: $*" >&2; }

# Servers refuse to run as root; then they run as the user that their package made.
as() {
  local user=$1
  shift
  if [ "$(id -u)" -eq 0 ]; then runuser -u "$user" -- "$@"; else "$@"; fi
}

# A port that nobody listens on now.
free_port() {
  local port
  for _ in $(seq 100); do
    port=$((20000 + RANDOM % 20000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      return
    fi
  done
  say "no free port"
  return 1
}

need() {
  say "$1 is missing (Debian package $2); tools/install-packages test brings it"
  exit 1
}

# A key and a certificate that vouches for itself, for a server that encrypts: server.key and server.crt.
make_certificate() {
  local user=$1 data=$2
  command -v openssl >/dev/null || need openssl openssl
  as "$user" openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=localhost \
    -addext 'subjectAltName=DNS:localhost,IP:127.0.0.1' -keyout "$data/server.key" -out "$data/server.crt" \
    2>"$data/openssl.log" || { cat "$data/openssl.log" >&2; exit 1; }
}

# What a PostgreSQL that was killed leaves behind; one that has stopped has taken the file with it.
drop_shared_memory() {
  if [ -e "$1" ]; then ipcrm -m "$(sed -n '7s/.* //p' "$1")" 2>/dev/null || true; fi
}

stop() {
  local pid file
  for file in "$folder"/*.pid; do
    [ -e "$file" ] || continue
    pid=$(head -n 1 "$file")
    if kill -TERM "$pid" 2>/dev/null; then
      for _ in $(seq 200); do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.05
      done
      kill -KILL "$pid" 2>/dev/null || true
    fi
    rm -f "$file"
  done
  if [ -e "$folder/data" ]; then
    drop_shared_memory "$(cat "$folder/data")/postgresql/db/postmaster.pid"
    rm -rf "$(cat "$folder/data")"
  fi
  rm -rf "$folder"
}

start_postgresql() {
  local bin data=$1/postgresql port
  bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
  [ -n "$bin" ] && [ -x "$bin/initdb" ] || need initdb postgresql
  port=$(free_port)
  mkdir "$data"
  if [ "$(id -u)" -eq 0 ]; then chown postgres: "$data"; fi
  as postgres "$bin/initdb" -D "$data/db" -U qv -A trust -E UTF8 --locale=C.UTF-8 --no-sync >"$data/initdb.log" 2>&1 ||
    { cat "$data/initdb.log" >&2; exit 1; }
  make_certificate postgres "$data"
  cat >>"$data/db/postgresql.conf" <<END
ssl = on
ssl_cert_file = '$data/server.crt'
ssl_key_file = '$data/server.key'
listen_addresses = '127.0.0.1'
port = $port
unix_socket_directories = '$data'
fsync = off
full_page_writes = off
synchronous_commit = off
shared_buffers = 64MB
dynamic_shared_memory_type = mmap
max_connections = 60
END
  as postgres "$bin/pg_ctl" -D "$data/db" -l "$data/log" -w -s start || { cat "$data/log" >&2; exit 1; }
  head -n 1 "$data/db/postmaster.pid" >"$folder/postgresql.pid"
  printf '%s\n' "$data" "$port" >"$folder/postgresql"
}

start_mariadb() {
  local data=$1/mariadb port
  command -v mariadbd >/dev/null || [ -x /usr/sbin/mariadbd ] || need mariadbd mariadb-server
  port=$(free_port)
  mkdir "$data"
  if [ "$(id -u)" -eq 0 ]; then chown mysql: "$data"; fi
  as mysql mariadb-install-db --no-defaults --datadir="$data/db" --auth-root-authentication-method=normal --skip-test-db \
    --skip-name-resolve >"$data/install.log" 2>&1 || { cat "$data/install.log" >&2; exit 1; }
  make_certificate mysql "$data"
  as mysql env PATH="$PATH:/usr/sbin" mariadbd --no-defaults --datadir="$data/db" --socket="$data/s" \
    --pid-file="$data/pid" --port="$port" --bind-address=127.0.0.1 --lower-case-table-names=1 \
    --character-set-server=utf8mb4 --collation-server=utf8mb4_general_ci --innodb-buffer-pool-size=128M \
    --innodb-log-file-size=32M --innodb-flush-log-at-trx-commit=0 --innodb-flush-method=nosync \
    --ssl-cert="$data/server.crt" --ssl-key="$data/server.key" --skip-innodb-doublewrite --skip-innodb-file-per-table --skip-innodb-stats-persistent --log-error="$data/log" >"$data/out" 2>&1 &
  for _ in $(seq 600); do
    if mariadb --no-defaults -S "$data/s" -u root -e "CREATE USER 'qv'@'127.0.0.1' IDENTIFIED BY 'secret'; GRANT ALL ON *.* TO 'qv'@'127.0.0.1'" 2>/dev/null; then
      cp "$data/pid" "$folder/mariadb.pid"
      printf '%s\n' "$data/s" "$port" >"$folder/mariadb"
      return
    fi
    sleep 0.05
  done
  say "mariadbd does not answer"
  cat "$data/log" >&2
  exit 1
}

# Not the engine, which cannot be had here: a responder that speaks its protocol and refuses what its grammar does not
# take, in front of SQLite. It is the Debian Python's, whose modules other interpreters do not find.
start_sqlserver() {
  local data=$1/sqlserver pid
  /usr/bin/python3 -c 'import sqlglot' 2>/dev/null || need "the Python module sqlglot" python3-sqlglot
  mkdir "$data"
  /usr/bin/python3 "$(dirname "$0")/tds_responder.py" --folder "$data" >"$data/log" 2>&1 </dev/null &
  pid=$!
  echo "$pid" >"$folder/sqlserver.pid"
  for _ in $(seq 200); do
    if [ -s "$data/port" ]; then
      printf '%s\n' 127.0.0.1 "$(cat "$data/port")" >"$folder/sqlserver"
      return
    fi
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.05
  done
  say "the responder for SQL Server does not answer"
  cat "$data/log" >&2
  exit 1
}

case $action in
  start)
    stop
    mkdir -p "$folder"
    data=$(mktemp -d "${TMPDIR:-/tmp}/qv-servers-XXXXXX")
    chmod 755 "$data"
    echo "$data" >"$folder/data"
    for engine in $wanted; do
      "start_$engine" "$data"
    done
    ;;
  stop) stop ;;
  *)
    say "start or stop, not '$action'"
    exit 2
    ;;
esac
