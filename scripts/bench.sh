#!/usr/bin/env bash
# Runs the benchmarks against the virtual tracker and prints what they measure.
# Usage: scripts/bench.sh [build-dir]
set -euo pipefail
build=${1:-build}
sim="$build/tools/devsim/tavrel-devsim"
cli="$build/cli/tavrel-cli"
for exe in "$build/bench/readwrite/bench-readwrite" "$build/bench/flash/bench-flash" "$build/bench/startup/bench_startup" \
           "$build/bench/batch/bench-batch" "$build/bench/charts/bench_charts" "$build/bench/remote/bench-remote"; do
    [ -x "$exe" ] || { echo "bench: $exe is not built" >&2; exit 1; }
done

echo "== read all / write all at 115200 baud"
"$build/bench/readwrite/bench-readwrite" --devsim "$sim"
echo
echo "== read all, write all and a telemetry round: remote at 300 ms latency and at 115200 baud"
"$build/bench/remote/bench-remote" --devsim "$sim"
echo
echo "== firmware flash, 512 pages at 115200 baud"
"$build/bench/flash/bench-flash" --devsim "$sim" --cli "$cli"
echo
echo "== window start-up and one minute of 50 ms polling"
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$build/bench/startup/bench_startup" --devsim "$sim"
echo
echo "== batch on 1, 4 and 16 trackers at 115200 baud (identify, read, write, read back)"
"$build/bench/batch/bench-batch" --devsim "$sim" --cli "$cli"
echo
echo "== an hour of 1 s telemetry with the charts shown (injected clock)"
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$build/bench/charts/bench_charts"
