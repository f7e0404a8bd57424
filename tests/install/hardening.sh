#!/usr/bin/env bash
# hardening.sh FILE...: each library or program resolves all symbols when it is loaded and makes their table read-only,
# has no executable stack, and calls the checks of the stack and, where one of the files does so, of buffers' sizes.
set -euo pipefail
failed=0
# lacks FILE WHAT
lacks() {
  echo "$1 lacks $2"
  failed=1
}
fortified=0
for file in "$@"; do
  dynamic=$(readelf -dW "$file")
  segments=$(readelf -lW "$file")
  symbols=$(readelf -W --dyn-syms "$file")
  grep -qE 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" || lacks "$file" "-z now"
  grep -q GNU_RELRO <<<"$segments" || lacks "$file" "-z relro"
  grep -qE 'GNU_STACK.* RW ' <<<"$segments" || lacks "$file" "a stack without code"
  grep -q __stack_chk_fail <<<"$symbols" || lacks "$file" "the stack protector"
  if grep -qE ' __[a-z]+_chk@' <<<"$symbols"; then
    fortified=1
  fi
done
[ $fortified -eq 1 ] || lacks "$*" "FORTIFY"
exit $failed
