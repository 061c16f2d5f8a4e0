#!/usr/bin/env python3
"""Changes one place of the plug-in at a time and lists the changes that no test notices.

Each change is made in a copy of the sources, built as the shared object, and tested by the test program of the ordinary
build: first by the suites named like the file, then by all others. A change after which the shared object is the same is
none. A survivor is either caught by a new test or explained in survivors.txt beside this file.
"""

import argparse
import concurrent.futures
import dataclasses
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "out" / "mutate"
TESTS = ROOT / "out" / "linux-i386" / "pictureqvr_tests"
EXPLAINED = pathlib.Path(__file__).with_name("survivors.txt")
# The bundle is not built anew; the command line runs with the ordinary build's own shared object.
NOT_CONCERNED = "MacBundle/*:*Cli*"
SLOW = "*EveryColour*"
SLOWER_THAN_ALL_TESTS = 3

OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"], "%": ["/"], "<<": [">>"], ">>": ["<<"],
    "&": ["|"], "|": ["&"], "^": ["&"], "&&": ["||"], "||": ["&&"],
    "+=": ["-="], "-=": ["+="], "*=": ["+="], "|=": ["&="], "&=": ["|="], "<<=": [">>="], ">>=": ["<<="],
}
# The layout has spaces around binary operators, and none inside of templates' brackets.
BINARY = re.compile(r"(?<=[\w)\]] )(?:" + "|".join(map(re.escape, sorted(OPERATORS, key=len, reverse=True))) + r")(?= )")
STEP = re.compile(r"\+\+|--")
NUMBER = re.compile(r"(?<![\w.])(?:0x[0-9A-Fa-f]+|\d+\.\d+|\d+)(?=[uU]?(?![\w.]))")
WORD = re.compile(r"\b(?:true|false|minimum|maximum)\b")
SWAPPED = {"true": "false", "false": "true", "minimum": "maximum", "maximum": "minimum"}
CONDITION = re.compile(r"(?<=\bif \()(?![^;]*;)(.+)(?=\)$)")
CALL = re.compile(r"^\s*(?!return\b|delete\b|using\b|typedef\b|static_assert\b)[\w:.>\[\]-]+\([^;]*\);$")
NOT_CODE = re.compile(r'//.*|"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)\'|/\*.*?\*/')
LEFT_ALONE = re.compile(r"^\s*(?:#|using |namespace |template|asm\(|static_assert|typedef )")


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    before: str
    after: str

    def key(self):
        return f"{self.file}: {self.before} => {self.after}"


def mutants_of(tree, path):
    """Every change that this script knows how to make in a file."""
    found = []
    for number, line in enumerate((tree / path).read_text().splitlines()):
        code = NOT_CODE.sub(lambda match: " " * len(match.group()), line)
        if LEFT_ALONE.match(code):
            continue

        def change(start, end, text):
            found.append(Mutant(path, number, line.strip(), (line[:start] + text + line[end:]).strip()))

        for match in BINARY.finditer(code):
            for other in OPERATORS[match.group()]:
                change(*match.span(), other)
        for match in STEP.finditer(code):
            change(*match.span(), "--" if match.group() == "++" else "++")
        for match in NUMBER.finditer(code):
            text = match.group()
            change(*match.span(), repr(float(text) + 1) if "." in text else str(int(text, 0) + 1))
        for match in WORD.finditer(code):
            change(*match.span(), SWAPPED[match.group()])
        if match := CONDITION.search(code):
            change(*match.span(), f"!({line[match.start():match.end()]})")
        if CALL.match(code):
            change(len(line) - len(line.lstrip()), len(line), ";")
    return found


def draw(tree, seed):
    """Every mutant there is, in a random order that goes through all files again and again."""
    files = sorted(str(path.relative_to(tree)) for path in (tree / "src").rglob("*") if path.suffix in (".h", ".cpp"))
    chance = random.Random(seed)
    left = {file: mutants for file in files if (mutants := mutants_of(tree, file))}
    for mutants in left.values():
        chance.shuffle(mutants)
    while left:
        for file in chance.sample(sorted(left), len(left)):
            yield left[file].pop()
            if not left[file]:
                del left[file]


