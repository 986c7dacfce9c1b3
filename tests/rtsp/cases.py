"""What the servers of server.py do badly, and what a client is to make of it.

case(NAME, TOLD, how...). TOLD: how such a session ends ("live": not at all, "mute": not, but without frames, "refused",
"lost") and the second word of the event, then

    pauses=MS,MS   after each session          sessions=N     bad ones, 1 if not said
    frames=...     what goes out first: K P A  lost=N         packets, in all
                   (small: damaged, ! before   steps=US       between these frames of video
                   one: discontinuity)         jump=MS        the least jump of the clock that is told
    hears=N        an event                    never=N        an event
    transport=N    as dwStreamPara[0]          host=HOST      instead of 127.0.0.1
    pause          it is paused and played     stalls         so it is told on the way

How: at (OPTIONS, DESCRIBE, SDP, SETUP, PLAY, PAUSE, KEEP for keep-alives, STREAM if not said), find and put (what
stands there instead of a part of the good answer, or of all of it), script (what is sent before the good stream) and
then (close, reset, stall, flood); tracks; auth, user, password; ...-uri (what a request must name).
"""

import os
import struct

from server import SETS, SLICE, interleaved, rtcp

CASES = []
STALLED, JUMP, TRANSPORT = 3, 7, 8  # events
LATE = 110  # ETIMEDOUT


def case(name, told="live", **how):
    words = told.split()
    how.update(end=words[0], detail=next((int(word) for word in words[1:] if word.isdigit()), None))
    how.update(word.partition("=")[::2] for word in words[1:] if not word.isdigit())
    numbers = {word: int(how[word]) for word in "sessions transport jump hears never lost".split() if word in how}
    CASES.append({"sessions": 1, "transport": 0, "jump": 0, "frames": "", "user": "", "password": "", **how, **numbers,
                  "name": name, "number": len(CASES)})


def junk(length, seed=1):
    data = bytearray()
    while len(data) < length:
        seed = (seed * 1664525 + 1013904223) & 0xFFFFFFFF
        data.append(seed >> 24)
    return bytes(data)


JUNK = junk(2000).decode("latin-1")

case("good", "live frames=KPPPP lost=0 steps=40000")

# --- the same at each step ---
for step in ("OPTIONS", "DESCRIBE", "SETUP", "PLAY"):
    at = lambda name, told, put, find="", then="": case(f"{name} at {step}", told, at=step, find=find, put=put,
                                                        then=then)
    for status in (400, 404, 454, 461, 500, 503):
        at(status, f"refused {status}", f"{status} No", "200 OK")
    at(403, "refused 403 pauses=10000", "403 Forbidden", "200 OK")
    at("closes", "lost", "", then="close")
    at("resets", "lost", "", then="reset")
    at("stalls", f"lost {LATE}", "", then="stall")
    at("stalls behind a status line", f"lost {LATE}", "RTSP/1.0 200 OK\r\n", then="stall")
    at("headers without end", "lost", "RTSP/1.0 200 OK\r\n" + "X-More: yes\r\n" * 3, then="flood")
    at("a line without end", "lost", "x" * 50, then="flood")
    at("packets instead of an answer", f"lost {LATE}", "$\0\0\x0c\x80\x60" + "\0" * 10, then="flood")
    at("a header of 20 kB", "live", f"X-Long: {'x' * 20000}\r\nCSeq", "CSeq")
    at("junk", f"lost {LATE}", JUNK + "\r\n\r\n")
    at("another protocol", f"lost {LATE}", "HTTP/1.1", "RTSP/1.0")
    at("status 999999999999", f"lost {LATE}", "999999999999 What", "200 OK")
    at("no CSeq", "live", "X-Nothing", "CSeq")
    at("wrong CSeq", "live", "CSeq: 77", "CSeq: ")
    at("NULs", f"lost {LATE}", "X-" + "\0" * 8 + ": x\r\nCSeq", "CSeq")
    at("body beyond the end", f"lost {LATE}", "Content-Length: 100000\r\nCSeq", "CSeq", "stall")
    at("body of 2 GB", "lost", "Content-Length: 2147483647\r\nCSeq", "CSeq", "stall")
    at("redirects to itself", "lost", "RTSP/1.0 302 Moved\r\nCSeq: {cseq}\r\nLocation: {loop}\r\n\r\n")
    at("a question in front", "live", "OPTIONS * RTSP/1.0\r\nCSeq: 7\r\n\r\nRTSP", "RTSP")
    at("text in front", "live", "hello\r\n\r\nRTSP", "RTSP")
    at("lower case", "live", "cseq:", "CSeq: ")

