"""What vkagentd says of its options and of the keys of its configuration."""
import os
import re
import subprocess
import sys
import tempfile


def fail(message):
    sys.exit("FAILED: " + message)


def skip(test, reason):
    print(f"{test}: Skipped\n{reason}")
    sys.exit(77)


def check_config(agent, text):
    """Exit status and output of --check-config on a private file with that text."""
    with tempfile.TemporaryDirectory() as directory:
        name = os.path.join(directory, "vkagentd.toml")
        with open(name, "w", opener=lambda path, flags: os.open(path, flags, 0o600)) as file:
            file.write(text)
        done = subprocess.run([agent, "--config", name, "--check-config"], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return done.returncode, done.stdout


def known_keys(agent, text):
    """The keys that it offers in place of the one called zz."""
    told = re.search(r"'zz' is no key of (.*), which has (.*)\n", check_config(agent, text)[1])
    return told and set(told.group(2).split(", "))


def keys_by_table(agent):
    """The name of each table, and its keys; those of the file itself under ''."""
    keys = {"": known_keys(agent, "zz = 1\n")}
    if not keys[""]:
        fail("the keys of a file are not told")
    for name in sorted(keys[""]):
        table = known_keys(agent, f"[[{name}]]\nzz = 1\n")
        if table:
            keys[name] = table
    for table in [name for name in keys if name]:
        for name in keys[table]:
            inner = known_keys(agent, f"[[{table}]]\n{name} = [{{ zz = 1 }}]\n")
            if inner:
                keys[name] = inner
    if len(keys) < 8:
        fail("too few tables are told: " + ", ".join(keys))
    return keys


def options(agent):
    """--foreground, -f and all the others."""
    text = subprocess.run([agent, "--help"], stdout=subprocess.PIPE, text=True, check=True).stdout
    return {option for line in re.findall(r"^  (-[-\w,]+)", text, re.M) for option in line.split(",")}
