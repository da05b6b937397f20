#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
"""Tests what is installed, that its parts know each other, and what the package depends on."""

from __future__ import annotations

import configparser
import gzip
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

sys.dont_write_bytecode = True

from programtexts import PROGRAMS, PROJECT, installed_programs

BUILD = PROGRAMS.parent
ID = "example.corvane.Corvane"
ICON_SIZES = {16, 22, 24, 32, 48, 64, 128, 256}


def package_settings() -> dict[str, str]:
    """What CPack makes the package of."""
    text = (BUILD / "CPackConfig.cmake").read_text(encoding="utf-8")
    return dict(re.findall(r'^set\(CPACK_(\w+) "((?:[^"\\]|\\.)*)"\)', text, flags=re.MULTILINE))


class Installing(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        subprocess.run(
            ["cmake", "--install", BUILD, "--prefix", "/usr"],
            env={**os.environ, "DESTDIR": folder.name},
            stdout=subprocess.DEVNULL,
            check=True,
        )
        cls.usr = Path(folder.name) / "usr"
        cls.share = cls.usr / "share"
        cls.programs = {path.name for path in (cls.usr / "bin").iterdir()}
        parser = configparser.ConfigParser(interpolation=None)
        parser.optionxform = str
        parser.read(cls.share / "applications" / f"{ID}.desktop", encoding="utf-8")
        cls.entry = parser["Desktop Entry"]
        cls.metadata = ElementTree.parse(cls.share / "metainfo" / f"{ID}.metainfo.xml").getroot()

    def test_each_file_is_where_it_is_looked_for(self) -> None:
        icons = "share/icons/hicolor"
        expected = {
            f"share/applications/{ID}.desktop",
            f"share/metainfo/{ID}.metainfo.xml",
            f"{icons}/scalable/apps/{ID}.svg",
            "share/doc/corvane/changelog.Debian.gz",
            "share/doc/corvane/changelog.gz",
            "share/doc/corvane/copyright",
            "share/lintian/overrides/corvane",
        }
        expected |= {f"{icons}/{size}x{size}/apps/{ID}.png" for size in ICON_SIZES}
        expected |= {f"share/man/man1/{program}.1.gz" for program in self.programs}
        # The window has no options.
        completed = self.programs - {"corvane"}
        expected |= {f"share/bash-completion/completions/{program}" for program in completed}
        self.assertIn("corvane-image", completed)
        expected |= {f"bin/{program}" for program in self.programs}
        installed = {
            path.relative_to(self.usr).as_posix() for path in self.usr.rglob("*") if path.is_file()
        }
        self.assertEqual(installed, expected)

    def test_each_icon_has_the_size_of_its_folder(self) -> None:
        for path in self.share.glob("icons/hicolor/*/apps/*.png"):
            with self.subTest(path.parts[-3]):
                start = path.read_bytes()[:24]
                self.assertEqual(start[:8], b"\x89PNG\r\n\x1a\n")
                width, height = struct.unpack(">II", start[16:24])
                self.assertEqual(f"{width}x{height}", path.parts[-3])

    def test_what_is_compressed_is_the_same_in_every_build(self) -> None:
        manual = self.share / "man" / "man1" / "corvane.1.gz"
        source = PROJECT / "packaging" / "man" / "corvane.1"
        self.assertEqual(gzip.decompress(manual.read_bytes()), source.read_bytes())
        for path in self.share.rglob("*.gz"):
            with self.subTest(path.name):
                flags, time = struct.unpack("<xxxBI", path.read_bytes()[:8])
                self.assertEqual((flags & 0x8, time), (0, 0), "it has a file's name or time")

    def test_the_menu_entry_starts_the_window_and_knows_its_icon(self) -> None:
        self.assertEqual(self.entry["Type"], "Application")
        self.assertEqual(self.entry["Exec"], "corvane")
        self.assertTrue(os.access(self.usr / "bin" / self.entry["Exec"], os.X_OK))
        self.assertEqual(self.entry["Icon"], ID)
        # Qt makes the window's class of the program's name.
        self.assertEqual(self.entry["StartupWMClass"], self.entry["Exec"].capitalize())
        self.assertTrue(self.entry["Categories"])
        for key in ("Terminal", "NoDisplay", "Hidden", "OnlyShowIn", "NotShowIn", "TryExec"):
            self.assertNotIn(key, self.entry)

    def test_the_window_names_the_same_id(self) -> None:
        program = (self.usr / "bin" / "corvane").read_bytes()
        self.assertIn(ID.encode("utf-16-le"), program)

    def test_the_metadata_agrees_with_the_menu_entry(self) -> None:
        self.assertEqual(self.metadata.findtext("id"), ID)
        [launchable] = self.metadata.findall("launchable")
        self.assertEqual(launchable.attrib, {"type": "desktop-id"})
        self.assertEqual(launchable.text, f"{ID}.desktop")
        self.assertEqual(self.metadata.findtext("name"), self.entry["Name"])
        self.assertEqual(self.metadata.findtext("summary"), self.entry["Comment"])
        provided = {each.text for each in self.metadata.iterfind("provides/binary")}
        self.assertEqual(provided, self.programs)
        licence = self.metadata.findtext("project_license")
        self.assertTrue((PROJECT / "LICENSES" / f"{licence}.txt").exists(), licence)

    def test_the_metadata_shows_pictures_of_the_documents(self) -> None:
        images = [each.text for each in self.metadata.iterfind("screenshots/screenshot/image")]
        self.assertTrue(images)
        for image in images:
            with self.subTest(image):
                self.assertTrue((PROJECT / "docs" / "images" / image.rpartition("/")[2]).exists())

    def test_the_package_says_what_it_holds(self) -> None:
        settings = package_settings()
        self.assertEqual(settings["PACKAGING_INSTALL_PREFIX"], "/usr")
        [page] = [each.text for each in self.metadata.iterfind("url[@type='homepage']")]
        self.assertEqual(settings["PACKAGE_HOMEPAGE_URL"], page)
        description = settings["DEBIAN_PACKAGE_DESCRIPTION"]
        for program in self.programs - {"corvane"}:
            self.assertRegex(description, rf"\b{program},")


def lines_of(*command: str | Path, check: bool = True) -> list[str]:
    return subprocess.run(command, capture_output=True, text=True, check=check).stdout.splitlines()


def packages_of(files: set[str]) -> dict[str, str]:
    # /lib and /usr/lib are the same, and a package may have the file in either.
    paths = sorted(files | {f.removeprefix("/usr") for f in files} | {f"/usr{f}" for f in files})
    packages = {}
    for line in lines_of("dpkg", "--search", *paths, check=False):
        names, _, path = line.rpartition(": ")
        packages[path.removeprefix("/usr")] = names.split(":")[0]
    return {file: packages.get(file.removeprefix("/usr"), "no package") for file in files}


def names_in(dependencies: str) -> list[str]:
    """Of alternatives the first one, which is what a new system gets."""
    return re.findall(r"(?:^|,)\s*([^\s,:(|]+)", dependencies)


class Depending(unittest.TestCase):
    """Every library that a program loads comes along with the package, whoever loads it."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def loaded_libraries(self) -> set[str]:
        """Of the window, the simulator and the diagnosis, while they do their work."""
        port = f"ttyPACKAGE{os.getpid()}"
        script = "corvane-diagnose --list; exec corvane -platform offscreen"
        environment = {
            "PATH": f"{PROGRAMS}:{os.environ['PATH']}",
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", ""),
            "LSAN_OPTIONS": os.environ.get("LSAN_OPTIONS", ""),
            "XDG_RUNTIME_DIR": str(self.folder),
            "LD_DEBUG": "libs",
            "LD_DEBUG_OUTPUT": str(self.folder / "log"),
        }
        simulator = subprocess.Popen(
            ["corvane-simulator", "--quiet", "--port", port, "--", "sh", "-c", script],
            env=environment,
            executable=PROGRAMS / "corvane-simulator",
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            text=True,
        )
        with simulator:
            # The window's first message, once it is complete.
            for line in simulator.stderr:
                if "Disconnected" in line:
                    break
            simulator.terminate()
            simulator.communicate()
        text = "".join(log.read_text(errors="replace") for log in self.folder.glob("log*"))
        return set(re.findall(r"calling init: (/\S+)", text))

    def packages_that_come_along(self) -> set[str]:
        settings = package_settings()
        waiting = names_in(settings["DEBIAN_PACKAGE_DEPENDS"])
        if settings["DEBIAN_PACKAGE_SHLIBDEPS"] == "ON":
            programs = [PROGRAMS / program for program in installed_programs()]
            linked = re.findall(r"=> (/\S+)", "\n".join(lines_of("ldd", *programs)))
            waiting += packages_of(set(linked)).values()
        known: dict[str, list[str]] = {}
        fields = "${Package}\t${Provides}\t${Pre-Depends}, ${Depends}\n"
        for line in lines_of("dpkg-query", "--show", f"--showformat={fields}"):
            package, provides, depends = line.split("\t")
            for name in [package, *names_in(provides)]:
                known.setdefault(name, []).extend(names_in(depends))
        packages: set[str] = set()
        while waiting:
            package = waiting.pop()
            if package in known and package not in packages:
                packages.add(package)
                waiting += known[package]
        return packages

    def test_every_library_that_is_loaded_comes_along(self) -> None:
        loaded = {path for path in self.loaded_libraries() if not path.startswith(str(BUILD))}
        names = " ".join(Path(path).name for path in loaded)
        for name in ("libqoffscreen", "libudev", "libumockdev-preload"):
            self.assertIn(name, names)
        qt = re.search(r"lib(Qt\d)Widgets", names)[1].lower()
        # Of a desktop, which a test does not have.
        plugins = lines_of("dpkg", "--search", f"*/{qt}/plugins/platforms/libqxcb.so")
        loaded |= {line.rpartition(": ")[2] for line in plugins}
        packages = self.packages_that_come_along()
        for path, package in packages_of(loaded).items():
            with self.subTest(path):
                self.assertTrue(package in packages, f"{package} does not come along")


if __name__ == "__main__":
    unittest.main()
