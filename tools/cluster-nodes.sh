# shellcheck shell=bash
# The servers of tools/cluster-check, which reads this file: three Galera nodes, or a PostgreSQL primary and its standby,
# in the folder $work, on sockets and the loopback. Each engine has the same functions:
#
#   ENGINE_start         makes the nodes and an empty database; sets "nodes", and "url", which has a list of all hosts
#   ENGINE_serving       prints the node that commands go to
#   ENGINE_kill NODE     ends all its processes at once, as a machine does that loses its power
#   ENGINE_take_over     makes another node serve, where that does not come by itself
#   ENGINE_rejoin NODE   brings a killed node back and waits until it has caught up
#   ENGINE_sql NODE SQL  prints the rows that this very node has, once it has caught up with the others
#   ENGINE_messages N    prints the statements that make N old messages, each with an attachment and two receipts
#   ENGINE_stop          ends whatever runs

# Waits long: other work may have the machine at the same time.
patience=180

# What $url and the servers' own client programs need beside it.
export MYSQL_PWD=secret

# Servers refuse to run as root; then they run as the user that their package made.
as() {
    local user=$1
    shift
    if [ "$(id -u)" -eq 0 ]; then runuser -u "$user" -- "$@"; else "$@"; fi
}

folder_for() {
    mkdir -p "$2"
    if [ "$(id -u)" -eq 0 ]; then chown "$1": "$2"; fi
}

# Sets "port" to one that nobody listens on now, and that was not given before. Below those that systems take for
# outgoing connections.
taken_ports=" "
new_port() {
    for _ in $(seq 200); do
        port=$((20000 + RANDOM % 12000))
        case $taken_ports in *" $port "*) continue ;; esac
        if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
            taken_ports+="$port "
            return
        fi
    done
    give_up "no free port"
}

# wait_until COMMAND...: until it succeeds; fails when that takes too long.
wait_until() {
    local end=$((SECONDS + patience))
    until "$@" 2>/dev/null; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.1
    done
}

# ---- Galera

galera_need() {
    need mariadbd mariadb-server
    need mariadb-install-db mariadb-server
    need mariadb mariadb-client
    need rsync rsync
    need ss iproute2
    need ps procps
    provider=/usr/lib/galera/libgalera_smm.so
    [ -e "$provider" ] || give_up "$provider is missing (Debian package galera-4)"
}

galera_start() {
    local node list="" base="$work/galera"
    galera_need
    declare -ga galera_port galera_group galera_transfer galera_increment galera_session
    nodes=(1 2 3)
    galera_members=""
    folder_for mysql "$base"
    for node in "${nodes[@]}"; do
        folder_for mysql "$base/$node"
        new_port && galera_port[node]=$port
        new_port && galera_group[node]=$port
        new_port && galera_transfer[node]=$port
        new_port && galera_increment[node]=$port
        list+="${list:+,}127.0.0.1:${galera_port[node]}"
        galera_members+="${galera_members:+,}127.0.0.1:${galera_group[node]}"
    done
    url="mysql://qv@$list/directory?wsrep_sync_wait=1"
    as mysql mariadb-install-db --no-defaults --datadir="$base/1/data" --auth-root-authentication-method=normal \
        --skip-test-db --skip-name-resolve >"$base/install.log" 2>&1 || give_up_with "$base/install.log"
    # The others get all of it from a node that is there.
    folder_for mysql "$base/2/data"
    folder_for mysql "$base/3/data"
    galera_run 1 "gcomm://"
    galera_run 2 "gcomm://$galera_members"
    galera_run 3 "gcomm://$galera_members"
    galera_admin 1 "CREATE DATABASE directory; CREATE USER 'qv'@'127.0.0.1' IDENTIFIED BY '$MYSQL_PWD';
        GRANT ALL ON directory.* TO 'qv'@'127.0.0.1'"
}

galera_options() {
    local node=$1 base="$work/galera/$1" increment="ist.recv_addr=127.0.0.1:${galera_increment[$1]}"
    options=(--no-defaults --datadir="$base/data" --socket="$base/s" --pid-file="$base/pid"
        --port="${galera_port[node]}" --bind-address=127.0.0.1 --lower-case-table-names=1
        --character-set-server=utf8mb4 --innodb-buffer-pool-size=32M --innodb-log-file-size=8M
        --innodb-flush-log-at-trx-commit=0 --binlog-format=ROW --default-storage-engine=InnoDB
        --innodb-autoinc-lock-mode=2 --wsrep-on=ON --wsrep-provider="$provider" --wsrep-cluster-name=qv
        --wsrep-node-name="n$node" --wsrep-node-address=127.0.0.1
        --wsrep-node-incoming-address="127.0.0.1:${galera_port[node]}" --wsrep-sst-method=rsync
        --wsrep-sst-receive-address="127.0.0.1:${galera_transfer[node]}"
        --wsrep-provider-options="gmcast.listen_addr=tcp://127.0.0.1:${galera_group[node]};$increment;gcache.size=64M")
}

