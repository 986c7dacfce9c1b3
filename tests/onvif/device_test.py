"""The simulated device's ONVIF face is strict, and misbehaves as it is told: DEVICE in the environment is the program.

What it does for who asks well is seen by the plug-in's tests and by foreign clients; here it is asked badly.
"""

import base64
import datetime
import hashlib
import http.client
import os
import re
import subprocess
import time
import unittest

NAMESPACES = {
    "s": "http://www.w3.org/2003/05/soap-envelope", "wsa": "http://www.w3.org/2005/08/addressing",
    "tds": "http://www.onvif.org/ver10/device/wsdl", "tptz": "http://www.onvif.org/ver20/ptz/wsdl",
    "tev": "http://www.onvif.org/ver10/events/wsdl", "tt": "http://www.onvif.org/ver10/schema"}
WSS = "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-"
DEVICE, PTZ, EVENTS = "/onvif/device_service", "/onvif/ptz", "/onvif/events"
TOKEN = "<tptz:ProfileToken>Profile_0_0</tptz:ProfileToken>"
VELOCITY = '<tptz:Velocity><tt:PanTilt x="0.1" y="0"/></tptz:Velocity>'
PULL = "<tev:PullMessages><tev:Timeout>PT0S</tev:Timeout><tev:MessageLimit>9</tev:MessageLimit></tev:PullMessages>"


def move(inside):
    return f"<tptz:ContinuousMove>{inside}</tptz:ContinuousMove>"


def token(user="admin", password="admin", nonce=None, ahead=0, kind="PasswordDigest"):
    nonce = nonce or os.urandom(16)
    now = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=ahead)
    created = now.strftime("%Y-%m-%dT%H:%M:%SZ")
    digest = base64.b64encode(hashlib.sha1(nonce + created.encode() + password.encode()).digest()).decode()
    return (f'<o:Security xmlns:o="{WSS}wssecurity-secext-1.0.xsd" xmlns:u="{WSS}wssecurity-utility-1.0.xsd">'
            f'<o:UsernameToken><o:Username>{user}</o:Username><o:Password Type="{WSS}username-token-profile-1.0#{kind}">'
            f'{digest if kind == "PasswordDigest" else password}</o:Password>'
            f"<o:Nonce>{base64.b64encode(nonce).decode()}</o:Nonce><u:Created>{created}</u:Created>"
            "</o:UsernameToken></o:Security>")


class DeviceTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.device = subprocess.Popen([os.environ["DEVICE"], "--set", "window=30"], stdin=subprocess.PIPE,
                                      stdout=subprocess.PIPE, text=True)
        cls.port = int(cls.device.stdout.readline().split()[2])

    @classmethod
    def tearDownClass(cls):
        cls.device.stdin.close()
        assert cls.device.wait() == 0
        cls.device.stdout.close()

    def tell(self, command, answer="ok"):
        print(command, file=self.device.stdin, flush=True)
        self.assertIn(answer, self.device.stdout.readline())

    def ask(self, path, body, header=None, media="application/soap+xml"):
        declarations = " ".join(f'xmlns:{prefix}="{uri}"' for prefix, uri in NAMESPACES.items())
        header = token() if header is None else header
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request("POST", path, f"<s:Envelope {declarations}><s:Header>{header}</s:Header><s:Body>{body}</s:Body>"
                                         "</s:Envelope>", {"Content-Type": media})
        answer = connection.getresponse()
        text = answer.read().decode()
        connection.close()
        return answer.status, text

    def test_requests(self):
        once = os.urandom(16)
        scopes = "<tds:GetScopes/>"
        for status, says, path, body, *more in [
                (200, "MoveResponse", PTZ, move(TOKEN + VELOCITY)),
                (400, "ter:TagMismatch", PTZ, move(VELOCITY + TOKEN)),
                (400, "ter:Tag<", PTZ, move(TOKEN)),
                (400, "ter:TagMismatch", PTZ, move(TOKEN + VELOCITY + TOKEN)),
                (400, "ter:Namespace", PTZ, move(TOKEN + VELOCITY.replace("tt:", "tptz:"))),
                (400, "ter:MissingAttr", PTZ, move(TOKEN + VELOCITY.replace(' y="0"', ""))),
                (400, "ter:SpaceNotSupported", PTZ, move(TOKEN + VELOCITY.replace("y=", 'space="urn:odd" y='))),
                (500, "ter:ActionNotSupported", DEVICE, move(TOKEN + VELOCITY)),
                (400, "ter:WellFormed", DEVICE, "<tds:GetScopes>"),
                (400, "ter:WellFormed", DEVICE, scopes, token(), "text/xml"),
                (500, "s:MustUnderstand", DEVICE, scopes, token() + '<tt:Odd s:mustUnderstand="1"/>'),
                (200, "ScopeItem", DEVICE, scopes, token(nonce=once)),
                (400, "ter:NotAuthorized", DEVICE, scopes, token(nonce=once)),
                (400, "ter:NotAuthorized", DEVICE, scopes, token(ahead=-60)),
                (400, "ter:NotAuthorized", DEVICE, scopes, token(ahead=60)),
                (400, "ter:NotAuthorized", DEVICE, scopes, token(password="wrong")),
                (400, "ter:NotAuthorized", DEVICE, scopes, token(kind="PasswordText")),
                (401, "ter:NotAuthorized", DEVICE, scopes, ""),
                (200, "UTCDateTime", DEVICE, "<tds:GetSystemDateAndTime/>", ""),
                (400, "ter:NotAuthorized", PTZ, move(TOKEN + VELOCITY), token("viewer", "viewer"))]:
            with self.subTest(says, body=body):
                answer = self.ask(path, body, *more)
                self.assertEqual(answer[0], status)
                self.assertIn(says, answer[1])

    def test_subscriptions(self):
        _, answer = self.ask(EVENTS, "<tev:CreatePullPointSubscription/>")
        path = re.search(r"Address>http://[^/]*([^<]*)", answer)[1]
        self.assertIn("MotionAlarm", self.ask(path, PULL)[1])
        self.tell("lose 0")
        self.assertIn("ResourceUnknownFault", self.ask(path, PULL)[1])

    def test_misbehaviour(self):
        scopes = "<tds:GetScopes/>"
        self.tell("fault 0 odd", "error: there is no fault odd")
        self.tell("set 0 fault_status 200")
        self.assertEqual(self.ask(DEVICE, scopes, token(password="wrong"))[0], 200)
        self.tell("set 0 fault_status 0")
        self.tell("set 0 without GetScopes")
        self.assertIn("ActionNotSupported", self.ask(DEVICE, scopes)[1])
        self.tell("set 0 without")
        self.tell("set 0 half 1")
        self.assertRaises(http.client.IncompleteRead, self.ask, DEVICE, scopes)
        self.tell("fault 0 lock_out count=1")
        self.ask(DEVICE, scopes, token(password="wrong"))
        self.assertIn("AccountLocked", self.ask(DEVICE, scopes)[1])
        self.tell("fault 0 none")
        self.tell("fault 0 drop")
        self.await_(False)
        self.tell("fault 0 none")
        self.await_(True)

    def await_(self, answers):
        """Until the device answers, or nobody listens any more."""
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            try:
                if self.ask(DEVICE, "<tds:GetScopes/>")[0] == 200 and answers:
                    return
            except ConnectionRefusedError:
                if not answers:
                    return
            except (ConnectionResetError, http.client.RemoteDisconnected):
                pass
        self.fail("in vain")


if __name__ == "__main__":
    unittest.main()
