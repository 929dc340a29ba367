#!/usr/bin/env bash
# bench/medmb_dablin.sh FILE.eti SID [RUNS]: processor time of dmbprobe and of Debian's dablin for the same work: one layer II
# service of an ETI file, from the frames to samples. Wall time says nothing, as dablin plays at the pace of the broadcast.
set -euo pipefail
[ $# -ge 2 ] || { echo "usage: bench/medmb_dablin.sh FILE.eti SID [RUNS]" >&2; exit 2; }
cd "$(dirname "$0")/.."
file=$(realpath "$1") service=$2 runs=${3:-3}
command -v dablin >/dev/null || { echo "medmb_dablin: dablin is not installed" >&2; exit 3; }
probe=build/bench/bin/dmbprobe
[ -x $probe ] || probe=build/release/bin/dmbprobe
scratch=$(mktemp)
trap 'rm -f "$scratch"' EXIT
TIMEFORMAT='%U %S'
# The least of some runs, user and system time together.
least() {
    for _ in $(seq "$runs"); do
        { time "$@" >/dev/null 2>&1; } 2>&1
    done | awk '{ t = $1 + $2; if (NR == 1 || t < best) best = t } END { printf "%.2f s\n", best }'
}
echo "dmbprobe: $(least $probe audio "$file" --service "$service" "$scratch")"
echo "dablin $(dpkg-query -W -f '${Version}' dablin): $(least dablin -p -s "$service" "$file")"
