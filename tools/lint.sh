#!/usr/bin/env bash
# Formatting, layers, rules of the tree, headers that stand alone.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mapfile -t sources < <(find include foundation values timer registry impl handler console traps system \
    agents testing host modules examples tests bench fuzz \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null | sort)
clang-format --dry-run -Werror "${sources[@]}"
echo "${#sources[@]} files are formatted"
python3 tools/check_layers.py
python3 tools/check_rules.py
tools/check_headers.sh g++
if command -v clang++ >/dev/null; then
    tools/check_headers.sh clang++
fi
