"""Makes tessaro/flat.py from the headers of the C API: every enumeration, record, callback type and function, with its
comment. Run it after a header has changed; a test tells when that was forgotten.

    generate.py [--check]      --check: writes nothing, and ends with 1 when the file isn't current
"""

import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
sys.path.insert(0, str(ROOT / "tools"))
import headers  # noqa: E402

TARGET = HERE / "tessaro" / "flat.py"
SOURCES = [*sorted((ROOT / "protocol" / "interface").glob("*.h")), ROOT / "adapter" / "ClientAdapter.h",
           ROOT / "adapter" / "ClientAdapterExtra.h"]
NUMBERS = {"int": "c_int", "unsigned int": "c_uint", "unsigned long": "c_ulong", "unsigned short": "c_ushort",
           "unsigned char": "c_ubyte", "char": "c_char", "uint32_t": "c_uint32", "int32_t": "c_int32",
           "uint64_t": "c_uint64", "int64_t": "c_int64"}
BEGIN = '''"""The C API as it is: functions, records, enumerations and callback types under their own names.

Made by generate.py from the headers of the C API, never written by hand. Functions answer a result, 0 when it is done;
the records' size words are filled. A pointer to a number takes `ctypes.c_int()` and the like, a pointer to a record the
record itself, a null pointer is None. A callback must be kept by the program for as long as the library may call it.
"""
# mypy: disable-error-code="misc"

from __future__ import annotations

import ctypes
from ctypes import (POINTER, c_char, c_char_p, c_int, c_int32, c_int64, c_ubyte, c_uint, c_uint32, c_uint64, c_ulong,
                    c_ushort, c_void_p)
from typing import Any, Optional

from .base import Enumeration, Record, null, wide
from .library import Functions

TESSARO_ALL = 0xFFFFFFFF  #: every channel, input, output or window at once, where a function says that it takes it


def TESSARO_EVENT(event: int) -> int:
    """A bit of ClientAdapter_SubscribeEvent's dwEvent."""
    return 1 << (event - 100)
'''


def docstring(text, indent):
    text = text.replace("\\\\", "\\\\\\\\").replace('"""', "'''")
    lines = text.splitlines() or [""]
    body = ("\n" + indent).join(lines).replace("\n" + indent + "\n", "\n\n")
    return f'{indent}"""{body}"""' if len(lines) == 1 else f'{indent}"""{body}\n{indent}"""'


def plain(kind):
    return re.sub(r"\bconst\b", "", kind).replace(" *", "*").strip()


