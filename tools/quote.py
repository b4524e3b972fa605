#!/usr/bin/env python3
"""Keeps what README and guides quote equal to the files that it is quoted from.

Usage: quote.py [--update] [ROOT]

A quotation is a comment, and a fenced block or, for Markdown, lines up to its end:

    <!-- quote: examples/hello/main.cpp code -->
    ```cpp
    ...
    ```

    <!-- quote: bench/RESULTS.md section "The library" -->
    ...
    <!-- end of quote -->

What is quoted of a file:

    (nothing)         all of it
    code              all but the comment that it begins with
    session           the commands and answers in that comment
    "text" ...        the definitions or statements that begin with the one line that has
                      that text, each with the comment above it
    comment "text"    the comment above that line, and the line
    section "text"    of Markdown: what is below the heading with that text, or NOT_YET where a
                      file that says so has no such heading
    between "a" "b"   the lines between the line with the first text and the line with the other

Without --update nothing is written: what differs is told, and the status is 1. A block of
C++ in README.md or docs/ that is no quotation counts as a difference, unless a comment
`<!-- not quoted: why -->` stands before it.
"""
import difflib
import pathlib
import re
import shlex
import sys

QUOTE = re.compile(r"^<!-- quote: (\S+)(?: (.*?))? -->$")
REASON = re.compile(r"^<!-- not quoted: .+ -->$")
END = "<!-- end of quote -->"
NOT_YET = "Not measured yet."


class Problem(Exception):
    pass


def code_of(line):
    """The line without its comment, and without what its literals hold."""
    line = re.sub(r'"(\\.|[^"\\])*"', '""', line)
    line = re.sub(r"'(\\.|[^'\\])'", "''", line)
    return line.split("//")[0].rstrip()


def leading_comment(lines):
    count = 0
    while count < len(lines) and lines[count].startswith("//"):
        count += 1
    return count


def session(lines):
    told, answering = [], False
    for line in lines[:leading_comment(lines)]:
        if line.startswith("//   $ "):
            answering = True
        if not answering:
            continue
        if line.startswith("//   "):
            told.append(line[5:])
        elif line != "//":
            answering = False
    if not told:
        raise Problem("its first comment has no commands")
    return told


def only_line(lines, text):
    found = [i for i, line in enumerate(lines) if text in line]
    if len(found) != 1:
        raise Problem(f"{len(found)} lines have '{text}'")
    return found[0]


def first_line(lines, at):
    """Where the comment, and a line `template <...>`, above a definition begin."""
    while at > 0 and re.match(r"\s*template <.*>$", lines[at - 1]):
        at -= 1
    while at > 0 and re.match(r"\s*//", lines[at - 1]):
        at -= 1
    return at


def last_line(lines, at):
    depth = 0
    for i in range(at, len(lines)):
        code = code_of(lines[i])
        depth += sum(code.count(c) for c in "([{") - sum(code.count(c) for c in ")]}")
        goes_on = i + 1 < len(lines) and lines[i + 1].lstrip().startswith(("{", "else", "."))
        if depth <= 0 and code.endswith((";", "}")) and not goes_on:
            return i
    raise Problem("the definition does not end")


def dedented(lines):
    indent = min((len(line) - len(line.lstrip()) for line in lines if line.strip()), default=0)
    return [line[indent:] for line in lines]


def section(lines, text):
    headings = [line.lstrip("# ") == text if line.startswith("#") else False for line in lines]
    if NOT_YET in lines and not any(headings):
        return [NOT_YET]
    if sum(headings) != 1:
        raise Problem(f"{sum(headings)} headings are '{text}'")
    at = headings.index(True)
    end = next((i for i in range(at + 1, len(lines)) if lines[i].startswith("#")), len(lines))
    return stripped(lines[at + 1:end])


def stripped(lines):
    while lines and not lines[0].strip():
        lines = lines[1:]
    while lines and not lines[-1].strip():
        lines = lines[:-1]
    return lines


def selected(lines, words):
    """What the words choose of a file."""
    if not words:
        return lines
    kind, *texts = words
    if kind == "code" and not texts:
        return stripped(lines[leading_comment(lines):])
    if kind == "session" and not texts:
        return session(lines)
    if kind == "section" and len(texts) == 1:
        return section(lines, texts[0])
    if kind == "between" and len(texts) == 2:
        return stripped(lines[only_line(lines, texts[0]) + 1:only_line(lines, texts[1])])
    if kind == "comment" and len(texts) == 1:
        at = only_line(lines, texts[0])
        return lines[first_line(lines, at):at + 1]
    parts = []
    for text in words:
        at = only_line(lines, text)
        part = dedented(lines[first_line(lines, at):last_line(lines, at) + 1])
        parts += ([""] if parts else []) + part
    return parts


def quoted(root, path, words):
    try:
        lines = (root / path).read_text().split("\n")
    except OSError:
        raise Problem(f"there is no {path}") from None
    if lines and not lines[-1]:
        lines.pop()
    try:
        return selected(lines, shlex.split(words or ""))
    except Problem as problem:
        raise Problem(f"{path}: {problem}") from None


def fence_end(lines, at):
    for i in range(at + 1, len(lines)):
        if lines[i] == "```":
            return i
    raise Problem("a block does not end")


def rewritten(root, lines):
    """The document as it has to be."""
    result, i = [], 0
    while i < len(lines):
        result.append(lines[i])
        found = QUOTE.match(lines[i])
        begins = i + 1 < len(lines) and lines[i + 1].startswith("```")
        if found and begins:
            end = fence_end(lines, i + 1)
            result += [lines[i + 1], *quoted(root, *found.groups()), "```"]
            i = end + 1
        elif found:
            if END not in lines[i:]:
                raise Problem(f"no block and no end follows {lines[i]}")
            i = lines.index(END, i)
            result += quoted(root, *found.groups())
        elif lines[i].startswith("```"):
            before = next((line for line in reversed(lines[:i]) if line.strip()), "")
            if lines[i] == "```cpp" and not REASON.match(before):
                raise Problem(f"line {i + 1}: a block of C++ that is no quotation")
            end = fence_end(lines, i)
            result += lines[i + 1:end + 1]
            i = end + 1
        else:
            i += 1
    return result


def main():
    arguments = sys.argv[1:]
    update = "--update" in arguments
    rest = [word for word in arguments if word != "--update"]
    root = pathlib.Path(rest[0] if rest else pathlib.Path(__file__).parents[1])
    documents = [path for path in [root / "README.md", *sorted((root / "docs").glob("*.md"))]
                 if path.is_file()]
    problems, quotations = [], 0
    for document in documents:
        name = str(document.relative_to(root))
        text = document.read_text()
        quotations += sum(bool(QUOTE.match(line)) for line in text.split("\n"))
        try:
            wanted = "\n".join(rewritten(root, text.split("\n")))
        except Problem as problem:
            problems.append(f"{name}: {problem}")
            continue
        if wanted == text:
            continue
        if update:
            document.write_text(wanted)
            print(f"{name}: written")
            continue
        problems.append("\n".join(difflib.unified_diff(
            text.split("\n"), wanted.split("\n"), name, "what it quotes", lineterm="")))
        problems.append(f"{name}: no longer as it is quoted; tools/quote.py --update mends that")
    if not documents:
        problems.append(f"no documents under {root}")
    print("\n".join(problems) if problems else f"{quotations} quotations are as their files are")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
