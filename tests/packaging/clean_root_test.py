#!/usr/bin/env python3
"""A mirror that fails skips the packages' test, with its reason; what is ours fails it.

Usage: clean_root_test.py <agent> <source root>. The network and all that needs root are
programs of this test's own.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(2))
sys.argv = sys.argv[:1]


class CleanRoot(unittest.TestCase):
    def run_with(self, **programs):
        """Its status, and what it says, where these programs are shell scripts."""
        with tempfile.TemporaryDirectory() as directory:
            work = pathlib.Path(directory)
            (work / "bin").mkdir()
            (work / "packages").mkdir()
            defaults = {"id": "echo 0", "unshare": "", "curl": "", "sleep": "", "mmdebstrap": "exit 1"}
            for name, script in {**defaults, **programs}.items():
                program = work / "bin" / name
                program.write_text(f"#!/bin/sh\n{script}\n")
                program.chmod(0o755)
            environment = {**os.environ, "PATH": f"{work}/bin:{os.environ['PATH']}", "COUNT": f"{work}/count"}
            done = subprocess.run([ROOT / "tools" / "clean_root.sh", work / "packages", work / "work"],
                                  env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, check=False)
            count = work / "count"
            self.tries = len(count.read_text()) if count.exists() else 0
            return done.returncode, done.stdout

    def skips(self, reason, **programs):
        status, output = self.run_with(**programs)
        self.assertEqual(status, 77, output)
        last = output.splitlines()[-1]
        self.assertIn("clean root: Skipped: ", last)
        self.assertIn(reason, last)

    def test_no_name_server(self):
        self.skips("cannot be reached", curl="exit 6")

    def test_a_mirror_that_fails_in_the_middle(self):
        self.skips("E: Failed to fetch it", mmdebstrap="printf x >>$COUNT; echo 'E: Failed to fetch it'; exit 1")
        self.assertEqual(self.tries, 3)

    def test_a_mirror_that_says_nothing(self):
        self.skips("no answer in time", mmdebstrap="exit 124")

    def test_no_root_and_no_namespaces(self):
        self.skips("needs root", id="echo 1000")
        self.skips("no namespaces", unshare="echo no >&2; exit 1")

    def test_what_is_ours(self):
        status, output = self.run_with(
            mmdebstrap="printf x >>$COUNT; echo 'E: Unable to locate package snpm'; exit 1")
        self.assertEqual(status, 1, output)
        self.assertIn("clean root: FAILED", output)
        self.assertEqual(self.tries, 1)

    def test_downloads_into_the_root(self):
        """The base is there, and the mirror goes: apt's update, then the packages themselves."""
        base = """for last; do case $last in *.tar.new) tar -cf "$last" -T /dev/null;; esac; done"""
        for step in ("apt-get update", "--download-only"):
            self.skips("W: Failed to fetch that", mmdebstrap=base, tar=TAR, cp="", chroot=f"""
                case "$*" in *'{step}'*) echo 'W: Failed to fetch that'; exit 100;; esac""")


# Makes what the script writes to when it unpacks the root.
TAR = """case $* in *-x*) for root; do :; done; mkdir -p "$root/usr/sbin" "$root/etc";; *) exec /bin/tar "$@";; esac"""

if __name__ == "__main__":
    unittest.main()
