"""One way to talk to every camera, recorder and video decoder on a site.

    with tessaro.Client() as client, client.login("vtq://192.0.2.1", "viewer", password) as login:
        with login.live(channel=0) as stream:
            for frame in stream:
                print(frame.codec_name, frame.width, frame.height, len(frame.data))

What a function here doesn't do, the C API does: `tessaro.flat` has all of it under its own names, and takes the
`login_id` and `media_id` of the objects here.
"""

from . import flat
from .client import Client
from .errors import (BadArgument, Busy, Closed, Error, Locked, NoPlugin, NoRoom, NotFound, NotSupported, Refused,
                     TimedOut, Unreachable, WrongLogin)
from .events import Event, Events
from .login import Login, Recording
from .ptz import PTZ, Preset
from .streams import Frame, LiveStream, Playback, Stream

__all__ = ["BadArgument", "Busy", "Client", "Closed", "Error", "Event", "Events", "Frame", "LiveStream", "Locked", "Login",
           "NoPlugin", "NoRoom", "NotFound", "NotSupported", "PTZ", "Playback", "Preset", "Recording", "Refused", "Stream",
           "TimedOut", "Unreachable", "WrongLogin", "flat"]
