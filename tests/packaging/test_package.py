#!/usr/bin/env python3
"""Tests of the Debian package: test_package.py FILE.deb"""

import gzip
import re
import sys
import tempfile
import unittest
from pathlib import Path

from installed import (SOURCE, expected_files, files_below, run, run_program, unexpected)

PACKAGE = Path(sys.argv[1])
TEXTS = {"share/doc/runebook/copyright", "share/doc/runebook/changelog.gz",
         "share/doc/runebook/changelog.Debian.gz"}
# What lintian finds and why it stays.
ACCEPTED = {
    "initial-upload-closes-no-bugs": "the package is no answer to a request to Debian",
    "bogus-mail-host": "who builds the package names the maintainer: RUNEBOOK_MAINTAINER",
    "bogus-mail-host-in-debian-changelog": "the same",
}


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.root = Path(cls.folder.name) / "root"
        status, _, errors = run("dpkg-deb", "--raw-extract", PACKAGE, cls.root)
        if status != 0:
            raise RuntimeError(errors)
        control = (cls.root / "DEBIAN/control").read_text(encoding="utf-8")
        cls.fields = dict(re.findall(r"^([A-Za-z-]+): *(.*(?:\n .*)*)", control, re.MULTILINE))

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_it_holds_an_installation_and_nothing_else(self):
        files = files_below(self.root / "usr")
        self.assertEqual(sorted((expected_files() | TEXTS) - files), [])
        self.assertEqual(unexpected(files, TEXTS), [])
        self.assertEqual({path.name for path in self.root.iterdir()}, {"DEBIAN", "usr"})

    def test_it_belongs_to_root(self):
        status, listing, _ = run("dpkg-deb", "--contents", PACKAGE)
        self.assertEqual(status, 0)
        for line in listing.splitlines():
            self.assertRegex(line, r"^(drwxr-xr-x|-rwxr-xr-x|-rw-r--r--) root/root ")

    def test_control(self):
        self.assertEqual(self.fields["Package"], "runebook")
        self.assertEqual(self.fields["Version"], self.version() + "-1")
        self.assertEqual(self.fields["Section"], "editors")
        depends = self.fields["Depends"]
        for library in ("libqt6widgets6", "libqt6network6", "libqt6svg6", "libplist3", "libc6 (>="):
            self.assertIn(library, depends)
        self.assertNotIn("python", depends)
        self.assertIn("libpython3.11 |", self.fields["Recommends"])

    def version(self):
        return re.search(r"project\(Runebook VERSION ([0-9.]+)", (SOURCE / "CMakeLists.txt").read_text()).group(1)

    def test_texts(self):
        folder = self.root / "usr/share/doc/runebook"
        copyright_text = (folder / "copyright").read_text(encoding="utf-8")
        for name in ("LICENSE", "NOTICE"):
            self.assertIn((SOURCE / name).read_text(encoding="utf-8").strip(), copyright_text)
        self.assertEqual(gzip.decompress((folder / "changelog.gz").read_bytes()),
                         (SOURCE / "CHANGELOG.md").read_bytes())
        self.assertTrue(gzip.decompress((folder / "changelog.Debian.gz").read_bytes())
                        .startswith(f"runebook ({self.version()}-1) ".encode()))

    def test_programs_are_stripped(self):
        for name in ("bin/runebook", "libexec/runebook/runebook-python-probe"):
            status, sections, _ = run("readelf", "--sections", "--wide", self.root / "usr" / name)
            self.assertEqual(status, 0)
            self.assertIn(".text", sections)
            self.assertNotIn(".debug_info", sections)
            self.assertNotIn(".symtab", sections)

    def test_it_runs_unpacked(self):
        home = Path(self.folder.name) / "home"
        home.mkdir()
        status, output, errors = run_program(self.root / "usr", home, "--eval", "print(1)",
                                             self.root / "usr/share/runebook/sample.xml")
        self.assertEqual((status, output), (0, "1\n"), errors)

    def test_removal_leaves_no_compiled_modules(self):
        modules = self.root / "usr/share/runebook/Contents/Scripts311"
        (modules / "__pycache__").mkdir()
        (modules / "__pycache__/objc.cpython-311.pyc").write_bytes(b"")
        script = (self.root / "DEBIAN/prerm").read_text(encoding="utf-8")
        script = script.replace("/usr/share", str(self.root / "usr/share"))
        for reason, stays in (("failed-upgrade", True), ("remove", False), ("remove", False)):
            status, _, errors = run("sh", "-c", script, "prerm", reason)
            self.assertEqual((status, errors), (0, ""))
            self.assertEqual((modules / "__pycache__").exists(), stays)
        self.assertTrue((modules / "objc.py").exists())

    def test_lintian(self):
        _, output, _ = run("lintian", "--allow-root", "--tag-display-limit", "0", PACKAGE)
        found = [line for line in output.splitlines() if line.startswith(("E:", "W:"))]
        self.assertEqual([line for line in found if line.split()[2] not in ACCEPTED], [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
