#!/usr/bin/env bash
# accounts.sh ROOT QVADMIN: the statements of docs/connections.md make accounts that can do what the page says, and no
# more. On the servers of $QV_TEST_SERVERS.
set -euo pipefail
page=$1/docs/connections.md
qvadmin=$2
work=$(mktemp -d)
export HOME=$work

# The first SQL of a section, with a password in place of the dots.
statements() {
  sed -n "/^## $1\$/,/^## /p" "$page" | sed -n '/^```sql/,/^```$/p' | sed "/^\`\`\`/d; s/'\.\.\.'/'secret'/"
}

mapfile -t postgresql <"$QV_TEST_SERVERS/postgresql"
mapfile -t mariadb <"$QV_TEST_SERVERS/mariadb"
postgresql_do() { psql -q -h "${postgresql[0]}" -p "${postgresql[1]}" -U qv -d postgres -v ON_ERROR_STOP=1 "$@"; }
mariadb_do() { env -u MYSQL_PWD mariadb --no-defaults -S "${mariadb[0]}" -u root "$@"; }
accounts="quorvel_owner quorvel quorvel_reader"
clean() {
  postgresql_do -c 'DROP DATABASE IF EXISTS directory' 2>/dev/null || true
  mariadb_do -e 'DROP DATABASE IF EXISTS directory' || true
  for account in $accounts; do
    postgresql_do -c "DROP ROLE IF EXISTS $account" 2>/dev/null || true
    mariadb_do -e "DROP USER IF EXISTS $account" || true
  done
  rm -rf "$work"
}
trap clean EXIT

fails_with() {
  local wanted=$1 code=0
  shift
  "$@" >/dev/null 2>"$work/errors" || code=$?
  if [ $code -ne "$wanted" ]; then
    echo "ended with $code, not $wanted: $* ($(cat "$work/errors"))"
    exit 1
  fi
}

# url ACCOUNT gives a URL.
try_accounts() {
  fails_with 6 "$qvadmin" --db "$(url quorvel)" db init
  "$qvadmin" --db "$(url quorvel_owner)" db init
  "$qvadmin" --db "$(url quorvel)" db status
  "$qvadmin" --db "$(url quorvel)" view create Company
  "$qvadmin" --db "$(url quorvel)" group create /Company/Sales
  "$qvadmin" --db "$(url quorvel)" user create amy --department /Company/Sales
  "$qvadmin" --db "$(url quorvel)" message purge --before 2020-01-01 --yes
  "$qvadmin" --db "$(url quorvel_reader)" user exists amy
  fails_with 6 "$qvadmin" --db "$(url quorvel_reader)" user create rory
  "$qvadmin" --db "$(url quorvel_reader)" db copy "sqlite:$work/$1.db"
  "$qvadmin" --db "$(url quorvel)" user delete amy --yes
}

statements PostgreSQL >"$work/postgresql.sql"
postgresql_do -f "$work/postgresql.sql"
url() { echo "postgresql://$1@/directory?host=${postgresql[0]}&port=${postgresql[1]}"; }
try_accounts postgresql

statements "MariaDB and MySQL" >"$work/mariadb.sql"
mariadb_do <"$work/mariadb.sql"
export MYSQL_PWD=secret
url() { echo "mysql://$1@127.0.0.1:${mariadb[1]}/directory"; }
try_accounts mariadb
