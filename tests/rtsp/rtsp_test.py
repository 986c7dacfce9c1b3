"""Streams of the RTSP plug-in, from the servers of server.py and from foreign ones. The probe runs them; see probe.cpp.

    rtsp_test.py TEST...      PROBE, SERVER (tools/rtsp_server), CLIPS and REBOOTS in the environment
"""

import asyncio
import collections
import errno
import os
import re
import resource
import shlex
import shutil
import socket
import subprocess
import tempfile
import time
import unittest

from cases import CASES, RECORDING
from server import Server

CLIPS = os.environ["CLIPS"]
PATIENCE = 120  # seconds, for what is bound to come, on a busy machine too
CLOSING = 5000  # milliseconds: 2 s, and what a busy machine adds
TCP, UDP, MULTICAST, AUTOMATIC = range(4)
CONNECTING, LIVE, STALLED, REFUSED, LOST, PAUSED, JUMP, TRANSPORT = range(1, 9)
VIDEO, AUDIO = 0, 1
KEY, BREAK, DAMAGED = 1, 2, 4
PLAY, PAUSE = 0, 1
STILL_RUNNING = 219
Frame = collections.namedtuple(
    "Frame", "handle type codec flags sequence lost length time wall width height rate channels config sum name")
Info = collections.namedtuple("Info", "state reconnects status dropped packets frames bytes lost")


class Stream:
    """What a stream told and delivered. Faults: what must not be, whatever the server does."""

    def __init__(self, probe, number, name):
        self.probe, self.number, self.name, self.faults = probe, number, name, []
        self.frames, self.events, self.late, self.last, self.broken = [], [], [], {}, False
        self.opened, self.did, self.talked, self.info = (0, 0), None, None, None
        self.closed = (None, 0)

    def take(self, kind, words):
        if kind == "frame":
            frame = Frame(*map(int, words[:-1]), words[-1])
            self.check(frame)
            self.frames.append(frame)
        elif kind in ("event", "late"):
            getattr(self, kind.replace("event", "events")).append(tuple(map(int, words)))
            self.broken |= self.events[-1:] != [] and self.events[-1][0] in (LOST, REFUSED)
        else:
            setattr(self, kind, Info(*map(int, words)) if kind == "info" else tuple(map(int, words)))
            if self.opened[0] != 0:
                self.faults.append("not opened")

    def check(self, frame):
        """Every stream begins with a key frame, and goes on with one after a failure; numbers grow, time doesn't run
        back; what needs the frame before comes right behind it."""
        last = self.last.get((frame.type, frame.name))
        step = frame.sequence - last.sequence if last else 1
        first = frame.type == VIDEO and (self.broken or not last)
        if first and frame.codec and (frame.flags & (KEY | DAMAGED) != KEY or (last and not frame.flags & BREAK)):
            self.faults.append(f"begins with {frame}")
        if step < 1 or (last and frame.time < last.time):
            self.faults.append(f"{frame} behind {last}")
        if frame.type == VIDEO and frame.codec and not frame.flags & KEY and step != 1 and not first:
            self.faults.append(f"not what {frame} needs: {last}")
        self.broken &= frame.type != VIDEO
        self.last[frame.type, frame.name] = frame

    async def until(self, is_so, patience=PATIENCE):
        """Waits for is_so(self); its result, false: it didn't come."""
        end = time.monotonic() + patience
        while not (so := is_so(self)) and time.monotonic() < end:
            await self.probe.something(end)
        if not so:
            self.faults.append(f"it didn't come; {self.letters()[:60]} and {self.events} did")
        return so

    async def event(self, kind):
        return await self.until(lambda s: next((event for event in s.events if event[0] == kind), None)) or (0,) * 4

    async def count(self, frames):
        await self.until(lambda s: len(s.frames) >= frames)
        return self.frames

    def tell(self, command, *words):
        self.probe.tell(command, self.number, *words)

    async def close(self):
        """Result and milliseconds."""
        self.tell("close")
        await self.until(lambda s: s.closed[0] is not None)
        return self.closed

    async def ask_info(self):
        self.info = None
        self.tell("info")
        return await self.until(lambda s: s.info)

    def clear(self):
        self.frames, self.events, self.late = [], [], []

    def letters(self):
        """K a key frame, P another, A audio; small ones are damaged, ! stands before what doesn't continue."""
        pair = lambda frame: "aA" if frame.type == AUDIO else "kK" if frame.flags & KEY else "pP"
        return "".join("!" * bool(frame.flags & BREAK) + pair(frame)[not frame.flags & DAMAGED] for frame in self.frames)

    def failures(self):
        return [event for event in self.events if event[0] in (LOST, REFUSED)]


