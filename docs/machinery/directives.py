"""The directives of the reference: declarations, example, slider and cost."""

from __future__ import annotations

import re
from pathlib import Path

from docutils import nodes
from docutils.parsers.rst import directives
from sphinx import addnodes
from sphinx.application import Sphinx
from sphinx.util.docutils import SphinxDirective

from .catalogue import Entry
from .costs import Cost, Costs
from .domain import domain_of
from .examples import PHOTO, Example, Frame, Outcome, describe
from .nodes import Part, Slider, SliderFrame, picture
from .program import RunError
from .setting import Setting

LANGUAGE = "vb"


class PlugInDirective(SphinxDirective):
    """Has the name that it is about as argument."""

    required_arguments = 1

    @property
    def setting(self) -> Setting:
        """What the project's configuration describes."""
        return Setting.of(self.config)

    @property
    def page_folder(self) -> Path:
        """Where the page's source lies."""
        return Path(self.env.doc2path(self.env.docname)).parent

    def entry(self) -> Entry:
        """What is declared under the name."""
        entry = self.setting.catalogue.find(self.arguments[0])
        if entry is None:
            raise self.error(f"nothing is declared under the name {self.arguments[0]}")
        return entry

    def read_example(self, name: str) -> Example:
        """A program of examples/."""
        path = self.setting.examples / f"{name}.bas"
        try:
            example = Example.read(path)
        except (OSError, ValueError) as error:
            raise self.error(f"there is no usable example {name}: {error}") from error
        domain_of(self.env).page(self.env.docname).examples.add(name)
        self.env.note_dependency(str(path))
        return example

    def code(self, text: str, *classes: str, language: str = LANGUAGE) -> nodes.literal_block:
        """A block of code."""
        return nodes.literal_block(text, text, language=language, classes=list(classes))

    def figure(self, path: Path, alternative: str, *caption: nodes.Node) -> nodes.figure:
        """A picture with a caption."""
        caption_node = nodes.caption("", "", *caption)
        return nodes.figure("", picture(path, self.page_folder, alternative), caption_node)


class Declarations(PlugInDirective):
    """Every overload, as the artefact declares it."""

    def run(self) -> list[nodes.Node]:
        entry = self.entry()
        place = nodes.paragraph("", entry.place, classes=["place"])
        return [Part("", place, self.code("\n".join(entry.declarations())), kind="declarations", name=entry.name)]


class CostDirective(PlugInDirective):
    """What calls cost, beside a memcpy of as many bytes; without a name, how that was measured."""

    required_arguments = 0
    optional_arguments = 1

    def run(self) -> list[nodes.Node]:
        self.env.note_dependency(self.config.qvr_costs)
        costs = Costs(Path(self.config.qvr_costs))
        if not self.arguments:
            return [nodes.paragraph("", "", _literal(costs.command), nodes.Text(costs.where))]
        entry = self.entry()
        rows = costs.of(entry.name)
        if not rows:
            raise self.error(f"nothing that was measured calls {entry.name}")
        page = addnodes.pending_xref(
            "",
            refdomain="std",
            reftype="doc",
            reftarget=f"/{self.config.qvr_cost_page}",
            refexplicit=True,
            refwarn=True,
        )
        page += nodes.inline("", "Cost", classes=["doc"])
        head = nodes.paragraph(
            "", "", nodes.strong("", "", page), nodes.Text(": time over that of a memcpy of as many bytes")
        )
        return [Part("", head, _cost_table(rows), kind="cost", name=entry.name)]


def _cost_table(costs: list[Cost]) -> nodes.table:
    lanes = sorted({lane for cost in costs for lane in cost.times}, reverse=True)
    head = ["Measured"] + [f"{lane} pixels at a time" for lane in lanes]
    rows = [[cost.row] + [cost.times.get(lane, "-") for lane in lanes] for cost in costs]
    return _table([2] + [1] * len(lanes), head, rows)


def _table(widths: list[int], head: list[str], rows: list[list[str]]) -> nodes.table:
    group = nodes.tgroup("", *(nodes.colspec(colwidth=width) for width in widths), cols=len(widths))
    group += nodes.thead("", _row(head))
    group += nodes.tbody("", *map(_row, rows))
    return nodes.table("", group)


