"""What comes on the library's threads and is taken on the program's."""

from __future__ import annotations

import threading
import time
from collections import deque
from typing import Deque, Generic, Iterator, Optional, TypeVar

from .errors import Error, error
from .flat import ePluginResult

T = TypeVar("T")


class Feed(Generic[T]):
    """Items in the order in which they came, to be iterated over. Any thread may close it, which ends the iteration."""

    #: How often a reader that waits looks whether something has gone wrong, in seconds.
    _glance = 0.25

    def __init__(self, depth: Optional[int]) -> None:
        self._depth = depth
        self._items: Deque[Optional[T]] = deque()
        self._changed = threading.Condition()
        self._closed = False

    def _put(self, item: Optional[T]) -> None:
        """On the library's thread, which waits while the feed is full. None: the end, for now."""
        with self._changed:
            while not self._closed and self._depth is not None and len(self._items) >= self._depth:
                self._changed.wait()
            if not self._closed:
                self._items.append(item)
                self._changed.notify_all()

    def _clear(self) -> None:
        with self._changed:
            self._items.clear()
            self._changed.notify_all()

    def _end(self) -> bool:
        """Nothing is put or taken any more. False: it was so already."""
        with self._changed:
            before, self._closed = self._closed, True
            self._changed.notify_all()
        return not before

    def _complain(self) -> None:
        """Raises why nothing comes, if it is known."""

    def read(self, timeout: Optional[float] = None) -> Optional[T]:
        """The next item; None at the end. TimedOut: none came within so many seconds."""
        until = None if timeout is None else time.monotonic() + timeout
        while True:
            with self._changed:
                if not self._items and not self._closed:
                    left = self._glance if until is None else min(self._glance, until - time.monotonic())
                    self._changed.wait(max(0.0, left))
                if self._closed:
                    return None
                if self._items:
                    item = self._items.popleft()
                    self._changed.notify_all()
                    return item
            try:
                self._complain()
            except Error:
                if not self._closed:  # by another thread, meanwhile
                    raise
            if until is not None and time.monotonic() >= until:
                raise error("waiting", ePluginResult.eResultTimeOut)

    def __iter__(self) -> Iterator[T]:
        while (item := self.read()) is not None:
            yield item
