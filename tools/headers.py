"""What the headers of the interface declare, each with its comment: enumerations, records, callback types and functions.

For generators. The headers are the only place where these things are written down, in the layout that clang-format gives
them.
"""

import pathlib
import re
from typing import NamedTuple

COMMENT = r"((?:^///[^\n]*\n)*)"


class Row(NamedTuple):
    """A declaration of a record or enumerator of an enumeration, with its comment."""

    code: str
    comment: str


class Field(NamedTuple):
    """A field of a record: `uint32_t dwValue[4]` is kind, name and count."""

    kind: str
    pointer: bool
    name: str
    count: int
    wide: bool  # takes 8 bytes on every machine: a pointer inside a record
    comment: str


class Declaration(NamedTuple):
    name: str
    comment: str
    rows: list  # of Row


class Function(NamedTuple):
    """A function, or the type of a callback: its result and its parameters as (type, name)."""

    name: str
    comment: str
    result: str
    parameters: list


def read(headers):
    return "\n".join(pathlib.Path(header).read_text() for header in headers)


def statements(body):
    code, comment, found = "", "", []
    for line in body.splitlines():
        if (more := re.match(r"\s*///< ?(.*)", line)) and found and not code:
            found[-1] = found[-1]._replace(comment=found[-1].comment + " " + more[1])
            continue
        text, _, comment = line.partition("///<")
        if text.strip().startswith("//"):
            continue
        code += " " + text.strip()
        # A comment may also stand before the end of the last enumerator.
        if re.search(r"[;,]\s*$", code) or (comment and code.strip()):
            found.append(Row(code.strip(), comment.strip()))
            code = ""
    return found


def prose(comment):
    """A comment of several lines, without its slashes."""
    return "\n".join(line[3:].removeprefix(" ") for line in comment.splitlines())


def enumerations(text):
    """rows: one for each enumerator, its code `name = value,`."""
    return [Declaration(name, prose(comment), [row for row in statements(body) if re.match(r"\w+\s*=", row.code)])
            for comment, name, body in re.findall(COMMENT + r"^TESSARO_ENUM\((\w+)\)\{(.*?)\};", text, re.S | re.M)]


def enumerator(row):
    """Name and value."""
    name, value = re.match(r"(\w+)\s*=\s*([-\w]+)", row.code).groups()
    return name, int(value, 0)


def records(text):
    """rows: one for each field."""
    return [Declaration(name, prose(comment),
                        [row for row in statements(body) if not row.code.startswith("TESSARO_STATIC")])
            for comment, name, body in re.findall(COMMENT + r"^typedef struct (tag\w+)\n\{(.*?)^\} tag\w+;", text, re.S | re.M)]


def field(row):
    code = re.sub(r"TESSARO_POINTER\((.*?)\)", r"\1", row.code.rstrip(";"))
    kind, pointer, name, count = re.match(
        r"(?:const )?(unsigned char|char|\w+)(?: const)?\s*(\*?)\s*(\w+)(?:\[(\d+)\])?$", code).groups()
    return Field(kind, bool(pointer), name, int(count or 0), "TESSARO_POINTER" in row.code, row.comment)


def function(name, comment, result, parameters):
    split = [re.match(r"(.*?)(\w+)$", " ".join(parameter.split())).groups() for parameter in parameters.split(",")
             if parameter.strip() not in ("", "void")]
    return Function(name, prose(comment), result.strip(), [(kind.strip(), word) for kind, word in split])


def functions(text):
    return [function(name, comment, result, parameters) for comment, result, name, parameters in
            re.findall(COMMENT + r"^TESSARO_API ([\w ]+?[ *]+)(\w+)\(([^)]*)\);", text, re.M)]


def callbacks(text):
    return [function(name, comment, result, parameters) for comment, result, name, parameters in
            re.findall(COMMENT + r"^typedef (\w+) \(\*(\w+)\)\(([^)]*)\);", text, re.M)]


def sized_records(text):
    """Names of the records that begin with their size."""
    return set(re.findall(r"^TESSARO_RECORD\((\w+),", text, re.M))
