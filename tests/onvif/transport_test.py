"""Devices as they are: a device that answers wrongly in every way that is known, and the ONVIF plug-in on it.

    transport_test.py TEST...      CALLS in the environment: the program of calls.cpp

The path of the address that a login names says how the device behaves.
"""

import base64
import datetime
import gzip
import hashlib
import http.server
import os
import re
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import unittest

PATIENCE = 90
OK, WRONG_LOGIN, LOCKED, UNREACHABLE, TIME_OUT, LOST, BUSY, REFUSED = 0, 208, 209, 210, 211, 212, 213, 215
USER, PASSWORD = "admin", "secret<&>1"
TDS, MEDIA2 = "http://www.onvif.org/ver10/device/wsdl", "http://www.onvif.org/ver20/media/wsdl"
CALLS = ["GetSystemDateAndTime", "GetServices", "GetDeviceInformation"]  # of a login


class Probe:
    """The program that makes the calls; see calls.cpp."""

    def __init__(self):
        self.process = subprocess.Popen(os.environ["CALLS"].split(), stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.PIPE, text=True)
        self.last, self.answers, self.found, self.changed = 0, {}, [], threading.Condition()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stderr:
            first, _, rest = line.strip().partition(" ")
            with self.changed:
                if first == "found":
                    self.found.append(rest)
                elif first.isdigit():
                    self.answers[int(first)] = rest
                else:
                    sys.stderr.write(line)
                self.changed.notify_all()

    def begin(self, *words):
        self.last += 1
        print(self.last, *words, file=self.process.stdin, flush=True)
        return self.last

    def await_(self, condition):
        with self.changed:
            assert self.changed.wait_for(condition, PATIENCE), (self.answers, self.found)

    def end(self, number):
        self.await_(lambda: number in self.answers)
        return self.answers[number]

    def __call__(self, *words):
        return self.end(self.begin(*words))

    def close(self):
        self.process.stdin.close()
        assert self.process.wait(PATIENCE) == 0


def fault(subcode, reason="no", version=2):
    if version == 1:
        return f"<E:Fault><faultcode>x:{subcode}</faultcode><faultstring>{reason}</faultstring></E:Fault>"
    return (f"<E:Fault><E:Code><E:Value>E:Sender</E:Value><E:Subcode><E:Value>ter:{subcode}</E:Value></E:Subcode></E:Code>"
            f"<E:Reason><E:Text xml:lang='en'>{reason}</E:Text></E:Reason></E:Fault>")