# --- answers ---
LENGTH = "Content-Length: "
CHALLENGE = "RTSP/1.0 401 Unauthorized\r\nCSeq: {cseq}\r\nWWW-Authenticate: "
MOVED = "RTSP/1.0 301 Moved\r\nCSeq: {cseq}\r\nLocation: "
for name, told, step, find, put in (
        ("body's length negative", "lost", "DESCRIBE", LENGTH, LENGTH + "-5\r\nX: "),
        ("body's length zero", "lost", "DESCRIBE", LENGTH, LENGTH + "0\r\nX: "),
        ("body too short by some", "lost", "DESCRIBE", LENGTH, LENGTH + "40\r\nX: "),
        ("no Session", "live sessionless", "SETUP", "Session", "X-Session"),
        ("no Transport", "lost", "SETUP", "Transport", "X-Transport"),
        ("Transport over UDP", "lost", "SETUP", "Transport: ", "Transport: RTP/AVP;server_port=1-1\r\nX: "),
        ("Transport on absurd channels", "live", "SETUP", "Transport: ",
         "Transport: RTP/AVP/TCP;interleaved=-9-99999999999\r\nX: "),
        ("moves to nowhere", "lost", "DESCRIBE", "", MOVED + "\r\n\r\n"),
        ("moves to a login", "lost", "DESCRIBE", "", MOVED + "rtsp://u:p@127.0.0.1/\r\n\r\n"),
        ("moves to another server", "live", "DESCRIBE", "", MOVED + "{other}\r\n\r\n")):
    case(name, told, at=step, find=find, put=put, **({"elsewhere": ""} if "another server" in name else {}))
LOCKED = "refused 401 pauses=10000"
VIEWER = {"user": "viewer", "password": "secret"}
for name, put in (
        ("a nonce of its own for each try", 'Digest realm="r", nonce="{n}"'),
        ("stale for ever", 'Digest realm="r", nonce="{n}", stale=true'),
        ("401 without a word", "\r\nX: x"),
        ("a scheme nobody knows", "Bearer x"),
        ("digests of bodies only", 'Digest realm="r", nonce="n", qop="auth-int"')):
    case(name, LOCKED, at="DESCRIBE", put=CHALLENGE + put + "\r\n\r\n", **VIEWER)
case("credentials asked for late", LOCKED, at="PLAY", put=CHALLENGE + 'Digest realm="r", nonce="{n}"\r\n\r\n', **VIEWER)
case("401 for who has no credentials", "refused 401", at="DESCRIBE", put=CHALLENGE + 'Basic realm="r"\r\n\r\n')

# --- credentials that are right ---
for offers in ("none", "MD5", "MD5 auth", "MD5 auth-int,auth", "SHA-256", "SHA-256 auth", "SHA-512-256 auth", "Basic",
               "Basic, MD5 auth, SHA-512-256 auth, ROT13, SHA-256 auth", "MD5, Basic", "Bearer, Basic"):
    case("login by " + offers, "live frames=KPPPP", auth=offers, **VIEWER)
for user, password in (("u /?#%@", 'p:@/?#% +&="\xc3\xa9'), ('quoted "\\', 'pass"\\word'), ("a:b", "with:colon"),
                       ("@" * 31, "%" * 31), ("\xff\xfe", "\x01\x7f\xff"), ("u", "")):
    case(f"login of {len(user)} and {len(password)} bytes", "live", auth="MD5 auth", user=user, password=password)
case("login by Basic with a colon in the password", auth="Basic", user="u", password="a:b@c")
case("a wrong password", LOCKED, at="DESCRIBE", put=CHALLENGE + 'Digest realm="r", nonce="n"\r\n\r\n', **VIEWER)
case("nonces for two requests", auth="MD5 auth", uses=2, at="KEEP", kept=2, timeout=2, **VIEWER)

# --- elsewhere ---
for offer in ("MD5 auth", "Basic"):
    ELSEWHERE = {"elsewhere": "", "at": "DESCRIBE", "put": MOVED.replace("301", "302") + "{other}\r\n\r\n", **VIEWER}
    case(f"elsewhere after {offer}", "live", auth=offer, **ELSEWHERE)
    case(f"elsewhere after {offer}, which asks too", "refused 401", auth=offer, **ELSEWHERE, **{"asks-too": ""})

