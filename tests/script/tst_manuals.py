#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests that the manual pages and the programs say the same, and know each other."""

from __future__ import annotations

import json
import os
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True

from programtexts import (
    PACKAGING,
    PROGRAMS,
    Manual,
    commands_of,
    fault_plan_error,
    help_of,
    installed_programs,
    options_of,
)

# The window has no options and no help of its own.
COMPANIONS = sorted(installed_programs() - {"corvane"})


def figures_in(text: str) -> set[str]:
    """The words with a digit in them, such as numbers, defaults and the ends of a range."""
    return {word.rstrip(".,") for word in re.findall(r"[\w.,-]*\d[\w.,-]*", text)}


def verdicts_of_the_help() -> dict[str, set[str]]:
    """By what their exit code means. A line without verdicts below it has none."""
    codes = help_of("corvane-diagnose").partition("\nExit codes")[2]
    found = re.findall(r"^  \d  (.*)\n((?:       .*\n)+)", codes, flags=re.MULTILINE)
    return {meaning.lower(): set(re.findall(r"[a-z-]+", verdicts)) for meaning, verdicts in found}


def verdicts_of_the_manual() -> dict[str, set[str]]:
    groups = Manual("corvane-diagnose").sections["VERDICTS"].replace("\\", "").split(".SS ")[1:]
    return {
        group.splitlines()[0].strip('"').lower(): set(
            re.findall(r"^\.TP\n\.B (.*)$", group, flags=re.MULTILINE)
        )
        for group in groups
    }


