#!/usr/bin/env bash
# tools/check_module.sh BUILD: what the built module needs and shows. Regenerate the list with --update.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
module=$build/lib/libveldmb.so
[ -f "$module" ] || { echo "$module is not built"; exit 1; }

needed=$(objdump -p "$module" | awk '$1 == "NEEDED" { print $2 }' | grep -vE '^(libstdc\+\+\.so|libgcc_s\.so|libc\.so|libm\.so|ld-linux)' |
    sort | tr '\n' ' ')
wanted="libce.so libdshow.so libmedmb.so libvelshell.so "
[ "$needed" = "$wanted" ] || { echo "the module needs '$needed', wanted '$wanted'"; exit 1; }

shown=$(nm -D --defined-only -C "$module" | sed -E 's/^[0-9a-f]* . //' | LC_ALL=C sort -u)
if [ "${2:-}" = --update ]; then
    printf '%s\n' "$shown" >docs/exports.txt
    exit 0
fi
diff <(printf '%s\n' "$shown") docs/exports.txt || { echo "exported names differ from docs/exports.txt"; exit 1; }
if nm -D "$module" | awk '$2 == "u" || $1 == "u"' | grep -q .; then
    echo "the module has unique symbols and could never be unloaded"
    exit 1
fi
