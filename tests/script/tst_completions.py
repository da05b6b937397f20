#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests what bash completes, with the programs of the build."""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True

from programtexts import commands_of, help_of, installed_programs, options_in

BASH_COMPLETION = Path("/usr/share/bash-completion/bash_completion")
COMPLETIONS = Path(__file__).resolve().parents[2] / "packaging" / "completions"
PROGRAMS = Path(os.environ.get("CORVANE_PROGRAMS", "build/dev/bin")).resolve()

# Breaks the line into words as readline does it, and asks the function that is registered for the
# program for the last of them. bash-completion takes @ out of readline's break characters.
COMPLETE = r"""
COMP_WORDBREAKS=$' \t\n"\'@><=;|&(:' # as in an interactive shell
source "$1"; source "$2/$3"
COMP_LINE=$4; COMP_POINT=${#4}; COMP_TYPE=9; COMP_KEY=9
mapfile -t COMP_WORDS < <(grep -oE '[=:]+|[^=: ]+' <<<"$4")
if [[ $4 == *" " ]]; then COMP_WORDS+=(""); fi
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
registered=$(complete -p "$3")
[[ $registered =~ -F\ ([^\ ]+) ]] || exit
"${BASH_REMATCH[1]}" "$3" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}"
"""


class Completing(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("camera.img", "camera.bin"):
            (self.folder / name).touch()
        # Where bash-completion looks for the completion of the program after the simulator.
        loadable = self.folder / "share" / "bash-completion"
        loadable.mkdir(parents=True)
        (loadable / "completions").symlink_to(COMPLETIONS)

    def completions(self, line: str, *under: str) -> set[str]:
        """:param under: a program that runs the shell, with its arguments"""
        program = line.split()[0]
        result = subprocess.run(
            [*under, "bash", "--norc", "-c", COMPLETE]
            + ["bash", BASH_COMPLETION, COMPLETIONS, program, line],
            capture_output=True,
            text=True,
            check=False,
            cwd=self.folder,
            env={
                **os.environ,
                "PATH": f"{PROGRAMS}:{os.environ['PATH']}",
                "XDG_DATA_HOME": str(self.folder / "share"),
            },
        )
        return set(result.stdout.split())

    def test_what_can_stand_there_is_offered(self) -> None:
        for line, expected in {
            "corvane-diagnose --": {
                "--all",
                "--help",
                "--json",
                "--list",
                "--report",
                "--version",
                "--wait",
                "--watch",
            },
            "corvane-diagnose --wait ": set(),
            "corvane-diagnose --list ": set(),
            "corvane-diagnose --all ": set(),
            "corvane-diagnose --report camera.b": {"camera.bin"},
            "corvane-diagnose ttyUSB0 ": set(),
            "corvane-diagnose ./camera.b": {"./camera.bin"},
            "corvane-image ": {"pack", "info", "unpack", "verify"},
            "corvane-image u": {"unpack"},
            "corvane-image --v": {"--version"},
            "corvane-image pack --": {
                "--help",
                "--version",
                "--protocol-version",
                "--image-version",
            },
            "corvane-image info --": {"--help", "--version"},
            "corvane-image verify --": {"--help", "--version", "--sha256"},
            "corvane-image verify --sha256 ": set(),
            "corvane-image info c": {"camera.img"},
            "corvane-image pack c": {"camera.img", "camera.bin"},
            "corvane-image pack --image-version ": set(),
            "corvanectl s": {"save", "set"},
            "corvanectl info --": {"--all", "--help", "--json", "--version"},
            "corvanectl list --p": {"--probe"},
            "corvanectl upgrade --re": {"--reboot-limit"},
            "corvanectl upgrade --attempts ": set(),
            "corvanectl upgrade ca": {"camera.img"},
            "corvanectl zoom ": {"1", "2"},
            "corvanectl set auto-": {"auto-tracking=", "auto-zoom="},
            "corvanectl list ": set(),
            "corvane-simulator --re": {"--reboot-time", "--record", "--replay"},
            "corvane-simulator --replay camera.b": {"camera.bin"},
            "corvane-simulator --seed ": set(),
            "corvane-simulator --faults wrong-": {
                "wrong-sum@",
                "wrong-length@",
                "wrong-command@",
                "wrong-parameter@",
            },
            "corvane-simulator --faults h": {"half-frame@", "hang-up@", "help"},
            "corvane-simulator --faults drop@": {"drop@request:", "drop@reply:"},
            "corvane-simulator --faults drop@rep": {"drop@reply:"},
            "corvane-simulator --faults drop@reply:": set(),
            # Only what is after the last = or : is replaced.
            "corvane-simulator --faults drop@reply:3,sw": {"3,swap@"},
            "corvane-simulator --faults late=60@reply:3,drop@req": {"3,drop@request:"},
            "corvane-simulator --pty --he": {"--help", "--hex"},
            "corvane-simulator -- corvane-ima": {"corvane-image"},
            "corvane-simulator --quiet corvane-image inf": {"info"},
            "corvane-simulator --faults drop@reply:3 -- corvane-image ver": {"verify"},
            "corvane-simulator --seed 3 -- corvane-image --ver": {"--version"},
        }.items():
            with self.subTest(line):
                self.assertEqual(self.completions(line), expected)

    def test_every_option_of_the_help_is_completed(self) -> None:
        for program in installed_programs() - {"corvane"}:
            completed: set[str] = set()
            for command in commands_of(program) or [""]:
                before = f"{program} {command} " if command else f"{program} "
                options = options_in(help_of(program, *command.split()))
                names = set(options) | ({"--"} if program == "corvane-simulator" else set())
                with self.subTest(before):
                    self.assertEqual(self.completions(f"{before}--"), names)
                for name in options.keys() - completed:
                    with self.subTest(before + name):
                        self.check_option(before + name, options[name].value, names)
                completed |= options.keys()

    def check_option(self, line: str, value: str, names: set[str]) -> None:
        if value in ("FILE", "PATH", "PORT"):
            files = {"camera.img", "camera.bin", "share"}
            self.assertEqual(self.completions(f"{line} "), files)
        elif value and value != "PLAN":
            self.assertEqual(self.completions(f"{line} "), set())
        # A word that is no value begins the command line of the simulator's program.
        self.assertEqual(self.completions(f"{line} 1 --" if value else f"{line} --"), names)

    def test_the_ports_that_there_are_are_offered(self) -> None:
        port = f"ttyUSB{os.getpid()}"
        camera = [str(PROGRAMS / "corvane-simulator"), "--quiet", "--port", port, "--"]
        for line, expected in {
            "corvane-diagnose ": {port},
            "corvane-diagnose --json --wait 3 tty": {port},
            "corvane-diagnose --report a.json tty": {port},
            "corvane-diagnose ttyS": set(),
            "corvanectl info tty": {port},
            "corvanectl --json zoom 1 tty": {port},
            f"corvane-diagnose {port} tty": set(),
        }.items():
            with self.subTest(line):
                self.assertEqual(self.completions(line, *camera), expected)


if __name__ == "__main__":
    unittest.main()