class Manuals(unittest.TestCase):
    def test_each_installed_program_has_a_manual_that_names_all_others(self) -> None:
        programs = installed_programs()
        self.assertIn("corvane", programs)
        self.assertEqual(programs, {page.stem for page in (PACKAGING / "man").glob("*.1")})
        for program in programs:
            with self.subTest(program):
                manual = Manual(program)
                self.assertEqual(manual.title.split()[:2], [program.upper(), "1"])
                self.assertEqual(manual.text("NAME").split(" - ")[0], program)
                others = set(re.findall(r"^(corvane\S*)\(1\)", manual.text("SEE ALSO"), flags=re.M))
                self.assertEqual(others, programs - {program})

    def test_the_metainfo_names_each_installed_program(self) -> None:
        metainfo = (PACKAGING / "example.corvane.Corvane.metainfo.xml").read_text(encoding="utf-8")
        named = re.findall(r"<binary>(.*)</binary>", metainfo)
        self.assertEqual(named, sorted(installed_programs()))

    def test_manual_and_help_have_the_same_options_and_figures(self) -> None:
        for program in COMPANIONS:
            options = options_of(program)
            self.assertIn("--version", options)
            described = {
                tag.replace("-h, ", "").replace("-v, ", ""): text
                for tag, text in Manual(program).entries("OPTIONS").items()
            }
            expected = {f"{name} {option.value}".strip() for name, option in options.items()}
            with self.subTest(program):
                self.assertEqual(set(described), expected)
            for tag, text in described.items():
                with self.subTest(f"{program} {tag}"):
                    missing = figures_in(options[tag.split()[0]].text) - figures_in(text)
                    self.assertEqual(missing, set())

    def test_manual_and_help_have_the_same_commands(self) -> None:
        commands = commands_of("corvane-image")
        self.assertIn("verify", commands)
        manual = Manual("corvane-image")
        described = manual.entries("COMMANDS")
        self.assertEqual(set(described), set(commands))
        for command, text in commands.items():
            with self.subTest(command):
                self.assertTrue(described[command].startswith(text.rstrip(".")))
                usage = help_of("corvane-image", command)
                files = re.search(rf"\[options\] {command} (.*)", usage)[1]
                synopsis = " ".join(manual.text("SYNOPSIS").split())
                self.assertRegex(synopsis, rf"corvane-image {command} ([^.]|\.\S)*?\b{files}\b")
                more = help_of("corvane-image", command).partition("\n\nOptions:")[0]
                said = figures_in(manual.text("COMMANDS") + manual.text("OPTIONS"))
                self.assertEqual(figures_in(more) - said, set())

    def test_manual_and_help_have_the_same_exit_codes(self) -> None:
        for program in COMPANIONS:
            with self.subTest(program):
                codes = " ".join(help_of(program).partition("\nExit codes")[2].split())
                entries = Manual(program).entries("EXIT STATUS")
                self.assertIn("2", entries)
                for code, text in entries.items():
                    meaning = text.split(";")[0].strip(". ")
                    meaning = meaning[0].lower() + meaning[1:]
                    self.assertRegex(codes, rf"\b{code} (when )?{re.escape(meaning)}")
                for code in set(re.findall(r"\b\d+\b", codes)):
                    self.assertRegex(Manual(program).text("EXIT STATUS"), rf"\b{code}\b")

    def test_the_diagnosis_manual_has_each_verdict_under_the_exit_status_of_its_help(self) -> None:
        expected = verdicts_of_the_help()
        self.assertIn("wrong-sums", expected["nothing came back that corvane could use"])
        self.assertEqual(verdicts_of_the_manual(), expected)

    def test_the_diagnosis_manual_has_exactly_the_members_of_the_json(self) -> None:
        section = Manual("corvane-diagnose").sections["JSON"]
        described = set(re.findall(r"^\.BR? (\w+)", section, flags=re.MULTILINE))
        master, terminal = os.openpty()  # which this test has open, too
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, terminal)
        port = f"ttyMANUAL{os.getpid()}"
        camera = ["corvane-simulator", "--quiet", "--port", port]
        diagnosis = ["corvane-diagnose", "--json"]
        members: set[str] = set()
        for command in (
            [*diagnosis, "--list"],
            [*diagnosis, "--wait", "0.1", os.ttyname(terminal)],
            # Two warnings.
            [*camera, "--camera-version", "1.0.0.105", "--faults", "noise@reply:1"]
            + ["--", *diagnosis, "--wait", "60", port],
            [*camera, "--faults", "hang-up@reply:1.5", "--", *diagnosis, "--wait", "60", port],
            [*camera, "--", *diagnosis, "--list"],
            [*camera, "--", *diagnosis, "--wait", "60", "--all"],
        ):
            call = [PROGRAMS / command[0], *command[1:]]
            path = f"{PROGRAMS}:{os.environ['PATH']}"
            result = subprocess.run(
                call, capture_output=True, check=False, env={**os.environ, "PATH": path}
            )
            report = json.loads(result.stdout)
            members |= report.keys()
            for name in ("holders", "furtherWarnings", "identities"):
                for nested in report.get(name, []):
                    members |= nested.keys()
        self.assertEqual(described, members)

    def test_the_simulators_manual_has_the_commands_of_its_help(self) -> None:
        lines = " ".join(help_of("corvane-simulator").split())
        option = Manual("corvane-simulator").entries("OPTIONS")["--control PATH"]
        listed, described = (re.search(r"one a line: (.*?)\. ", text)[1] for text in (lines, option))
        words = [re.sub(r"\W+", " ", text).split() for text in (listed, described)]
        self.assertIn("unplug", words[0])
        self.assertEqual(*words)

    def test_the_simulators_manual_names_the_library_that_it_preloads(self) -> None:
        call = [PROGRAMS / "corvane-simulator", "--", "sh", "-c", "echo $LD_PRELOAD"]
        environment = {name: text for name, text in os.environ.items() if name != "LD_PRELOAD"}
        result = subprocess.run(call, capture_output=True, text=True, check=True, env=environment)
        described = Manual("corvane-simulator").entries("ENVIRONMENT")["LD_PRELOAD"]
        self.assertIn(f" {result.stdout.strip()} ", described)

    def test_every_command_that_a_manual_shows_is_one(self) -> None:
        options = {program: options_of(program) for program in COMPANIONS}
        plans = 0
        for program in installed_programs():
            manual = Manual(program)
            text = manual.text("EXAMPLES").replace("\\\n", "")
            for line in re.findall(r"^corvane.*", text, flags=re.MULTILINE):
                # A program that another one runs is after --.
                for command in filter(str.strip, re.split(r" -- |[|;&]", line.partition(">")[0])):
                    words = command.split()
                    used = {word for word in words if word.startswith("--")}
                    with self.subTest(command):
                        self.assertIn(words[0], installed_programs())
                        self.assertLessEqual(used, options.get(words[0], {}).keys())
                        for plan in re.findall(r"--faults (\S+)", command):
                            plans += 1
                            self.assertEqual(fault_plan_error(plan), "")
        self.assertGreater(plans, 0)


if __name__ == "__main__":
    unittest.main()
