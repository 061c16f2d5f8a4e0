"""The host's language, for the colours of code blocks."""

from __future__ import annotations

import re

from pygments.lexer import RegexLexer, words
from pygments.token import Comment, Keyword, Name, Number, Operator, Punctuation, String, Text

STATEMENTS = (
    "As", "ByRef", "ByVal", "Call", "Continue", "Dim", "Do", "DownTo", "Else", "ElseIf", "End", "Exit", "For", "Function",
    "If", "Loop", "New", "Next", "Print", "Return", "Step", "Sub", "Then", "To", "Until", "Wend", "While",
)  # fmt: skip
TYPES = (
    "Boolean", "Class", "Color", "Double", "FolderItem", "Integer", "MemoryBlock", "Picture", "Single", "String", "UInt32",
)  # fmt: skip


class BasicLexer(RegexLexer):
    """Tells comments, words, names and literals apart."""

    name = "basic"
    aliases = ["vb", "basic"]
    flags = re.IGNORECASE
    tokens = {
        "root": [
            (r"\s+", Text),
            (r"(?:'|//).*", Comment.Single),
            (r'"(?:[^"\n]|"")*"', String.Double),
            (r"&[chb][0-9a-f]+", Number.Hex),
            (r"\d+\.\d+|\d+", Number),
            (words(("True", "False", "Nil"), suffix=r"\b"), Keyword.Constant),
            (words(("And", "Or", "Not", "Xor", "Mod", "Is"), suffix=r"\b"), Operator.Word),
            (words(STATEMENTS, suffix=r"\b"), Keyword),
            (words(TYPES, suffix=r"\b"), Keyword.Type),
            (r"\w+QVR\b", Name.Function),
            (r"[a-z_]\w*", Name),
            (r"[-+*/\\^=<>]", Operator),
            (r"[(),.:]", Punctuation),
        ]
    }
