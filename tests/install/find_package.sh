#!/usr/bin/env bash
# find_package.sh BUILD SOURCE: a program that finds an installed Quorvel with CMake is built as C++17, and runs.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
install_build
make_directory "$prefix/bin/qvadmin"
cmake -S "$source/tests/install/consumer" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work/build" >"$work/log" || { cat "$work/log"; exit 1; }
check_consumer "$work/build/consumer"
"$work/build/without_server"

# What shells and man look for is there, whole, with the page of each noun.
for file in man/man1/qvadmin.1 man/man1/qvadmin-user.1 man/man1/qvadmin-audit.1 bash-completion/completions/qvadmin \
  zsh/site-functions/_qvadmin fish/vendor_completions.d/qvadmin.fish locale/zh_CN/LC_MESSAGES/qvadmin.mo; do
  [ -s "$prefix/share/$file" ] || { echo "there is no $prefix/share/$file"; exit 1; }
done
# The C library forgets the list that it makes of LOCPATH.
ASAN_OPTIONS=detect_leaks=0 LOCPATH=$build/tests/console/locales LC_ALL=de_DE.UTF-8 \
  "$prefix/bin/qvadmin" --help >"$work/help"
grep -q '^Verwaltung' "$work/help" || { echo "the installed program does not find its catalogues"; exit 1; }
diff <("$prefix/bin/qvadmin" manual user) "$prefix/share/man/man1/qvadmin-user.1"

# No library leads to the folder that it was built in, nor to the one that it was installed to at first.
while IFS= read -r file; do
  if readelf -d "$file" | grep -E 'R(UN)?PATH' | grep -vE '\[(\$ORIGIN[^]:]*)\]'; then
    echo "has a search path that is not relative: $file"
    exit 1
  fi
done < <(find "$prefix" -name '*.so*' -type f; echo "$prefix/bin/qvadmin")
if grep -rlF -e "$build" -e "$work/first" "$prefix/lib" --include='*.cmake' --include='*.pc'; then
  echo "the files above name folders that are gone"
  exit 1
fi
