#!/usr/bin/env bash
# clang-tidy (.clang-tidy) and cppcheck over what build/analyse was configured
# for: everything but the tests, or with "tests" the tests.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
part=${1:-code}
commands=build/analyse
scratch=$commands/$part
mkdir -p "$scratch/cppcheck"
python3 - "$part" "$commands/compile_commands.json" "$scratch" <<'PY'
import json
import os
import sys

part, database, scratch = sys.argv[1:]
tests = os.path.join(os.getcwd(), "tests", "")
commands = {}
with open(database) as file:
    for command in json.load(file):
        if command["file"].startswith(tests) == (part == "tests"):
            commands.setdefault(command["file"], command)
if not commands:
    sys.exit("analyse: no source files for '%s'" % part)
with open(os.path.join(scratch, "compile_commands.json"), "w") as file:
    json.dump(list(commands.values()), file)
# The largest first, so that no core waits for the last one.
with open(os.path.join(scratch, "sources"), "w") as file:
    for source in sorted(commands, key=os.path.getsize, reverse=True):
        file.write(os.path.relpath(source) + "\n")
PY
found=0
# Its "style" would be a rule set of its own: it holds functions that only maps of
# handlers name for unused, and would have an algorithm for each loop.
cppcheck --project="$scratch/compile_commands.json" --cppcheck-build-dir="$scratch/cppcheck" \
    --enable=warning,performance,portability --library=posix,googletest,tools/cppcheck.cfg \
    --inline-suppr --suppressions-list=tools/cppcheck.txt \
    --error-exitcode=1 --quiet -j "$(nproc)" || found=1
# Standard error has but the number of findings in headers of the system.
xargs -a "$scratch/sources" -d '\n' -n 1 -P "$(nproc)" \
    clang-tidy --quiet -p "$scratch" 2>"$scratch/clang-tidy.log" || found=1
if [ "$found" != 0 ]; then
    sed '/warnings\? generated\.$/d' "$scratch/clang-tidy.log"
    exit 1
fi
echo "$(wc -l <"$scratch/sources") files: nothing found"
