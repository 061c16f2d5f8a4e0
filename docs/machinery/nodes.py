"""What pages have beyond the ordinary: pictures with their size, and sliders."""

from __future__ import annotations

import html
import posixpath
import re
from pathlib import Path
from typing import Any
from urllib.parse import quote

from docutils import nodes
from PIL import Image
from sphinx.application import Sphinx


class Picture(nodes.image):  # type: ignore[misc]
    """An image whose size the page knows before it is loaded."""


class Part(nodes.General, nodes.Element):  # type: ignore[misc]
    """A part of a section, made by the directive of this `kind` for this `name`."""


class Slider(nodes.General, nodes.Element):  # type: ignore[misc]
    """Frames in a row, which a script makes into a slider."""


class SliderFrame(nodes.General, nodes.Element):  # type: ignore[misc]
    """What a slider shows at one value."""


def _size(file: Path) -> tuple[int, int]:
    """Width and height in pixels of the screen."""
    if file.suffix != ".svg":
        with Image.open(file) as image:
            return image.size
    sides = re.findall(r'^<svg width="(\d+)pt" height="(\d+)pt"', file.read_text(encoding="utf-8"), re.MULTILINE)
    width, height = (round(int(points) * 4 / 3) for points in sides[0])
    return width, height


def _measure_images(app: Sphinx, doctree: nodes.document) -> None:
    """Images that Markdown shows become pictures too."""
    for image in list(doctree.findall(nodes.image)):
        if isinstance(image, Picture):
            continue
        try:
            width, height = _size(Path(app.srcdir, image["uri"]))
        except OSError:
            continue  # What is wrong with it is told when the pages are looked at.
        image.replace_self(Picture(**{**image.attributes, "width": str(width), "height": str(height)}))


def picture(source: Path, folder: Path, alternative: str) -> Picture:
    """A picture; `folder` is where the page's source lies."""
    width, height = _size(source)
    uri = Path(posixpath.relpath(source.as_posix(), folder.as_posix())).as_posix()
    return Picture(uri=uri, alt=alternative, width=str(width), height=str(height), candidates={"*": uri})


def _tag(name: str, attributes: dict[str, str]) -> str:
    return f"<{name} " + " ".join(f'{key}="{html.escape(value)}"' for key, value in attributes.items()) + ">"


def _visit_picture(translator: Any, node: Picture) -> None:
    source = posixpath.join(translator.builder.imgpath, quote(translator.builder.images[node["uri"]]))
    attributes = {key: node[key] for key in ("alt", "width", "height")}
    translator.body.append(_tag("img", {"src": source, **attributes, "loading": "lazy"}))


def _visit_part(translator: Any, node: Part) -> None:
    translator.body.append(_tag("div", {"class": node["kind"]}))


def _visit_slider(translator: Any, node: Slider) -> None:
    attributes = {"class": "slider", "role": "group", "tabindex": "0", "aria-label": node["title"]}
    attributes.update({f"data-{key}": node[key] for key in ("label", "start")})
    translator.body.append(_tag("div", attributes))


def _visit_frame(translator: Any, node: SliderFrame) -> None:
    translator.body.append(_tag("div", {"class": "frame", "data-value": node["value"]}))


def _close_division(translator: Any, node: nodes.Element) -> None:
    translator.body.append("</div>\n")


def _depart_picture(translator: Any, node: Picture) -> None:
    pass


def setup(app: Sphinx) -> None:
    """Adds these kinds of nodes."""
    app.add_node(Picture, html=(_visit_picture, _depart_picture))
    app.add_node(Part, html=(_visit_part, _close_division))
    app.add_node(Slider, html=(_visit_slider, _close_division))
    app.add_node(SliderFrame, html=(_visit_frame, _close_division))
    # Behind what tells the builder of the images in a page.
    app.connect("doctree-read", _measure_images, priority=900)
