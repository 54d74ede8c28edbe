# Sourced by run.sh and screenshots.sh: starts the virtual tracker on a pseudo-terminal, sets $pty to its
# terminal's path and stops it (and removes $work) when the calling script exits.
# Usage: start_devsim <devsim executable> <name for messages> [devsim options...]
work=$(mktemp -d)
sim_pid=
pty=
cleanup() {
    if [ -n "$sim_pid" ] && kill -0 "$sim_pid" 2>/dev/null; then
        kill "$sim_pid" 2>/dev/null || true
        wait "$sim_pid" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT INT TERM

# Stops the tracker started last, so that another can take its place.
stop_devsim() {
    if [ -n "$sim_pid" ]; then
        kill "$sim_pid" 2>/dev/null || true
        wait "$sim_pid" 2>/dev/null || true
    fi
    sim_pid=
}

start_devsim() {
    local sim=$1 name=$2
    shift 2
    "$sim" --pty "$@" >"$work/sim.out" 2>"$work/sim.log" &
    sim_pid=$!
    # The first line the tracker prints is its terminal's path.
    for _ in $(seq 1 50); do
        pty=$(head -n 1 "$work/sim.out" 2>/dev/null || true)
        [ -n "$pty" ] && return 0
        kill -0 "$sim_pid" 2>/dev/null || break
        sleep 0.1
    done
    echo "$name: the virtual tracker did not report its terminal:" >&2
    cat "$work/sim.log" >&2
    exit 1
}
