#!/usr/bin/env bash
# Pictures of the configurator for docs/screenshots: a virtual X screen (xvfb-run), the window walking
# through its states by itself (--screenshots) and ImageMagick's import saving the whole screen.
# Pictures: not connected; the device page with a fix on the virtual tracker; every settings page
# after a full read; the dark theme.
set -euo pipefail
build=${1:-build}
out=${2:-docs/screenshots}
cfg="$build/app/tavrel-cfg"
sim="$build/tools/devsim/tavrel-devsim"
for exe in "$cfg" "$sim" /usr/bin/xvfb-run /usr/bin/import; do
    if [ ! -x "$exe" ]; then
        echo "screenshots: $exe is missing" >&2
        exit 1
    fi
done
mkdir -p "$out"
out=$(cd "$out" && pwd)

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

# A settings store of its own: light theme, USB connection, nothing remembered from the user.
export XDG_CONFIG_HOME="$work/config"
mkdir -p "$XDG_CONFIG_HOME"
screen="-screen 0 1280x800x24"

xvfb-run -a -s "$screen" "$cfg" --screenshots "$out"

"$sim" --pty >"$work/sim.out" 2>"$work/sim.log" &
sim_pid=$!
pty=
for _ in $(seq 1 50); do
    pty=$(head -n 1 "$work/sim.out" 2>/dev/null || true)
    [ -n "$pty" ] && break
    sleep 0.1
done
if [ -z "$pty" ]; then
    echo "screenshots: the virtual tracker did not report its terminal" >&2
    cat "$work/sim.log" >&2
    exit 1
fi
xvfb-run -a -s "$screen" "$cfg" --port "$pty" --screenshots "$out"
echo "screenshots: pictures in $out"
