#!/usr/bin/env bash
# Starts the configurator on the virtual tracker: the tracker's pseudo-terminal is handed to the window
# with --port, the start-up connection dialog is shown as usual (choose the USB connection), and the
# virtual tracker stops when the window closes. Extra arguments go to the window (e.g. --no-login).
set -euo pipefail
build=${1:-build}
shift || true
cfg="$build/app/tavrel-cfg"
sim="$build/tools/devsim/tavrel-devsim"
for exe in "$cfg" "$sim"; do
    if [ ! -x "$exe" ]; then
        echo "run: $exe is not built yet" >&2
        exit 1
    fi
done

. "$(dirname "$0")/devsim.sh"

start_devsim "$sim" run
echo "run: virtual tracker on $pty"

# No firmware download at start: the virtual tracker is not on the update server.
"$cfg" --port "$pty" --no-update-check "$@"
