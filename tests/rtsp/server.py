"""An RTSP server that behaves as the address asks, rtsp://127.0.0.1:PORT/CASE/SESSIONS[?fps=25&size=1000&gop=25]: badly
for that many sessions of this address, then well. CASE is a place in the table of cases.py."""

import asyncio
import base64
import hashlib
import os
import re
import socket
import struct
import time
from collections import Counter
from urllib.parse import parse_qsl, urlsplit

STEP = 3600  # time stamps in 40 ms of 90 kHz
SETS = bytes.fromhex("6742000af841a2"), bytes.fromhex("68ce3880")
SLICE = bytes.fromhex("888421a0")
SDP = {
    "*": "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=t\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\na=control:*\r\n",
    "v": "m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=fmtp:96 packetization-mode=1;sprop-parameter-sets="
         + ",".join(base64.b64encode(one).decode() for one in SETS) + "\r\na=control:video\r\n",
    "a": "m=audio 0 RTP/AVP 8\r\na=control:audio\r\n",
    "b": "m=audio 0 RTP/AVP 0\r\na=control:back\r\na=sendonly\r\n",  # as ONVIF's back channel says it
}


def interleaved(channel, packet, length=None):
    return struct.pack(">BBH", 0x24, channel, len(packet) if length is None else length) + packet


