#!/usr/bin/env python3
"""Holds the comments of the public classes to what users ask of them: what a class is for,
who owns what, what may run side by side, and how errors come back.

Usage: check_comments.py [root]

A class whose comment says "as Another" for some of these is taken at its word, when there is
that other class. A comment that answers all and belongs to no one class ("What the four arrays
share") is for the classes below it in its header. Classes inside classes need a comment, no
more.
"""
import pathlib
import re
import sys

CLASS = re.compile(r"^( *)(?:class|struct VKMIBH_API) (?:VKMIBH_API |VKMIBH_TSA\(.*?\)+ )*(\w+)[^;]*$")
ANSWERS = ("Ownership", "Threads", "Errors")


def comment_above(lines, at):
    """The text of the comment above a line, without that of a template line between."""
    while at > 0 and lines[at - 1].lstrip().startswith("template <"):
        at -= 1
    text = []
    while at > 0 and lines[at - 1].lstrip().startswith("//"):
        at -= 1
        text.insert(0, lines[at].lstrip()[2:])
    return text


def answers(comment):
    """Which questions are answered: "Ownership, Threads: as B" answers two."""
    told = {}
    text = " ".join(comment)
    for found in re.finditer(r"\b((?:\w+, )*(?:Ownership|Threads|Errors|Contract)): +(\S.*?)"
                             r"(?=\b(?:\w+, )*(?:Ownership|Threads|Errors|Contract):|$)", text):
        for word in found[1].split(", "):
            told[word] = found[2]
    return told


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])
    problems, classes = [], {}
    for path in sorted((root / "include").rglob("*.h")):
        lines = path.read_text().split("\n")
        shared = {}
        for i, line in enumerate(lines):
            if not line and not all(shared.get(word) for word in ANSWERS):
                shared = answers(comment_above(lines, i))
            found = CLASS.match(line)
            if found:
                name = f"{path.relative_to(root)}:{i + 1}: {found[2]}"
                classes[found[2]] = (name, found[1], comment_above(lines, i), shared)
    for name, indent, comment, shared in classes.values():
        if not comment and not shared:
            problems.append(f"{name} has no comment")
        elif not indent:
            told = {**shared, **answers(comment)}
            missing = [word for word in ANSWERS if not told.get(word)]
            if missing:
                problems.append(f"{name} does not tell of: {', '.join(missing)}")
            for text in told.values():
                other = re.match(r"as (?:of )?(\w+)[.;,]", text)
                if other and re.match(r"[A-Z]+[a-z]", other[1]) and other[1] not in classes:
                    problems.append(f"{name} is as {other[1]}, which is no public class")
    if not classes:
        problems.append(f"no classes under {root}/include")
    print("\n".join(problems) if problems else f"{len(classes)} public classes tell what they have to")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
