#!/usr/bin/python3
"""Tries the archives that `./dev package` has made, as somebody would who has nothing else."""

import fnmatch
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from PIL import Image, ImageChops

ROOT = pathlib.Path(__file__).resolve().parents[2]
OUT = ROOT / "out"
BUILD = OUT / "build/linux-i386"
PHOTO = "/usr/share/backgrounds/mate/nature/LadyBird.jpg"
SOUND = "/usr/share/sounds/alsa/Front_Center.wav"
sys.path.insert(0, str(ROOT / "docs"))
sys.dont_write_bytecode = True

from machinery.pages import faults  # noqa: E402

VERSION = re.search(r"project\(PictureQVR VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
NAME = f"PictureQVR-{VERSION}"
DOCUMENTS = "share/doc/pictureqvr"


def files_in(folder):
    """The paths in a folder, with the modes and the bytes of their files."""
    return {
        path.relative_to(folder).as_posix(): (path.stat().st_mode, path.read_bytes())
        for path in sorted(folder.rglob("*"))
        if path.is_file()
    }


def output_of(*command, folder=ROOT):
    """What a command prints, with nothing set in its environment."""
    done = subprocess.run(
        [str(word) for word in command], cwd=folder, env={"PATH": "/usr/bin:/bin"}, capture_output=True, text=True
    )
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout


class Trial(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        for kind in ("zip", "tar.gz"):
            (cls.folder / kind).mkdir()
            output_of("cmake", "-E", "tar", "xf", OUT / f"{NAME}.{kind}", folder=cls.folder / kind)
        cls.top = cls.folder / "tar.gz" / NAME
        cls.files = files_in(cls.folder / "tar.gz")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def setUp(self):
        self.empty = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        with Image.open(PHOTO) as photo:
            photo.convert("RGB").reduce(4).save(self.empty / "photo.png")

    def test_both_archives_hold_the_same(self):
        self.assertEqual([path.name for path in self.top.parent.iterdir()], [NAME])
        self.assertEqual(self.files.keys(), files_in(self.folder / "zip").keys())
        self.assertEqual(self.files, files_in(self.folder / "zip"))

    def test_names_are_those_that_are_listed(self):
        listed = (ROOT / "tests/package/contents.txt").read_text().splitlines()[1:]
        patterns = [f"{NAME}/{line}" for line in listed]
        self.assertEqual([name for name in self.files if not any(fnmatch.fnmatch(name, p) for p in patterns)], [])
        self.assertEqual([p for p in patterns if not fnmatch.filter(self.files, p)], [])

    def test_checksums_are_right_and_of_all_files(self):
        output_of("sha256sum", "--check", "--strict", "SHA256SUMS", folder=OUT)
        output_of("sha256sum", "--check", "--strict", "SHA256SUMS", folder=self.top)
        summed = [line.split("  ")[1] for line in (self.top / "SHA256SUMS").read_text().splitlines()]
        self.assertEqual(sorted([*summed, "SHA256SUMS"]), sorted(path.removeprefix(f"{NAME}/") for path in self.files))

    def test_nothing_tells_where_it_was_built(self):
        self.assertEqual([path for path, (_, content) in self.files.items() if str(ROOT).encode() in content], [])

    def test_everybody_may_read_the_files(self):
        programs = {f"{NAME}/bin/pictureqvr", f"{NAME}/PictureQVR.bundle/Contents/MacOS/PictureQVR"}
        for path, (mode, _) in self.files.items():
            self.assertEqual(mode & 0o777, 0o755 if path in programs else 0o644, path)

    def test_the_program_needs_nothing_but_the_C_library(self):
        needed = re.findall(r"NEEDED.*\[(.*)\]", output_of("readelf", "--dynamic", self.top / "bin/pictureqvr"))
        self.assertLessEqual(set(needed), {"libc.so.6", "libm.so.6", "ld-linux.so.2"})

    def test_the_program_works_with_both_artefacts(self):
        self.assertEqual(output_of(self.top / "bin/pictureqvr", "--version"), f"pictureqvr {VERSION}\n")
        for artefact in ("mac", "linux"):
            result = self.empty / f"{artefact}.png"
            program = [self.top / "bin/pictureqvr", "--artefact", artefact]
            output_of(*program, "apply", "InvertQVR", "photo.png", result, folder=self.empty)
            with Image.open(self.empty / "photo.png") as photo, Image.open(result) as negative:
                self.assertEqual(negative.convert("RGB").tobytes(), ImageChops.invert(photo).tobytes())

    def test_nothing_is_wrong_with_either_artefact(self):
        for artefact in ("PictureQVR.bundle", "lib/pictureqvr/PictureQVR.so"):
            output_of(self.top / "bin/pictureqvr", "check", self.top / artefact, folder=self.empty)

    def test_the_program_works_where_it_is_copied_to(self):
        prefix = self.empty / "usr local"
        for name in ("bin", "lib", "share"):
            shutil.copytree(self.top / name, prefix / name)
        self.assertIn("InvertQVR", output_of(prefix / "bin/pictureqvr", "list", folder=self.empty))

    def test_the_program_makes_the_demo(self):
        program = self.top / "bin/pictureqvr"
        output_of(program, "demo", "--photo", "photo.png", "--sound", SOUND, "--out", "page", folder=self.empty)
        self.assertIn(VERSION, (self.empty / "page/index.html").read_text())

    def test_commands_of_the_page_on_installing_work(self):
        shutil.copy(self.empty / "photo.png", self.top / "holiday.jpg")
        text = (self.top / "INSTALL.md").read_text()
        commands = re.findall(r"^(?:bin/pictureqvr|sha256sum) .*", text, re.MULTILINE)
        self.assertGreaterEqual(len(commands), 3)
        for command in commands:
            output_of("sh", "-c", command, folder=self.top)
        for row in re.findall(r"^\| (`.*`) \|", text, re.MULTILINE):
            for path in re.findall("`([^`]*)`", row):
                self.assertTrue((self.top / path).exists(), path)

    def test_the_manual_page_and_completions_are_of_this_program(self):
        program = self.top / "bin/pictureqvr"
        for path, arguments in {
            "man/man1/pictureqvr.1": ["man"],
            "bash-completion/completions/pictureqvr": ["completion", "bash"],
            "zsh/site-functions/_pictureqvr": ["completion", "zsh"],
            "fish/vendor_completions.d/pictureqvr.fish": ["completion", "fish"],
        }.items():
            self.assertEqual((self.top / "share" / path).read_text(), output_of(program, *arguments))
        self.assertIn(VERSION, output_of(program, "man"))

    def test_pages_are_whole_and_tell_the_version(self):
        pages = self.top / DOCUMENTS / "html"
        self.assertEqual(list(faults(pages)), [])
        for page in pages.rglob("*.html"):
            self.assertRegex(page.read_text(), f"<title>.*PictureQVR {re.escape(VERSION)}", page.name)

    def test_notices_name_all_that_is_compiled_in(self):
        # Headers of the C library, the kernel and the compiler, and one that the standard library looks at if it is there.
        not_part = {"libc6-dev", "libc6-dev-i386", "linux-libc-dev", "libclang-common-14-dev", "libtbb-dev"}
        libraries = "|".join(("cli/CMakeFiles/pictureqvr", "script/", "media/", "host/"))
        def texts(packages):
            return {pathlib.Path(f"/usr/share/doc/{package}/copyright").resolve() for package in packages}

        headers = set()
        for entry in output_of("ninja", "-C", BUILD, "-t", "deps").split("\n\n"):
            if re.match(libraries, entry):
                headers.update(re.findall(r"^ +(/usr/.*)", entry, re.MULTILINE))
        owners = output_of("dpkg", "-S", *{pathlib.Path(path).resolve() for path in headers})
        packages = {re.split("[:,]", line)[0] for line in owners.splitlines()} - not_part
        notices = (self.top / DOCUMENTS / "third-party-notices.txt").read_text()
        in_program = notices[: notices.index("\nIn the pages:\n")]
        self.assertEqual(texts(packages), texts(re.findall(r"^([a-z0-9+-]+): ", in_program, re.MULTILINE)))


if __name__ == "__main__":
    unittest.main()
