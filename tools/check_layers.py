#!/usr/bin/env python3
"""Holds the library's #include lines to the levels of its families.

A file may include only families of a lower level, or its own. Folders cannot
be ordered without circles, families can; so the table below goes by file. A
header that carries several families spans several levels: it may be included
from above its lowest, and is itself judged by its highest.

Usage: check_layers.py [root]
"""
import fnmatch
import pathlib
import re
import sys

FOLDERS = ["foundation", "values", "timer", "registry", "impl", "handler", "console", "traps",
           "system", "agents", "testing", "include/vkmibh", "examples"]

# (pattern, family, lowest level, highest level); the first match counts. A
# family "values: octet string" belongs to "values", whose header gathers it.
FAMILIES = [
    ("include/vkmibh/platform.h", "base", 0, 0),
    ("include/vkmibh/sync.h", "base", 0, 0),
    ("include/vkmibh/base.h", "base", 0, 0),
    ("include/vkmibh/labels.h", "base", 0, 0),
    ("include/vkmibh/nonvolatile.h", "store interface", 2, 2),
    ("include/vkmibh/objectid.h", "values: object identifier", 1, 1),
    ("include/vkmibh/octets.h", "values: octet string", 1, 1),
    ("include/vkmibh/counter64.h", "values: octet string", 1, 1),
    ("include/vkmibh/syntax.h", "values: object syntax", 2, 2),
    ("include/vkmibh/varbind.h", "values: variable bindings", 3, 3),
    ("include/vkmibh/values.h", "values", 1, 3),
    ("include/vkmibh/containers.h", "containers", 2, 2),
    ("include/vkmibh/timer.h", "timer", 1, 3),
    ("include/vkmibh/transactions.h", "transactions", 3, 3),
    ("include/vkmibh/cmdhandler.h", "console: command handlers", 3, 3),
    ("include/vkmibh/cmdline.h", "console: command parser", 3, 3),
    ("include/vkmibh/cli.h", "console: engine", 4, 4),
    ("include/vkmibh/console.h", "console", 3, 4),
    ("include/vkmibh/subtree.h", "subtree handler", 4, 4),
    ("include/vkmibh/traps.h", "trap mapping", 4, 4),
    ("include/vkmibh/filter.h", "view filter", 4, 4),
    ("include/vkmibh/tree.h", "tree", 5, 5),
    ("include/vkmibh/agents.h", "agents", 5, 5),
    ("include/vkmibh/rqmap.h", "implementations: groups", 5, 5),
    ("include/vkmibh/maprows.h", "implementations: map rows", 7, 7),
    ("include/vkmibh/maparray.h", "implementations: map rows", 7, 7),
    ("include/vkmibh/implbase.h", "implementations: groups", 5, 5),
    ("include/vkmibh/scalars.h", "implementations: scalars", 6, 6),
    ("include/vkmibh/tables.h", "implementations: tables", 6, 6),
    ("include/vkmibh/rowstatus.h", "implementations: row status", 7, 7),
    ("include/vkmibh/impl.h", "implementations", 5, 7),
    ("include/vkmibh/mibinfo.h", "mib information", 7, 7),
    ("include/vkmibh/system.h", "system", 3, 7),
    ("include/vkmibh/handler.h", "query handling", 8, 8),
    ("include/vkmibh/vkmibh.h", "everything", 10, 10),
    ("include/vkmibh/testing/*", "testing kit", 10, 10),
    ("testing/*", "testing kit", 10, 10),
    ("examples/*", "examples", 11, 11),
    ("foundation/*Array*", "containers", 2, 2),
    ("foundation/*Map*", "containers", 2, 2),
    ("foundation/*", "base", 0, 0),
    ("values/ObjectSyntax*", "values: object syntax", 2, 2),
    ("values/Var*", "values: variable bindings", 3, 3),
    ("values/ObjectIdentifier*", "values: object identifier", 1, 1),
    ("values/*", "values: octet string", 1, 1),
    ("timer/Time.*", "timer", 1, 1),
    ("timer/TimeInterval*", "timer", 1, 1),
    ("timer/*", "timer", 3, 3),
    ("registry/*Info*", "mib information", 7, 7),
    ("registry/*", "tree", 5, 5),
    ("impl/RowStatus*", "implementations: row status", 7, 7),
    ("impl/Scalar*", "implementations: scalars", 6, 6),
    ("impl/Table*", "implementations: tables", 6, 6),
    ("impl/Row*", "implementations: tables", 6, 6),
    ("impl/*Adapter*", "implementations: map rows", 7, 7),
    ("impl/*", "implementations: groups", 5, 5),
    ("handler/Transaction*", "transactions", 3, 3),
    ("handler/Subtree*", "subtree handler", 4, 4),
    ("handler/*Filter*", "view filter", 4, 4),
    ("handler/*Cmd*", "handler commands", 9, 9),
    ("handler/*Console*", "handler commands", 9, 9),
    ("handler/*", "query handling", 8, 8),
    ("console/*Parser*", "console: command parser", 3, 3),
    ("console/CmdHandler*", "console: command handlers", 3, 3),
    ("console/CliText*", "console: command handlers", 3, 3),
    ("console/*", "console: engine", 4, 4),
    ("traps/*", "trap mapping", 4, 4),
    ("system/*Impl*", "system", 7, 7),
    ("system/*", "system", 3, 7),
    ("agents/*", "agents", 5, 5),
]

