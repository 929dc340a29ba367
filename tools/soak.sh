#!/usr/bin/env bash
# Random zapping over the demo for a long time: after each change the service must play and its message must have gone (a lost
# notification would leave it), and memory must stay flat.
#   tools/soak.sh [SECONDS, default 3600] [SEED] [PROGRAM]
# Leaves build/soak/memory.txt (seconds, kB) and build/soak/transcript.txt; exit status 1 when something did not hold.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-3600}
seed=${2:-$RANDOM}
program=${3:-build/release/bin/dmbtv}
out=build/soak
rm -rf "$out"
mkdir -p "$out"
"$program" demo --log-level error >/dev/null

# The demo has three television and four radio services. Every change takes about 7 s; stepping waits one second of its own.
awk -v seed="$seed" -v seconds="$seconds" 'BEGIN {
    srand(seed)
    tab = 0; line = 0
    print "wait 3000"
    for (t = 3; t < seconds; t += 7) {
        what = int(rand() * 10)
        if (what < 4) { # pick another one in the list
            do { newTab = int(rand() * 2); newLine = int(rand() * (newTab ? 4 : 3)) } while (newTab == tab && newLine == line)
            tab = newTab; line = newLine
            print "pick " tab " " line
        } else { # step, perhaps several times before the last one counts
            step = rand() < 0.5 ? 1 : -1
            for (presses = 1 + int(rand() * 2); presses > 0; --presses) {
                print "key " (step > 0 ? 34 : 33)
                count = tab ? 4 : 3
                line = (line + step + count) % count
                print "wait 200"
            }
        }
        print "wait 6500"
        print "expect type " tab
        print "expect mode 4"
        print "expect text 43 \"\""
    }
    print "quit"
}' >"$out/script"

echo "soak: $seconds s, seed $seed"
SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy "$program" --lang en --script "$out/script" --transcript "$out/transcript.txt" \
    --profile "$out/profile" --card "$out/card" --device-root "$out/device" 2>"$out/log.txt" &
pid=$!
begin=$SECONDS
while kill -0 $pid 2>/dev/null; do
    rss=$(awk '/^VmRSS/ { print $2 }' "/proc/$pid/status" 2>/dev/null || true)
    [ -z "$rss" ] || echo "$((SECONDS - begin)) $rss" >>"$out/memory.txt"
    sleep 5
done
status=0
wait $pid || status=$?
[ $status -eq 0 ] || tail -n 3 "$out/log.txt"
grep -c '  holds$' "$out/transcript.txt" | sed 's/$/ expectations held/'
# The first quarter may still fill caches; after it the mean of the last quarter may exceed that of the second by 5 %.
awk '{ time[NR] = $1; kb[NR] = $2 }
     END { q = int(NR / 4); if (q < 3) { print "too short to judge memory"; exit 0 }
           for (i = q + 1; i <= 2 * q; ++i) early += kb[i] / q
           for (i = NR - q + 1; i <= NR; ++i) late += kb[i] / q
           printf "memory: %.1f MB in the second quarter, %.1f MB in the last\n", early / 1024, late / 1024
           exit late > 1.05 * early }' "$out/memory.txt" || status=1
exit $status
