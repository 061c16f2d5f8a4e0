#!/usr/bin/env python3
"""Do the pages' checks notice what they are there for?

Builds a small project that is right, and one in which everything is wrong. In place of the plug-in both have a script that
declares a few methods, so that nothing needs to be built for these tests.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"

PROGRAM = r"""#!/usr/bin/env python3
import pathlib, re, shutil, sys

here = pathlib.Path(__file__).parent
if sys.argv[1] == "--version":
    print("pictureqvr 1.2.3")
elif sys.argv[1] == "list":
    print((here / "registered.json").read_text())
else:
    text = pathlib.Path(sys.argv[2]).read_text()
    for line in text.splitlines():
        if line.startswith("Fail"):
            sys.exit("line 2: nothing is called Fail")
        if printed := re.fullmatch(r'Print "(.*)"', line):
            print(printed[1])
        for name in re.findall(r'Save\(GetFolderItem\("([^"]*)"', line):
            shutil.copy(here / "pixel.ppm", name)
"""

CONFIGURATION = f"""
import pathlib, runpy
here = pathlib.Path(__file__).parent
globals().update(runpy.run_path({str(DOCS / "conf.py")!r}))
html_static_path = [{str(DOCS / "static")!r}]
templates_path = [{str(DOCS / "templates")!r}]
qvr_program = str(here / "../pictureqvr")
qvr_work = str(here / "../work")
qvr_photo = qvr_sound = str(here / "../pixel.ppm")
qvr_costs = str(here / "../costs.json")
qvr_cost_page = "index"
qvr_examples = str(here / "../examples")
"""

SAVE = 'Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))\nphoto.{0}.Save(GetFolderItem("{0}.png"))\n'
INDEX = """
# Start