# (including file, included file): why it cannot be otherwise. One that is no
# longer needed fails the check, so that it is taken out.
EXCEPTIONS = {
    ("include/vkmibh/rqmap.h", "include/vkmibh/mibinfo.h"):
        "an implementation owns its MIB information, which reads its owner",
}

# What examples show is written on public headers; one file of theirs is a host.
HOST_OF_EXAMPLES = "examples/ExampleHost.cpp"

# Whatever a C++17 compiler and POSIX bring, and nothing else.
PLATFORM = set("""
algorithm array atomic cctype cerrno charconv chrono cinttypes climits cmath condition_variable csignal
cstdarg cstddef cstdint cstdio cstdlib cstring ctime deque exception fstream functional initializer_list
iterator limits list map memory mutex new numeric optional ostream set shared_mutex sstream stdexcept string string_view
thread tuple type_traits typeinfo unordered_map unordered_set utility vector
cxxabi.h errno.h fcntl.h pthread.h semaphore.h signal.h time.h unistd.h sys/time.h sys/types.h sys/timeb.h
""".split())

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def family_of(path):
    for pattern, family, low, high in FAMILIES:
        if fnmatch.fnmatchcase(path, pattern):
            return family, low, high
    return None


def related(one, other):
    """One family, or a family and the one that gathers it."""
    return one == other or one.startswith(other + ":") or other.startswith(one + ":")


def complaint(source, quote, target):
    """What is wrong with one include line, or None; the path it names."""
    if quote == "<" and not target.startswith("vkmibh/"):
        if target in PLATFORM:
            return None, None
        return f"<{target}> is not of the C++ library or POSIX", None
    if quote == '"' and target.startswith("vkmibh/"):
        return f'"{target}" is a public header: <{target}>', None
    if quote == '"' and source.startswith("examples/") and not target.startswith("examples/"):
        if source == HOST_OF_EXAMPLES and target.startswith("host/"):
            return None, None
        return f'an example includes the private "{target}"', None
    if quote == '"' and source.startswith("include/"):
        return f'a public header includes the private "{target}"', None
    path = "include/" + target if quote == "<" else target
    place = family_of(path)
    if place is None:
        return f'"{target}" is outside the library', None
    family, low, _ = place
    own_family, _, own_high = family_of(source)
    if not related(family, own_family) and low >= own_high:
        return f"{own_family} (level {own_high}) includes {family} (level {low}): {target}", path
    return None, path


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])
    problems, used, count = [], set(), 0
    for folder in FOLDERS:
        for file in sorted((root / folder).glob("**/*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            count += 1
            source = str(file.relative_to(root))
            if family_of(source) is None:
                problems.append(f"{source}: has no place in the table of families")
                continue
            text = file.read_text()
            for match in INCLUDE.finditer(text):
                what, path = complaint(source, *match.groups())
                if what is None:
                    continue
                if (source, path) in EXCEPTIONS:
                    used.add((source, path))
                    continue
                line = text.count("\n", 0, match.start(1)) + 1
                problems.append(f"{source}:{line}: {what}")
    for source, target in sorted(set(EXCEPTIONS) - used):
        problems.append(f"tools/check_layers.py: exception no longer needed: {source} -> {target}")
    if count == 0:
        problems.append(f"no sources under {root}")
    print("\n".join(problems) if problems else f"{count} files keep to their levels")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