# --- descriptions ---
MAP, NAMED, MEDIA = "a=rtpmap:96 H264/90000\r\n", "sprop-parameter-sets=", "m=video 0 RTP/AVP 96\r\n"
for name, told, find, put in (
        ("nothing described", "lost", "", ""),
        ("no media", "lost", "", "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=t\r\n"),
        ("a description of junk", "lost", "", junk(20000).decode("latin-1")),
        ("a hundred thousand lines", "live", "s=t\r\n", "a=x\r\n" * 100000),
        ("a description of 8 MB", "lost", "s=t\r\n", "a=x\r\n" * 1600000),
        ("no rtpmap", "live frames=PPPP", MAP, ""),
        ("a codec nobody knows", "live frames=PPPP", "H264", "Q" * 300),
        ("another codec", "mute", "H264", "H265"),
        ("audio in a video's place", "mute", "H264/90000", "mpeg4-generic/48000/99"),
        ("2000 media", "mute", MEDIA, "m=audio 0 RTP/AVP 0\r\na=control:x\r\n" * 2000 + MEDIA),
        ("a control address of elsewhere", "live", "control:video", "control:http://192.0.2.1/x"),
        ("bare line ends", "live", "\r\ns=t\r\n", "\ns=t\n")):
    case(name, told, at="SDP", find=find, put=put)

# --- addresses ---
for name, step, find, put, setup, play in (
        ("a relative address", "SDP", "control:video", "control:video", "{base}/video", "{base}"),
        ("an absolute address", "SDP", "control:video", "control:{url}/x/video?y=1", "{base}/x/video?y=1", "{base}"),
        ("a base", "DESCRIBE", "CSeq", "Content-Base: {url}/base/\r\nCSeq", "{base}/base/video", "{base}/base/"),
        ("a base of its own for the session", "SDP", "control:*", "control:{url}/all/", "{base}/video", "{base}/all/"),
        ("a base without slash", "DESCRIBE", "CSeq", "Content-Base: {url}/b\r\nCSeq", "{base}/b/video", "{base}/b"),
        ("a place", "DESCRIBE", "CSeq", "Content-Location: {url}/p/\r\nCSeq", "{base}/p/video", "{base}/p/")):
    case(name, "live", at=step, find=find, put=put, **{"setup-uri": setup, "play-uri": play, "keep-uri": play})
case("two tracks", "live frames=KA", tracks="va", **{"setup-uri": "{base}/video", "play-uri": "{base}"})
case("over IPv6", "live frames=KPPPP host=[::1]")

# --- the session is kept ---
KEEP = {"at": "KEEP", "kept": 2, "timeout": 2}
for name, told, put, more in (
        ("kept alive", "live", "200 OK", {}),
        ("kept alive by a body", "live", "200 OK\r\nContent-Length: 9\r\n\r\n$\0\0\x05RTSP", {}),
        ("kept alive by two answers", "live", "200 OK\r\nCSeq: 999\r\n\r\nRTSP/1.0 200 OK", {}),
        ("does not know GET_PARAMETER", "live", "501 Not Implemented", {}),
        ("forgets the session", "lost", "454 Session Not Found", {"then": "close", "kept": 1}),
        ("says nothing any more", "live", "", {})):
    case(name, told, find="200 OK" if put else "", put=put, **{**KEEP, **more})

# --- streams ---
bare = lambda payload=b"\x65" + SLICE, **how: lambda rtp: rtp.packet(payload, **how)


def sets(**what):
    """Of the track that makes the packets: marker, step, sequence."""
    return lambda rtp: rtp.__dict__.update(what)


def adds(**what):
    """To its stamp or clock."""
    return lambda rtp: rtp.__dict__.update({name: getattr(rtp, name) + by for name, by in what.items()})


def between(what):
    return ["K", what, "K"]


