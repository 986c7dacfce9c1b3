"""Live streams and playback."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass, replace
from typing import TYPE_CHECKING, Any, Callable, Optional, TypeVar

from . import flat, receivers
from .errors import check, error
from .feed import Feed
from .flat import (eConnectionState, eFrameFlag, eMediaCodec, eMediaType, eOperationType, ePlaybackSpeed, ePluginResult,
                   eProtocolType, eTaskControl, tagRTSPPackageInfo, tagStreamMediaFrame, tagTimeInfo)

if TYPE_CHECKING:
    from .login import Login

S = TypeVar("S", bound="Stream")


@dataclass(frozen=True)
class Frame:
    """One access unit of video or one packet of audio.

    A frame that was read from a stream owns its bytes. One that an on_frame function gets shows the plug-in's memory:
    its data ends when the function returns, and then raises ValueError. To keep it, keep `frame.copy()`; a slice of its
    data must not outlive the function at all.
    """

    media: eMediaType
    codec: eMediaCodec
    codec_name: str
    flags: int  #: eFrameFlag bits
    sequence: int  #: counts the frames of its track as they arrive; a gap: frames held back
    lost_before: int  #: RTP packets known to be lost before it
    time_us: int  #: microseconds on the stream's own time line
    wall_clock_us: int  #: the device's clock, microseconds since 1970 UTC; 0: not known
    width: int
    height: int
    sample_rate: int
    channels: int
    data: memoryview
    config: bytes  #: what a decoder needs beside the frames; empty: nothing

    @property
    def key(self) -> bool:
        """Decoding can start here."""
        return bool(self.flags & eFrameFlag.eFrameKey)

    @property
    def damaged(self) -> bool:
        """Parts of it may be lost."""
        return bool(self.flags & eFrameFlag.eFrameDamaged)

    @property
    def discontinuity(self) -> bool:
        """Times don't continue those of the frame before."""
        return bool(self.flags & eFrameFlag.eFrameDiscontinuity)

    def copy(self) -> Frame:
        """The same with bytes of its own."""
        return replace(self, data=memoryview(bytes(self.data)))


def _frame(record: tagStreamMediaFrame, data: memoryview) -> Frame:
    return Frame(eMediaType(record.dwMediaType), eMediaCodec(record.dwCodec), record.text("szCodecName"), record.dwFlags,
                 record.dwSequence, record.dwLostBefore, record.llPresentationTimeUs, record.llWallClockUs,
                 record.dwWidth, record.dwHeight, record.dwSampleRate, record.dwChannels, data,
                 ctypes.string_at(record.pConfig, record.dwConfigLength) if record.pConfig else b"")


class Stream(Feed[Frame]):
    """An open stream. Iterate over its frames, or give it an on_frame function when it is opened.

    Frames that nobody has taken yet are kept up to a number; then the library's thread waits, and so does the playback,
    while a live stream drops whole groups of pictures.
    """

    def __init__(self, login: Login, media: int, on_frame: Optional[Callable[[Frame], None]], depth: int) -> None:
        super().__init__(depth)
        self.login = login
        self.media_id = media
        self._on_frame = on_frame
        self._number = receivers.add(self._take)
        try:
            check("asking for frames", self._register(media, receivers.on_frame, self._number))
        except BaseException:
            self.close()
            raise
        login._opened(self)

    _register: Callable[[int, Any, int], int] = staticmethod(flat.ClientAdapter_StreamMediaCB)
    _disconnect: Callable[[int], int] = staticmethod(flat.ClientAdapter_RealStreamDisconnect)

    def _take(self, record: tagStreamMediaFrame) -> None:
        if self._closed:
            return
        if record.dwFlags & eFrameFlag.eFrameEnd:
            self._put(None)
        elif self._on_frame is None:
            self._put(_frame(record, memoryview(ctypes.string_at(record.pData, record.dwLength))))
        else:
            address = ctypes.cast(record.pData, ctypes.c_void_p).value or 0
            with memoryview((ctypes.c_ubyte * record.dwLength).from_address(address)) as raw:
                with raw.cast("B") as octets, octets.toreadonly() as data:
                    self._on_frame(_frame(record, data))

    def _complain(self) -> None:
        self.login._check_alive()

    def _control(self, code: eTaskControl, what: str) -> None:
        check(what, flat.ClientAdapter_StreamMediaControl(self.media_id, code))

    def play(self) -> None:
        self._control(eTaskControl.eTaskPlay, "playing")

    def pause(self) -> None:
        """No frames come, the stream stays open."""
        self._control(eTaskControl.eTaskPause, "pausing")

    def close(self) -> None:
        """Ends the stream and every iteration over it; no on_frame begins afterwards. From any thread, also from inside
        on_frame."""
        if self._end():
            self._disconnect(self.media_id)
            receivers.remove(self._number)
            self.login._forget(self)

    def __enter__(self: S) -> S:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()


