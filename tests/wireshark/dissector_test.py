"""Tests of the Wireshark dissector with tshark, over a live capture of the story and over crafted ones. Needs the right
to capture on the loopback interface, and port 53007. TARN_STANDIN and EXPORT_TESTS name the binaries."""

import os
import pathlib
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/standin"))
from wire import encode, frame, long, parameter, sized

LIMIT = 120  # seconds that any wait may take
PORT = 53007


class Message:
    def __init__(self, tree):
        self.tree = tree
        self.command, self.request = "".join(self.all("command")), self.all("request") == ["1"]
        self.kind = self.command, "request" if self.request else "reply"
        self.experts = [field.get("name")[len("tarn.expert."):] for field in tree.iter("field")
                        if field.get("name").startswith("tarn.expert.")]

    def all(self, name, tree=None):
        found = (self.tree if tree is None else tree).iter("field")
        return [field.get("show") for field in found if field.get("name") == "tarn." + name]

    def map(self, name):
        tree = next(field for field in self.tree.iter("field") if field.get("name") == "tarn." + name)
        return dict(zip(self.all("key", tree), self.all("value", tree), strict=True))


class DissectorTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)

    def tshark(self, capture, *options):
        """The dissected packets, read twice, as the graphical program reads them."""
        environment = os.environ | {"HOME": str(self.folder), "WIRESHARK_CONFIG_DIR": str(self.folder)}
        done = subprocess.run(["tshark", "-2", "-X", f"lua_script:{ROOT}/tools/wireshark/tarn.lua", "-r", capture, "-T",
                               "pdml", *options], capture_output=True, timeout=LIMIT, check=False, env=environment)
        complaints = done.stderr.decode().replace('Running as user "root"', "").lower()
        self.assertEqual(done.returncode, 0, complaints)
        self.assertNotIn("lua", complaints)
        self.assertNotIn(b"Lua Error", done.stdout)
        return xml.etree.ElementTree.fromstring(done.stdout)

    def messages(self, capture, *options):
        return [Message(tree) for tree in self.tshark(capture, *options).iterfind(".//proto[@name='tarn']")]


