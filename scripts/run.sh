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

work=$(mktemp -d)
sim_pid=
cleanup() {
    if [ -n "$sim_pid" ] && kill -0 "$sim_pid" 2>/dev/null; then
        kill "$sim_pid" 2>/dev/null || true
        wait "$sim_pid" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT INT TERM

"$sim" --pty >"$work/sim.out" 2>"$work/sim.log" &
sim_pid=$!

# The first line the tracker prints is its terminal's path.
pty=
for _ in $(seq 1 50); do
    pty=$(head -n 1 "$work/sim.out" 2>/dev/null || true)
    [ -n "$pty" ] && break
    if ! kill -0 "$sim_pid" 2>/dev/null; then
        echo "run: the virtual tracker did not start:" >&2
        cat "$work/sim.log" >&2
        exit 1
    fi
    sleep 0.1
done
if [ -z "$pty" ]; then
    echo "run: the virtual tracker did not report its terminal" >&2
    exit 1
fi
echo "run: virtual tracker on $pty"

# No firmware download at start: the virtual tracker is not on the update server.
"$cfg" --port "$pty" --no-update-check "$@"
