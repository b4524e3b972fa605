#!/usr/bin/env python3
"""The service is kept to what it needs, and systemd understands it."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from agent import fail, options, skip

agent, source, build = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
text = (build / "packaging/vkagentd.service").read_text()
settings = {}
for name, value in re.findall(r"^(\w+)=(.*)$", text, re.M):
    settings.setdefault(name, []).append(value)

WANTED = {
    "Type": "notify", "User": "vkagentd", "StateDirectory": "vkagentd", "ConfigurationDirectory": "vkagentd",
    "ExecReload": "/bin/kill -HUP $MAINPID",
    "AmbientCapabilities": "CAP_NET_BIND_SERVICE", "CapabilityBoundingSet": "CAP_NET_BIND_SERVICE",
    "NoNewPrivileges": "yes", "ProtectSystem": "strict", "ProtectHome": "read-only", "PrivateTmp": "yes",
    "RestrictAddressFamilies": "AF_INET AF_INET6 AF_NETLINK AF_UNIX", "RestrictNamespaces": "yes",
    "SystemCallFilter": "@system-service", "MemoryDenyWriteExecute": "yes",
}
for name, value in WANTED.items():
    if settings.get(name) != [value]:
        fail(f"{name} is {settings.get(name)}, not {value}")
# These would hide what the modules tell of: processes, interfaces, disks.
for name in ("ProcSubset", "ProtectProc", "PrivateNetwork", "PrivateUsers", "InaccessiblePaths"):
    if name in settings:
        fail(f"{name} hides what the agent serves")
line = settings["ExecStart"][0].split()
unknown = {word for word in line[1:] if word.startswith("--")} - options(agent)
if unknown or not line[0].endswith("/bin/vkagentd"):
    fail(f"ExecStart: {line}")
if not re.search(r"^u vkagentd - ", (source / "packaging/vkagentd.sysusers").read_text(), re.M):
    fail("the user is not made")

if not shutil.which("systemd-analyze"):
    skip("packaging.unit", "systemd-analyze is not installed: only the keys were checked")
with tempfile.TemporaryDirectory() as directory:
    unit = pathlib.Path(directory, "vkagentd.service")
    # The program is where it was built, and the pages are not installed.
    unit.write_text(re.sub(r"^Documentation=.*\n", "", text.replace(line[0], agent), flags=re.M))
    for command in (["verify", "--recursive-errors=no"], ["security", "--offline=true", "--threshold=25"]):
        told = subprocess.run(["systemd-analyze", *command, str(unit)], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        if told.returncode:
            fail(f"systemd-analyze {command[0]}:\n{told.stdout}")
print(f"{len(settings)} settings")