class Device(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    calls, attempts, connections, nonces, clock = [], [], 0, {}, datetime.timedelta()
    release = threading.Event()  # ends answers that hang
    hangs = threading.Event()  # one of these has begun
    closed = threading.Condition()
    right = False  # the digest, if not its nonce

    def log_message(self, *_):
        pass

    def setup(self):
        super().setup()
        Device.connections += 1

    def finish(self):
        super().finish()
        with Device.closed:
            Device.connections -= 1
            Device.closed.notify_all()

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"])).decode()
        self.how = self.path.split("/")[1]
        self.name = re.search(r"Body><\w+:(\w+)", body)[1]
        Device.calls.append(self.name)
        if not getattr(self, f"do_{self.how}", lambda: False)():
            self.answer(*self.checked(body))

    # --- who asks

    def token(self, body):
        """Whether the UsernameToken is right: None where there is none."""
        parts = [re.search(f"{name}[^>]*>([^<]*)<", body) for name in ("Username", "Password", "Nonce", "Created")]
        if None in parts:
            return None
        _, digest, nonce, created = (part[1] for part in parts)
        at = datetime.datetime.fromisoformat(created.replace("Z", "+00:00"))
        now = datetime.datetime.now(datetime.timezone.utc) + Device.clock
        wanted = hashlib.sha1(base64.b64decode(nonce) + created.encode() + PASSWORD.encode()).digest()
        good = abs(at - now) < datetime.timedelta(seconds=5) and nonce not in Device.nonces
        Device.nonces[nonce] = True
        right = base64.b64decode(digest) == wanted
        Device.attempts += [] if right else ["token"]
        return good and right

    def digest(self, name):
        """The same of an HTTP digest; each nonce is good for two requests."""
        given = dict(re.findall(r'(\w+)="?([^",]*)"?', self.headers["Authorization"] or ""))
        if not given:
            return None
        hashed = lambda text: hashlib.new(name, text.encode()).hexdigest()
        wanted = hashed(":".join([hashed(f"{USER}:here:{PASSWORD}"), given["nonce"], given["nc"], given["cnonce"], "auth",
                                  hashed(f"POST:{self.path}")]))
        self.right = right = given["response"] == wanted and given["uri"] == self.path
        Device.attempts += [] if right else ["digest"]
        Device.nonces[given["nonce"]] = Device.nonces.get(given["nonce"], 0) + 1
        return right and Device.nonces[given["nonce"]] <= 2

    def challenge(self, name):
        stale = ", stale=true" if self.right else ""
        return [("WWW-Authenticate", f'Digest realm="here", nonce="{len(Device.nonces)}-{len(Device.calls)}", qop="auth", '
                                     f'algorithm={"MD5" if name == "md5" else "SHA-256"}{stale}')]

    def checked(self, body):
        hash_name = {"md5": "md5", "sha": "sha256", "both": "sha256", "everything": "md5"}.get(self.how)
        if hash_name and (self.how == "everything" or self.name != CALLS[0]) and not self.digest(hash_name):
            return 401, "<html><body>Unauthorized</body></html>", self.challenge(hash_name)
        if self.how not in ("md5", "sha", "everything") and self.name != CALLS[0] and not self.token(body):
            return 400, self.envelope(fault("NotAuthorized")), []
        return 200, self.envelope(self.content()), []

    # --- what it says

    def envelope(self, content):
        return (f'<?xml version="1.0"?><E:Envelope xmlns:E="http://www.w3.org/2003/05/soap-envelope" '
                f'xmlns:ter="http://www.onvif.org/ver10/error"><E:Header/><E:Body>{content}</E:Body></E:Envelope>')

    def content(self):
        now = datetime.datetime.now(datetime.timezone.utc) + Device.clock
        host = "10.255.255.1" if self.how == "nat" else f"127.0.0.1:{self.server.server_port}"
        service = lambda space, path: (f"<q:Service><q:Namespace>{space}</q:Namespace><q:XAddr>http://{host}/{path}</q:XAddr>"
                                       "<q:Version/></q:Service>")
        own = "" if self.how in ("oddly", "older") else service(TDS, f"{self.how}/device")
        within = {
            CALLS[0]: f"<q:SystemDateAndTime><q:Surprise/><q:UTCDateTime><q:Date><q:Day> {now.day} </q:Day><q:Month>{now.month}"
                      f"</q:Month><q:Year>{now.year}</q:Year></q:Date><q:Time><q:Second>{now.second}</q:Second><q:Minute>"
                      f"{now.minute}</q:Minute><q:Hour>{now.hour}</q:Hour></q:Time></q:UTCDateTime></q:SystemDateAndTime>",
            CALLS[1]: own + service("http://example.org/new", "x") + service(MEDIA2 + "/", f"{self.how}/media"),
            "GetCapabilities": f"<q:Capabilities><q:Device><q:XAddr>http://{host}/{self.how}/device</q:XAddr></q:Device>"
                               f"<q:Media/></q:Capabilities>",
            CALLS[2]: "<q:Model><![CDATA[One & only]]></q:Model><q:Manufacturer/>",
            "GetNetworkInterfaces": "<q:NetworkInterfaces token='a'><q:Enabled>false</q:Enabled><q:Info><q:HwAddress>"
                                    "02-00-00-00-00-01</q:HwAddress></q:Info></q:NetworkInterfaces><q:NetworkInterfaces>"
                                    "<q:Enabled>1</q:Enabled><q:Info><q:HwAddress>02:00:5E:10:00:01</q:HwAddress></q:Info>"
                                    "</q:NetworkInterfaces>",
            "GetUsers": f"<q:User><q:Username>{USER}</q:Username><q:UserLevel>Administrator</q:UserLevel></q:User>",
        }
        return f"<q:{self.name}Response xmlns:q='{TDS}'>{within[self.name]}</q:{self.name}Response>"

    def answer(self, status, text, headers=(), length=None):
        data = text if isinstance(text, bytes) else text.encode()
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(data) if length is None else length))
        self.end_headers()
        self.wfile.write(data)
        return True

    # --- ways to behave: True where that was all

    def good(self):
        return self.envelope(self.content())

    def do_pieces(self):
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        for byte in self.good().encode():
            self.wfile.write(b"1\r\n%c\r\n" % byte)
        self.wfile.write(b"0\r\n\r\n")
        return True

    def do_gzip(self):
        return self.answer(200, gzip.compress(self.good().encode()), [("Content-Encoding", "gzip")])

    def do_closing(self):
        self.send_response(200)
        self.end_headers()
        self.wfile.write(self.good().encode())
        self.close_connection = True
        return True

    def do_longer(self):
        self.close_connection = True
        return self.answer(200, self.good(), length=len(self.good()) + 10)

    def do_half(self):
        self.close_connection = True
        return self.answer(200, self.good()[:-20], length=len(self.good()))

    def do_endless(self):
        return self.answer(200, b"<a>" + bytes(9 << 20))

    def do_bomb(self):
        return self.answer(200, gzip.compress(bytes(100 << 20)), [("Content-Encoding", "gzip")])

    def do_deep(self):
        return self.answer(200, "<a>" * 100000 + "</a>" * 100000)

    def do_entities(self):
        return self.answer(200, '<!DOCTYPE a [<!ENTITY b "bbbbbbbb"><!ENTITY c "&b;&b;&b;">]>'
                           + self.good().replace("<E:Header/>", "<E:Header>&c;</E:Header>"))

    def do_never(self):
        Device.hangs.set()
        Device.release.wait(PATIENCE)
        self.close_connection = True
        return True

    def do_drips(self):
        self.send_response(200)
        self.end_headers()
        while not Device.release.wait(0.05):
            self.wfile.write(b" ")
        self.close_connection = True
        return True

    def do_hangs(self):
        return self.name == "GetNetworkInterfaces" and self.do_never()

    def do_page(self):
        return self.name != CALLS[0] and self.answer(401, "<html><body>401 <b>Unauthorized</b></body></html>")

    def do_busy(self):
        return self.answer(503, "")

    def do_elsewhere(self):
        return self.answer(307, "", [("Location", "/plain/device")])

    def do_abroad(self):
        return self.answer(302, "", [("Location", "http://localhost:1/plain/device")])

    def do_older(self):
        return self.name == CALLS[1] and self.answer(500, self.envelope(fault("ActionNotSupported")))

    def do_silent(self):
        return self.name == CALLS[0] and self.answer(400, self.envelope(fault("Whatever")), [("Date", "x")])

    def do_lacks(self):
        return self.name == "GetNetworkInterfaces" and self.answer(200, self.envelope(fault("ActionNotSupported")))


