#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests that the manual pages and the programs' own help know the same, and each other."""

from __future__ import annotations

import os
import re
import subprocess
import unittest
from pathlib import Path

PACKAGING = Path(__file__).resolve().parents[2] / "packaging"
MANUALS = PACKAGING / "man"
PROGRAMS = Path(os.environ.get("CORVANE_PROGRAMS", "build/dev/bin")).resolve()


def options_of_the_help(program: str, *command: str) -> set[str]:
    text = subprocess.run(
        [PROGRAMS / program, *command, "--help"], capture_output=True, text=True, check=True
    ).stdout
    return set(re.findall(r"^  (?:-[a-z], )?(--[a-z0-9-]+)", text, flags=re.MULTILINE))


def options_of_the_manual(program: str) -> set[str]:
    text = (MANUALS / f"{program}.1").read_text(encoding="utf-8")
    options = re.search(r'^\.SH OPTIONS$(.*?)^\.SH (?!OPTIONS)', text, flags=re.M | re.S)
    tagged = re.findall(r"^\.TP\n(.*)$", options.group(1), flags=re.MULTILINE)
    return {
        option.replace("\\", "")
        for line in tagged
        for option in re.findall(r"\\-\\-[a-z0-9\\-]+", line)
    }


def verdicts_of_the_help() -> dict[str, set[str]]:
    """By what their exit code means. A line without verdicts below it has none."""
    text = subprocess.run(
        [PROGRAMS / "corvane-diagnose", "--help"], capture_output=True, text=True, check=True
    ).stdout
    codes = text.partition("\nExit codes")[2]
    found = re.findall(r"^  \d  (.*)\n((?:       .*\n)+)", codes, flags=re.MULTILINE)
    return {meaning.lower(): set(re.findall(r"[a-z-]+", verdicts)) for meaning, verdicts in found}


def verdicts_of_the_manual() -> dict[str, set[str]]:
    text = (MANUALS / "corvane-diagnose.1").read_text(encoding="utf-8").replace("\\", "")
    verdicts = re.search(r"^\.SH VERDICTS$(.*?)^\.SH ", text, flags=re.M | re.S)
    groups = verdicts.group(1).split(".SS ")[1:]
    return {
        group.splitlines()[0].strip('"').lower(): set(
            re.findall(r"^\.TP\n\.B (.*)$", group, flags=re.MULTILINE)
        )
        for group in groups
    }


def installed_programs() -> set[str]:
    text = (PACKAGING / "CMakeLists.txt").read_text(encoding="utf-8")
    return set(re.search(r"^set\(programs\s+([^)]*)\)", text, flags=re.MULTILINE)[1].split())


def see_also(program: str) -> set[str]:
    text = (MANUALS / f"{program}.1").read_text(encoding="utf-8").replace("\\", "")
    others = text.partition('.SH "SEE ALSO"')[2]
    return set(re.findall(r"^\.BR (corvane\S*) \(1\)", others, flags=re.MULTILINE))


class Manuals(unittest.TestCase):
    def test_the_simulators_manual_has_exactly_the_options_of_its_help(self) -> None:
        options = options_of_the_help("corvane-simulator")
        self.assertIn("--reboot-time", options)
        self.assertEqual(options_of_the_manual("corvane-simulator"), options)

    def test_the_diagnosis_manual_has_exactly_the_options_of_its_help(self) -> None:
        options = options_of_the_help("corvane-diagnose")
        self.assertIn("--json", options)
        self.assertEqual(options_of_the_manual("corvane-diagnose"), options)

    def test_the_diagnosis_manual_has_each_verdict_under_the_exit_status_of_its_help(self) -> None:
        expected = verdicts_of_the_help()
        self.assertIn("wrong-sums", expected["nothing came back that corvane could use"])
        self.assertEqual(verdicts_of_the_manual(), expected)

    def test_each_installed_program_has_a_manual_that_names_all_others(self) -> None:
        programs = installed_programs()
        self.assertIn("corvane", programs)
        self.assertEqual(programs, {page.stem for page in MANUALS.glob("*.1")})
        for program in programs:
            with self.subTest(program):
                self.assertEqual(see_also(program), programs - {program})

    def test_the_metainfo_names_each_installed_program(self) -> None:
        metainfo = (PACKAGING / "example.corvane.Corvane.metainfo.xml").read_text(encoding="utf-8")
        named = re.findall(r"<binary>(.*)</binary>", metainfo)
        self.assertEqual(named, sorted(installed_programs()))

    def test_the_image_tools_manual_has_exactly_the_options_of_all_its_helps(self) -> None:
        options = set()
        for command in ([], ["pack"], ["info"], ["unpack"], ["verify"]):
            options |= options_of_the_help("corvane-image", *command)
        self.assertIn("--protocol-version", options)
        self.assertEqual(options_of_the_manual("corvane-image"), options)


if __name__ == "__main__":
    unittest.main()
