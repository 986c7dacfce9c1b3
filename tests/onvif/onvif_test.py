"""ONVIF devices and clients, on a network of their own: only a loopback, on which multicast goes round.

    onvif_test.py own        the plug-in on the simulated device
    onvif_test.py fleet      fifty of them that restart
    onvif_test.py tours      the tours as they stand, on the simulated device
    onvif_test.py foreign    the plug-in on a device that nobody here wrote, and on one behind a foreign HTTP digest
    onvif_test.py clients    foreign clients on the simulated device

The environment has DEVICE (tools/onvif_device), PROBE (the test program), TOURS (their folder), NODE, NPM, LIGHTTPD, and
FOLDER to work in. foreign and clients need the npm registry.
"""

import hashlib
import os
import pathlib
import re
import socket
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
FOLDER = pathlib.Path(os.environ["FOLDER"])
USER, PASSWORD = "admin", "admin"
PATIENCE = 240


def fail(*words):
    sys.exit(" ".join(map(str, words)))


def packages():
    """The foreign packages, as the lock file names them; fetched once."""
    folder, lock = FOLDER / "npm", (HERE / "foreign/package-lock.json").read_text()
    stamp = folder / "installed"
    if not stamp.exists() or stamp.read_text() != lock:
        folder.mkdir(parents=True, exist_ok=True)
        for name in ("package.json", "package-lock.json"):
            (folder / name).write_text((HERE / "foreign" / name).read_text())
        done = subprocess.run([os.environ["NPM"], "ci", "--no-audit", "--no-fund"], cwd=folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode:
            fail(done.stdout, "\nnpm could not fetch the foreign client and device: is its registry reachable?")
        stamp.write_text(lock)
    return folder


class Server:
    """A program that prints a line with its ports when it is ready, and ends with its input."""

    def __init__(self, *command):
        self.process = subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.ports = re.findall(r"(?:port|rtsp) (\d+)", line) or fail(command[0], "did not start:", line)

    def tell(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline()
        answer == "ok\n" or fail(line, "->", answer)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.communicate(timeout=60)


def run(*command, cwd=None, **environment):
    """What a program printed; it must end well."""
    done = subprocess.run(list(map(str, command)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, cwd=cwd,
                          stdin=subprocess.DEVNULL, timeout=PATIENCE, env=os.environ | environment)
    print(done.stdout, flush=True)
    done.returncode == 0 or fail(" ".join(map(str, command)), "ended with", done.returncode)
    return done.stdout


def probe(suites, **environment):
    run(*os.environ["PROBE"].split(), f"--gtest_filter={suites}", **environment)


def own():
    locking = FOLDER / "locking.toml"
    locking.write_text('[[device]]\naddress = "box"\n[[device.fault]]\nkind = "lock_out"\ncount = 2\n')
    certificate = FOLDER / "certificate.pem"
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=device", "-keyout",
        certificate, "-out", FOLDER / "public.pem")
    certificate.write_text((FOLDER / "public.pem").read_text() + certificate.read_text())
    emulated = len(os.environ["PROBE"].split()) > 1  # where no multicast group can be joined
    probe("Onvif*:COnvif*" + "-*.DevicesAreFound" * emulated, LOCKING=str(locking), TLS=str(certificate))


def fleet():
    probe("Fleet*")


def tours():
    for tour in ("alarms", "configuration", "discovery", "playback", "ptz", "snapshots", "talk", "wall"):
        folder = FOLDER / f"tour_{tour}"
        folder.mkdir(parents=True, exist_ok=True)
        with Server(os.environ["DEVICE"], "--discovery") as device:
            where = ["onvif", f"127.0.0.1:{device.ports[0]}", USER] if tour != "discovery" else []
            run(f"{os.environ['TOURS']}/tour_{tour}", *where, cwd=folder, TESSARO_PASSWORD=PASSWORD)


def digest_front(algorithm, port, behind):
    """lighttpd as what asks for a login in front of a device that doesn't."""
    folder = FOLDER / f"lighttpd-{port}"
    folder.mkdir(parents=True, exist_ok=True)
    text = f"{USER}:device:{PASSWORD}".encode()
    one = hashlib.md5(text) if algorithm == "MD5" else hashlib.sha256(text)
    (folder / "users").write_text(f"{USER}:device:{one.hexdigest()}\n")
    (folder / "conf").write_text(f"""
server.modules = ("mod_auth", "mod_authn_file", "mod_proxy")
server.document-root = "{folder}"
server.bind = "127.0.0.1"
server.port = {port}
auth.backend = "htdigest"
auth.backend.htdigest.userfile = "{folder}/users"
auth.require = ("" => ("method" => "digest", "algorithm" => "{algorithm}", "realm" => "device", "require" => "valid-user"))
proxy.server = ("" => (("host" => "127.0.0.1", "port" => {behind})))
""")
    process = subprocess.Popen([os.environ["LIGHTTPD"], "-D", "-f", folder / "conf"])
    while socket.socket().connect_ex(("127.0.0.1", port)):
        process.poll() is None or fail("lighttpd did not start")
        time.sleep(0.05)
    return process


def foreign():
    fronts = [digest_front("MD5", 10102, 10101), digest_front("SHA-256", 10103, 10101)]
    try:
        with Server(os.environ["NODE"], HERE / "foreign/mock.js", FOLDER / "npm", 10101):
            probe("Foreign*", PLAIN="10101", DIGESTS="10102 10103")
    finally:
        for front in fronts:
            front.terminate()
            front.wait(60)


def clients():
    with Server(os.environ["DEVICE"], "--discovery") as device:
        port = device.ports[0]
        client = subprocess.Popen([os.environ["NODE"], HERE / "foreign/client.js", FOLDER / "npm", "127.0.0.1", port, USER,
                                   PASSWORD], stdout=subprocess.PIPE, text=True)
        said = {}
        for line in client.stdout:
            print("client.js:", line, end="", flush=True)
            word, _, rest = line.strip().partition(" ")
            said[word] = rest
            if word == "listening":
                device.tell("fault 0 motion channel=0")
        client.wait(PATIENCE) == 0 or fail("the client ended with", client.returncode)
        said["found"] == "1" and int(said["profiles"]) >= 8 or fail("found or profiles:", said)
        "Motion" in said["event"] or fail("event:", said["event"])
        run("ffprobe", "-v", "error", "-rtsp_transport", "tcp", "-show_entries", "stream=codec_name",
            said["stream"].replace("://", f"://{USER}:{PASSWORD}@"))
        picture = subprocess.run(["curl", "-s", "--digest", "-u", f"{USER}:{PASSWORD}", said["snapshot"]],
                                 stdout=subprocess.PIPE, timeout=PATIENCE, check=True).stdout
        picture[:3] == b"\xff\xd8\xff" or fail("the snapshot is no JPEG file:", picture[:80])
    # Debian's, which finds a device by discovery and names it by its host. It makes its nonces of the time in seconds, so
    # that two calls within a millisecond, by which it tells when they were created, have the same token.
    with Server(os.environ["DEVICE"], "--discovery", "--set", "reuse_nonces"):
        said = subprocess.run(["onvif-util", "-u", USER, "-p", PASSWORD, "127.0.0.1"], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=PATIENCE,
                              input="get time\nget profiles\nget rtsp\nget video\nget imaging\nquit\n").stdout
        print(said)
        for wanted in ("rtsp://127.0.0.1:", "1280 x 720", "Profile_3_1"):
            wanted in said or fail("onvif-util said nothing of", wanted)


def main():
    kind = sys.argv[1]
    if kind in ("foreign", "clients") and len(sys.argv) == 2:
        packages()
    if len(sys.argv) == 2:  # once more, where there is nothing but a loopback
        space = ["unshare", "-n"] if os.geteuid() == 0 else ["unshare", "-rn"]
        os.execvp(space[0], [*space, sys.executable, "-B", __file__, kind, "inside"])
    for command in ("link set lo up multicast on", "route add 224.0.0.0/4 dev lo"):
        subprocess.run(["ip", *command.split()], check=True)
    {"own": own, "fleet": fleet, "tours": tours, "foreign": foreign, "clients": clients}[kind]()


main()