class Probe:
    async def start(self):
        self.streams, self.anything, self.answer = {}, asyncio.Event(), None
        self.process = await asyncio.create_subprocess_exec(*shlex.split(os.environ["PROBE"]), stdin=subprocess.PIPE,
                                                            stdout=subprocess.PIPE)
        self.reader = asyncio.ensure_future(self.read())
        return self

    async def read(self):
        while line := (await self.process.stdout.readline()).decode("latin-1"):
            kind, *words = line.rstrip("\n").split("\t")
            if kind == "self":
                self.answer = tuple(map(int, words))
            elif words and (stream := self.streams.get(words[0])):
                stream.take(kind, words[1:])
            self.anything.set()

    async def something(self, end):
        """Until the probe has said something, or this time."""
        self.anything.clear()
        try:
            await asyncio.wait_for(self.anything.wait(), max(0, end - time.monotonic()))
        except asyncio.TimeoutError:
            pass

    def tell(self, *words):
        self.process.stdin.write(("\t".join(map(str, words)) + "\n").encode("latin-1"))

    def add(self, name):
        number = len(self.streams) + 1
        self.streams[str(number)] = Stream(self, number, name)
        return self.streams[str(number)]

    def open(self, url, user="", password="", transport=TCP, certificate=0, action="", file="", only=0, door="plugin",
             frames=True):
        stream = self.add(url)
        self.tell("open", stream.number, door, url, user, password, transport, certificate, action, file, only)
        if frames:
            stream.tell("frames", 1)
        return stream

    async def ask_self(self):
        """Threads, open files, bytes."""
        self.answer = None
        self.tell("self")
        end = time.monotonic() + PATIENCE
        while self.answer is None and time.monotonic() < end:
            await self.something(end)
        return self.answer

    async def end(self):
        self.process.stdin.close()
        await asyncio.wait_for(self.process.wait(), PATIENCE)
        await self.reader
        return self.process.returncode


class Base(unittest.IsolatedAsyncioTestCase):
    maxDiff = 2000

    async def asyncSetUp(self):
        asyncio.get_running_loop().set_debug(False)
        self.other = await Server(CASES).start()
        self.server = await Server(CASES, [self.other]).start()
        self.probe = await Probe().start()

    async def asyncTearDown(self):
        self.assertEqual(await self.probe.end(), 0)
        self.assertEqual(self.server.errors + self.other.errors, [])
        for stream in self.probe.streams.values():
            with self.subTest(stream.name):
                self.assertEqual(stream.faults, [])
        self.server.stop()
        self.other.stop()

    def open(self, path="/0/0?fps=25", **how):
        return self.probe.open(self.server.url + path, **how)

    async def until(self, is_so, patience=PATIENCE):
        end = time.monotonic() + patience
        while not is_so() and time.monotonic() < end:
            await asyncio.sleep(0.01)
        self.assertTrue(is_so())

    async def ask_until(self, is_so):
        """Threads, open files, bytes, once is_so of them."""
        end = time.monotonic() + PATIENCE
        while not is_so(now := await self.probe.ask_self()) and time.monotonic() < end:
            await asyncio.sleep(0.1)
        self.assertTrue(is_so(now), now)
        return now

    def assert_even(self, frames, step=40000, off=2000):
        """Frames of one track: none missing, each so many microseconds after the one before."""
        for last, frame in zip(frames, frames[1:]):
            self.assertEqual((frame.sequence, frame.lost), (last.sequence + 1, 0))
            self.assertAlmostEqual(frame.time - last.time, step, delta=off)


