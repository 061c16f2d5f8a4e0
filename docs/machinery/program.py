"""The program `pictureqvr`, which has the plug-in in a stand-in host and runs programs there."""

from __future__ import annotations

import json
import subprocess
from pathlib import Path
from typing import Any

SECONDS_PER_RUN = 60


class RunError(Exception):
    """What the program said when it could not do its work."""


class Program:
    """Runs `pictureqvr`, which loads the Mac bundle where that is built."""

    def __init__(self, path: Path) -> None:
        self.path = path

    def version(self) -> str:
        """The plug-in's version, such as 1.0.0."""
        return self._output(["--version"]).split()[-1]

    def registered(self) -> dict[str, Any]:
        """Everything that the plug-in registers."""
        registered: dict[str, Any] = json.loads(self._output(["list", "--json"]))
        return registered

    def run(self, source: Path, folder: Path, arguments: list[str] | None = None) -> list[str]:
        """Runs a program of the host's language in a folder and gives the lines that it prints."""
        return self._output(["run", str(source), *(arguments or [])], folder).splitlines()

    def _output(self, arguments: list[str], folder: Path | None = None) -> str:
        command = [str(self.path), *arguments]
        try:
            done = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=SECONDS_PER_RUN)
        except (OSError, subprocess.TimeoutExpired) as error:
            raise RunError(str(error)) from error
        if done.returncode != 0:
            raise RunError(done.stderr.strip() or f"{self.path.name} ended with {done.returncode}")
        return done.stdout
