#!/usr/bin/env python3
"""Tests of what is installed: test_installation.py CMAKE BUILD-FOLDER"""

import os
import sys
import tempfile
import unittest
from pathlib import Path

from installed import (ICON_SIZES, ID, MEDIA_TYPE, Page, dead_links, expected_files, files_below, icon_size,
                       options_in_help, options_in_man_page, run, run_program, unexpected)

CMAKE, BUILD = sys.argv[1:3]
TEXTS = {"share/doc/runebook/LICENSE", "share/doc/runebook/CHANGELOG.md"}


class Installation(unittest.TestCase):
    """One installation for all tests, moved to another place after it was made."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        made = Path(cls.folder.name) / "made"
        status, _, errors = run(CMAKE, "--install", BUILD, "--prefix", made, "--strip")
        if status != 0:
            raise RuntimeError(errors)
        cls.prefix = Path(cls.folder.name) / "moved once"
        made.rename(cls.prefix)
        cls.home = Path(cls.folder.name) / "home"
        cls.home.mkdir()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def share(self, *parts):
        return self.prefix.joinpath("share", *parts)

    def succeeds(self, *command, **options):
        status, output, errors = run(*command, **options)
        self.assertEqual(status, 0, output + errors)
        return output


class ContentTest(Installation):
    def test_everything_is_there_and_nothing_else(self):
        files = files_below(self.prefix)
        self.assertEqual(sorted((expected_files() | TEXTS) - files), [])
        self.assertEqual(unexpected(files, TEXTS), [])

    def test_permissions(self):
        for path in self.prefix.rglob("*"):
            runs = path.is_dir() or path.parent.name == "bin" or path.name == "runebook-python-probe"
            self.assertEqual(path.stat().st_mode & 0o777, 0o755 if runs else 0o644, path)

    def test_icons_have_their_sizes(self):
        for name, sizes in ICON_SIZES.items():
            for size in sizes:
                self.assertEqual(icon_size(self.share(f"icons/hicolor/{size}x{size}/{name}.png")), (size, size))


class ProgramTest(Installation):
    def test_version(self):
        status, output, errors = run_program(self.prefix, self.home, "--version")
        self.assertEqual((status, errors), (0, ""))
        self.assertRegex(output, r"^Runebook \d+\.\d+\.\d+\n$")

    def test_a_script_reads_the_sample(self):
        status, output, errors = run_program(self.prefix, self.home, "--eval", "print(Doc['A'].unicode)",
                                             self.share("runebook/sample.xml"))
        self.assertEqual((status, output), (0, "0041\n"), errors)

    def test_no_option_is_missing_from_the_man_page_or_invented(self):
        _, output, _ = run_program(self.prefix, self.home, "--help")
        options = options_in_help(output)
        self.assertIn("--compare", options)
        self.assertEqual(options_in_man_page(self.share("man/man1/runebook.1.gz")), options)


class HelpTest(Installation):
    def test_links_lead_somewhere(self):
        self.assertEqual(dead_links(self.share("runebook/doc")), [])

    def test_pages_are_sound_and_stand_alone(self):
        for path in self.share("runebook/doc").glob("*.html"):
            page = Page(path)
            self.assertEqual((page.open, page.badly_nested, page.outside), ([], [], []), path)
            self.assertEqual(len(page.anchors), len(set(page.anchors)), path)
        self.assertIn("the-friendly-layer", Page(self.share("runebook/doc/index.html")).anchors)


class DesktopTest(Installation):
    def test_desktop_file(self):
        self.assertEqual(self.succeeds("desktop-file-validate", self.share(f"applications/{ID}.desktop")), "")

    def test_metadata(self):
        self.succeeds("appstreamcli", "validate", "--no-net", self.share(f"metainfo/{ID}.metainfo.xml"))

    def test_man_page(self):
        page = self.share("man/man1/runebook.1.gz")
        status, text, warnings = run("man", "--warnings", "-l", page,
                                     env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
        self.assertEqual((status, warnings), (0, ""))
        self.assertIn("EXIT STATUS", text)

    def test_media_type(self):
        """In the very database of this machine, with the installed type added to it."""
        with tempfile.TemporaryDirectory() as folder:
            packages = Path(folder) / "data/mime/packages"
            packages.mkdir(parents=True)
            for source in (self.share(f"mime/packages/{ID}.xml"),
                           Path("/usr/share/mime/packages/freedesktop.org.xml")):
                (packages / source.name).write_bytes(source.read_bytes())
            self.succeeds("update-mime-database", packages.parent)
            environment = {"PATH": os.environ["PATH"], "HOME": folder, "XDG_DATA_DIRS": f"{folder}/data",
                           "XDG_DATA_HOME": f"{folder}/none"}
            head = '<?xml version="1.0" encoding="UTF-8" ?>\n'
            for text, kind in ((head + "<glyphData>\n</glyphData>\n", MEDIA_TYPE),
                               (head + '<!-- note -->\n<glyphData format="2">\n</glyphData>\n', MEDIA_TYPE),
                               (self.share("runebook/sample.xml").read_text(encoding="utf-8"), MEDIA_TYPE),
                               (head + "<other/>\n", "application/xml"),
                               (head + "<glyphDatabase/>\n", "application/xml")):
                file = Path(folder) / "file.xml"
                file.write_text(text, encoding="utf-8")
                output = self.succeeds("gio", "info", "-a", "standard::content-type", file, env=environment)
                self.assertIn(f"standard::content-type: {kind}\n", output, text[:80])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
