#!/usr/bin/env python3
"""Compares the tables of virtual functions, as the compiler lays them out, with a
committed list: their order is ABI.

    vtables.py [--update] [--flag=-m32] <compiler> <source directory>

The list is tests/layout/vtables.txt. It has every class of the public headers that
has virtual functions, with the function in each slot; a number that the compiler
counts in bytes is given in words, so that one list holds for all word sizes.
"--update" writes it anew: what then differs has to be looked at, slot by slot.
"""
import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile

HEADING = """# Every class with virtual functions, and the function in each slot of its table.
# Order is ABI: a new function goes behind all others of its class, and none moves.
# "pure" stands for one that a derived class supplies, "destructor" for that of a class
# of which there are no objects. The second part of a class that has two bases
# goes by "from word N on", its functions through thunks.
# Vtable_test.cpp tells functions of one name and those that are pure apart.
# Made by tests/layout/vtables.py --update.
"""

# Private, but with a table that others rely on.
SOURCE = """#include <vkmibh/vkmibh.h>
#include "timer/TimerThread.h"
"""


def class_dump(compiler, directory, flags):
    """The compiler's class dump of all public headers."""
    with tempfile.TemporaryDirectory() as place:
        source = os.path.join(place, "classes.cpp")
        dump = os.path.join(place, "classes.dump")
        with open(source, "w", encoding="utf-8") as file:
            file.write(SOURCE)
        command = [compiler, "-std=c++17", *flags, "-I", os.path.join(directory, "include"),
                   "-I", directory, "-fdump-lang-class=" + dump, "-c", source,
                   "-o", os.path.join(place, "classes.o")]
        subprocess.run(command, check=True)
        with open(dump, encoding="utf-8") as file:
            return file.read()


def identifiers(mangled):
    """The parts of a nested name such as N3VLK7CSystem3GetEv."""
    parts, rest = [], re.sub(r"^N[VKRO]*", "", mangled)
    while match := re.match(r"\d+", rest):
        length = int(match.group())
        rest = rest[match.end():]
        parts.append(rest[:length])
        rest = rest[length:]
    if rest.startswith("D"):
        parts.append("~" + parts[-1])
    return parts


def function_name(entry):
    """What stands in a slot, without the namespace and the compiler's notation."""
    entry = entry.replace("(int (*)(...))", "").strip()
    if entry == "__cxa_pure_virtual":
        return "pure"
    if entry == "0":
        return "destructor"
    thunk = re.search(r"_ZTh[nv](?:n?\d+_)+(N.*)$", entry)
    if thunk:
        return "thunk to " + "::".join(identifiers(thunk.group(1))[1:])
    if not entry.startswith("VLK::"):
        raise ValueError("what is " + entry)
    return entry[len("VLK::"):]


def tables(dump):
    """Name of the class and lines, for each table of the dump."""
    # The second entry of a table is the class's type.
    word = int(re.search(r"^(\d+) +\(int \(\*\)\(\.\.\.\)\)\(& _ZTI", dump, re.MULTILINE).group(1))
    for block in re.findall(r"^Vtable for VLK::.*?(?=^$)", dump, re.MULTILINE | re.DOTALL):
        lines = block.splitlines()
        name = lines[0][len("Vtable for VLK::"):]
        text, slot, expects_type = [], 0, False
        for line in lines[2:]:
            entry = re.match(r"\d+ +(.*)$", line).group(1)
            offset = re.fullmatch(r"\(int \(\*\)\(\.\.\.\)\)(-?\d+)", entry)
            if offset:
                # Where a part of the class begins; its type follows.
                if int(offset.group(1)) != 0:
                    text.append("    from word %d on" % (-int(offset.group(1)) // word))
                slot, expects_type = 0, True
            elif expects_type:
                expects_type = False
            else:
                text.append("    %2d  %s" % (slot, function_name(entry)))
                slot += 1
        yield name, text


def listing(dump):
    """The whole list, by class."""
    parts = [HEADING]
    for name, text in sorted(tables(dump)):
        parts.append("\n".join([name, *text]) + "\n")
    return "\n".join(parts)


def main():
    parser = argparse.ArgumentParser(description="virtual functions against tests/layout/vtables.txt")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--flag", action="append", default=[])
    parser.add_argument("compiler")
    parser.add_argument("directory")
    arguments = parser.parse_args()
    found = listing(class_dump(arguments.compiler, arguments.directory, arguments.flag))
    path = os.path.join(arguments.directory, "tests", "layout", "vtables.txt")
    if arguments.update:
        with open(path, "w", encoding="utf-8") as file:
            file.write(found)
        return 0
    with open(path, encoding="utf-8") as file:
        committed = file.read()
    difference = list(difflib.unified_diff(committed.splitlines(), found.splitlines(),
                                           "committed", "compiled", lineterm=""))
    classes = len(re.findall(r"^\w", found, re.MULTILINE))
    print("\n".join(difference) or "%d classes as committed" % classes)
    return 1 if difference else 0


if __name__ == "__main__":
    sys.exit(main())
