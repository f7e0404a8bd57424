#!/usr/bin/env bash
# drivers.sh BUILD SOURCE: driver modules are loaded from the folder beside the library, and from nowhere else.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
install_build
qvadmin=$prefix/bin/qvadmin
modules=$(dirname "$(find "$prefix" -name postgresql.so)")
libraries=$(cd "$modules/../../.." && pwd)
[ -e "$libraries/libqvdbaccess.so.0.2" ] || { echo "the drivers are not beside the library: $modules"; exit 1; }

# expect WORDS: opening a PostgreSQL database where no server is fails with these words.
expect() {
  local text
  text=$(cd "$work/elsewhere" && "$qvadmin" --db "postgresql://user@/x?host=$work/elsewhere&connect_timeout=1" user count 2>&1) &&
    { echo "opened a database that is not there"; exit 1; }
  [[ $text == *"$1"* ]] || { echo "expected \"$1\", got: $text"; exit 1; }
}

mkdir -p "$work/elsewhere/quorvel/0.2/drivers"
expect 'connection to server'
mv "$modules/postgresql.so" "$work/elsewhere/quorvel/0.2/drivers"
expect 'the database driver for "postgresql:" is not installed; install the Debian package libquorvel-postgresql'
cp "$work/elsewhere/quorvel/0.2/drivers/postgresql.so" "$work/elsewhere"
LD_LIBRARY_PATH="$libraries:$work/elsewhere" expect 'is not installed'
echo "not a library" >"$modules/postgresql.so"
expect "the database driver $modules/postgresql.so cannot be loaded"
ln -sf "$work/elsewhere/postgresql.so" "$modules/postgresql.so"
expect 'connection to server'

# SQLite needs no module.
rm "$modules"/*.so
"$qvadmin" --db "sqlite:$work/directory.db" db init >/dev/null 2>&1