for number, (status, subcode, reason, version) in enumerate([
        (200, "NotAuthorized", "no", 2), (400, "NotAuthorized", "no", 2), (500, "FailedAuthentication", "no", 1),
        (401, "Whatever", "no", 2), (400, "NotAuthorized", "The account is locked", 2), (500, "Whatever", "no", 2)]):
    def says(self, status=status, content=fault(subcode, reason, version)):
        return self.name != CALLS[0] and self.answer(status, self.envelope(content))
    setattr(Device, f"do_fault{number}", says)


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):  # a client that went
        pass


class Transport(unittest.TestCase):
    def setUp(self):
        self.server = Server(("127.0.0.1", 0), Device)
        Device.calls, Device.attempts, Device.nonces, Device.connections = [], [], {}, 0
        Device.clock, self.scheme = datetime.timedelta(), "http"
        Device.release.clear()
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.probe = Probe()
        self.assertEqual(self.probe("start"), "0")

    def tearDown(self):
        Device.release.set()
        self.probe("stop")
        self.probe.close()
        self.server.shutdown()
        self.server.server_close()

    def login(self, how, password=PASSWORD, limit=PATIENCE * 1000, host="127.0.0.1"):
        address = f"{self.scheme}://{host}:{self.server.server_port}/{how}/device"
        result, self.id = map(int, self.probe("login", address, USER, password, limit).split())
        return result

    def test_answers(self):
        """Each way to answer has its result; where there is a login, it works."""
        table = {"plain": OK, "md5": OK, "sha": OK, "both": OK, "everything": OK, "pieces": OK, "gzip": OK, "closing": OK,
                 "longer": OK, "half": LOST, "endless": REFUSED, "bomb": REFUSED, "deep": REFUSED, "entities": OK,
                 "page": WRONG_LOGIN, "busy": BUSY, "elsewhere": OK, "abroad": REFUSED, "older": OK, "oddly": OK, "nat": OK,
                 "silent": OK, "fault0": WRONG_LOGIN, "fault1": WRONG_LOGIN, "fault2": WRONG_LOGIN, "fault3": WRONG_LOGIN,
                 "fault4": LOCKED, "fault5": REFUSED}
        for how, wanted in table.items():
            with self.subTest(how):
                self.assertEqual(self.login(how), wanted)
                if wanted == OK:
                    self.assertEqual([self.probe(call, self.id) for call in ("level", "mac", "logout")],
                                     ["0 3", "0 02005e100001", "0"])
        print("tried:", len(table), "ways to answer")

    def test_clocks(self):
        for days in (-12 * 365, 0, 365 * 12, 1 / 24):
            Device.clock = datetime.timedelta(days=days)
            self.assertEqual(self.login("plain", host="localhost"), OK, days)
        Device.clock += datetime.timedelta(hours=3)  # under a login
        self.assertEqual(self.probe("mac", self.id), "0 02005e100001")

    def test_a_wrong_password_is_tried_once(self):
        for how, attempts in {"plain": ["token"], "md5": ["digest"], "everything": ["digest"], "both": ["digest"]}.items():
            Device.attempts = []
            self.assertEqual(self.login(how, "wrong"), WRONG_LOGIN, how)
            self.assertEqual(Device.attempts, attempts, how)

    def test_time_limits(self):
        for how in "never", "drips":
            self.assertEqual(self.login(how, limit=700), TIME_OUT, how)
        self.server.server_port = 1
        self.assertEqual(self.login("plain"), UNREACHABLE)

    def test_what_a_device_lacks_is_asked_once(self):
        self.assertEqual(self.login("lacks"), OK)
        for _ in range(2):
            self.assertEqual(self.probe("mac", self.id)[0], "3")  # the library's: a login query that failed
        self.assertEqual(Device.calls, CALLS + ["GetNetworkInterfaces"])
        self.assertEqual(Device.connections, 1)
        self.assertEqual(self.probe("logout", self.id), "0")
        with Device.closed:
            self.assertTrue(Device.closed.wait_for(lambda: Device.connections == 0, PATIENCE))

    def test_calls_end_with_the_login_and_the_service(self):
        for end in "logout", "stop":
            self.assertEqual(self.login("hangs"), OK)
            Device.hangs.clear()
            waiting = self.probe.begin("mac", self.id)
            self.assertTrue(Device.hangs.wait(PATIENCE))
            self.assertEqual(self.probe(end, self.id), "0")
            self.assertEqual(self.probe.end(waiting)[0], "3")

    def test_certificates(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=device", "-keyout",
                            f"{folder}/key", "-out", f"{folder}/certificate"], check=True, stderr=subprocess.DEVNULL)
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(f"{folder}/certificate", f"{folder}/key")
        self.server.socket, self.scheme = context.wrap_socket(self.server.socket, server_side=True), "https"
        for trusted, wanted in ((0, OK), (1, UNREACHABLE), (0, OK)):
            self.assertEqual(self.probe("certificates", trusted), "0")
            self.assertEqual(self.login("md5"), wanted)


