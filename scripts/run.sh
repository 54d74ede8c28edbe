#!/usr/bin/env bash
# Starts the configurator on the virtual tracker; the virtual tracker stops when the window closes.
set -euo pipefail
build=${1:-build}
if [ ! -x "$build/app/tavrel-cfg" ]; then
    echo "run: the configurator window is not built yet ($build/app/tavrel-cfg is missing)" >&2
    exit 1
fi
exec "$build/app/tavrel-cfg"
