#!/usr/bin/env python3
"""The manual pages name every option and every key, and no other; and they are clean."""
import pathlib
import re
import shutil
import subprocess
import sys

from agent import fail, keys_by_table, options

agent, source = sys.argv[1], pathlib.Path(sys.argv[2])
pages = sorted((source / "packaging/man").iterdir())


def compare(what, page, program):
    if page != program:
        fail(f"{what}: not in the manual: {sorted(program - page)}; not in the program: {sorted(page - program)}")


def read(name):
    return (source / "packaging/man" / name).read_text()


# .It Fl h , Fl -help
items = re.findall(r"^\.It (Fl .*)$", read("vkagentd.8"), re.M)
compare("options", {"-" + name for item in items for name in re.findall(r"Fl (\S+)", item)}, options(agent))

# .Ss [[view]], .Ss Tables of include and exclude, .Ss The file
described = {}
for section in re.split(r"^\.Ss ", read("vkagentd.toml.5"), flags=re.M)[1:]:
    title, text = section.split("\n", 1)
    keys = set(re.findall(r"^\.It Cm (\S+)$", text, re.M))
    inner = re.match(r"Tables of (.*)", title)
    names = inner.group(1).split(" and ") if inner else [re.sub(r"^The file$|[\[\]]", "", title)]
    for name in names:
        described[name] = keys
known = keys_by_table(agent)
compare("tables", set(described), set(known))
for table in sorted(known):
    compare(f"keys of [[{table}]]" if table else "keys of the file", described[table], known[table])

if not shutil.which("mandoc"):
    fail("mandoc is not there: install the package of that name")
for page in pages:
    told = subprocess.run(["mandoc", "-Tlint", "-Wwarning", str(page)], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    if told.returncode or told.stdout:
        fail(told.stdout)
print(f"{len(pages)} pages, {len(known)} tables")