STALLS = f"lost {LATE} stalls"
case("closes while streaming", "lost 0", script="KK", then="close")
case("resets while streaming", "lost", script="KK", then="reset")
case("stalls while streaming", STALLS, script="KK", then="stall")
case("stalls in a packet", STALLS, script=between(interleaved(0, b"x", 1000)), then="stall")
case("junk without end", "lost", script="K", then="flood", flood="no packet at all\r\n" * 3)
case("a channel nobody asked for", STALLS, script="K", then="flood", flood=interleaved(77, b"x" * 20))
case("reports without end", STALLS, script="K", then="flood", flood=interleaved(1, rtcp(200, b"\0" * 24)))
for name, told, what in (
        ("junk between packets", "live", junk(3000)),
        ("text between packets", "live frames=KK lost=0", b"hello\r\n\r\nRTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n"),
        ("packets of each length", "live", b"".join(interleaved(0, junk(n)) for n in range(40))),
        ("a packet shorter than it says", "live", interleaved(0, b"\x80\x60\0\x65" + b"x" * 20, 500)),
        ("a packet longer than it says", "live", interleaved(0, b"\x80\x60\0\x65" + b"x" * 20, 5)),
        ("a packet of 64 kB", "live", interleaved(0, b"\x80" * 65535)),
        ("a request of the server's", "live frames=KK lost=0", b"GET_PARAMETER rtsp://x/ RTSP/1.0\r\nCSeq: 5\r\n\r\n"),
        ("an answer with a body", "live frames=KK lost=0", b"RTSP/1.0 200 OK\r\nContent-Length: 5\r\n\r\n$$$$$"),
        ("an ANNOUNCE", "live frames=KK lost=0", b"ANNOUNCE * RTSP/1.0\r\nContent-Length: 4\r\n\r\n$\0\0\1"),
        ("a report cut short", "live frames=KK lost=0", interleaved(1, rtcp(200, b"\0\0\x12\x34ab", 6))),
        ("a report that says it is long", "live frames=KK lost=0", interleaved(1, rtcp(200, b"\0\0\x12\x34", 65535))),
        ("reports of each type", "live frames=KK lost=0", b"".join(
            interleaved(1, rtcp(kind, b"\0\0\x12\x34", words, first)) for kind in range(192, 256) if kind != 203
            for words, first in ((1, 0x80), (9, 0xFF))))):
    case(name, told, script=between(what))
case("an empty unit", script=["K", bare(b""), "K"])
case("aggregates of wrong sizes", script=["K", *(
    bare(b"\x78" + struct.pack(">H", said) + rest) for said in (0, 1, 12, 65535) for rest in (b"\x65" + SLICE, b""))])
case("pieces without an end", script="K" + "<" * 50)
case("a unit of 19 MB", script=["K", "<", *[bare(b"\x7c\x05" + b"z" * 65000, last=False)] * 300, "K"])
case("parameter sets only", script=[bare(SETS[0], last=False)] * 2000)

# --- losses, and what is none ---
for name, script, frames, told in (  # behind a few frames, when markers are known
        ("packets missing", "KK---KKKK", "KKkKKK", "lost=3"),
        ("pieces", "K<==><>KK", "KKKKK", "lost=0"),
        ("first piece missing", "KK-=>KKK", "KKKKKK", "lost=1"),
        ("middle piece missing", "KK<-=>KKK", "KKkKKK", "lost=1"),
        ("last piece missing", "KK<=-KKK", "KKkkKK", "lost=1"),
        ("each packet twice", "K2P2P2P2K2", "KPPPK", "lost=0"),
        ("over UDP", "KPPPKPPP", "KPPPKPPP", "lost=0 transport=1"),
        ("out of order over UDP", "KP(P)P!P(P)K!", "KPPPPPK", "lost=0 transport=1"),
        ("far out of order over UDP", "KP(P)PP!P(<)=!>K", "KPPPPPKK", "lost=0 transport=1"),
        ("twice over UDP", "K2P2(P)P2!2K", "KPPPK", "lost=0 transport=1"),
        ("missing over UDP", "KPP-P--PK<-=>K", "KPPppKkK", "lost=4 transport=1")):
    case(name, f"live frames=KPPP{frames} {told}", script="KPPP" + script)
case("first piece of all missing", "live frames=KKK", script="=>KKK")
case("numbers that begin anew over UDP", "live transport=1", script=["K", "P", sets(sequence=65534), *"KPPPKPPP"])
case("out of order over TCP", "live", script="KP(P)P!PKK")
case("sequence numbers that jump", script=[one for n in range(20) for one in (sets(sequence=n * 31421 & 65535), "K")])

