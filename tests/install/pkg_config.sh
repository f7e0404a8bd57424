#!/usr/bin/env bash
# pkg_config.sh BUILD SOURCE: a program that finds an installed Quorvel with pkg-config is built as C++17, and runs.
set -euo pipefail
source "$(dirname "$0")/installed.sh"
install_build
make_directory "$prefix/bin/qvadmin"
PKG_CONFIG_PATH=$(find "$prefix" -name pkgconfig -type d)
export PKG_CONFIG_PATH
libraries=$(dirname "$PKG_CONFIG_PATH")
# shellcheck disable=SC2046,SC2086
"$compiler" -std=c++17 -Wall -Wextra -Werror $flags "$source/tests/install/consumer/main.cpp" -o "$work/consumer" \
  $(pkg-config --cflags --libs quorvel qvschema) "-Wl,-rpath,$libraries" "-Wl,-rpath-link,$libraries"
check_consumer "$work/consumer"
[ "$(pkg-config --modversion quorvel)" = "$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")" ]
