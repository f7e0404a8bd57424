#!/usr/bin/env bash
# reference.sh ROOT: doxygen documents every public declaration without a warning, and no comment of a public header leans
# on its neighbour.
set -euo pipefail
cd "$1"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cat docs/Doxyfile && echo "OUTPUT_DIRECTORY = $work") | doxygen -
[ -f "$work/reference/classCQVBaseFun.html" ] || {
  echo "doxygen has written no page for CQVBaseFun"
  exit 1
}

mapfile -t headers < <(find platform dbaccess basefun directory access documents admin schema testing -maxdepth 1 -name '*.h')
code=0
grep -nHE '///.*(as above|as below|here and below|(in|do|does|for|of|as) the next one|[Tt]he next (two|three)|[Tt]he two (above|below)|///<? *[Tt]he same (as|under|with|by))' \
  "${headers[@]}" || code=$?
if [ $code -eq 0 ]; then
  echo "these comments can be understood only beside their neighbours"
fi
[ $code -eq 1 ]
