#!/usr/bin/env python3
"""Tells how much of each folder the tests of build/coverage have run.

Usage: coverage.py library [page]   the library; fails below the floors
       coverage.py agent [page]     host and modules

With a page the figures are written into it, between the markers of the part.

Lines that no test runs are shown unless the page of the tree lists them with a
reason. Branches that the compiler adds for exceptions are not counted.
"""
import fnmatch
import json
import pathlib
import re
import subprocess
import sys
import tempfile

BUILD = pathlib.Path("build/coverage")
PAGE = pathlib.Path("tests/COVERAGE.md")
FOLDERS = {
    "library": ["include/vkmibh", "foundation", "values", "registry", "impl", "handler", "console",
                "timer", "traps", "system", "agents"],
    # Each of the two with its subfolders, which follow it.
    "agent": ["host", "host/access", "host/agents", "host/config", "host/verbs", "host/wire",
              "modules", "modules/hostresources", "modules/interfaces", "modules/rmon", "modules/targets"],
}
# What the agent makes of the library's headers is not the library's to test.
# The headers of the testing kit are no part of the library.
LEFT_OUT = {"library": ["--exclude-directories", ".*/(host|modules|examples)$",
                        "--exclude", "include/vkmibh/testing/"]}
FLOORS = {"line": 95.0, "branch": 85.0}


def measure(part):
    """gcovr's summary per file, and {file: [numbers of the lines that did not run]}."""
    with tempfile.TemporaryDirectory() as name:
        summary, detail = pathlib.Path(name, "summary.json"), pathlib.Path(name, "detail.json")
        subprocess.run(["gcovr", "--root", ".", str(BUILD), "--exclude-throw-branches",
                        "--exclude-unreachable-branches", "--filter", f"({'|'.join(FOLDERS[part])})/",
                        *LEFT_OUT.get(part, []), "--json-summary", str(summary), "--json", str(detail)], check=True)
        files = json.loads(summary.read_text())["files"]
        lines = json.loads(detail.read_text())["files"]
    missed = {file["file"]: [line["line_number"] for line in file["lines"]
                             if not line["count"] and not line.get("gcovr/noncode")]
              for file in lines}
    # A source that was deleted may have left its notes in the build.
    return [file for file in files if pathlib.Path(file["filename"]).exists()], missed


def figures(folders, files):
    """[[folder, lines run, lines, branches taken, branches]]"""
    rows = []
    for folder in folders:
        inside = [file for file in files if file["filename"].startswith(folder + "/")]
        rows.append([folder] + [sum(file[key] for file in inside) for key in
                                ("line_covered", "line_total", "branch_covered", "branch_total")])
    return rows


def percent(part, whole):
    """Rounded down, so that nothing is said to reach a floor that it does not reach."""
    return int(1000 * part / whole) / 10 if whole else 100.0


def table(rows):
    text = "| folder | lines | branches |\n|---|---|---|\n"
    for folder, lines, all_lines, branches, all_branches in rows:
        text += (f"| `{folder}` | {percent(lines, all_lines):.1f} % of {all_lines} |"
                 f" {percent(branches, all_branches):.1f} % of {all_branches} |\n")
    return text


def below_floors(rows):
    problems = []
    for folder, lines, all_lines, branches, all_branches in rows:
        if not all_lines:
            problems.append(f"{folder}: nothing was measured")
        for kind, part, whole in ("line", lines, all_lines), ("branch", branches, all_branches):
            if percent(part, whole) < FLOORS[kind]:
                problems.append(f"{folder}: {percent(part, whole):.1f} % of the {kind} count,"
                                f" below {FLOORS[kind]:.0f} %")
    return problems


def unlisted(missed):
    """Lines that did not run and that the page has no reason for: | `files` | `text` | reason |"""
    rows = re.findall(r"^\| `([^`|]+)` \| (.+) \| [^|]+\|$", PAGE.read_text(), re.MULTILINE)
    listed = [(files, code) for files, cell in rows for code in re.findall("`([^`]+)`", cell)]
    for name in sorted(missed):
        text = pathlib.Path(name).read_text().splitlines() if missed[name] else []
        for number in missed[name]:
            code = text[number - 1].strip()
            if not any(code == known and fnmatch.fnmatch(name, files) for files, known in listed):
                yield f"{name}:{number}: {code}"


def write(page, part, text):
    begin, end = f"<!-- {part}: begin -->", f"<!-- {part}: end -->"
    before, rest = page.read_text().split(begin)
    page.write_text(before + begin + "\n" + text + end + rest.split(end)[1])


def main():
    part = sys.argv[1] if len(sys.argv) > 1 else ""
    if part not in FOLDERS:
        sys.exit(__doc__)
    files, missed = measure(part)
    rows = figures(FOLDERS[part], files)
    for line in unlisted(missed):
        print(f"not run: {line}")
    print(table(rows), end="")
    if len(sys.argv) > 2:
        write(pathlib.Path(sys.argv[2]), part, table(rows))
    if part == "library":
        problems = below_floors(rows)
        print("\n".join(problems) or "no folder of the library is below"
              f" {FLOORS['line']:.0f} % of its lines and {FLOORS['branch']:.0f} % of its branches")
        sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
