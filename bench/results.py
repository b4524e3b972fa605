#!/usr/bin/env python3
"""Runs the benchmarks and writes the library's part of bench/RESULTS.md anew.

Usage: results.py [--build DIRECTORY] [--output FILE] [--repetitions N] [--min-time SECONDS]

Times are medians of some repetitions, their spread goes from the fastest to the slowest.
Instructions are counted by callgrind in a run of their own; without valgrind their columns
stay empty. What stands between the markers in the file is replaced, the rest kept.
"""
import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

BEGIN, END = "<!-- library: begin -->", "<!-- library: end -->"
LIBRARY, AGENT = "vkmibh_bench", "vkhost_bench"
# Under callgrind their set-up alone would take minutes, and the counts are those of the smaller.
TOO_BIG = re.compile(r"/(100000|1000000)$|threads:")


class Row:
    """One line of a table: what is measured, and the benchmark that measures it."""

    def __init__(self, label, name, floor=None, per=1, limit=None):
        self.label, self.name, self.floor, self.per, self.limit = label, name, floor, per, limit


def sizes(label, name, counts, per_count=False):
    return [Row(label % f"{count:,}", f"{name}/{count}", f"{name}Floor/{count}",
                count if per_count else 1) for count in counts]


def thousands(label, name, floor, counts):
    return [Row(label % f"{count:,}", f"{name}/{count}", floor) for count in counts]


TABLES = [
    ("Requests", LIBRARY, [
        Row("GET of one scalar", "GetScalars/1", "GetScalarsFloor/1", limit=200),
        Row("GET of ten scalars", "GetScalars/10", "GetScalarsFloor/10", limit=1200),
        Row("GETNEXT, one step in 10,000 rows", "GetNextInTable/10000",
            "GetNextInTableFloor/10000", limit=350),
        Row("GETNEXT, one step in 1,000,000 rows", "GetNextInTable/1000000",
            "GetNextInTableFloor/1000000", limit=350),
        Row("GETNEXT from a region in a region", "GetNextInNestedRegions",
            "GetNextInNestedRegionsFloor"),
        Row("SET of one binding", "SetCells/1/undo:0", "SetCellsFloor/1/undo:0"),
        Row("SET of one binding, undone", "SetCells/1/undo:1", "SetCellsFloor/1/undo:1"),
        Row("SET of 50 bindings", "SetCells/50/undo:0", "SetCellsFloor/50/undo:0"),
        Row("SET of 50 bindings, undone", "SetCells/50/undo:1", "SetCellsFloor/50/undo:1"),
        Row("a row made, activated, destroyed (3 SETs)",
            "RowComesAndGoes/others:10000/pending:1/shuffled:1", "RowComesAndGoesFloor"),
        Row("a row of 20 columns made in one SET, and destroyed", "SetOfTwentyColumns/undoes:0"),
    ]),
    ("Walks, per row", LIBRARY,
     sizes("a table of %s rows", "WalkTable", [100, 1000, 10000, 100000, 1000000], True)),
    ("GETs spread over subtrees", LIBRARY,
     sizes("%s subtrees", "GetAmongSiblings", [10, 100, 1000, 10000, 100000])),
    ("Registration, per subtree", LIBRARY, [
        Row("10,000 subtrees, ascending", "RegisterSiblings/0", "RegisterSiblingsFloor/0", 10000),
        Row("10,000 subtrees, descending", "RegisterSiblings/1", "RegisterSiblingsFloor/1", 10000),
        Row("10,000 subtrees, shuffled", "RegisterSiblings/2", "RegisterSiblingsFloor/2", 10000),
    ]),
    ("Views", LIBRARY,
     thousands("a view of %s rows, one matches", "FilterOneView", "FilterOneViewFloor",
               [10, 100, 1000, 10000]) +
     thousands("%s rows in views of ten", "FilterManyViews", "FilterOneViewFloor", [1000, 10000])),
    ("Timer", LIBRARY, [
        Row("a tick, 100,000 subscriptions, per subscription", "TimerTick/100000",
            "TimerTickFloor/100000", 100000),
        Row("a subscription comes and goes among 100,000", "SubscribeAndUnsubscribe/100000"),
    ]),
    ("Console, a line", LIBRARY, [
        Row("get", "ConsoleLine/get", "ConsoleLineFloor/get"),
        Row("getnext", "ConsoleLine/getnext", "ConsoleLineFloor/getnext"),
        Row("set", "ConsoleLine/set", "ConsoleLineFloor/set"),
    ]),
    ("The agent, in process", AGENT, [
        Row("an access decision, no other view rows", "Decide/0", "DecideFloor"),
        Row("an access decision, 10,000 view rows", "Decide/10000", "DecideFloor"),
        Row("GET by the dispatcher", "DispatchGet", "QueryGet"),
        Row("GETBULK of ten by the dispatcher", "DispatchBulk", "QueryTenNexts"),
        Row("SET by the dispatcher", "DispatchSet", "QuerySet"),
        Row("GET of one, from datagram to datagram", "AnswerGet", "AnswerGetFloor"),
        Row("GET of ten, from datagram to datagram", "AnswerGetOfTen", "AnswerGetOfTenFloor"),
        Row("ten bindings read, a binding", "ReadBindings/10", per=10),
        Row("9,000 bindings read, a binding", "ReadBindings/9000", per=9000),
    ]),
]