See `DoubleQVR` and [its section](page.md#halveqvr).

```{toctree}
page
```
"""
PAGE = """
# Page

## HalveQVR

```{declarations} HalveQVR
```
```{cost} HalveQVR
```
```{example} HalveQVR
:alt: half of a pixel
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 1 2 3
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 4, 5 | 6, 7
start: 6, 7
label: Two numbers
```

## DoubleQVR

```{declarations} DoubleQVR
```

### Details

```{cost} DoubleQVR
```
```{example} DoubleQVR
```
"""
RIGHT = {
    "docs/index.md": INDEX,
    "docs/page.md": PAGE,
    "examples/HalveQVR.bas": "' Shows: a half.\n" + SAVE.format("HalveQVR"),
    "examples/DoubleQVR.bas": "' Shows: a word.\nPrint \"twice\"\n' Prints: twice\n",
}

FAULTS = """
# Faults

See [nothing](gone.md), [no part](page.md#gone), [none here](#gone) and ![nothing](gone.png).

<img src="https://example.org/a.png" alt="a" width="1" height="1">
<img src="_static/pages.css">
<a href="page.html#lost">lost</a> <a href="lost.html">lost</a>

## HalveQVR

```{declarations} HalveQVR
```

## A wrong title

```{declarations} TripleQVR
```
```{cost} TripleQVR
```

## GhostQVR

```{declarations} NobodyQVR
```

## Examples

```{example} missing
```
```{example} headless
```
```{example} failing
```
```{example} lying
```
```{example} mute
```
```{example} HalveQVR
:alt-2: a picture that is not there
```

## Sliders

```{slider} HalveQVR
values: 1 2 3
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 1 2 3
colour: red
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 1 2 3
start: 4
```
```{slider} HalveQVR
call: photo.HalveQVR(1) + {value}
values: 1 2 3
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 1 2 3
program: failing
```
```{slider} HalveQVR
call: photo.HalveQVR({value})
values: 1 2 3
program: mute
```
"""
WRONG = RIGHT | {
    "docs/index.md": INDEX.replace("page\n", "page\nfaults\n"),
    "docs/faults.md": FAULTS,
    "examples/headless.bas": "Print 1\n",
    "examples/failing.bas": "' Shows: nothing.\nFail\n",
    "examples/lying.bas": "' Shows: a number.\nPrint \"1\"\n' Prints: 2\n",
    "examples/mute.bas": "' Shows: nothing.\n",
    "examples/unseen.bas": "' Shows: a number.\nPrint \"1\"\n' Prints: 1\n",
}
COMPLAINTS = r"""
/docs/faults.md: WARNING: the section of HalveQVR has no cost
/docs/faults.md: WARNING: the section of HalveQVR has no example
/docs/faults.md: WARNING: the section of TripleQVR has no cost
/docs/faults.md: WARNING: the section of TripleQVR has no example
/docs/faults.md:15: WARNING: the section of TripleQVR is called A wrong title
/docs/faults.md:19: ERROR: nothing that was measured calls TripleQVR
/docs/faults.md:22: WARNING: the section GhostQVR explains nothing that is declared
/docs/faults.md:24: ERROR: nothing is declared under the name NobodyQVR
/docs/faults.md:29: ERROR: there is no usable example missing: [Errno 2] No such file or directory: '/docs/../examples/missing.bas'
/docs/faults.md:31: ERROR: there is no usable example headless: headless.bas does not begin with "' Shows:"
/docs/faults.md:33: ERROR: failing.bas does not run: line 2: nothing is called Fail
/docs/faults.md:35: ERROR: lying.bas prints ['1'] where it says ['2']
/docs/faults.md:37: ERROR: mute.bas neither prints anything nor saves mute.png
/docs/faults.md:39: ERROR: HalveQVR saves no picture for alt-2
/docs/faults.md:45: ERROR: a slider needs a call with {value}, and values
/docs/faults.md:48: ERROR: a slider does not understand "colour: red"
/docs/faults.md:4: WARNING: 'myst' reference target not found: #gone
/docs/faults.md:4: WARNING: 'myst' reference target not found: gone.md
/docs/faults.md:4: WARNING: 'myst' reference target not found: page.md#gone
/docs/faults.md:4: WARNING: image file not readable: gone.png
/docs/faults.md:53: ERROR: the slider does not come to 4, where it is to start
/docs/faults.md:58: ERROR: the slider needs a label, since its call does not tell which parameter is changed
/docs/faults.md:62: ERROR: the slider's program does not run: line 2: nothing is called Fail
/docs/faults.md:67: ERROR: the slider shows nothing at 1
/docs/page.md:4: WARNING: there is a second section of HalveQVR
WARNING: LonelyQVR is declared and has no section
WARNING: faults.html: _static/pages.css has no alt
WARNING: faults.html: _static/pages.css has no height
WARNING: faults.html: _static/pages.css has no width
WARNING: faults.html: gone.png does not exist
WARNING: faults.html: gone.png has no height
WARNING: faults.html: gone.png has no width
WARNING: faults.html: https://example.org/a.png would be loaded from the network
WARNING: faults.html: lost.html does not exist
WARNING: faults.html: page.html#lost has no such anchor
WARNING: headless.bas is shown on no page
WARNING: unseen.bas is shown on no page
"""


def declared(name):
    text = f"{name}(Amount as double) as picture"
    return {
        "name": name,
        "declaration": text,
        "parameters": [{"name": "Amount", "type": "double"}],
        "result": "picture",
        "assignable": False,
    }


class Checks(unittest.TestCase):
    maxDiff = None

    def build(self, files, names):
        """Builds a project and gives the exit status and the complaints."""
        folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, folder)
        rows = [{"row": name, "calls": [name], "times": {"8": "1.50"}} for name in ("HalveQVR", "DoubleQVR")]
        registered = {
            "classes": [],
            "extensions": [{"name": "Picture", "methods": [declared(name) for name in names]}],
            "globals": [],
        }
        support = {
            "docs/conf.py": CONFIGURATION,
            "pictureqvr": PROGRAM,
            "pixel.ppm": "P3 2 1 255\n255 0 0  0 0 255\n",
            "costs.json": json.dumps({"command": "bench", "where": " on a day", "rows": rows}),
            "registered.json": json.dumps(registered),
        }
        for name, text in (files | support).items():
            (folder / name).parent.mkdir(exist_ok=True)
            (folder / name).write_text(text)
        (folder / "pictureqvr").chmod(0o755)
        command = ["sphinx-build", "-W", "--keep-going", "-n", "-q", str(folder / "docs"), str(folder / "out")]
        done = subprocess.run(command, capture_output=True, text=True)
        self.page = folder / "out/page.html"
        return done.returncode, sorted(done.stderr.replace(str(folder), "").splitlines())

    def test_what_is_right_passes(self):
        self.assertEqual(self.build(RIGHT, ["HalveQVR", "DoubleQVR"]), (0, []))
        text = self.page.read_text()
        pieces = (
            'alt="half of a pixel"',
            "HalveQVR(Amount as double) as picture",
            "1.50",
            "twice",
            'data-label="Amount" data-start="1"',
            'data-value="3"',
            'data-label="Two numbers" data-start="1"',
            "photo.HalveQVR(6, 7)",
        )
        for piece in pieces:
            self.assertIn(piece, re.sub("<(?!img|div)[^>]*>", "", text))
        self.assertIn('href="page.html#doubleqvr"><code', self.page.with_name("index.html").read_text())

    def test_what_is_wrong_is_named(self):
        status, complaints = self.build(WRONG, ["HalveQVR", "DoubleQVR", "TripleQVR", "LonelyQVR"])
        self.assertEqual(status, 1)
        self.assertEqual(complaints, sorted(COMPLAINTS.strip().splitlines()))


if __name__ == "__main__":
    unittest.main()
