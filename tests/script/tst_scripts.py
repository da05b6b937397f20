#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests that what finds nothing to look at fails, instead of finding nothing wrong."""

from __future__ import annotations

import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
TESTS = """cmake_minimum_required(VERSION 3.25)
project(example LANGUAGES NONE)
enable_testing()
add_test(NAME one COMMAND true)
"""


class FindingNothing(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def run_here(self, *command: str) -> subprocess.CompletedProcess:
        return subprocess.run(
            command, cwd=self.folder, capture_output=True, text=True, check=False
        )

    def test_a_run_that_selects_no_test_fails(self) -> None:
        shutil.copy(PROJECT / "CMakePresets.json", self.folder)
        (self.folder / "CMakeLists.txt").write_text(TESTS, encoding="utf-8")
        for preset in ("dev", "tsan"):
            configured = self.run_here("cmake", "--preset", preset)
            self.assertEqual(configured.returncode, 0, configured.stderr)
        self.assertEqual(self.run_here("ctest", "--preset", "dev").returncode, 0)
        for arguments in (
            ("--preset", "dev", "-R", "no such name"),
            ("--preset", "dev", "-L", "no such label"),
            ("--preset", "tsan"),  # selects by a label, which the test does not have
        ):
            with self.subTest(arguments):
                result = self.run_here("ctest", *arguments)
                self.assertNotEqual(result.returncode, 0)
                self.assertIn("No tests were found", result.stdout + result.stderr)

    def test_lint_fails_without_files(self) -> None:
        shutil.copytree(PROJECT / "script" / "lib", self.folder / "script" / "lib")
        shutil.copy(PROJECT / "script" / "lint", self.folder / "script")
        bootstrap = self.folder / "script" / "bootstrap"
        bootstrap.write_text("#!/bin/sh\n", encoding="utf-8")
        bootstrap.chmod(0o755)
        self.run_here("git", "init", "--quiet")
        result = self.run_here("script/lint")
        self.assertEqual(result.returncode, 1)
        self.assertIn("lint: git has no file called *.cpp *.h", result.stderr)


if __name__ == "__main__":
    unittest.main()