THREADS = [
    ("GETs of ten bindings, each thread its own module", "GetFromOwnModule"),
    ("GETs of ten bindings, one module for both", "GetFromOneModule"),
    ("floor: the modules' own code alone", "GetFromOwnModuleFloor"),
]


def threads_of(name, count):
    return f"{name}/real_time/threads:{count}"


def names_of(program):
    names = [name for _, owner, rows in TABLES if owner == program
             for row in rows for name in (row.name, row.floor) if name]
    if program == LIBRARY:
        names += [threads_of(name, count) for _, name in THREADS for count in (1, 2)]
    return list(dict.fromkeys(names))


def pattern(names):
    """A filter of the benchmark library for just these names."""
    families = {}
    for name in names:
        family, _, rest = name.partition("/")
        families.setdefault(family, []).append(rest)
    parts = []
    for family, rests in families.items():
        rests = [rest for rest in rests if rest]
        parts.append(family + (f"/({'|'.join(rests)})" if rests else ""))
    return f"^({'|'.join(parts)})$"


def run(command, **kwargs):
    print("results:", " ".join(str(word) for word in command)[:160], file=sys.stderr)
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE,
                          text=True, **kwargs).stdout


def read(output, names):
    """The runs of each benchmark, all of which are there and went well."""
    found = {}
    for item in json.loads(output)["benchmarks"]:
        if item.get("error_occurred"):
            sys.exit(f"results: {item['name']}: {item['error_message']}")
        if item["run_type"] == "iteration":
            found.setdefault(item["run_name"], []).append(item)
    missing = [name for name in names if name not in found]
    if missing:
        sys.exit(f"results: no such benchmark: {', '.join(missing)}")
    return found


NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def time_of(item):
    wall = "/real_time" in item["run_name"]
    return item["real_time" if wall else "cpu_time"] * NANOSECONDS[item["time_unit"]]


class Figures:
    """What was measured of one benchmark."""

    def __init__(self, runs, instructions):
        times = [time_of(item) for item in runs]
        self.time = statistics.median(times)
        self.spread = (max(times) - min(times)) / self.time
        allocs = [item["allocs"] for item in runs if "allocs" in item]
        self.allocs = statistics.median(allocs) if allocs else None
        self.instructions = instructions


class Measurement:
    def __init__(self, build, repetitions, min_time):
        self.build, self.repetitions, self.min_time = build, repetitions, min_time
        self.commands = []
        self.figures = {}

    def measure(self, program):
        names = names_of(program)
        command = [self.build / "bin" / program, f"--benchmark_filter={pattern(names)}",
                   f"--benchmark_repetitions={self.repetitions}",
                   f"--benchmark_min_time={self.min_time}",
                   "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"]
        self.commands.append(command)
        runs = read(run(command), names)
        instructions = self.count(program, [name for name in names if not TOO_BIG.search(name)])
        for name in names:
            self.figures[name] = Figures(runs[name], instructions.get(name))

    def count(self, program, names):
        """Instructions per iteration, of the last and longest run of each benchmark."""
        if not shutil.which("valgrind"):
            return {}
        with tempfile.TemporaryDirectory() as directory:
            dump = pathlib.Path(directory, "callgrind")
            benchmark = [self.build / "bin" / program, f"--benchmark_filter={pattern(names)}",
                         "--benchmark_min_time=0.05", "--benchmark_format=json"]
            valgrind = ["valgrind", "--quiet", "--tool=callgrind", "--instr-atstart=no"]
            self.commands.append(valgrind + benchmark)
            output = run(valgrind + [f"--callgrind-out-file={dump}"] + benchmark,
                         stderr=subprocess.DEVNULL)
            counts = {}
            for file in pathlib.Path(directory).iterdir():
                text = file.read_text()
                trigger = re.search(r"run (\d+) iterations (\d+)", text)
                total = re.search(r"^totals: (\d+)", text, re.MULTILINE)
                if trigger and total:
                    counts[int(trigger[1])] = int(total[1]) / int(trigger[2])
        runs = read(output, names)
        return {name: counts.get(int(runs[name][-1]["run"]))
                for name in names if "run" in runs[name][-1]}


