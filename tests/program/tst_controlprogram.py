#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests corvanectl as a whole, with simulated cameras on pseudo-terminals."""

from __future__ import annotations

import base64
import contextlib
import fcntl
import itertools
import json
import os
import pty
import random
import re
import resource
import select
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
import tty
import unittest
from collections.abc import Callable, Iterator
from pathlib import Path

import jsonschema

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from terminalscreen import Screen  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ.get("CORVANE_PROGRAMS", "build/dev/bin")).resolve()
CONTROL = PROGRAMS / "corvanectl"
SIMULATOR = PROGRAMS / "corvane-simulator"
SCHEMA = jsonschema.Draft7Validator(
    json.loads((ROOT / "docs" / "corvanectl.schema.json").read_text(encoding="utf-8")))
# Only keeps a test that fails from hanging.
PATIENCE = 120
# Every kind of fault, of which some let an upload go on.
HARMLESS = {"delay", "split", "gap", "noise", "join", "duplicate", "wrong-parameter", "stale"}
FATAL = {"drop", "late", "truncate", "wrong-sum", "foreign-type", "hang-up", "corrupt", "flip"}
HELLO_REPLY = bytes.fromhex("ffff17410106070609051600010000060100000000010101019c")
INFO = """\
{port}: version 1.0.0.6
  auto-tracking   pan
  target-missing  preset-7
  direction       upside-down
  auto-zoom       off
  zoom-offset     custom
"""
SETTINGS_FILE = """\
{
    "corvane-settings": 1,
    "auto-tracking": "pan",
    "target-missing": "preset-7",
    "direction": "upside-down",
    "auto-zoom": "off",
    "zoom-offset": "custom"
}
"""


class Camera:
    """A simulated camera on a pseudo-terminal of its own, as fast as possible."""

    def __init__(self, folder: Path, *options: str) -> None:
        self.saved = folder / f"firmware-{random.getrandbits(64):x}"
        self.process = subprocess.Popen(
            [SIMULATOR, "--pty", "--quiet", "--baud", "0", "--reboot-time", "100"]
            + ["--save-firmware", self.saved, *options],
            stdout=subprocess.PIPE,
            text=True,
        )
        self.port = self.process.stdout.readline().removeprefix("Port: ").strip()

    def end(self) -> None:
        self.process.terminate()
        self.process.wait(PATIENCE)
        self.process.stdout.close()

    def firmware(self) -> bytes | None:
        return self.saved.read_bytes() if self.saved.exists() else None


def wait_for(condition: Callable[[], bool]) -> None:
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.01)


def unread(pipe: int) -> int:
    """How many bytes wait in a pipe."""
    return struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, bytes(4)))[0]


