#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests what all scripts promise, and that one which finds nothing to look at fails."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
TESTS = """cmake_minimum_required(VERSION 3.25)
project(example LANGUAGES NONE)
enable_testing()
add_test(NAME one COMMAND true)
"""


SCRIPTS = sorted(path for path in (PROJECT / "script").glob("[!.]*") if path.is_file())
SCRIPTS.remove(PROJECT / "script" / "README.md")
# What pretends to be built and tested, with one function of a test that was skipped.
PRETENDED = """#!/bin/sh
mkdir -p build/dev/Testing/Temporary
echo 'SKIP   : Test::function() no reason' >build/dev/Testing/Temporary/LastTest.log
"""


def is_shell(script: Path) -> bool:
    return script.read_text(encoding="utf-8").startswith("#!/usr/bin/env bash\n")


class EachScript(unittest.TestCase):
    def test_can_be_run_from_any_folder(self) -> None:
        self.assertGreater(len(SCRIPTS), 10)
        for script in SCRIPTS:
            with self.subTest(script.name):
                self.assertTrue(os.access(script, os.X_OK))
                text = script.read_text(encoding="utf-8")
                # By the name of its own file; installing packages needs no folder.
                if script.name != "bootstrap":
                    self.assertRegex(text, r"dirname \"\$(0|\{BASH_SOURCE\[0\]\})\"|__file__")

    def test_stops_at_the_first_command_that_fails(self) -> None:
        for script in filter(is_shell, SCRIPTS):
            with self.subTest(script.name):
                text = script.read_text(encoding="utf-8")
                self.assertRegex(text, r"(?m)\A(#.*\n|\n)+set -euo pipefail\n")

    def test_installs_what_it_needs_for_known_purposes(self) -> None:
        bootstrap = (PROJECT / "script" / "bootstrap").read_text(encoding="utf-8")
        packages = dict(re.findall(r'^    \[(\S+)\]="([^"]*)"', bootstrap, flags=re.MULTILINE))
        explained = set(re.findall(r"^#   script/bootstrap (\S+) ", bootstrap, flags=re.MULTILINE))
        self.assertEqual(explained, packages.keys())
        for script in SCRIPTS:
            if script.name in ("bootstrap", "check-documents", "render-art"):
                continue
            with self.subTest(script.name):
                text = script.read_text(encoding="utf-8")
                calls = re.findall(r'(?:script/bootstrap|"bootstrap",) ([^\n\])]+)', text)
                self.assertTrue(calls)
                purposes = {word.strip('",') for call in calls for word in call.split()}
                self.assertLessEqual(purposes, packages.keys())
        # Wherever the simulated camera runs.
        for purpose in ("test", "tour", "stress", "bench"):
            with self.subTest(purpose):
                self.assertLessEqual(set(packages["demo"].split()), set(packages[purpose].split()))

    def test_refuses_arguments_that_make_no_sense(self) -> None:
        for command in (
            ("bootstrap", "nothing"),
            ("fuzz", "nothing", "3"),
            ("fuzz", "all", "soon"),
            ("coverage", "nothing"),
            ("mutate", "--nothing"),
            ("bench", "nothing"),
            ("render-art", "nothing"),
            ("package", "nothing"),
            ("try-package", "/nowhere"),
            ("try-readme", "nothing"),
            ("try-driver", "/nowhere"),
            ("try-port",),
            ("try-port", "nothing"),
            ("try-port", "arm64", "s390x"),
            ("package-windows", "/nowhere"),
            ("try-windows", "/nowhere"),
        ):
            with self.subTest(" ".join(command)):
                call = [PROJECT / "script" / command[0], *command[1:]]
                result = subprocess.run(call, capture_output=True, text=True, check=False)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertTrue(result.stderr)
                self.assertEqual(result.stdout, "")


class FindingNothing(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def run_here(
        self, *command: str, env: dict[str, str] | None = None
    ) -> subprocess.CompletedProcess:
        return subprocess.run(
            command, cwd=self.folder, env=env, capture_output=True, text=True, check=False
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
        bin_ = self.folder / "bin"
        bin_.mkdir()
        # What is not tested here takes anything.
        for path in (self.folder / "script" / "bootstrap", bin_ / "clang-format", bin_ / "reuse"):
            path.write_text("#!/bin/sh\n", encoding="utf-8")
            path.chmod(0o755)
        environment = {**os.environ, "PATH": f"{bin_}:{os.environ['PATH']}"}
        self.run_here("git", "init", "--quiet")
        for tracked, steps, message in (
            (None, ["clang-format"], "lint: git has no file called *.cpp *.h"),
            ("main.cpp", ["clang-format", "reuse", "shellcheck"], "No files specified"),
            (
                "good",
                ["clang-format", "reuse", "shellcheck"],
                "lint: git has no file called packaging/completions/*",
            ),
        ):
            if tracked is not None:
                text = "" if tracked.endswith(".cpp") else "#!/bin/bash\n"
                (self.folder / tracked).write_text(text, encoding="utf-8")
                self.run_here("git", "add", tracked)
            with self.subTest(message):
                result = self.run_here("script/lint", env=environment)
                self.assertNotEqual(result.returncode, 0)
                self.assertEqual(result.stdout.splitlines()[: len(steps) + 1], steps)
                self.assertIn(message, result.stderr)
        result = self.run_here("script/lint", "unknown", env=environment)
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(result.stdout, "", "checks something else than what has changed")

    def test_without_qemu_no_driver_is_tried(self) -> None:
        bootstrap = self.folder / "script" / "bootstrap"
        bootstrap.parent.mkdir()
        bootstrap.write_text("#!/bin/sh\n", encoding="utf-8")
        bootstrap.chmod(0o755)
        shutil.copy(PROJECT / "script" / "try-driver", bootstrap.parent)
        environment = {**os.environ, "PATH": ""}
        result = self.run_here(sys.executable, "script/try-driver", env=environment)
        self.assertEqual(result.returncode, 77, result.stderr)
        self.assertEqual(result.stderr, "try-driver: tried nothing: there is no QEMU\n")

    def test_documents_are_not_right_without_any(self) -> None:
        self.run_here("git", "init", "--quiet")
        checker = PROJECT / "script" / "check-documents"
        result = self.run_here(sys.executable, str(checker), "--root", ".")
        self.assertEqual(result.returncode, 1)
        self.assertIn("check-documents: git has no file called *.md", result.stderr)

    def test_a_skipped_function_fails_a_test_run_of_ci_alone(self) -> None:
        shutil.copytree(PROJECT / "script" / "lib", self.folder / "script" / "lib")
        shutil.copy(PROJECT / "script" / "test", self.folder / "script")
        bin_ = self.folder / "bin"
        bin_.mkdir()
        for path in (bin_ / "cmake", bin_ / "ctest", self.folder / "script" / "bootstrap"):
            path.write_text(PRETENDED, encoding="utf-8")
            path.chmod(0o755)
        environment = {**os.environ, "PATH": f"{bin_}:{os.environ['PATH']}"}
        for ci, status in (("", 0), ("true", 1)):
            with self.subTest(f"CI={ci}"):
                environment["CI"] = ci
                result = self.run_here("script/test", env=environment)
                self.assertEqual(result.returncode, status, result.stderr)
                self.assertIn("1 no reason", result.stdout)


if __name__ == "__main__":
    unittest.main()