# galera_run NODE ADDRESS [OPTION]: starts the node and waits until it takes statements. In a session of its own, by
# which its helpers are found later.
galera_run() {
    local node=$1 options
    galera_options "$node"
    if [ "$(id -u)" -eq 0 ]; then
        setsid runuser -u mysql -- "$(command -v mariadbd)" "${options[@]}" --wsrep-cluster-address="$2" ${3:+"$3"} \
            --log-error="$work/galera/$node/log.err" >"$work/galera/$node.out" 2>&1 &
    else
        setsid mariadbd "${options[@]}" --wsrep-cluster-address="$2" ${3:+"$3"} \
            --log-error="$work/galera/$node/log.err" >"$work/galera/$node.out" 2>&1 &
    fi
    galera_session[node]=$!
    disown
    wait_until galera_is_ready "$node" || give_up_with "$work/galera/$node/log.err"
}

galera_is_ready() {
    [ "$(galera_admin "$1" "SHOW STATUS LIKE 'wsrep_ready'")" = $'wsrep_ready\tON' ] &&
        [ "$(galera_admin "$1" "SHOW STATUS LIKE 'wsrep_local_state_comment'")" = $'wsrep_local_state_comment\tSynced' ]
}

# As another node sees it: one that was cut off learns of it late.
galera_is_whole() {
    [ "$(galera_admin 2 "SHOW STATUS LIKE 'wsrep_cluster_size'")" = $'wsrep_cluster_size\t3' ] && galera_is_ready 1
}

# By the node's socket, as its administrator.
galera_admin() {
    MYSQL_PWD='' mariadb --no-defaults -S "$work/galera/$1/s" -u root -N -e "$2"
}

galera_serving() { echo 1; }

galera_kill() {
    galera_signal KILL "$1"
    unset "galera_session[$1]"
}

# To the node and its helpers.
galera_signal() {
    local pids
    pids=$(ps -o pid= -s "${galera_session[$2]}" || true)
    # shellcheck disable=SC2086  # several pids
    [ -z "$pids" ] || kill "-$1" $pids 2>/dev/null || true
}

galera_take_over() { :; }

# As the service of the package does it: where the node stands is read from its files first, so that it gets what it has
# missed, and not everything.
galera_rejoin() {
    local options position
    galera_options "$1"
    as mysql "$(command -v mariadbd)" "${options[@]}" --wsrep-cluster-address="gcomm://$galera_members" \
        --wsrep-recover --log-error="$work/galera/$1/recovery.err" >"$work/galera/$1.out" 2>&1 ||
        give_up_with "$work/galera/$1.out"
    position=$(sed -n 's/.*WSREP: Recovered position: *//p' "$work/galera/$1/recovery.err" | tail -n 1)
    galera_run "$1" "gcomm://$galera_members" "--wsrep-start-position=$position"
}

galera_sql() { galera_admin "$1" "SET SESSION wsrep_sync_wait=1; USE directory; $2"; }

galera_messages() {
    echo "INSERT INTO kel_Msg (Col_SendDate) SELECT '2013-05-07 09:03:00' FROM seq_1_to_$1;
        INSERT INTO kel_Msg_AttachMent (Col_MsgID) SELECT Col_ID FROM kel_Msg;
        INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg;
        INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg"
}

galera_stop() {
    local node
    for node in "${!galera_session[@]}"; do
        galera_kill "$node"
    done
}

# ---- PostgreSQL

postgresql_need() {
    pg_bin=$(find /usr/lib/postgresql -maxdepth 2 -name bin 2>/dev/null | sort -V | tail -n 1)
    [ -x "$pg_bin/initdb" ] || give_up "initdb is missing (Debian package postgresql)"
}

