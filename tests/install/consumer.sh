#!/usr/bin/env bash
# Builds the consumer project against an installed tree, and starts its programs: a
# host, and a module that is proved with the testing kit.
# Usage: consumer.sh NAME cmake|pkg-config STANDARD COMPILER PREFIX LIBDIR SOURCE WORK [FLAG]...
set -euo pipefail
name=$1 how=$2 standard=$3 compiler=$4 prefix=$5 libdir=$6 source=$7 work=$8/$1
shift 8
export LC_ALL=C

if ! command -v "$compiler" >/dev/null; then
    printf '%s: Skipped\n%s is not installed\n' "$name" "$compiler"
    exit 77
fi
rm -rf "$work"
mkdir -p "$work"
flags=(-Wall -Wextra -Wpedantic -Werror "$@")

if [ "$how" = cmake ]; then
    cmake -S "$source" -B "$work" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_STANDARD="$standard" \
        -DCMAKE_CXX_EXTENSIONS=OFF -DCMAKE_CXX_FLAGS="${flags[*]}" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work" --verbose
else
    export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
    pkg-config --validate vkmibh vkmibh-testing
    for program in consumer=main=vkmibh prove=prove=vkmibh-testing; do
        IFS== read -r program file package <<<"$program"
        # The paths as pkg-config shortens them.
        told=$(pkg-config --cflags --libs "$package")
        echo "$told"
        if grep -vxE '(-I|-L|-l)[^ ]+' <(tr ' ' '\n' <<<"${told% }"); then
            echo "$package.pc gives flags that are the build's"
            exit 1
        fi
        # shellcheck disable=SC2086
        "$compiler" -std=c++"$standard" "${flags[@]}" "$source/$file.cpp" -o "$work/$program" $told
    done
fi

for program in consumer prove; do
    readelf -dW "$work/$program" | grep 'NEEDED.*\[libVKMibH\.so\.[0-9]*\]'
done
said=$(LD_LIBRARY_PATH=$prefix/$libdir "$work/consumer")
if [ "$said" != "1.3.6.1.2.1.1.1.0 Velkoran agent" ]; then
    echo "the consumer says: $said"
    exit 1
fi
LD_LIBRARY_PATH=$prefix/$libdir "$work/prove"
