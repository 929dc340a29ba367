#!/usr/bin/env bash
# Lines per room, product and tests, against the commit before.
set -euo pipefail
cd "$(dirname "$0")/.."
count() { # revision -> "room product tests" lines
    git ls-tree -r --name-only "$1" | grep -E '\.(cpp|h)$' | while read -r file; do
        case $file in host/*) room=$(cut -d/ -f1,2 <<<"$file") ;; *) room=${file%%/*} ;; esac
        kind=product
        [[ $file =~ (_test|_bench|_fuzz)\.cpp$ || $file =~ ^(tests|bench|fuzz)/ ]] && kind=tests
        echo "$room $kind $(git cat-file blob "$1:$file" | wc -l)"
    done | awk '{ lines[$1 " " $2] += $3; rooms[$1] = 1 } END { for (r in rooms) print r, lines[r " product"] + 0, lines[r " tests"] + 0 }' | sort
}
before=$(git rev-parse -q --verify HEAD~1 2>/dev/null || git rev-parse HEAD)
join -a 1 -e 0 -o 0,1.2,1.3,2.2,2.3 <(count HEAD) <(count "$before") |
    awk 'BEGIN { printf "%-18s %8s %8s %10s\n", "room", "product", "tests", "change" }
         { printf "%-18s %8d %8d %+10d\n", $1, $2, $3, $2 + $3 - $4 - $5 }'
