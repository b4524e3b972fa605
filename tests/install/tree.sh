#!/usr/bin/env bash
# Installs for the prefix /opt/vkmibh into STAGE, so that the prefix is not where it
# was said to be, and compares what is there with the committed list.
# Usage: tree.sh BUILD STAGE LIBDIR LIST
set -euo pipefail
build=$1 stage=$2 libdir=$3 list=$4
export LC_ALL=C

# Every file, and where links lead. What differs by machine and build type is named alike.
files()
{
    (cd "$stage/opt/vkmibh" && find . ! -type d -printf '%P -> %l\n') |
        sed -e 's/ -> $//' -e "s|^$libdir/|lib/|" -e 's|Targets-[a-z]*\.cmake$|Targets-TYPE.cmake|' |
        sort
}

rm -rf "$stage"
mkdir -p "$stage"
DESTDIR=$stage cmake --install "$build" --prefix /opt/vkmibh >"$stage/log" || {
    cat "$stage/log"
    exit 1
}
if elsewhere=$(cd "$stage" && ls -A | grep -v -x -e opt -e log); then
    printf 'installed outside of the prefix: %s\n' "$elsewhere"
    exit 1
fi
if ! files | diff -u --label committed --label installed "$list" -; then
    echo "if it is meant, change the list: $list"
    exit 1
fi
# Nothing in it knows where it was built, or for which prefix.
if grep -rlI -e "$build" -e /opt/vkmibh "$stage/opt/vkmibh/$libdir" "$stage/opt/vkmibh/include"; then
    echo "these name a directory of the build, or the prefix"
    exit 1
fi
echo "$(wc -l <"$list") files, as committed"
