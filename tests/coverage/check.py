#!/usr/bin/env python3
"""Compares what of the plug-in has never run with the list of what cannot.

Usage: check.py SOURCE_FOLDER LIST < EXPORT, what llvm-cov exports. What the instantiations of a template have run counts
together. A line of the list is "FILE | WHAT | CODE | REASON": WHAT is "code", or the outcome that a condition never has,
"true" or "false". Fails when anything else has not run, and when something listed has.
"""

import collections
import json
import pathlib
import sys

CODE_REGION = 0


class Sources:
    """The text of pieces of code, as the list has it."""

    def __init__(self, folder):
        self.folder = folder
        self.lines = {}

    def has(self, file):
        return file.is_relative_to(self.folder)

    def whole_lines(self, file, span):
        """The lines of a piece of code; not its first one when it begins inside of it."""
        first, begin, last, _ = span
        lines = self.lines.setdefault(file, file.read_text().splitlines())
        inside = lines[first - 1][: begin - 1].strip() != ""
        return {(file, line) for line in range(first + inside, last + 1) if lines[line - 1].strip() not in ("", "{", "}")}

    def piece(self, file, what, span):
        lines = self.lines.setdefault(file, file.read_text().splitlines())
        line, begin, last, end = span
        own = lines[line - 1].strip()
        text = own
        if own == "{":
            # A block is known by its head.
            while lines[line - 1].strip() == "{":
                line -= 1
            text = lines[line - 1].strip()
        elif line == last and lines[line - 1][begin - 1 : end - 1] != own.rstrip(";"):
            text = f"{lines[line - 1][begin - 1 : end - 1]} IN {own}"
        elif what == "code":
            # A statement of its own is known by the line before it, too.
            text = f"{lines[line - 2].strip()} {own}"
        return str(file.relative_to(self.folder)), what, text


def never_run(functions, sources):
    """Pieces of code and outcomes of conditions that have not run, with their lines; and how many have not, of all."""
    regions = {}
    outcomes = collections.defaultdict(lambda: [0, 0])
    for function in functions:
        files = [pathlib.Path(name) for name in function["filenames"]]
        for *span, count, file, _, kind in function["regions"]:
            if kind == CODE_REGION and sources.has(files[file]):
                # Where a constant condition leaves a statement out, its piece ends after the first word.
                piece = regions.setdefault((files[file], tuple(span[:2])), [0, ()])
                piece[0] += count
                piece[1] = max(piece[1], tuple(span[2:]))
        for *span, true, false, file, _, _ in function["branches"]:
            if sources.has(files[file]):
                outcomes[files[file], tuple(span)][0] += true
                outcomes[files[file], tuple(span)][1] += false

    never = [(file, begin + end) for (file, begin), (count, end) in regions.items() if count == 0]
    found = []
    for file, span in never:
        around = (other for other_file, other in never if other_file == file and other != span)
        if not any(other[:2] <= span[:2] and span[2:] <= other[2:] for other in around):
            found.append((sources.piece(file, "code", span), span[0]))
    sides = 0
    for (file, span), counts in outcomes.items():
        # A condition with neither outcome is a constant, or belongs to code that has not run.
        if any(counts):
            sides += 2
            if not all(counts):
                found.append((sources.piece(file, "false" if counts[0] else "true", span), span[0]))

    def lines_of(pieces):
        return set().union(*(sources.whole_lines(file, span) for file, span in pieces))

    all_lines = lines_of((file, begin + end) for (file, begin), (_, end) in regions.items())
    numbers = {"Lines": (len(all_lines), len(lines_of(never))), "Pieces of code": (len(regions), len(never))}
    numbers["Outcomes of conditions"] = (sides, sum(what != "code" for (_, what, _), _ in found))
    return found, numbers


def listed(path):
    return [tuple(line.split(" | ")) for line in path.read_text().splitlines() if line and not line.startswith("#")]


def main():
    folder, known_path = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    data = json.load(sys.stdin)["data"][0]
    found, numbers = never_run(data["functions"], Sources(folder))
    for name, (count, missing) in numbers.items():
        print(f"{name}: {count - missing} of {count} have run ({100 * (count - missing) / count:.2f} %)")
    known = [entry[:3] for entry in listed(known_path)]
    print(f"Explained in {known_path.name}: {len(known)}")
    unexplained = collections.Counter(key for key, _ in found) - collections.Counter(known)
    for key, line in sorted(found, key=lambda item: (item[0][0], item[1])):
        if unexplained[key] > 0:
            print(f"{key[0]}:{line}: not reached: {' | '.join(key)}")
    stale = collections.Counter(known) - collections.Counter(key for key, _ in found)
    for key in sorted(stale):
        print(f"{known_path.name}: reached now, or gone: {' | '.join(key)}")
    return 1 if unexplained or stale else 0


if __name__ == "__main__":
    sys.exit(main())
