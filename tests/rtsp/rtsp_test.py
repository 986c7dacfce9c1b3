"""Streams of the RTSP plug-in, from the servers of server.py and from foreign ones. The probe runs them; see probe.cpp.

    rtsp_test.py TEST...      PROBE, SERVER (tools/rtsp_server), CLIPS and REBOOTS in the environment
"""

import asyncio
import collections
import os
import shlex
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from cases import CASES
from server import Server

PATIENCE = 45  # seconds, for what is bound to come
CLOSING = 5000  # milliseconds: 2 s, and what a busy machine adds
TCP, UDP, MULTICAST, AUTOMATIC = range(4)
CONNECTING, LIVE, STALLED, REFUSED, LOST, PAUSED, JUMP, TRANSPORT = range(1, 9)
VIDEO, AUDIO = 0, 1
KEY, BREAK, DAMAGED = 1, 2, 4
PLAY, PAUSE = 0, 1
STILL_RUNNING = 219
Frame = collections.namedtuple("Frame", "handle type codec flags sequence lost length time wall width height rate channels "
                                        "config sum name")
Info = collections.namedtuple("Info", "state reconnects status dropped packets frames bytes lost")


class Stream:
    """What a stream told and delivered. Faults: what must not be, whatever the server does."""

    def __init__(self, probe, number, name):
        self.probe, self.number, self.name, self.faults = probe, number, name, []
        self.frames, self.events, self.late, self.last, self.broken = [], [], [], {}, False
        self.opened = self.closed = self.did = self.info = None

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
        """Every stream begins with a key frame, and goes on with one after a failure; numbers grow, time doesn't run back;
        what needs the frame before comes right behind it."""
        last = self.last.get((frame.type, frame.name))
        step = frame.sequence - last.sequence if last else 1
        first = frame.type == VIDEO and (self.broken or not last)
        if first and (frame.flags & (KEY | DAMAGED) != KEY or (last and not frame.flags & BREAK)):
            self.faults.append(f"begins with {frame}")
        if step < 1 or (last and frame.time < last.time):
            self.faults.append(f"{frame} behind {last}")
        if frame.type == VIDEO and not frame.flags & KEY and step != 1 and not first:
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
        return await self.until(lambda s: s.closed) or (None, None)

    async def ask_info(self):
        self.info = None
        self.tell("info")
        return await self.until(lambda s: s.info)

    def clear(self):
        self.frames, self.events, self.late = [], [], []

    def letters(self):
        """K a key frame, P another, A audio; small ones are damaged, ! stands before what doesn't continue."""
        text = ""
        for frame in self.frames:
            letter = "A" if frame.type == AUDIO else "K" if frame.flags & KEY else "P"
            text += "!" * bool(frame.flags & BREAK) + (letter.lower() if frame.flags & DAMAGED else letter)
        return text

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

    def open(self, url, user="", password="", transport=TCP, certificate=0, action="", file="", door="plugin", frames=True):
        number = len(self.streams) + 1
        stream = self.streams[str(number)] = Stream(self, number, url)
        self.tell("open", number, door, url, user, password, transport, certificate, action, file)
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

    def assert_even(self, frames, step=40000, off=2000):
        """Frames of one track: none missing, each so many microseconds after the one before."""
        for last, frame in zip(frames, frames[1:]):
            self.assertEqual((frame.sequence, frame.lost), (last.sequence + 1, 0))
            self.assertAlmostEqual(frame.time - last.time, step, delta=off)


class Hostile(Base):
    """The cases of cases.py, all at once."""

    async def shown(self, case):
        """Until a case has been shown as often as it should; all run at once, so the time is that of all."""
        times = int(case.get("sessions", 1))
        await self.until(lambda: self.server.did[case["number"]] >= times, max(1, self.end - time.monotonic()))

    def open_case(self, case, sessions):
        url = self.server.url.replace("127.0.0.1", case.get("host", "127.0.0.1"))
        return self.probe.open("%s/%d/%d" % (url, case["number"], sessions), case.get("user", ""), case.get("password", ""),
                               case.get("transport", TCP))

    def healed(self, case):
        fails = int(case.get("sessions", 1)) if case["end"] in ("lost", "refused") else 0

        def is_so(stream):
            events = [event[0] for event in stream.events]
            live = LIVE in events[max((n for n, event in enumerate(events) if event in (LOST, REFUSED)), default=0):]
            return live and len(stream.failures()) >= fails and (case["end"] == "mute" or (
                stream.frames and not stream.frames[-1].flags & DAMAGED and len(stream.letters()) >= len(case.get("frames", ""))))
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
        await stream.until(self.healed(case), max(1, self.end - time.monotonic()))
        letters, events, failures = stream.letters(), [event[0] for event in stream.events], stream.failures()
        self.assertTrue(letters.startswith(case.get("frames", "")), letters[:60])
        self.assertTrue("stalls" not in case or STALLED in events)
        self.assertTrue("hears" not in case or int(case["hears"]) in events)
        self.assertTrue("never" not in case or int(case["never"]) not in events)
        self.assertGreaterEqual(max((event[1] for event in stream.events if event[0] == JUMP), default=0), int(case.get("jump", 0)))
        if case["end"] in ("live", "lost", "refused"):
            kind = {"live": [], "lost": [LOST], "refused": [REFUSED]}[case["end"]]
            self.assertEqual([event[0] for event in failures], kind * int(case.get("sessions", 1)))
        for event in failures:
            self.assertTrue(400 <= event[1] <= 999 if event[0] == REFUSED else event[1] < 4096)
            self.assertEqual(event[1], int(case.get("detail", event[1])))
        if "pauses" in case:
            self.assertEqual([event[2] for event in failures], list(map(int, case["pauses"].split(","))))
        if "steps" in case:
            self.assert_even([frame for frame in stream.frames if frame.type == VIDEO][:len(case.get("frames", ""))])
        info = await stream.ask_info()
        self.assertIn(info.state, (LIVE, STALLED))
        self.assertEqual(info.lost, int(case.get("lost", info.lost)))

    async def test_what_each_is_told_and_that_it_heals(self):
        self.end = time.monotonic() + PATIENCE
        streams = [self.open_case(case, int(case.get("sessions", 1))) for case in CASES]
        for case, stream in zip(CASES, streams):
            with self.subTest(case["name"], told=stream.events):
                await self.check(case, stream)
                self.assertLess(self.server.did[case["number"]], 100, "it is hammered")
        for case, stream in zip(CASES, streams):
            with self.subTest(case["name"]):
                result, took = await stream.close()
                self.assertEqual(result, 0)
                self.assertLess(took, CLOSING)
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


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
