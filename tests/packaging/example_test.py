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
words = set(re.findall(r"\w+", text))
missing = {key for keys in keys_by_table(agent).values() for key in keys} - words
if missing:
    fail(f"not in the example: {sorted(missing)}")
print(f"{len(text.splitlines())} lines")
