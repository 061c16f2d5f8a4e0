"""Completes the theme as Debian packages it: there three pieces come apart that belong together."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Callable

WEB_SERVERS_ROOT = Path("/usr/share")


def complete_theme(static: Path) -> None:
    """Changes the theme's files among a build's static files; what is complete stays as it is."""
    _rewrite(static / "styles/furo.css", lambda text: _with_automatic_dark(_with_imports(text)))
    _rewrite(static / "scripts/furo.js", lambda text: _with_module(text, static / "scripts"))


def _rewrite(path: Path, change: Callable[[str], str]) -> None:
    if path.exists():
        path.write_text(change(path.read_text(encoding="utf-8")), encoding="utf-8")


def _with_imports(style: str) -> str:
    """A style sheet that is loaded from where Debian's web server would have it becomes part of this one."""

    def text_of(match: re.Match[str]) -> str:
        return (WEB_SERVERS_ROOT / match[1]).read_text(encoding="utf-8")

    return re.sub(r"@import url\(/(javascript/[^)]*)\);", text_of, style)


def _with_automatic_dark(style: str) -> str:
    """Dark colours come also where the system is set to them, not only by the page's button."""
    if "prefers-color-scheme" in style:
        return style
    dark = re.search(
        r"^@media not print \{\n(.*?body\[data-theme=\"dark\"\].*?\} \})$", style, re.MULTILINE | re.DOTALL
    )
    if dark is None:
        return style
    wished = dark[1].replace('body[data-theme="dark"]', 'body:not([data-theme="light"])')
    return f"{style}\n@media not print {{ @media (prefers-color-scheme: dark) {{\n{wished} }}\n"


def _with_module(script: str, folder: Path) -> str:
    """A page opened from disk may not import modules, so the one that is imported becomes part of the script."""

    def text_of(match: re.Match[str]) -> str:
        return (folder / match[1]).read_text(encoding="utf-8")

    return re.sub(r'^import \w+ from "\./([^"]+)";$', text_of, script, flags=re.MULTILINE)
