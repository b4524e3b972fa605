#!/usr/bin/env python3
"""Every command that README and guides show is run, and answers as they say.

Usage: commands_test.py <source root> <directory of the programs>

A block of commands ("$ ...") is typed into one shell, at the agent that the last `./dev run`
or `./dev example` of the document has started. `...` stands for any lines. What `./dev` would
build is taken from the programs' directory; of its other commands only the words are checked
here: what they do is what `./dev ci` runs. A command in the text, between backquotes, has to
be one of `./dev`, or one of those at the end of this file.
"""
import pathlib
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()
PROGRAMS = pathlib.Path(sys.argv[2]).resolve()
DEV = (ROOT / "dev").read_text()
DOCUMENTS = [ROOT / "README.md", *sorted(ROOT.glob("CON*.md")), *sorted((ROOT / "docs").glob("*.md"))]
PATIENCE = 120  # seconds that a busy machine may need to start an agent


def help_of_dev():
    return {found[1]: found[2] for found in re.finditer(r"^cmd_([a-z-]+)\(\) # (.*)$", DEV, re.M)}


class Agent:
    """A program that says where it is ready, in a directory with an empty `build`."""

    def __init__(self, program, *arguments):
        self.directory = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.directory.name)
        (self.path / "build").mkdir()
        # Of the tools: or they say that they made it; and a SET is not sent twice.
        (self.path / "cert_indexes").mkdir()
        (self.path / "snmp.conf").write_text(f"timeout {PATIENCE}\nretries 0\n")
        self.process = subprocess.Popen(
            [PROGRAMS / program, *arguments], cwd=self.path, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            env={"HOME": self.directory.name, "PATH": "/usr/bin:/bin"})
        self.address = self._address()

    def _address(self):
        text, end = b"", time.monotonic() + PATIENCE
        while b"ready on udp:" not in text or not text.endswith(b"\n"):
            ready, _, _ = select.select([self.process.stdout], [], [], max(0, end - time.monotonic()))
            more = self.process.stdout.read1(4096) if ready else b""
            if not more:
                raise AssertionError(f"{self.process.args} did not start: {text.decode()}")
            text += more
        return text.decode().split("ready on udp:")[1].split("\n")[0]

    def ask(self, commands):
        """What a shell answers to each command, and its status."""
        script = "".join(f"{{ {command}\n}} 2>&1; echo \"#$?#\"\n" for command in commands)
        script = script.replace("127.0.0.1:1161", self.address)
        environment = {"HOME": self.directory.name, "PATH": "/usr/bin:/bin", "MIBS": "",
                       "SNMPCONFPATH": self.directory.name,
                       "SNMP_PERSISTENT_DIR": self.directory.name}
        done = subprocess.run(["sh", "-c", script], cwd=self.path, env=environment, text=True,
                              capture_output=True, check=True, timeout=10 * PATIENCE)
        parts = re.split(r"#(\d+)#\n", done.stdout)
        return list(zip(parts[0::2], map(int, parts[1::2])))

    def end(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()
        self.directory.cleanup()


STORES = tempfile.TemporaryDirectory()


def vkagentd(configuration):
    return Agent("vkagentd", "--config", configuration, "--listen", "udp:127.0.0.1:0", "--store",
                 tempfile.mkdtemp(dir=STORES.name) + "/store.db", "--no-console")


def blocks(document):
    """The commands of each block, with the lines of their answers."""
    for text in re.findall(r"^```\w*\n(.*?)^```$", document.read_text(), re.M | re.S):
        commands = []
        for line in text.splitlines():
            if line.startswith("$ "):
                commands.append((line[2:], []))
            elif commands:
                commands[-1][1].append(line)
        if commands:
            yield commands


def inline(document):
    """Commands between backquotes, outside of blocks."""
    text = re.sub(r"^```.*?^```$", "", document.read_text(), flags=re.M | re.S)
    for code in re.findall(r"`([^`\n]+)`", text):
        if re.match(r"\./dev\b|build/\S+ |(snmp[a-z]+|vkagentd|tools/\S+) +\S", code):
            yield code


def symbolic(document):
    """The SETs whose objects have names, without `snmpset ...`."""
    text = re.sub(r" \\\n +", " ", document.read_text())
    return re.findall(r"^    snmpset \.\.\. (.*)$", text, re.M)


def numeric(words):
    """The same with numbers: the tools know no names where there are no MIB files. Of the
    machine's storage, memory is always there, a disk need not be."""
    words = words.replace("hrStorageUsed.101", "hrStorageUsed.1")
    for name, number in NAMES.items():
        words = re.sub(rf"\b{name}\.", number + ".", words)
    return re.sub(r"\.'(.)'", lambda found: f".{ord(found[1])}", words)


def pattern_of(answer):
    """What an answer may be: `...` is any lines, times are any times."""
    lines = []
    for line in answer:
        if line == "...":
            lines.append(r"(.*\n)*?")
            continue
        line = re.escape(line + "\n")
        lines.append(re.sub(r"Timeticks:\\ \\\(\d+\\\)\\ [^\n]*?(?=\\?\n)", r"Timeticks: .*", line))
    return "".join(lines)


class Commands(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.agent = None

    def tearDown(self):
        self.begin(None)

    def begin(self, agent):
        if self.agent:
            self.agent.end()
        self.agent = agent

    def check_dev(self, command, answer=()):
        """The words of a `./dev` command; starts the agent that it would start."""
        words = command.split()
        name = words[1] if len(words) > 1 else "help"
        self.assertIn(name, help_of_dev(), command)
        rest = [word.strip("'") for word in words[2:]]
        if name == "example":
            self.assertTrue((ROOT / "examples" / rest[0] / "main.cpp").is_file()
                            or rest[0] == "mine", command)
        elif name == "build" and rest:
            self.assertIn(f'"name": "{rest[0]}"', (ROOT / "CMakePresets.json").read_text(), command)
        elif name == "fuzz" and rest[0] != "TARGET":
            self.assertTrue((ROOT / "fuzz" / f"{rest[0]}_fuzz.cpp").is_file(), command)
        elif name == "bench" and rest:
            self.check_benchmarks(rest[0])
        for line in answer:
            self.check_dev_line(line)

    def check_benchmarks(self, names):
        sources = "".join(path.read_text() for path in (ROOT / "bench").rglob("*.cpp"))
        for name in names.split("|"):
            self.assertRegex(sources, rf"\bBENCHMARK\w*\((BM_)?{name}|\b{name}\b", names)

    def check_dev_line(self, line):
        if line.startswith("dev: installing "):
            lists = [re.search(rf"^{name}_packages=\((.*)\)$", DEV, re.M)[1] for name in ("build", "host")]
            self.assertEqual(line, "dev: installing " + " ".join(lists))
        elif line.startswith(("dev: building ", "dev: testing ")):
            self.assertIn(f'say "{line.split()[1]} $preset"', DEV)
        elif line.startswith("dev: "):
            self.assertIn(f'say "{line[5:]}"', DEV)

    def check_tool(self, tool, *options):
        self.assertTrue((ROOT / tool).is_file(), tool)
        for option in options:
            if option.startswith("-"):
                self.assertIn(option, (ROOT / tool).read_text(), tool)

    def start(self, command, answer):
        words = command.split()
        if words[:2] == ["./dev", "run"]:
            self.begin(vkagentd(ROOT / "docs" / "vkagentd.toml"))
            self.assertIn("vkagentd: ready on udp:127.0.0.1:1161", answer)
        elif words[:2] == ["./dev", "example"]:
            arguments = ["127.0.0.1:0", *words[4:]]
            if len(words) > 3:
                self.assertEqual(words[3], "127.0.0.1:1161", command)
            self.begin(Agent(f"example_{words[2]}", *arguments))

    def run_block(self, commands):
        shell = []
        for command, answer in commands:
            if command.startswith("./dev"):
                self.check_dev(command, answer)
                self.start(command, answer)
            elif command in ELSEWHERE:
                self.assertTrue(any(ELSEWHERE[command] in path.read_text()
                                    for path in ROOT.glob("tests/**/*_test.cpp")), command)
            else:
                shell.append((command, answer))
        if not shell:
            return
        self.assertIsNotNone(self.agent, f"no agent was started for: {shell[0][0]}")
        answers = self.agent.ask([command for command, _ in shell])
        self.assertEqual(len(answers), len(shell))
        for (command, wanted), (got, _) in zip(shell, answers):
            # A refusal ends with an empty line, which a block need not show at its end.
            self.assertRegex(got, rf"\A{pattern_of(wanted)}\n?\Z", command)

    def test_blocks(self):
        count = 0
        for document in DOCUMENTS:
            self.begin(None)
            for commands in blocks(document):
                with self.subTest(document=document.name, command=commands[0][0]):
                    self.run_block(commands)
                count += len(commands)
        self.assertGreater(count, 40, "blocks were not found")

    def test_inline(self):
        for document in DOCUMENTS:
            for command in inline(document):
                with self.subTest(document=document.name, command=command):
                    if command.startswith("./dev"):
                        self.check_dev(command)
                    elif command.startswith("tools/"):
                        self.check_tool(*command.split())
                    else:
                        self.assertIn(command, INLINE, "nothing here runs it")
                        INLINE[command](self, command)

    def test_symbolic(self):
        with tempfile.TemporaryDirectory() as directory:
            file = pathlib.Path(directory) / "vkagentd.toml"
            text = (ROOT / "docs" / "vkagentd.toml").read_text()
            file.write_text(text.replace("[[community]]", 'alarmCommunity = "public"\n\n[[community]]', 1))
            self.begin(vkagentd(file))
        commands = [words for document in DOCUMENTS for words in symbolic(document)]
        self.assertGreater(len(commands), 3)
        for words in commands:
            with self.subTest(command=words):
                command = f"snmpset -v2c -c private 127.0.0.1:1161 {numeric(words)}"
                answer, status = self.agent.ask([command])[0]
                self.assertEqual(status, 0, answer)

    def test_what_is_listed_is_there(self):
        text = (ROOT / "docs" / "ARCHITECTURE.md").read_text()
        listed = re.search(r"no other requirement than a bare Debian\): `([a-z -]+)`", text)[1]
        self.assertEqual(sorted(listed.split()), sorted(set(help_of_dev()) - {"help"}))

    def test_maps_are_whole(self):
        """The README's table of folders, and that of headers."""
        text = (ROOT / "README.md").read_text()
        folders, headers = (text.split(f"\n## {name}\n")[1].split("\n## ")[0]
                            for name in ("Folders", "Headers"))
        for path in ROOT.iterdir():
            if any(any(path.glob(kind)) for kind in ("*.h", "*.cpp", "CMakeLists.txt")):
                self.assertIn(f"`{path.name}/", folders)
        for path in (ROOT / "include" / "vkmibh").iterdir():
            self.assertIn(f"`{path.name}{'/' if path.is_dir() else ''}`", headers)

    def test_no_entry_is_left_over(self):
        shown = {command for document in DOCUMENTS for command in inline(document)}
        shown |= {command for document in DOCUMENTS for block in blocks(document) for command, _ in block}
        self.assertEqual([command for command in [*INLINE, *ELSEWHERE] if command not in shown], [])

    # What the commands of INLINE do.

    def check_config(self, _):
        program = PROGRAMS / "vkagentd"
        good = subprocess.run([program, "--config", ROOT / "docs" / "vkagentd.toml", "--check-config"],
                              check=False, capture_output=True)
        self.assertEqual(good.returncode, 0)
        bad = subprocess.run([program, "--config", ROOT / "dev", "--check-config"], check=False,
                             capture_output=True)
        self.assertEqual(bad.returncode, 2)

    def configured(self, _):
        vkagentd(ROOT / "docs" / "vkagentd.toml").end()

    def help(self, command):
        done = subprocess.run([PROGRAMS / "vkagentd", command.split()[1]], check=False,
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 0)
        self.assertIn("--config", done.stdout)

    def as_user(self, command):
        """With the user of the configuration's chapter on users."""
        text = (ROOT / "docs" / "configuration.md").read_text()
        user = next(block for block in re.findall(r"^```toml\n(.*?)^```$", text, re.M | re.S)
                    if block.startswith("[[user]]"))
        with tempfile.TemporaryDirectory() as directory:
            file = pathlib.Path(directory) / "vkagentd.toml"
            file.touch(0o600)
            file.write_text(user)
            self.begin(vkagentd(file))
            answer, status = self.agent.ask([command.replace("HOST", "127.0.0.1:1161")])[0]
        self.assertEqual((answer, status), ('iso.3.6.1.2.1.1.1.0 = STRING: "Velkoran agent"\n', 0))

    def negative(self, command):
        self.begin(Agent("example_subtree", "127.0.0.1:0", "1.0=5"))
        name = "1.3.6.1.4.1.32473.2.6.1.0"
        command = command.replace("COMMUNITY", "private").replace("HOST", "127.0.0.1:1161")
        answer, status = self.agent.ask([command.replace("OID", name)])[0]
        self.assertEqual((answer, status), (f"iso.{name[2:]} = INTEGER: -5\n", 0))


# What the columns of symbolic SETs are called.
NAMES = {
    f"{table}{column}": f"1.3.6.1.{entry}.{arc}"
    for table, entry, columns in (
        ("snmpTargetAddr", "6.3.12.1.2.1",
         {"TDomain": 2, "TAddress": 3, "TagList": 6, "Params": 7, "RowStatus": 9}),
        ("snmpTargetParams", "6.3.12.1.3.1",
         {"MPModel": 2, "SecurityModel": 3, "SecurityName": 4, "SecurityLevel": 5, "RowStatus": 7}),
        ("snmpNotify", "6.3.13.1.1.1", {"Tag": 2, "RowStatus": 5}),
        ("event", "2.1.16.9.1.1", {"Description": 2, "Type": 3, "Status": 7}),
        ("alarm", "2.1.16.3.1.1",
         {"Interval": 2, "Variable": 3, "RisingThreshold": 7, "FallingThreshold": 8,
          "RisingEventIndex": 9, "FallingEventIndex": 10, "Status": 12}),
        ("hrStorage", "2.1.25.2.3.1", {"Used": 6}))
    for column, arc in columns.items()
}

# How commands in the text are run.
INLINE = {
    "vkagentd --config FILE": Commands.configured,
    "vkagentd --config FILE --check-config": Commands.check_config,
    "snmpget -v3 -l authPriv -u noc -a SHA-256 -A 'a long word to sign with' -x AES -X "
    "'a long word to hide with' HOST .1.3.6.1.2.1.1.1.0": Commands.as_user,
    "snmpset -v2c -c COMMUNITY HOST OID i -5": Commands.negative,
}

# Commands of blocks that a test of another kind runs, by its name.
ELSEWHERE = {}


if __name__ == "__main__":
    for needed in ("snmpget", "snmpset", "snmpwalk"):
        if not shutil.which(needed):
            sys.exit(f"{needed} is missing")
    unittest.main(argv=sys.argv[:1])
