"""A program in another language drives the library through its C API: nothing but the header's layouts is known here.

    client_test.py LIBRARY SERVER CLIP      the plug-in's folder in LD_LIBRARY_PATH
"""

import ctypes
import os
import queue
import subprocess
import sys
import unittest
from ctypes import CFUNCTYPE, POINTER, c_char, c_int, c_int32, c_int64, c_uint32, c_ulong, c_void_p

PROTOCOL_RTSP = 2
STREAM_MAIN = 1
EVENT_LIVE, EVENT_REFUSED = 2, 4
MEDIA_VIDEO = 0
FRAME_KEY = 1
PATIENCE = 30  # seconds, for what is bound to come


class LoginPara(ctypes.Structure):
    _fields_ = [
        ("address", c_char * 256), ("port", c_uint32), ("user_name", c_char * 32), ("password", c_char * 32),
        ("reserved", c_uint32), ("rtsp_main_port", c_int32), ("rtsp_sub_port", c_int32),
        ("rtsp_main_path", c_char * 128), ("rtsp_sub_path", c_char * 128), ("rtsp_url_mode", c_uint32),
        ("rtsp_host_select", c_uint32), ("rtsp_host", c_char * 256),
    ]


class StreamPara(ctypes.Structure):
    _fields_ = [("channel", c_uint32), ("reserved", c_uint32), ("kind", c_uint32), ("stream_para", c_uint32 * 7)]


class MediaFrame(ctypes.Structure):
    _fields_ = [
        ("media_type", c_uint32), ("codec", c_uint32), ("codec_name", c_char * 16), ("flags", c_uint32),
        ("sequence", c_uint32), ("lost_before", c_uint32), ("length", c_uint32), ("presentation_us", c_int64),
        ("wall_clock_us", c_int64), ("width", c_uint32), ("height", c_uint32), ("sample_rate", c_uint32),
        ("channels", c_uint32), ("data", c_void_p), ("config", c_void_p), ("config_length", c_uint32),
    ]


FrameCallback = CFUNCTYPE(c_int, c_void_p, POINTER(MediaFrame), c_ulong)
EventCallback = CFUNCTYPE(c_int, c_void_p, c_ulong, c_ulong, c_ulong, c_ulong, c_ulong)


class Client(unittest.TestCase):
    def setUp(self):
        self.library = ctypes.CDLL(LIBRARY)
        self.library.ClientAdapter_StreamMediaCB.argtypes = [c_int, FrameCallback, c_ulong]
        self.library.ClientAdapter_SubscribeEvent.argtypes = [c_int, c_ulong, EventCallback, c_ulong]
        self.server = subprocess.Popen(
            [SERVER, "--seconds", "60", "--user", "viewer", "/live",
             f"( filesrc location={CLIP} ! qtdemux ! h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1 )"],
            env={**os.environ, "TESSARO_PASSWORD": "secret"}, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.port = int(self.server.stdout.readline().split()[-1])
        self.frames = queue.Queue()
        self.events = queue.Queue()
        # The library calls these on its plug-ins' threads: they must outlive the stream.
        self.on_frame = FrameCallback(self.frame)
        self.on_event = EventCallback(self.event)
        self.assertEqual(self.library.ClientAdapter_Start(16), 0)

    def tearDown(self):
        self.library.ClientAdapter_Stop()
        self.server.communicate()  # its input ends, and so does it

    def frame(self, stream, frame, user):
        data = ctypes.string_at(frame.contents.data, frame.contents.length)
        copy = MediaFrame.from_buffer_copy(frame.contents)
        self.frames.put((stream, copy, data, user))
        return 0

    def event(self, login, event, detail, pause_ms, reconnects, user):
        self.events.put((login, event, detail, user))
        return 0

    def log_in(self, password):
        para = LoginPara(address=f"rtsp://127.0.0.1:{self.port}/live".encode(), user_name=b"viewer", password=password)
        login = c_int(-1)
        self.assertEqual(self.library.ClientAdapter_UserLogin(ctypes.byref(login), PROTOCOL_RTSP, ctypes.byref(para)), 0)
        return login.value

    def open_live(self, login):
        para = StreamPara(kind=STREAM_MAIN)
        media = c_int(-1)
        self.assertEqual(self.library.ClientAdapter_RealStreamConnect(ctypes.byref(media), login, ctypes.byref(para)), 0)
        self.assertEqual(self.library.ClientAdapter_SubscribeEvent(login, 0, self.on_event, 70 + login), 0)
        self.assertEqual(self.library.ClientAdapter_StreamMediaCB(media, self.on_frame, 0xFFFFFFFF), 0)
        return media.value

    def await_event(self, wanted):
        while True:
            event = self.events.get(timeout=PATIENCE)
            if event[1] == wanted:
                return event

    def test_live_stream(self):
        login = self.log_in(b"secret")
        media = self.open_live(login)
        self.assertEqual(self.await_event(EVENT_LIVE)[3], 70 + login)
        got = [self.frames.get(timeout=PATIENCE) for _ in range(30)]
        for index, (stream, frame, data, user) in enumerate(got):
            self.assertEqual((stream or 0, user, frame.sequence), (media, 0xFFFFFFFF, index))
            self.assertEqual((frame.media_type, frame.codec_name, frame.width, frame.height),
                             (MEDIA_VIDEO, b"h264", 320, 240))
            self.assertTrue(data.startswith(b"\0\0\0\1"))
        self.assertTrue(got[0][1].flags & FRAME_KEY)
        self.assertEqual(self.library.ClientAdapter_RealStreamDisconnect(media), 0)
        while not self.frames.empty():
            self.frames.get()
        self.assertEqual(self.library.ClientAdapter_UserLogout(login), 0)
        self.assertTrue(self.frames.empty(), "no frame comes after the stream is closed")
        self.assertEqual(self.library.ClientAdapter_RealStreamDisconnect(media), -1)
        self.assertEqual(self.library.ClientAdapter_UserLogout(login), 3)

    def test_wrong_password(self):
        login = self.log_in(b"guess")
        media = self.open_live(login)
        self.assertEqual(self.await_event(EVENT_REFUSED)[2], 401)
        self.assertEqual(self.library.ClientAdapter_RealStreamDisconnect(media), 0)
        self.assertEqual(self.library.ClientAdapter_UserLogout(login), 0)
        self.assertTrue(self.frames.empty())


if __name__ == "__main__":
    LIBRARY, SERVER, CLIP = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1])
