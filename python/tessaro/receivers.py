"""Who gets what the library calls back.

The library gets the functions of this file and nothing else, and they live as long as the process, so that it never calls
one that is gone. What it hands back as user data is a number; behind it stands a receiver, or nobody any more.
"""
# mypy: disable-error-code="misc"

from __future__ import annotations

import itertools
from typing import Any, Callable

from . import flat

_numbers = itertools.count(1)
_receivers: dict[int, Callable[..., None]] = {}


def add(receiver: Callable[..., None]) -> int:
    """The number to hand to the library as user data. It keeps the receiver until `remove`."""
    number = next(_numbers)
    _receivers[number] = receiver
    return number


def remove(number: int) -> None:
    """What comes for this number from now on is dropped."""
    _receivers.pop(number, None)


def _deliver(number: int, *arguments: Any) -> int:
    receiver = _receivers.get(number)
    if receiver is not None:
        receiver(*arguments)
    return 0


@flat.StreamMediaCallback
def on_frame(_stream: int, frame: Any, number: int) -> int:
    return _deliver(number, frame.contents)


@flat.DeviceEventCallback
def on_event(_source: int, event: int, second: int, third: int, fourth: int, number: int) -> int:
    return _deliver(number, event, second, third, fourth)


@flat.FileDownloadCallback
def on_block(_download: int, block: Any, number: int) -> int:
    return _deliver(number, block)