class Worker:
    """A copy of the sources with a build folder of its own."""

    def __init__(self, name):
        self.folder = WORK / name
        self.artefact = self.folder / "made" / "PictureQVR.so"
        shutil.rmtree(self.folder, ignore_errors=True)
        for part in ("src", "platform"):
            shutil.copytree(ROOT / part, self.folder / part)
        shutil.copy(ROOT / "CMakeLists.txt", self.folder)
        # What a change makes the compiler warn of is for the tests to notice.
        subprocess.run(
            ["cmake", "-S", self.folder, "-B", self.folder / "build", "-G", "Ninja", "--log-level=WARNING",
             "-DCMAKE_BUILD_TYPE=Release", "-DPICTUREQVR_UNITY=OFF",
             f"-DCMAKE_TOOLCHAIN_FILE={ROOT}/platform/linux-i386.cmake",
             f"-DPICTUREQVR_OUTPUT_DIRECTORY={self.artefact.parent}"],
            env={**os.environ, "CXXFLAGS": "-w"}, check=True, stdout=subprocess.DEVNULL)

    def build(self):
        made = subprocess.run(["cmake", "--build", self.folder / "build", "--parallel", "1", "--target", "PictureQVR"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return made.returncode == 0

    def test(self, filters, timeout):
        """The name of a test that fails, or None."""
        try:
            run = subprocess.run(
                [TESTS, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={filters}"], timeout=timeout,
                env={**os.environ, "PICTUREQVR_SHARED_OBJECT": str(self.artefact)},
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return "a test that did not end"
        if run.returncode == 0:
            return None
        failed = re.search(rb"\[  FAILED  \] (\S+?),? ", run.stdout)
        return failed.group(1).decode() if failed else f"a crash ({run.returncode})"


def suites_like(file, suites):
    """The suites with a word in their names that begins like one in the file's: "Tint" for "tinting.cpp"."""
    words = [word[:4] for word in re.split(r"[_.]", pathlib.Path(file).stem) if len(word) > 2]
    return [suite for suite in suites if any(word in suite.lower() for word in words)]


def listed_suites():
    lines = subprocess.run([TESTS, "--gtest_list_tests", f"--gtest_filter=-{NOT_CONCERNED}"], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return [line.split()[0] for line in lines if line and not line.startswith(" ")]


def explained():
    """The survivors that cannot matter, with their reasons: blocks of two lines."""
    lines = [line for line in EXPLAINED.read_text().splitlines() if line and not line.startswith("#")]
    return dict(zip(lines[0::2], (line.strip() for line in lines[1::2])))


def main():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.splitlines()[0])
    parser.add_argument("count", nargs="?", type=int, default=150, help="how many changes are tested (150)")
    parser.add_argument("seed", nargs="?", type=int, default=1, help="which ones are drawn (1)")
    parser.add_argument("--only", metavar="TEXT", default="", help="only in files with this in their name")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many at a time")
    options = parser.parse_args()
    if options.count < 1 or options.jobs < 1:
        parser.error("COUNT and --jobs start at 1")

    suites = listed_suites()
    quick = f"*-{NOT_CONCERNED}:{SLOW}"
    everything = f"*-{NOT_CONCERNED}"
    workers = [Worker(f"worker{index}") for index in range(options.jobs)]
    print(f"Testing the unchanged plug-in with {len(suites)} suites", flush=True)
    start = time.monotonic()
    failed = workers[0].test(everything, None) if workers[0].build() else "its build"
    if failed:
        sys.exit(f"dev: the unchanged plug-in fails {failed}")
    timeout = SLOWER_THAN_ALL_TESTS * (time.monotonic() - start) + 60
    with concurrent.futures.ThreadPoolExecutor() as pool:
        list(pool.map(Worker.build, workers))
    unchanged = {worker: worker.artefact.read_bytes() for worker in workers}

    lock = threading.Lock()
    source = (mutant for mutant in draw(workers[0].folder, options.seed) if options.only in mutant.file)
    reasons = explained()
    survivors = []
    counts = {"killed": 0, "survived": 0, "not compiled": 0, "no change": 0}

    def work(worker):
        while True:
            with lock:
                if counts["killed"] + counts["survived"] >= options.count or (mutant := next(source, None)) is None:
                    return
            path = worker.folder / mutant.file
            original = path.read_text()
            lines = original.splitlines(keepends=True)
            lines[mutant.line] = lines[mutant.line].replace(mutant.before, mutant.after)
            path.write_text("".join(lines))
            by = None
            if not worker.build():
                outcome = "not compiled"
            elif worker.artefact.read_bytes() == unchanged[worker]:
                outcome = "no change"
            else:
                near = suites_like(mutant.file, suites)
                stages = [":".join(suite + "*" for suite in near) + f"-{SLOW}"] if near else []
                by = next(filter(None, (worker.test(stage, timeout) for stage in [*stages, quick, SLOW])), None)
                outcome = "killed" if by else "survived"
            path.write_text(original)
            with lock:
                counts[outcome] += 1
                if outcome == "survived":
                    survivors.append(mutant)
                done = counts["killed"] + counts["survived"]
                print(f"[{done}/{options.count}] {outcome}{' by ' + by if by else ''}: "
                      f"{mutant.file}:{mutant.line + 1}: {mutant.before} => {mutant.after}", flush=True)

    with concurrent.futures.ThreadPoolExecutor() as pool:
        for done in [pool.submit(work, worker) for worker in workers]:
            done.result()

    tested = counts["killed"] + counts["survived"]
    unexplained = [mutant for mutant in survivors if mutant.key() not in reasons]
    print(f"\n{counts['killed']} of {tested} changes were noticed by the tests; {len(survivors)} survived, {len(unexplained)} "
          f"of them unexplained. {counts['not compiled']} more did not compile, and {counts['no change']} made no difference "
          "to the machine code.")
    for mutant in survivors:
        print(f"{mutant.key()}\n    {reasons.get(mutant.key(), 'UNEXPLAINED')}")
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
