#!/usr/bin/env python3
"""The example is right as it stands, and with all that it comments out; it names every key."""
import pathlib
import re
import sys

from agent import check_config, fail, keys_by_table

agent, source = sys.argv[1], pathlib.Path(sys.argv[2])
text = (source / "host/examples/vkagentd.toml").read_text()
# "#key" and "#[[table]]" are commented out, "# Words" are words.
whole = re.sub(r"^#(?=[a-zA-Z\[])", "", text, flags=re.M)
if whole == text:
    fail("nothing is commented out")
for what, tried in (("as it stands", text), ("with all that it comments out", whole)):
    status, output = check_config(agent, tried)
    if status:
        fail(f"the example {what}:\n{output}")
# Each key of a table stands behind its [[name]], to be taken; those that exclude another may be named only.
parts = re.split(r"^\[\[(\w+)\]\]$", whole, flags=re.M)
sections = {"": parts[0]}
for name, section in zip(parts[1::2], parts[2::2]):
    sections[name] = sections.get(name, "") + section
INNER = {"include": "view", "exclude": "view", "members": "group"}
for table, keys in keys_by_table(agent).items():
    section = sections.get(INNER.get(table, table), "")
    known = set(re.findall(r"\b(\w+) = ", section)) | set(re.findall(r"\b\w+File\b", section))
    if not table:
        known |= set(sections)
    if keys - known:
        fail(f"not in the example: {sorted(keys - known)} of {table or 'the file'}")
print(f"{len(text.splitlines())} lines")