class Crowd:
    """Devices on the network of their own, that answer probes in their own ways."""

    ME = "192.0.2.1"
    GROUP = {socket.AF_INET: "239.255.255.250", socket.AF_INET6: "ff02::c"}

    def __init__(self):
        self.asked, self.index = set(), socket.if_nametoindex("crowd")
        for family, group in self.GROUP.items():
            one = socket.socket(family, socket.SOCK_DGRAM)
            one.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            if family == socket.AF_INET:
                one.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, socket.inet_aton(group) + socket.inet_aton(self.ME))
                one.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(self.ME))
                one.bind((group, 3702))
            else:
                one.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_JOIN_GROUP,
                               socket.inet_pton(family, group) + self.index.to_bytes(4, sys.byteorder))
                one.bind((group, 3702, 0, self.index))
            threading.Thread(target=self.answer, args=(one, family), daemon=True).start()

    @staticmethod
    def message(kind, inside):
        return f"<s:Envelope xmlns:s='u'><s:Body><{kind}>{inside}</{kind}></s:Body></s:Envelope>".encode()

    @staticmethod
    def match(name, addresses, scope="onvif://www.onvif.org/name/", version=1):
        return (f"<E><Address>urn:uuid:{name}</Address></E>".replace("E>", "EndpointReference>") +
                f"<Types>dn:NetworkVideoTransmitter</Types><Scopes>{scope}{name}</Scopes><XAddrs>{addresses}</XAddrs>"
                f"<MetadataVersion>{version}</MetadataVersion>")

    def answer(self, one, family):
        while True:
            data, sender = one.recvfrom(65536)
            if b"Probe" not in data:
                continue
            self.asked.add(family)
            with socket.socket(family, socket.SOCK_DGRAM) as back:
                for name in ("one", "two", "one"):
                    inside = self.match(name, f"http://{self.ME}/{name} http://[fe80::1]/{name}")
                    back.sendto(self.message("ProbeMatches", f"<ProbeMatch>{inside}</ProbeMatch>"), sender)
                back.sendto(b"<s:Envelope><", sender)
                back.sendto(self.message("ProbeMatches", "<ProbeMatch><Types>printer</Types></ProbeMatch>"), sender)

    def tell(self, kind, inside):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as out:
            out.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(self.ME))
            out.sendto(self.message(kind, inside), (self.GROUP[socket.AF_INET], 3702))


