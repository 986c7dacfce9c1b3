"""Events of devices and of RTSP streams."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Callable, Iterable, Optional, Union

from . import flat, receivers
from .errors import check
from .feed import Feed
from .flat import TESSARO_EVENT, eConnectionEvent, eDeviceEvent, eProtocolType, tagEventDetail

if TYPE_CHECKING:
    from .login import Login


@dataclass(frozen=True)
class Event:
    """What happened. The words are explained at eDeviceEvent, and for RTSP streams at eConnectionEvent."""

    kind: Union[eDeviceEvent, eConnectionEvent]
    second: int  #: of most: the channel, input or output
    third: int  #: of most: 1 began, 0 ended
    fourth: int  #: of a device's: when, in seconds since 1970 UTC on its clock, 0: not known
    topic: str = ""  #: eEventOther: the device's own words
    source: str = ""
    data: str = ""


def _event(protocol: eProtocolType, kind: int, second: int, third: int, fourth: int) -> Event:
    if protocol == eProtocolType.eProtocolRTSP:
        return Event(eConnectionEvent(kind), second, third, fourth)
    if kind == eDeviceEvent.eEventOther and third:
        detail = ctypes.cast(third, ctypes.POINTER(tagEventDetail)).contents
        return Event(eDeviceEvent.eEventOther, second, detail.dwState, fourth, detail.text("szTopic"),
                     detail.text("szSource"), detail.text("szData"))
    return Event(eDeviceEvent(kind), second, third, fourth)


class Events(Feed[Event]):
    """A login's events, from now on, to be iterated over; or each goes to an on_event function, on a thread of the
    library. A login has one subscription: another one ends this."""

    def __init__(self, login: Login, kinds: Iterable[eDeviceEvent], on_event: Optional[Callable[[Event], None]]) -> None:
        super().__init__(depth=None)
        self.login = login
        self._on_event = on_event
        self._number = receivers.add(self._take)
        try:
            check("subscribing to events", flat.ClientAdapter_SubscribeEvent(
                login.login_id, sum({TESSARO_EVENT(kind) for kind in kinds}), receivers.on_event, self._number))
        except BaseException:
            receivers.remove(self._number)
            raise

    def _take(self, kind: int, second: int, third: int, fourth: int) -> None:
        event = _event(self.login.protocol, kind, second, third, fourth)
        if self._on_event is None:
            self._put(event)
        elif not self._closed:
            self._on_event(event)

    def _complain(self) -> None:
        self.login._check_alive()

    def _replaced(self) -> None:
        """Another subscription has taken its place at the library."""
        if self._end():
            receivers.remove(self._number)

    def close(self) -> None:
        """Ends the subscription and every iteration over it."""
        if not self._closed:
            flat.ClientAdapter_UnSubscribeEvent(self.login.login_id, 0)
        self._replaced()

    def __enter__(self) -> Events:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()
