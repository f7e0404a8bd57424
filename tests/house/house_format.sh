#!/usr/bin/env bash
# house_format.sh ROOT: every C++ file stands as clang-format would write it.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
cd "$1"
# One version, which every Debian has from 12 on: what is written differs from version to version.
clang-format-19 --version
mapfile -t files < <(sources)
if [ ${#files[@]} -eq 0 ]; then
  echo "no sources in $1"
  exit 1
fi
# By the dozen: most of what clang-format takes is its start.
code=0
printf '%s\0' "${files[@]}" | xargs -0 -n 40 clang-format-19 --dry-run -Werror 2>&1 |
  sed -nE 's/^([^: ]+):[0-9]+:[0-9]+: error: .*/not formatted: \1/p' | uniq || code=$?
exit $code
