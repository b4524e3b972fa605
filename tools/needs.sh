#!/usr/bin/env bash
# The library has its soname, needs nothing but the C and C++ libraries, and
# runs no constructor of a static when it is loaded.
# Usage: needs.sh LIBRARY
set -euo pipefail
library=$1
export LC_ALL=C
dynamic=$(readelf -dW "$library")
soname=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")
if [ "$soname" != libVKMibH.so.1 ]; then
    echo "soname is '$soname'"
    exit 1
fi
mapfile -t needed < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
[ ${#needed[@]} -gt 0 ] || { echo "needs nothing at all: not read right"; exit 1; }
bad=0
for name in "${needed[@]}"; do
    case $name in
        libc.so.6 | libm.so.6 | libstdc++.so.6 | libgcc_s.so.1 | ld-linux*.so.*) ;;
        *)
            echo "needs $name"
            bad=1
            ;;
    esac
done
if grep -Eq '\((RPATH|RUNPATH|TEXTREL)\)' <<<"$dynamic"; then
    echo "carries an RPATH, RUNPATH or TEXTREL"
    bad=1
fi
if nm -C "$library" | grep -E '_GLOBAL__sub_I|__static_initialization_and_destruction'; then
    echo "constructs statics at run time, in an order nobody can rely on"
    bad=1
fi
echo "needs: ${needed[*]}"
exit $bad
