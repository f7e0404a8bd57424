# For the other scripts: the C++ files of the project, one to a line, without what builds and tools leave behind.
sources() {
  find . \( -name '.?*' -o -name 'build*' -o -name 'cmake-build*' \) -prune -o -type f \( -name '*.h' -o -name '*.cpp' \) -print |
    sed 's|^\./||' | LC_ALL=C sort
}