class Hostile(Base):
    """The cases of cases.py, all at once."""

    def left(self):
        """Seconds to wait: all run at once, so the time is that of all."""
        return max(1, self.end - time.monotonic())

    async def shown(self, case):
        """Until a case has been shown as often as it should."""
        await self.until(lambda: self.server.did[case["number"]] >= case["sessions"], self.left())

    def open_case(self, case, sessions):
        url = self.server.url.replace("127.0.0.1", case.get("host", "127.0.0.1"))
        return self.probe.open(f"{url}/{case['number']}/{sessions}", case["user"], case["password"], case["transport"])

    def healed(self, case):
        fails = case["sessions"] if case["end"] in ("lost", "refused") else 0

        def is_so(stream):
            events = [event[0] for event in stream.events]
            live = LIVE in events[max((n for n, event in enumerate(events) if event in (LOST, REFUSED)), default=0):]
            return live and len(stream.failures()) >= fails and (case["end"] == "mute" or stream.frames and (
                not stream.frames[-1].flags & DAMAGED and len(stream.letters()) >= len(case["frames"])))
        return is_so

    async def check(self, case, stream):
        if "pause" in case:
            await stream.until(self.healed(case))
            stream.tell("control", PAUSE)
            await stream.event(PAUSED)
            stream.clear()
            stream.tell("control", PLAY)
        else:
            await self.shown(case)
        await stream.until(self.healed(case), self.left())
        letters, events, failures = stream.letters(), [event[0] for event in stream.events], stream.failures()
        self.assertTrue(letters.startswith(case["frames"]), letters[:60])
        self.assertTrue("stalls" not in case or STALLED in events)
        self.assertTrue("hears" not in case or case["hears"] in events)
        self.assertTrue("never" not in case or case["never"] not in events)
        jumps = [event[1] for event in stream.events if event[0] == JUMP]
        self.assertGreaterEqual(max(jumps, default=0), case["jump"])
        kind = {"lost": [LOST], "refused": [REFUSED]}.get(case["end"], [])
        self.assertEqual([event[0] for event in failures], kind * case["sessions"])
        for event in failures:
            self.assertTrue(400 <= event[1] <= 999 if event[0] == REFUSED else event[1] < 4096)
            self.assertIn(case["detail"], (event[1], None))
        if "pauses" in case:
            self.assertEqual([event[2] for event in failures], list(map(int, case["pauses"].split(","))))
        if "steps" in case:
            self.assert_even([frame for frame in stream.frames if frame.type == VIDEO][:len(case["frames"])])
        info = await stream.ask_info()
        self.assertIn(info.state, (LIVE, STALLED))
        self.assertEqual(info.lost, case.get("lost", info.lost))

    async def test_what_each_is_told_and_that_it_heals(self):
        self.end = time.monotonic() + PATIENCE
        streams = [self.open_case(case, case["sessions"]) for case in CASES]
        for case, stream in zip(CASES, streams):
            with self.subTest(case["name"], told=stream.events):
                await self.check(case, stream)
                self.assertLess(self.server.did[case["number"]], 100, "it is hammered")
        for case, stream in zip(CASES, streams):
            with self.subTest(case["name"]):
                result, took = await stream.close()
                self.assertEqual(result, 0)
                self.assertLess(took, CLOSING)
                if "sessionless" not in case:
                    await self.until(lambda: self.server.ends[case["number"]] + self.other.ends[case["number"]] > 0, 5)
        await self.until(lambda: not self.server.sessions)
        print("tried: hostile server, %d behaviours" % len(CASES))

    async def test_closing_is_not_held_up(self):
        self.end = time.monotonic() + PATIENCE
        streams = [self.open_case(case, 10**9) for case in CASES]
        longest = 0
        for case, stream in zip(CASES, streams):
            if "pause" not in case:
                await self.shown(case)
            result, took = await stream.close()
            self.assertEqual(result, 0)
            longest = max(longest, took)
        self.assertLess(longest, CLOSING)
        await self.until(lambda: not self.server.sessions)
        print("tried: closing took at most %d ms" % longest)