postgresql_start() {
    local base="$work/postgresql" node list=""
    postgresql_need
    declare -ga pg_port pg_pid
    nodes=(1 2)
    pg_primary=1
    folder_for postgres "$base"
    for node in "${nodes[@]}"; do
        new_port && pg_port[node]=$port
        list+="${list:+,}127.0.0.1:${pg_port[node]}"
    done
    url="postgresql://qv@$list/directory?target_session_attrs=read-write"
    as postgres "$pg_bin/initdb" -D "$base/1" -U qv -A trust -E UTF8 --locale=C.UTF-8 --no-sync >"$base/initdb.log" 2>&1 ||
        give_up_with "$base/initdb.log"
    # Shared memory in files, which go with the folder.
    postgresql_configure 1 "listen_addresses = '127.0.0.1'" "unix_socket_directories = '$base'" "fsync = off" \
        "shared_buffers = 64MB" "max_connections = 30" "dynamic_shared_memory_type = mmap"
    postgresql_run 1
    postgresql_admin 1 postgres "CREATE DATABASE directory"
    postgresql_rejoin 2
}

# postgresql_configure NODE LINE...: the last line of a setting holds.
postgresql_configure() {
    local file="$work/postgresql/$1/postgresql.conf" node=$1
    shift
    printf '%s\n' "$@" "port = ${pg_port[node]}" | as postgres tee -a "$file" >/dev/null
}

postgresql_run() {
    as postgres "$pg_bin/pg_ctl" -D "$work/postgresql/$1" -l "$work/postgresql/$1.log" -t "$patience" -w -s start ||
        give_up_with "$work/postgresql/$1.log"
    pg_pid[$1]=$(head -n 1 "$work/postgresql/$1/postmaster.pid")
}

postgresql_admin() { "$pg_bin/psql" -X -q -A -t -h "$work/postgresql" -p "${pg_port[$1]}" -U qv -d "$2" -c "$3"; }

postgresql_serving() { echo "$pg_primary"; }

postgresql_kill() {
    local pid=${pg_pid[$1]} children memory
    memory=$(sed -n '7s/.* //p' "$work/postgresql/$1/postmaster.pid")
    kill -STOP "$pid" # so that it starts nobody anew for those who die first
    children=$(cat "/proc/$pid/task/$pid/children")
    # shellcheck disable=SC2086  # several pids
    kill -KILL $children "$pid" 2>/dev/null || true
    unset "pg_pid[$1]"
    # Nobody would start in this folder again, and remove it.
    ipcrm -m "$memory" 2>/dev/null || true
}

# A second goes by until somebody notices.
postgresql_take_over() {
    local heir=$((3 - pg_primary))
    sleep 1
    as postgres "$pg_bin/pg_ctl" -D "$work/postgresql/$heir" -t "$patience" -w -s promote ||
        give_up_with "$work/postgresql/$heir.log"
    pg_primary=$heir
}

# As a new standby. From then on, what the primary has acknowledged is on the standby's disk too. The setting must not be
# on the standby itself: promoted, it would wait for a standby of its own.
postgresql_rejoin() {
    local base="$work/postgresql"
    rm -rf "${base:?}/$1"
    as postgres "$pg_bin/pg_basebackup" -h "$base" -p "${pg_port[$pg_primary]}" -U qv -D "$base/$1" -R -X stream \
        --checkpoint=fast --no-sync >"$base/$1.copy" 2>&1 || give_up_with "$base/$1.copy"
    postgresql_configure "$1" "synchronous_standby_names = ''"
    postgresql_run "$1"
    postgresql_configure "$pg_primary" "synchronous_standby_names = '*'"
    postgresql_admin "$pg_primary" postgres "SELECT pg_reload_conf()" >/dev/null
    wait_until postgresql_is_synchronous || give_up_with "$base/$1.log"
}

postgresql_is_synchronous() {
    [ "$(postgresql_admin "$pg_primary" postgres "SELECT sync_state FROM pg_stat_replication")" = sync ]
}

postgresql_sql() {
    if [ "$1" != "$pg_primary" ]; then
        local position
        position=$(postgresql_admin "$pg_primary" directory "SELECT pg_current_wal_lsn()")
        wait_until postgresql_has "$1" "$position" || give_up "the standby does not catch up"
    fi
    postgresql_admin "$1" directory "$2"
}

postgresql_has() { [ "$(postgresql_admin "$1" directory "SELECT pg_last_wal_replay_lsn() >= '$2'")" = t ]; }

postgresql_messages() {
    echo "INSERT INTO kel_Msg (Col_SendDate) SELECT '2013-05-07 09:03:00' FROM generate_series(1, $1);
        INSERT INTO kel_Msg_AttachMent (Col_MsgID) SELECT Col_ID FROM kel_Msg;
        INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg;
        INSERT INTO kel_Msg_Rece (Col_MsgID) SELECT Col_ID FROM kel_Msg"
}

postgresql_stop() {
    local node
    for node in "${!pg_pid[@]}"; do
        postgresql_kill "$node"
    done
}
