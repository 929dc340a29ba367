#!/usr/bin/env bash
# What watching costs: processor time of the process over SECONDS (default 60) as a share of one core, and its resident memory at the
# end. Television in a window (under Xvfb when it is installed and there is no display), radio headless.
#   bench/watching.sh [SECONDS] [PROGRAM]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
program=${2:-build/release/bin/dmbtv}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folders=(--profile "$work/profile" --card "$work/card" --device-root "$work/device" --log-level error)
ticks=$(getconf CLK_TCK)
export SDL_AUDIODRIVER=${SDL_AUDIODRIVER:-dummy}

"$program" demo --log-level error >/dev/null
"$program" scan --json "${folders[@]}" >/dev/null

used() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }
# measure NAME CPU_BOUND MEMORY_BOUND COMMAND ...
measure() {
    local name=$1 cpu=$2 memory=$3 pid before after rss
    shift 3
    "$@" &
    pid=$!
    sleep 10 # the beginning is another matter
    before=$(used $pid)
    sleep "$seconds"
    after=$(used $pid)
    rss=$(awk '/^VmRSS/ { print $2 }' "/proc/$pid/status")
    kill -INT $pid
    wait $pid || true
    awk -v n="$name" -v t=$((after - before)) -v hz="$ticks" -v s="$seconds" -v r="$rss" -v c="$cpu" -v m="$memory" 'BEGIN {
        share = 100 * t / hz / s; mb = r / 1024
        printf "| %s | %.1f %% | %d %% | %.0f MB | %d MB | %s |\n", n, share, c, mb, m, share <= c && mb <= m ? "yes" : "NO" }'
}

display=
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && command -v Xvfb >/dev/null; then
    Xvfb -displayfd 5 -screen 0 1280x800x24 5>"$work/display" 2>/dev/null &
    display=$!
    until [ -s "$work/display" ]; do sleep 0.1; done
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
fi
printf 'pick 0 0\nwait %d000\nquit\n' $((seconds + 60)) >"$work/television"
printf 'pick 1 0\nwait %d000\nquit\n' $((seconds + 60)) >"$work/radio"
echo "| what | processor | bound | memory | bound | kept |"
echo "|---|---|---|---|---|---|"
measure "television in a window" 15 120 "$program" --script "$work/television" "${folders[@]}"
measure "radio without a window" 3 50 "$program" --headless --script "$work/radio" "${folders[@]}"
[ -z "$display" ] || kill $display
