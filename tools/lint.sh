#!/usr/bin/env bash
# Every rule that a machine can check. One OK or FAIL line each. `tools/lint.sh --full` looks at every source with clang-tidy,
# without it only at those that changed. `tools/lint.sh NAME ...` runs the named checks alone.
set -uo pipefail
cd "$(dirname "$0")/.."
full=0
[ "${1:-}" = --full ] && full=1 && shift
only=("$@")
failed=0

sources() { git ls-files -co --exclude-standard -- "$@" | while read -r f; do [ -f "$f" ] && echo "$f"; done; }
product() { sources '*.cpp' | grep -vE '(_test|_bench|_fuzz)\.cpp$|^(tests|bench|fuzz)/'; }

format() { sources '*.cpp' '*.h' | xargs -P 2 -n 20 clang-format --dry-run --Werror; }

rooms() { python3 tools/check_rooms.py; }
forbidden() { python3 tools/check_forbidden.py; }
declarations() { python3 tools/check_platform_use.py; }
width() {
    local long
    long=$(sources '*.cpp' '*.h' | LC_ALL=C.UTF-8 xargs grep -nHE '^.{136,}$')
    [ -z "$long" ] || { echo "$long"; return 1; }
}

# Each header twice in a source of its own: it stands alone and may be included again.
headers() {
    local list
    list=$(sources '*.h' | grep -v '^tests/wine/')
    [ -n "$list" ] || { echo "no header found"; return 1; }
    printf '%s\n' "$list" | xargs -P "$(nproc)" -I{} tools/check_header.sh {}
}

tidy() {
    local list base
    [ -f build/release/compile_commands.json ] || { echo "build/release is not configured"; return 1; }
    if [ $full -eq 1 ]; then
        list=$(product)
    else
        # The module's rooms always; elsewhere what changed since the merge base.
        base=$(git merge-base HEAD "${DMB_LINT_BASE:-origin/main}" 2>/dev/null || git rev-parse HEAD)
        list=$({
            sources 'view/*.cpp' 'tuner/*.cpp' 'graph/*.cpp' 'dialogs/*.cpp' 'dataservice/*.cpp'
            git diff --name-only --diff-filter=d "$base" -- '*.cpp'
        } | grep -vE '(_test|_bench|_fuzz)\.cpp$|^(tests|bench|fuzz)/' | sort -u)
    fi
    # Only what the release build compiles; the rest has no flags.
    list=$(for f in $list; do grep -q "\"$PWD/$f\"" build/release/compile_commands.json && echo "$f"; done)
    [ -n "$list" ] || { echo "no changed product source to look at"; return 0; }
    # Flags of g++ that clang does not know are no findings.
    mkdir -p build/tidy
    sed -e 's/ -fno-gnu-unique//g; s/ -Wno-restrict//g' build/release/compile_commands.json >build/tidy/compile_commands.json
    printf '%s\n' "$list" | xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/tidy 2>&1 |
        grep -vE '^[0-9]+ warnings? generated|^$' > build/tidy.log
    if grep -qE '(warning|error):' build/tidy.log; then cat build/tidy.log; return 1; fi
}

module() { tools/check_module.sh build/release; }
slots() { tools/check_slots.sh; }
edges() { python3 tools/edge_cases.py; }
stories() { python3 tools/check_stories.py; }
# Loads, unloads and loads the module again in a program that is not linked with it.
reload() { build/release/bin/walking_path_tests --gtest_brief=1; }

check() {
    local name=$1 start=$SECONDS out
    if [ ${#only[@]} -gt 0 ] && [[ ! " ${only[*]} " == *" $name "* ]]; then return; fi
    if out=$("$name" 2>&1); then
        echo "OK   lint $name ($((SECONDS - start)) s)"
    else
        echo "FAIL lint $name ($((SECONDS - start)) s)"
        printf '%s\n' "$out" | head -n 40
        failed=1
    fi
}

for name in format width rooms forbidden declarations headers slots edges stories module reload tidy; do check $name; done
exit $failed
