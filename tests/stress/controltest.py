#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Random uploads by corvanectl under faults, at random but from a seed: each is identical or fails.

    tests/stress/controltest.py --count 2000 --jobs 8 --speed 20
"""

from __future__ import annotations

import argparse
import base64
import collections
import concurrent.futures
import json
import os
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# What changes more than one byte of a packet can leave its checksum as it is.
UNDETECTABLE = {"burst", "half-frame", "insert-byte", "swap"}
PATIENCE = 300


def run_upload(seed: int, kinds: list[str], programs: Path, speed: int) -> tuple[str, str]:
    """What came of it, and the plan."""
    chance = random.Random(seed)
    faults = []
    if chance.random() < 0.7:
        kind = chance.choice([each for each in kinds if each not in UNDETECTABLE])
        faults.append(f"{kind}@request:{chance.choice([str(chance.randint(1, 30)), '2%'])}")
    if chance.random() < 0.7:
        faults.append(f"{chance.choice(kinds)}@reply:"
                      f"{chance.choice([str(chance.randint(1, 30)), '2%'])}")
    plan = ",".join(faults) or "none"
    firmware = chance.randbytes(chance.randint(1, 4000))
    environment = dict(os.environ)
    if speed > 1:
        environment |= {"LD_PRELOAD": "/usr/$LIB/faketime/libfaketime.so.1",
                        "FAKETIME": f"+0 x{speed}"}
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        header = b"KVEL\1\2\0\7\1\0\0\7".ljust(128, b"\0")
        (folder / "try.img").write_bytes(header + firmware[:32]
                                         + base64.b64encode(firmware[32:]))
        with subprocess.Popen(
            [programs / "corvane-simulator", "--pty", "--quiet", "--baud", "0", "--reboot-time",
             "300", "--save-firmware", folder / "saved", "--faults", plan, "--seed", str(seed)],
            stdout=subprocess.PIPE, text=True, env=environment) as camera:
            try:
                port = camera.stdout.readline().removeprefix("Port: ").strip()
                result = subprocess.run(
                    [programs / "corvanectl", "--json", "upgrade", "--attempts",
                     str(chance.randint(1, 3)), "--reboot-limit", "8", folder / "try.img", port],
                    capture_output=True, text=True, check=False, timeout=PATIENCE,
                    env=environment)
            except subprocess.TimeoutExpired:
                return "does not end", plan
            finally:
                camera.terminate()
        events = [json.loads(line) for line in result.stdout.splitlines()]
        if result.returncode not in (0, 1) or not events or events[-1]["event"] != "end":
            return f"ends with {result.returncode}: {result.stderr}", plan
        end = events[-2]
        if result.returncode == 1:
            return (f"failed: {end['reason']}" if end["sentence"] else "fails without a reason"), plan
        saved = folder / "saved"
        is_identical = saved.exists() and saved.read_bytes() == firmware
        return ("done, identical" if is_identical else "DONE, BUT NOT IDENTICAL"), plan


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1, help="of the first upload")
    parser.add_argument("--jobs", type=int, default=8, help="uploads at a time")
    parser.add_argument("--speed", type=int, default=1, help="how fast time passes")
    parser.add_argument("--programs", type=Path, default=ROOT / "build/dev/bin")
    arguments = parser.parse_args()

    text = subprocess.run([arguments.programs / "corvane-simulator", "--faults", "help"],
                          capture_output=True, text=True, check=True).stdout
    kinds = re.findall(r"^  ([a-z-]+) +[A-Z]", text.partition("KIND:")[2], flags=re.MULTILINE)
    counts: collections.Counter[str] = collections.Counter()
    has_failed = False
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        seeds = range(arguments.seed, arguments.seed + arguments.count)
        outcomes = pool.map(
            lambda seed: run_upload(seed, kinds, arguments.programs, arguments.speed), seeds)
        for seed, (outcome, plan) in zip(seeds, outcomes, strict=True):
            counts[outcome] += 1
            if not outcome.startswith(("done,", "failed:")):
                has_failed = True
                print(f"FAILED  {outcome} under {plan}\n"
                      f"        again: script/stress control --seed {seed} --count 1", flush=True)
    for outcome, count in counts.most_common():
        print(f"{count:6}  {outcome}")
    sys.exit(1 if has_failed else 0)


if __name__ == "__main__":
    main()
