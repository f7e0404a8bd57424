#!/usr/bin/env bash
# abi.sh BUILD SOURCE: nothing that a program was linked with is missing or different in the libraries of this build, as
# tools/record-abi has recorded it in abi/ for each SONAME.
set -euo pipefail
build=$1
source=$2
if ! grep -q '^CMAKE_BUILD_TYPE:STRING=Debug' "$build/CMakeCache.txt"; then
  echo "only debug builds say what their types are"
  exit 77
fi
count=0
for library in "$build"/lib/lib*.so; do
  soname=$(objdump -p "$library" | awk '/SONAME/ { print $2 }')
  record=$source/abi/$soname.abi
  [ -e "$record" ] || { echo "no release of $soname is recorded: $record"; exit 1; }
  # Not with --headers-dir2: that takes private members of public classes for private types and says nothing of them.
  abidiff --no-added-syms --suppressions "$source/abi/suppressions.ini" "$record" "$library"
  count=$((count + 1))
done
[ $count -eq 4 ] || { echo "$count libraries were compared, not 4"; exit 1; }
