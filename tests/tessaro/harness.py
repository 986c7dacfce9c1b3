"""What the tests of the tool share: running it as a person does, in a terminal of its own or in a pipe; reading its pictures."""

import fcntl
import json
import os
import pty
import re
import select
import struct
import subprocess
import tempfile
import termios
import time
import zlib

TESSARO, PLUGINS, BROKEN = (os.environ[name] for name in ("TESSARO", "PLUGINS", "BROKEN"))
WORK = tempfile.mkdtemp(prefix="tessaro-test-")
DEVICE = "vtq://192.0.2.1"
PATIENCE = 120  # seconds: the machine may be loaded


def environment(password="admin", **more):
    env = {key: value for key, value in os.environ.items() if not key.startswith("TESSARO")}
    env |= {"LD_LIBRARY_PATH": PLUGINS} | ({"TESSARO_PASSWORD": password} if password else {})
    return env | {key: value for key, value in more.items()}


def run(*arguments, code=0, stdin="", by=(), **env):
    """What it writes to its two outputs; its exit code must be the one expected. No terminal anywhere. by: what runs it."""
    done = subprocess.run([*by, TESSARO, *map(str, arguments)], input=stdin, env=environment(**env), cwd=WORK, timeout=PATIENCE,
                          capture_output=True, text=True, start_new_session=True)
    assert done.returncode == code, f"{arguments}: exit code {done.returncode}, not {code}\n{done.stdout}\n{done.stderr}"
    return done.stdout, done.stderr


def run_json(*arguments, **more):
    return json.loads(run("--json", *arguments, **more)[0])


def run_lines(*arguments, **more):
    return [json.loads(line) for line in run("--json", *arguments, **more)[0].splitlines()]


class Server:
    """A server of ours, until close(): its ports are the numbers in its first line."""

    def __init__(self, program, *arguments):
        self.process = subprocess.Popen([os.environ[program], *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        env=os.environ | {"TESSARO_PASSWORD": "secret"})
        self.ports = re.findall(r"\b\d+", self.process.stdout.readline())

    def close(self):
        self.process.communicate()


class Terminal:
    """The tool in a terminal. expect() waits for a text, send() types."""

    def __init__(self, *arguments, width=100, **env):
        self.text = ""
        self.child, self.file = pty.fork()
        if self.child == 0:
            os.chdir(WORK)
            os.execve(TESSARO, [TESSARO, *map(str, arguments)], environment(**env))
        fcntl.ioctl(self.file, termios.TIOCSWINSZ, struct.pack("HHHH", 40, width, 0, 0))

    def read(self, until):
        if not select.select([self.file], [], [], max(0, until - time.monotonic()))[0]:
            return False
        try:
            more = os.read(self.file, 65536).decode(errors="replace")
        except OSError:  # the other side is closed
            more = ""
        self.text += more
        return more != ""

    def expect(self, pattern):
        until = time.monotonic() + PATIENCE
        while not (found := re.search(pattern, self.text)):
            assert self.read(until), f"{pattern!r} didn't come:\n{self.text}"
        self.text = self.text[found.end():]
        return found

    def echoes(self):
        return bool(termios.tcgetattr(self.file)[3] & termios.ECHO)

    def send(self, text):
        os.write(self.file, text.encode())

    def end(self, code=0):
        until = time.monotonic() + PATIENCE
        while self.read(until):
            pass
        status = os.waitstatus_to_exitcode(os.waitpid(self.child, 0)[1])
        os.close(self.file)
        assert status == code, f"exit code {status}, not {code}\n{self.text}"
        return self.text


def contents(name):
    with open(os.path.join(WORK, name), "rb") as file:
        return file.read()


class Picture:
    """A PNG file: its size and its dots."""

    def __init__(self, path):
        data = contents(path)
        assert data[:8] == b"\x89PNG\r\n\x1a\n", f"{path} is no PNG"
        packed, place = b"", 8
        while place < len(data):
            length, kind = struct.unpack(">I4s", data[place:place + 8])
            body = data[place + 8:place + 8 + length]
            assert zlib.crc32(kind + body) == struct.unpack(">I", data[place + 8 + length:place + 12 + length])[0]
            if kind == b"IHDR":
                self.width, self.height, depth, colour = struct.unpack(">IIBB", body[:10])
                assert (depth, colour) in ((8, 2), (8, 6))
                self.step = 3 if colour == 2 else 4
            packed += body if kind == b"IDAT" else b""
            place += 12 + length
        self.rows, before, raw = [], bytearray(self.width * self.step), zlib.decompress(packed)
        for y in range(self.height):
            begin = y * (self.width * self.step + 1)
            row = bytearray(raw[begin + 1:begin + 1 + self.width * self.step])
            self.unfilter(raw[begin], row, before)
            self.rows.append(row)
            before = row

    def unfilter(self, kind, row, up):
        step = self.step
        for i in range(len(row)):
            left, corner = (row[i - step], up[i - step]) if i >= step else (0, 0)
            if kind == 4:
                guess = left + up[i] - corner
                add = min((left, up[i], corner), key=lambda value: abs(guess - value))
            else:
                add = (0, left, up[i], (left + up[i]) // 2)[kind]
            row[i] = (row[i] + add) & 255

    def dot(self, x, y):
        return tuple(self.rows[y][x * self.step:x * self.step + 3])

    def colours(self):
        return len({self.dot(x, y) for y in range(0, self.height, 7) for x in range(0, self.width, 7)})

    def counter(self, left=0, top=0, height=None):
        """The number that the picture in this place shows as a row of bits, the lowest first."""
        height = height or self.height
        bit = height * 2 // 45
        return sum((self.dot(left + bit * k + bit // 2, top + height - bit // 2)[1] > 128) << k for k in range(12))
