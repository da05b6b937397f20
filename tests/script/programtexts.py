# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""What the programs of the build and their manual pages say, taken apart for tests."""

from __future__ import annotations

import os
import re
import subprocess
from dataclasses import dataclass
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
PACKAGING = PROJECT / "packaging"
PROGRAMS = Path(os.environ.get("CORVANE_PROGRAMS", "build/dev/bin")).resolve()


@dataclass
class Option:
    value: str  # such as FILE; empty when it takes none
    text: str


def installed_programs() -> set[str]:
    text = (PACKAGING / "CMakeLists.txt").read_text(encoding="utf-8")
    return set(re.search(r"^set\(programs\s+([^)]*)\)", text, flags=re.MULTILINE)[1].split())


def help_of(program: str, *command: str) -> str:
    # By its name alone, which its usage repeats.
    call = [program, *command, "--help"]
    return subprocess.run(
        call, executable=PROGRAMS / program, capture_output=True, text=True, check=True
    ).stdout


def commands_of(program: str) -> dict[str, str]:
    """The text of each command that the program's help lists."""
    listed = re.search(r"^Commands:\n((?:  .*\n)+)", help_of(program), flags=re.MULTILINE)
    return dict(re.findall(r"^  (\w+) +(.*)$", listed[1], flags=re.MULTILINE)) if listed else {}


def options_in(text: str) -> dict[str, Option]:
    """Those that a help lists."""
    options = {}
    listed = text.partition("\nOptions:\n")[2].partition("\n\n")[0]
    for entry in re.split(r"\n(?=  -)", listed):
        name, value, rest = re.match(
            r"  (?:-\w, )?(--[a-z0-9-]+)(?: <(.*?)>)?  (.*)", entry, flags=re.DOTALL
        ).groups()
        options[name] = Option(value or "", " ".join(rest.split()))
    return options


def options_of(program: str) -> dict[str, Option]:
    """Those of its commands as well."""
    options = options_in(help_of(program))
    for command in commands_of(program):
        options |= options_in(help_of(program, command))
    return options


def plain(line: str) -> str:
    """A line of a manual page without its macro."""
    if line.startswith("."):
        macro, _, rest = line.partition(" ")
        words = [quoted or bare for quoted, bare in re.findall(r'"([^"]*)"?|(\S+)', rest)]
        # Two fonts alternate without a space between the words.
        line = ("" if re.fullmatch(r"\.[BIR]{2}", macro) else " ").join(words)
    return line.replace("\\-", "-").replace("\\e", "\\")


class Manual:
    def __init__(self, program: str) -> None:
        self.source = (PACKAGING / "man" / f"{program}.1").read_text(encoding="utf-8")
        parts = re.split(r'^\.SH "?(.*?)"?\n', self.source, flags=re.MULTILINE)
        self.title = plain(parts[0].splitlines()[-1])
        self.sections = dict(zip(parts[1::2], parts[2::2]))

    def text(self, section: str) -> str:
        return "\n".join(map(plain, self.sections[section].splitlines()))

    def entries(self, section: str) -> dict[str, str]:
        """The text of each tagged paragraph, without what its examples and headings are made of."""
        found = {}
        for entry in self.sections[section].split(".TP\n")[1:]:
            tag, *lines = re.split(r"^\.S[HS] ", entry, flags=re.MULTILINE)[0].splitlines()
            found[plain(tag)] = " ".join(map(plain, lines))
        return found


def fault_plan_error(plan: str) -> str:
    """Why the simulator does not take a plan of faults; empty when it does."""
    # Complains about the seed only when the plan is right.
    return simulator_error("--faults", plan)


def simulator_error(*options: str) -> str:
    """Why the simulator does not take these options; empty when it does."""
    call = [PROGRAMS / "corvane-simulator", "--pty", "--seed=x", *options]
    errors = subprocess.run(call, capture_output=True, text=True, check=False).stderr
    return "" if "--seed is a number" in errors else errors or "no error at all"
