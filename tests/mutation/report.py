# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Says which mutants were killed, and which survived."""

from __future__ import annotations

from collections.abc import Callable, Iterable
from dataclasses import dataclass
from pathlib import Path

from mutation.mutants import Mutant
from mutation.tree import Outcome


@dataclass(frozen=True)
class Result:
    mutant: Mutant
    outcome: Outcome
    diff: str
    reason: str = ""  # why nothing observable changes, for a mutant that is known to be equivalent


@dataclass
class _Count:
    killed: int = 0
    survived: int = 0
    equivalent: int = 0
    invalid: int = 0

    def add(self, result: Result) -> None:
        if result.outcome.verdict == "survived" and result.reason:
            self.equivalent += 1
        else:
            verdict = result.outcome.verdict
            setattr(self, verdict, getattr(self, verdict) + 1)

    def valid(self) -> int:
        return self.killed + self.survived + self.equivalent

    def cells(self) -> str:
        return (
            f"{self.valid()} | {self.killed} | {self.survived} | {self.equivalent} | "
            f"{self.invalid} | {_share(self.killed, self.valid())}"
        )


def read_equivalent(path: Path) -> dict[str, str]:
    """Ids and reasons of the mutants that are known to change nothing observable."""
    reasons = {}
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            mutant, _, reason = line.partition(" ")
            if not reason.strip():
                raise ValueError(f"{path.name}: {mutant} has no reason")
            reasons[mutant] = reason.strip()
    return reasons


def summary(results: Iterable[Result]) -> str:
    total = _Count()
    for result in results:
        total.add(result)
    differing = total.valid() - total.equivalent
    return (
        f"{total.valid()} valid mutants, {total.killed} killed "
        f"({_share(total.killed, total.valid())}); "
        f"{_share(total.killed, differing)} of the {differing} that are not listed as equivalent; "
        f"{total.survived} survived; {total.invalid} more do not build"
    )


def markdown(results: list[Result]) -> str:
    parts = [summary(results) + ".\n"]
    parts.append(_table("File", results, lambda result: result.mutant.path))
    parts.append(_table("Operator", results, lambda result: result.mutant.operator))
    survivors = [
        each for each in results if each.outcome.verdict == "survived" and not each.reason
    ]
    parts.append("## Survivors\n")
    parts += [_entry(each) for each in survivors] or ["None.\n"]
    return "\n".join(parts)


def _table(title: str, results: Iterable[Result], key: Callable[[Result], str]) -> str:
    counts: dict[str, _Count] = {}
    for result in results:
        counts.setdefault(key(result), _Count()).add(result)
    lines = [f"| {title} | Valid | Killed | Survived | Equivalent | Do not build | Share killed |"]
    lines.append("|---|---:|---:|---:|---:|---:|---:|")
    lines += [f"| {name} | {count.cells()} |" for name, count in sorted(counts.items())]
    return "\n".join(lines) + "\n"


def _entry(result: Result) -> str:
    return f"### {result.mutant.id}\n\n```diff\n{result.diff}```\n"


def _share(part: int, whole: int) -> str:
    return f"{100 * part / whole:.1f} %" if whole else "-"
