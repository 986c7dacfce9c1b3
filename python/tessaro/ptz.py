"""Cameras that move."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass

from . import flat
from .errors import check
from .flat import eCameraParameter, ePTZControlCmdCode, tagPTZAbility, tagPTZPosition, tagPTZPreset, tagPTZPresetList


@dataclass(frozen=True)
class Preset:
    number: int
    name: str
    pan: int
    tilt: int
    zoom: int


class PTZ:
    """A channel's head. Positions and speeds are ten-thousandths of the range: pan -10000 (left) to 10000, tilt -10000
    (down) to 10000, zoom 0 to 10000; a speed has its direction as its sign. Each call returns when the camera has taken
    the command, not when it has arrived: see `position().bMoving`."""

    def __init__(self, login: int, channel: int) -> None:
        self._login = login
        self._channel = channel

    def command(self, code: ePTZControlCmdCode, first: int = 0, second: int = 0, third: int = 0, fourth: int = 0) -> None:
        """Any command, with its words as the table at ePTZControlCmdCode has them."""
        check(f"PTZ command {code.name}",
              flat.ClientAdapter_PTZControl(self._login, self._channel, code, first, second, third, fourth))

    def move(self, pan: int = 0, tilt: int = 0, zoom: int = 0, seconds: float = 5) -> None:
        """At these speeds for a time, which ends it."""
        self.command(ePTZControlCmdCode.ePTZMove, pan, tilt, zoom, max(1, round(seconds * 1000)))

    def stop(self) -> None:
        self.command(ePTZControlCmdCode.ePTZStop)

    def go_to(self, pan: int, tilt: int, zoom: int = 0, speed: int = 0) -> None:
        self.command(ePTZControlCmdCode.ePTZAbsolute, pan, tilt, zoom, speed)

    def go_by(self, pan: int = 0, tilt: int = 0, zoom: int = 0, speed: int = 0) -> None:
        self.command(ePTZControlCmdCode.ePTZRelative, pan, tilt, zoom, speed)

    def home(self) -> None:
        self.command(ePTZControlCmdCode.ePTZHomeCall)

    def preset(self, number: int) -> None:
        """Goes to a preset."""
        self.command(ePTZControlCmdCode.ePTZPresetCall, number)

    def set_preset(self, number: int, name: str = "") -> None:
        """Remembers where it looks now."""
        text = ctypes.create_string_buffer(name.encode())
        self.command(ePTZControlCmdCode.ePTZPresetSet, number, ctypes.addressof(text) if name else 0)

    def remove_preset(self, number: int) -> None:
        self.command(ePTZControlCmdCode.ePTZPresetRemove, number)

    def presets(self) -> list[Preset]:
        """In the order of their numbers."""
        room = 0
        while True:
            entries = (tagPTZPreset * max(1, room))()
            found = tagPTZPresetList(dwCapacity=room, ptEntries=entries)
            check("listing the presets", flat.ClientAdapter_GetIpcPara(
                self._login, self._channel, eCameraParameter.eCameraPresets, ctypes.byref(found), ctypes.sizeof(found)))
            if found.dwCount <= room:
                return [Preset(entry.dwPreset, entry.text("szName"), entry.nPan, entry.nTilt, entry.nZoom)
                        for entry in entries[:found.dwCount]]
            room = found.dwCount

    def position(self) -> tagPTZPosition:
        record = tagPTZPosition()
        check("reading the position", flat.ClientAdapter_GetIpcPara(
            self._login, self._channel, eCameraParameter.eCameraPosition, ctypes.byref(record), ctypes.sizeof(record)))
        return record

    def ability(self) -> tagPTZAbility:
        """What the head can do; all 0 when the channel can't move."""
        record = tagPTZAbility()
        check("reading what the head can do", flat.ClientAdapter_GetIpcPara(
            self._login, self._channel, eCameraParameter.eCameraPTZAbility, ctypes.byref(record), ctypes.sizeof(record)))
        return record