class Life(Base):
    """Registrations, callbacks that do what they like, closing."""

    async def test_reconnects_are_told_to_both_listeners_late_ones_too(self):
        stream = self.open()
        for reconnects in range(2):
            before = (await stream.count(30))[-1].time
            await self.server.reboot()
            lost = await stream.event(LOST)
            self.assertEqual(lost[3], reconnects)
            self.assertGreaterEqual(lost[2], 1000)
            stream.clear()
            self.assertEqual((await stream.event(LIVE))[3], reconnects + 1)
            self.assertGreater((await stream.count(1))[0].time, before)
            stream.tell("late")
            await stream.until(lambda s: s.late)
            self.assertEqual(stream.late[-1], (LIVE, 0, 0, reconnects + 1))
        info = await stream.ask_info()
        self.assertEqual((info.state, info.reconnects, info.lost, info.dropped), (LIVE, 2, 0, 0))
        self.assertTrue(info.packets >= info.frames >= 60 and info.bytes >= info.frames * 40)

    async def test_play_in_a_pause_between_two_tries_ends_being_paused(self):
        stream = self.probe.open("rtsp://127.0.0.1:1/x")
        self.assertEqual((await stream.event(LOST))[1], errno.ECONNREFUSED)
        stream.tell("control", PAUSE)
        await stream.event(PAUSED)
        stream.clear()
        stream.tell("control", PLAY)
        await stream.until(lambda s: s.events, 10)
        self.assertNotEqual((await stream.ask_info()).state, PAUSED)

    async def test_frames_begin_with_a_key_frame_whenever_they_are_wanted_again(self):
        for door in "plugin", "api":
            stream = self.open("/0/0?fps=25&gop=50", door=door)
            for again in range(2):
                frame = (await stream.count(10))[0]
                self.assertEqual((frame.handle, frame.flags), (stream.opened[1], KEY))
                stream.tell("frames", 0)
                await self.probe.ask_self()
                stream.clear()
                stream.last = {}
                await asyncio.sleep(0.1)  # into the middle of a group of pictures
                self.assertEqual(stream.frames, [])
                stream.tell("frames", 1)
            stream.tell("control", PAUSE)
            await stream.event(PAUSED)
            stream.clear()
            stream.tell("control", PLAY)
            self.assertTrue((await stream.count(5))[0].flags & KEY)
            self.assertEqual((await stream.close())[0], 0)

    async def test_streams_close_from_inside_their_callbacks(self):
        ways = ("close", "meet 3", "meet 2", "close 5", "hang", "stop")  # itself, each other, one that runs, all
        streams = [self.open(action=action, frames=False) for action in ways]
        streams.append(self.open(action="all", door="api"))
        streams[4].tell("frames", 1)
        await streams[4].count(1)
        for stream in streams[:4]:
            stream.tell("frames", 1)
        for stream in streams[:4] + streams[6:]:
            self.assertEqual(await stream.until(lambda s: s.did), (0,))
        self.assertEqual([stream.closed[0] for stream in streams[:5]], [0, 0, 0, None, STILL_RUNNING])
        streams[5].tell("frames", 1)
        self.assertEqual(await streams[5].until(lambda s: s.did), (0,))
        self.probe.tell("release")
        for stream in streams[:3] + streams[4:6]:
            self.assertEqual(len(stream.frames), 1, "the callback that closes its stream is the last")
        await self.until(lambda: not self.server.sessions)

    async def test_callbacks_that_hang_hold_up_their_own_streams_only(self):
        hang = 17_000_000  # longer than silence makes a stream lost
        other = self.open()
        await other.count(10)
        quick = os.cpu_count() + 5  # threads at most, the main one included, when no callback is slow
        # The first has more to take than any buffer should hold.
        hanging = [self.open("/0/0?fps=25" + "&size=60000&gop=10" * (n == 0), action="hang") for n in range(quick + 3)]
        closed = [self.open(action="hang", door=door) for door in ("plugin", "api")]
        for stream in closed:
            await stream.count(1)
            result, took = await stream.close()
            self.assertEqual(result, STILL_RUNNING)
            self.assertLess(took, CLOSING)
        await other.until(lambda s: s.frames[-1].time > hang)
        self.assert_even(other.frames)
        await self.ask_until(lambda now: now[0] > quick)
        self.probe.tell("release")
        for stream in hanging:
            await stream.until(lambda s: s.frames[-1].time > hang)
            self.assertEqual({event[0] for event in stream.events} - {CONNECTING}, {LIVE})
            info = await stream.ask_info()
            self.assertEqual((info.reconnects, info.lost), (0, 0))
        info = await hanging[0].ask_info()
        self.assertEqual(hanging[0].frames[-1].sequence + 1 - len(hanging[0].frames), info.dropped)
        self.assertGreater(info.dropped, 0)
        self.assertEqual([len(stream.frames) for stream in closed], [1, 1])
        await self.ask_until(lambda now: now[0] <= quick)

    async def test_callbacks_that_compute_throw_or_end_their_thread_hold_up_none_of_the_others(self):
        computing = self.open(action="compute")
        await computing.count(1)
        for stream in [self.open(action=action) for action in ("throw", "exit", "cancel", "")]:
            await stream.count(20)
            self.assertEqual((await stream.close())[0], 0)
        self.probe.tell("release")
        await computing.count(20)