def _row(cells: list[str]) -> nodes.row:
    return nodes.row("", *(nodes.entry("", nodes.paragraph("", cell)) for cell in cells))


class ExampleDirective(PlugInDirective):
    """A program of examples/: what it shows, its text, what it prints, and pictures before and after."""

    # One for each picture that a program saves.
    option_spec = {"alt" + number: directives.unchanged_required for number in ("", "-2", "-3", "-4", "-5", "-before")}

    def run(self) -> list[nodes.Node]:
        name = self.arguments[0]
        example = self.read_example(name)
        try:
            outcome = self.setting.workshop.run_example(example)
        except RunError as error:
            raise self.error(f"{example.path.name} does not run: {error}") from error
        if tuple(outcome.printed) != example.prints:
            raise self.error(f"{example.path.name} prints {outcome.printed} where it says {list(example.prints)}")
        if not outcome.pictures and not outcome.printed:
            raise self.error(f"{example.path.name} neither prints anything nor saves {name}.png")
        content = [nodes.paragraph("", "", nodes.strong("", "Example:"), nodes.Text(f" {example.shows}"))]
        content.append(self.code(example.code))
        if outcome.printed:
            content.append(nodes.paragraph("", "Prints:", classes=["prints"]))
            content.append(self.code("\n".join(outcome.printed), "prints", language="text"))
        if outcome.pictures:
            content.append(nodes.container("", *self.figures(name, outcome), classes=["pictures"]))
        return [Part("", *content, kind="example", name=name)]

    def figures(self, name: str, outcome: Outcome) -> list[nodes.figure]:
        """The pictures before and after."""
        workshop = self.setting.workshop
        figures = []
        if outcome.before == workshop.photo:
            figures.append(self.figure(workshop.photo, self.config.qvr_photo_alt, _strong("Before: "), _literal(PHOTO)))
        own = [outcome.before] if outcome.before and outcome.before != workshop.photo else []
        for path in own + outcome.pictures:
            suffix = path.stem.removeprefix(name)
            alternative = self.options.pop("alt" + suffix, None) or describe(path, workshop.photo)
            time = "Before: " if suffix == "-before" else "After: " if suffix == "" else ""
            figures.append(self.figure(path, alternative, _strong(time), _literal(path.name)))
        if self.options:
            raise self.error(f"{name} saves no picture for {', '.join(self.options)}")
        return figures


def _strong(text: str) -> nodes.Node:
    return nodes.strong("", text) if text else nodes.Text("")


def _literal(text: str) -> nodes.literal:
    return nodes.literal(text, text)


