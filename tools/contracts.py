#!/usr/bin/env python3
"""Keeps docs/contracts.md equal to the CONTRACT comments of the tree, each with its test.

Usage: contracts.py [--update] [ROOT]

A row is a file, what its comment says is kept, and the tests that hold it. With --update rows
are written for all comments; the tests of those that were there stay, and a new one has none,
which is refused until one is named. Every test that is named has to be in tests/ (a layout
is held by a file there), and every test whose own name begins with CONTRACT_ has to be named.
"""
import pathlib
import re
import sys

FOLDERS = ("include", "foundation", "values", "timer", "registry", "impl", "handler", "console", "traps",
           "system", "agents", "host", "modules")
ROW = re.compile(r"^\| `([^`]+)` \| (.*) \| (.*) \|$")
HEAD = "| file | what is kept | tests |\n|---|---|---|"


def contracts(path):
    """What each CONTRACT comment of a file says, in one line."""
    lines = path.read_text().split("\n")
    for i, line in enumerate(lines):
        if not re.search(r"//.*\bCONTRACT: ", line):
            continue
        text = [line.split("CONTRACT: ")[1]]
        for more in lines[i + 1:]:
            found = re.match(r"\s*// ?(?!\s*CONTRACT: )(.*)$", more)
            if not found or not found[1].strip():
                break
            text.append(found[1].strip())
        said = " ".join(text).replace("|", "\\|")
        yield said


def found_in(root):
    """All of them, by folder."""
    folders = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = str(path.relative_to(root))
                for text in contracts(path):
                    folders.setdefault(folder, []).append((name, text))
    return folders


def tests_of(root):
    names = set()
    for path in (root / "tests").rglob("*.cpp"):
        for found in re.finditer(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", path.read_text()):
            names.add(f"{found[1]}.{found[2]}")
    return names


def main():
    arguments = sys.argv[1:]
    update = "--update" in arguments
    rest = [word for word in arguments if word != "--update"]
    root = pathlib.Path(rest[0] if rest else pathlib.Path(__file__).parents[1])
    document = root / "docs" / "contracts.md"
    text = document.read_text()
    listed = {}
    for line in text.split("\n"):
        row = ROW.match(line)
        if row:
            listed.setdefault((row[1], row[2]), row[3])
    folders = found_in(root)
    if update:
        body = text.split("\n## ")[0].rstrip()
        for folder, rows in folders.items():
            body += f"\n\n## {folder}\n\n{HEAD}"
            for name, said in rows:
                body += f"\n| `{name}` | {said} | {listed.get((name, said), '')} |"
        document.write_text(body + "\n")
        listed = {(row[1], row[2]): row[3] for row in map(ROW.match, body.split("\n")) if row}
    problems, tests, named = [], tests_of(root), set()
    kept = [row for rows in folders.values() for row in rows]
    problems += [f"{name}: not in docs/contracts.md: {said}" for name, said in kept if (name, said) not in listed]
    problems += [f"docs/contracts.md: no longer in {name}: {said}" for name, said in listed if (name, said) not in kept]
    for (name, said), cell in listed.items():
        own = re.findall(r"`([\w/]+\.\w+)`", cell)
        named.update(own)
        if not own:
            problems.append(f"docs/contracts.md: {name}: no test: {said}")
        problems += [f"docs/contracts.md: {name}: there is no test {test}" for test in own
                     if test not in tests and not ("/" in test and (root / test).is_file())]
    problems += [f"docs/contracts.md: {test} is not named" for test in sorted(tests - named)
                 if test.split(".")[1].startswith("CONTRACT_")]
    if not kept:
        problems.append(f"no CONTRACT comments under {root}")
    print("\n".join(problems) if problems else f"{len(kept)} contracts are listed with their tests")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
