#!/usr/bin/env python3
"""Holds the tree to rules that no compiler knows: file sizes, checks that
cannot fail, disabled tests, notes to self.

Usage: check_rules.py [root]
"""
import pathlib
import re
import sys

SKIPPED = {".git", "build", ".cache", "__pycache__", "corpus"}
CODE = {".h", ".cpp"}
SCRIPTS = {".sh", ".py", ".cmake", ".txt", ".json", ".yml", ""}
MAX_PUBLIC_HEADER = 400
MAX_SOURCE = 600

# (what a line must not match, why); in code and scripts alike.
FORBIDDEN = [
    (re.compile(r"\|\|\s*(true\b|:\s*$)"), "a check that cannot fail"),
    (re.compile(r"\b(TO[D]O|FIX[M]E|XX[X])\b"), "unfinished: finish it"),
    # What a machine lacks is a reason to skip, when it is told.
    (re.compile(r"\bGTEST_SKI[P]\b(?!\(\) <<)|\bDISABLE[D]_\w"), "a test that does not run"),
    (re.compile(r"\s+$"), "white space at the end of the line"),
]


def files(root):
    for path in sorted(root.rglob("*")):
        parts = path.relative_to(root).parts
        if path.is_file() and not SKIPPED.intersection(parts):
            if path.suffix in CODE | SCRIPTS:
                yield path, "/".join(parts)


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])
    problems, count = [], 0
    for path, name in files(root):
        try:
            text = path.read_text()
        except UnicodeDecodeError:
            continue
        count += 1
        lines = text.split("\n")
        if path.suffix in CODE:
            limit = MAX_PUBLIC_HEADER if name.startswith("include/") else MAX_SOURCE
            if len(lines) - 1 > limit:
                problems.append(f"{name}: {len(lines) - 1} lines, more than {limit}: two subjects")
        # Recorded output may hold anything.
        if path.suffix == ".txt" and path.name != "CMakeLists.txt":
            continue
        for number, line in enumerate(lines, 1):
            for pattern, why in FORBIDDEN:
                if pattern.search(line):
                    problems.append(f"{name}:{number}: {why}: {line.strip()}")
    if count == 0:
        problems.append(f"no files under {root}")
    print("\n".join(problems) if problems else f"{count} files keep to the rules")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
