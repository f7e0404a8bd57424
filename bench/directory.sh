#!/usr/bin/env bash
# bench/directory.sh QVADMIN SERVERS [PEOPLE]: what an administrator's bulk work costs on SQLite, PostgreSQL and MariaDB,
# as a table. SERVERS is the folder of tests/servers/servers.sh; PEOPLE (100000) is how many are imported. Of each run:
# the processor time of the console and of the server, and the wall clock, in seconds.
set -euo pipefail

qvadmin=$(realpath "$1")
servers=$(realpath "$2")
people=${3:-100000}

work=$(mktemp -d "${TMPDIR:-/tmp}/qv-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
export XDG_CONFIG_HOME=$work XDG_DATA_HOME=$work XDG_STATE_HOME=$work

# People with seven columns, in 200 departments of groups of three levels.
people_file() {
  awk -v count="$1" 'BEGIN { print "login,name,email,mobile,sex,title,department"
    for (i = 1; i <= count; ++i)
      printf "user%06d,Person Number %d,user%d@example.org,+44 7700 %06d,%d,Clerk,Office %d/Area %d/Team %d\n",
             i, i, i, i, i % 3, i % 5, i % 25, i % 200 }' >"$2"
}

new_database() {
  local name=bench_$$_$((++databases))
  case $engine in
    sqlite) QVADMIN_DB=sqlite:$work/$name.db ;;
    postgresql)
      psql -q -h "${server[0]}" -p "${server[1]}" -U qv -d postgres -c "CREATE DATABASE $name"
      QVADMIN_DB="postgresql://qv@/$name?host=${server[0]}&port=${server[1]}"
      ;;
    mariadb)
      mariadb --no-defaults -S "${server[0]}" -u root -e "CREATE DATABASE $name"
      QVADMIN_DB="mysql://root@localhost/$name?socket=${server[0]}"
      ;;
  esac
  export QVADMIN_DB
  "$qvadmin" -q db init
}

# Seconds of processor time that the server has used; a PostgreSQL counts those of a connection once it has ended.
server_time() {
  if [ "$engine" = sqlite ]; then echo 0; return; fi
  awk -v ticks="$(getconf CLK_TCK)" '{ sub(/.*\) /, ""); print ($12 + $13 + $14 + $15) / ticks }' \
    "/proc/$(head -n 1 "$servers/$engine.pid")/stat"
}

# measure NAME WORDS...: runs the console, prints a line of the table.
measure() {
  local name=$1 before after
  shift
  before=$(server_time)
  TIMEFORMAT='%U %S %R'
  { time "$qvadmin" "$@" >out 2>err; } 2>times || { cat err >&2; exit 1; }
  sleep 0.3
  after=$(server_time)
  awk -v name="$name" -v engine="$engine" -v server="$before $after" '{ split(server, s)
    printf "| %s | %s | %.2f | %s | %.2f |\n", name, engine, $1 + $2,
           engine == "sqlite" ? "-" : sprintf("%.2f", s[2] - s[1]), $3 }' times
}

latest_entry() { "$qvadmin" audit list --limit 1 -o plain | cut -f 1; }

databases=0
people_file "$people" people.csv
people_file 12000 few.csv
printf '| work | engine | console | server | wall |\n|---|---|---:|---:|---:|\n'
for engine in sqlite postgresql mariadb; do
  if [ "$engine" != sqlite ]; then mapfile -t server <"$servers/$engine"; fi
  new_database
  measure "import of $people people" user import people.csv
  measure "export" export "$engine.jsonl"
  measure "undo of the import" audit undo "$(latest_entry)" --yes
  measure "import of the export" import "$engine.jsonl"
  new_database
  sync="--departments Main --make-view"
  measure "first import of 12,000 people" user import few.csv $sync
  measure "nothing to change: user import --sync" user import few.csv --sync --scope /Main --departments Main
  grep -q " 12000 unchanged" err || { cat err >&2; exit 1; }
done
