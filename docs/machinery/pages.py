"""Looks at finished pages: links, anchors and pictures must exist, and nothing may come from the network."""

from __future__ import annotations

import dataclasses
import re
from html.parser import HTMLParser
from pathlib import Path
from typing import Iterator
from urllib.parse import unquote, urlsplit

# What a browser loads by itself; a link is followed only by who wants to.
LOADED = {("script", "src"), ("img", "src"), ("img", "srcset"), ("link", "href"), ("iframe", "src"), ("source", "src"),
          ("source", "srcset"), ("video", "src"), ("audio", "src"), ("object", "data"), ("embed", "src")}  # fmt: skip
STYLE_URL = re.compile(r"""url\(\s*['"]?([^'")]+)|@import\s+['"]([^'"]+)""")


@dataclasses.dataclass
class Page:
    """What a page refers to, what can be referred to in it, and its pictures that lack something."""

    loads: list[str] = dataclasses.field(default_factory=list)
    links: list[str] = dataclasses.field(default_factory=list)
    anchors: set[str] = dataclasses.field(default_factory=set)
    poor_images: list[str] = dataclasses.field(default_factory=list)


class _Reader(HTMLParser):
    def __init__(self) -> None:
        super().__init__()
        self.page = Page()

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        attributes = {name: value or "" for name, value in attrs}
        for name, value in attributes.items():
            if (tag, name) in LOADED and attributes.get("rel") != "canonical":
                self.page.loads.append(value)
            elif name == "href":
                self.page.links.append(value)
            elif name == "id" or (tag, name) == ("a", "name"):
                self.page.anchors.add(value)
        if tag == "img":
            self.page.poor_images += [
                f"{attributes.get('src')} has no {name}"
                for name in ("alt", "width", "height")
                if not attributes.get(name)
            ]


def read_page(path: Path) -> Page:
    """Takes a page apart."""
    reader = _Reader()
    reader.feed(path.read_text(encoding="utf-8"))
    return reader.page


def faults(folder: Path) -> Iterator[tuple[str, str]]:
    """All faults of the pages and style sheets in a folder: which file, and what is wrong."""
    pages = {path: read_page(path) for path in sorted(folder.rglob("*.html"))}
    anchors = {path: page.anchors for path, page in pages.items()}
    for path, page in pages.items():
        place = path.relative_to(folder).as_posix()
        for text in page.poor_images:
            yield place, text
        for target in page.loads:
            yield from ((place, fault) for fault in _target_faults(target, path, anchors, loaded=True))
        for target in page.links:
            yield from ((place, fault) for fault in _target_faults(target, path, anchors, loaded=False))
    for path in sorted(folder.rglob("*.css")):
        place = path.relative_to(folder).as_posix()
        for match in STYLE_URL.finditer(path.read_text(encoding="utf-8")):
            target = match[1] or match[2]
            yield from ((place, fault) for fault in _target_faults(target, path, anchors, loaded=True))


def _target_faults(target: str, page: Path, anchors: dict[Path, set[str]], loaded: bool) -> Iterator[str]:
    parts = urlsplit(target)
    if parts.scheme == "data":
        return
    if parts.scheme or parts.netloc:
        if loaded:
            yield f"{target} would be loaded from the network"
        return
    file = (page.parent / unquote(parts.path)).resolve() if parts.path else page
    if not file.is_file():
        yield f"{target} does not exist"
    elif parts.fragment and file in anchors and unquote(parts.fragment) not in anchors[file]:
        yield f"{target} has no such anchor"
