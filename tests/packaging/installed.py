"""What an installation of Runebook consists of, and how to try it; for the tests of this folder."""

import gzip
import html.parser
import os
import re
import struct
import subprocess
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
ID = "org.runebook.Runebook"
MEDIA_TYPE = "application/x-glyphdata+xml"
ICON_SIZES = {"apps/" + ID: (16, 22, 24, 32, 48, 64, 128, 256, 512),
              "mimetypes/" + MEDIA_TYPE.replace("/", "-"): (16, 22, 24, 32, 48, 64, 128, 256)}


def expected_files():
    """The paths below the prefix that every installation has. More data files are no fault, fewer are."""
    data = "share/runebook/"
    files = {"bin/runebook", "libexec/runebook/runebook-python-probe",
             data + "aglfn1.6.txt", data + "unicode.dat", data + "sample.xml", data + "MacroKeywords.plist",
             data + "doc/index.html", data + "doc/changelog.html",
             f"share/applications/{ID}.desktop", f"share/mime/packages/{ID}.xml",
             f"share/metainfo/{ID}.metainfo.xml", "share/man/man1/runebook.1.gz", "share/doc/runebook/NOTICE"}
    for module in (SOURCE / "resources/scripts").glob("*.py"):
        files |= {f"{data}Contents/Scripts{version}/{module.name}" for version in (39, 310, 311)}
    for name, sizes in ICON_SIZES.items():
        files |= {f"share/icons/hicolor/{size}x{size}/{name}.png" for size in sizes}
        files.add(f"share/icons/hicolor/scalable/{name}.svg")
    return files


def files_below(folder):
    return {str(path.relative_to(folder)) for path in Path(folder).rglob("*") if not path.is_dir()}


def unexpected(files, also=()):
    """Files that nobody meant to install; in the data folder whatever the program's own folders put there."""
    allowed = expected_files() | set(also)
    return sorted(name for name in files - allowed
                  if not name.startswith("share/runebook/") or "__pycache__" in name or name.endswith("~"))


def run(*command, **options):
    """The status, the standard output and the standard error output of a command."""
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, encoding="utf-8", timeout=120, check=False, **options)
    return done.returncode, done.stdout, done.stderr


def run_program(prefix, home, *arguments):
    """Runs the installed program without a display, as a user with the given home folder and nothing else."""
    environment = {"HOME": str(home), "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8",
                   "TMPDIR": str(home), "RUNEBOOK_DEFAULTS": str(Path(home) / "defaults.ini"),
                   "PYTHONDONTWRITEBYTECODE": "1"}
    environment.update({key: value for key, value in os.environ.items() if key.endswith("SAN_OPTIONS")})
    return run(Path(prefix) / "bin/runebook", *arguments, env=environment)


def icon_size(path):
    """Width and height of a PNG file."""
    head = Path(path).read_bytes()[:24]
    return struct.unpack(">II", head[16:24]) if head.startswith(b"\x89PNG\r\n\x1a\n") else None


def options_in_help(text):
    return set(re.findall(r"^ +(--[a-z-]+)", text, re.MULTILINE))


def options_in_man_page(packed):
    """The options that the page's section OPTIONS explains, each at the head of a paragraph of its own."""
    page = gzip.decompress(Path(packed).read_bytes()).decode("utf-8")
    section = page.split(".SH OPTIONS", 1)[1].split(".SH ", 1)[0]
    heads = re.findall(r"^\.TP\n(.+)$", section, re.MULTILINE)
    return {option for head in heads for option in re.findall(r"--[a-z-]+", head.replace(r"\-", "-"))}


class Page(html.parser.HTMLParser):
    """Anchors, links and open tags of a page of the help."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.outside, self.open, self.badly_nested = [], [], [], [], []
        self.feed(Path(path).read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.anchors += [values["id"]] if "id" in values else []
        self.links += [values["href"]] if "href" in values else []
        self.outside += [tag] if tag in ("script", "link", "img", "iframe") or "src" in values else []
        if tag != "meta":
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.badly_nested.append(tag)


def dead_links(folder):
    """Links of the pages in the folder that lead to no page, or to no anchor of it."""
    pages = {path.name: Page(path) for path in Path(folder).glob("*.html")}
    dead = []
    for name, page in pages.items():
        for link in page.links:
            file, _, anchor = link.partition("#")
            if link.startswith("https://"):
                continue
            target = pages.get(file or name)
            if target is None or (anchor and anchor not in target.anchors):
                dead.append((name, link))
    return dead
