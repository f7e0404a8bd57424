#!/usr/bin/env bash
# quickstart.sh ROOT QVADMIN: tools/quickstart makes a directory, and a second run keeps what was added to it. Without the
# right to install packages, tools/install-packages says which ones to ask for.
set -euo pipefail
cd "$1"
export QVADMIN=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

tools/quickstart "$work/first" >"$work/output"
export QVADMIN_DB=sqlite:$work/first/directory.db
[ "$("$QVADMIN" user count)" = 320 ]
[ -z "$(ls "$work/first" | grep -vE '^(directory\.db(-wal|-shm)?|people\.result\.csv)$')" ]
"$QVADMIN" user create newcomer
tools/quickstart "$work/first" >"$work/output"
"$QVADMIN" user exists newcomer
grep -q 'is kept as it is' "$work/output"
grep -q 'directory.db serve$' "$work/output"
grep -q '── Sales (0, 25 below)' "$work/output"

# As somebody who is not root, on a machine that has no packages and no sudo.
mkdir "$work/bin"
printf '#!/bin/sh\necho 1000\n' >"$work/bin/id"
printf '#!/bin/sh\nexit 1\n' | tee "$work/bin/dpkg-query" >"$work/bin/sudo"
ln -s "$(command -v bash)" "$(command -v grep)" "$(command -v env)" "$work/bin"
chmod +x "$work/bin/"{id,dpkg-query,sudo}
for with_sudo in yes no; do
  [ $with_sudo = yes ] || rm "$work/bin/sudo"
  code=0
  PATH=$work/bin tools/install-packages run 2>"$work/errors" || code=$?
  [ $code -eq 1 ]
  grep -q 'apt-get install --no-install-recommends g++ cmake ' "$work/errors"
done
