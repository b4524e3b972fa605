#!/usr/bin/env bash
# The library's binary interface (layouts, tables of virtual functions, functions
# and their types, as its debug information has them) against the committed one.
# Usage: abi.sh --check|--update LIBRARY
#
# LIBRARY is the debug build by gcc for x86-64. docs/abi.md says which changes are
# allowed; --update is for those. The baseline is XML of abidw, compressed, without
# types that are none of the public headers'.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
baseline=$root/tests/api/abi.xml.xz
mode=$1
library=$2
headers=$root/include
export LC_ALL=C
if ! command -v abidw >/dev/null; then
    printf 'api.abi: Skipped\nabidw and abidiff (abigail-tools) are not installed\n'
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The standard library's own may change with the compiler.
cat >"$work/suppressions" <<'END'
[suppress_type]
  name_regexp = ^(std|__cxxabiv1)::
  drop = yes
[suppress_function]
  name_not_regexp = VLK::
  drop = yes
END

write()
{
    abidw --headers-dir "$headers" --drop-private-types --suppressions "$work/suppressions" \
        --exported-interfaces-only --drop-undefined-syms --no-corpus-path --no-comp-dir-path --no-show-locs \
        --no-elf-needed --no-parameter-names --no-write-default-sizes --type-id-style hash \
        --out-file "$work/now.xml" "$library"
}

# compare OPTION...: both sides are files of abidw, made in the same way.
compare() { abidiff "$@" --suppressions "$work/suppressions" "$work/committed.xml" "$work/now.xml"; }

write
count=$(grep -c '<function-decl' "$work/now.xml") || count=0
[ "$count" -ge 500 ] || { echo "$library: only $count functions; has it debug information?"; exit 1; }
if [ -e "$baseline" ]; then
    xz -dc "$baseline" >"$work/committed.xml"
fi
case $mode in
    --update)
        if [ -e "$baseline" ]; then
            compare || echo "(abidiff: $?)"
        fi
        sed 's/^ *//' "$work/now.xml" | xz -9c >"$baseline"
        echo "$count functions, $(stat -c %s "$baseline") bytes"
        ;;
    --check)
        compare --no-redundant || {
            echo "abidiff: $?. If docs/abi.md allows it: tools/abi.sh --update LIBRARY"
            exit 1
        }
        echo "$count functions, as committed"
        ;;
    *)
        echo "usage: abi.sh --check|--update LIBRARY" >&2
        exit 2
        ;;
esac
