#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests what script/mutate is made of."""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from mutation import tree  # noqa: E402
from mutation.mutants import Mutant, find_mutants  # noqa: E402
from mutation.report import Result, markdown, read_equivalent, summary  # noqa: E402
from mutation.tree import Outcome, Tree  # noqa: E402

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(example LANGUAGES CXX)
enable_testing()
add_executable(tst_sum src/sum.cpp tst_sum.cpp)
add_test(NAME tst_sum COMMAND $<TARGET_FILE:tst_sum>)
add_executable(shows src/shows.cpp)
set_target_properties(shows PROPERTIES RUNTIME_OUTPUT_DIRECTORY bin)
add_test(NAME tst_script.Status
    COMMAND ${CMAKE_SOURCE_DIR}/program/tst_script.py --verbose Status)
"""
CODE = """int sum(int count)
{
    int sum = 0;
    while (count > 0) {
        sum += count;
        --count;
    }
    return sum;
}
"""
PROGRAM = """int main()
{
    return 3;
}
"""
# The second test would go on for long.
SCRIPT = """#!/usr/bin/env python3
import pathlib, subprocess, time, unittest
PROGRAMS = pathlib.Path("bin")
class Status(unittest.TestCase):
    def test_ends_with_three(self):
        self.assertEqual(subprocess.run([PROGRAMS / "shows"]).returncode, 3)
    def test_takes_its_time(self):
        if subprocess.run([PROGRAMS / "shows"]).returncode != 3:
            time.sleep(60)
