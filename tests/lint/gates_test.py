#!/usr/bin/env python3
"""The tree's own checks fail on a tree that breaks the rule they guard.

Usage: gates_test.py <source root>
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]


def run(tool, files):
    """The tool's exit code and output over a tree made of the given files."""
    with tempfile.TemporaryDirectory() as name:
        for path, text in files.items():
            file = pathlib.Path(name) / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        done = subprocess.run([sys.executable, str(ROOT / "tools" / tool), name],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr


# Keeps the one exception of the layers in use.
KNOT = {"include/vkmibh/rqmap.h": "#include <vkmibh/mibinfo.h>\n"}


class Layers(unittest.TestCase):
    def refuses(self, files, text):
        code, output = run("check_layers.py", files)
        self.assertEqual(code, 1, output)
        self.assertIn(text, output)

    def test_accepts_what_goes_down(self):
        code, output = run("check_layers.py", {
            **KNOT, "values/VarBind.cpp": "#include <vkmibh/values.h>\n#include <cstring>\n"})
        self.assertEqual(code, 0, output)

    def test_refuses_what_goes_up(self):
        self.refuses({**KNOT, "values/VarBind.cpp": "#include <vkmibh/handler.h>\n"},
                     "values/VarBind.cpp:1: values: variable bindings (level 3) includes query handling (level 8)")

    def test_refuses_what_goes_up_within_a_gathered_family(self):
        self.refuses({**KNOT, "values/OctetString.cpp": "#include <vkmibh/syntax.h>\n"},
                     "values: octet string (level 1) includes values: object syntax (level 2)")

    def test_refuses_the_umbrella_inside_the_library(self):
        self.refuses({**KNOT, "handler/MibHandler.cpp": "#include <vkmibh/vkmibh.h>\n"},
                     "includes everything")

    def test_refuses_the_host(self):
        self.refuses({**KNOT, "handler/MibHandler.cpp": '#include "host/Engine.h"\n'},
                     "outside the library")

    def test_refuses_foreign_packages(self):
        self.refuses({**KNOT, "system/Store.cpp": "#include <sqlite3.h>\n"}, "not of the C++ library")

    def test_refuses_private_headers_in_public_ones(self):
        self.refuses({**KNOT, "include/vkmibh/tree.h": '#include "registry/Node.h"\n'},
                     "includes the private")

    def test_keeps_examples_on_public_headers(self):
        self.refuses({**KNOT, "examples/row/Fan.cpp": '#include "impl/InstanceView.h"\n'},
                     "an example includes the private")
        self.refuses({**KNOT, "examples/row/Fan.cpp": '#include "host/Agent.h"\n'},
                     "an example includes the private")
        code, output = run("check_layers.py", {
            **KNOT, "examples/ExampleHost.cpp": '#include "host/Agent.h"\n',
            "examples/row/Fan.h": '#include "examples/WholeSetTable.h"\n#include <vkmibh/impl.h>\n'})
        self.assertEqual(code, 0, output)

    def test_refuses_an_exception_no_longer_needed(self):
        self.refuses({"include/vkmibh/rqmap.h": "#include <vkmibh/subtree.h>\n"},
                     "exception no longer needed")

    def test_refuses_an_empty_tree(self):
        self.refuses({}, "no sources")


class Rules(unittest.TestCase):
    def refuses(self, files, text):
        code, output = run("check_rules.py", files)
        self.assertEqual(code, 1, output)
        self.assertIn(text, output)

    def test_accepts_the_largest_file(self):
        code, output = run("check_rules.py", {"values/A.cpp": "int a;\n" * 600,
                                              "include/vkmibh/a.h": "int a;\n" * 400})
        self.assertEqual(code, 0, output)

    def test_refuses_long_files(self):
        self.refuses({"values/A.cpp": "int a;\n" * 601}, "601 lines, more than 600")
        self.refuses({"include/vkmibh/a.h": "int a;\n" * 401}, "401 lines, more than 400")

    def test_refuses_checks_that_cannot_fail(self):
        self.refuses({"tools/a.sh": "make check |" + "| true\n"}, "cannot fail")

    def test_refuses_notes_to_self(self):
        self.refuses({"values/A.cpp": "// TO" + "DO: later\n"}, "unfinished")

    def test_refuses_disabled_tests(self):
        self.refuses({"tests/A_test.cpp": "TEST(A, DISABLE" + "D_B) {}\n"}, "does not run")
        self.refuses({"tests/A_test.cpp": "GTEST_SKI" + "P();\n"}, "does not run")

    def test_accepts_skips_that_say_why(self):
        code, output = run("check_rules.py", {"tests/A_test.cpp": "GTEST_SKI" + "P() << why;\n"})
        self.assertEqual(code, 0, output)


# Stands in for gcovr: every file of the tree has the figures it is told.
GCOVR = """#!/usr/bin/env python3
import json, os, pathlib, re, sys
line, branch = json.loads(os.environ["FIGURES"])
value = lambda option: sys.argv[sys.argv.index(option) + 1]
names = [str(p) for p in sorted(pathlib.Path(".").rglob("*.cpp")) if re.match(value("--filter"), str(p))]
pathlib.Path(value("--json-summary")).write_text(json.dumps({"files": [
    {"filename": name, "line_covered": line, "line_total": 1000, "branch_covered": branch, "branch_total": 1000}
    for name in names]}))
pathlib.Path(value("--json")).write_text(json.dumps({"files": [
    {"file": name, "lines": [{"line_number": 2, "count": 0}]} for name in names]}))
"""


class Coverage(unittest.TestCase):
    FOLDERS = ("include/vkmibh foundation values registry impl handler console timer traps"
               " system agents host modules").split()

    def setUp(self):
        self.tree = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.tree.name)
        for folder in self.FOLDERS:
            (self.root / folder).mkdir(parents=True)
            (self.root / folder / "A.cpp").write_text("int a;\nreturn 7;\n")
        for folder in "bin", "tests", "build/coverage":
            (self.root / folder).mkdir(parents=True)
        (self.root / "bin/gcovr").write_text(GCOVR)
        (self.root / "bin/gcovr").chmod(0o755)
        self.page = self.root / "tests/COVERAGE.md"
        self.page.write_text("old <!-- library: begin -->\n1\n<!-- library: end --> between\n"
                             "<!-- agent: begin -->\n<!-- agent: end --> rest\n"
                             "| `values/A.cpp` | `return 7;` | never |\n")

    def tearDown(self):
        self.tree.cleanup()

    def run_tool(self, *arguments, line=950, branch=850):
        path = f"{self.root / 'bin'}{os.pathsep}{os.environ['PATH']}"
        done = subprocess.run([sys.executable, str(ROOT / "tools/coverage.py"), *arguments],
                              cwd=self.root, capture_output=True, text=True, check=False,
                              env={**os.environ, "PATH": path, "FIGURES": json.dumps([line, branch])})
        return done.returncode, done.stdout + done.stderr

    def test_accepts_what_reaches_the_floors(self):
        code, output = self.run_tool("library")
        self.assertEqual(code, 0, output)

    def test_refuses_few_lines_and_few_branches(self):
        for figures, text in ({"line": 949}, "94.9 % of the line"), ({"branch": 849}, "84.9 % of the branch"):
            code, output = self.run_tool("library", **figures)
            self.assertEqual(code, 1, output)
            self.assertIn("traps: " + text, output)

    def test_refuses_a_folder_that_was_not_measured(self):
        (self.root / "timer/A.cpp").unlink()
        code, output = self.run_tool("library")
        self.assertEqual(code, 1, output)
        self.assertIn("timer: nothing was measured", output)

    def test_shows_lines_without_a_reason(self):
        _, output = self.run_tool("library")
        self.assertIn("not run: traps/A.cpp:2: return 7;", output)
        self.assertNotIn("not run: values/A.cpp", output)

    def test_writes_the_figures_between_the_markers_only(self):
        self.run_tool("library", "tests/COVERAGE.md")
        code, output = self.run_tool("agent", "tests/COVERAGE.md", line=500)
        self.assertEqual(code, 0, output)
        text = self.page.read_text()
        for part in "old <!--", "library: end --> between\n<!--", "agent: end --> rest\n| `values":
            self.assertIn(part, text)
        self.assertIn("| `values` | 95.0 % of 1000 | 85.0 % of 1000 |", text)
        self.assertIn("| `host` | 50.0 % of 1000 | 85.0 % of 1000 |", text)


if __name__ == "__main__":
    unittest.main()
