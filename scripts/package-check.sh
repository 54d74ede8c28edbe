#!/usr/bin/env bash
# Checks the Debian package that `make package` built: its control fields, its file list and its
# maintainer scripts, then unpacks it into a throw-away root and runs the command-line tool from there.
# Usage: scripts/package-check.sh [build-dir]
set -euo pipefail
build=${1:-build}
deb=$(ls -t "$build"/tavrel-cfg_*.deb 2>/dev/null | head -n 1)
[ -n "$deb" ] || { echo "package-check: no tavrel-cfg_*.deb in $build" >&2; exit 1; }
fail() { echo "package-check: $*" >&2; exit 1; }

depends=$(dpkg-deb --field "$deb" Depends)
for dep in libqt5widgets5 libqt5charts5 libqt5serialport5 libkf5archive5 qttranslations5-l10n; do
    grep -q "$dep" <<<"$depends" || fail "Depends lacks $dep: $depends"
done

contents=$(dpkg-deb --contents "$deb" | awk '{print $NF}')
for f in ./usr/bin/tavrel-cfg ./usr/bin/tavrel-cli ./usr/bin/tavrel-devsim \
         ./usr/lib/udev/rules.d/99-tavrel-tracker.rules ./usr/share/applications/tavrel-cfg.desktop \
         ./usr/share/icons/hicolor/scalable/apps/tavrel-cfg.svg; do
    grep -qx "$f" <<<"$contents" || fail "$f is not in the package"
done

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg-deb --control "$deb" "$root/DEBIAN"
[ -x "$root/DEBIAN/postinst" ] && grep -q 'udevadm control --reload-rules' "$root/DEBIAN/postinst" ||
    fail "postinst does not reload the udev rules"
# Where udev is absent (a container), the maintainer script must still succeed.
PATH=/nonexistent /bin/sh "$root/DEBIAN/postinst" configure || fail "postinst fails without udevadm"

dpkg-deb --extract "$deb" "$root"
"$root/usr/bin/tavrel-cli" --version | grep -q '^tavrel-cli ' || fail "the unpacked tavrel-cli does not run"
echo "package-check: $(basename "$deb") is complete ($(wc -l <<<"$contents") entries)"
