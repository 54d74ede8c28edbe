#!/usr/bin/env bash
# Pictures of the configurator for docs/screenshots: a virtual X screen (xvfb-run), the window walking
# through its states by itself (--screenshots) and ImageMagick's import saving the whole screen.
# Pictures: not connected; the device page with a fix on the virtual tracker; every settings page
# after a full read; a page before anything was read; the write confirmation, the history and the
# comparison dialogs; the dark theme; the password dialog of a tracker that asks for one; the window
# after the tracker hung up.
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

. "$(dirname "$0")/devsim.sh"

# A settings store of its own: light theme, USB connection, nothing remembered from the user.
export XDG_CONFIG_HOME="$work/config"
mkdir -p "$XDG_CONFIG_HOME"
screen="-screen 0 1280x800x24"

xvfb-run -a -s "$screen" "$cfg" --screenshots "$out"

start_devsim "$sim" screenshots
xvfb-run -a -s "$screen" "$cfg" --port "$pty" --screenshots "$out"

stop_devsim
start_devsim "$sim" screenshots --password 1234
xvfb-run -a -s "$screen" "$cfg" --port "$pty" --screenshots "$out" --scene password

stop_devsim
start_devsim "$sim" screenshots --hangup-after 8
xvfb-run -a -s "$screen" "$cfg" --port "$pty" --screenshots "$out" --scene lost
echo "screenshots: pictures in $out"