def rtcp(kind, body, words=None, first=0x80):
    return struct.pack(">BBH", first, kind, len(body) // 4 if words is None else words) + body


class Rtp:
    """Makes the packets of one track."""

    def __init__(self, kind="v", source=0x1234):
        self.kind, self.source = kind, source
        self.sequence, self.stamp, self.step = 100, 1000, STEP if kind == "v" else 320
        self.marker = "last"  # or "none", "each"
        self.clock = time.time()  # the device's own, at stamp 1000

    def recorded(self, clock, flags, key):
        """A frame with ONVIF's replay extension."""
        extension = struct.pack(">HHQBBH", 0xABAC, 3, (clock + 2208988800) << 32, flags, 0, 0)
        return self.frame(key, first=0x90, front=extension)

    def packet(self, payload, last=True, kind=None, first=0x80):
        mark = {"last": last, "none": False, "each": True}[self.marker] << 7
        kind = {"v": 96, "a": 8}[self.kind] if kind is None else kind
        self.sequence += 1
        return struct.pack(">BBHII", first, kind & 127 | mark, self.sequence - 1 & 65535, self.stamp & 0xFFFFFFFF,
                           self.source) + payload

    def frame(self, key=True, size=40, kind=None, first=0x80, front=b""):
        if self.kind == "a":
            packet = self.packet(b"\xd5" * 320, False)
        elif key:
            units = SETS + (b"\x65" + SLICE + b"x" * size,)
            body = b"\x78" + b"".join(struct.pack(">H", len(unit)) + unit for unit in units)
            packet = self.packet(front + body, True, kind, first)
        else:
            packet = self.packet(front + b"\x41" + SLICE + b"x" * size, True, kind, first)
        self.stamp += self.step
        return packet

    def piece(self, begins, ends):
        body = (SLICE if begins else b"yyyy") + b"y" * 40
        packet = self.packet(bytes([0x7C, begins << 7 | ends << 6 | 5]) + body, ends)
        self.stamp += self.step * ends
        return packet

    def slice(self, begins):
        """One of the two of a key frame."""
        packet = self.packet(b"\x65" + (SLICE if begins else b"\x42\x10" + SLICE), not begins)
        self.stamp += self.step * (not begins)
        return packet

    def report(self, clock=None, stamp=None):
        clock = self.clock + (self.stamp - 1000) / (90000 if self.kind == "v" else 8000) if clock is None else clock
        ntp = int((clock + 2208988800) * 2**32) & (2**64 - 1)
        stamp = self.stamp if stamp is None else stamp
        return rtcp(200, struct.pack(">IQIII", self.source, ntp, stamp & 0xFFFFFFFF, 1, 1))


class Login:
    """Challenges a client and checks its answers: the strongest algorithm that was offered, nothing replayed."""

    HASHES = {"MD5": "md5", "SHA-256": "sha256", "SHA-512-256": "sha512_256"}

    def __init__(self, case, errors):
        self.errors = errors
        self.offers = case.get("auth", "").split(", ")  # "SHA-256 auth": algorithm and qop
        self.user, self.password = case.get("user", ""), case.get("password", "")
        self.most = int(case.get("uses", 1000000))  # of a nonce, which is stale then
        self.used, self.number = 0, 0

    def challenges(self, stale=False):
        self.number, self.used = self.number + 1, 0
        lines = ""
        for offer in self.offers:
            name, _, qop = offer.partition(" ")
            lines += "WWW-Authenticate: " + (
                'Basic realm="r"' if name == "Basic" else
                'Digest realm="a, \\"b\\"", nonce="n%d"' % self.number + (", algorithm=" + name) * (name != "none")
                + (', qop="%s"' % qop if qop else "") + (", stale=true" if stale else "")) + "\r\n"
        return lines

    def refuses(self, method, uri, header):
        """The header lines of a refusal, or None."""
        if not header:
            return self.challenges()
        known = [offer for offer in self.offers if offer.split()[0] in (*self.HASHES, "none")]
        if not known:
            right = "Basic " + base64.b64encode((self.user + ":" + self.password).encode("latin-1")).decode()
            return None if header == right else self.challenges()
        best = max(known, key=lambda offer: [*self.HASHES].index(offer.split()[0].replace("none", "MD5")))
        algorithm, qop = best.split()[0].replace("none", "MD5"), "auth" in best
        said = {name.lower(): re.sub(r"\\(.)", r"\1", quoted) or plain for name, quoted, plain in
                re.findall(r'(\w+)=(?:"((?:[^"\\]|\\.)*)"|([^",\s]+))', header)}
        if not header.startswith("Digest ") or said.get("algorithm", "MD5") != algorithm or ("qop" in said) != qop:
            self.errors.append(f"not answered by {best}: {header}")
        if said.get("nonce") != "n%d" % self.number:
            return self.challenges(stale=True)
        digest = lambda *parts: hashlib.new(self.HASHES[algorithm], ":".join(parts).encode("latin-1")).hexdigest()
        self.used += 1
        if qop and int(said["nc"], 16) != self.used:
            self.errors.append("nonce count " + said["nc"])
        within = (said.get("nc", ""), said.get("cnonce", ""), said.get("qop", "")) if qop else ()
        right = digest(digest(self.user, 'a, "b"', self.password), said["nonce"], *within, digest(method, said["uri"]))
        if said["uri"] != uri or said.get("response") != right or said["username"] != self.user:
            return self.challenges()
        return self.challenges(stale=True) if self.used > self.most else None


class Session(asyncio.Protocol):
    """One connection of a client."""

    def __init__(self, server):
        self.server, self.case, self.hostile = server, None, False
        self.rest, self.stalled, self.play, self.path, self.kept = b"", False, None, "", 0
        self.tracks, self.targets, self.login, self.queries = {}, {}, None, {}

    def connection_made(self, transport):
        self.transport = transport
        self.server.sessions.add(self)

    def connection_lost(self, _error):
        self.server.sessions.discard(self)
        if self.play:
            self.play.cancel()

    def data_received(self, data):
        self.rest += b"" if self.stalled else data
        while self.rest and not self.stalled:
            if self.rest[:1] == b"$":
                whole = 4 + int.from_bytes(self.rest[2:4], "big") if len(self.rest) > 3 else len(self.rest) + 1
            else:
                whole = self.rest.find(b"\r\n\r\n") + 4
            if whole < 4 or whole > len(self.rest):
                return
            message, self.rest = self.rest[:whole].decode("latin-1"), self.rest[whole:]
            if message[0] == "$" and ord(message[1]) == self.targets.get("back"):
                self.server.heard.append(message[4:])
            elif message[0] != "$" and not message.startswith("RTSP/"):
                self.request(message)

    # --- answers ---

    def request(self, message):
        method, uri = message.split(" ", 2)[:2]
        header = lambda name: next(iter(re.findall("(?i)\r\n%s: *(.*)" % name, message)), "").strip()
        if not self.case:
            self.choose(urlsplit(uri))
        case, number = self.case, header("CSeq")
        elsewhere = not self.server.others and "elsewhere" in case
        if elsewhere and header("Authorization"):
            self.server.errors.append("credentials went elsewhere: " + case["name"])
        if not self.login and ("asks-too" in case if elsewhere else "auth" in case):
            self.login = Login(case, self.server.errors)
        refusal = self.login and method != "OPTIONS" and self.login.refuses(method, uri, header("Authorization"))
        if refusal:
            return self.send("RTSP/1.0 401 Unauthorized\r\nCSeq: %s\r\n%s\r\n" % (number, refusal))
        step = "KEEP" if self.play and method in ("OPTIONS", "GET_PARAMETER") else method
        wanted = case.get(step.lower() + "-uri", "").replace("{base}", self.server.url + self.path)
        if self.hostile and wanted and uri != wanted and not uri.endswith("/audio"):
            self.server.errors.append(f"{case['name']}: {method} {uri} instead of {wanted}")
        answer = "RTSP/1.0 200 OK\r\nCSeq: %s\r\n" % number
        self.server.asked += [message] if method == "PLAY" else []
        if method == "OPTIONS":
            answer += "Public: OPTIONS, DESCRIBE, SETUP, PLAY, PAUSE, GET_PARAMETER, TEARDOWN\r\n\r\n"
        elif method == "DESCRIBE":
            order = case.get("tracks", "v") if self.hostile else case.get("then-tracks", case.get("tracks", "v"))
            sdp = self.edited("SDP", "".join(SDP[kind] for kind in "*" + order), number)
            answer += "Content-Type: application/sdp\r\nContent-Length: %d\r\n\r\n%s" % (len(sdp), sdp)
        elif method == "SETUP":
            answer += "Session: 1;timeout=%s\r\n" % case.get("timeout", 60)
            answer += "Transport: %s\r\n\r\n" % self.set_up(uri, header("Transport"))
            if "client_port" in header("Transport") and self.hostile and case.get("no-udp") == "461":
                answer = answer.replace("200 OK", "461 Unsupported Transport")
                self.server.did[case["number"]] += 1
        else:
            answer += "Session: 1\r\n\r\n"
        if method not in ("OPTIONS", "DESCRIBE", "SETUP") and header("Session") != "1" and not self.is_turn("SETUP"):
            self.server.errors.append(f"{case['name']}: {method} without its session")
        self.send(self.edited(step, answer, number))
        if self.is_turn(step) or (self.is_turn("SDP") and method == "DESCRIBE"):
            self.kept += step == "KEEP"
            if self.kept >= int(case.get("kept", 0)):
                self.turn(case.get("then", ""), case.get("put", ""))
        if method == "PLAY" and not self.play:
            self.play = asyncio.ensure_future(self.stream())
        elif method in ("PAUSE", "TEARDOWN") and self.play:
            self.play.cancel()
            self.play = None
        if method == "TEARDOWN":
            self.server.ends[case["number"]] += 1
            self.transport.close()

    def choose(self, url):
        _, number, sessions, *_ = url.path.split("/") + ["0", "0"]
        self.case, self.path = self.server.cases[int(number)], url.path
        self.queries = dict(parse_qsl(url.query))
        shown = self.server.shown[url.path] = self.server.shown.get(url.path, 0) + 1
        self.hostile = shown <= int(sessions) and not ("elsewhere" in self.case and not self.server.others)

    def set_up(self, uri, wanted):
        if "back" in uri:
            self.targets["back"] = int(re.search(r"interleaved=(\d+)", wanted)[1])
            return wanted
        kind = "a" if "audio" in uri else "v"
        rtp = self.tracks[kind] = Rtp(kind, 0x1234 if kind == "v" else 0x4321)
        if ports := re.search(r"client_port=(\d+)-(\d+)", wanted):
            to, dead = self.transport.get_extra_info("peername")[0], self.hostile and "no-udp" in self.case
            self.targets[rtp] = None if dead else [(to, int(port)) for port in ports.groups()]
            return wanted + ";server_port=%d-%d" % tuple(one.getsockname()[1] for one in self.server.udp)
        if "multicast" in wanted:
            group = "239.255.%d.%d" % divmod(self.server.port, 256)  # of this server's own
            self.targets[rtp] = [(group, 30400), (group, 30401)]
            return "RTP/AVP;multicast;destination=%s;port=30400-30401;ttl=1" % group
        self.targets[rtp] = int(re.search(r"interleaved=(\d+)", wanted)[1])
        return wanted

    def is_turn(self, step):
        return self.hostile and self.case.get("at", "STREAM") == step

    def edited(self, step, good, number):
        """The good answer, or what the case makes of it."""
        if not self.is_turn(step) or "put" not in self.case:
            return good
        self.server.number += 1
        put = self.case["put"]
        for name, value in (("cseq", number), ("n", self.server.number), ("url", self.server.url + self.path),
                            ("other", "".join(other.url + self.path for other in self.server.others)),
                            ("loop", f"{self.server.url}/{self.case['number']}/1000000000")):
            put = put.replace("{%s}" % name, str(value))
        find = self.case.get("find", "")
        if find not in good:
            self.server.errors.append("nothing to replace in " + self.case["name"])
        return good.replace(find, put, 1) if find else put

    def send(self, data):
        self.transport.write(data.encode("latin-1") if isinstance(data, str) else data)

    def turn(self, then, flood):
        """What comes after the hostile bytes."""
        if then == "close":
            self.transport.close()
        elif then == "reset":
            self.transport.abort()
        elif then in ("stall", "flood"):
            self.stalled = True
            if then == "flood":
                self.play = asyncio.ensure_future(self.flood(flood))
        self.server.did[self.case["number"]] += 1

    async def flood(self, what):
        while True:
            for _ in range(50 if self.transport.get_write_buffer_size() < 1 << 20 else 0):
                self.send(what)
            await asyncio.sleep(0.1)

    # --- streams ---

    async def stream(self):
        try:
            if self.is_turn("STREAM") or (not self.hostile and "then-script" in self.case):
                script = self.case.get("script" if self.hostile else "then-script", "")
                await self.perform(script)
                while self.transport.get_write_buffer_size() > 1 << 19:
                    await asyncio.sleep(0.01)
                if self.hostile:
                    self.turn(self.case.get("then", ""), self.case.get("flood", ""))
            await self.be_good()
        except (asyncio.CancelledError, ConnectionError):
            pass

    async def be_good(self):
        """Ten frames quickly, then few: many streams share a small machine. Or as the address says."""
        fps, size, gop = map(int, ({"fps": 0, "size": 40, "gop": 8} | self.queries).values())
        due = time.monotonic()
        number = 0
        while not self.stalled:
            pause = 1 / fps if fps else 0.04 if number < 10 else 0.4
            if self.transport.get_write_buffer_size() > 1 << 20:
                return self.server.errors.append("a client is too slow")
            for rtp in self.tracks.values():
                rtp.step = int(pause * 90000) if rtp.kind == "v" else int(pause * 8000)
                self.packet(rtp, rtp.frame(number % gop == 0, size))
            number, due = number + 1, due + pause
            await asyncio.sleep(max(0, due - time.monotonic()))

    def packet(self, rtp, packet, channel=0):
        """channel: 1 for RTCP."""
        target = self.targets[rtp]
        if isinstance(target, int):
            self.send(interleaved(target + channel, packet))
        elif target:
            self.server.udp[channel].sendto(packet, target[channel])

    async def perform(self, script):
        """Bytes go out as they are, numbers are seconds to wait, functions make a packet or change the track, tuples
        are clock and stamp of a report. In letters: K P frames, < = > the pieces of one, [ ] its slices, A audio, - a
        packet that goes missing, R S reports of video and audio, B good-bye, . 40 ms, 2 the last packet again, ( )
        hold back what is between, ! send it."""
        held, holding, last = [], False, b""
        for step in script:
            rtp = self.tracks.get("a" if step in ("A", "S") else "v") or next(iter(self.tracks.values()))
            if isinstance(step, bytes):
                self.send(step)
            elif isinstance(step, (int, float)) or step == ".":
                await asyncio.sleep(0.04 if step == "." else step)
            elif step in ("(", ")"):
                holding = step == "("
            elif step == "!":
                while held:
                    self.packet(rtp, held.pop(0))
            elif isinstance(step, tuple):
                self.packet(rtp, rtp.report(*step), 1)
            elif step == "-":
                rtp.sequence += 1
            elif step in ("R", "S", "B"):
                report = rtcp(203, struct.pack(">I", rtp.source), 1, 0x81) if step == "B" else b""
                self.packet(rtp, rtp.report() + report, 1)
            else:
                last = (step(rtp) if callable(step) else last if step == "2" else
                        rtp.frame(step == "K") if step in "KPA" else
                        rtp.slice(step == "[") if step in "[]" else rtp.piece(step == "<", step == ">"))
                if holding:
                    held.append(last)
                elif last:
                    self.packet(rtp, last)


class Server:
    """Listens on 127.0.0.1 and ::1. cases: the table; others: servers that cases may name."""

    def __init__(self, cases, others=()):
        self.cases, self.others, self.port, self.number = cases, others, 0, 0
        self.sessions, self.shown = set(), {}
        self.did, self.ends = Counter(), Counter()  # of each case: times it was shown, and that a client said TEARDOWN
        self.errors = []  # what clients did that they must not
        self.asked, self.heard = [], []  # PLAY requests, and packets of the back channel

    async def start(self):
        loop = asyncio.get_running_loop()
        self.listeners = [await loop.create_server(lambda: Session(self), "127.0.0.1", self.port, backlog=1024)]
        self.port = self.listeners[0].sockets[0].getsockname()[1]
        self.url = "rtsp://127.0.0.1:%d" % self.port
        if os.path.exists("/proc/net/if_inet6"):
            self.listeners.append(await loop.create_server(lambda: Session(self), "::1", self.port))
        self.udp = [socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2)]
        for one in self.udp:
            one.bind(("127.0.0.1", 0))
            one.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton("127.0.0.1"))
        return self

    async def reboot(self):
        self.stop()
        await asyncio.sleep(0)
        await self.start()

    def stop(self):
        for one in self.listeners + self.udp:
            one.close()
        for session in list(self.sessions):
            session.transport.abort()
