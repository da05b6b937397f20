#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests which mistakes in documents script/check-documents finds, and what it leaves alone."""

from __future__ import annotations

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parents[2] / "script" / "check-documents"

PROGRAM = """#!/bin/sh
case $1 in
    make) echo "  --size N" ;;
    *) printf 'Options:\\n  --port NAME\\n\\nCommands:\\n  make    Make.\\n' ;;
esac
"""


class CheckDocuments(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "script").mkdir()
        (self.root / "script" / "try").write_text("# --fast\n", encoding="utf-8")
        (self.root / "bin").mkdir()
        program = self.root / "bin" / "corvane-thing"
        program.write_text(PROGRAM, encoding="utf-8")
        program.chmod(0o755)
        (self.root / "other.md").write_text("# Other\n\n## A `b` c!\n\n## A b c\n", encoding="utf-8")

    def mistakes(self, text: str) -> list[str]:
        page = self.root / "page.md"
        page.write_text(text, encoding="utf-8")
        call = [sys.executable, CHECKER, "--root", self.root, "--programs", self.root / "bin", page]
        result = subprocess.run(call, capture_output=True, text=True, check=False)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 1 if result.stdout else 0)
        return result.stdout.splitlines()

    def test_what_is_right_passes(self) -> None:
        self.assertEqual(
            self.mistakes(
                "# Page\n\n[a](other.md) [b](other.md#a-b-c-1) [c](#page) [d](https://example.org/x)\n"
                "`script/try` `--unknown` `a/b`\n\n"
                "    script/try --fast    what --slow does\n"
                "    corvane-thing --port A -- corvane --anything\n\n"
                "    corvane-thing make --size 3 | script/try\n\n"
                "```\n$ corvane-thing --port A &\n(no command\n```\n\n"
                "```sh\nls -l /dev/null\n```\n"
            ),
            [],
        )

    def test_a_link_to_nowhere_is_found(self) -> None:
        self.assertEqual(self.mistakes("[a](gone.md)\n"), ["page.md:1: there is no gone.md"])

    def test_a_picture_that_is_not_there_is_found(self) -> None:
        self.assertEqual(self.mistakes("\n![a](a.png)\n"), ["page.md:2: there is no a.png"])

    def test_an_anchor_without_its_heading_is_found(self) -> None:
        self.assertEqual(
            self.mistakes("[a](other.md#a-b)\n[b](#page)\n"),
            [
                "page.md:1: other.md has no heading for #a-b",
                "page.md:2: page.md has no heading for #page",
            ],
        )

    def test_a_link_in_code_is_none(self) -> None:
        self.assertEqual(self.mistakes("`[a](gone.md)`\n\n```\n[a](gone.md)\n```\n"), [])

    def test_a_path_that_is_not_there_is_found(self) -> None:
        self.assertEqual(self.mistakes("`script/gone`\n"), ["page.md:1: there is no script/gone"])

    def test_a_script_that_is_not_there_is_found(self) -> None:
        self.assertEqual(
            self.mistakes("Text\n\n    script/gone now\n"), ["page.md:3: there is no script/gone"]
        )

    def test_an_option_that_is_not_there_is_found(self) -> None:
        self.assertEqual(
            self.mistakes("`corvane-thing --part 1`\n\n    corvane-thing --por 1\n    script/try --slow\n"),
            [
                "page.md:1: corvane-thing has no option --part",
                "page.md:3: corvane-thing has no option --por",
                "page.md:4: script/try has no option --slow",
            ],
        )

    def test_a_command_that_is_no_command_is_found(self) -> None:
        for block in ("    echo 'a\n", "1. One:\n\n       echo 'a\n", "```\n$ echo 'a\n```\n"):
            with self.subTest(block):
                found = self.mistakes("Text\n\n" + block)
                self.assertEqual(len(found), 1)
                self.assertIn("unexpected EOF", found[0])

    def test_every_document_of_git_is_read(self) -> None:
        subprocess.run(["git", "init", "--quiet"], cwd=self.root, check=True)
        for name in ("a.md", "folder/b.md"):
            page = self.root / name
            page.parent.mkdir(exist_ok=True)
            page.write_text("[a](gone.md)\n", encoding="utf-8")
        subprocess.run(["git", "add", "a.md"], cwd=self.root, check=True)
        call = [sys.executable, CHECKER, "--root", self.root]
        result = subprocess.run(call, capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        found = sorted(result.stdout.splitlines())
        expected = ["a.md:1: there is no gone.md", "folder/b.md:1: there is no gone.md"]
        self.assertEqual(found, expected)

    def test_shellcheck_reads_shell_blocks(self) -> None:
        found = self.mistakes("```sh\nfor a in 1; do echo $(ls $a)\n```\n")
        self.assertEqual(len(found), 1)
        self.assertTrue(found[0].startswith("page.md:2: "), found)


if __name__ == "__main__":
    unittest.main()
