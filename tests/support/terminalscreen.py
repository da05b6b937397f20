# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""What a terminal shows."""

from __future__ import annotations

import re


class Screen:
    """What a terminal shows of an output that uses a few control sequences."""

    PART = re.compile(r"\x1b\[(\d*)([A-Za-z])|(\r\n|\n|\r)|([^\x1b\r\n]+)")

    def __init__(self, columns: int) -> None:
        self.columns = columns
        self.lines = [""]
        self.row = self.column = 0

    def take(self, text: str) -> None:
        position = 0
        for part in self.PART.finditer(text):
            assert part.start() == position, f"unknown sequence {text[position:position + 8]!r}"
            position = part.end()
            number, command, end, letters = part.groups()
            if command == "A":
                assert int(number) <= self.row, "the cursor leaves the screen"
                self.row -= int(number)
            elif command == "K":
                self.lines[self.row] = self.lines[self.row][: self.column]
            elif command == "J":
                self.lines[self.row] = self.lines[self.row][: self.column]
                del self.lines[self.row + 1 :]
            elif end:
                self.column = 0
                if end != "\r":
                    self.row += 1
                    if self.row == len(self.lines):
                        self.lines.append("")
            elif letters:
                line = self.lines[self.row]
                self.column += len(letters)
                self.lines[self.row] = (
                    line[: self.column - len(letters)] + letters + line[self.column :]
                )
                assert self.column < self.columns, f"wraps: {self.lines[self.row]}"
