#!/usr/bin/env python3
"""Measures vkagentd over loopback beside Debian's snmpd and beside an echo of datagrams.

Usage: run.py [--quick] BUILD-DIRECTORY [CASE]...

Prints tables in Markdown. With all cases they also take the place of what is between
the markers of bench/RESULTS.md. A wrong answer, or none, ends the run with status 1.
--quick only asks a few questions of each case, for the answers.

The figures of one repetition come from one server after the other, a fraction of a second
each; a ratio is that of two figures of the same repetition. Load on the machine changes
both of them much alike.
"""
import collections
import mmap
import os
import pathlib
import re
import signal
import socket
import statistics
import struct
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
import results

RESULTS = HERE.parent / "RESULTS.md"
BEGIN, END = "<!-- wire: begin -->", "<!-- wire: end -->"

WINDOW = 16  # requests under way, for throughput
SECONDS = 0.2
REPETITIONS = 5
FEW = 3  # of long walks
PATIENCE = 60  # seconds, for a server to start
ECHO, SNMPD, BARE, AGENT = "echo", "snmpd", "snmpd, no wrappers", "vkagentd"
SERVERS = [ECHO, SNMPD, BARE, AGENT]

# name on the command line: what it is, content, generator's case, table (10^K rows), and how
# much of the wrapper-free snmpd's processor time is wanted at most
Case = collections.namedtuple("Case", "title content question table window limit",
                              defaults=(None,))


def cases():
    found = {
        "get": Case("GET of sysDescr.0", "system", "get", 0, WINDOW, 0.6),
        "get10": Case("GET of 10 bindings", "system", "get10", 0, WINDOW, 0.4),
    }
    for table in (2, 4, 5, 6):
        rows = f"{10 ** table:,}"
        found[f"random{table}"] = Case(
            f"GETNEXT, random, {rows} rows", "tables", "random", table, WINDOW, 0.6)
    for table in range(2, 6):
        rows = f"{10 ** table:,}"
        found[f"walk{table}"] = Case(
            f"GETNEXT, walk of {rows} rows", "tables", "walk", table, WINDOW, 0.6)
    for table in (2, 3, 5, 6):
        rows = f"{10 ** table:,}"
        found[f"bulk{table}"] = Case(
            f"GETBULK, walk of {rows} rows, 50 each", "tables", "bulk", table, WINDOW, 0.4)
    found["registrations"] = Case(
        "GET among 10,000 registrations", "registrations", "registrations", 0, WINDOW)
    found["set"] = Case("SET in memory", "tables", "set", 0, WINDOW)
    found["persisted"] = Case("SET of sysContact.0, persisted", "system", "persisted", 0, 1)
    return found


CASES = cases()