class Recording(Base):
    async def test_a_recording_is_played_as_asked(self):
        stream = self.probe.add("recording")
        begin = 1709208000  # 2024-02-29 12:00 UTC
        stream.tell("record", f"{self.server.url}/{RECORDING}/100", begin, 1)
        for text, scale in (("20240229T120000.000Z-", "1"), ("20240229T120001.000Z-", "-2")):
            lost = await stream.event(LOST)
            self.assertEqual(lost[1:3], (0, 0), "it ended, and isn't tried again")
            self.assertEqual([frame.wall for frame in stream.frames[:5]], [(begin + n) * 1000000 for n in range(5)])
            self.assertEqual([bool(frame.flags & BREAK) for frame in stream.frames[1:5]], [False, True, False, False])
            for line in ("Require: onvif-replay", "Rate-Control: no", f"Scale: {scale}", "Range: clock=" + text):
                self.assertIn(line, self.server.asked[-1])
            stream.clear()
            stream.tell("again", begin + 1, "-2")
        stream.tell("end")

    async def test_a_device_is_talked_to(self):
        stream = self.probe.add("loudspeaker")
        stream.tell("record", f"{self.server.url}/{RECORDING + 1}/0", 1, 1)
        await stream.event(LIVE)
        stream.tell("talk", 160)
        self.assertEqual(await stream.until(lambda s: s.talked), (0, 5))
        await self.until(lambda: self.server.heard)
        self.assertEqual((self.server.heard[0][1], self.server.heard[0][12:]), ("\x80", "\xd5" * 160))
        self.assertIn("Require: www.onvif.org/ver20/backchannel", self.server.asked[-1])
        stream.tell("end")


class Fleet(Base):
    """Many streams at once, and servers that die and come back under them."""

    async def test_a_thousand_streams_lose_nothing_and_close_quickly(self):
        before = await self.probe.ask_self()
        streams = [self.open("/0/0?fps=2") for _ in range(1000)]
        for stream in streams:
            await stream.count(10)
            self.assertEqual([frame.sequence for frame in stream.frames], list(range(len(stream.frames))))
        print("tried: %d streams at once, %d frames" % (len(streams), sum(len(stream.frames) for stream in streams)))
        await self.ask_until(lambda now: now[0] < 20)  # while the pipe was full, callbacks were slow
        closed = [await stream.close() for stream in streams[:500]]
        self.assertEqual({result for result, _ in closed}, {0})
        self.assertLess(sum(took for _, took in closed), CLOSING)
        self.probe.tell("stop")
        await self.until(lambda: not self.server.sessions)
        self.assertGreaterEqual(self.server.ends[0], len(streams))  # on a busy machine some needed two tries
        await self.ask_until(lambda now: now[1] <= before[1])

    async def reboots(self, servers, times):
        streams = collections.deque()
        for number in range(times):
            server = servers[number % len(servers)]
            streams.append(self.probe.open(server.url + ("/0/0" if number % 3 else "/0/0?fps=25"),
                                           transport=TCP if number % 4 else UDP))
            await streams[-1].count(1)
            await server.reboot()
            await streams[-1].event(LOST)  # the others are connecting, streaming or waiting
            if len(streams) > 20:
                await streams.popleft().close()
        for stream in streams:
            await stream.until(lambda s: s.events[-1][0] == LIVE)
            await stream.close()
        await self.until(lambda: not any(server.sessions for server in servers))

    async def test_servers_that_come_and_go_leave_nothing_behind(self):
        servers = [await Server(CASES).start() for _ in range(5)]
        await self.reboots(servers, 40)  # what is made once is made
        threads, files, size = await self.probe.ask_self()
        await self.reboots(servers, int(os.environ["REBOOTS"]))
        print("tried: reboots, " + os.environ["REBOOTS"])
        after = await self.ask_until(lambda now: now[0] <= threads and now[1] <= files)
        self.assertLess(after[2], size + 512 * 1024)
        for server in servers:
            server.stop()


