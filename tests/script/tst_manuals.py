#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests that the manual pages and the programs' own help know the same options."""

from __future__ import annotations

import os
import re
import subprocess
import unittest
from pathlib import Path

MANUALS = Path(__file__).resolve().parents[2] / "packaging" / "man"
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


class Manuals(unittest.TestCase):
    def test_the_simulators_manual_has_exactly_the_options_of_its_help(self) -> None:
        options = options_of_the_help("corvane-simulator")
        self.assertIn("--reboot-time", options)
        self.assertEqual(options_of_the_manual("corvane-simulator"), options)

    def test_the_image_tools_manual_has_exactly_the_options_of_all_its_helps(self) -> None:
        options = set()
        for command in ([], ["pack"], ["info"], ["unpack"], ["verify"]):
            options |= options_of_the_help("corvane-image", *command)
        self.assertIn("--protocol-version", options)
        self.assertEqual(options_of_the_manual("corvane-image"), options)


if __name__ == "__main__":
    unittest.main()
