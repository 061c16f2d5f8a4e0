#!/usr/bin/env python3
"""What calls cost. Run as a program, makes of what `pictureqvr_bench --json` prints the file that the pages read."""

from __future__ import annotations

import dataclasses
import json
import sys
from pathlib import Path
from typing import Any


@dataclasses.dataclass(frozen=True)
class Cost:
    """One row of the benchmark: what it takes in words, by the number of pixels at a time."""

    row: str
    calls: tuple[str, ...]
    times: dict[int, str]


class Costs:
    """All rows, and how they were measured."""

    def __init__(self, path: Path) -> None:
        data: dict[str, Any] = json.loads(path.read_text(encoding="utf-8"))
        self.command: str = data["command"]
        self.where: str = data["where"]
        self.rows = [
            Cost(row["row"], tuple(row["calls"]), {int(lanes): time for lanes, time in row["times"].items()})
            for row in data["rows"]
        ]

    def of(self, name: str) -> list[Cost]:
        """The rows that call a method or run a filter."""
        return [row for row in self.rows if name.lower() in map(str.lower, row.calls)]


def _time(timing: dict[str, Any]) -> str:
    # What moves no pixels is measured in calls.
    if "timeOverMemcpy" in timing:
        return f"{timing['timeOverMemcpy']['best']:.2f}"
    return f"{1000 / timing['millionsPerSecond']['best']:.0f} ns a call"


def reduced(measured: dict[str, Any]) -> dict[str, Any]:
    """What pages show of what was measured."""
    rows = [
        {
            "row": row["row"],
            "calls": row["calls"],
            "times": {str(timing["lanes"]): _time(timing) for timing in row["plugIn"]},
        }
        for row in measured["rows"]
    ]
    _, command, where = measured["run"].split("`")
    size = max((row["width"], row["height"]) for row in measured["rows"])
    where += f", artefact {measured['artefact']}, {size[0]} x {size[1]} pixels"
    return {"command": command, "where": where, "rows": rows}


def main() -> None:
    """Reads and writes the standard streams."""
    document = reduced(json.load(sys.stdin))
    lines = ",\n    ".join(json.dumps(row) for row in document["rows"])
    head = "\n".join(f'  "{key}": {json.dumps(document[key])},' for key in ("command", "where"))
    print(f'{{\n{head}\n  "rows": [\n    {lines}\n  ]\n}}')


if __name__ == "__main__":
    main()
