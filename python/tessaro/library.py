"""Finding the library and its functions."""

from __future__ import annotations

import ctypes
import os
from typing import Any, Optional

#: What is loaded where the environment's TESSARO_LIBRARY names no file: by bare name, so the loader's rules find it.
DEFAULT = "libclientadapter.so.1"


class Functions:
    """The library's functions by name, with their types. The library is loaded with the first one that is asked for."""

    def __init__(self, prototypes: dict[str, tuple[Any, list[Any]]]) -> None:
        self._prototypes = prototypes
        self._library: Optional[ctypes.CDLL] = None

    def __getattr__(self, name: str) -> Any:
        if name not in self._prototypes:
            raise AttributeError(name)
        if self._library is None:
            self._library = _load()
        function = getattr(self._library, name)
        function.restype, function.argtypes = self._prototypes[name]
        setattr(self, name, function)
        return function


def _load() -> ctypes.CDLL:
    file = os.environ.get("TESSARO_LIBRARY") or DEFAULT
    try:
        return ctypes.CDLL(file)
    except OSError as error:
        raise OSError(f"the library can't be loaded: {error}. Install it where the loader looks, "
                      "or name its file in the environment's TESSARO_LIBRARY") from None
