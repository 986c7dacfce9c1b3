"""Results of the library as exceptions."""

from __future__ import annotations

from . import flat
from .flat import ePluginResult, eResult


class Error(Exception):
    """What the library or a plug-in answered in place of 0. `result` is the number, as the C API has it; the text is the
    library's own."""

    def __init__(self, what: str, result: int) -> None:
        super().__init__(what, result)
        self.what = what
        self.result = result

    def __str__(self) -> str:
        return f"{self.what}: {flat.TessaroExtra_ResultText(self.result).decode()} ({self.result})"


class NoPlugin(Error):
    """The protocol's plug-in isn't there, or lacks the function."""


class NotSupported(Error):
    """The protocol or this device can't do it."""


class Closed(Error):
    """What it was asked of is closed."""


class BadArgument(Error):
    """A value out of its range, or an address that is none."""


class WrongLogin(Error):
    """Wrong user name or password, or the user may not do it."""


class Locked(WrongLogin):
    """The device has locked the account for a while."""


class Unreachable(Error):
    """Nobody answers at the address, or the connection broke."""


class TimedOut(Error):
    """No answer in time."""


class Busy(Error):
    """The device, or what was asked for, is occupied; later it may work."""


class NotFound(Error):
    """No such channel, file, recording, preset or block."""


class Refused(Error):
    """The device answered that it will not do it."""


class NoRoom(Error):
    """No memory, thread or stream is left, or the device is full."""


_CLASSES: dict[int, type[Error]] = {
    eResult.eResultNoEntryPoint: NoPlugin,
    eResult.eResultUnknownLogin: Closed,
    eResult.eResultNoProtocol: NoPlugin,
    eResult.eResultUnknownMedia: Closed,
    ePluginResult.eResultNotSupported: NotSupported,
    ePluginResult.eResultBadHandle: Closed,
    ePluginResult.eResultBadArgument: BadArgument,
    ePluginResult.eResultTooManyStreams: NoRoom,
    ePluginResult.eResultNotStarted: Closed,
    ePluginResult.eResultNoResources: NoRoom,
    ePluginResult.eResultBadAddress: BadArgument,
    ePluginResult.eResultWrongLogin: WrongLogin,
    ePluginResult.eResultLocked: Locked,
    ePluginResult.eResultUnreachable: Unreachable,
    ePluginResult.eResultTimeOut: TimedOut,
    ePluginResult.eResultConnectionLost: Unreachable,
    ePluginResult.eResultBusy: Busy,
    ePluginResult.eResultNoChannel: NotFound,
    ePluginResult.eResultRefused: Refused,
    ePluginResult.eResultNotFound: NotFound,
    ePluginResult.eResultDeviceFull: NoRoom,
}


def error(what: str, result: int) -> Error:
    """The exception that stands for a result."""
    return _CLASSES.get(result, Error)(what, result)


def check(what: str, result: int) -> None:
    """Raises what a result stands for, if it isn't 0."""
    if result != eResult.eResultOk:
        raise error(what, result)
