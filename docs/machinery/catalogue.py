"""What the plug-in declares, as the artefact itself says it."""

from __future__ import annotations

import dataclasses
import re
from typing import Any, Iterator


WIDEST_DECLARATION = 72


@dataclasses.dataclass(frozen=True)
class Overload:
    """One declaration of a method."""

    text: str
    parameters: tuple[str, ...]
    result: str | None
    assignable: bool


@dataclasses.dataclass
class Entry:
    """What has a section of its own: a method with all its overloads, or a class."""

    name: str
    place: str
    overloads: list[Overload]
    properties: list[str] = dataclasses.field(default_factory=list)

    @property
    def gives_picture(self) -> bool:
        """Whether a call is a picture."""
        return any((overload.result or "").lower() == "picture" for overload in self.overloads)

    def declarations(self) -> list[str]:
        """Everything declared under the name."""
        return self.properties + [
            _spread(overload.text.strip()) + ("  ' assignable" if overload.assignable else "")
            for overload in self.overloads
        ]


class Catalogue:
    """All entries by name, in any case of letters."""

    def __init__(self, registered: dict[str, Any]) -> None:
        self._entries: dict[str, Entry] = {}
        for found in registered["classes"]:
            entry = Entry(found["name"], "Class", [_overload(method) for method in found["methods"]])
            entry.properties = [f"{field['name']} as {field['type']}" for field in found["properties"]]
            self._entries[entry.name.lower()] = entry
        for extension in registered["extensions"]:
            self._add_methods(extension["methods"], f"Method of {extension['name']}")
        self._add_methods(registered["globals"], "Global method")

    def _add_methods(self, methods: list[dict[str, Any]], place: str) -> None:
        for method in methods:
            name = method["name"]
            self._entries.setdefault(name.lower(), Entry(name, place, [])).overloads.append(_overload(method))

    def __iter__(self) -> Iterator[Entry]:
        return iter(self._entries.values())

    def find(self, name: str) -> Entry | None:
        """The entry of that name, if there is one."""
        return self._entries.get(name.lower())


def _spread(declaration: str) -> str:
    """A long declaration with a line for every parameter."""
    name, bracket, rest = declaration.partition("(")
    if len(declaration) <= WIDEST_DECLARATION or not bracket:
        return declaration
    return f"{name}(\n  " + re.sub(r",\s*", ",\n  ", rest)


def _overload(method: dict[str, Any]) -> Overload:
    parameters = tuple(parameter["name"] for parameter in method["parameters"])
    return Overload(method["declaration"], parameters, method["result"], method["assignable"])
