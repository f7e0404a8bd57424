#!/usr/bin/env bash
# packages.sh PACKAGES SOURCE: in a Debian made for this, the packages are installed, qvadmin and programs built with
# CMake and pkg-config are run, and the packages are removed without a trace. Needs root and a mirror of Debian, and takes
# a few minutes; tools/package --check calls it.
set -euo pipefail
packages=$(realpath "$1")
source=$(realpath "$2")
work=$(mktemp -d "${TMPDIR:-/tmp}/qv-packages-XXXXXX")
trap 'rm -rf "$work"' EXIT
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")

include=()
for package in "$packages"/*.deb; do
  case $package in
    *-dbgsym_*) ;;
    *) include+=("--include=$package") ;;
  esac
done

cat >"$work/use.sh" <<'EOF'
set -euo pipefail
export QVADMIN_DB=sqlite:/srv/directory.db
qvadmin db init
qvadmin user create "o'brien"
for file in man/man1/qvadmin.1.gz man/man1/qvadmin-user.1.gz bash-completion/completions/qvadmin \
  zsh/vendor-completions/_qvadmin fish/vendor_completions.d/qvadmin.fish locale/de/LC_MESSAGES/qvadmin.mo \
  locale/zh_CN/LC_MESSAGES/qvadmin.mo; do
  [ -s "/usr/share/$file" ] || { echo "there is no /usr/share/$file"; exit 1; }
done
grep -q '^ExecStart=/usr/bin/qvadmin serve$' /usr/lib/systemd/system/qvadmin-web.service
grep -q '^ListenStream=127.0.0.1:8420$' /usr/lib/systemd/system/qvadmin-web.socket
for scheme in mysql postgresql odbc; do
  text=$(qvadmin --db "$scheme:///nowhere" user count 2>&1) && { echo "$scheme opened what is not there"; exit 1; }
  case $text in
    *"is not installed"* | *"cannot be loaded"* | *"no database driver"*) echo "$text"; exit 1 ;;
  esac
done

check() {
  "$1" "$QVADMIN_DB" "o'brien"
  code=0
  "$1" "$QVADMIN_DB" nobody || code=$?
  [ $code -eq 2 ] || { echo "$1 gave $code for a user who is not there"; exit 1; }
}
cmake -S /srv/consumer -B /srv/build -G Ninja >/srv/log || { cat /srv/log; exit 1; }
cmake --build /srv/build >/srv/log || { cat /srv/log; exit 1; }
check /srv/build/consumer
/srv/build/without_server
g++ -std=c++17 -Wall -Wextra -Werror /srv/consumer/main.cpp -o /srv/linked $(pkg-config --cflags --libs quorvel qvschema)
check /srv/linked

# Where the packages' files were made known to the root, empty ones of the same names remain.
dpkg --purge $(dpkg-query -W -f '${Package}\n' | grep -E '^(libquorvel|qvadmin)')
left=$(find / -xdev \( -name '*quorvel*' -o -name 'libqv*' -o -name 'qvadmin*' \) -not -path '/srv/*' -not -path '/proc/*' -not -name '*.deb')
[ -z "$left" ] || { echo "was left behind: $left"; exit 1; }
echo "installed, used and removed"
EOF

mmdebstrap --variant=apt --hook-dir=/usr/share/mmdebstrap/hooks/file-mirror-automount \
  --include=ca-certificates,cmake,g++,ninja-build,pkg-config "${include[@]}" \
  --customize-hook="copy-in $source/tests/install/consumer $work/use.sh /srv" \
  --customize-hook='chroot "$1" bash /srv/use.sh' \
  "$suite" /dev/null
