"""The Python package: what it is made of, and what it does with a simulated device and an RTSP server."""

import ctypes
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import threading
import time
import traceback
import unittest

ROOT = pathlib.Path(os.environ["ROOT"])
PACKAGE = ROOT / "python"
sys.path.insert(0, str(PACKAGE))
import backend  # noqa: E402
import tessaro  # noqa: E402
from tessaro import flat  # noqa: E402

DEVICE = "vtq://192.0.2.1"
PATIENCE = 60
HEADERS = "\n".join(path.read_text() for path in [*(ROOT / "protocol/interface").glob("*.h"), *(ROOT / "adapter").glob("*.h")])


def run(*arguments, **more):
    done = subprocess.run([sys.executable, *map(str, arguments)], capture_output=True, text=True, timeout=PATIENCE * 3, **more)
    assert done.returncode == 0, f"{arguments}: {done.returncode}\n{done.stdout}\n{done.stderr}"
    return done.stdout


class Made(unittest.TestCase):
    """What the package is made of."""

    def test_flat_layer(self):
        run("-B", PACKAGE / "generate.py", "--check")
        sizes = re.findall(r"TESSARO_RECORD\((\w+), \d+, (\d+)\)|sizeof\((tag\w+)\) == (\d+)", HEADERS)
        for name, size in ((a or c, int(b or d)) for a, b, c, d in sizes):
            self.assertEqual(ctypes.sizeof(getattr(flat, name)), size, name)
            record = getattr(flat, name)()
            self.assertEqual(getattr(record, "dwSize", size), size, name)
        for name, field, offset in re.findall(r"offsetof\((tag\w+), (\w+)\) == (\d+)", HEADERS):
            self.assertEqual(getattr(getattr(flat, name), field).offset, int(offset), f"{name}.{field}")
        library = ctypes.CDLL(os.environ["TESSARO_LIBRARY"])
        for name in re.findall(r"^(\w+)", (ROOT / "tests/golden/exports.txt").read_text(), re.M):
            self.assertTrue(hasattr(library, name) and callable(getattr(flat, name)), name)
        print(f"\ntried: python, {len(sizes)} records' sizes")

    def test_passwords_are_never_shown(self):
        record = flat.tagUserLoginPara(szUserName="viewer", szPassword="geheim")
        nested = flat.tagDecoderChannelConfig(tSource=flat.tagDecoderSource(szPassword=b"geheim", dwPort=7))
        self.assertIn("viewer", repr(record))
        self.assertIn("dwPort=7", repr(nested))
        with self.assertRaises(ValueError) as long:
            flat.tagUserLoginPara(szPassword="geheim" * 6)
        for text in (repr(record), repr(nested), str(long.exception)):
            self.assertNotIn("geheim", text)

    def test_installing(self):
        self.assertEqual(backend.VERSION, os.environ["VERSION"])
        with tempfile.TemporaryDirectory() as folder:
            run("-m", "pip", "install", "--no-index", "--quiet", "--no-warn-script-location", "--target", f"{folder}/here", PACKAGE)
            with tarfile.open(f"{folder}/{backend.build_sdist(folder)}") as archive:
                archive.extractall(folder)
            run("-B", "-c", f"import backend; backend.build_wheel({folder!r})", cwd=f"{folder}/tessaro-{backend.VERSION}")
            run("-m", "zipfile", "-e", f"{folder}/tessaro-{backend.VERSION}-py3-none-any.whl", f"{folder}/sdist")
            for place in ("here", "sdist"):
                out = run("-c", "import tessaro; print(tessaro.__file__, tessaro.flat.TessaroExtra_Version())",
                          env=os.environ | {"PYTHONPATH": f"{folder}/{place}"})
                self.assertIn(f"{folder}/{place}/tessaro", out)
                self.assertTrue(os.path.exists(f"{folder}/{place}/tessaro/py.typed"))

    @unittest.skipUnless(shutil.which("mypy"), "mypy isn't there")
    def test_types(self):
        """The package's types, and the code of its page by them."""
        page = "".join(re.findall(r"```python\n(.*?)```", (PACKAGE / "README.md").read_text(), re.S))
        with tempfile.TemporaryDirectory() as folder:
            shown = pathlib.Path(folder, "shown.py")
            shown.write_text("import pathlib\nfrom typing import Any\nfrom tessaro.flat import *\ndecoder: Any = None\n" + page)
            done = subprocess.run(["mypy", "--cache-dir", folder, "--allow-untyped-defs", "--allow-untyped-calls", "tessaro", shown],
                                  cwd=PACKAGE, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout)