class SliderDirective(PlugInDirective):
    """Pictures for several values of one number, as frames of which a script shows one at a time.

    The keys are `call`, with {value} in it, and `values`, separated by spaces or, where they have spaces, by "|". The call
    is made on the photograph, unless there is a `program` in examples/, which takes the value as its argument. `label` is
    what the number is called if not like its parameter; the slider starts at the value `start` or else in the middle; `alt`
    describes the pictures, with {value} in it or not.
    """

    has_content = True
    KEYS = ("call", "values", "program", "label", "start", "alt")

    def run(self) -> list[nodes.Node]:
        entry = self.entry()
        keys = self.keys()
        values = _values(keys["values"])
        start = keys.get("start", values[len(values) // 2])
        if start not in values:
            raise self.error(f"the slider does not come to {start}, where it is to start")
        label = keys.get("label") or _parameter_at_value(entry, keys["call"])
        if label is None:
            raise self.error("the slider needs a label, since its call does not tell which parameter is changed")
        example = self.read_example(keys["program"]) if "program" in keys else None
        name = f"{self.env.docname.replace('/', '-')}-slider-{self.env.new_serialno('slider')}"
        try:
            outcomes = self.setting.workshop.run_frames(
                name, [self.frame(entry, _with_value(keys["call"], value), value, example) for value in values]
            )
        except RunError as error:
            raise self.error(f"the slider's program does not run: {error}") from error
        frames = [self.frame_nodes(keys, value, outcome) for value, outcome in zip(values, outcomes)]
        slider = Slider("", *frames, title=f"{entry.name}: {label}", label=label, start=str(values.index(start)))
        return [slider] + ([self.whole_program(example)] if example else [])

    def keys(self) -> dict[str, str]:
        """The content, "key: value" line by line."""
        keys: dict[str, str] = {}
        for line in self.content:
            key, _, value = (part.strip() for part in line.partition(":"))
            if key not in self.KEYS or not value or key in keys:
                raise self.error(f'a slider does not understand "{line}"')
            keys[key] = value
        if not {"call", "values"} <= keys.keys() or "{value}" not in keys["call"]:
            raise self.error("a slider needs a call with {value}, and values")
        return keys

    def frame(self, entry: Entry, call: str, value: str, example: Example | None) -> Frame:
        """The program of one frame."""
        if example:
            return Frame(example.path, [value])
        shown = (
            f'{call}.Save(GetFolderItem("frame.png"), Picture.SaveAsPNG)' if entry.gives_picture else f"Print {call}"
        )
        return Frame(f'Dim photo As Picture = Picture.Open(GetFolderItem("{PHOTO}"))\n{shown}\n', [])

    def frame_nodes(self, keys: dict[str, str], value: str, outcome: Outcome) -> SliderFrame:
        """What a frame shows: the call, and its picture or what it prints."""
        frame = SliderFrame(value=value)
        for path in outcome.pictures:
            alternative = keys.get("alt", "").replace("{value}", value) or describe(path, self.setting.workshop.photo)
            frame += picture(path, self.page_folder, alternative)
        if outcome.printed:
            frame += self.code("\n".join(outcome.printed), "prints", language="text")
        if not frame.children:
            raise self.error(f"the slider shows nothing at {value}")
        frame += self.code(_with_value(keys["call"], value))
        return frame

    def whole_program(self, example: Example) -> nodes.container:
        """The program behind the calls."""
        said = nodes.paragraph("", f"The whole program, which takes the number as its argument, shows {example.shows}")
        return nodes.container("", said, self.code(example.code), classes=["program"])


def _values(text: str) -> list[str]:
    return [value.strip() for value in (text.split("|") if "|" in text else text.split())]


def _with_value(call: str, value: str) -> str:
    return call.replace("{value}", value)


def _parameter_at_value(entry: Entry, call: str) -> str | None:
    """The name of the parameter in whose place {value} stands."""
    match = re.search(re.escape(entry.name) + r"\(([^()]*)\)", call, re.IGNORECASE)
    arguments = [argument.strip() for argument in match[1].split(",")] if match else []
    if "{value}" not in arguments:
        return None
    place = arguments.index("{value}")
    fitting = [overload for overload in entry.overloads if len(overload.parameters) >= len(arguments)]
    fitting.sort(key=lambda overload: len(overload.parameters))
    return fitting[0].parameters[place] if fitting else None


class Overview(SphinxDirective):
    """A table of everything declared, with what its example shows."""

    def run(self) -> list[nodes.Node]:
        setting = Setting.of(self.config)
        entries = sorted(setting.catalogue, key=lambda entry: entry.name.lower())
        rows = []
        for entry in entries:
            path = setting.examples / f"{entry.name}.bas"
            self.env.note_dependency(str(path))
            rows.append(["", entry.place, Example.read(path).shows if path.exists() else ""])
        table = _table([2, 1, 4], ["Name", "What it is", "Its example shows"], rows)
        # Code becomes a link where it is a name that has a section.
        for entry, row in zip(entries, table.next_node(nodes.tbody).children):
            row[0][0] += _literal(entry.name)
        return [table]


def setup(app: Sphinx) -> None:
    """Adds the directives."""
    app.add_directive("declarations", Declarations)
    app.add_directive("cost", CostDirective)
    app.add_directive("example", ExampleDirective)
    app.add_directive("slider", SliderDirective)
    app.add_directive("overview", Overview)
