"""Where things are, read once for a build."""

from __future__ import annotations

import dataclasses
import functools
from pathlib import Path

from sphinx.config import Config

from .catalogue import Catalogue
from .examples import Workshop
from .program import Program


@dataclasses.dataclass(frozen=True)
class Setting:
    """What directives and checks work with."""

    program: Program
    catalogue: Catalogue
    workshop: Workshop
    examples: Path

    @staticmethod
    def of(config: Config) -> Setting:
        """The setting that a project's configuration describes."""
        return _setting(*(Path(config[f"qvr_{name}"]) for name in ("program", "work", "photo", "sound", "examples")))


@functools.lru_cache(maxsize=1)
def _setting(program_path: Path, work: Path, photo: Path, sound: Path, examples: Path) -> Setting:
    program = Program(program_path)
    workshop = Workshop(program, work, photo, sound)
    return Setting(program, Catalogue(program.registered()), workshop, examples)
