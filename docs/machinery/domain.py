"""What pages show, and whether that is everything."""

from __future__ import annotations

import dataclasses
import re
from typing import Any, Iterable

from docutils import nodes
from sphinx import addnodes
from sphinx.application import Sphinx
from sphinx.domains import Domain, ObjType
from sphinx.environment import BuildEnvironment
from sphinx.transforms import SphinxTransform
from sphinx.transforms.post_transforms import SphinxPostTransform
from sphinx.util import logging
from sphinx.util.nodes import make_refnode

from .nodes import Part
from .setting import Setting

logger = logging.getLogger(__name__)


# What methods and classes are called.
NAME = re.compile(r"\w+QVR")


@dataclasses.dataclass
class Section:
    """A section that explains a method or a class."""

    anchor: str
    parts: set[str]


@dataclasses.dataclass
class Shown:
    """What one page has."""

    sections: dict[str, Section] = dataclasses.field(default_factory=dict)
    examples: set[str] = dataclasses.field(default_factory=set)


class PlugInDomain(Domain):
    """Remembers which page has the section of which name, and what is shown there."""

    name = "qvr"
    label = "PictureQVR"
    object_types = {"declaration": ObjType("declaration")}
    initial_data: dict[str, Any] = {"pages": {}}

    @property
    def pages(self) -> dict[str, Shown]:
        """What each page has."""
        pages: dict[str, Shown] = self.data["pages"]
        return pages

    def page(self, docname: str) -> Shown:
        """What a page has so far."""
        return self.pages.setdefault(docname, Shown())

    def clear_doc(self, docname: str) -> None:
        """Forgets a page."""
        self.pages.pop(docname, None)

    def section_of(self, name: str) -> tuple[str, Section] | None:
        """The page and the section of a name."""
        for docname, page in self.pages.items():
            if name in page.sections:
                return docname, page.sections[name]
        return None

    def resolve_any_xref(self, *arguments: Any) -> list[tuple[str, nodes.Element]]:
        """Names become links without being asked to, and in no other way."""
        return []

    def get_objects(self) -> Iterable[tuple[str, str, str, str, str, int]]:
        """All names, for the search."""
        for docname, page in self.pages.items():
            for name, section in page.sections.items():
                yield name, name, "declaration", docname, section.anchor, 0

    def check_consistency(self) -> None:
        """Complains of what is declared and not explained, and of programs that nobody sees."""
        setting = Setting.of(self.env.config)
        for entry in setting.catalogue:
            place = self.section_of(entry.name)
            if place is not None:
                for part in sorted({"cost", "example"} - place[1].parts):
                    logger.warning("the section of %s has no %s", entry.name, part, location=place[0])
            else:
                logger.warning("%s is declared and has no section", entry.name)
        shown: set[str] = set().union(*(page.examples for page in self.pages.values()))
        for path in sorted(setting.examples.glob("*.bas")):
            if path.stem not in shown:
                logger.warning("%s is shown on no page", path.name)


def domain_of(env: BuildEnvironment) -> PlugInDomain:
    """The domain of the project being built."""
    domain = env.get_domain(PlugInDomain.name)
    assert isinstance(domain, PlugInDomain)
    return domain


class CollectSections(SphinxTransform):
    """Notes which sections explain what, and complains of those that explain nothing or something else."""

    default_priority = 600

    def apply(self, **kwargs: Any) -> None:
        """Looks at every section, the parts of which may lie in sections of its own."""
        for section in self.document.findall(nodes.section):
            title = section.next_node(nodes.title).astext()
            parts = list(section.findall(Part))
            declared = [part for part in parts if part["kind"] == "declarations"]
            if not declared and NAME.fullmatch(title) and title != self.config.project:
                logger.warning("the section %s explains nothing that is declared", title, location=section)
            for part in declared:
                if next(node for node in _ancestors(part) if isinstance(node, nodes.section)) is section:
                    self.note(section, title, part["name"], {part["kind"] for part in parts})

    def note(self, section: nodes.section, title: str, name: str, kinds: set[str]) -> None:
        """Notes that a section explains a name."""
        domain = domain_of(self.env)
        if name != title:
            logger.warning("the section of %s is called %s", name, title, location=section)
        if domain.section_of(name):
            logger.warning("there is a second section of %s", name, location=section)
        anchor = section["ids"][0]
        domain.page(self.env.docname).sections[name] = Section(anchor, kinds)
        section.insert(1, addnodes.index(entries=[("single", name, anchor, "", None)]))


class LinkNames(SphinxPostTransform):
    """Makes links of names in running text that have a section elsewhere."""

    default_priority = 5

    def run(self, **kwargs: Any) -> None:
        """Looks at every piece of code in a line of text."""
        domain = domain_of(self.env)
        for literal in list(self.document.findall(nodes.literal)):
            place = domain.section_of(literal.astext())
            if place is None or any(isinstance(node, (nodes.reference, nodes.title)) for node in _ancestors(literal)):
                continue
            docname, section = place
            anchors = {anchor for node in _ancestors(literal) for anchor in node.get("ids", [])}
            if docname != self.env.docname or section.anchor not in anchors:
                literal.replace_self(
                    make_refnode(self.app.builder, self.env.docname, docname, section.anchor, literal.deepcopy())
                )


def _ancestors(node: nodes.Node) -> Iterable[nodes.Element]:
    parent = node.parent
    while parent is not None:
        yield parent
        parent = parent.parent


def setup(app: Sphinx) -> None:
    """Adds the domain, what fills it and what uses it."""
    app.add_domain(PlugInDomain)
    app.add_transform(CollectSections)
    app.add_post_transform(LinkNames)
