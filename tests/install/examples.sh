#!/usr/bin/env bash
# examples.sh BUILD SOURCE: every program of examples/ compiles as C++17 with an installed Quorvel, and runs on a directory
# with the example people.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
install_build
libraries=$(dirname "$(find "$prefix" -name libquorvel.so)")
export QVADMIN_DB=sqlite:$work/people.db
"$prefix/bin/qvadmin" db init >/dev/null 2>&1
"$prefix/bin/qvadmin" user import "$source/examples/people.csv" --departments Brightwater --make-view \
  --result "$work/result.csv" >/dev/null 2>&1

# run NAME ARGUMENT...: compiles and runs an example; its output is in $work/out.
run() {
  # shellcheck disable=SC2086
  "$compiler" -std=c++17 -Wall -Wextra -Werror $flags -I"$prefix/include/quorvel" "$source/examples/$1.cpp" \
    -o "$work/$1" -L"$libraries" -lquorvel -lqvschema -lqvdbaccess -lqvplatform "-Wl,-rpath,$libraries"
  "$work/$1" "${@:2}" >"$work/out" 2>&1 || { echo "$1 failed:"; cat "$work/out"; exit 1; }
}
# prints WORDS: the example has printed a line with these words.
prints() { grep -qF -e "$1" "$work/out" || { echo "did not print $1:"; cat "$work/out"; exit 1; }; }

run list_organisation "sqlite:$work/people.db"
prints /Brightwater
[ "$(grep -c '^ *- ' "$work/out")" -ge 320 ] || { echo "not all people are listed"; exit 1; }
run move_between_engines "sqlite:$work/people.db" "sqlite:$work/copy.db"
prints "qv_User: 320 rows"
run notification_window "sqlite:$work/people.db"
prints "the operation returned false"
run own_driver "traced:sqlite:$work/people.db"
prints "SELECT COUNT(*) FROM qv_User"
[ "$(find "$source/examples" -name '*.cpp' | wc -l)" -eq 4 ] || { echo "not every example was run"; exit 1; }
