"""A login: what every question to a device begins with."""

from __future__ import annotations

import ctypes
import threading
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Optional, TypeVar, Union

from . import flat, receivers
from .base import Record
from .errors import check, error
from .events import Event, Events
from .flat import (eDeviceEvent, eFileFormat, eFileKind, eFileTransferControl, eHistoryStreamType, eImageFormat,
                   eLoginStatus, ePluginResult, eProtocolType, eResult, eRtspTransport, eStreamKind, tagConfigInformation,
                   tagFileDownloadPara, tagHistoryStreamPara, tagHistoryStreamQueryFactor, tagHistoryStreamQueryResult,
                   tagImageFileInfo, tagRealStreamPara)
from .ptz import PTZ
from .streams import Frame, LiveStream, Playback, Stream

if TYPE_CHECKING:
    from .client import Client

R = TypeVar("R", bound=Record)


@dataclass(frozen=True)
class Recording:
    """What one channel recorded without a gap, for one reason. Times are microseconds since 1970 UTC."""

    channel: int
    type: eHistoryStreamType
    start_us: int
    end_us: int
    length: int  #: bytes, 0: not known
    locked: bool
    recording: bool  #: still being recorded
    file: str  #: its name on the device


class Login:
    """An open login. It lives on by itself when the device is lost for a while, and its streams with it."""

    def __init__(self, client: Client, protocol: eProtocolType, login: int, name: str) -> None:
        self.client = client
        self.protocol = protocol
        self.login_id = login
        self._name = name
        self._mutex = threading.Lock()
        self._streams: set[Stream] = set()
        self._events: Optional[Events] = None
        self._closed = False

    def __repr__(self) -> str:
        return f"<Login {self._name}{' (closed)' if self._closed else ''}>"

    # --- streams ---

    def live(self, channel: int = 0, kind: eStreamKind = eStreamKind.eStreamMain,
             on_frame: Optional[Callable[[Frame], None]] = None, *,
             transport: eRtspTransport = eRtspTransport.eRtspTcp, wait: bool = False, depth: int = 64) -> LiveStream:
        """Opens a live stream. wait: a reader also waits for an RTSP device that isn't there or refuses, which the
        plug-in tries again and again; else reading raises until the first frame has come."""
        para = tagRealStreamPara(dwChannel=channel, dwStreamKind=kind)
        para.dwStreamPara[0] = transport
        media = ctypes.c_int(-1)
        check("opening a live stream", flat.ClientAdapter_RealStreamConnect(media, self.login_id, para))
        return LiveStream(self, media.value, on_frame, depth, wait)

    def playback(self, what: Union[Recording, int] = 0, start_us: int = 0, end_us: int = 0,
                 on_frame: Optional[Callable[[Frame], None]] = None, *, flags: int = 0, depth: int = 64) -> Playback:
        """Plays a recording, or what a channel recorded between two times (0: from the first, to the last). flags:
        eHistoryFlag bits."""
        para = tagHistoryStreamPara(llStartUs=start_us, llEndUs=end_us)
        if isinstance(what, Recording):
            para.dwChannel, para.szFile = what.channel, what.file.encode()
        else:
            para.dwChannel = what
        media = ctypes.c_int(-1)
        result = flat.ClientAdapter_HistoryStreamCreate(media, self.login_id, para, flags)
        if result != eResult.eResultOk and media.value != -1:
            flat.ClientAdapter_HistoryStreamDestroy(media.value)  # a failure takes an ID, too
        check("opening a playback", result)
        return Playback(self, media.value, on_frame, depth)

    def events(self, *kinds: eDeviceEvent, on_event: Optional[Callable[[Event], None]] = None) -> Events:
        """Subscribes to events; to all when none is named. An RTSP login has the events of the stream that was opened
        last before."""
        events = Events(self, kinds, on_event)
        with self._mutex:
            before, self._events = self._events, events
        if before is not None:
            before._replaced()
        return events

    def _opened(self, stream: Stream) -> None:
        with self._mutex:
            self._streams.add(stream)

    def _forget(self, stream: Stream) -> None:
        with self._mutex:
            self._streams.discard(stream)

    def _check_alive(self) -> None:
        """Raises when the device has ended the login, and nothing comes any more."""
        status = ctypes.c_int(0)
        flat.ClientAdapter_GetLoginStatus(self.login_id, status)
        if status.value == eLoginStatus.eLoginEnded:
            raise error("the device has ended the login", ePluginResult.eResultConnectionLost)

    # --- recordings ---

    def recordings(self, channel: int = 0, start_us: int = 0, end_us: int = 0,
                   type: eHistoryStreamType = eHistoryStreamType.eHistoryAny) -> Iterator[Recording]:
        """What a channel recorded, the oldest first: whatever overlaps the time between the two."""
        factor = tagHistoryStreamQueryFactor(dwChannel=channel, dwType=type, llStartUs=start_us, llEndUs=end_us)
        query = ctypes.c_int(-1)
        result = flat.ClientAdapter_HistoryStreamQueryConnect(query, self.login_id, factor)
        try:
            while result == eResult.eResultOk:
                found = tagHistoryStreamQueryResult()
                result = flat.ClientAdapter_HistoryStreamQueryNext(query.value, found)
                if result == eResult.eResultOk:
                    yield Recording(found.dwChannel, eHistoryStreamType(found.dwType), found.llStartUs, found.llEndUs,
                                    found.ullLength, bool(found.bLocked), bool(found.bRecording), found.text("szFile"))
            if result != ePluginResult.eResultNoMoreEntries:
                check("searching recordings", result)
        finally:
            if query.value != -1:
                flat.ClientAdapter_HistoryStreamQueryDisconnect(query.value)

    def download(self, what: Union[Recording, str], write: Callable[[bytes], Any],
                 format: eFileFormat = eFileFormat.eFileFormatMp4) -> int:
        """Fetches a recording, or a file by its name on the device; write gets its bytes in order, on a thread of the
        library. Returns how many there were, when all have come."""
        para = tagFileDownloadPara(dwKind=eFileKind.eFileRecording, dwFormat=format,
                                   szFile=what.file if isinstance(what, Recording) else what)
        ended = threading.Event()
        count = 0
        failure: Optional[BaseException] = None

        def take(block: flat.tagBuffer) -> None:
            nonlocal count, failure
            try:
                if not block.pData:
                    check("downloading", block.dwLength)
                    ended.set()
                elif failure is None:
                    write(ctypes.string_at(block.pData, block.dwLength))
                    count += block.dwLength
            except BaseException as caught:
                failure = caught
                ended.set()

        number, media = receivers.add(take), ctypes.c_int(-1)
        try:
            check("opening a download", flat.ClientAdapter_FileDownloadConnect(media, self.login_id, para))
            check("a download", flat.ClientAdapter_FileDownloadCB(media.value, receivers.on_block, number))
            check("a download", flat.ClientAdapter_FileDownloadControl(media.value, eFileTransferControl.eTransferStart))
            ended.wait()
        finally:
            if media.value != -1:
                flat.ClientAdapter_FileDownloadDisconnect(media.value)
            receivers.remove(number)
        if failure is not None:
            raise failure
        return count

    # --- pictures, movements, settings ---

    def snapshot(self, channel: int = 0, format: eImageFormat = eImageFormat.eImageJpeg, *, width: int = 0,
                 height: int = 0, quality: int = 0) -> bytes:
        """A picture that the device takes, at most so wide and high: the bytes of a file."""
        room = 1 << 20
        while True:
            data = (ctypes.c_ubyte * room)()
            info = tagImageFileInfo(dwWidth=width, dwHeight=height, dwQuality=quality, dwCapacity=room, pbyData=data)
            result = flat.ClientAdapter_ImageCapture(self.login_id, channel, format, info)
            if result != ePluginResult.eResultNoResources or info.dwLength <= room:
                check("taking a picture", result)
                return bytes(memoryview(data)[:info.dwLength])
            room = info.dwLength

    def ptz(self, channel: int = 0) -> PTZ:
        """A channel's head, to be moved."""
        return PTZ(self.login_id, channel)

    def read(self, kind: type[R], index: int = 0, stream: int = 0) -> R:
        """Reads a configuration block or a camera's parameters into the record of that kind: `read(tagConfigClock)`,
        `read(tagConfigVideoEncoder, channel, eStreamKind.eStreamSub)`, `read(tagCameraExposure, channel)`. What the
        device doesn't know is 0."""
        record = kind()
        if kind not in flat.BLOCKS:
            self._parameter(flat.ClientAdapter_GetIpcPara, record, index)
            return record
        block = tagConfigInformation(type=flat.BLOCKS[kind], index=index)
        block.extra[1] = stream
        check(f"reading {kind.__name__}", flat.ClientAdapter_GetConfig(self.login_id, block))
        ctypes.memmove(ctypes.addressof(record), ctypes.addressof(block.data), ctypes.sizeof(record))
        if kind._sized_:
            record.dwSize = ctypes.sizeof(record)
        return record

    def write(self, record: Record, index: int = 0, stream: int = 0) -> None:
        """Writes a record back that `read` has read."""
        kind = type(record)
        if kind not in flat.BLOCKS:
            self._parameter(flat.ClientAdapter_SetIpcPara, record, index)
            return
        block = tagConfigInformation(type=flat.BLOCKS[kind], index=index)
        block.extra[1] = stream
        ctypes.memmove(ctypes.addressof(block.data), ctypes.addressof(record), ctypes.sizeof(record))
        check(f"writing {kind.__name__}", flat.ClientAdapter_SetConfig(self.login_id, block))

    def _parameter(self, function: Callable[[int, int, int, Any, int], int], record: Record, channel: int) -> None:
        kind = type(record)
        if kind not in flat.PARAMETERS:
            raise TypeError(f"{kind.__name__} is neither a configuration block nor a camera's parameters")
        check(kind.__name__, function(self.login_id, channel, flat.PARAMETERS[kind], ctypes.byref(record),
                                      ctypes.sizeof(record)))

    # --- the end ---

    def close(self) -> None:
        """Closes the streams and logs out."""
        with self._mutex:
            if self._closed:
                return
            self._closed = True
            streams, events = list(self._streams), self._events
        for stream in streams:
            stream.close()
        if events is not None:
            events.close()
        flat.ClientAdapter_UserLogout(self.login_id)
        self.client._forget(self)

    def __enter__(self) -> Login:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()


