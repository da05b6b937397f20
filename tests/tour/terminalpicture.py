#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Draws what a terminal shows half-way through ten uploads: terminalpicture.py PROGRAMS PICTURE"""

from __future__ import annotations

import fcntl
import os
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios
from pathlib import Path
from xml.sax.saxutils import escape

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from terminalscreen import Screen  # noqa: E402

COLUMNS, ROWS = 100, 24
CAMERAS = 10
COMMAND = "corvanectl upgrade try.img --all"
LETTER_WIDTH, LINE_HEIGHT, MARGIN = 8.4, 19, 14


def half_way(programs: Path) -> list[str]:
    """The lines on the screen when the first camera has half of its firmware."""
    with tempfile.TemporaryDirectory() as name:
        firmware = Path(name) / "firmware"
        firmware.write_bytes(bytes(range(256)) * 200)
        subprocess.run(
            [programs / "corvane-image", "pack", "--protocol-version", "1.2.0.7"]
            + ["--image-version", "1.0.0.7", firmware, Path(name) / "try.img"], check=True)
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))
        with subprocess.Popen(
            # Delays here and there, as no two cameras are equally fast.
            [programs / "corvane-simulator", "--quiet", "--cameras", str(CAMERAS)]
            + ["--faults", "delay=60@reply:3%", "--", programs / "corvanectl"]
            + COMMAND.split()[1:],
            stdout=slave, stderr=subprocess.DEVNULL, cwd=name,
            env={**os.environ, "TERM": "xterm"}) as process:
            os.close(slave)
            screen = Screen(COLUMNS)
            pending = ""
            while data := os.read(master, 4096):
                # A redraw is whole once the next one begins.
                whole, begun, rest = (pending + data.decode()).rpartition("\x1b[10A")
                pending = begun + rest
                screen.take(whole)
                share = re.search(r"(\d+) %", screen.lines[0])
                if share and int(share[1]) >= 50:
                    break
            # Without a terminal to write to, it ends.
            os.close(master)
            process.terminate()
    return [f"$ {COMMAND}", *screen.lines[:CAMERAS]]


def drawing(lines: list[str]) -> str:
    width = COLUMNS * LETTER_WIDTH + 2 * MARGIN
    height = len(lines) * LINE_HEIGHT + 2 * MARGIN
    texts = "\n".join(
        f'<text x="{MARGIN}" y="{MARGIN + (row + 0.75) * LINE_HEIGHT:g}">{escape(line)}</text>'
        for row, line in enumerate(lines))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width:g}" height="{height}">\n'
            f'<rect width="100%" height="100%" rx="6" fill="#1e2430"/>\n'
            f'<g font-family="DejaVu Sans Mono, monospace" font-size="14" fill="#e6e6e6" '
            f'xml:space="preserve">\n{texts}\n</g>\n</svg>\n')


def main() -> None:
    programs, picture = map(Path, sys.argv[1:])
    picture.write_text(drawing(half_way(programs.resolve())), encoding="utf-8")


if __name__ == "__main__":
    main()
