# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""A copy of the project in which mutants are built and tested."""

from __future__ import annotations

import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import threading
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

from mutation.mutants import Mutant, find_mutants

PARALLEL_TESTS = 4
BUILD_LIMIT_SECONDS = 600
# Of a test run, on top of a multiple of what it takes when nothing is broken.
EXTRA_SECONDS = 30
SLOWER_THAN_USUAL = 3
# Tests that take less than the first are run together before the others, and so on.
STEPS_SECONDS = (1.0, 10.0, float("inf"))
# Of address space; a mutant may loop and allocate.
MEMORY_LIMIT = 6 << 30
FILE_LIMIT = 2 << 30

FAILED_FUNCTION = re.compile(r"^\d+: FAIL!  : (?P<function>\w+::[^)]*\))")
FATAL_FUNCTION = re.compile(r"^\d+: QFATAL : (?P<function>\w+::[^)]*\))")
FAILED_TEST = re.compile(r"Test +#\d+: (?P<test>\w+) \.+.*(\*\*\*|Subprocess)")


@dataclass(frozen=True)
class Outcome:
    """What became of a mutant."""

    verdict: str  # killed, survived, invalid
    by: str = ""  # what noticed it
    seconds: float = 0.0


class Tree:
    """Copies, builds and tests. One at a time uses a folder."""

    def __init__(self, project: Path, folder: Path) -> None:
        self._project = project
        self._source = folder / "tree"
        self._build = folder / "build"
        self._temporary = folder / "tmp"
        self._tests: dict[str, Path] = {}
        self._programs: dict[str, list[Path]] = {}
        self._durations: dict[str, float] = {}

    # Getting ready

    def prepare(self, built: bool = True) -> None:
        """Brings the copy up to date with the project and, unless not `built`, builds it."""
        self._copy()
        self._configure()
        if not built:
            self._run(["cmake", "--build", ".", "--target", "corvane_window_autogen"])
            return
        self._run(["cmake", "--build", "."])
        self._learn_tests()

    def _copy(self) -> None:
        listing = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=self._project,
            check=True,
            capture_output=True,
            text=True,
        )
        names = {name for name in listing.stdout.split("\0") if name}
        names = {name for name in names if (self._project / name).is_file()}
        for name in names:
            source, copy = self._project / name, self._source / name
            # Equal files keep their time, so that only changes are built again.
            if not copy.is_file() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, copy)
                shutil.copymode(source, copy)
        for path in [each for each in self._source.rglob("*") if each.is_file()]:
            if path.relative_to(self._source).as_posix() not in names:
                path.unlink()

    def _configure(self) -> None:
        command = ["cmake", "-S", str(self._source), "-B", str(self._build), "-G", "Ninja"]
        command += ["--log-level=WARNING", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"]
        command += ["-DCORVANE_WARNINGS_AS_ERRORS=OFF", "-DCMAKE_BUILD_TYPE=None"]
        command += ["-DCMAKE_CXX_FLAGS=-O0 -w"]
        if shutil.which("ld.lld"):
            command += ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"]
        if shutil.which("ccache"):
            command += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"]
        self._build.mkdir(parents=True, exist_ok=True)
        self._run(command)

    def _run(self, command: list[str]) -> None:
        done = subprocess.run(command, cwd=self._build, capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"{shlex.join(command)}\n{done.stdout}{done.stderr}")

    def _learn_tests(self) -> None:
        listing = subprocess.run(
            ["ctest", "--show-only=json-v1"],
            cwd=self._build,
            check=True,
            capture_output=True,
            text=True,
        )
        for test in json.loads(listing.stdout)["tests"]:
            paths = [Path(word) for word in test["command"] if word.startswith(str(self._build))]
            if not paths:
                continue  # not ours to build, and not concerned with the code
            self._tests[test["name"]] = paths[0]
            inputs = subprocess.run(
                ["ninja", "-t", "inputs", str(paths[0].relative_to(self._build))],
                cwd=self._build,
                check=True,
                capture_output=True,
                text=True,
            )
            used = [self._build / line for line in inputs.stdout.split() if line.startswith("bin/")]
            self._programs[test["name"]] = [paths[0], *used]

    def measure(self) -> None:
        """Runs every test on the unchanged code. They have to pass."""
        failure = self._test(sorted(self._tests), 1200)
        if failure:
            raise RuntimeError(f"a test fails although nothing is broken: {failure}")
        costs = self._build / "Testing/Temporary/CTestCostData.txt"
        for line in costs.read_text().splitlines():
            words = line.split()
            if len(words) == 3 and words[0] in self._tests:
                self._durations[words[0]] = float(words[2])

    def use_measures_of(self, other: Tree) -> None:
        self._durations = dict(other._durations)

    # Mutants

    def mutants(self, names: list[str]) -> list[Mutant]:
        """All mutants of the files of these names, relative to the project."""
        database = json.loads((self._build / "compile_commands.json").read_text())
        flags = {entry["file"]: _parser_flags(entry["command"]) for entry in database}
        found: list[Mutant] = []
        for unit in sorted({name.rpartition(".")[0] for name in names}):
            files = {
                (self._source / name): name for name in names if name.rpartition(".")[0] == unit
            }
            path = self._source / f"{unit}.cpp"
            found += find_mutants(path, flags[str(path)], files)
        return found

    def source_of(self, mutant: Mutant) -> bytes:
        return (self._project / mutant.path).read_bytes()

    def judge(self, mutant: Mutant) -> Outcome:
        """Builds and tests the mutant in the copy, and puts the file back."""
        started = time.monotonic()
        path = self._source / mutant.path
        original = path.read_bytes()
        if original != self.source_of(mutant):
            raise RuntimeError(f"{mutant.path} was changed meanwhile")
        path.write_bytes(mutant.apply(original))
        try:
            verdict, by = self._judge(mutant)
        finally:
            path.write_bytes(original)
        return Outcome(verdict, by, time.monotonic() - started)

    def _judge(self, mutant: Mutant) -> tuple[str, str]:
        stem = Path(mutant.path).stem
        nearest = [name for name in self._tests if name.startswith(f"tst_{stem}")]
        rest = [name for name in self._tests if name not in nearest]
        for stage in (nearest, rest):
            before = self._times()
            if not self._compile(stage):
                return "invalid", "does not build"
            after = self._times()
            concerned = [
                name
                for name in stage
                if any(before[path] != after[path] for path in self._programs[name])
                or name in nearest
            ]
            for group in self._by_duration(concerned):
                failure = self._confirmed_failure(group)
                if failure:
                    return "killed", failure
        return "survived", ""

    def _by_duration(self, tests: list[str]) -> Iterator[list[str]]:
        least = 0.0
        for most in STEPS_SECONDS:
            yield [name for name in tests if least <= self._durations.get(name, 0.0) < most]
            least = most

    def _times(self) -> dict[Path, int]:
        paths = {path for programs in self._programs.values() for path in programs}
        return {path: path.stat().st_mtime_ns if path.exists() else 0 for path in paths}

    def _compile(self, tests: list[str]) -> bool:
        if not tests:
            return True
        targets = [str(self._tests[name].relative_to(self._build)) for name in tests]
        done = subprocess.run(
            ["ninja", "-j2", *targets],
            cwd=self._build,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            timeout=BUILD_LIMIT_SECONDS,
        )
        return done.returncode == 0

    def _confirmed_failure(self, tests: list[str]) -> str:
        """Runs the tests. A failure counts when the test fails a second time, on its own: on a
        busy machine a test may be too slow once."""
        limit = self._limit(tests)
        failure = self._test(tests, limit)
        if not failure:
            return ""
        test = failure.split(":")[0]
        if test not in self._tests:
            return failure
        again = self._test([test], limit)
        if again:
            return again
        return self._test(tests, limit)

    def _limit(self, tests: list[str]) -> float:
        usual = [self._durations.get(name, 0.0) for name in tests]
        longest = max([*usual, sum(usual) / PARALLEL_TESTS])
        return SLOWER_THAN_USUAL * longest + EXTRA_SECONDS

    def _test(self, tests: list[str], limit: float) -> str:
        """Runs tests until one fails.

        Returns "test: function" of the first failure, or nothing.
        """
        if not tests:
            return ""
        shutil.rmtree(self._temporary, ignore_errors=True)
        self._temporary.mkdir(parents=True)
        names = "|".join(tests)
        command = ["ctest", "--verbose", "--stop-on-failure", "--parallel", str(PARALLEL_TESTS)]
        command += ["--tests-regex", f"^({names})$"]
        process = subprocess.Popen(
            command,
            cwd=self._build,
            env={**os.environ, "TMPDIR": str(self._temporary)},
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            start_new_session=True,
            preexec_fn=_limit_resources,
        )
        timed_out = threading.Event()

        def stop() -> None:
            timed_out.set()
            _end_session(process.pid)

        timer = threading.Timer(limit, stop)
        timer.start()
        try:
            failure = _first_failure(process)
        finally:
            timer.cancel()
            _end_session(process.pid)
            process.communicate()
        if timed_out.is_set() and not failure:
            return f"(time-out after {limit:.0f} s)"
        if not failure and process.returncode != 0:
            return f"(ctest ended with {process.returncode})"
        return failure


def _first_failure(process: subprocess.Popen[str]) -> str:
    # QtTest goes on behind a failed function and CTest tells only at a test's end, so the tests'
    # own output is watched.
    tests: dict[str, str] = {}
    assert process.stdout is not None
    for line in process.stdout:
        started = re.match(r"^ +Start +(\d+): (\w+)", line)
        if started:
            tests[started[1]] = started[2]
        function = FAILED_FUNCTION.match(line) or FATAL_FUNCTION.match(line)
        if function:
            return f"{tests.get(line.split(':')[0], '?')}: {function['function']}"
        ended = FAILED_TEST.search(line)
        if ended:
            return f"{ended['test']}: {line.split('***')[-1].strip()}"
    process.wait()
    return ""


def _limit_resources() -> None:
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def _end_session(leader: int) -> None:
    """Ends every process of a session, whatever group it has moved to."""
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            # Behind the name, which may hold anything: state, parent, group, session.
            fields = (entry / "stat").read_text().rpartition(")")[2].split()
            if int(fields[3]) == leader:
                os.kill(int(entry.name), signal.SIGKILL)
        except (OSError, IndexError):
            continue  # has ended meanwhile


def _parser_flags(command: str) -> list[str]:
    words = shlex.split(command)
    flags = []
    for index, word in enumerate(words):
        if word.startswith(("-I", "-D", "-std=")):
            flags.append(word)
        elif word == "-isystem":
            flags += [word, words[index + 1]]
    return ["-x", "c++", *flags]
