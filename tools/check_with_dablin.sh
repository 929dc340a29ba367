#!/bin/sh
# Lets an independent receiver (Debian's dablin) play one radio service of an ETI file, and says what it found:
#   tools/check_with_dablin.sh FILE.eti SID
# prints its messages about services and formats, then "pcm bytes: N". dablin plays as fast as time goes by.
# Exit status 3: dablin is not installed.
set -eu
[ $# -eq 2 ] || { echo "usage: $0 FILE.eti SID" >&2; exit 2; }
command -v dablin > /dev/null || exit 3
log=$(mktemp)
trap 'rm -f "$log"' EXIT
bytes=$(dablin -p -s "$2" "$1" 2> "$log" | wc -c)
# Terminal titles, colours and the running clock away.
tr '\r' '\n' < "$log" | sed -e 's/\x1b\][^\x07]*\x07//g' -e 's/\x1b\[[0-9;]*m//g' -e 's/^[0-9:]* \/ [0-9:]*//' |
    grep -a -E '^(FICDecoder|EnsemblePlayer|MP2Decoder|PCMOutput|ETISource|EnsembleSource|EnsembleDecoder)' || true
echo "pcm bytes: $bytes"