class LiveStream(Stream):
    """A live stream. A stream that is lost comes back by itself; the first frame afterwards is a discontinuity."""

    def __init__(self, login: Login, media: int, on_frame: Optional[Callable[[Frame], None]], depth: int,
                 wait: bool) -> None:
        self._patient = wait
        super().__init__(login, media, on_frame, depth)

    def statistics(self) -> tagRTSPPackageInfo:
        """How the stream is doing: RTSP alone, zero from the other protocols."""
        info = tagRTSPPackageInfo()
        check("asking how a stream is", flat.TessaroExtra_GetStreamStatistics(self.media_id, info))
        return info

    def _put(self, item: Optional[Frame]) -> None:
        self._patient = True  # it has been live
        super()._put(item)

    def _complain(self) -> None:
        super()._complain()
        if self._patient or self.login.protocol != eProtocolType.eProtocolRTSP:
            return
        info = self.statistics()
        if info.dwState == eConnectionState.eConnectionRefused:
            raise error(f"the device refuses the stream (RTSP status {info.dwLastStatus})",
                        {401: ePluginResult.eResultWrongLogin, 403: ePluginResult.eResultWrongLogin,
                         404: ePluginResult.eResultNotFound}.get(info.dwLastStatus, ePluginResult.eResultRefused))
        if info.dwState == eConnectionState.eConnectionLost:
            raise error("no stream comes", ePluginResult.eResultUnreachable)


class Playback(Stream):
    """A recording that is played. Its iteration ends with the recording; after a seek it can be iterated over again."""

    _register = staticmethod(flat.ClientAdapter_HistoryStreamCB)
    _disconnect = staticmethod(flat.ClientAdapter_HistoryStreamDestroy)

    def step(self) -> None:
        """One frame comes, then it is paused."""
        self._control(eTaskControl.eTaskStep, "stepping")

    def seek(self, time_us: int) -> None:
        """Goes on from the key frame at or before this time, microseconds since 1970 UTC. Frames that were waiting are
        dropped; one that was on its way may still come."""
        self._position(eOperationType.eOperationSet, tagTimeInfo(llTimeUs=time_us))
        self._clear()

    def position(self) -> int:
        """When the frame that came last was recorded, microseconds since 1970 UTC."""
        return self._position(eOperationType.eOperationGet, tagTimeInfo()).llTimeUs

    def _position(self, action: eOperationType, info: tagTimeInfo) -> tagTimeInfo:
        check("the position", flat.ClientAdapter_HistoryStreamPosition(self.media_id, action, info))
        return info

    def speed(self, factor: float) -> None:
        """1: as recorded; from an eighth to 16, also backwards (-2), by key frames."""
        reverse = ePlaybackSpeed.eSpeedReverse if factor < 0 else 0
        check("the speed", flat.ClientAdapter_HistoryStreamSetSpeed(
            self.media_id, reverse + round(abs(factor) * ePlaybackSpeed.eSpeedNormal)))
