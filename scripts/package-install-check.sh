#!/usr/bin/env bash
# Installs the Debian package that `make package` built into a fresh, minimal Debian 12 root (made by
# mmdebstrap from the configured Debian mirror, then thrown away) the way a user would, with
# `apt-get install ./tavrel-cfg_….deb`, and checks that the programs and the udev rule are in place and
# that every library the programs need came with the declared dependencies. Needs root and the network.
# Usage: scripts/package-install-check.sh [build-dir]
set -euo pipefail
build=${1:-build}
deb=$(ls -t "$build"/tavrel-cfg_*.deb 2>/dev/null | head -n 1)
[ -n "$deb" ] || { echo "package-install-check: no tavrel-cfg_*.deb in $build" >&2; exit 1; }
command -v mmdebstrap >/dev/null || bash "$(dirname "$0")/install-deps.sh" mmdebstrap
name=$(basename "$deb")

mmdebstrap --variant=apt --quiet \
    --customize-hook="copy-in '$deb' /tmp" \
    --customize-hook="chroot \"\$1\" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q /tmp/$name" \
    --customize-hook='chroot "$1" sh -ec "
        for f in /usr/bin/tavrel-cfg /usr/bin/tavrel-cli /usr/bin/tavrel-devsim \
                 /usr/lib/udev/rules.d/99-tavrel-tracker.rules /usr/share/applications/tavrel-cfg.desktop; do
            test -e \$f || { echo \"missing \$f\"; exit 1; }
        done
        for p in tavrel-cfg tavrel-cli tavrel-devsim; do
            if ldd /usr/bin/\$p | grep \"not found\"; then echo \"\$p lacks a library\"; exit 1; fi
        done
        tavrel-cli --version
        QT_QPA_PLATFORM=offscreen tavrel-cfg --version
        test -e /usr/share/qt5/translations/qtbase_ru.qm
        dpkg -s tavrel-cfg | grep -q \"^Status: install ok installed\""' \
    bookworm /dev/null
echo "package-install-check: $name installs on a fresh Debian 12"