# --- markers ---
NONE, EACH, LAST = (sets(marker=marker) for marker in ("none", "each", "last"))
GOOD = sets(step=3600)
case("no markers", "live lost=0 steps=40000 frames=KPPPKPPPKPPP", script=[NONE, *"K.P.P.P.K.P.P.P.K.P.P.P.", LAST])
case("no markers, in pieces", "live lost=0 frames=KKKKKK", script=[NONE, *"K.<==>.<>.<=>.K.K."])
case("markers at each slice", "live lost=0 frames=KKKKKK steps=40000", script=[EACH, *"K.[].[].[].[].", LAST])
case("markers at each packet", "live lost=0 frames=KKKKKKK", script=[EACH, *"K.<==>.<==>.<==>.K.<==>.K."])

# --- time ---
for name, step, told in (
        ("time stamps that stand still", 0, "frames=KPPPK lost=0 never=7"),
        ("time stamps that run back", -900000, f"frames=K!P!P!P!K lost=0 hears={JUMP} jump=9000"),
        ("time stamps that leap", 0x7FFFFFF1, f"lost=0 hears={JUMP}")):
    case(name, "live " + told, script=[sets(step=step), *"KPPPK", GOOD])
case("the time stamp that means none", "live frames=KPPP lost=0",
     script=[adds(stamp=0xFFFFFFFF - 1000), sets(step=0), *"KPPP", GOOD])
case("many small steps ahead", f"live hears={JUMP}", script=[*"K.", sets(step=261000), *"P.P.P.P.P.P.P.P.", GOOD])
case("an hour's leap", "live frames=KP!PPK jump=3500000", script=[*"KP", adds(stamp=3600 * 90000), *"PPK"])
case("time stamps that pass their end", "live frames=KPPPPP never=7 steps=40000",
     script=[adds(stamp=0xFFFFFFFF - 9000), *"K.P.P.P.P.P."])
case("reports between the pieces", "live frames=KKKKKK lost=0 never=7 steps=40000", tracks="va",
     script="K.<R=R>.<=SR=>.<RR>.<R==>.KRS.")
case("a first report that comes late", "live never=7 steps=40000 frames=KPPPKPPP", script="K.P.P.RP.K.P.RP.P.")
case("reports at both ends of time", "live lost=0", script=["K", (-2208988800, 0), "K", (2085978495, 0xFFFFFFFF), "K",
                                                           (-2208988800, 0xFFFFFFFF), "K", (2085978495, 0), "K"])
case("a clock that is set by an hour", f"live lost=0 frames=KPPPKP hears={JUMP} jump=3590000 steps=40000",
     script=[*"K.RP.P.", adds(clock=3600), *"RP.K.P."])
case("a clock that is set by sixty years", f"live lost=0 hears={JUMP} jump=2000000000",
     script=["K", (1000, None), "K", (1900001000, None), "K"])

# --- the end ---
case("good-bye", "lost 0", script="KKB")
case("good-bye of another", script=between(interleaved(1, rtcp(201, b"\0\0\0\1") + rtcp(203, b"\0\0\0\1", 1, 0x81))))
case("good-bye over UDP", "lost 0 transport=1", script="KKB")
case("other tracks after a reconnect", "lost 0 sessions=1", tracks="va", script="KAPPPPA", then="close",
     **{"then-tracks": "av", "then-script": "KAPAPA"})
case("refuses to pause", "live pause", at="PAUSE", find="200 OK", put="501 Not Implemented")
case("pauses", "live pause")
case("closes when asked to pause", "live pause", at="PAUSE", put="", then="close")
case("lives shortly", "lost pauses=1000,2000,4000 sessions=3", script=["K", 0.3], then="reset")
case("lives long", "lost pauses=1000,1000 sessions=2", script=["K", *["K", 1.0] * 11], then="reset")

# A gap before the third frame, and the recording's end with the last.
RECORDING = len(CASES)
case("a recording", "lost 0", script=[
    lambda rtp, n=n: rtp.recorded(1709208000 + n, {2: 0x20, 4: 0x10}.get(n, 0), n == 0) for n in range(5)])
case("a loudspeaker", tracks="vb")

# --- transports ---
case("automatic", "live transport=3 frames=KPPPP never=8", script="KPPPP")
case("automatic where UDP brings nothing", f"live transport=3 hears={TRANSPORT}", **{"no-udp": "nothing"})
case("automatic where UDP is refused", f"live transport=3 hears={TRANSPORT}", **{"no-udp": "461"})
case("UDP that brings nothing", "lost transport=1", **{"no-udp": "nothing"})
if "qemu" not in os.environ["PROBE"]:  # which can't join a group
    case("multicast", "live transport=2 frames=KPPP lost=0", script="KPPPKPPP")
