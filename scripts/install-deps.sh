#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the tools need, and nothing that is already there.
# Usage: scripts/install-deps.sh [extra-package ...]
set -euo pipefail

packages=(
    cmake make g++ pkg-config
    qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev qttools5-dev libqt5charts5-dev libkf5archive-dev
    libqt5svg5 fonts-dejavu-core qttranslations5-l10n
    python3 dpkg-dev unzip
    clang libclang-rt-14-dev
)
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
