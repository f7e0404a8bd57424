# For the other scripts: source installed.sh BUILD SOURCE. Installs the build and moves what was installed to $prefix,
# where nothing leads back to the build; $work goes with the script. $flags are what a sanitized build's users need.
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/moved

install_build() {
  cmake --install "$build" --prefix "$work/first" >"$work/install.log" || { cat "$work/install.log"; exit 1; }
  mv "$work/first" "$prefix"
}

flags=
if grep -q '^QV_SANITIZE:BOOL=ON' "$build/CMakeCache.txt"; then
  flags=-fsanitize=address,undefined
fi
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")

# A directory with one user, o'brien, to be looked up by the consumers.
make_directory() {
  export QVADMIN_DB=sqlite:$work/directory.db
  "$1" db init >/dev/null 2>&1
  "$1" user create "o'brien" >/dev/null
}

# The consumer that was built looks up who is there, and who is not.
check_consumer() {
  "$1" "sqlite:$work/directory.db?mode=rw" "o'brien"
  local code=0
  "$1" "sqlite:$work/directory.db?mode=rw" nobody || code=$?
  [ $code -eq 2 ] || { echo "the consumer gave $code for a user who is not there"; exit 1; }
}
