"""A Sphinx extension that makes the reference from the plug-in itself and from the programs of examples/."""

from __future__ import annotations

from pathlib import Path
from typing import Any

from docutils import nodes
from sphinx.addnodes import pending_xref
from sphinx.application import Sphinx
from sphinx.config import Config
from sphinx.environment import BuildEnvironment
from sphinx.util import logging
from sphinx.util.nodes import make_refnode

from . import directives, domain
from . import nodes as own_nodes
from .lexer import BasicLexer
from .pages import faults
from .setting import Setting
from .theme import complete_theme

logger = logging.getLogger(__name__)


def _take_version(app: Sphinx, config: Config) -> None:
    version = Setting.of(config).program.version()
    config["version"] = config["release"] = version
    config["html_title"] = f"{config.project} {version}"


def _link_included_files(
    app: Sphinx, env: BuildEnvironment, node: pending_xref, content: nodes.Element
) -> nodes.Element | None:
    """Links between the files that pages include lead to these pages."""
    target, _, anchor = node["reftarget"].partition("#")
    docname = app.config.qvr_included.get(Path(target).name)
    return make_refnode(app.builder, node["refdoc"], docname, anchor, content) if docname else None


def _check_pages(app: Sphinx, error: Exception | None) -> None:
    if error is None and app.builder.format == "html":
        complete_theme(Path(app.outdir) / "_static")
        for place, fault in faults(Path(app.outdir).resolve()):
            logger.warning("%s: %s", place, fault)


def setup(app: Sphinx) -> dict[str, Any]:
    """Called by Sphinx."""
    for name in ("program", "work", "photo", "sound", "costs", "examples"):
        app.add_config_value(f"qvr_{name}", "", "env")
    app.add_config_value("qvr_cost_page", "index", "env")
    app.add_config_value("qvr_photo_alt", "The photograph", "env")
    app.add_config_value("qvr_included", {}, "env")
    for alias in BasicLexer.aliases:
        app.add_lexer(alias, BasicLexer)
    own_nodes.setup(app)
    domain.setup(app)
    directives.setup(app)
    app.connect("config-inited", _take_version)
    app.connect("missing-reference", _link_included_files)
    app.connect("build-finished", _check_pages)
    return {"parallel_read_safe": False, "parallel_write_safe": True}