class Live(DissectorTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.capture = cls.folder / "story.pcapng"
        dumpcap = subprocess.Popen(["dumpcap", "-q", "-i", "lo", "-f", f"tcp port {PORT} or udp", "-w", cls.capture],
                                   stderr=subprocess.PIPE, text=True)
        try:
            # It names the file when it has begun to capture.
            while not (line := dumpcap.stderr.readline()).startswith("File:"):
                assert line, "dumpcap does not capture"
            subprocess.run([ROOT / "tests/story/run", os.environ["TARN_STANDIN"], os.environ["EXPORT_TESTS"],
                            "--gtest_filter=Story.*"], timeout=LIMIT, check=True, stdout=subprocess.DEVNULL)
            # Once a last datagram is in the file, all before it are.
            last = os.urandom(16)
            with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as end:
                end.sendto(last, ("127.0.0.1", PORT))
            deadline = time.monotonic() + LIMIT
            while last not in cls.capture.read_bytes():
                assert time.monotonic() < deadline, "the last packet was not captured"
                time.sleep(0.02)
        finally:
            dumpcap.send_signal(signal.SIGINT)
            dumpcap.communicate(timeout=LIMIT)

    def test_every_exchange_of_the_story_is_understood(self):
        messages = self.messages(self.capture)
        if messages[-1].request:  # the story's last call may meet the daemon that is ending, which does not answer
            messages.pop()
        requests, replies = messages[::2], messages[1::2]
        known = re.findall(r"^  ([A-Z]{2}) = command\(", (ROOT / "tools/wireshark/tarn.lua").read_text(), re.MULTILINE)
        self.assertEqual({request.command for request in requests}, set(known))
        for request, reply in zip(requests, replies, strict=True):
            self.assertEqual((request.kind, reply.kind), ((reply.command, "request"), (reply.command, "reply")))
            self.assertLess(int(reply.all("reply_to")[0]), int(request.all("reply_in")[0]))
            self.assertGreater(float(reply.all("time")[0]), 0)
            self.assertEqual(request.experts, [])
            self.assertEqual(reply.experts, [] if reply.all("st") == ["0"] else ["status"])
            self.assertIn("(right)", reply.tree[-1].get("showname"))

        alice, bob, nora = "alice@example.com", "bob@example.com", "nora@example.com"
        binary = b"\0\1\r\n\x80\xfe\xff\0".hex(":")
        for kind, expected in [
                (("LS", "request"), {"to": [alice], "ky": ["(hidden)"]}),
                (("LS", "reply"), {"st": ["2"], "em": ["wrong password"]}),
                (("BE", "request"), {"fm": [alice], "to": [bob, nora], "cc": [""], "bc": [""]}),
                (("BE", "reply"), {"lc": ["en", "en", "de", "fr"], "element": [nora, bob]}),
                (("DE", "request"), {"po": ["1"]}),
                (("DE", "reply"), {"tr": [""], "tc.array": [""], "element": [bob, nora], "ms": ["2"]}),
                (("DE", "reply"), {"on": ["body.txt", "\u20ac.bin"], "ty": ["1", "2"],
                                   "da": ["Gr\u00fc\u00dfe \U0001f512".encode().hex(":"), binary]}),
                (("MI", "request"), {"sf": ["to"], "as": ["1"], "si": ["0"], "mx": ["10"], "fm": [alice]}),
                (("SI", "request"), {"to": [bob], "ls": ["1"], "sm": ["Erst anrufen \u2706"], "ed": ["0"]}),
                (("EU", "request"), {"ln": ["N\u00f6ll"], "pw": ["(hidden)"], "zo": ["60"], "el": ["1"]}),
                (("EU", "reply"), {"st": ["107"], "key": ["enrollUuid"]})]:
            found = [{name: message.all(name) for name in expected} for message in messages if message.kind == kind]
            self.assertTrue(expected in found, (kind, expected))
        records = next(reply for reply in replies if reply.command == "MI")
        self.assertEqual([value for value in records.all("value") if value in (bob, nora)], [bob] * 2 + [nora] * 2)
        session = next(reply for reply in replies if reply.kind == ("LS", "reply") and reply.experts == []).map("sl")
        self.assertEqual((session.keys(), session["token"]), ({"created", "expires", "token", "user"}, "(hidden)"))
        answers = next(request for request in requests if request.command == "EU").map("qa")
        self.assertEqual((answers["securityQuestion2"], answers["securityAnswer2"]), ("Town?", "(hidden)"))

    def test_secrets_are_shown_on_request_alone(self):
        secrets = {"wonderland", "builder", "s\u00e9same42", "Rex", "K\u00f6ln", "\U0001f512"}
        def shown(*options):
            fields = [field for message in self.messages(self.capture, *options) for field in message.tree.iter("field")
                      if field.get("name") in ("tarn.ky", "tarn.pw", "tarn.value")]
            return {field.get("show") for field in fields} | {field.get("showname").split(": ")[1] for field in fields}
        self.assertEqual(shown() & secrets, set())
        self.assertEqual(shown("-o", "tarn.mask:FALSE") & secrets, secrets)


class Crafted(DissectorTest):
    def craft(self, *conversations, port=PORT):
        """A capture of bare IP packets. A segment comes from the client, or as ("daemon", bytes) from the daemon."""
        capture = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 1 << 18, 101)
        for number, segments in enumerate(conversations):
            sent = {True: 0, False: 0}
            for segment in segments:
                from_client = isinstance(segment, bytes)
                data = segment if from_client else segment[1]
                ports = (40000 + number, port)[::1 if from_client else -1]
                numbers = sent[from_client], sent[not from_client]
                tcp = struct.pack(">HHIIBBHHH", *ports, *numbers, 0x50, 0x18, 65535, 0, 0)
                ip = struct.pack(">BBHHHBBH", 0x45, 0, 40 + len(data), number, 0, 64, 6, 0) + b"\x7f\0\0\1" * 2
                capture += struct.pack("<IIII", number, 0, 40 + len(data), 40 + len(data)) + ip + tcp + data
                sent[from_client] += len(data)
        (self.folder / "crafted.pcap").write_bytes(capture)
        return self.folder / "crafted.pcap"

    login = frame("LS", ("tc", ""), ("to", "bob"), ("ky", "builder"), ("ep", "/a"))

    def test_messages_are_found_whatever_the_segments(self):
        stop, version, answer = frame("SD"), frame("ST"), ("st", b"\0\0")
        messages = self.messages(self.craft(
            [bytes([byte]) for byte in self.login],
            [self.login + version[:3], version[3:] + stop],
            [self.login + version, stop, ("daemon", frame("LS", answer) + frame("ST", answer)),
             ("daemon", frame("SD", answer))]))
        self.assertEqual([message.command for message in messages], ["LS"] + ["LS", "ST", "SD"] * 3)
        for message in messages:
            self.assertEqual(message.experts, [])
            if message.kind == ("LS", "request"):
                self.assertEqual((message.all("to"), message.all("ep")), (["bob"], ["/a"]))
        first = len(self.login) + 3  # the packet with two requests
        linked = [message.all("reply_in") + message.all("reply_to") for message in messages[4:]]
        self.assertEqual(linked, [[str(first + after)] for after in (2, 2, 3, 0, 0, 1)])

    def test_kinds_that_the_story_does_not_show(self):
        message, figures = self.messages(self.craft([("daemon", frame(
            "DE", ("st", b"\xff\xfe"), ("se", long(-2**63)), ("we", -1), ("wd", 2**31 - 1), ("cd", b"\xff\0x"),
            ("kt", {"a": "1", "b": ""}), ("sj", ""), ("tr", sized(b"x") + sized(b"")), ("ku", "key"))),
            ("daemon", frame("ST", ("sa", struct.pack(">d", -0.5)), ("v ", "7.6")))]))
        self.assertEqual(message.experts, ["status"])
        shown = {"st": "-2", "se": str(-2**63), "we": "-1", "wd": str(2**31 - 1), "sj": "", "ku": "(hidden)"}
        self.assertEqual({name: message.all(name) for name in shown}, {name: [value] for name, value in shown.items()})
        self.assertEqual((message.map("kt"), message.all("element")), ({"a": "1", "b": ""}, ["x", ""]))
        self.assertEqual((figures.all("sa"), figures.all("v"), figures.experts), (["-0.5"], ["7.6"], []))

    def test_faults_are_pointed_out_and_the_rest_is_read(self):
        ok, right = ("st", b"\0\0"), frame("ST")
        item = parameter("lc", "en")
        cases = [
            ("crc", self.login[:-1] + b"\0", ["ep"]),
            ("unknown", ("daemon", frame("SD", ("zz", "12345"), ok)), ["unknown", "st"]),
            ("unknown", ("daemon", frame("BE", ("le", sized(parameter("zz", "1") + item)), ok)), ["lc", "st"]),
            ("unknown", frame("ZZ", ("to", "bob")), ["unknown"]),
            ("malformed", ("daemon", right[:2] + b"SDst" + sized(b"\0\0")[:3] + b"\4\0\0" +
                           frame("SD", ("em", "x"))[4:]), ["st", "em"]),
            ("malformed", frame("SI", ("ri", sized(b"to") + sized(b"bob")[:-1]), ("ls", True)), ["key", "ls"]),
            ("malformed", frame("SI", ("ri", sized(b"to")), ("ls", True)), ["key", "ls"]),
            ("malformed", ("daemon", frame("DE", ("tr", b"\0\0\0"), ok)), ["st"]),
            ("malformed", ("daemon", frame("BE", ("le", sized(item + b"e")), ok)), ["lc", "st"]),
            ("malformed", ("daemon", frame("BE", ("le", sized(item[:-1])), ok)), ["item", "st"]),
            ("malformed", right[:2] + b"LS" + parameter("to", "bob") + b"ky" + struct.pack(">i", -1), ["to"]),
            ("malformed", right[:2] + b"LS" + parameter("to", "bob") + b"ky" + encode(2**31 - 1), ["to"])]
        messages = self.messages(self.craft(*[[data, right] for _, data, _ in cases]))
        self.assertEqual([message.kind for message in messages[1::2]], [("ST", "request")] * len(cases))
        self.assertEqual([message.experts for message in messages[1::2]], [[]] * len(cases))
        for (expert, data, names), message in zip(cases, messages[::2], strict=True):
            with self.subTest(data=data):
                self.assertEqual(set(message.experts) - ({"crc", "incomplete"} - {expert}), {expert})
                self.assertEqual([name for name in names if not message.all(name)], [])

    def test_what_is_no_message_does_not_hide_the_next(self):
        messages = self.messages(self.craft([b"\0\x08" + self.login[2:], b"GET / HTTP/1.1\r\n\r\n", frame("ST")]))
        self.assertEqual([message.experts for message in messages], [["malformed"], ["malformed"], []])
        self.assertEqual([message.kind for message in messages][2:], [("ST", "request")])

    def test_preferences(self):
        bad_crc = self.craft([self.login[:-1] + b"\0"])
        message, = self.messages(bad_crc, "-o", "tarn.crc:FALSE", "-o", "tarn.mask:FALSE")
        self.assertEqual((message.experts, message.all("ky")), ([], ["builder"]))
        elsewhere = self.craft([self.login, ("daemon", frame("LS"))], port=9999)
        self.assertEqual(self.messages(elsewhere), [])
        for options in ("-o", "tarn.port:9999"), ("-d", "tcp.port==9999,tarn"):
            messages = self.messages(elsewhere, *options)
            self.assertEqual([message.kind for message in messages], [("LS", "request"), ("LS", "reply")])
        self.assertEqual(self.messages(self.craft([self.login]), "-o", "tarn.port:9999"), [])
        cut, = self.messages(self.craft([self.login[:-9]]), "-o", "tcp.desegment_tcp_streams:FALSE")
        self.assertEqual((cut.experts, cut.all("to")), (["incomplete"], ["bob"]))


if __name__ == "__main__":
    unittest.main()