# --- servers that nobody here wrote ---

def gstreamer_mounts():
    clip = lambda name: f"filesrc location={CLIPS}/{name}.mp4 ! qtdemux name=d d.video_0 ! queue ! "
    tone = lambda rate: f"audiotestsrc freq=441 ! audioconvert ! audioresample ! audio/x-raw,rate={rate},channels=1 ! "
    h264 = "h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1"
    audio = clip("h264") + h264 + " d.audio_0 ! queue ! aacparse ! "
    return {
        "/h264": clip("h264") + h264,
        "/h265": clip("h265") + "h265parse ! rtph265pay name=pay0",
        "/mpeg4": clip("mpeg4") + "mpeg4videoparse ! rtpmp4vpay name=pay0 config-interval=-1",
        "/av": audio + "rtpmp4gpay name=pay1 pt=97",
        "/latm": audio + "rtpmp4apay name=pay1 pt=97",
        "/ts": clip("h264") + "h264parse ! mpegtsmux alignment=7 ! rtpmp2tpay name=pay0",
        "/alaw": tone(8000) + "alawenc ! rtppcmapay name=pay0",
        "/mulaw": tone(8000) + "mulawenc ! rtppcmupay name=pay0",
        "/opus": tone(48000) + "opusenc ! rtpopuspay name=pay0",
        "/g726": f"filesrc location={CLIPS}/g726.mkv ! matroskademux ! rtpg726pay name=pay0",
        "/mjpeg": "videotestsrc ! video/x-raw,format=I420,width=160,height=120,framerate=10/1 ! jpegenc ! "
                  "rtpjpegpay name=pay0",
    }


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as one:
        return one.getsockname()[1]


async def start_gstreamer(port=0, *options):
    words = [word for mount, line in gstreamer_mounts().items() for word in (mount, f"( {line} )")]
    process = await asyncio.create_subprocess_exec(
        os.environ["SERVER"], "--port", str(port), "--seconds", "600", *options, *words, stdin=subprocess.PIPE,
        stdout=subprocess.PIPE, env=os.environ | {"TESSARO_PASSWORD": "secret"})
    return process, "rtsp://127.0.0.1:" + (await process.stdout.readline()).decode().split()[-1]


async def start_vlc(port):
    """As another user: it won't run as root."""
    user = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"] if os.getuid() == 0 else []
    words = f"vlc -I dummy -q --loop {CLIPS}/h264.mp4 --sout #rtp{{sdp=rtsp://127.0.0.1:{port}/live}}".split()
    process = await asyncio.create_subprocess_exec(*user, *words, stderr=subprocess.DEVNULL,
                                                   env=os.environ | {"HOME": "/tmp"})
    return process, f"rtsp://127.0.0.1:{port}"


async def end(process):
    if process.returncode is None:
        process.kill()
        await process.wait()


