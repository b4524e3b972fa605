#!/usr/bin/env bash
# The library's dynamic symbols against the committed list.
# Usage: symbols.sh --check|--update LIBRARY
#
# Weak functions and variables are left out: they are what a compiler made of
# inline ones, and differ from build to build. Tables of virtual functions and
# types are weak with one compiler and strong with the other: they count.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
baseline=$root/tests/api/symbols.txt
mode=$1
library=$2
export LC_ALL=C

strong()
{
    nm -D --defined-only --with-symbol-versions "$library" | c++filt |
        sed -nE -e 's/^[0-9a-f]* [TDBRS] //p' -e 's/^[0-9a-f]* V ((vtable|typeinfo|typeinfo name) for )/\1/p' |
        sort -u
}

# Whatever its kind, a name outside the namespace has no business here.
strangers()
{
    nm -D --defined-only "$library" | sed 's/^[0-9a-f]* . //' | c++filt | sort -u |
        awk '!/^VLK::/ && !/^(vtable|typeinfo|typeinfo name) for VLK::/ &&
             !/^(non-virtual|virtual) thunk to VLK::/ && !/^VKMIBH_1$/'
}

case $mode in
    --update)
        strong >"$baseline"
        echo "$(wc -l <"$baseline") symbols"
        ;;
    --check)
        now=$(mktemp)
        trap 'rm -f "$now"' EXIT
        strong >"$now"
        [ -s "$now" ] || { echo "$library exports nothing"; exit 1; }
        odd=$(strangers)
        [ -z "$odd" ] || { printf 'exported, and not of the library:\n%s\n' "$odd"; exit 1; }
        if ! diff -u --label committed --label built "$baseline" "$now"; then
            echo "if it is meant: tools/symbols.sh --update LIBRARY"
            exit 1
        fi
        echo "$(wc -l <"$now") symbols, as committed"
        ;;
    *)
        echo "usage: symbols.sh --check|--update LIBRARY" >&2
        exit 2
        ;;
esac