class Discovery(unittest.TestCase):
    def test_each_device_is_reported_once(self):
        crowd, probe = Crowd(), Probe()
        self.assertEqual(probe("start"), "0")
        self.assertEqual(probe("probe", 1, "crowd"), "0")
        names = lambda: [line.split()[0][-3:] + line.split()[2] for line in probe.found]
        probe.await_(lambda: len(probe.found) >= 2)
        here, name = f"http://{crowd.ME}", "onvif://www.onvif.org/name/a%20new%20"
        for number, (kind, inside) in enumerate([("Hello", crowd.match("six", f"{here}/six")), ("Bye", crowd.match("six", "")),
                                                 ("Hello", crowd.match("six", f"{here}:81/six")),
                                                 ("Hello", crowd.match("six", f"{here}:81/six", name, 2))]):
            crowd.tell("Hello", crowd.match("one", f"{here}/one"))
            crowd.tell(kind, inside)
            probe.await_(lambda: len(probe.found) >= 3 + number)
        self.assertEqual(sorted(names()[:2]) + names()[2:], ["one0", "two0", "six0", "six1", "six0", "six0"])
        self.assertIn(f"{here}:81/six 0 six", probe.found[4])
        self.assertIn("a new six", probe.found[5])
        self.assertEqual(probe("again"), "0")  # all once more; six, who doesn't answer, is gone
        probe.await_(lambda: names()[-1] == "six1")
        self.assertEqual(sorted(names()[6:]), ["one0", "six0", "six1", "two0"])
        self.assertEqual(crowd.asked, set(crowd.GROUP))
        probe("stop")
        probe.close()


def main():
    if "NETWORK" not in os.environ:  # once more, on a network of its own
        space = ["unshare", "-n"] if os.geteuid() == 0 else ["unshare", "-rn"]
        os.execvpe(space[0], [*space, sys.executable, "-B", *sys.argv], os.environ | {"NETWORK": "own"})
    for command in ("link set lo up", "link add crowd type veth peer name outside", "addr add 192.0.2.1/24 dev crowd",
                    "addr add fe80::1/64 dev crowd nodad", "link set crowd up", "link set outside up"):
        subprocess.run(["ip", *command.split()], check=True)
    unittest.main()


if __name__ == "__main__":
    main()
