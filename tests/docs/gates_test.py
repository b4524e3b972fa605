#!/usr/bin/env python3
"""What keeps documents true fails on documents that are not.

Usage: gates_test.py <source root>
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]

FAN = """// A fan.
//
//   $ ./dev example fan
//
// From a second terminal:
//
//   $ snmpget fan
//   fan = INTEGER: 7
#include "fan.h"

// Its map.
SMap CFan::s_map[] = {
    Row<&CFan::OnGet>(1, "speed; {", eAsnInteger), // not {
    kEnd};

CFan::CFan()
    : m_speeds{{1, 2},
               {3, 4}}
{
}

template <class T>
int CFan::OnSet(T value)
{
    if (value == '{') {
        return 1;
    }
    return 0;
}
"""


class Tree:
    def __init__(self, files):
        self.directory = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.directory.name)
        for path, text in files.items():
            file = self.root / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)

    def __del__(self):
        self.directory.cleanup()

    def run(self, tool, *arguments):
        done = subprocess.run([sys.executable, str(ROOT / "tools" / tool), *arguments, str(self.root)],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr


def block(what, text="", kind="cpp"):
    return f"<!-- quote: {what} -->\n```{kind}\n{text}```\n"


class Quotations(unittest.TestCase):
    def written(self, what):
        """What is quoted by those words."""
        tree = Tree({"README.md": block(what), "examples/fan.cpp": FAN,
                     "bench/RESULTS.md": "# All\n\nno\n\n## Some\n\n| a |\n\n## Others\n"})
        code, output = tree.run("quote.py", "--update")
        self.assertEqual(code, 0, output)
        self.assertEqual(tree.run("quote.py")[0], 0)
        return (tree.root / "README.md").read_text().split("```cpp\n")[1].removesuffix("```\n")

    def refuses(self, document, text):
        tree = Tree({"README.md": document, "examples/fan.cpp": FAN})
        for arguments in ([], ["--update"]):
            code, output = tree.run("quote.py", *arguments)
            self.assertEqual(code, 1, output)
            self.assertIn(text, output)

    def test_takes_the_whole_file_or_its_code(self):
        self.assertEqual(self.written("examples/fan.cpp"), FAN)
        self.assertEqual(self.written("examples/fan.cpp code"), FAN[FAN.index("#include"):])

    def test_takes_the_session_of_the_first_comment(self):
        self.assertEqual(self.written("examples/fan.cpp session"),
                         "$ ./dev example fan\n$ snmpget fan\nfan = INTEGER: 7\n")

    def test_takes_definitions_with_what_stands_above_them(self):
        self.assertEqual(self.written('examples/fan.cpp "s_map[]"'),
                         FAN[FAN.index("// Its map"):FAN.index("\nCFan::CFan")])
        self.assertEqual(self.written('examples/fan.cpp "CFan::CFan()"'),
                         FAN[FAN.index("CFan::CFan"):FAN.index("\ntemplate")])
        self.assertEqual(self.written('examples/fan.cpp "CFan::OnSet("'),
                         FAN[FAN.index("template"):])
        self.assertEqual(self.written('examples/fan.cpp "return 1" "return 0"'),
                         "return 1;\n\nreturn 0;\n")
        self.assertEqual(self.written('examples/fan.cpp comment "s_map[]"'),
                         "// Its map.\nSMap CFan::s_map[] = {\n")

    def test_takes_a_section_of_markdown(self):
        self.assertEqual(self.written('bench/RESULTS.md section "Some"'), "| a |\n")
        self.assertEqual(self.written('bench/RESULTS.md between "# All" "## Some"'), "no\n")

    def test_takes_no_figures_before_there_are_some(self):
        quotation = '<!-- quote: bench/RESULTS.md section "GET" -->\n\n<!-- end of quote -->\n'
        tree = Tree({"README.md": quotation, "bench/RESULTS.md": "# All\n\nNot measured yet.\n"})
        self.assertEqual(tree.run("quote.py", "--update")[0], 0)
        self.assertIn("-->\nNot measured yet.\n<!--", (tree.root / "README.md").read_text())

    def test_refuses_what_has_drifted(self):
        tree = Tree({"docs/guide.md": block("examples/fan.cpp code", "int a;\n"),
                     "examples/fan.cpp": FAN})
        code, output = tree.run("quote.py")
        self.assertEqual(code, 1, output)
        self.assertIn("docs/guide.md: no longer as it is quoted", output)
        self.assertIn("-int a;", output)

    def test_refuses_what_is_not_there(self):
        self.refuses(block("examples/pump.cpp"), "there is no examples/pump.cpp")
        self.refuses(block('examples/fan.cpp "pump"'), "0 lines have 'pump'")
        self.refuses(block('examples/fan.cpp "return"'), "2 lines have 'return'")

    def test_refuses_code_that_is_no_quotation(self):
        self.refuses("```cpp\nint a;\n```\n", "a block of C++ that is no quotation")
        tree = Tree({"README.md": "<!-- not quoted: a mistake -->\n```cpp\nint a;\n```\n"})
        self.assertEqual(tree.run("quote.py")[0], 0)

    def test_refuses_no_documents(self):
        code, output = Tree({}).run("quote.py")
        self.assertEqual(code, 1)
        self.assertIn("no documents", output)


class Contracts(unittest.TestCase):
    CODE = "// CONTRACT: 127 is text,\n// as it was.\nint f();\n"
    TEST = "TEST_F(Text, Byte127IsText)\n"

    def check(self, row, code=CODE, test=TEST, arguments=()):
        self.tree = Tree({"docs/contracts.md": f"# Kept\n\n{row}\n", "values/a.cpp": code,
                          "tests/values/a_test.cpp": test})
        return self.tree.run("contracts.py", *arguments)

    def refuses(self, text, *arguments, **options):
        code, output = self.check(*arguments, **options)
        self.assertEqual(code, 1, output)
        self.assertIn(text, output)

    def row(self, test):
        return f"| `values/a.cpp` | 127 is text, as it was. | {test} |"

    def test_accepts_what_is_listed_with_its_test(self):
        code, output = self.check(self.row("`Text.Byte127IsText`"))
        self.assertEqual(code, 0, output)

    def test_refuses_what_is_not_listed_or_no_longer_there(self):
        self.refuses("values/a.cpp: not in docs/contracts.md", "")
        self.refuses("no longer in values/a.cpp", self.row("`Text.Byte127IsText`"),
                     code=self.CODE.replace("127", "128"))
        self.refuses("no CONTRACT comments", "", code="int f();\n")

    def test_refuses_what_has_no_test(self):
        self.refuses("no test: 127", self.row(""))
        self.refuses("there is no test Text.Other", self.row("`Text.Other`"))
        self.refuses("Text.CONTRACT_More is not named", self.row("`Text.Byte127IsText`"),
                     test=self.TEST + "TEST(Text, CONTRACT_More)\n")

    def test_writes_new_rows_and_keeps_the_tests_of_others(self):
        self.check(self.row("`Text.Byte127IsText`"), code=self.CODE + "\n// CONTRACT: new.\n",
                   arguments=["--update"])
        text = (self.tree.root / "docs" / "contracts.md").read_text()
        self.assertIn(self.row("`Text.Byte127IsText`"), text)
        self.assertIn("| `values/a.cpp` | new. |  |", text)


class Comments(unittest.TestCase):
    WHOLE = "// A fan.\n//\n// Ownership: none.\n// Threads:   any.\n// Errors:    none.\n"

    def check(self, header):
        return Tree({"include/vkmibh/a.h": header}).run("check_comments.py")

    def refuses(self, header, text):
        code, output = self.check(header)
        self.assertEqual(code, 1, output)
        self.assertIn(text, output)

    def test_accepts_classes_that_tell_all(self):
        pump = "// A pump.\n//\n// Ownership, Threads, Errors: as BFan.\nclass BPump {\n"
        code, output = self.check(self.WHOLE + "class VKMIBH_API BFan : public BBase {\n};\n" + pump)
        self.assertEqual((code, output), (0, "2 public classes tell what they have to\n"))

    def test_accepts_what_classes_share(self):
        self.assertEqual(self.check(self.WHOLE + "\n// One.\nclass BOne {\n};\n\nclass BTwo {\n};\n")[0], 0)

    def test_refuses_classes_that_do_not(self):
        self.refuses("class BFan {\n", "a.h:1: BFan has no comment")
        self.refuses(self.WHOLE.replace("// Threads:   any.\n", "") + "class BFan {\n",
                     "BFan does not tell of: Threads")
        self.refuses("// A pump.\n//\n// Ownership, Threads, Errors: as BFan.\nclass BPump {\n",
                     "is as BFan, which is no public class")

    def test_refuses_an_empty_tree(self):
        self.refuses("int a;\n", "no classes")


if __name__ == "__main__":
    unittest.main()
