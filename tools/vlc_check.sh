#!/usr/bin/env bash
# tools/vlc_check.sh FILE.dmb: does an independent player show the picture of a recording? Plays a few seconds in VLC without a
# window, takes pictures out of it and prints how many there were and how many differ. Exit status 1 when there is no moving picture.
set -euo pipefail
[ $# -eq 1 ] && [ -r "$1" ] || { echo "usage: tools/vlc_check.sh FILE.dmb" >&2; exit 2; }
command -v cvlc >/dev/null || { echo "vlc_check: VLC is not installed (packages vlc-bin, vlc-plugin-base)" >&2; exit 2; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$1" "$folder/recording.dmb"
chmod -R a+rwX "$folder"
# VLC refuses to run as root.
user=()
[ "$(id -u)" -ne 0 ] || user=(setpriv --reuid=65534 --regid=65534 --clear-groups env HOME="$folder")
timeout 60 "${user[@]}" cvlc --no-audio --vout=dummy --demux=ts --video-filter=scene --scene-format=png --scene-ratio=10 \
    --scene-path="$folder" --scene-prefix=shot --run-time=6 "$folder/recording.dmb" vlc://quit >"$folder/log" 2>&1 || true
shots=$(find "$folder" -name 'shot*.png' | wc -l)
different=$(find "$folder" -name 'shot*.png' -exec md5sum {} + | cut -d' ' -f1 | sort -u | wc -l)
echo "VLC $(dpkg-query -W -f '${Version}' vlc-bin 2>/dev/null || echo '(version unknown)'): $shots pictures taken, $different different"
[ "$different" -gt 1 ] || { tail -n 5 "$folder/log" >&2; exit 1; }
