#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests script/check-hardening on a small program, built with one protection less each time."""

from __future__ import annotations

import json
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "script" / "check-hardening"
CODE = """#include <cstring>
extern "C" int exported(int number);
int exported(int number) { return number + 1; }
int main(int count, char **arguments)
{
    char copy[16];
    std::strncpy(copy, arguments[0], static_cast<std::size_t>(count) % sizeof copy);
    return exported(copy[0]) == 0;
}
"""
COMPILE = ["-O2", "-D_FORTIFY_SOURCE=2", "-fPIE", "-fstack-protector-strong", "-fvisibility=hidden"]
LINK = ["-pie", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack", "-Wl,--as-needed"]
# What stands in for an option, and what is said of the program then.
PROTECTIONS = {
    "position independence": ({"-fPIE": "-fno-pie", "-pie": "-no-pie"}, "-pie"),
    "relocations": ({"-Wl,-z,relro": "-Wl,-z,norelro"}, "-z relro"),
    "table of functions": ({"-Wl,-z,now": "-Wl,-z,lazy"}, "-z now"),
    "stack": ({"-Wl,-z,noexecstack": "-Wl,-z,execstack"}, "-z noexecstack"),
    "stack protector": (
        {"-fstack-protector-strong": "-fno-stack-protector"},
        "no stack protector",
    ),
    "visibility": (
        {"-fvisibility=hidden": "-fvisibility=default", "-pie": "-pie -rdynamic"},
        "-fvisibility=hidden",
    ),
    "libraries": ({"-Wl,--as-needed": "-Wl,--no-as-needed"}, "--as-needed"),
}


class CheckingHardening(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def check(self, changes: dict[str, str], compile_command: str) -> subprocess.CompletedProcess:
        source = self.folder / "program.cpp"
        source.write_text(CODE, encoding="utf-8")
        options = [
            word for option in COMPILE + LINK for word in changes.get(option, option).split()
        ]
        program = self.folder / "program"
        compiler = os.environ.get("CXX", "g++")
        subprocess.run([compiler, "-o", program, source, *options], check=True)
        commands = self.folder / "compile_commands.json"
        entry = {"file": "program.cpp", "command": compile_command}
        commands.write_text(json.dumps([entry]), encoding="utf-8")
        return subprocess.run(
            [CHECK, commands, program], capture_output=True, text=True, check=False
        )

    def test_a_program_with_all_protections_passes(self) -> None:
        result = self.check({}, "c++ -O2 -D_FORTIFY_SOURCE=2 -c program.cpp")
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_the_protection_that_is_missing_is_named(self) -> None:
        for name, (changes, complaint) in PROTECTIONS.items():
            with self.subTest(name):
                result = self.check(changes, "c++ -O2 -D_FORTIFY_SOURCE=2 -c program.cpp")
                self.assertEqual(result.returncode, 1)
                complaints = result.stderr.splitlines()
                self.assertTrue(complaints)
                for line in complaints:
                    self.assertIn(complaint, line)

    def test_a_source_compiled_without_checked_calls_is_named(self) -> None:
        for name, command in {
            "not asked for": "c++ -O2 -c program.cpp",
            "not optimised": "c++ -D_FORTIFY_SOURCE=2 -c program.cpp",
            "turned off": "c++ -O2 -U_FORTIFY_SOURCE -c program.cpp",
        }.items():
            with self.subTest(name):
                result = self.check({}, command)
                self.assertEqual(result.returncode, 1)
                self.assertIn("program.cpp is compiled without", result.stderr)

    def test_a_program_that_is_not_there_is_no_hardened_one(self) -> None:
        result = subprocess.run(
            [CHECK, __file__, self.folder / "none"], capture_output=True, text=True, check=False
        )
        self.assertEqual(result.returncode, 2)
        self.assertIn("no such file", result.stderr)


if __name__ == "__main__":
    unittest.main()
