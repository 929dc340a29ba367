#!/bin/sh
# Lets an independent player (FFmpeg) open an extracted television stream and count its pictures:
#   tools/check_picture.sh FILE.ts [PICTURE.png]
# prints "WIDTHxHEIGHT PROFILE pictures N"; writes the thirtieth picture when asked. FFmpeg finds the pictures of streams
# with parameter sets in band only, and takes the sound for something else: it does not know this kind of stream.
# Exit status 3: ffprobe or ffmpeg is not installed.
set -eu
[ $# -ge 1 ] || { echo "usage: $0 FILE.ts [PICTURE.png]" >&2; exit 2; }
command -v ffprobe > /dev/null && command -v ffmpeg > /dev/null || exit 3
ffprobe -v quiet -select_streams v:0 -count_frames -of default=nw=1 \
    -show_entries stream=width,height,profile,nb_read_frames "$1" |
    awk -F= '{ v[$1] = $2 } END { print v["width"] "x" v["height"], v["profile"], "pictures", v["nb_read_frames"] }'
[ $# -lt 2 ] || ffmpeg -v fatal -y -i "$1" -map 0:v:0 -vf 'select=eq(n\,30)' -vsync 0 -frames:v 1 "$2"