def units(data, h265=False):
    """The NAL units of a byte stream: kind (S of a picture, P a parameter set, D a delimiter, O another) and bytes."""
    kinds = {9: "D", 7: "P", 8: "P", **dict.fromkeys(range(1, 6), "S")}
    if h265:
        kinds = {35: "D", **dict.fromkeys(range(32), "S"), **dict.fromkeys(range(32, 35), "P")}
    found = [unit.rstrip(b"\0") for unit in data.split(b"\0\0\1")[1:]]
    return [(kinds.get(unit[0] >> 1 & 63 if h265 else unit[0] & 31, "O"), unit) for unit in found if unit]


def pictures(data, h265=False):
    """What no receiver may add or leave out."""
    return [unit for kind, unit in units(data, h265) if kind in "SO"]


def scans(data):
    """Of JPEGs, whose headers each receiver makes."""
    return re.findall(rb"\xff\xda.*?\xff\xd9", data, re.DOTALL)


class Witness(Base):
    """What FFmpeg takes from the same server must be what the plug-in delivers, byte for byte."""

    # Mount, transport, codec and its name, microseconds of a frame, samples a second or width; how bytes are compared.
    ROWS = (
        ("/h264", TCP, 1, "h264", 40000, 320, pictures), ("/h264", UDP, 1, "h264", 40000, 320, pictures),
        ("/h265", TCP, 2, "hevc", 40000, 320, lambda data: pictures(data, True)),
        ("/mpeg4", TCP, 9, "mpeg4", 40000, 320, None), ("/mjpeg", TCP, 8, "mjpeg", 100000, 160, scans),
        ("/ts", TCP, 10, "mpegts", None, 0, pictures), ("/av", TCP, 3, "aac", 21333, 48000, None),
        ("/latm", TCP, 3, "aac", 21333, 48000, None), ("/alaw", TCP, 4, "pcm_alaw", None, 8000, None),
        ("/mulaw", TCP, 5, "pcm_mulaw", None, 8000, None), ("/g726", TCP, 6, "g726-32", None, 8000, None),
        ("/opus", TCP, 7, "opus", 20000, 48000, None))

    async def ffmpeg(self, url, codec, data=None):
        words = f"-i {url} -map {'0:a' if 3 <= codec <= 7 else '0:v'} -c copy -t 4 -f data -".split()
        words = ["ffmpeg", "-v", "fatal", *(["-rtsp_transport", "tcp"] if data is None else []), *words]
        process = await asyncio.create_subprocess_exec(*words, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        return (await process.communicate(data))[0]

    def check_frames(self, frames, codec, name, rate):
        self.assertTrue(frames)
        for frame in frames:
            self.assertEqual((frame.codec, frame.name, frame.rate + frame.width), (codec, name, rate))
            self.assertTrue(frame.config >= 2 or name != "aac", "AudioSpecificConfig")

    def check_keys(self, data, frames, h265):
        """Decoding can start at each key frame: the parameter sets stand before the picture's first slice."""
        for frame in frames:
            kinds = "".join(kind for kind, _ in units(data[:frame.length], h265))
            self.assertEqual(kinds[:kinds.index("S")].count("P") >= (3 if h265 else 2), bool(frame.flags & KEY), kinds)
            data = data[frame.length:]
        self.assertGreaterEqual(sum(frame.flags & KEY for frame in frames), 2)

    async def test_frames_are_those_that_another_receiver_takes(self):
        process, url = await start_gstreamer()
        self.addAsyncCleanup(end, process)
        with tempfile.TemporaryDirectory() as folder:
            theirs = [asyncio.ensure_future(self.ffmpeg(url + mount, codec)) for mount, _, codec, *_ in self.ROWS]
            streams = [self.probe.open(url + row[0], transport=row[1], file=f"{folder}/{number}", only=row[2])
                       for number, row in enumerate(self.ROWS)]
            for number, (mount, transport, codec, name, step, rate, split) in enumerate(self.ROWS):
                with self.subTest(mount, transport=transport):
                    stream, expected = streams[number], await theirs[number]
                    await stream.until(lambda s: s.frames and s.frames[-1].time > 3_000_000)
                    self.assertEqual((await stream.close())[0], 0)
                    with open(f"{folder}/{number}", "rb") as file:
                        data = file.read()
                    frames = [frame for frame in stream.frames if frame.codec == codec]
                    self.check_frames(frames, codec, name, rate)
                    if step:  # Opus says its delay with the first one
                        self.assert_even(frames[1:], step)
                    if codec < 3:
                        self.check_keys(data, frames, codec == 2)
                    if name == "mpegts":
                        data = await self.ffmpeg("-", codec, data)
                    ours, expected = (split(data), split(expected)) if split else (data, expected)
                    if name == "mpegts":
                        ours = ours[:-1]  # its packets end where the stream was closed, in the middle of a picture too
                    begin = expected.index(ours[0] if split else data[:sum(frame.length for frame in frames[:3])])
                    length = min(len(ours), len(expected) - begin)
                    self.assertGreater(length, 20 if split else 4000)
                    different = [n for n in range(length) if ours[n] != expected[begin + n]]
                    self.assertEqual(different[:3], [], f"of {length}")

    async def test_certificates_are_checked_where_that_is_asked_for(self):
        os.environ["SSL_CERT_FILE"] = CLIPS + "/certificate.pem"
        process, url = await start_gstreamer(0, "--user", "u", "--tls", CLIPS + "/tls.pem")
        self.addAsyncCleanup(end, process)
        url = url.replace("rtsp:", "rtsps:") + "/h264"
        trusting, strange = await Probe().start(), self.probe  # with this authority, and without
        for probe, host, certificate, lives in ((strange, "127.0.0.1", 0, True), (strange, "127.0.0.1", 1, False),
                                                (trusting, "127.0.0.1", 1, True), (trusting, "localhost", 1, False)):
            stream = probe.open(url.replace("127.0.0.1", host), "u", "secret", certificate=certificate)
            ends = await stream.until(lambda s: [event[0] for event in s.events if event[0] != CONNECTING])
            self.assertEqual(ends[0], LIVE if lives else LOST)
        await trusting.end()

    async def test_streams_come_back_after_their_servers(self):
        vlc = shutil.which("vlc")
        for start, mount, transport in ((start_gstreamer, "/av", TCP), (start_gstreamer, "/av", UDP),
                                        (start_vlc, "/live", UDP), (start_vlc, "/live", AUTOMATIC)):
            if start == start_vlc and not vlc:
                print("skipped: VLC's server, which isn't installed")
                continue
            with self.subTest(start.__name__, transport=transport):
                port = free_port()
                stream = self.probe.open(f"rtsp://127.0.0.1:{port}{mount}", transport=transport)
                for again in range(2):
                    process, _ = await start(port)
                    self.addAsyncCleanup(end, process)
                    await stream.until(lambda s: sum(frame.type == VIDEO for frame in s.frames) >= 60)
                    # VLC has sender reports in the middle of pictures.
                    self.assert_even([frame for frame in stream.frames if frame.type == VIDEO])
                    self.assert_even([frame for frame in stream.frames if frame.type == AUDIO], 21333)
                    stream.clear()
                    await end(process)
                    await stream.event(LOST)
                    stream.frames = []  # what it sent until its end
                await stream.close()
        if vlc:
            process, url = await start_vlc(port)
            self.addAsyncCleanup(end, process)
            refused = self.probe.open(url + "/live")
            self.assertEqual((await refused.event(REFUSED))[1], 461)


class Exit(unittest.IsolatedAsyncioTestCase):
    async def test_a_process_may_end_in_any_way_with_live_streams(self):
        plain, url = await start_gstreamer()
        self.addAsyncCleanup(end, plain)
        tls, tls_url = await start_gstreamer(0, "--user", "u", "--tls", CLIPS + "/tls.pem")
        self.addAsyncCleanup(end, tls)
        process = await asyncio.create_subprocess_exec(*shlex.split(os.environ["EXIT"]), url + "/h264",
                                                       tls_url.replace("rtsp:", "rtsps:") + "/h264")
        self.assertEqual(await process.wait(), 0)


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_NOFILE, (resource.getrlimit(resource.RLIMIT_NOFILE)[1],) * 2)
    unittest.main(verbosity=0)
