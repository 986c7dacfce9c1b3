"""The library's service, and logging in."""

from __future__ import annotations

import atexit
import ctypes
import threading
from typing import Any, Optional
from urllib.parse import urlsplit

from . import flat
from .errors import check
from .flat import eProtocolType, tagUserLoginPara
from .login import Login

_PROTOCOLS = {"rtsp": eProtocolType.eProtocolRTSP, "rtsps": eProtocolType.eProtocolRTSP,
              "onvif": eProtocolType.eProtocolOnvif, "vtq": eProtocolType.eProtocolVTQ}


class Client:
    """The library, started; one at a time in a process. Close it, or use it with `with`: that closes all logins and
    streams. What is still open when the process ends is closed then.
    """

    _mutex = threading.Lock()
    _open: Optional[Client] = None

    def __init__(self, max_streams: int = 64) -> None:
        """max_streams: how many RTSP streams may be open at once."""
        with Client._mutex:
            if Client._open is not None:
                raise RuntimeError("a Client is open already: close it first")
            flat.ClientAdapter_Start(max_streams)
            Client._open = self
        self._logins: set[Login] = set()
        self._closing = False
        atexit.register(self.close)

    @property
    def version(self) -> str:
        """The library's version and build."""
        return flat.TessaroExtra_Version().decode()

    def login(self, address: str, user: str = "", password: str = "", *, timeout: float = 0) -> Login:
        """Logs in. The address begins with its protocol: vtq://host[:port], onvif://host[:port], or the whole URL of an
        RTSP stream, of which nothing is asked before the stream is opened. timeout: seconds that a call may take; 0: the
        usual."""
        parts = urlsplit(address)
        if parts.scheme not in _PROTOCOLS or not parts.hostname:
            raise ValueError("an address begins with " + ", ".join(f"{scheme}://" for scheme in _PROTOCOLS)
                             + " and names a host")
        if "@" in parts.netloc:
            raise ValueError("an address never holds a user name or a password: give them as user and password")
        protocol = _PROTOCOLS[parts.scheme]
        para = tagUserLoginPara(szUserName=user, szPassword=password, dwTimeoutMs=round(timeout * 1000))
        if protocol == eProtocolType.eProtocolRTSP:
            para._set("szAddress", address)
        else:
            para._set("szAddress", parts.hostname)
        para.dwPort = parts.port or 0
        number = ctypes.c_int(-1)
        check(f"logging in at {address}", flat.ClientAdapter_UserLogin(number, protocol, para))
        login = Login(self, protocol, number.value, address)
        with Client._mutex:
            self._logins.add(login)
        return login

    def _forget(self, login: Login) -> None:
        with Client._mutex:
            self._logins.discard(login)

    def close(self) -> None:
        """Closes every login and stops the library. Not from inside a callback, and not while another thread makes a
        call."""
        with Client._mutex:
            logins, first, self._closing = list(self._logins), not self._closing, True
        if not first:
            return
        for login in logins:
            login.close()
        with Client._mutex:
            flat.ClientAdapter_Stop()
            Client._open = None
        atexit.unregister(self.close)

    def __enter__(self) -> Client:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()
