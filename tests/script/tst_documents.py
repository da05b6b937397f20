#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests that the READMEs list what is in their folders, and what the simulator takes."""

from __future__ import annotations

import fnmatch
import re
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True

from programtexts import (
    PROGRAMS,
    PROJECT,
    fault_plan_error,
    help_of,
    installed_programs,
    options_of,
    simulator_error,
)

# Each folder whose README lists it, and what of it has to be in that list.
LISTED = {
    ".": ("*/", "!docs/", "!LICENSES/", "!.*"),
    "cmake": ("*.cmake",),
    "docs": ("*",),
    "docs/results": ("*",),
    "packaging": ("*",),
    "script": ("*", "!lib/"),
    "src": ("*", "!main.cpp", "!version.h.in"),
    "tests": ("*/",),
    "tests/fuzz": ("fuzz_*.cpp",),
    "tests/program": ("tst_*.cpp",),
    "tests/support": ("*.h", "*.cpp", "!headers.cpp"),
    "tools": ("*/", "!commandline/", "!diagnosis/"),
    "tools/commandline": ("*",),
    "tools/diagnose": ("*", "!main.cpp"),
    "tools/diagnosis": ("*",),
    "tools/image": ("*", "!main.cpp"),
}
SIMULATOR = PROJECT / "tools" / "simulator" / "README.md"


def tables(document: Path) -> list[list[list[str]]]:
    """Of each table the rows, of each row the code in the cells."""
    found: list[list[list[str]]] = [[]]
    for line in document.read_text(encoding="utf-8").splitlines():
        if line.startswith("|"):
            cells = re.split(r"(?<!\\)\|", line)[1:-1]
            found[-1].append([" ".join(re.findall(r"`([^`]+)`", cell)) for cell in cells])
        elif found[-1]:
            found.append([])
    return [table[2:] for table in found if table]


def entries_of(folder: str) -> set[str]:
    """What git tracks directly in a folder; folders end with a slash."""
    call = ["git", "ls-files", "--", "."]
    listed = subprocess.run(call, cwd=PROJECT / folder, capture_output=True, text=True, check=True)
    names = {re.sub(r"/.*", "/", name) for name in listed.stdout.splitlines()}
    return {name for name in names if name not in ("README.md", "CMakeLists.txt")}


class Readmes(unittest.TestCase):
    def test_each_lists_its_folder(self) -> None:
        for folder, patterns in LISTED.items():
            wanted = [each for each in patterns if not each.startswith("!")]
            others = [each[1:] for each in patterns if each.startswith("!")]
            entries = entries_of(folder)
            [rows, *_] = tables(PROJECT / folder / "README.md")
            listed = {name for row in rows for name in row[0].split()}
            self.assertTrue(listed)
            for name in listed:
                # A test or a target is listed without its ending.
                with self.subTest(f"{folder}: {name} is there"):
                    there = any((PROJECT / folder).glob(each) for each in (name, f"{name}.cpp"))
                    self.assertTrue(there)
            for entry in entries:
                if any(fnmatch.fnmatch(entry, each) for each in wanted) and not any(
                    fnmatch.fnmatch(entry, each) for each in others
                ):
                    with self.subTest(f"{folder}: {entry} is listed"):
                        stem = entry.removesuffix(".cpp")
                        names = [name for name in listed if fnmatch.fnmatch(entry, name)]
                        self.assertTrue(names or stem in listed)

    def test_the_tools_readme_names_the_program_of_each_folder(self) -> None:
        rows = tables(PROJECT / "tools" / "README.md")[0]
        self.assertEqual({row[1] for row in rows}, installed_programs() - {"corvane"})


class SimulatorReadme(unittest.TestCase):
    def setUp(self) -> None:
        self.text = SIMULATOR.read_text(encoding="utf-8")
        self.options, self.commands, self.plans = tables(SIMULATOR)

    def test_every_option_that_it_shows_is_one(self) -> None:
        options = options_of("corvane-simulator")
        examples = 0
        for span in re.findall(r"`(--[a-z][^`]*)`", self.text):
            name, _, value = span.partition(" ")
            with self.subTest(span):
                self.assertIn(name, options)
                self.assertEqual(bool(value), bool(value and options[name].value))
                # Values in capitals are names of what goes there.
                if re.search(r"\d", value):
                    examples += 1
                    self.assertEqual(simulator_error(name, value), "")
        self.assertGreater(examples, 3)

    def test_every_plan_that_it_shows_is_one(self) -> None:
        plans = [row[0] for row in self.plans] + re.findall(r"--faults (\w+\S*@\S+)", self.text)
        self.assertGreater(len(plans), 5)
        for plan in plans:
            with self.subTest(plan):
                self.assertEqual(fault_plan_error(plan), "")

    def test_the_simulator_obeys_exactly_its_commands(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = f"{folder}/control"
            call = [PROGRAMS / "corvane-simulator", "--pty", "--control", path]
            simulator = subprocess.Popen(call, stdout=subprocess.PIPE, text=True)
            with simulator, socket.socket(socket.AF_UNIX) as client:
                simulator.stdout.readline()
                client.connect(path)
                with client.makefile("rw") as lines:
                    spans = {
                        span
                        for row in self.commands
                        for span in re.split(r" (?=silent off|faults none)", row[0])
                    }
                    # It does not answer any more after the last one.
                    for command in sorted(spans, key="quit".__eq__):
                        command = command.replace("PLAN [SEED]", "drop@reply:9 7")
                        lines.write(f"{command}\n")
                        lines.flush()
                        with self.subTest(command):
                            self.assertNotIn("unknown command", lines.readline())
                self.assertEqual(simulator.wait(60), 0)
        words = {word for span in spans for word in re.findall(r"\b[a-z-]+", span)}
        listed = help_of("corvane-simulator").partition("one a line:")[2].partition(".\n")[0]
        self.assertEqual(words - {"none"}, set(re.findall(r"\b[a-z-]+", listed)))

    def test_the_recording_that_it_shows_can_be_replayed(self) -> None:
        start = "# Corvane line recording 1\n"
        recording = start + self.text.partition(f"```\n{start}")[2].partition("```")[0]
        self.assertIn(" camera ", recording)
        with tempfile.NamedTemporaryFile("w") as file:
            file.write(recording)
            file.flush()
            call = [PROGRAMS / "corvane-simulator", "--replay", file.name, "--", "true"]
            result = subprocess.run(call, capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
