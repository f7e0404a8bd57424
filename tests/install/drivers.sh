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

# The parts of the console that few commands need are loaded for those, from beside the libraries alone.
parts=$libraries/quorvel/0.2/console
[ -e "$parts/http.so" ] && [ -e "$parts/edit.so" ] || { echo "parts of the console are missing in $parts"; exit 1; }
if readelf -dW "$qvadmin" | grep -E 'NEEDED.*lib(microhttpd|gnutls|edit)\.'; then
  echo "every start loads what few commands need"
  exit 1
fi
mkdir "$work/parts"
mv "$parts"/*.so "$work/parts"
export QVADMIN_DB=sqlite:$work/directory.db
text=$(cd "$work/parts" && LD_LIBRARY_PATH="$work/parts" "$qvadmin" serve --listen 127.0.0.1:0 2>&1) &&
  { echo "served without the part for HTTP"; exit 1; }
[[ $text == "qvadmin: a part of this program cannot be loaded: $parts/http.so: "* && $text != *$'\n'* ]] ||
  { echo "expected the part that is missing, got: $text"; exit 1; }
"$qvadmin" user count >/dev/null