unittest.main()
"""
# Prints what QtTest prints, and runs on for a while after a failure.
TEST = """#include <cstdio>
#include <cstdlib>
#include <unistd.h>
int sum(int count);
int main()
{
    if (sum(3) != 6 || access(std::getenv("TROUBLE"), F_OK) == 0) {
        std::puts("FAIL!  : SumTest::addsUp(three) Compared values are not the same");
        std::fflush(stdout);
        sleep(2);
        return 1;
    }
}
"""


class FindingMutants(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name) / "example.cpp"

    def find(self, code: str) -> list[Mutant]:
        self.path.write_text(code)
        return find_mutants(self.path, ["-x", "c++", "-std=c++17"], {self.path: "example.cpp"})

    def changes(self, code: str) -> set[tuple[str, str, str]]:
        source = code.encode()
        return {
            (each.operator, source[each.start : each.end].decode(), each.replacement.decode())
            for each in self.find(code)
        }

    def test_integers_go_up_and_down_and_to_nothing(self) -> None:
        self.assertEqual(
            self.changes("constexpr int kSize = 0x10;"),
            {("integer", "0x10", "17"), ("integer", "0x10", "15"), ("integer", "0x10", "0")},
        )

    def test_milliseconds_change_by_what_can_be_seen(self) -> None:
        self.assertEqual(
            self.changes("constexpr int kPauseMs = 200;"),
            {("duration", "200", "0"), ("duration", "200", "100"), ("duration", "200", "400")},
        )

    def test_conditions_are_moved_turned_and_joined_otherwise(self) -> None:
        self.assertEqual(
            self.changes("bool f(int a, bool b, bool c) { return (a < a && !b) || c; }"),
            {
                ("comparison", "<", "<="),
                ("comparison", "<", ">="),
                ("logical", "&&", "||"),
                ("logical", "||", "&&"),
                ("negation", "!b", "b"),
                ("return", "(a < a && !b) || c", "!((a < a && !b) || c)"),
            },
        )

    def test_statements_are_left_out_and_swapped(self) -> None:
        self.assertEqual(
            self.changes("void a(); void b(); void f() { a(); b(); }"),
            {("drop", "a()", ""), ("drop", "b()", ""), ("swap-statements", "a(); b()", "b(); a()")},
        )

    def test_an_emit_goes_with_its_signal(self) -> None:
        code = "#define emit\nvoid a();\nvoid f() { emit a(); }"
        self.assertIn(("drop", "emit a()", ""), self.changes(code))

    def test_assignments_that_commute_are_not_swapped(self) -> None:
        code = "struct S { int x; int y; }; void f(S &s, int v) { s.x = v; s.y = v; }"
        self.assertNotIn("swap-statements", {change[0] for change in self.changes(code)})

    def test_arguments_of_one_type_are_swapped(self) -> None:
        self.assertEqual(
            self.changes("void g(int, int, char); void f(int a, int b) { g(a, b, 'c'); }"),
            {
                ("swap-arguments", "a, b", "b, a"),
                ("drop", "g(a, b, 'c')", ""),
                ("text", "'c'", "'d'"),
            },
        )

    def test_texts_change_inside_macros_too(self) -> None:
        code = '#define TEXT(x) x\nconst char *const kText = TEXT("ab\\n");'
        self.assertEqual(self.changes(code), {("text", '"ab\\n"', '"ac\\n"')})

    def test_connections_and_signals_come_twice(self) -> None:
        code = "#define emit\nvoid connect(int); void a();\nvoid f() { connect(1); emit a(); }"
        self.assertLessEqual(
            {
                ("repeat", "connect(1)", "connect(1); connect(1)"),
                ("repeat", "emit a()", "emit a(); emit a()"),
            },
            self.changes(code),
        )

    def test_what_is_created_or_shown_loses_its_owner(self) -> None:
        code = """struct Part { Part(Part *owner); };
            void show(Part *owner); void connect(Part *receiver);
            struct Whole : Part { void f() { new Part(this); show(this); connect(this); } };"""
        parents = {change for change in self.changes(code) if change[0] == "parent"}
        self.assertEqual(parents, {("parent", "this", "nullptr")})
        self.assertEqual(len([each for each in self.find(code) if each.operator == "parent"]), 2)

    def test_a_translation_is_forgotten(self) -> None:
        code = 'int tr(const char *); int f() { return tr("text"); }'
        self.assertIn(("untranslated", 'tr("text")', 'QStringLiteral("text")'), self.changes(code))

    def test_waiting_for_events_excludes_the_operator(self) -> None:
        code = """struct Loop { int exec(int = 0); }; void processEvents(int = 0);
            void f() { Loop m_loop; m_loop.exec(); processEvents(); processEvents(1); }"""
        events = [each for each in self.find(code) if each.operator == "events"]
        self.assertEqual(len(events), 2)
        changed = events[0].apply(code.encode()).decode()
        self.assertIn("m_loop.exec(QEventLoop::ExcludeUserInputEvents)", changed)

    def test_an_enumerator_becomes_the_next_but_not_as_a_label(self) -> None:
        code = """enum Kind { One, Same = One, Other };
            int f(Kind kind) { switch (kind) { case One: break; } return g(One); }"""
        code = "int g(int);\n" + code
        self.assertEqual(
            [change for change in self.changes(code) if change[0] == "enumerator"],
            [("enumerator", "One", "Other")],
        )

    def test_a_member_loses_its_value(self) -> None:
        code = """struct T {};
            struct S { int m; int n; T t; void f(int v, const T &w) { m = v; n = 0; t = w; } };"""
        resets = {change for change in self.changes(code) if change[0] == "reset"}
        self.assertEqual(resets, {("reset", "v", "{}"), ("reset", "w", "T()")})

    def test_a_timer_is_restarted_where_it_is_not_started(self) -> None:
        code = """struct QTimer { void start(); }; void g();
            struct S { QTimer m_timer; void f() { g(); } void h() { m_timer.start(); } };"""
        restarts = [each for each in self.find(code) if each.operator == "restart"]
        self.assertEqual([each.function for each in restarts], ["S::f"])
        self.assertIn("f() { m_timer.start(); g(); }", restarts[0].apply(code.encode()).decode())

    def test_an_id_outlives_changes_elsewhere(self) -> None:
        line = "int f(int a) { return a + a; }"
        before = {each.id for each in self.find(line)}
        after = {each.id for each in self.find(f"int other = 3;\n\n{line}")}
        self.assertTrue(before)
        self.assertTrue(before < after)


class JudgingMutants(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        project = Path(folder.name) / "project"
        (project / "src").mkdir(parents=True)
        (project / "CMakeLists.txt").write_text(PROJECT)
        (project / "src/sum.cpp").write_text(CODE)
        (project / "src/shows.cpp").write_text(PROGRAM)
        (project / "tst_sum.cpp").write_text(TEST)
        (project / "program").mkdir()
        (project / "program/tst_script.py").write_text(SCRIPT)
        (project / "program/tst_script.py").chmod(0o755)
        subprocess.run(["git", "init", "--quiet"], cwd=project, check=True)
        cls.copy = Path(folder.name) / "work/tree/src/sum.cpp"
        cls.trouble = Path(folder.name) / "trouble"
        os.environ["TROUBLE"] = str(cls.trouble)
        cls.control = Tree(project, Path(folder.name) / "control")
        cls.control.prepare()
        cls.control.measure()
        cls.tree = Tree(project, Path(folder.name) / "work")
        cls.tree.prepare()
        cls.tree.use_measures_of(cls.control)
        cls.mutants = cls.tree.mutants(["src/shows.cpp", "src/sum.cpp"])

    def judge(self, operator: str, replacement: str, line: int) -> Outcome:
        [mutant] = [
            each
            for each in self.mutants
            if (each.operator, each.replacement.decode(), each.line) == (operator, replacement, line)
        ]
        outcome = self.tree.judge(mutant, self.control)
        self.assertEqual(self.copy.read_text(), CODE, "the file was not put back")
        return outcome

    def test_a_mutant_that_a_test_notices_is_killed_at_once(self) -> None:
        outcome = self.judge("drop", "", 5)
        self.assertEqual(outcome.verdict, "killed")
        self.assertEqual(outcome.by, "tst_sum SumTest::addsUp(three)")
        self.assertLess(outcome.seconds, 60)

    def test_a_mutant_that_only_a_script_notices_is_killed_at_once(self) -> None:
        outcome = self.judge("integer", "4", 3)
        self.assertEqual((outcome.verdict, outcome.by),
                         ("killed", "tst_script.Status test_ends_with_three"))
        self.assertLess(outcome.seconds, 60)

    def test_a_mutant_that_no_test_notices_survives(self) -> None:
        outcome = self.judge("comparison", ">=", 4)
        self.assertEqual((outcome.verdict, outcome.by), ("survived", ""))

    def test_a_mutant_that_never_ends_is_killed(self) -> None:
        extra, tree.EXTRA_SECONDS = tree.EXTRA_SECONDS, 1
        self.addCleanup(setattr, tree, "EXTRA_SECONDS", extra)
        outcome = self.judge("drop", "", 6)
        self.assertEqual(outcome.verdict, "killed")
        self.assertEqual(outcome.by, "tst_sum takes too long")

    def test_a_failure_that_the_unchanged_code_shares_does_not_count(self) -> None:
        self.trouble.touch()
        self.addCleanup(self.trouble.unlink)
        self.assertEqual(self.judge("drop", "", 5).verdict, "survived")

    def test_a_mutant_that_does_not_build_is_invalid(self) -> None:
        mutant = Mutant("id", "src/sum.cpp", "sum", "text", 1, 0, 3, b"nonsense")
        self.assertEqual(self.tree.judge(mutant, self.control).verdict, "invalid")


class Reporting(unittest.TestCase):
    def setUp(self) -> None:
        mutant = Mutant("a.cpp:f:drop:123abc", "a.cpp", "f", "drop", 1, 0, 1, b"")
        self.results = [
            Result(mutant, Outcome("killed", "tst_a: A::b()"), "-x\n"),
            Result(mutant, Outcome("survived"), "-y\n"),
            Result(mutant, Outcome("survived"), "-z\n", "It is never read."),
            Result(mutant, Outcome("invalid"), "-w\n"),
        ]

    def test_equivalent_mutants_are_counted_apart(self) -> None:
        self.assertEqual(
            summary(self.results),
            "3 valid mutants, 1 killed (33.3 %); 50.0 % of the 2 that are not listed as "
            "equivalent; 1 survived; 1 more do not build",
        )

    def test_survivors_are_shown_with_their_change(self) -> None:
        text = markdown(self.results)
        self.assertIn("| a.cpp | 3 | 1 | 1 | 1 | 1 | 33.3 % |", text)
        self.assertIn("```diff\n-y\n```", text)
        for change in ("-x", "-z", "-w"):
            self.assertNotIn(change, text)

    def test_an_equivalent_mutant_needs_a_reason(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "equivalent.txt"
            path.write_text("# comment\n\na:b:c:1 It is never read.\n")
            self.assertEqual(read_equivalent(path), {"a:b:c:1": "It is never read."})
            path.write_text("a:b:c:1\n")
            self.assertRaises(ValueError, read_equivalent, path)


if __name__ == "__main__":
    unittest.main()