class Device(unittest.TestCase):
    """A simulated device."""

    def setUp(self):
        self.client = tessaro.Client()
        self.addCleanup(self.client.close)
        self.login = self.client.login(DEVICE, "admin", "admin")

    def test_wrong_logins(self):
        for address, password, wrong in ((DEVICE, "geheim", tessaro.WrongLogin), ("vtq://x.invalid", "admin", tessaro.Unreachable),
                                         ("vtq://admin@192.0.2.1", "", ValueError), ("http://192.0.2.1", "", ValueError)):
            with self.assertRaises(wrong) as caught:
                self.client.login(address, "admin", password)
            self.assertNotIn("geheim", f"{caught.exception!r} {caught.exception}")
        self.assertRaises(RuntimeError, tessaro.Client)

    def test_a_picture(self):
        with self.login.live(channel=1) as stream:
            frames = [frame for frame, _ in zip(stream, range(30)) if frame.media == flat.eMediaType.eMediaVideo]
        self.assertTrue(frames[0].key)
        self.assertEqual((frames[0].width, frames[0].height, frames[0].codec), (1280, 720, flat.eMediaCodec.eCodecH264))
        self.assertEqual(bytes(frames[0].data[:4]), b"\0\0\0\1")
        self.assertRegex(self.login.snapshot(width=320).hex(), "^ffd8.*ffd9$")
        self.assertRaises(tessaro.NotFound, self.login.live, 99)

    def test_frames_in_the_plugins_memory(self):
        kept, came = [], threading.Event()

        def on_frame(frame):
            kept.append((frame, frame.copy(), bytes(frame.data)))
            if len(kept) == 3:
                stream.close()
                came.set()

        stream = self.login.live(on_frame=on_frame)
        self.assertTrue(came.wait(PATIENCE))
        for frame, copy, data in kept:
            self.assertEqual(copy.data, data)
            self.assertRaises(ValueError, bytes, frame.data)
        self.assertEqual(len(kept), 3)

    def library_waits(self):
        """Whether a thread of the library waits until a frame is taken."""
        stacks = [traceback.extract_stack(frame) for frame in sys._current_frames().values()]
        return "_put" in [call.name for stack in stacks for call in stack]

    def test_closing_while_frames_flow(self):
        for form in range(12):
            stream = self.login.live(form % 4, on_frame=(lambda frame: None) if form % 2 else None, depth=1)
            thread = threading.Thread(target=lambda: sum(1 for _ in stream))
            if form % 4:
                thread.start()
                self.assertTrue(form % 2 or stream.read(PATIENCE))
            while form % 4 == 0 and not self.library_waits():
                time.sleep(0.01)
            if form % 3 == 0:
                stream.close()
            else:
                self.login.close()
                self.login = self.client.login(DEVICE, "admin", "admin")
            if form % 4:
                thread.join(PATIENCE)
            self.assertFalse(thread.is_alive())
            self.assertIsNone(stream.read())
            self.assertFalse(self.library_waits())
        run("-B", "-c", "import tessaro, threading\nmany = threading.Semaphore(0)\nlogin = tessaro.Client().login("
            "'vtq://192.0.2.1', 'admin', 'admin')\nfor n in range(8): login.live(n % 4, on_frame=lambda f: many.release())\n"
            "for n in range(50): many.acquire()", env=os.environ | {"PYTHONPATH": str(PACKAGE)})

    def test_recordings(self):
        recording = next(found for found in self.login.recordings() if not found.recording)
        with self.login.playback(recording) as playback:
            playback.speed(16)
            times = [frame.wall_clock_us for frame in playback]
            self.assertGreaterEqual(times[0], recording.start_us - 1)
            self.assertGreater(len(times), 1000)
            playback.seek((recording.start_us + recording.end_us) // 2)
            self.assertGreater(sum(1 for _ in playback), 300)
            self.assertGreater(playback.position(), recording.start_us)
        blocks = []
        self.assertEqual(self.login.download(recording, blocks.append), sum(map(len, blocks)))
        self.assertEqual(blocks[0][4:8], b"ftyp")
        self.assertRaises(ZeroDivisionError, self.login.download, recording, lambda block: 1 / 0)
        self.assertRaises(tessaro.NotFound, self.login.download, "nothing.rec", blocks.append)

    def happen(self, fault, **more):
        record = flat.tagDeviceFault(dwFault=fault, **more)
        flat.ClientAdapter_RTSPSetIsProductTest(flat.eMiscParameter.eMiscFault, ctypes.byref(record), record.dwSize,
                                                flat.eProtocolType.eProtocolVTQ)

    def test_a_login_that_the_device_ends(self):
        with self.login.events(flat.eDeviceEvent.eEventTamper) as events:
            self.happen(flat.eFaultKind.eFaultForceOff)
            self.assertRaises(tessaro.Unreachable, list, events)

    def test_events_and_movements(self):
        with self.login.events(flat.eDeviceEvent.eEventMotion) as events:
            self.happen(flat.eFaultKind.eFaultMotion, dwChannel=2, dwMilliseconds=1000)
            event = events.read(PATIENCE)
            self.assertEqual((event.kind, event.second, event.third), (flat.eDeviceEvent.eEventMotion, 2, 1))
            self.assertRaises(tessaro.TimedOut, lambda: [events.read(timeout=0) for _ in range(9)])
            self.login.events()
            self.assertIsNone(events.read(PATIENCE))  # replaced
        head = self.login.ptz()
        head.go_to(5000, -1000)
        head.set_preset(1, "Gate")
        self.assertEqual([(preset.number, preset.name) for preset in head.presets()], [(1, "Gate")])
        self.assertRaises(tessaro.BadArgument, head.go_to, 20000, 0)
        encoder = self.login.read(flat.tagConfigVideoEncoder, 0, flat.eStreamKind.eStreamSub)
        self.assertEqual((encoder.dwWidth, encoder.dwHeight), (640, 360))
        exposure = self.login.read(flat.tagCameraExposure)
        exposure.dwFlicker = 60
        self.login.write(exposure)
        self.assertEqual(self.login.read(flat.tagCameraExposure).dwFlicker, 60)


class Rtsp(unittest.TestCase):
    """A real RTSP server."""

    def test_streams(self):
        mount = f"( filesrc location={os.environ['CLIP']} ! qtdemux ! h264parse ! rtph264pay name=pay0 config-interval=-1 )"
        with subprocess.Popen([os.environ["SERVER"], "--seconds", "120", "--user", "viewer", "/live", mount], text=True,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              env=os.environ | {"TESSARO_PASSWORD": "secret"}) as server, tessaro.Client() as client:
            url = f"rtsp://127.0.0.1:{server.stdout.readline().split()[-1]}"
            for path, password, wrong in (("/live", "geheim", tessaro.WrongLogin), ("/nothing", "secret", tessaro.NotFound)):
                with client.login(url + path, "viewer", password) as login, self.assertRaises(wrong):
                    login.live().read(PATIENCE)
            with client.login("rtsp://127.0.0.1:1/live") as login, self.assertRaises(tessaro.Unreachable):
                login.live().read(PATIENCE)
            with client.login(url + "/live", "viewer", "secret") as login, login.live(depth=1) as stream:
                frame = stream.read(PATIENCE)
                self.assertEqual((frame.codec_name, frame.key, frame.sequence), ("h264", True, 0))
                self.assertEqual(bytes(frame.data[:4]), b"\0\0\0\1")
                with login.events() as events:
                    stream.pause()
                    self.assertIn(flat.eConnectionEvent.eEventPaused, (event.kind for event in events))
                self.assertGreater(stream.statistics().ullFrames, 0)
            server.communicate()


if __name__ == "__main__":
    unittest.main(verbosity=2)
