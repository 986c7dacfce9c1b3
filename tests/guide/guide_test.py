"""The guide: that pages and files agree, and that what the pages show works as they say."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(os.environ["ROOT"])
EXAMPLES, SERVER, CLIP, PLUGIN, TESSARO = (os.environ[name] for name in ("EXAMPLES", "SERVER", "CLIP", "PLUGIN", "TESSARO"))
PATIENCE = 120


def run(*arguments, password="admin", cwd=None, more={}):
    done = subprocess.run(arguments, capture_output=True, text=True, timeout=PATIENCE, cwd=cwd,
                          env=os.environ | {"TESSARO_PASSWORD": password} | more)
    assert done.returncode == 0, f"{arguments}: {done.returncode}\n{done.stdout}\n{done.stderr}"
    return done.stdout + done.stderr


def serve(*options):
    mount = f"( filesrc location={CLIP} ! qtdemux ! h264parse ! rtph264pay name=pay0 config-interval=-1 )"
    server = subprocess.Popen([SERVER, "--seconds", "200", *options, "/live", mount], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True, env=os.environ | {"TESSARO_PASSWORD": "secret"})
    return server, server.stdout.readline().split()[-1]


class Guide(unittest.TestCase):
    def test_pages(self):
        print("\n" + run(sys.executable, "-B", str(ROOT / "docs/guide/quote.py"), "--check").strip())

    def test_picture(self):
        server, port = serve("--user", "viewer")
        with server:
            said = run(f"{EXAMPLES}/guide_picture", f"rtsp://127.0.0.1:{port}/live", "viewer", password="secret")
            server.communicate()
        self.assertRegex(said, r"h264 \d+x\d+, \d+ bytes, a key frame\n(.*\n)*25 pictures came")

    def test_threads_and_errors(self):
        self.assertRegex(run(f"{EXAMPLES}/guide_threads", "vtq", "192.0.2.1"), "50 frames, 0 dropped")
        said = run(f"{EXAMPLES}/guide_errors")
        self.assertRegex(said, r"library: \[Tessaro\]")
        self.assertRegex(said, r"logging in at nobody.invalid: .* \(210\)")

    def test_lost(self):
        server, port = serve()
        with subprocess.Popen([f"{EXAMPLES}/guide_lost", f"rtsp://127.0.0.1:{port}/live"], text=True,
                              stdout=subprocess.PIPE) as program:
            with server:
                said = next(line for line in program.stdout if line.startswith("live"))
                server.communicate()
            said += next(line for line in program.stdout if line.startswith("lost"))
            server, _ = serve("--port", port)
            with server:
                said += program.communicate(timeout=PATIENCE)[0]
                server.communicate()
        self.assertEqual(program.returncode, 0, said)
        self.assertRegex(said, r"live, 1 times connected again\n(.*\n)*\d+ frames, \d+ packets lost")

    def test_plugin(self):
        lines = (ROOT / "examples/plugin/still.cpp").read_text().splitlines()
        self.assertLessEqual(sum(not re.fullmatch(r"\s*(//.*|/\*.*|[{}];?( //.*)?|)", line) for line in lines), 80)
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "testsrc=size=320x180", "-frames:v", "1",
                            f"{folder}/gate.jpg"], check=True)
            said = run(f"{EXAMPLES}/guide_threads", "private", "gate.jpg", cwd=folder, more={"TESSARO_PRIVATE_PLUGIN": PLUGIN})
            self.assertIn("50 frames, 0 dropped", said)
            if not TESSARO:
                self.skipTest("check-plugin: built without the tool")
            report = run(TESSARO, "check-plugin", PLUGIN, "private://gate.jpg", cwd=folder)
        self.assertGreaterEqual(len(re.findall("^ok ", report, re.M)), 20)
        self.assertNotIn("BROKEN", report)


if __name__ == "__main__":
    unittest.main(verbosity=2)
