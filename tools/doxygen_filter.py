#!/usr/bin/env python3
"""Shows a public header to Doxygen: the headers' comments are plain ones, for who reads the
source; here they become those that Doxygen takes.

Usage: doxygen_filter.py HEADER

What stands above a declaration, or behind it on its line, belongs to it. Indented lines are
code, and "Ownership: ..." begins a point of a list.
"""
import re
import sys

POINT = re.compile(r"((?:\w+, )*\w+): +(.*)$")
CODE_INDENT = 3


def escaped(text):
    """Nothing but what stands between backquotes is a command, markup or a reference."""
    parts = text.split("`")
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"([\\@<>#&%*~])", r"\\\1", parts[i])
    if len(parts) % 2 == 0:  # the other one is on the next line
        parts[-1] = re.sub(r"([\\@<>#&%*~])", r"\\\1", parts[-1])
        return "`".join(parts[:-1]) + "\\`" + parts[-1]
    return "`".join(parts)


def documented(comment, indent):
    """The lines of one comment, each without its //."""
    lines, is_code, in_point = [], False, False
    for text in comment:
        blank = not text.strip()
        code = not blank and len(text) - len(text.lstrip()) >= CODE_INDENT and not in_point
        if blank:
            in_point = False
        if code and not is_code:
            lines.append("@code{.cpp}")
        elif is_code and not code and not blank:
            lines.append("@endcode")
        if not blank:
            is_code = code
        point = POINT.match(text.strip())
        if is_code:
            lines.append(text)
        elif point and re.match(r" (Ownership|Threads|Errors|Contract|SET)\b", text):
            in_point = True
            lines.append(f"- **{point[1]}:** {escaped(point[2])}")
        elif in_point:
            lines.append("  " + escaped(text.strip()))
        else:
            lines.append(escaped(text.strip()))
    if is_code:
        lines.append("@endcode")
    return [f"{indent}/// {line}".rstrip() for line in lines]


def main():
    source = open(sys.argv[1], encoding="utf-8").read().split("\n")
    shown, i = [], 0
    while i < len(source):
        start = i
        while i < len(source) and re.match(r"\s*//", source[i]):
            i += 1
        if i > start:
            indent = re.match(r"\s*", source[start])[0]
            comment = [line.lstrip()[2:] for line in source[start:i]]
            floats = i < len(source) and not source[i].strip()
            if start == 0:
                shown += ["/// @file", *documented(comment, indent)]
            elif floats:  # it belongs to no one declaration
                shown += source[start:i]
            else:
                shown += documented(comment, indent)
            continue
        found = re.match(r"^(.*\S) +// ?([^\"]*)$", source[i])
        if found and not source[i].lstrip().startswith("#"):
            shown.append(f"{found[1]} ///< {escaped(found[2])}")
        else:
            shown.append(source[i])
        i += 1
    print("\n".join(shown))


if __name__ == "__main__":
    main()