def processor_seconds(process: int) -> float:
    times = Path(f"/proc/{process}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
    return (int(times[11]) + int(times[12])) / os.sysconf("SC_CLK_TCK")


def image_of(firmware: bytes, version: bytes = b"\x01\x00\x00\x07") -> bytes:
    header = (b"KVEL" + b"\x01\x02\x00\x07" + version).ljust(128, b"\0")
    return header + firmware[:32] + base64.b64encode(firmware[32:])


class ControlProgram(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.random = random.Random(self.id())

    def camera(self, *options: str) -> Camera:
        camera = Camera(self.folder, *options)
        self.addCleanup(camera.end)
        return camera

    def image(self, size: int, version: bytes = b"\x01\x00\x00\x07") -> tuple[str, bytes]:
        firmware = self.random.randbytes(size)
        path = self.folder / "try.img"
        path.write_bytes(image_of(firmware, version))
        return str(path), firmware

    def run_control(self, *arguments: str, **options) -> subprocess.CompletedProcess:
        return subprocess.run(
            [CONTROL, *arguments],
            capture_output=True,
            text=True,
            check=False,
            timeout=PATIENCE,
            cwd=self.folder,
            **options,
        )

    def events(self, *arguments: str) -> tuple[int, list[dict]]:
        """The exit code, and what --json prints, which the schema allows."""
        result = self.run_control("--json", *arguments)
        events = [json.loads(line) for line in result.stdout.splitlines()]
        for event in events:
            SCHEMA.validate(event)
        return result.returncode, events

    def results(self, *arguments: str) -> dict[str, dict]:
        return {
            event["port"]: event
            for event in self.events(*arguments)[1]
            if event["event"] == "result"
        }


    def assert_refused(self, code: int, reason: str, *arguments: str) -> None:
        """Before anything else is done."""
        result = self.run_control(*arguments)
        self.assertEqual((result.returncode, result.stderr), (code, f"corvanectl: {reason}\n"))
        json_code, events = self.events(*arguments)
        self.assertEqual(json_code, code)
        self.assertEqual([event["event"] for event in events], ["note", "end"])
        self.assertEqual((events[0]["text"], events[1]["exitCode"]), (reason, code))


class Settings(ControlProgram):
    def test_prints_and_saves_what_the_camera_reports(self) -> None:
        port = self.camera("--settings", "2,9,1,0,3").port
        self.assertEqual(self.run_control("info", port).stdout, INFO.format(port=port))
        self.assertEqual(self.run_control("save", port, "my.json").stdout,
                         f"{port}: saved as my.json\n")
        self.assertEqual((self.folder / "my.json").read_text(encoding="utf-8"), SETTINGS_FILE)
        self.assertEqual(self.run_control("save", port, "-").stdout, SETTINGS_FILE)
        # As JSON, nothing but events.
        self.assertEqual(self.results("save", port, "-")[port]["settings"],
                         {key: value for key, value in json.loads(SETTINGS_FILE).items()
                          if key != "corvane-settings"})

    def test_gives_ten_cameras_the_settings_of_one(self) -> None:
        master = self.camera("--settings", "2,9,1,0,3")
        others = [self.camera("--settings", f"{n % 4},{n},0,1,0").port for n in range(10)]
        self.run_control("save", master.port, "my.json")
        self.assertEqual(self.run_control("diff", "my.json", *others).returncode, 1)
        result = self.run_control("apply", "my.json", *others)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(
            self.run_control("info", *others).stdout,
            "".join(INFO.format(port=port) for port in others) + "10 done\n",
        )
        result = self.run_control("diff", "my.json", *others)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_names_what_differs(self) -> None:
        port = self.camera("--settings", "1,9,1,0,3").port
        (self.folder / "my.json").write_text(SETTINGS_FILE, encoding="utf-8")
        code, events = self.events("diff", "my.json", port)
        self.assertEqual(code, 1)
        self.assertEqual(
            events[-2]["differences"],
            [{"key": "auto-tracking", "wanted": "pan", "found": "auto"}],
        )

    def test_refuses_what_is_no_file_of_settings(self) -> None:
        (self.folder / "my.json").write_text("", encoding="utf-8")
        for name, reason in (("my.json", "offset 0: illegal value"),
                             ("missing", "No such file or directory")):
            for command in ("diff", "apply"):
                with self.subTest(name=name, command=command):
                    self.assert_refused(1, f"{name}: {reason}", command, name, "ttyMissing")

    def test_says_that_the_settings_could_not_be_written(self) -> None:
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        port = os.ttyname(slave)
        folder = self.folder / "folder"
        sentence = "folder/my.json cannot be written: No such file or directory."
        for options, told in ([], sentence), (["--json"], '"reason":"not-written"'):
            with self.subTest(options):
                folder.mkdir()
                with subprocess.Popen([CONTROL, *options, "save", port, "folder/my.json"],
                                      cwd=self.folder, text=True, stdout=subprocess.PIPE,
                                      stderr=subprocess.STDOUT) as process:
                    self.assertEqual(len(os.read(master, 13)), 13)
                    folder.rmdir()
                    os.write(master, HELLO_REPLY)
                    text = process.stdout.read()
                    self.assertEqual(process.wait(PATIENCE), 1)
                self.assertIn(told, text)
                self.assertIn(sentence, text)

    def test_goes_on_without_a_port_that_cannot_be_opened(self) -> None:
        good = self.camera("--settings", "2,9,1,0,3").port
        result = self.run_control("info", "ttyMissing", good)
        self.assertEqual((result.returncode, result.stdout),
                         (1, INFO.format(port=good) + "1 done, 1 failed\n"))
        self.assertTrue(result.stderr.startswith(
            "corvanectl: ttyMissing: There is no serial port ttyMissing."), result.stderr)

    def test_changes_some_settings(self) -> None:
        port = self.camera("--settings", "2,9,1,0,3").port
        self.assertEqual(self.run_control("set", "auto-zoom=on", port).stdout, f"{port}: set\n")
        expected = INFO.format(port=port).replace("auto-zoom       off", "auto-zoom       on")
        self.assertEqual(self.run_control("info", port).stdout, expected)
        _, events = self.events("set", "auto-zoom=off", port)
        self.assertEqual(events[-2]["settings"]["auto-zoom"], "off")

    def test_prints_the_zoom_that_the_camera_reports(self) -> None:
        port = self.camera("--zoom-1", "400", "--zoom-2", "25").port
        # The value of the low byte counts as signed.
        self.assertEqual(self.run_control("zoom", "1", port).stdout, f"{port}: zoom 1 is 144\n")
        self.assertEqual(self.run_control("zoom", "2", port).stdout, f"{port}: zoom 2 is 25\n")

    def test_opens_the_port_as_corvane_does(self) -> None:
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        found = termios.tcgetattr(slave)
        found[0] |= termios.IXON | termios.IXOFF | termios.ICRNL
        found[2] |= termios.CSTOPB | termios.CRTSCTS
        found[4:6] = [termios.B9600] * 2
        termios.tcsetattr(slave, termios.TCSANOW, found)
        with subprocess.Popen([CONTROL, "info", os.ttyname(slave)], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as process:
            self.assertEqual(os.read(master, 13).hex(), "ffff0a4101060706090116007f")
            incoming, _, control, _, *speeds, _ = termios.tcgetattr(slave)
            process.terminate()
        self.assertEqual(speeds, [termios.B115200] * 2)
        self.assertEqual(control & termios.CSIZE, termios.CS8)
        self.assertFalse(control & (termios.CSTOPB | termios.CRTSCTS))
        self.assertFalse(incoming & (termios.IXON | termios.IXOFF | termios.ICRNL))

    def test_says_why_no_camera_answers(self) -> None:
        silent, good = self.camera("--silent").port, self.camera().port
        result = self.run_control("info", silent, good)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{good}: version 1.0.0.6\n", result.stdout)
        self.assertIn("1 done, 1 failed\n", result.stdout)
        self.assertIn(f"corvanectl: {silent}: Nothing at all came back within 5 s.", result.stderr)


class Upgrades(ControlProgram):
    def test_upgrades_sixteen_cameras_byte_by_byte(self) -> None:
        path, firmware = self.image(20_001)
        cameras = [self.camera() for _ in range(16)]
        code, events = self.events("upgrade", path, *(camera.port for camera in cameras))
        self.assertEqual(code, 0)
        self.assertEqual(events[0]["ports"], [camera.port for camera in cameras])
        self.assertEqual(events[-1]["done"], 16)
        for camera in cameras:
            self.assertEqual(camera.firmware(), firmware)
        for event in events:
            if event["event"] == "result":
                self.assertEqual(event["version"], "1.0.0.6")
                self.assertEqual(event["versionAfter"], "1.0.0.7")
        states = [event["state"] for event in events if event.get("port") == cameras[0].port
                  and event["event"] == "state"]
        self.assertEqual(states, ["announcing", "uploading", "rebooting"])

    def upgrade_under_faults(self, direction: str) -> None:
        path, firmware = self.image(600)
        text = subprocess.run([SIMULATOR, "--faults", "help"], capture_output=True, text=True,
                              check=True).stdout
        kinds = re.findall(r"^  ([a-z-]+) +[A-Z]", text.partition("KIND:")[2], flags=re.M)
        self.assertEqual(len(kinds), 27)
        # The third frame of each direction is the first packet, or its acknowledgement.
        cameras = {kind: self.camera("--faults", f"{kind}@{direction}:3", "--seed", "5")
                   for kind in kinds}
        results = self.results("upgrade", path, "--reboot-limit", "5",
                               *(camera.port for camera in cameras.values()))
        done = set()
        for kind, camera in cameras.items():
            with self.subTest(kind):
                result = results[camera.port]
                if result["outcome"] == "done":
                    done.add(kind)
                    # Two bytes that change places have the same sum.
                    self.assertEqual(camera.firmware() == firmware,
                                     (kind, direction) != ("swap", "request"))
                else:
                    self.assertEqual(result["outcome"], "failed")
                    self.assertTrue(result["sentence"].endswith("."))
                if kind == "hang-up":
                    self.assertEqual(result["reason"], "hung-up")
                    self.assertIn("packets: Input/output error.", result["sentence"])
        self.assertFalse(done & FATAL)
        if direction == "reply":
            self.assertLessEqual(HARMLESS, done)

    def test_fails_clearly_or_succeeds_under_each_fault_of_a_reply(self) -> None:
        self.upgrade_under_faults("reply")

    def test_fails_clearly_or_succeeds_under_each_fault_of_a_request(self) -> None:
        self.upgrade_under_faults("request")

    def test_leaves_a_line_alone_that_has_hung_up(self) -> None:
        path, _ = self.image(10_000)
        # Takes more than two seconds, in which the other line would keep the processor busy.
        slow = self.camera("--delay", "30").port
        used = []
        for others in ([], [self.camera("--faults", "hang-up@reply:3.5").port]):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            self.assertEqual(self.run_control("upgrade", path, slow, *others).returncode,
                             len(others))
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            used.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
        self.assertLess(used[1], used[0] + 1)

    def test_starts_a_failed_upload_again(self) -> None:
        path, firmware = self.image(600)
        camera = self.camera("--faults", "drop@reply:4")
        start = time.monotonic()
        code, events = self.events("upgrade", "--attempts", "2", path, camera.port)
        self.assertEqual((code, events[-2]["attempts"]), (0, 2))
        # 2 s for the acknowledgement, and a pause of 3 s.
        others = time.monotonic() - start - events[-2]["uploadMilliseconds"] / 1000
        self.assertGreater(others, 4.9)
        self.assertEqual(camera.firmware(), firmware)
        self.assertIn("pausing", [event.get("state") for event in events])

    def test_names_a_camera_that_runs_another_version_afterwards(self) -> None:
        path, _ = self.image(600, b"\x01\x00\x00\x09")
        port = self.camera().port
        result = self.run_control("upgrade", path, port)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{port}: The camera runs version 1.0.0.7 after the upgrade, and not 1.0.0.9",
                      result.stderr)

    def test_upgrades_only_to_a_newer_version(self) -> None:
        path, firmware = self.image(600)
        old, new = self.camera(), self.camera("--camera-version", "1.0.0.7")
        result = self.run_control("upgrade", "--newer-only", path, old.port, new.port)
        self.assertEqual(result.returncode, 0)
        self.assertIn(f"{new.port}: skipped.", result.stdout)
        self.assertIn("1 done, 1 skipped\n", result.stdout)
        self.assertEqual((old.firmware(), new.firmware()), (firmware, None))

    def test_changes_nothing_in_a_dry_run(self) -> None:
        path, _ = self.image(600)
        camera = self.camera()
        result = self.run_control("upgrade", "--dry-run", path, camera.port)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(
            result.stdout,
            f"{camera.port}: would send RECEIVE_FW_INFO 02 00 02 58 (600 bytes)\n"
            f"{camera.port}: would send UPLOAD_FIRMWARE, 5 packets\n",
        )
        self.assertIsNone(camera.firmware())

    def test_refuses_what_is_no_firmware(self) -> None:
        port = self.camera().port
        good = image_of(b"x" * 300)
        no_magic = "is no firmware image: the magic is missing"
        largest_file = 256 << 20
        largest_firmware = (16 << 20) - 1
        for name, contents, size, reason in (
            ("missing", None, None, "No such file or directory"),
            ("magic", b"kvel" + good[4:], None, no_magic),
            ("empty", good[:128], None, "the firmware is empty"),
            ("large", image_of(bytes(largest_firmware + 1)), None,
             "the firmware has 16 MiB or more, which cannot be announced"),
            ("largest-file", b"", largest_file, no_magic),
            ("larger-file", b"", largest_file + 1, "is larger than 256 MiB"),
        ):
            with self.subTest(name):
                if contents is not None:
                    (self.folder / name).write_bytes(contents)
                if size is not None:
                    os.truncate(self.folder / name, size)
                self.assert_refused(1, f"{name}: {reason}", "upgrade", name, port)
        path, _ = self.image(largest_firmware)
        self.assertEqual(self.run_control("upgrade", "--dry-run", path, port).returncode, 0)

    def test_asks_no_camera_when_the_settings_cannot_be_saved(self) -> None:
        self.assert_refused(1, "missing/my.json: No such file or directory",
                            "save", self.camera("--silent").port, "missing/my.json")

    def test_answers_a_bad_command_line_in_json(self) -> None:
        code, events = self.events("--frob")
        self.assertEqual((code, events[-1]["exitCode"]), (2, 2))
        self.assertEqual(events[0]["text"], "unknown option '--frob'")

    def test_refuses_a_port_given_twice(self) -> None:
        camera = self.camera()
        link = self.folder / "camera"
        link.symlink_to(camera.port)
        path, _ = self.image(300)
        self.assert_refused(2, f"{camera.port} and {link} are the same port",
                            "upgrade", path, camera.port, str(link))
        self.assertIsNone(camera.firmware())
        # Also one that there is not.
        self.assert_refused(2, "ttyMissing and /dev/ttyMissing are the same port",
                            "info", "ttyMissing", "/dev/ttyMissing")

    def test_names_who_holds_a_port(self) -> None:
        path, firmware = self.image(300)
        held, free = self.camera(), self.camera()
        # Its end would end a test that leads its session and has it as its terminal.
        descriptor = os.open(held.port, os.O_RDWR | os.O_NOCTTY)
        self.addCleanup(os.close, descriptor)
        result = self.run_control("upgrade", path, held.port, free.port)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"Another program has {held.port} open: python3", result.stderr)
        self.assertIn(f"(process {os.getpid()})", result.stderr)
        self.assertEqual((held.firmware(), free.firmware()), (None, firmware))

    def test_takes_nothing_from_who_holds_a_port(self) -> None:
        path, _ = self.image(2_000)
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        tty.setraw(slave)
        slow = self.camera("--delay", "200")
        with subprocess.Popen([CONTROL, "--json", "upgrade", path, os.ttyname(slave), slow.port],
                              stdout=subprocess.PIPE, text=True) as process:
            next(line for line in process.stdout if '"progress"' in line)
            os.write(master, b"reply")
            next(line for line in process.stdout if '"progress"' in line)
            os.set_blocking(slave, False)
            self.assertEqual(os.read(slave, 6), b"reply")
            process.kill()


class Signals(ControlProgram):
    @contextlib.contextmanager
    def slow_upgrade(self, size: int = 200_000, **options) -> Iterator[subprocess.Popen]:
        """An upgrade, once it has begun. Unless it is small, it takes longer than a test."""
        path, self.firmware = self.image(size)
        self.slow_camera = camera = self.camera("--delay", "200")
        with subprocess.Popen([CONTROL, "--json", "upgrade", path, camera.port], text=True,
                              stderr=subprocess.PIPE,
                              **{"stdout": subprocess.PIPE, **options}) as process:
            try:
                for line in process.stdout or ():
                    if '"uploading"' in line:
                        break
                yield process
            finally:
                process.kill()

    def test_says_how_far_an_upload_is(self) -> None:
        with self.slow_upgrade() as process:
            events = (json.loads(line) for line in process.stdout if '"progress"' in line)
            first, second = itertools.islice(events, 2)
            self.assertEqual((first["port"], first["packetCount"]), (self.slow_camera.port, 1563))
            # At 5 a second, in one second.
            self.assertIn(second["packets"] - first["packets"], range(1, 8))

    def test_says_nothing_of_the_upload_while_the_camera_restarts(self) -> None:
        path, _ = self.image(300)
        camera = self.camera("--reboot-time", "2500")
        events = self.events("upgrade", path, camera.port)[1]
        rebooting = [event.get("state") for event in events].index("rebooting")
        self.assertEqual([event["event"] for event in events[rebooting + 1:]], ["result", "end"])

    def test_goes_on_after_one_interrupt_and_abandons_after_two(self) -> None:
        with self.slow_upgrade() as process:
            events = (json.loads(line) for line in process.stdout)
            process.send_signal(signal.SIGINT)
            note = next(event for event in events if event["event"] == "note")
            self.assertEqual(
                note["text"],
                "Uploads that are going on: 1. Each camera would be left with an incomplete "
                "firmware. Press Ctrl+C again within 3 seconds to abandon them; they go on.")
            self.assertIsNone(process.poll())
            for _ in range(5):  # On a busy machine the second one may come too late.
                time.sleep(2.2)
                process.send_signal(signal.SIGINT)
                event = next(event for event in events if event["event"] in ("note", "result"))
                if event["event"] == "result":
                    break
            self.assertEqual(event.get("reason"), "abandoned")
            self.assertEqual(next(events)["exitCode"], 130)
            self.assertEqual(process.wait(PATIENCE), 130)

    def test_finishes_the_upload_before_a_signal_ends_it(self) -> None:
        for number, later in ((signal.SIGTERM, signal.SIGHUP), (signal.SIGHUP, signal.SIGTERM)):
            with self.subTest(number), self.slow_upgrade(3_000) as process:
                process.send_signal(number)
                note = next(json.loads(line) for line in process.stdout if '"note"' in line)
                self.assertEqual(note["text"],
                                 "Ends once the uploads that are going on have ended: 1.")
                process.send_signal(later)
                self.assertIsNone(process.poll())
                self.assertIsNone(self.slow_camera.firmware())
                events = [json.loads(line) for line in process.stdout]
                self.assertEqual(process.wait(PATIENCE), 128 + number)
                self.assertEqual(self.slow_camera.firmware(), self.firmware)
                self.assertEqual((events[-2]["reason"], events[-1]["exitCode"]),
                                 ("abandoned", 128 + number))

    def test_abandons_nothing_when_the_second_interrupt_comes_late(self) -> None:
        with self.slow_upgrade() as process:
            for pause in (0, 3.1):
                time.sleep(pause)
                process.send_signal(signal.SIGINT)
                note = next(json.loads(line) for line in process.stdout if '"note"' in line)
                self.assertIn("Press Ctrl+C again", note["text"])
            self.assertIsNone(process.poll())

    def test_makes_no_more_attempts_after_a_signal(self) -> None:
        path, _ = self.image(300)
        # Would go on for more than a minute.
        port = self.camera("--faults", ",".join(f"drop@reply:{n}" for n in range(3, 13))).port
        with subprocess.Popen([CONTROL, "--json", "upgrade", "--attempts", "10", path, port],
                              stdout=subprocess.PIPE, text=True) as process:
            next(line for line in process.stdout if '"uploading"' in line)
            process.send_signal(signal.SIGTERM)
            events = [json.loads(line) for line in process.stdout]
            self.assertEqual(process.wait(PATIENCE), 143)
        self.assertLess(events[-2]["attempts"], 10)

    def test_ends_at_once_while_nothing_is_uploading(self) -> None:
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                port = self.camera("--silent").port
                with subprocess.Popen([CONTROL, "--json", "info", port], stdout=subprocess.PIPE,
                                      text=True) as process:
                    process.stdout.readline()
                    process.send_signal(number)
                    events = [json.loads(line) for line in process.stdout]
                    self.assertEqual(process.wait(PATIENCE), 128 + number)
                self.assertEqual(events[-2]["reason"], "abandoned")


class Output(ControlProgram):
    def test_finishes_the_upload_when_the_reader_has_gone(self) -> None:
        path, firmware = self.image(20_000)
        camera = self.camera()
        with subprocess.Popen([CONTROL, "--json", "upgrade", path, camera.port],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.readline()
            process.stdout.close()
            errors = process.stderr.read()
            self.assertEqual(process.wait(PATIENCE), 4)
        self.assertEqual(errors.count(b"standard output: Broken pipe"), 1, errors)
        self.assertEqual(camera.firmware(), firmware)

    def run_unread(self, *arguments: str) -> str:
        """What it says as nobody can read what it writes."""
        reading, writing = os.pipe()
        os.close(reading)
        process = subprocess.run([CONTROL, *arguments], stdout=writing, stderr=subprocess.PIPE,
                                 timeout=PATIENCE, check=False, text=True)
        os.close(writing)
        self.assertEqual(process.returncode, 4)
        return process.stderr

    def test_says_once_that_it_ends_after_the_upload(self) -> None:
        path, firmware = self.image(20_000)
        camera = self.camera()
        said = self.run_unread("upgrade", path, camera.port)
        self.assertEqual(said.count("Ends once the uploads that are going on have ended: 1."), 1)
        self.assertEqual(camera.firmware(), firmware)

    def test_asks_no_camera_when_nobody_reads(self) -> None:
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        os.set_blocking(master, False)
        self.assertEqual(self.run_unread("--json", "info", os.ttyname(slave)),
                         "corvanectl: standard output: Broken pipe\n")
        with self.assertRaises(BlockingIOError):
            os.read(master, 1)

    def test_waits_for_a_reader_that_is_slow(self) -> None:
        port = self.camera("--settings", "2,9,1,0,3").port
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        for arguments, code, end in ((["info", port], 0, INFO.format(port=port)),
                                     (["--json", "upgrade", "missing", port], 1, '"skipped":0}\n')):
            with self.subTest(arguments):
                reading, writing = os.pipe()
                before = b"x" * fcntl.fcntl(writing, fcntl.F_GETPIPE_SZ)
                os.write(writing, before)
                with subprocess.Popen([CONTROL, *arguments], stdout=writing,
                                      stderr=subprocess.DEVNULL) as process:
                    os.close(writing)
                    # It has its answer long before.
                    with self.assertRaises(subprocess.TimeoutExpired):
                        process.wait(1)
                    with open(reading, "rb") as pipe:
                        text = pipe.read().removeprefix(before).decode()
                    self.assertEqual(process.wait(PATIENCE), code)
                self.assertTrue(text.endswith(end), text)
        used_now = resource.getrusage(resource.RUSAGE_CHILDREN)
        # Of two seconds.
        self.assertLess(used_now.ru_utime + used_now.ru_stime, used.ru_utime + used.ru_stime + 1)

    def test_goes_on_while_the_reader_takes_a_little(self) -> None:
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        reading, writing = os.pipe()
        self.addCleanup(os.close, reading)
        size = fcntl.fcntl(writing, fcntl.F_GETPIPE_SZ)
        os.write(writing, b"x" * size)
        # The first event names them all.
        others = [f"ttyMissing{number:070}" for number in range(200)]
        with subprocess.Popen([CONTROL, "--json", "set", "auto-zoom=on", os.ttyname(slave), *others],
                              stdout=writing, stderr=subprocess.DEVNULL) as process:
            try:
                os.close(writing)
                self.assertTrue(select.select([master], [], [], PATIENCE)[0])
                self.assertEqual(len(os.read(master, 100)), 13)
                os.read(reading, 8192)
                wait_for(lambda: unread(reading) > size - 8192)
                os.write(master, HELLO_REPLY)
                self.assertTrue(select.select([master], [], [], PATIENCE)[0])
            finally:
                process.kill()

    def test_writes_what_was_left_without_more_to_say(self) -> None:
        port = self.camera("--silent").port
        reading, writing = os.pipe()
        before = b"x" * fcntl.fcntl(writing, fcntl.F_GETPIPE_SZ)
        os.write(writing, before)
        with subprocess.Popen([CONTROL, "--json", "info", port], stdout=writing) as process:
            os.close(writing)
            with open(reading, "rb") as pipe:
                # It asks before it has read all of that.
                with self.assertRaises(subprocess.TimeoutExpired):
                    process.wait(1)
                pipe.read(len(before))
                self.assertIn(b'"event":"start"', pipe.readline())
                process.send_signal(signal.SIGINT)
                self.assertEqual(process.wait(PATIENCE), 130)


class Terminal(ControlProgram):
    def on_terminal(self, columns: int, *arguments: str, rows: int = 24,
                    interrupt: bytes | None = None, **environment: str) -> tuple[int, str]:
        """The exit code, and what came out of a terminal; Ctrl+C follows that text, once."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        output = bytearray()

        def read() -> None:
            nonlocal interrupt
            with contextlib.suppress(OSError):
                while data := os.read(master, 4096):
                    output.extend(data)
                    if interrupt is not None and interrupt in output:
                        interrupt = None
                        process.send_signal(signal.SIGINT)

        process = subprocess.Popen(
            [CONTROL, *arguments], stdout=slave, stderr=slave, cwd=self.folder,
            env={**os.environ, "TERM": "xterm", **environment})
        os.close(slave)
        reader = threading.Thread(target=read)
        reader.start()
        code = process.wait(PATIENCE)
        reader.join(PATIENCE)
        os.close(master)
        return code, output.decode()

    def test_shows_the_end_on_a_terminal_that_was_held(self) -> None:
        # Long enough for more to be drawn than a terminal holds that nobody reads.
        path, firmware = self.image(30_000)
        cameras = [self.camera("--delay", "20", "--reboot-time", "0") for _ in range(16)]
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 200, 0, 0))
        with subprocess.Popen([CONTROL, "upgrade", "--attempts", "5", path,
                               *(camera.port for camera in cameras)],
                              stdout=slave, env={**os.environ, "TERM": "xterm"}) as process:
            os.close(slave)
            self.addCleanup(os.close, master)
            try:
                wait_for(lambda: all(camera.firmware() == firmware for camera in cameras))
                used = processor_seconds(process.pid)
                # For the reboots, of which nothing tells; when it is too short, less is tried.
                time.sleep(2)
                self.assertLess(processor_seconds(process.pid), used + 0.5)
                text = b""
                with contextlib.suppress(OSError):
                    while data := os.read(master, 4096):
                        text += data
                self.assertEqual(process.wait(PATIENCE), 0)
            finally:
                process.kill()
        self.assertEqual(text.rpartition(b"\x1b[16A")[2].count(b" done "), 16)

    def test_redraws_in_place_on_a_terminal(self) -> None:
        for columns in (60, 200):
            with self.subTest(columns):
                path, _ = self.image(30_000)
                ports = [self.camera("--delay", "5").port for _ in range(4)]
                bad = self.camera("--faults", "drop@reply:9").port
                start = time.monotonic()
                code, text = self.on_terminal(columns, "upgrade", path, *ports, bad)
                seconds = time.monotonic() - start
                self.assertEqual(code, 1)
                # Each time but the first, up by one line for each camera.
                redraws = text.count("\x1b[5A")
                self.assertGreater(redraws, 3)
                self.assertLessEqual(redraws, 10 * seconds + 2)
                for piece in text.split("\x1b[5A")[1:-1]:
                    for line in piece.removeprefix("\r").split("\r\n"):
                        self.assertLess(len(re.sub(r"\x1b\[\d*\w", "", line)), columns, line)
                progress = r"uploading +\[#*-*\] +(\d+) % +[\d.]+(?: packets)?/s"
                drawn = {int(percents) for percents in re.findall(progress, text)}
                self.assertGreater(len(drawn & set(range(10, 90))), 3)
                self.assertIn("\x1b[31m", text)
                screen = Screen(10_000)
                screen.take(text)
                for port, line in zip([*ports, bad], screen.lines, strict=False):
                    self.assertIn("failed" if port == bad else "done", line)
                    self.assertTrue(line.startswith(port))
                self.assertIn("4 done, 1 failed", screen.lines)

    def test_shows_what_fails_at_once_on_a_terminal(self) -> None:
        path, _ = self.image(100)
        code, text = self.on_terminal(80, "upgrade", path, "ttyMissing")
        self.assertEqual(code, 1)
        self.assertTrue(text.startswith("\x1b[31mttyMissing failed "), text)

    def test_draws_80_columns_and_24_rows_where_the_terminal_does_not_say(self) -> None:
        path, _ = self.image(100)
        for columns, rows, drawn in ((0, 24, 2), (80, 0, 2), (80, 1, 1), (1, 24, 2)):
            with self.subTest(columns=columns, rows=rows):
                text = self.on_terminal(columns, "upgrade", path, "ttyMissing", "ttyOther",
                                        rows=rows, NO_COLOR="1")[1]
                lines = [line.partition("\x1b")[0]
                         for line in text.partition("\x1b[J")[0].splitlines()]
                self.assertEqual(len(lines), drawn, text)
                self.assertEqual(len(lines[0]) > 1, columns != 1, text)

    def test_uploads_on_while_the_terminal_is_held(self) -> None:
        path, firmware = self.image(20_000)
        camera = self.camera("--delay", "5")
        master, slave = pty.openpty()
        # As Ctrl+S does.
        termios.tcflow(slave, termios.TCOOFF)
        with subprocess.Popen([CONTROL, "upgrade", path, camera.port], stdout=slave,
                              env={**os.environ, "TERM": "xterm"}) as process:
            wait_for(lambda: camera.firmware() is not None)
            self.assertEqual(camera.firmware(), firmware)
            termios.tcflow(slave, termios.TCOON)
            self.assertEqual(process.wait(PATIENCE), 0)
        output = os.read(master, 4096)
        self.assertIn(b"upgraded from version 1.0.0.6 to 1.0.0.7", output)
        os.close(master)
        os.close(slave)

    def test_keeps_colours_away(self) -> None:
        path, _ = self.image(300)
        for variable, has_colours in (("1", False), ("", True)):
            with self.subTest(variable):
                port = self.camera().port
                text = self.on_terminal(80, "upgrade", path, port, NO_COLOR=variable)[1]
                self.assertIn("done", text)
                self.assertEqual("\x1b[32m" in text, has_colours)

    def test_redraws_nothing_on_a_terminal_that_cannot(self) -> None:
        path, _ = self.image(300)
        for terminal in ("dumb", ""):
            with self.subTest(terminal):
                port = self.camera().port
                text = self.on_terminal(80, "upgrade", path, port, TERM=terminal)[1]
                self.assertTrue(text.startswith(f"{port}: announcing\r\n"), text)
                self.assertNotIn("\x1b", text)

    def test_redraws_only_what_has_changed(self) -> None:
        path, _ = self.image(100)
        # It restarts for a second at least, in which nothing happens.
        text = self.on_terminal(80, "upgrade", path, self.camera().port)[1]
        changes = ("announcing", "uploading", "one packet", "rebooting", "done")
        self.assertLessEqual(text.count("\x1b[1A"), len(changes))

    def test_draws_each_change_of_state(self) -> None:
        path, _ = self.image(100)
        soon, late = (self.camera("--delay", "300", "--reboot-time", time).port
                      for time in ("0", "4000"))
        text = self.on_terminal(80, "upgrade", path, soon, late, NO_COLOR="1")[1]
        frames = [frame.split("\n") for frame in text.split("\x1b[2A")]
        self.assertTrue(any("announcing" in frame[0] for frame in frames), text)
        self.assertTrue(any("done" in frame[0] and "rebooting" in frame[1] for frame in frames),
                        text)

    def test_writes_a_note_above_the_redrawn_lines(self) -> None:
        path, _ = self.image(1_000)
        port = self.camera("--delay", "50").port
        text = self.on_terminal(200, "upgrade", path, port, interrupt=b"uploading")[1]
        screen = Screen(10_000)
        screen.take(text)
        note, drawn, result, end = screen.lines
        self.assertIn("Press Ctrl+C again", note)
        self.assertTrue(drawn.startswith(f"{port} done"), drawn)
        self.assertTrue(result.startswith(f"{port}: upgraded"), result)
        self.assertEqual(end, "")

    def test_draws_again_what_a_note_has_replaced(self) -> None:
        path, _ = self.image(100)
        port = self.camera("--delay", "1500").port
        text = self.on_terminal(200, "upgrade", path, port, interrupt=b"uploading")[1]
        self.assertRegex(text.partition("they go on.")[2], rf"^\s+{port} uploading +\[-+\] +0 %")

    def test_prints_a_line_for_each_event_elsewhere(self) -> None:
        path, _ = self.image(300)
        port = self.camera().port
        lines = self.run_control("upgrade", path, port).stdout.splitlines()
        self.assertEqual(lines[:3],
                         [f"{port}: {state}" for state in ("announcing", "uploading", "rebooting")])
        self.assertRegex(lines[3], "upgraded from version 1.0.0.6 to 1.0.0.7, as the image has it")


class ListedPorts(ControlProgram):
    def on_adapter(self, *arguments: str, options: tuple[str, ...] = ()) -> tuple[int, str]:
        port = f"ttyCONTROL{os.getpid()}"
        result = subprocess.run(
            [SIMULATOR, "--quiet", "--baud", "0", "--reboot-time", "100", "--port", port, *options]
            + ["--", CONTROL, *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
            timeout=PATIENCE, cwd=self.folder)
        return result.returncode, result.stdout.replace(port, "PORT")

    def test_lists_ports_and_cameras(self) -> None:
        self.assertEqual(self.on_adapter("list"), (0, "PORT: USB Serial, USB 1209:0001\n"))
        end = json.loads(self.on_adapter("--json", "list")[1].splitlines()[-1])
        self.assertEqual((end["done"], end["failed"], end["skipped"]), (0, 0, 0))
        self.assertEqual(
            self.on_adapter("list", "--probe"),
            (0, "PORT: USB Serial, USB 1209:0001\n  a camera of version 1.0.0.6\n"))
        code, text = self.on_adapter("--json", "list", "--probe", options=("--silent",))
        self.assertEqual(code, 3)
        result = json.loads(text.splitlines()[-2])
        self.assertEqual(result["sentence"], "Nothing at all came back within 5 s.")
        self.assertIn("The ports that there are: PORT (USB Serial).", result["remedy"])

    def test_lists_ports_in_the_order_of_their_numbers(self) -> None:
        port = f"ttyCONTROL{os.getpid()}n"
        result = subprocess.run(
            [SIMULATOR, "--quiet", "--cameras", "10", "--port", port + "2", "--",
             CONTROL, "list"],
            capture_output=True, text=True, check=True, timeout=PATIENCE)
        self.assertEqual(re.findall(rf"^{port}(\d+):", result.stdout, re.M),
                         [str(number) for number in range(2, 12)])

    def test_lists_the_name_by_which_an_adapter_is_always_found(self) -> None:
        port = f"ttyCONTROL{os.getpid()}i"
        # As udev would make it.
        link = (f"cd $UMOCKDEV_DIR/dev; mkdir -p serial/by-id; ln -s ../../{port} serial/by-id/usb-A;"
                ' exec "$@"')
        result = subprocess.run(
            [SIMULATOR, "--quiet", "--port", port, "--", "sh", "-c", link, "sh", CONTROL, "--json",
             "list"],
            capture_output=True, text=True, check=True, timeout=PATIENCE)
        listed = json.loads(result.stdout.splitlines()[1])
        self.assertEqual(listed, {"event": "port", "schema": 1, "port": port, "path": f"/dev/{port}",
                                  "description": "USB Serial", "vendorId": "1209",
                                  "productId": "0001", "byId": "/dev/serial/by-id/usb-A"})

    def test_finds_all_cameras(self) -> None:
        path, _ = self.image(300)
        code, text = self.on_adapter("upgrade", path, "--all")
        self.assertEqual(code, 0)
        self.assertIn("PORT: upgraded from version 1.0.0.6 to 1.0.0.7", text)
        self.assertEqual(
            self.on_adapter("info", "--all", options=("--silent",)),
            (3, "corvanectl: PORT: no camera: Nothing at all came back within 5 s.\n"
                "corvanectl: no camera answers on any port\n"))

    def test_counts_only_the_ports_with_a_camera(self) -> None:
        port = f"ttyCONTROL{os.getpid()}c"
        path = self.folder / "control"
        with subprocess.Popen(
                [SIMULATOR, "--quiet", "--cameras", "2", "--port", port + "1", "--control", path, "--",
                 "sh", "-c", 'read go; exec "$@"', "sh", CONTROL, "--json", "info", "--all"],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
            wait_for(path.exists)
            with socket.socket(socket.AF_UNIX) as control:
                control.connect(str(path))
                control.sendall(b"2 silent on\n")
                self.assertEqual(control.recv(3), b"ok\n")
            text = process.communicate("go\n", PATIENCE)[0]
            self.assertEqual(process.returncode, 0)
        events = [json.loads(line) for line in text.splitlines()]
        self.assertEqual(events[0]["ports"], [port + "1", port + "2"])
        self.assertEqual([event["port"] for event in events if event["event"] == "result"],
                         [port + "1"])
        self.assertEqual((events[-1]["done"], events[-1]["failed"]), (1, 0))


if __name__ == "__main__":
    unittest.main()
