#!/usr/bin/env bash
# Every header compiles alone, as C++17, without warnings.
# Usage: check_headers.sh COMPILER [HEADER]...   (default: every library header)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
compiler=$1
shift
headers=("$@")
if [ ${#headers[@]} = 0 ]; then
    mapfile -t headers < <(find include foundation values timer registry impl handler console traps \
        system agents testing examples -name '*.h' 2>/dev/null | sort)
fi
[ ${#headers[@]} -gt 0 ] || { echo "no headers found"; exit 1; }
bad=0
for header in "${headers[@]}"; do
    case $header in
        include/*) line="#include <${header#include/}>" ;;
        *) line="#include \"$header\"" ;;
    esac
    if ! printf '%s\n' "$line" | "$compiler" -std=c++17 -fsyntax-only -Iinclude -I. -Wall -Wextra \
        -Wpedantic -Wshadow -Woverloaded-virtual -Werror -x c++ -; then
        echo "$header does not compile alone with $compiler"
        bad=$((bad + 1))
    fi
done
echo "${#headers[@]} headers, $bad bad"
[ "$bad" = 0 ]
