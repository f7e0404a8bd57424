#!/usr/bin/env bash
# subproject.sh BUILD SOURCE: a project that has Quorvel's sources as a part of it builds the libraries that it links, in
# an optimised build hardened ones, and a program with them that runs. Neither needs what only the console needs.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
run() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
run cmake -S "$source/tests/install/subproject" -B "$work/build" -G Ninja -DQUORVEL_SOURCE="$source" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=MinSizeRel \
  -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON -DCMAKE_DISABLE_FIND_PACKAGE_fmt=ON \
  -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON
run cmake --build "$work/build" --target consumer
run "$work/build/consumer"
mapfile -t libraries < <(find "$work/build" -name 'libqv*.so.*.*.*' -type f)
[ ${#libraries[@]} -eq 2 ] || { echo "not two libraries were built: ${libraries[*]}"; exit 1; }
"$(dirname "$0")/hardening.sh" "${libraries[@]}"
