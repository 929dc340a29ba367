#!/usr/bin/env bash
# Installs the packages of the given groups that are missing (tools/packages.txt). Does nothing, quickly, when all are there.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

if ! command -v dpkg-query >/dev/null; then
    echo "setup: this is no Debian system; install what tools/packages.txt lists by your own means" >&2
    exit 0
fi
missing=()
for group in "$@"; do
    while read -r name; do
        dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || missing+=("$name")
    done < <(awk -v group="$group" '$1 == group { print $2 }' "$here/packages.txt")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: these packages are missing and I am neither root nor is there sudo. As root, run:" >&2
        echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    root=(sudo)
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
install() { "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}"; }
# The package lists of a fresh machine are empty or old; they are fetched only when something is missing.
if ! { "${root[@]}" apt-get -qq update && install; } >"$log" 2>&1; then
    echo "setup: installing failed:" >&2
    tail -n 15 "$log" >&2
    exit 1
fi
