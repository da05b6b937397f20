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
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path

from mutation.mutants import Mutant, find_mutants

PARALLEL_TESTS = 4
PARALLEL_BUILDS = 2
BUILD_LIMIT_SECONDS = 600
# Of a test run, on top of a multiple of what it takes when nothing is broken.
EXTRA_SECONDS = 10
SLOWER_THAN_USUAL = 3
# How often tests that fail only together with others are run.
ATTEMPTS = 3
# Tests that take less than the first are run together before the others, and so on.
STEPS_SECONDS = (1.0, 10.0, float("inf"))
# Of address space; a mutant may loop and allocate.
MEMORY_LIMIT = 6 << 30
FILE_LIMIT = 2 << 30

FAILED_FUNCTION = re.compile(
    r"^(?P<number>\d+): ((FAIL!  |QFATAL ): (?P<function>\w+::.*?\))( |$)"
    r"| *(?P<method>test_\w+) .*\.\.\. (FAIL|ERROR)$)"
)
ENDED_TEST = re.compile(r"Test +#\d+: (?P<test>[\w.]+) \.*(?P<result>.*)")


@dataclass(frozen=True)
class Outcome:
    """What became of a mutant."""

    verdict: str  # killed, survived, invalid
    by: str = ""  # what noticed it
    seconds: float = 0.0


@dataclass(frozen=True)
class Failure:
    """A test function that failed; a test as a whole where it is not known which."""

    test: str
    function: str = ""
    is_time_out: bool = False

    def __str__(self) -> str:
        return f"{self.test} {'takes too long' if self.is_time_out else self.function}".rstrip()


