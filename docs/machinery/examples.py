"""Runs the programs of examples/ and those that sliders are made of."""

from __future__ import annotations

import dataclasses
import os
import re
import shutil
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from PIL import Image, ImageStat

from .program import Program

PHOTO = "photo.jpg"
SOUND = "speech.wav"
PHOTO_WIDTH = 480
SHOWS = "' Shows:"
PRINTS = "' Prints:"


@dataclasses.dataclass(frozen=True)
class Example:
    """A program of examples/, taken apart."""

    path: Path
    shows: str
    code: str
    prints: tuple[str, ...]

    @staticmethod
    def read(path: Path) -> Example:
        """Takes off the line that says what the program shows, and those that say what it prints."""
        lines = path.read_text(encoding="utf-8").splitlines()
        if not lines or not lines[0].startswith(SHOWS):
            raise ValueError(f'{path.name} does not begin with "{SHOWS}"')
        prints = tuple(line[len(PRINTS) :].removeprefix(" ") for line in lines if line.startswith(PRINTS))
        code = "\n".join(line for line in lines[1:] if not line.startswith(PRINTS)).strip("\n")
        return Example(path, lines[0][len(SHOWS) :].strip(), code, prints)


@dataclasses.dataclass(frozen=True)
class Outcome:
    """What a program printed, and the pictures that it saved."""

    printed: list[str]
    before: Path | None
    pictures: list[Path]


@dataclasses.dataclass(frozen=True)
class Frame:
    """One run of a slider's program, which is a file or a text."""

    program: Path | str
    arguments: list[str]


class Workshop:
    """A folder in which programs run, each in a folder of its own with the photograph and the sound."""

    def __init__(self, program: Program, folder: Path, photo: Path, sound: Path) -> None:
        self.program = program
        self.folder = folder
        folder.mkdir(parents=True, exist_ok=True)
        self.photo = folder / PHOTO
        self.sound = folder / SOUND
        with Image.open(photo) as image:
            height = max(1, round(image.height * PHOTO_WIDTH / image.width))
            image.convert("RGB").resize((PHOTO_WIDTH, height)).save(self.photo, quality=92)
        shutil.copyfile(sound, self.sound)

    def run_example(self, example: Example) -> Outcome:
        """Runs a program of examples/; its pictures bear its name, and so does one that it makes itself to start from."""
        name = example.path.stem
        folder = self._fresh_folder(name)
        printed = self.program.run(example.path, folder)
        before = folder / f"{name}-before.png"
        if not before.exists():
            before = self.photo
        pictures = [path for path in folder.glob("*.png") if re.fullmatch(re.escape(name) + r"(-\d+)?", path.stem)]
        pictures.sort(key=lambda path: (len(path.stem), path.stem))
        return Outcome(printed, before if PHOTO in example.code or before != self.photo else None, pictures)

    def run_frames(self, name: str, frames: list[Frame]) -> list[Outcome]:
        """Runs programs side by side, each of which may save a picture."""
        folder = self._fresh_folder(name)

        def run(number: int, frame: Frame) -> Outcome:
            place = self._fresh_folder(f"{name}/{number}")
            source = frame.program
            if isinstance(source, str):
                text, source = source, place / "frame.bas"
                source.write_text(text, encoding="utf-8")
            printed = self.program.run(source, place, frame.arguments)
            picture = place / f"{source.stem}.png"
            return Outcome(printed, None, [picture.rename(folder / f"{name}-{number}.png")] if picture.exists() else [])

        with ThreadPoolExecutor(os.cpu_count()) as pool:
            return list(pool.map(run, range(1, len(frames) + 1), frames))

    def _fresh_folder(self, name: str) -> Path:
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        for shared in (self.photo, self.sound):
            os.link(shared, folder / shared.name)
        return folder


def describe(picture: Path, photo: Path) -> str:
    """A picture in words, for those who cannot see it: its size, its average colour and how that differs."""
    with Image.open(picture) as image, Image.open(photo) as before:
        red, green, blue = (round(mean) for mean in ImageStat.Stat(image.convert("RGB")).mean)
        difference = ImageStat.Stat(image.convert("L")).mean[0] - ImageStat.Stat(before.convert("L")).mean[0]
        size = f"{image.width} by {image.height} pixels"
    much = 25
    amount = "" if abs(difference) < 1 else "much " if abs(difference) > much else "a little "
    comparison = f"{amount}{'lighter' if difference > 0 else 'darker'} than" if amount else "as light as"
    return f"{size}, on average red {red}, green {green}, blue {blue}, {comparison} the photograph"
