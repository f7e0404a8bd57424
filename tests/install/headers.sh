#!/usr/bin/env bash
# headers.sh BUILD SOURCE: every public header can be included by itself in C++17 and C++20, before and after the headers
# of ODBC, by GCC and Clang, and, for a program of Windows, before and after that system's.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
install_build
include=$prefix/include/quorvel
mapfile -t headers < <(cd "$include" && find . -name '*.h' | sed 's|^\./||' | LC_ALL=C sort)
[ ${#headers[@]} -gt 30 ] || { echo "only ${#headers[@]} headers are installed"; exit 1; }

for internal in basefun/StatementFrame.h basefun/SqlText.h dbaccess/DateText.h dbaccess/DriverModule.h \
  access/Digest.h access/AceItem.h documents/DocLinkStatement.h schema/Dialect.h schema/Tables.h; do
  if [ -e "$include/$internal" ]; then
    echo "is internal, and installed: $internal"
    exit 1
  fi
done

# Away from the sources: a compiler takes headers from the working directory first.
cd "$work"
failed=0
# check COMPILER FLAGS...: the program on standard input compiles.
check() {
  local text
  text=$(cat)
  if ! "$@" -fsyntax-only -Wall -Wextra -Werror -I"$include" -x c++ - <<<"$text"; then
    echo "does not compile with $*:"
    echo "$text"
    failed=1
  fi
}

odbc=$'#include <sql.h>\n#include <sqlext.h>\n'
windows=$'#include <windows.h>\n'
all=$(printf '#include "%s"\n' "${headers[@]}")
# Each by itself: nothing that a header needs has come from one before it.
for header in "${headers[@]}"; do
  check g++ -std=c++17 <<<"#include \"$header\""
done
for standard in c++17 c++20; do
  for compiler in g++ clang++; do
    check "$compiler" "-std=$standard" <<<"$odbc$all"
    check "$compiler" "-std=$standard" <<<"$all"$'\n'"$odbc"
  done
  check x86_64-w64-mingw32-g++-posix "-std=$standard" <<<"$windows$all"
  check x86_64-w64-mingw32-g++-posix "-std=$standard" <<<"$all"$'\n'"$windows"
done
exit $failed