class Tree:
    """Copies, builds and tests. One at a time uses a folder."""

    def __init__(self, project: Path, folder: Path) -> None:
        self._project = project
        self._source = folder / "tree"
        self._build = folder / "build"
        self._temporary = folder / "tmp"
        self._targets: dict[str, list[Path]] = {}
        self._commands: dict[str, list[str]] = {}
        self._environments: dict[str, dict[str, str]] = {}
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
        self._run(["cmake", "--build", ".", "--parallel", str(PARALLEL_BUILDS)])
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
        # Quick to build, and with the assertions of both libraries: what reads or writes where
        # there is nothing must not pass for harmless.
        command += ["-DBUILD_TESTING=ON", "-DCMAKE_BUILD_TYPE=Debug"]
        command += ["-DCMAKE_CXX_FLAGS_DEBUG=-O0 -w -D_GLIBCXX_ASSERTIONS"]
        # The folder's name in each test would keep the copies from sharing what ccache holds.
        command += ["-DCMAKE_CXX_FLAGS=-UQT_TESTCASE_BUILDDIR"]
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
            words = [word for word in test["command"] if word.startswith(str(self._build))]
            paths = [Path(word) for word in words[:1]]
            if not paths:
                paths = self._programs_of_script(Path(test["command"][0]))
            if not paths:
                continue  # not concerned with the code
            self._targets[test["name"]] = paths
            self._commands[test["name"]] = test["command"]
            properties = {each["name"]: each["value"] for each in test["properties"]}
            self._environments[test["name"]] = dict(
                variable.split("=", 1) for variable in properties.get("ENVIRONMENT", [])
            )
            inputs = subprocess.run(
                ["ninja", "-t", "inputs", *self._names([test["name"]])],
                cwd=self._build,
                check=True,
                capture_output=True,
                text=True,
            )
            used = [self._build / line for line in inputs.stdout.split() if line.startswith("bin/")]
            self._programs[test["name"]] = [*paths, *used]

    def _programs_of_script(self, script: Path) -> list[Path]:
        """What a script operates, by the names in it."""
        text = script.read_text() if script.parent.name == "program" else ""
        return [path for path in (self._build / "bin").glob("*") if f'"{path.name}"' in text]

    def _names(self, tests: list[str]) -> list[str]:
        """What to build for these tests."""
        paths = {path for name in tests for path in self._targets[name]}
        return sorted(str(path.relative_to(self._build)) for path in paths)

    def measure(self) -> None:
        """Runs every test on the unchanged code. They have to pass."""
        for _ in range(ATTEMPTS):
            failures = self._test(sorted(self._targets), 1200)
            if not failures:
                break
        else:
            raise RuntimeError(f"a test fails although nothing is broken: {failures[0]}")
        costs = self._build / "Testing/Temporary/CTestCostData.txt"
        for line in costs.read_text().splitlines():
            words = line.split()
            if len(words) == 3 and words[0] in self._targets:
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

    def judge(self, mutant: Mutant, control: Tree) -> Outcome:
        """Builds and tests the mutant in the copy, and puts the file back.

        control: holds the unchanged code, built; may be used by several at a time.
        """
        started = time.monotonic()
        path = self._source / mutant.path
        original = path.read_bytes()
        if original != self.source_of(mutant):
            raise RuntimeError(f"{mutant.path} was changed meanwhile")
        path.write_bytes(mutant.apply(original))
        try:
            verdict, by = self._judge(mutant, control)
        finally:
            path.write_bytes(original)
        return Outcome(verdict, by, time.monotonic() - started)

    def _judge(self, mutant: Mutant, control: Tree) -> tuple[str, str]:
        stem = Path(mutant.path).stem
        nearest = [name for name in self._targets if name.startswith(f"tst_{stem}")]
        rest = [name for name in self._targets if name not in nearest]
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
                failure = self._confirmed_failure(group, control)
                if failure:
                    return "killed", str(failure)
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
        done = subprocess.run(
            ["ninja", f"-j{PARALLEL_BUILDS}", *self._names(tests)],
            cwd=self._build,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            timeout=BUILD_LIMIT_SECONDS,
        )
        return done.returncode == 0

    def _confirmed_failure(self, tests: list[str], control: Tree) -> Failure | None:
        """The first failure that is the mutant's doing.

        On a busy machine a test may be too slow by chance. So the function that failed has to
        fail on its own too, and to pass with the unchanged code at that time. What took several
        times too long has been waited for long enough.
        """
        for _ in range(ATTEMPTS):
            failures = self._test(tests, self._limit(tests))
            if not failures:
                return None
            for failure in failures:
                limit = self._limit([failure.test])
                again = failure.is_time_out or self._fails(failure, limit)
                if again and not control._fails(failure, limit):
                    return failure
        return None

    def _limit(self, tests: list[str]) -> float:
        usual = [self._durations.get(name, 0.0) for name in tests]
        longest = max([*usual, sum(usual) / PARALLEL_TESTS])
        crowd = max(1.0, os.getloadavg()[0] / (os.cpu_count() or 1))
        return (SLOWER_THAN_USUAL * longest + EXTRA_SECONDS) * crowd

    def _test(self, tests: list[str], limit: float) -> list[Failure]:
        """Runs tests until one fails, and gives that; where time is up, those that still ran."""
        if not tests:
            return []
        shutil.rmtree(self._temporary, ignore_errors=True)
        self._temporary.mkdir(parents=True)
        names = "|".join(tests)
        command = ["ctest", "--verbose", "--stop-on-failure", "--parallel", str(PARALLEL_TESTS)]
        command += ["--tests-regex", f"^({names})$"]
        watch = _Watch()
        code = self._run_limited(command, {}, limit, watch.sees_failure)
        if watch.failure:
            return [watch.failure]
        return [Failure(name, is_time_out=True) for name in watch.running] if code != 0 else []

    def _fails(self, failure: Failure, limit: float) -> bool:
        """Whether the function fails when it is run on its own."""
        command = list(self._commands[failure.test])
        function = re.fullmatch(r"\w+::(\w+)\((.*)\)", failure.function)
        if function and function[1] not in ("initTestCase", "init", "cleanup", "cleanupTestCase"):
            command += [":".join(filter(None, function.groups()))]
        elif failure.function.startswith("test_"):
            command[-1] += f".{failure.function}"
        return self._run_limited(command, self._environments[failure.test], limit) != 0

    def _run_limited(
        self,
        command: list[str],
        environment: dict[str, str],
        limit: float,
        has_seen_enough: Callable[[str], bool] = lambda line: False,
    ) -> int:
        """Runs a command until it ends, has printed enough or takes too long, and ends all that it
        has started. Returns its exit code, negative if it was ended."""
        self._temporary.mkdir(parents=True, exist_ok=True)
        # A mutant that crashes needs no debugger to look at it.
        ours = {"TMPDIR": str(self._temporary), "QTEST_DISABLE_STACK_DUMP": "1"}
        process = subprocess.Popen(
            command,
            cwd=self._build,
            env={**os.environ, **environment, **ours},
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            start_new_session=True,
            preexec_fn=_limit_resources,
        )
        timer = threading.Timer(limit, _end_session, [process.pid])
        timer.start()
        try:
            assert process.stdout is not None
            for line in process.stdout:
                if has_seen_enough(line):
                    break
            else:
                process.wait()
        finally:
            timer.cancel()
            _end_session(process.pid)
            process.communicate()
        return process.returncode


class _Watch:
    """Reads along what CTest prints.

    QtTest and unittest go on after a failed function and CTest reports only at a test's end, so it is the
    tests' own output that counts.
    """

    def __init__(self) -> None:
        self.failure: Failure | None = None
        self.running: list[str] = []
        self._names: dict[str, str] = {}

    def sees_failure(self, line: str) -> bool:
        started = re.match(r"^ *Start +(\d+): ([\w.]+)", line)
        if started:
            self._names[started[1]] = started[2]
            self.running.append(started[2])
        function = FAILED_FUNCTION.match(line)
        if function:
            name = function["function"] or function["method"]
            self.failure = Failure(self._names[function["number"]], name)
        ended = ENDED_TEST.search(line)
        if ended and ended["test"] in self.running:
            self.running.remove(ended["test"])
            if "Passed" not in ended["result"]:
                self.failure = Failure(ended["test"])
        return self.failure is not None


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
            # After the name, which may hold anything: state, parent, group, session.
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