def fail(why):
    print(f"wire: {why}", file=sys.stderr)
    sys.exit(1)


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Server:
    """One process on one core; ended with the run."""

    started = []

    def __init__(self, line, core, directory, environment=None, port=None):
        self.log = open(directory / "log", "w+")
        self.process = subprocess.Popen(
            line, stdin=subprocess.DEVNULL, stdout=self.log, stderr=subprocess.STDOUT,
            cwd=directory, env={**os.environ, **(environment or {})},
            preexec_fn=lambda: os.sched_setaffinity(0, {core}))
        self.started.append(self)
        self.pid = self.process.pid
        self.port = port or self.port_of_log()

    def text(self):
        return pathlib.Path(self.log.name).read_text(errors="replace")

    def port_of_log(self):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            ready = re.search(r"ready on udp:127\.0\.0\.1:(\d+)\n", self.text())
            if ready:
                return int(ready.group(1))
            if self.process.poll() is not None:
                break
            time.sleep(0.01)
        fail(f"{self.process.args[0]} did not start: {self.text()}")

    def description(self):
        """sysDescr, once there is an answer; nothing of a process that has ended."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end and self.process.poll() is None:
            asked = subprocess.run(
                ["snmpget", "-v2c", "-cpublic", "-Oqv", "-t1", "-r0", f"127.0.0.1:{self.port}",
                 "1.3.6.1.2.1.1.1.0"],
                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
            if asked.returncode == 0:
                return asked.stdout.strip().strip('"')
            time.sleep(0.02)
        return ""

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(20)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.log.close()


class Bench:
    def __init__(self, build, directory, quick):
        self.load_before = os.getloadavg()[0]
        self.build = build
        self.directory = directory
        cores = sorted(os.sched_getaffinity(0))
        if len(cores) < 2 and not quick:
            fail("two processor cores are needed")
        self.client_core, self.server_core = cores[0], cores[-1]
        self.servers = {}
        self.description = None

    def place(self, name):
        made = self.directory / re.sub(r"\W+", "-", name)
        made.mkdir()
        return made

    def start_agent(self, content, environment=None, name="agent"):
        place = self.place(f"{name}-{content}")
        (place / "agent.toml").write_text(
            'agentAddress = "udp:127.0.0.1:0"\n'
            f'store = "{place}/store.db"\n'
            '[[community]]\nname = "public"\nread = "everything"\nwrite = "everything"\n'
            'sources = ["127.0.0.1"]\n')
        program = "vkagentd" if content == "system" else "wire_agent"
        return Server([f"{self.build}/bin/{program}", "--config", f"{place}/agent.toml"],
                      self.server_core, place, {"VKWIRE_CONTENT": content, **(environment or {})})

    def start_snmpd(self, content, preload, environment=None, name="snmpd"):
        # Another process may have taken the port meanwhile.
        for attempt in range(5):
            server = self.start_snmpd_once(
                content, preload, environment, f"{name}-{content}-{len(preload)}-{attempt}")
            if server.description():
                return server
            if server.process.poll() is None:
                break
        fail(f"snmpd does not answer: {server.text()}")

    def start_snmpd_once(self, content, preload, environment, name):
        place = self.place(name)
        port = free_port()
        module = "" if content == "system" else f"dlmod wire {self.build}/lib/libwire_snmpd.so\n"
        (place / "snmpd.conf").write_text(
            f"agentAddress udp:127.0.0.1:{port}\nrwcommunity public 127.0.0.1\nsysServices 72\n"
            f"sysDescr {self.description}\n{module}")
        return Server(
            ["/usr/sbin/snmpd", "-f", "-LOw", "-C", "-c", f"{place}/snmpd.conf", "-p", f"{place}/pid"],
            self.server_core, place,
            {"VKWIRE_CONTENT": content, "SNMP_PERSISTENT_DIR": str(place), "MIBS": "",
             "LD_PRELOAD": ":".join(f"{self.build}/lib/lib{part}.so" for part in preload),
             **(environment or {})}, port)

    def start(self, content):
        """All servers of that content, started once."""
        if content in self.servers:
            return self.servers[content]
        agent = self.start_agent(content)
        if self.description is None:
            self.description = agent.description()
        echo = self.servers[next(iter(self.servers))][ECHO] if self.servers else Server(
            [f"{self.build}/bin/wire_echo"], self.server_core, self.place("echo"))
        started = self.servers[content] = {ECHO: echo, AGENT: agent}
        started[SNMPD] = self.start_snmpd(content, [])
        started[BARE] = self.start_snmpd(content, ["wire_no_wrapper"])
        return started

    def end(self):
        for server in Server.started:
            server.end()

    def load(self, case, server, kind, window, seconds):
        core = self.server_core if window == 1 else self.client_core
        line = [f"{self.build}/bin/wire_load", case.question, str(case.table), str(server.port),
                str(server.pid), str(core), str(window), str(seconds)]
        ran = subprocess.run(line + (["echo"] if kind == ECHO else []), stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, text=True, check=False, timeout=900)
        if ran.returncode:
            fail(f"{case.title}, {kind}: {ran.stderr.strip()}")
        asked, requests, passed, processor, bindings, p50, p99 = map(float, ran.stdout.split())
        per = bindings if case.question == "bulk" and kind != ECHO else requests
        return {"asked": asked, "rate": requests / passed, "cpu": processor / requests / 1000,
                "each": processor / per / 1000, "p50": p50 / 1000, "p99": p99 / 1000}

    def measure(self, case, seconds, repetitions):
        """Figures by server, a list of repetitions each."""
        servers = self.start(case.content)
        figures = {kind: [] for kind in SERVERS}
        if case.question in ("walk", "bulk") and case.table > 4:
            repetitions = min(repetitions, FEW)
        for repetition in range(repetitions):
            for kind in SERVERS[repetition % 4:] + SERVERS[:repetition % 4]:
                busy = self.load(case, servers[kind], kind, case.window, seconds)
                quiet = busy if case.window == 1 else self.load(
                    case, servers[kind], kind, 1, seconds)
                figures[kind].append({**busy, "p50": quiet["p50"], "p99": quiet["p99"],
                                      "alone": quiet["cpu"]})
        return figures

    def syncs(self, seconds):
        """Syncs per acknowledged SET of sysContact, by server."""
        found = {}
        case = CASES["persisted"]
        for kind in (BARE, AGENT):
            counter = self.directory / f"syncs-{len(found)}"
            counter.write_bytes(bytes(8))
            environment = {"VKWIRE_SYNCS": str(counter)}
            library = f"{self.build}/lib/libwire_count_syncs.so"
            if kind == AGENT:
                server = self.start_agent("system", {**environment, "LD_PRELOAD": library}, "syncs")
            else:
                server = self.start_snmpd(
                    "system", ["wire_no_wrapper", "wire_count_syncs"], environment, "syncs")
            try:
                found[kind] = self.syncs_of(case, server, kind, counter, seconds)
            finally:
                server.end()
        return found

    def syncs_of(self, case, server, kind, counter, seconds):
        with open(counter, "r+b") as file, mmap.mmap(file.fileno(), 8) as memory:
            self.load(case, server, kind, 1, 0.01)
            before = struct.unpack("=Q", memory[:])[0]
            asked = self.load(case, server, kind, 1, seconds)["asked"]
            return (struct.unpack("=Q", memory[:])[0] - before) / asked


def spread(values, digits):
    low, middle, high = min(values), statistics.median(values), max(values)
    return f"{middle:,.{digits}f} ({low:,.{digits}f}-{high:,.{digits}f})"


def ratios(figures, of, to, key):
    return [a[key] / b[key] for a, b in zip(figures[of], figures[to])]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---|" + "---:|" * (len(head) - 1)]
    return lines + ["| " + " | ".join(row) + " |" for row in rows]


def processor_rows(measured, key):
    for case, figures in measured:
        # An echo answers no instances.
        echo = "" if key == "each" and case.question == "bulk" else spread(
            ratios(figures, AGENT, ECHO, key), 1)
        yield [case.title] + [spread([f[key] for f in figures[kind]], 2) for kind in SERVERS] + [
            spread(ratios(figures, AGENT, BARE, key), 2), f"{case.limit}" if case.limit else "", echo]


def tails(figures, kind):
    return " / ".join(spread([f[key] for f in figures[kind]], 1) for key in ("p50", "p99"))


def report(bench, measured, syncs):
    ratio = f"vkagentd / {BARE}"
    head = ["case"] + SERVERS + [ratio, "wanted at most", "vkagentd / echo"]
    lines = results.machine(bench.build, HERE.parent.parent)
    lines += [
        f"- load before {bench.load_before:.1f}, after {os.getloadavg()[0]:.1f}; {REPETITIONS} "
        f"repetitions of {SECONDS} s ({FEW} of long walks), the servers in turn",
        f"- snmpd is {version_of('snmpd')} of Debian, libsnmp {version_of('libsnmp40')}; "
        f"\"{BARE}\" is the same program with the TCP-wrapper look-ups preloaded away "
        "(bench/wire/no_wrapper.cpp)",
        "- command: `./dev wire`, which runs `bench/wire/run.py build/bench`",
        "",
        "The servers run on one core. For throughput and processor time the generator keeps "
        f"{WINDOW} requests under way from another core; for latency it asks one after the other on "
        "the server's own, where a generator on another core would mostly tell how long an idle "
        "core takes to wake. Persisted SETs are asked one after the other only, and have one figure. "
        "Processor time is the scheduler's account of the server's threads. A cell is the median, "
        "with the smallest and the greatest; a ratio is made of two figures of one repetition. What "
        "is wanted counts for requests under way: it is there for comparison in the second table.",
        "", "Processor time of the server, microseconds a request (GETBULK: an instance):", ""]
    lines += table(head, processor_rows(measured, "each"))
    lines += ["", "The same where each request waits for the answer to the one before it, "
              "microseconds a request:", ""]
    lines += table(head, processor_rows(measured, "alone"))
    lines += ["", "Requests per second:", ""]
    lines += table(["case"] + SERVERS + [ratio], (
        [case.title] + [spread([f["rate"] for f in figures[kind]], 0) for kind in SERVERS] +
        [spread(ratios(figures, AGENT, BARE, "rate"), 2)] for case, figures in measured))
    lines += ["", "Latency, microseconds, p50 / p99:", ""]
    lines += table(["case"] + SERVERS + [f"p50, {ratio}", f"p99, {ratio}"], (
        [case.title] + [tails(figures, kind) for kind in SERVERS] +
        [spread(ratios(figures, AGENT, BARE, key), 2) for key in ("p50", "p99")]
        for case, figures in measured))
    if syncs:
        lines += ["", "Syncs of the disk per acknowledged SET of sysContact.0: "
                  f"vkagentd {syncs[AGENT]:.2f}, snmpd {syncs[BARE]:.1f}."]
    return lines


def version_of(package):
    asked = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package],
                           stdout=subprocess.PIPE, text=True, check=False)
    return asked.stdout.strip()


def main():
    arguments = sys.argv[1:]
    quick = "--quick" in arguments
    arguments = [a for a in arguments if a != "--quick"]
    if not arguments or any(a not in CASES for a in arguments[1:]):
        fail("usage: run.py [--quick] BUILD-DIRECTORY [CASE]...; cases: " + " ".join(CASES))
    chosen = arguments[1:] or list(CASES)
    build = pathlib.Path(arguments[0]).resolve()
    with tempfile.TemporaryDirectory(prefix="wire-", dir=build) as directory:
        bench = Bench(build, pathlib.Path(directory), quick)
        try:
            seconds, repetitions = (0.01, 1) if quick else (SECONDS, REPETITIONS)
            measured = []
            for name in chosen:
                print(f"wire: {CASES[name].title}", file=sys.stderr)
                measured.append((CASES[name], bench.measure(CASES[name], seconds, repetitions)))
            syncs = bench.syncs(seconds) if "persisted" in chosen else None
        finally:
            bench.end()
    if quick:
        print(f"wire: the answers of {len(measured)} cases are right")
        return
    lines = report(bench, measured, syncs)
    print("\n".join(lines))
    if not arguments[1:]:
        results.write(RESULTS, BEGIN, END, lines)


if __name__ == "__main__":
    main()
