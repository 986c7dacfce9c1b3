"""What the records and enumerations of the flat layer are made of."""

from __future__ import annotations

import ctypes
from enum import IntEnum
from typing import Any, ClassVar


class Enumeration(IntEnum):
    """An enumeration of the C API. A number that it doesn't know yet, from a newer plug-in, is a member all the same."""

    @classmethod
    def _missing_(cls, value: object) -> Any:
        if not isinstance(value, int):
            return None
        member = int.__new__(cls, value)
        member._name_ = str(value)
        member._value_ = value
        return member


class Record(ctypes.Structure):
    """A record of the C API: zero, but for its size words and what is given by name. Text may be str; it becomes UTF-8."""

    _sized_: ClassVar[bool] = False
    _fields_: ClassVar[Any]

    def __init__(self, **values: Any) -> None:
        super().__init__()
        types = {field[0]: field[1] for field in self._fields_}
        if self._sized_:
            self.dwSize = ctypes.sizeof(self)
        if "dwEntrySize" in types:
            self.dwEntrySize = ctypes.sizeof(types["ptEntries"]._type_)
        for name, value in values.items():
            if name not in types:
                raise TypeError(f"{type(self).__name__} has no field {name}")
            self._set(name, value)

    def _set(self, name: str, value: Any) -> None:
        if isinstance(value, str):
            value = value.encode()
            room = getattr(type(self), name).size - 1
            if len(value) > room:  # never the value in the message: it may be a password
                raise ValueError(f"{name} is too long: {len(value)} bytes, and at most {room}")
        setattr(self, name, value)

    def text(self, name: str) -> str:
        """A text of the record, as str."""
        return bytes(getattr(self, name)).decode(errors="replace")

    def __repr__(self) -> str:
        """What isn't zero. Passwords are never shown."""
        shown = []
        for name, *_ in self._fields_:
            value = getattr(self, name)
            if isinstance(value, bytes) and value:
                shown.append(f"{name}={'***' if 'Password' in name else repr(value.decode(errors='replace'))}")
            elif isinstance(value, (int, Record)) and value:
                shown.append(f"{name}={value!r}")
        return f"{type(self).__name__}({', '.join(shown)})"


def wide(name: str, kind: Any) -> list[tuple[str, Any]]:
    """A pointer inside a record, which takes 8 bytes on every machine."""
    return [(name, kind)] if ctypes.sizeof(ctypes.c_void_p) == 8 else [(name, kind), (f"_{name}", ctypes.c_uint32)]


def null(callback: Any) -> Any:
    """A null pointer of a callback type."""
    return callback()
