#!/usr/bin/env bash
# house_format.sh ROOT: every C++ file stands as clang-format would write it.
set -euo pipefail
source "$(dirname "$0")/sources.sh"
cd "$1"
clang-format --version
mapfile -t files < <(sources)
if [ ${#files[@]} -eq 0 ]; then
  echo "no sources in $1"
  exit 1
fi
failed=0
for file in "${files[@]}"; do
  if ! clang-format --dry-run -Werror "$file" 2> /dev/null; then
    echo "not formatted: $file"
    failed=1
  fi
done
exit $failed
