"""live_view as a person uses it: what it prints and ends with, for each way to call it.

    live_view_test.py LIVE_VIEW SERVER CLIP PEM      the plug-in's folder in LD_LIBRARY_PATH
"""

import os
import signal
import subprocess
import sys
import tempfile
import time

LIVE_VIEW, SERVER, CLIP, PEM = sys.argv[1:]
U = ["--user", "viewer"]
os.environ.pop("TESSARO_PASSWORD", None)
# Arguments, password, exit code, and a sentence of what is printed. URL/x stands for the server's mount x, TLS/x for the same with rtsps.
TABLE = [
    (["--help"], None, 0, "Exit code: 0 frames came"),
    ([], None, 2, "an address is missing"),
    (["rtsp://h/1", "rtsp://h/2"], None, 2, 'what is "rtsp://h/2"?'),
    (["rtsp://h/1", "--nope", "1"], None, 2, "there is no option --nope"),
    (["rtsp://h/1", "--seconds"], None, 2, "--seconds needs a value"),
    (["rtsp://h/1", "--seconds", "5x"], None, 2, '--seconds is a number above 0, not "5x"'),
    (["rtsp://h/1", "--transport", "rtp"], None, 2, 'udp, multicast or automatic, not "rtp"'),
    (["rtsp://h/1", "--out", "/nowhere"], None, 2, 'to "/nowhere": No such file or directory'),
    (["rtsp://h/1", "--out", __file__], None, 2, "is no directory"),
    (["rtsp://h/" + "p" * 247], None, 2, "the address is too long: 256 bytes, and at most 255"),
    (["rtsp://h/1", "--user", "u" * 32], "p", 2, "the user name is too long: 32 bytes, and at most 31"),
    (["rtsp://h/1"] + U, "p" * 32, 2, "the password is too long: 32 bytes, and at most 31"),
    (["rtsp://h/1"] + U, None, 2, "set TESSARO_PASSWORD, or run this on a terminal"),
    (["rtsp://u:p@h/1"], None, 2, "never holds a user name or a password"),
    (["rtsp://127.0.0.1:1/1"], None, 1, "nothing listens on this port"),
    (["rtsp://-/1"], None, 1, "there is no host of this name"),
    (["TLS/video", "--check-certificate"] + U, "secret", 1, "the device's certificate isn't trusted"),
    (["URL/video"], None, 1, "it wants a user name and a password; give --user"),
    (["URL/video"] + U, "wrong", 1, "wrong user name or password (RTSP status 401)"),
    (["URL/nothing"] + U, "secret", 1, "there is no such stream; is the path right? (RTSP status 404)"),
    (["URL/video", "--seconds", "1", "--out", "OUT"] + U, "secret", 0, "file                 OUT/live.h264"),
    (["URL/jpeg", "--seconds", "1", "--out", "OUT"] + U, "secret", 0, "file                 OUT/live.mjpeg"),
    (["URL/vp8", "--seconds", "1", "--out", "OUT"] + U, "secret", 0, "none: vp8 can't be played without a container"),
    (["URL/audio", "--seconds", "1", "--out", "OUT"] + U, "secret", 0, "none: the stream has no video"),
]
LIVE = "is-live=true ! video/x-raw,format=I420,width=160,height=120,framerate=10/1"
MOUNTS = {
    "/video": f"filesrc location={CLIP} ! qtdemux ! h264parse ! rtph264pay name=pay0 config-interval=-1",
    "/jpeg": f"videotestsrc {LIVE} ! jpegenc ! rtpjpegpay name=pay0",
    "/vp8": f"videotestsrc {LIVE} ! vp8enc deadline=1 ! rtpvp8pay name=pay0",
    "/audio": "audiotestsrc is-live=true ! audio/x-raw,rate=8000 ! alawenc ! rtppcmapay name=pay0",
}


def serve(*options):
    words = [word for mount, pipeline in MOUNTS.items() for word in (mount, f"( {pipeline} )")]
    return subprocess.Popen([SERVER, "--seconds", "120", "--user", "viewer", *options, *words], stdin=subprocess.PIPE,
                            stdout=subprocess.PIPE, text=True, env=os.environ | {"TESSARO_PASSWORD": "secret"})


def start(arguments, password):
    words = [word.replace("URL", url).replace("TLS", tls).replace("OUT", out) for word in arguments]
    return subprocess.Popen([LIVE_VIEW, *words], env=os.environ | ({"TESSARO_PASSWORD": password} if password else {}),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def check(process, code, sentence):
    text = process.communicate(timeout=60)[0].replace(out, "OUT")
    if process.returncode != code or sentence not in text:
        sys.exit(f"{process.args}\nended with {process.returncode} instead of {code}, or without {sentence!r}:\n{text}")


with tempfile.TemporaryDirectory() as out, serve() as server, serve("--tls", PEM) as tls_server:
    url = f"rtsp://127.0.0.1:{server.stdout.readline().split()[-1]}"
    tls = f"rtsps://127.0.0.1:{tls_server.stdout.readline().split()[-1]}"
    for arguments, password, code, sentence in TABLE:
        check(start(arguments, password), code, sentence)
    for name, begin in ("live.h264", b"\0\0\0\1"), ("live.mjpeg", b"\xff\xd8\xff"):
        with open(os.path.join(out, name), "rb") as file:
            assert file.read().startswith(begin), name
    os.remove(os.path.join(out, "live.h264"))
    interrupted = start(["URL/video", "--seconds", "60", "--out", "OUT"] + U, "secret")
    while interrupted.poll() is None and not os.path.exists(os.path.join(out, "live.h264")):
        time.sleep(0.1)
    interrupted.send_signal(signal.SIGINT)
    check(interrupted, 0, "OUT/live.h264")
print(f"tried: {len(TABLE) + 1} ways to call live_view")
