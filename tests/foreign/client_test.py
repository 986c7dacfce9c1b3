"""A live stream in Python, through the C API alone: an application needs no C or C++ of its own.

    client_test.py LIBRARY SERVER CLIP      the plug-in's folder in LD_LIBRARY_PATH
"""

import ctypes
import queue
import subprocess
import sys
from ctypes import CFUNCTYPE, POINTER, byref, c_int, c_uint32, c_ulong, c_void_p

PROTOCOL_RTSP, STREAM_MAIN, MEDIA_VIDEO = 2, 1, 0
LIBRARY, SERVER, CLIP = sys.argv[1:4]
library = ctypes.CDLL(LIBRARY)
FrameCallback = CFUNCTYPE(c_int, c_void_p, POINTER(c_uint32), c_ulong)
library.ClientAdapter_StreamMediaCB.argtypes = [c_int, FrameCallback, c_ulong]
frames = queue.Queue()


@FrameCallback
def on_frame(stream, frame, user):
    """Called on a thread of the plug-in; frame points to a tagStreamMediaFrame."""
    frames.put((stream or 0, frame[0], user))
    return 0


def expect(value, expected, what):
    if value != expected:
        sys.exit(f"{what}: {value}, not {expected}")


server = subprocess.Popen(
    [SERVER, "--seconds", "60", "/live",
     f"( filesrc location={CLIP} ! qtdemux ! h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1 )"],
    stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
port = int(server.stdout.readline().split()[-1])
login, media = c_int(-1), c_int(-1)
login_para = ctypes.create_string_buffer(f"rtsp://127.0.0.1:{port}/live".encode(), 1024)  # the address comes first
stream_para = (c_uint32 * 10)(0, 0, STREAM_MAIN)
expect(library.ClientAdapter_Start(16), 0, "start")
expect(library.ClientAdapter_UserLogin(byref(login), PROTOCOL_RTSP, login_para), 0, "login")
expect(library.ClientAdapter_RealStreamConnect(byref(media), login, stream_para), 0, "connect")
expect(library.ClientAdapter_StreamMediaCB(media, on_frame, 0xFFFFFFFF), 0, "registration")
for _ in range(30):
    expect(frames.get(timeout=30), (media.value, MEDIA_VIDEO, 0xFFFFFFFF), "frame")
expect(library.ClientAdapter_RealStreamDisconnect(media), 0, "disconnect")
expect(library.ClientAdapter_RealStreamDisconnect(media), -1, "disconnect again")
expect(library.ClientAdapter_UserLogout(login), 0, "logout")
library.ClientAdapter_Stop()
server.communicate()  # its input ends, and so does it