def number(value):
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def count_text(value):
    return "" if value is None else f"{value + 1e-9:.0f}" if value >= 0.95 or value < 0.01 else f"{value:.2f}"


def per(value, divisor):
    return None if value is None else value / divisor


def table_of(rows, figures):
    lines = ["| | ns | spread | floor, ns | ratio | allocations | instructions | of the floor |",
             "|---|--:|--:|--:|--:|--:|--:|--:|"]
    for row in rows:
        own, floor = figures[row.name], figures.get(row.floor)
        label = row.label + (f" (at most {row.limit:,} ns wanted)" if row.limit else "")
        cells = [label, number(own.time / row.per), f"{own.spread:.0%}",
                 number(floor.time / row.per) if floor else "",
                 f"{own.time / floor.time:.1f}" if floor else "",
                 count_text(per(own.allocs, row.per)),
                 number(per(own.instructions, row.per)),
                 number(per(floor.instructions, row.per)) if floor else ""]
        lines.append("| " + " | ".join(cells) + " |")
    return lines


def threads_table(figures):
    lines = ["| | one thread, ns | spread | two threads, ns | spread | scaling |",
             "|---|--:|--:|--:|--:|--:|"]
    for label, name in THREADS:
        one, two = (figures[threads_of(name, count)] for count in (1, 2))
        lines.append(f"| {label} | {number(one.time)} | {one.spread:.0%} | {number(two.time)} | "
                     f"{two.spread:.0%} | {one.time / two.time:.2f} |")
    return lines


def first_line(command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout.split("\n")[0]


def cache_of(build, key):
    for line in (build / "CMakeCache.txt").read_text().splitlines():
        if line.startswith(key + ":"):
            return line.partition("=")[2]
    return ""


def machine(build, root):
    cpu = next((line.partition(":")[2].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                if line.startswith("model name")), platform.machine())
    kind = cache_of(build, "CMAKE_BUILD_TYPE")
    with open(build / "compile_commands.json", encoding="utf-8") as file:
        command = next(entry["command"] for entry in json.load(file) if "/foundation/" in entry["file"])
    flags = " ".join(re.findall(r"(?<= )-(?:O\w*|DNDEBUG|flto\S*)(?= )", command))
    git = ["git", "-C", str(root)]
    commit = first_line(git + ["rev-parse", "--short=12", "HEAD"])
    changed = first_line(git + ["status", "--porcelain", "--untracked-files=no", "--",
                                ".", ":!bench/RESULTS.md"])
    return [
        f"- {cpu}, {os.cpu_count()} processors, {platform.system()} {platform.release()}",
        f"- {first_line([cache_of(build, 'CMAKE_CXX_COMPILER'), '--version'])}, {kind}: {flags}",
        f"- commit {commit}{' and changes' if changed else ''}, "
        f"{datetime.datetime.now(datetime.timezone.utc):%Y-%m-%d %H:%M} UTC",
    ]


def shown(command, root):
    return " ".join(f"'{word}'" if re.search(r"[|()^$]", word) else word
                    for word in (str(word).replace(f"{root}/", "") for word in command))


def report(measurement, root, load):
    lines = machine(measurement.build, root)
    lines.append(f"- load before {load[0]:.1f}, after {os.getloadavg()[0]:.1f}; medians of "
                 f"{measurement.repetitions} repetitions of {measurement.min_time} s, shuffled")
    for title, _, rows in TABLES:
        lines += ["", f"### {title}", ""] + table_of(rows, measurement.figures)
        if title == "GETs spread over subtrees":
            lines += ["", "### Two threads", ""] + threads_table(measurement.figures)
    lines += ["", "### Commands", "", "```"]
    lines += [shown(command, root) for command in measurement.commands]
    return lines + ["```"]


def write(file, begin, end, lines):
    """Puts the lines between the markers of the file."""
    text = file.read_text(encoding="utf-8")
    if text.count(begin) != 1 or text.count(end) != 1:
        sys.exit(f"{file} lacks the markers {begin} and {end}")
    before, rest = text.split(begin)
    after = rest.split(end)[1]
    file.write_text(before + begin + "\n" + "\n".join(lines) + "\n" + end + after, encoding="utf-8")


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, default=root / "build/bench")
    parser.add_argument("--output", type=pathlib.Path, default=root / "bench/RESULTS.md")
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--min-time", type=float, default=0.05)
    options = parser.parse_args()
    load = os.getloadavg()
    measurement = Measurement(options.build.resolve(), options.repetitions, options.min_time)
    measurement.measure(LIBRARY)
    measurement.measure(AGENT)
    write(options.output, BEGIN, END, report(measurement, root, load))


if __name__ == "__main__":
    main()