class Writer:
    def __init__(self, text):
        self.text = text
        self.enumerations = headers.enumerations(text)
        self.records = headers.records(text)
        self.callbacks = headers.callbacks(text)
        self.names = {"enum": {e.name for e in self.enumerations}, "record": {r.name for r in self.records},
                      "callback": {c.name for c in self.callbacks}}

    def ctype(self, kind):
        """A type of C in ctypes' words."""
        kind = " ".join(plain(kind).split()).replace(" *", "*")
        if kind == "void":
            return "None"
        if kind.endswith("*"):
            target = kind[:-1].strip()
            return {"void": "c_void_p", "char": "c_char_p"}.get(target) or f"POINTER({self.ctype(target)})"
        if kind in self.names["enum"]:
            return "c_int"
        if kind in self.names["record"] | self.names["callback"]:
            return kind
        return NUMBERS[kind]

    def hint(self, kind):
        """What a caller may pass for it."""
        kind = " ".join(plain(kind).split()).replace(" *", "*")
        if kind in self.names["callback"]:
            return "Any"
        if not kind.endswith("*"):
            return "int" if kind != "void" else "None"
        target = kind[:-1].strip()
        return {"char": "Any"}.get(target) or (f"Optional[{target}]" if target in self.names["record"] else "Any")

    def enumeration(self, declaration):
        yield f"\n\nclass {declaration.name}(Enumeration):"
        yield docstring(declaration.comment, "    ") + "\n"
        for row in declaration.rows:
            name, value = headers.enumerator(row)
            yield f"    {name} = {value if abs(value) < 0x1000 else hex(value)}  #: {row.comment}"

    def record(self, declaration, sized):
        fields = [headers.field(row) for row in declaration.rows]
        yield f"\n\nclass {declaration.name}(Record):"
        yield docstring(declaration.comment, "    ") + "\n"
        for field in fields:
            yield f"    {field.name}: {self.field_hint(field)}  #: {field.comment}"
        if declaration.name in sized:
            yield "    _sized_ = True"
        yield "    _fields_ = ["
        for field in fields:
            kind = self.ctype(field.kind + "*" if field.pointer else field.kind)
            if field.pointer and field.kind == "char":
                kind = "POINTER(c_char)"
            kind += f" * {field.count}" if field.count else ""
            yield f'        *wide("{field.name}", {kind}),' if field.wide else f'        ("{field.name}", {kind}),'
        yield "    ]"

    def field_hint(self, field):
        if field.pointer:
            return "Any"
        if field.count:
            return "bytes" if field.kind == "char" else f"ctypes.Array[{self.ctype(field.kind)}]"
        return field.kind if field.kind in self.names["record"] else "int"

    def callback(self, declaration):
        types = ", ".join(self.ctype(kind) for kind in [declaration.result, *(kind for kind, _ in declaration.parameters)])
        yield ""
        yield from (f"# {line}".rstrip() for line in declaration.comment.splitlines())
        yield "# Parameters: " + ", ".join(name for _, name in declaration.parameters) + "."
        yield f"{declaration.name} = ctypes.CFUNCTYPE({types})"

    def function(self, declaration):
        parameters = ", ".join(f"{name}: {self.hint(kind)}" for kind, name in declaration.parameters)
        words = [f"{name} or null({kind})" if kind in self.names["callback"] else name
                 for kind, name in declaration.parameters]
        hint = "bytes" if "char" in declaration.result else "int"
        yield f"\n\ndef {declaration.name}({parameters}) -> {hint}:"
        yield docstring(declaration.comment, "    ")
        yield f"    return _library.{declaration.name}({', '.join(words)})  # type: ignore[no-any-return]"

    def prototype(self, declaration):
        types = [self.ctype(kind) for kind, _ in declaration.parameters]
        return f'    "{declaration.name}": ({self.ctype(declaration.result)}, [{", ".join(types)}]),'

    def places(self):
        """Which record is read and written as what, by the tables in the comments."""
        yield "\n\n#: The configuration block that a record is read and written as."
        yield "BLOCKS: dict[type[Record], eConfigType] = {"
        yield from (f"    {record}: eConfigType.{name}," for name, record in
                    re.findall(r"^/// \| (eConfig\w+) +\|[^|]*\| (tag\w+)", self.text, re.M))
        yield "}\n"
        yield "#: The camera parameter that a record is read and written as."
        yield "PARAMETERS: dict[type[Record], eCameraParameter] = {"
        parameters = next(e for e in self.enumerations if e.name == "eCameraParameter")
        yield from (f"    {row.comment.split(';')[0]}: eCameraParameter.{headers.enumerator(row)[0]}," for row in parameters.rows)
        yield "}"

    def lines(self):
        yield BEGIN.rstrip()
        sized = headers.sized_records(self.text)
        functions = headers.functions(self.text)
        for declaration in self.enumerations:
            yield from self.enumeration(declaration)
        for declaration in self.records:
            yield from self.record(declaration, sized)
        yield from self.places()
        yield "\n"
        for declaration in self.callbacks:
            yield from self.callback(declaration)
        yield "\n_library = Functions({"
        yield from (self.prototype(declaration) for declaration in functions)
        yield "})"
        for declaration in functions:
            yield from self.function(declaration)


def main():
    text = "\n".join(Writer(headers.read(SOURCES)).lines()) + "\n"
    if "--check" not in sys.argv:
        TARGET.write_text(text)
    elif text != TARGET.read_text():
        sys.exit(f"{TARGET} isn't current: run {pathlib.Path(__file__).resolve()}")


main()
