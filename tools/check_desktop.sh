#!/usr/bin/env bash
# What an installation brings to a desktop, looked at by the usual validators, and an installation that is tried out.
# tools/check_desktop.sh [BUILD]   an existing build with the programs; build/release without one
set -uo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
id=io.github.dmbview.DMBView
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
failed=0

check() {
    local name=$1 out
    shift
    if out=$("$@" 2>&1); then
        echo "OK   $name"
    else
        echo "FAIL $name"
        printf '%s\n' "$out" | head -n 20 | sed 's/^/    /'
        failed=1
    fi
}

manual() { # a page that neither formatter complains about
    local said
    said=$(mandoc -T lint -W warning "$1"; MANWIDTH=80 LC_ALL=C.UTF-8 man --warnings -l "$1" 2>&1 >/dev/null)
    [ -z "$said" ] || { echo "$said"; return 1; }
}

file_types() { # the names and the first bytes lead to the types, in a data base of their own
    mkdir -p "$place/mime/packages" && cp "host/desktop/$id.xml" "$place/mime/packages" || return 1
    update-mime-database "$place/mime" || return 1
    grep -q '^video/x-dmb:\*.dmb$' "$place/mime/globs" && grep -q '^application/x-dab-eti:\*.eti$' "$place/mime/globs"
}

entries_handle_what_is_defined() {
    local type
    for type in $(sed -n 's/.*<mime-type type="\([^"]*\)".*/\1/p' "host/desktop/$id.xml"); do
        grep -q "^MimeType=.*$type;" host/desktop/*.desktop || { echo "no desktop entry opens $type"; return 1; }
        grep -q "<mediatype>$type</mediatype>" "host/desktop/$id.metainfo.xml" || { echo "$type is not in the metainfo"; return 1; }
    done
}

installation() {
    local missing=0 file
    cmake --install "$build" --prefix "$place/usr" >/dev/null || return 1
    for file in bin/dmbtv bin/dmbhead bin/dmbprobe lib/dmbview/libveldmb.so lib/dmbview/libvelshell.so share/dmbview/skin/texts.txt \
        "share/applications/$id.desktop" "share/applications/$id.Player.desktop" "share/metainfo/$id.metainfo.xml" \
        "share/mime/packages/$id.xml" "share/icons/hicolor/scalable/apps/$id.svg" "share/icons/hicolor/48x48/apps/$id.png" \
        "share/icons/hicolor/128x128/apps/$id.png" "share/icons/hicolor/256x256/apps/$id.png" share/man/man1/dmbtv.1 \
        share/man/man1/dmbhead.1 share/man/man1/dmbprobe.1 share/man/ko/man1/dmbtv.1 share/man/ko/man1/dmbhead.1 \
        share/man/ko/man1/dmbprobe.1 share/bash-completion/completions/dmbtv share/zsh/site-functions/_dmbtv; do
        [ -s "$place/usr/$file" ] || { echo "not installed: $file"; missing=1; }
    done
    return $missing
}

runs_where_it_was_installed() { # nothing of the build folder is needed
    local device=(--profile "$place/p" --card "$place/c" --device-root "$place/r")
    ldd "$place/usr/bin/dmbtv" | grep -q 'not found' && return 1
    ldd "$place/usr/bin/dmbtv" | grep -q "$PWD/build" && { echo "libraries of the build are used"; return 1; }
    "$place/usr/bin/dmbtv" list --json "${device[@]}" | grep -q '"channels": \[\]'
}

completion_offers() { # the words that bash offers after some words
    bash --norc -c '
        . host/desktop/completion.bash
        COMP_WORDS=(dmbtv record --se) COMP_CWORD=2 COMPREPLY=()
        _dmbtv
        [ "${COMPREPLY[*]}" = "--service --seconds" ] || { echo "offered: ${COMPREPLY[*]}"; exit 1; }
        COMP_WORDS=(dmbtv --lang k) COMP_CWORD=2 COMPREPLY=()
        _dmbtv
        [ "${COMPREPLY[*]}" = ko ] || { echo "offered: ${COMPREPLY[*]}"; exit 1; }'
}

for entry in host/desktop/*.desktop; do check "entry $(basename "$entry")" desktop-file-validate "$entry"; done
check metainfo appstreamcli validate --no-net "host/desktop/$id.metainfo.xml"
check "well-formed XML" xmllint --noout host/desktop/*.xml host/desktop/*.svg
check "file types" file_types
check "entries open the file types" entries_handle_what_is_defined
for page in docs/man/*.1 docs/man/ko/*.1; do check "manual ${page#docs/man/}" manual "$page"; done
check "bash completion" bash -n host/desktop/completion.bash
check "zsh completion" zsh -n host/desktop/_dmbtv
check "completion offers" completion_offers
check "manuals and completion against --help" python3 tools/check_help.py --bin "$build/bin"
check installation installation
check "runs where it was installed" runs_where_it_was_installed
exit $failed
