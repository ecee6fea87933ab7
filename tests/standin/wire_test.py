"""Tests of tarn-standin over its socket. TARN_STANDIN names the program."""

import ast
import base64
import contextlib
import hashlib
import os
import pathlib
import random
import re
import resource
import select
import signal
import socket
import sqlite3
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
import zlib

sys.dont_write_bytecode = True
from wire import (ALICE, BOB, CAROL, DAVE, LIMIT, SECRET, Client, array, encode, frame, long, mapping, parameters,
                  records, request, sized)

STANDIN = os.environ.get("TARN_STANDIN", "")
MAIL = "Subject: x\n\ny"
NEW = "new@example.org"


def milliseconds():
    return time.time_ns() // 1_000_000


class DaemonTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        (self.folder / name).write_text(text, "utf-8")
        return str(self.folder / name)

    def start(self, *arguments, port="0", **options):
        daemon = self.daemon = subprocess.Popen([STANDIN, "--port", port, *arguments], stdout=subprocess.PIPE,
                                                stderr=subprocess.PIPE, cwd=self.folder, **options)
        self.addCleanup(self.end, daemon)
        self.errors = b""
        self.assertTrue(select.select([daemon.stdout], [], [], LIMIT)[0], "the daemon does not say that it listens")
        self.port = int(re.search(r"listening on 127\.0\.0\.1:(\d+)", daemon.stdout.readline().decode())[1])
        return self.client()

    def end(self, daemon, number=signal.SIGTERM):
        daemon.send_signal(number)
        self.assertEqual(daemon.wait(LIMIT), 0, "the daemon ended badly")
        daemon.stdout.close()
        daemon.stderr.close()

    def client(self):
        client = Client(self.port)
        self.addCleanup(client.socket.close)
        return client

    def expect_closed(self, sent, failure=(EOFError, ConnectionError)):
        client = self.client()
        with self.assertRaises(failure):
            client.socket.sendall(sent)
            client.receive(1)
        client.socket.close()

    def expect_error(self, text, count=1):
        """Waits until the daemon has complained with the text, count times in all."""
        while self.errors.count(text.encode()) < count:
            self.assertTrue(select.select([self.daemon.stderr], [], [], LIMIT)[0], f"{text!r} not in {self.errors}")
            block = os.read(self.daemon.stderr.fileno(), 65536)
            self.assertTrue(block, f"the daemon ended without {text!r}: {self.errors}")
            self.errors += block

    def run_to_end(self, *arguments, **options):
        """Exit code, and what is on standard output and standard error."""
        done = subprocess.run([STANDIN, *arguments], timeout=LIMIT, check=False, cwd=self.folder,
                              **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options})
        return done.returncode, ((done.stdout or b"") + done.stderr).decode()

    def expect(self, client, code, *cases):
        """Sends each case's values and compares the status."""
        for status, values in cases:
            with self.subTest(str(values)[:300]):
                self.assertEqual(client.call(code, **values)[0], status)


class Frames(DaemonTest):
    def test_bad_requests_are_named_and_only_their_connection_is_closed(self):
        other = self.start()
        bad_map = sized(b"k") + struct.pack(">i", 9) + b"v"
        unordered = sized(b"b") + sized(b"") + sized(b"a") + sized(b"")
        cases = [
            (b"\0\x08ST\xce\xde", "byte 0: version 8"), (frame("ST")[:-1] + b"\0", "byte 6: CRC 0x"),
            (frame("ZZ"), "byte 2: unknown command 'ZZ'"), (b"\0\7\x01\x02", "byte 2: unknown command 0x0102"),
            (frame("ST", ("ep", "x")), "byte 4: unknown parameter 'ep' in a 'ST' request"),
            (b"\0\7LSto" + struct.pack(">i", -1), "byte 6: negative length -1 of 'to'"),
            (b"\0\7BEmm" + struct.pack(">i", 2**31 - 1), "byte 6: length 2147483647 of 'mm' exceeds"),
            (frame("DE", ("po", b"\0\1")), "byte 6: length 2 of 'po' instead of 1"),
            (frame("DE", ("po", b"\2")), "byte 10: value of 'po' is neither 0 nor 1"),
            (frame("MI", ("si", long(1))), "byte 6: length 8 of 'si' instead of 4"),
            (frame("SI", ("ed", 1)), "byte 6: length 4 of 'ed' instead of 8"),
            (frame("SI", ("ri", bad_map)), "byte 15: 'ri': the length of a value does not fit"),
            (frame("SI", ("ri", bad_map[:7])), "byte 15: 'ri': the map ends inside the length of a value"),
            (frame("BE", ("ec", unordered)), "byte 19: 'ec': the keys of the map do not ascend"),
            (frame("LS", ("to", "a"), ("ky", ""), ("to", "b")), "byte 17: parameter 'to' given twice")]
        for sent, complaint in cases:
            with self.subTest(complaint):
                self.expect_closed(sent)
                self.expect_error(complaint)
                self.assertEqual(other.call("ST")[0], 0)
        lost = self.client()
        lost.socket.sendall(frame("ST")[:7])
        lost.socket.close()
        self.expect_error("byte 7: lost in the middle of a request")
        self.assertEqual(self.errors.count(b"\n"), len(cases) + 1)

    def test_a_promised_length_takes_no_memory(self):
        self.start().socket.sendall(b"\0\7BEmm" + struct.pack(">i", 200 << 20) + b"x")
        self.assertEqual(self.client().call("ST")[0], 0)
        process = pathlib.Path(f"/proc/{self.daemon.pid}")
        resident = int((process / "statm").read_text().split()[1]) * resource.getpagesize()
        self.assertLess(resident, (200 if "libasan" in (process / "maps").read_text() else 60) << 20)

    def test_stalled_clients_hold_up_nobody(self):
        quick = self.start()
        slow = self.client()
        for byte in frame("LS", ("to", BOB), ("ky", SECRET[BOB])):
            slow.socket.sendall(bytes([byte]))
            self.assertEqual(quick.call("ST")[0], 0)
        self.assertEqual(slow.reply("LS")[0], 0)
        content = bytes(range(256)) * 40960
        envelope = quick.encrypt(BOB, mime=b"Content-Transfer-Encoding: binary\n\n" + content)
        slow.send("DE", ky=SECRET[BOB], en=envelope, to=BOB)
        self.assertEqual(quick.call("ST")[0], 0)
        self.assertEqual(parameters(array(slow.reply("DE")[1]["da"])[0])["da"], content)
        slow.socket.sendall(frame("ST") + frame("KV", ("ep", "")) + frame("LT"))
        self.assertEqual([slow.reply(code)[0] for code in ("ST", "KV", "LT")], [0, 0, 0])
        # Nobody will take this reply: the daemon ends all the same.
        slow.send("DE", ky=SECRET[BOB], en=envelope, to=BOB)
        self.end(self.daemon)


class RandomRequests(DaemonTest):
    """Whatever comes, the daemon answers it or names what is wrong with it, and goes on."""

    MIME = (b"Sensitivity: private\r\nSubject: =?utf-8?q?Gr=C3=BC=C3=9Fe?= =?utf-8?b?w6Q=?=\r\n"
            b"Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
            b"Content-Type: text/html; charset*=utf-8''x\r\n\r\n<b>\r\n--b\r\nContent-Transfer-Encoding: base64\r\n"
            b"Content-Disposition: attachment;\r\n filename*0*=utf-8''%E2%82; filename*1*=%AC.bin\r\n\r\neHl6\r\n"
            b"--b\r\nContent-Type: message/rfc822\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\nA: =62\r\n\r\n"
            b"x\r\n--b--\r\n")

    chance = random.Random(5)

    def mutated(self, data):
        for _ in range(self.chance.randint(1, 4)):
            start = self.chance.randrange(len(data) + 1)
            end = start + self.chance.choice((0, 1, 1, 2, 4, 9))
            changed = self.chance.choice((b"", self.chance.randbytes(max(end - start, 1)), data[start:end] * 2))
            data = data[:start] + changed + data[end:]
        return data

    def read_errors(self):
        while select.select([self.daemon.stderr], [], [], 0)[0]:
            self.errors += os.read(self.daemon.stderr.fileno(), 65536)

    def test_requests(self):
        client = self.start("--config-dir", str(self.folder))
        envelope = client.encrypt(BOB)
        session, file = client.login(), self.write("file", "hostname=h\nkeyserver.host=k\n")
        common = {"tc": "", "ky": "wrong", "ep": file}
        requests = [request(code, values) for code, values in (
            ("ST", {}), ("KV", {"ep": file}), ("LT", {}), ("LS", {**common, "to": CAROL}),
            ("VC", {"ep": file, "fm": BOB}), ("EP", {"ec": {"a": ""}, "ea": NEW, "ul": "de"}),
            ("BE", {"sl": session, "fm": ALICE, "to": [BOB, NEW], "cc": DAVE, "ec": {"a": "b"}, "mm": self.MIME}),
            ("DE", {"en": envelope, "to": NEW, "sk": "x", "po": True}), ("DE", {"en": envelope, "po": True}),
            ("MI", {**common, "fm": CAROL, "sf": "to", "as": True, "si": 0, "mx": 9}),
            ("SI", {**common, "ri": {"to": BOB, "id": "1"}, "ls": True, "sm": "m", "ed": long(1)}),
            ("EU", {"ea": NEW, "pw": "x", "or": 0, "el": 0, "qa": {}}))]
        for _ in range(600):
            data = self.mutated(self.chance.choice(requests))
            if self.chance.random() < 0.8:
                data = data[:-4] + struct.pack(">I", zlib.crc32(data[:-4]))
            if data[2:4] == b"SD":
                continue
            bad = self.client()
            with contextlib.suppress(OSError):  # it closes what it refuses
                at = self.chance.randrange(len(data) + 1)
                bad.socket.sendall(data[:at])
                bad.socket.sendall(data[at:])
                bad.socket.shutdown(socket.SHUT_WR)
                while bad.socket.recv(65536):
                    pass
            bad.socket.close()
            self.read_errors()
        self.assertEqual(client.decrypt(envelope, BOB)[0], 0)
        named = re.findall(rb"(?m)^tarn-standin: connection \d+: bad request, byte \d+: .*; closed\n", self.errors)
        self.assertGreater(len(named), 50)
        self.assertEqual(b"".join(named), self.errors)

    def test_mime_messages(self):
        client = self.start()
        for number in range(300):
            status, reply = client.call("BE", fm=ALICE, ec={}, to=BOB, mm=self.mutated(self.MIME))
            self.assertIn(status, (0, 108), reply["em"])
            if status == 0 and number % 20 == 0:
                self.assertEqual(client.decrypt(reply["en"], BOB)[0], 0)
        self.read_errors()
        self.assertEqual(self.errors, b"")


class Connections(DaemonTest):
    def test_silent_ones_are_reset(self):
        self.start("--idle", "1")
        for sent in (b"", frame("ST")[:5]):
            self.expect_closed(sent, ConnectionResetError)
        self.expect_error("nothing came for 1 seconds", 2)
        self.assertEqual(self.client().call("ST")[0], 0)

    def test_too_many_are_refused_with_few_words(self):
        first = self.start()
        others = [self.client() for _ in range(63)]
        self.assertEqual(others[-1].done("ST")["ca"], encode(64))
        for _ in range(200):
            self.expect_closed(b"")
        self.expect_error("refused")
        self.assertEqual(first.call("ST")[0], 0)
        self.assertLess(self.errors.count(b"\n"), 100)

    def test_without_descriptors_clients_wait(self):
        client = self.start(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (24, 24)))
        clients = [client] + [self.client() for _ in range(30)]
        self.expect_error("clients have to wait: Too many open files")

        def cpu_time():
            user, system = pathlib.Path(f"/proc/{self.daemon.pid}/stat").read_text().rsplit(")", 1)[1].split()[11:13]
            return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")

        before = cpu_time()
        self.expect_error("clients have to wait", 3)
        self.assertLess(cpu_time() - before, 0.1)
        for client in clients[:-1]:
            client.socket.close()
        self.assertEqual(clients[-1].call("ST")[0], 0)

    def test_standard_descriptors_that_are_closed_or_full(self):
        with socket.create_server(("127.0.0.1", 0)) as probe:
            self.port = probe.getsockname()[1]
        daemon = subprocess.Popen([STANDIN, "--port", str(self.port)],
                                  preexec_fn=lambda: [os.close(descriptor) for descriptor in (0, 1, 2)])
        self.addCleanup(daemon.kill)
        client, end = None, time.monotonic() + LIMIT
        while client is None and daemon.poll() is None and time.monotonic() < end:
            with contextlib.suppress(ConnectionRefusedError):
                client = self.client()
        self.assertIsNone(daemon.poll(), "it does not run without standard output")
        client.socket.sendall(frame("ZZ"))
        self.assertRaises((EOFError, ConnectionError), client.receive, 1)
        daemon.terminate()
        self.assertEqual(daemon.wait(LIMIT), 0)
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.run_to_end("--port", "0", stdout=full)[0], 5)


class Login(DaemonTest):
    def test_each_class_of_login(self):
        client = self.start()
        session = client.login(BOB)
        self.assertEqual(session["user"], BOB)
        self.assertGreater(int(session["expires"]), milliseconds())
        self.expect(client, "LS", (17, {"to": DAVE, "ky": SECRET[DAVE]}), (101, {"to": "nobody", "ky": "wrong"}),
                    (103, {"to": BOB, "ky": SECRET[BOB], "ep": "/nowhere"}), (25, {"to": NEW, "ky": "wrong"}),
                    (0, {"to": " Bob@Example.COM", "ky": SECRET[BOB]}))
        link = client.call("LS", to=NEW, ky="wrong")[1]["lk"].decode()
        self.assertRegex(link, r"^http://127\.0\.0\.1/enroll\?id=[0-9a-f]{32}$")
        for _ in range(5):
            self.assertEqual(client.call("LS", to=CAROL, ky="wrong")[0], 2)
        status, reply = client.call("LS", to=CAROL, ky=SECRET[CAROL])
        self.assertEqual(status, 18)
        self.assertIn(struct.unpack(">q", reply["se"])[0], range(1, 31))
        self.assertTrue(reply["em"])

    def test_a_password_is_compared_as_a_whole_and_has_a_limit(self):
        self.expect(self.start(), "LS",
                    (2, {"to": BOB, "ky": SECRET[BOB] + "\0x"}), (2, {"to": BOB, "ky": "x" * 511}),
                    (111, {"to": BOB, "ky": "x" * 512}), (111, {"to": BOB, "ky": "x" * (20 << 20)}))

    def test_configuration_check_names_each_problem(self):
        client = self.start("--config-dir", str(self.folder))
        good = self.write("good", "\ufeff# comment\r\n\nhostname = mail.example.com\r\nkeyserver.host=k\n"
                                  "algorithm.cipher=x\nsecureport=443\nopenerurl=https://x/y\ninlinehtml=true\n")
        bad = self.write("bad", "hostname=\nnonsense\nopenerurl=ftp://x\nsecureport=65536\nunsecureport=0\n"
                                "algorithm.=x\ncolour=red\ncolour=blue\n=x\nrid=" + "x" * 997)
        huge = self.write("huge", "\n" * (1 << 20) + "\n")
        self.expect(client, "VC", (0, {"ep": good, "fm": ALICE}), (0, {"fm": ALICE}), (103, {"ep": huge, "fm": ALICE}))
        status, reply = client.call("VC", ep=bad, fm="nobody@example.com")
        self.assertEqual((status, reply["em"][:13]), (104, b"12 problems: "))
        self.assertEqual(set(mapping(reply["ec"])), {"hostname", "keyserver.host", "line 2", "line 8", "line 9",
                                                     "line 10", "sender", "openerurl", "secureport", "unsecureport",
                                                     "algorithm.", "colour"})
        status, reply = client.call("VC", ep=self.write("long", "nonsense\n" * 1200), fm=ALICE)
        self.assertEqual((status, reply["em"][:15], len(mapping(reply["ec"]))), (104, b"1202 problems: ", 50))
        self.assertLess(len(reply["em"]), 1010)

    def test_configuration_files_are_read_in_their_folder_alone(self):
        text = "hostname=h\nkeyserver.host=k\n"
        outside = self.write("outside", text)
        inside = self.folder / "inside"
        (inside / "deep").mkdir(parents=True)
        (self.folder / "inside-too").mkdir()
        for name in ("inside/file", "inside/deep/file", "inside-too/file"):
            self.write(name, text)
        (inside / "link").symlink_to("deep/file")
        (inside / "away").symlink_to(outside)
        (inside / "up").symlink_to("..")
        os.mkfifo(inside / "pipe")
        client = self.start("--config-dir", "inside")
        for path in ("file", inside / "file", "deep/../deep/file", "link"):
            self.assertEqual(client.call("VC", ep=str(path), fm=ALICE)[0], 0, path)
        answers = set()
        for path in (outside, "../outside", "away", "up/outside", "../inside-too/file", "pipe", "deep", "/dev/zero",
                     "/nowhere", "file\0"):
            status, reply = client.call("LS", ep=str(path), to=BOB, ky="wrong")
            self.assertEqual(status, 103, path)
            answers.add(reply["em"].decode().replace(str(path), "PATH"))
        self.assertEqual(len(answers), 1, "the answer tells what there is outside the folder")
        self.assertEqual(self.start().call("VC", ep=outside, fm=ALICE)[0], 103)
        self.assertEqual(self.run_to_end("--config-dir", "nowhere")[0], 2)


class Encryption(DaemonTest):
    def test_refusals(self):
        client = self.start()
        good = {"sl": client.login(ALICE), "fm": ALICE, "to": BOB, "mm": MAIL}
        cases = [(105, {**good, "sl": {}}), (105, {**good, "sl": {"token": "0" * 32, "user": ALICE}}),
                 (105, {**good, "fm": BOB}), (101, {**good, "fm": "x"}), (101, {**good, "bc": "no address"}),
                 (101, {**good, "bc": "a@" + "b" * 319}), (100, {**good, "to": "", "cc": " "}),
                 (103, {**good, "ep": "/nowhere"}), (108, {**good, "mm": ""})]
        self.expect(client, "BE", *cases)
        client.decrypt(client.encrypt(BOB), BOB)
        figures = client.done("ST")
        self.assertEqual([figures[tag] for tag in ("v ", "ca", "bs", "bf", "ss")],
                         [b"7.6.1", encode(1), long(1), long(len(cases)), long(1)])
        self.assertGreater(struct.unpack(">d", figures["ea"])[0], 0)

    def test_what_is_too_large_to_be_passed_on(self):
        client = self.start("--config-dir", str(self.folder))
        people = [f"r{i}@example.org" for i in range(201)]
        good = {"sl": client.login(), "fm": ALICE, "to": BOB, "mm": MAIL}
        file = self.write("file", "".join(f"key{i}={'x' * 500}\n" for i in range(16)))
        mail = {count: {**good, "mm": f"Subject: {'&' * count}\n\ny"} for count in (1000, 1001)}
        self.expect(client, "BE", (0, {**good, "to": people[1:]}), (111, {**good, "to": people}), (0, mail[1000]),
                    (111, mail[1001]), (0, {**good, "ec": {"k": "x" * 7991}}), (111, {**good, "ec": {"k": "x" * 7992}}),
                    (111, {**good, "ep": file}))
        envelope = client.encrypt(BOB)
        self.assertEqual([client.set(envelope, BOB, True, "x" * size)[0] for size in (1001, 1000)], [111, 0])
        self.assertEqual(client.ask(envelope, BOB)[1]["em"], b"x" * 1000)
        status, reply = client.call("MI", fm=ALICE, ky=SECRET[ALICE], sf="ä" * 4000)
        self.assertEqual((status, reply["em"].decode()[-4:], len(reply["em"]) < 1010), (101, "ä...", True))

    def test_envelope_configuration_and_localized_envelopes(self):
        client = self.start("--config-dir", str(self.folder))
        file = self.write("grüße.cfg", "hostname=file\nrid=7\n")
        reply = client.done("BE", fm=ALICE, to=[BOB, BOB, ""], cc=CAROL, bc="eve@example.org",
                            ec={"hostname": "given"}, ep=file, mm="Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\n\nx")
        self.assertIn("Grüße", reply["tb"].decode())
        self.assertIn("Grüße", reply["th"].decode())
        localized = map(parameters, array(reply["le"]))
        self.assertEqual({item["lc"]: array(item["rc"]) for item in localized}, {
            b"en": [b"eve@example.org"], b"de": [BOB.encode()], b"fr": [CAROL.encode()]})
        status, opened = client.decrypt(reply["en"], CAROL)
        self.assertEqual((status, mapping(opened["ec"])), (0, {"hostname": "given", "rid": "7"}))
        self.assertEqual((array(opened["tr"]), array(opened["tc"])), ([BOB.encode()], [CAROL.encode()]))

    def test_mime_parts_come_back_as_they_were(self):
        client = self.start()
        every_byte = bytes(range(256)) * 40960
        inner = b"From: x@example.org\r\nSubject:  spaced   out\r\n\r\ninner\r\n"
        pieces = [
            (b"Content-Type: text/plain; charset=utf-8\r\n", "Zeile 1\r\nZeile 2 € ".encode()),
            (b"Content-Type: text/html\r\nContent-Disposition: inline\r\n", b"<b>x</b>"),
            (b"Content-Type: text/plain; name=\"=?utf-8?b?w6QudHh0?=\"\r\n", b"named"),
            (b"Content-Type: image/png\r\nContent-ID: <1>\r\nContent-Transfer-Encoding: base64\r\n"
             b"Content-Disposition: attachment; filename*=utf-8''..%2F%E2%82%AC.png\r\n", every_byte),
            (b"Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n", b"a=b"),
            (b"Content-Type: message/rfc822\r\n", inner), (b"Content-Type: application/x-nothing\r\n", b"")]
        encodings = {3: base64.encodebytes, 4: lambda data: data.replace(b"=", b"=3D")}
        mime = b"Sensitivity: Company-Confidential\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
        for number, (head, data) in enumerate(pieces):
            mime += b"--b\r\n" + head + b"\r\n" + encodings.get(number, bytes)(data) + b"\r\n"
        status, reply = client.decrypt(client.encrypt(BOB, mime=mime + b"--b--\r\n"), BOB)
        self.assertEqual((status, reply["ms"]), (0, encode(3)))
        items = [parameters(item) for item in array(reply["da"])]
        for item, (_, data) in zip(items, pieces, strict=True):
            self.assertTrue(item["da"] == data, item["on"])
        self.assertEqual([(item["on"].decode(), item["fc"].decode(), item["ty"][3], item["fl"][3]) for item in items], [
            ("body.txt", "text/plain; charset=utf-8", 1, 2), ("body.html", "text/html", 1, 3),
            ("ä.txt", "text/plain", 2, 0), ("../€.png", "image/png", 2, 1), ("body-2.txt", "text/plain", 1, 2),
            ("attachment.eml", "message/rfc822", 2, 2), ("attachment.bin", "application/x-nothing", 2, 2)])
        self.assertEqual(items[3]["fn"].decode(), "€.png")

    def test_deep_and_broken_mime_does_no_harm(self):
        client = self.start()
        session = client.login()
        deep = b"".join(b"Content-Type: multipart/mixed; boundary=b%d\n\n--b%d\n" % (i, i) for i in range(20000))
        for mime in (deep, b"A: " + b";" * (20 << 20), b"Content-Type: message/rfc822\n\n" * 20000,
                     b"A:" + bytes(range(256)) * 20 + b"\n\n"):
            self.assertIn(client.call("BE", sl=session, fm=ALICE, to=BOB, mm=mime)[0], (0, 108))


class Decryption(DaemonTest):
    def test_each_class_of_status(self):
        client = self.start()
        envelope = client.encrypt(BOB, CAROL, DAVE, NEW, mime="Sensitivity: private\nSubject: s\n\nx")
        for who, status in ((BOB, 5), (ALICE, 7), (NEW, 11), ("else@example.org", 15), (DAVE, 17)):
            self.assertEqual(client.ask(envelope, who)[0], status, who)
        for sent, status in (
                (b"", 34), (b"<html>", 34), (envelope[:-20], 26), (envelope[:170], 26),
                (envelope.replace(b"waits", b"Waits"), 26), (envelope.replace(b"\n", b"\r\n "), 5)):
            self.assertEqual(client.ask(sent, BOB)[0], status, sent)
        self.expect(client, "DE", (5, {"en": envelope}), (5, {"en": envelope, "to": BOB, "ky": ""}),
                    (0, {"en": envelope, "to": ALICE, "ky": SECRET[ALICE]}))
        reply = client.ask(envelope, NEW)[1]
        self.assertEqual((reply["fm"], reply["ms"]), (ALICE.encode(), encode(2)))
        self.assertTrue(reply["lk"].endswith(reply["uu"]))
        for _ in range(5):
            self.assertEqual(client.decrypt(envelope, CAROL, "wrong")[0], 2)
        status, reply = client.ask(envelope, CAROL)
        self.assertEqual((status, len(reply["se"])), (18, 8))
        self.assertEqual(self.start().ask(envelope, BOB)[0], 16)

    def test_locked_and_expired(self):
        client = self.start()
        envelope = client.encrypt(BOB)
        now = milliseconds()
        for asked, opened, state in ((21, 21, {"locked": True}), (19, 19, {"expires": now - 1}),
                                     (5, 0, {"expires": now + 60000}), (20, 20, {"locked": True, "message": "Grüße"})):
            self.assertEqual(client.set(envelope, BOB, **state)[0], 0)
            self.assertEqual(client.ask(envelope, BOB)[0], asked)
            self.assertEqual(client.decrypt(envelope, BOB)[0], opened)
        self.assertEqual(client.ask(envelope, BOB)[1]["em"].decode(), "Grüße")

    def test_keeping_open_and_finding_the_owner_of_a_password(self):
        client = self.start()
        envelope = client.encrypt(BOB, CAROL)
        self.assertEqual(client.decrypt(envelope, BOB)[1]["ku"], b"")
        key = client.decrypt(envelope, BOB, po=True)[1]["ku"]
        self.assertEqual(len(key), 32)
        self.expect(client, "DE", (6, {"en": envelope, "to": BOB}), (0, {"en": envelope, "to": BOB, "sk": key}),
                    (0, {"en": envelope, "sk": key}), (200, {"en": envelope, "to": CAROL, "sk": key}),
                    (200, {"en": client.encrypt(BOB), "to": BOB, "sk": key}), (2, {"en": envelope, "ky": "wrong"}))
        client.set(envelope, BOB, True)
        self.assertEqual(client.decrypt(envelope, BOB, "", sk=key)[0], 21)
        self.assertEqual(client.done("DE", en=envelope, ky=SECRET[CAROL])["em"], b"opened for carol@example.com")


class Tracking(DaemonTest):
    def test_records_move_as_messages_are_opened(self):
        client = self.start()
        envelope = client.encrypt(BOB, CAROL, mime="Subject: Über\n\nx")
        before = client.track(envelope)[BOB]
        self.assertEqual([before[f] for f in ("numTries", "FLAGS", "firstOpenDate", "expiryDate", "subject", "from")],
                         ["0", "0", "0", "0", "Über", ALICE])
        client.decrypt(envelope, BOB, "wrong")
        failed = client.track(envelope)[BOB]
        self.assertEqual((failed["numTries"], failed["firstOpenDate"]), ("1", "0"))
        self.assertGreaterEqual(int(failed["lastFailOpenDate"]), int(before["createDate"]))
        client.decrypt(envelope, BOB)
        first = client.track(envelope)[BOB]
        while str(milliseconds()) <= first["lastOpenDate"]:
            pass
        client.decrypt(envelope, BOB)
        second = client.track(envelope)[BOB]
        self.assertEqual((second["numTries"], second["firstOpenDate"]), ("3", first["lastOpenDate"]))
        self.assertGreater(int(second["lastOpenDate"]), int(first["lastOpenDate"]))
        self.assertEqual(second["lastModifiedDate"], second["lastOpenDate"])
        client.set(envelope, BOB, True, "m", 2**40)
        record = client.track(envelope)[BOB]
        self.assertEqual((record["FLAGS"], record["statusMsg"], record["expiryDate"]), ("2", "m", str(2**40)))
        self.assertEqual([client.track(envelope)[CAROL][field] for field in ("numTries", "FLAGS")], ["0", "0"])

    def test_refusals(self):
        client = self.start()
        envelope = client.encrypt(BOB)
        self.expect(client, "MI", (5, {"en": envelope}), (2, {"en": envelope, "ky": "x"}), (34, {"en": b"x"}),
                    (100, {"ky": "x"}), (5, {"fm": ALICE}), (2, {"fm": ALICE, "ky": "x"}),
                    (11, {"fm": NEW, "ky": "x"}), (101, {"fm": ALICE, "ky": SECRET[ALICE], "sf": "password"}))
        lock = {"ls": True, "sm": "", "ed": long(0)}
        mine = {"ky": SECRET[ALICE], **lock}
        self.expect(client, "SI", (102, {"en": envelope, "to": CAROL, **mine}), (100, {"en": envelope, **mine}),
                    (101, {"en": envelope, "to": BOB, **mine, "ed": long(-1)}),
                    (5, {"en": envelope, "to": BOB, **lock}), (5, {"ri": {"to": BOB}, **lock}),
                    (100, {"ri": {}, **mine}), (101, {"ri": {"colour": "red"}, **mine}),
                    (102, {"ri": {"to": CAROL}, **mine}), (2, {"ri": {"to": BOB}, "ky": "x", **lock}))
        self.assertEqual(client.track(envelope)[BOB]["FLAGS"], "0")

    def test_selection_changes_only_the_owner_s_records(self):
        client = self.start()
        of_alice, of_carol = client.encrypt(BOB, DAVE), client.encrypt(BOB, sender=CAROL)
        client.done("SI", ky=SECRET[CAROL], ri={"to": BOB}, ls=True)
        self.assertEqual(client.track(of_alice)[BOB]["FLAGS"], "0")
        self.assertEqual(client.track(of_carol, CAROL)[BOB]["FLAGS"], "2")
        number = client.track(of_alice)[DAVE]["msgId"]
        reply = client.done("SI", ky=SECRET[ALICE], ri={"msgId": number, "FLAGS": "0"}, sm="x")
        self.assertEqual(reply["em"], b"2 records changed")

    def test_a_thousand_records_sorted_and_paged(self):
        client = self.start()
        names = [f"r{i:04d}@example.org" for i in range(1000)]
        for start in range(0, len(names), 200):
            client.encrypt(*names[start:start + 200])
        client.encrypt(BOB, sender=CAROL)

        def page(start, size, ascending, sort="to"):
            reply = client.done("MI", fm=ALICE, ky=SECRET[ALICE], sf=sort, as_=ascending, si=start, mx=size)
            self.assertEqual((reply["si"], reply["mx"]), (encode(start), encode(1000)))
            return [record["to"] for record in records(reply)]

        for asked, expected in (
                ((0, -1, True), names), ((0, 3, False), names[:-4:-1]), ((998, 50, True), names[998:]),
                ((2000, 5, True), []), ((0, 0, True), []), ((10, 2, True, "numTries"), names[10:12])):
            self.assertEqual(page(*asked), expected)


class Enrollment(DaemonTest):
    def test_from_invitation_to_the_opened_message(self):
        client = self.start()
        envelope = client.encrypt(NEW)
        identifier = client.ask(envelope, NEW)[1]["uu"]
        form = client.done("EP", tc="", ec={"external.secure.url": "x"}, ea=NEW, ul="de")
        self.assertEqual((form["su"], form["qn"], form["qe"]), (encode(0), encode(3), encode(1)))
        self.assertGreaterEqual(len(mapping(form["sq"])), 3)
        answers = {f"security{kind}{n}": f"{kind} {n}" for kind in ("Question", "Answer") for n in "123"}

        def enroll(stage, **changes):
            given = {"ea": NEW, "fn": "Nö", "ln": "Body", "pw": "secret99", "pc": identifier, "es": ALICE, "ul": "de",
                     "or_": 0, "el": stage, "zo": 60, "qa": answers, **changes}
            status, reply = client.call("EU", **given)
            return status, reply.get("el"), mapping(reply["ve"])

        cases = [("enrollUuid", {"pc": "0" * 32}), ("enrollUuid", {"ea": "other@example.org"}),
                 ("password", {"pw": "short1"}), ("password", {"pw": "onlyletters"}),
                 ("password", {"pw": "secret99\0"}), ("firstName", {"fn": " "}), ("lastName", {"ln": ""}),
                 ("securityQuestion2", {"qa": {**answers, "securityQuestion2": "Question 1"}}),
                 ("securityAnswer3", {"qa": {**answers, "securityAnswer3": ""}}),
                 ("securityAnswer3", {"qa": {**answers, "securityAnswer3": "x" * 512}}),
                 ("senderEmailAddress", {"es": "x"}), ("emailAddress", {"ea": "x"}), ("enrollmentStage", {"el": 2})]
        for field, change in cases:
            status, _, problems = enroll(0, **change)
            self.assertEqual((status, list(problems)), (107, [field]))
        self.assertEqual(enroll(1)[0], 107)
        self.assertEqual(client.ask(envelope, NEW)[0], 11)
        self.assertEqual(enroll(0, qa={}, or_=1)[0], 0)
        self.assertEqual(enroll(0)[1], encode(1))
        status, reply = client.ask(envelope, NEW)
        self.assertEqual((status, reply["uu"]), (25, identifier))
        self.assertEqual(client.call("LS", to=NEW, ky="secret99")[0], 25)
        self.assertEqual(enroll(1, pw="another77")[0], 107)
        status, stage, result = enroll(1)
        self.assertEqual((status, stage, result["account"]), (0, encode(2), "active"))
        self.assertEqual(client.call("LS", to=NEW, ky="secret99")[0], 0)
        self.assertEqual(client.decrypt(envelope, NEW, "secret99")[0], 0)
        self.assertEqual(enroll(0)[0], 106)
        self.assertEqual(enroll(0, ea=ALICE)[0], 106)


class Store(DaemonTest):
    def test_unusable_stores_end_the_start_with_code_3(self):
        other, old, held, damaged = (str(self.folder / name) for name in ("other", "old", "held", "damaged"))
        with contextlib.closing(sqlite3.connect(other)) as database:
            database.execute("CREATE TABLE t (x)")
        self.start("--store", damaged).encrypt(BOB, mime=b"A: b\n\n" + b"x" * 100000)
        self.end(self.daemon)
        with open(damaged, "r+b") as file:
            file.seek(4096)
            file.write(os.urandom(8 * 4096))
        self.start("--store", old)
        self.end(self.daemon)
        with contextlib.closing(sqlite3.connect(old)) as database:
            database.execute("PRAGMA user_version = 2")
        self.start("--store", held)
        lock = sqlite3.connect(held)
        self.addCleanup(lock.close)
        lock.execute("BEGIN EXCLUSIVE")
        text = self.write("text", "no database at all, but long enough to be looked at\n" * 20)
        for path, complaint in ((str(self.folder), "Is a directory"), ("/dev/full", "not a regular file"),
                                (text, "not a database"), (other, "another program"), (old, "another version"),
                                (held, "locked"), (str(self.folder / "no/such"), "No such file"),
                                (damaged, "damaged|malformed")):
            code, errors = self.run_to_end("--port", "0", "--store", path)
            self.assertEqual((code, path in errors), (3, True), errors)
            self.assertRegex(errors, complaint)

    def test_names_with_a_meaning_for_sqlite_are_refused(self):
        for name in (":memory:", ":x", "file:x", "FILE:x?mode=memory", ""):
            self.assertEqual(self.run_to_end("--store", name)[0], 2, name)
        self.start("--store", "./file:x")
        self.assertEqual([path.name for path in self.folder.iterdir()], ["file:x"])

    def test_state_outlives_the_daemon_and_is_its_owner_s_secret(self):
        path = self.folder / "store"
        envelope = self.start("--store", path, preexec_fn=lambda: os.umask(0)).encrypt(BOB)
        self.assertEqual(path.stat().st_mode & 0o777, 0o600)
        self.end(self.daemon)
        self.assertFalse([password for password in SECRET.values() if password.encode() in path.read_bytes()])
        with contextlib.closing(sqlite3.connect(path)) as database:
            hashes = {row[0] for row in database.execute("SELECT password FROM accounts")}
        self.assertEqual(len(hashes), len(SECRET))
        for salt, key in (stored.split("$") for stored in hashes):
            slow = [hashlib.scrypt(password.encode(), salt=bytes.fromhex(salt), n=1 << 12, r=8, p=1, dklen=16).hex()
                    for password in SECRET.values()]
            self.assertIn(key, slow, "not a hash that is slow to guess")
        self.assertEqual(self.start("--store", path).decrypt(envelope, BOB)[0], 0)

    def test_a_failing_store_refuses_whole_requests(self):
        path, limited = self.folder / "store", 400_000
        client = self.start("--store", path, restore_signals=True,
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limited, limited)))
        envelope = client.encrypt(BOB)
        status, reply = client.call("BE", sl=client.login(), fm=ALICE, to=CAROL, mm=b"A: b\n\n" + b"x" * 3 * limited)
        self.assertEqual(status, 109)
        self.assertIn(b"store", reply["em"])
        self.expect_error("store: ")
        self.assertEqual(client.done("MI", fm=ALICE, ky=SECRET[ALICE], mx=9)["mx"], encode(1))
        held = sqlite3.connect(path)
        self.addCleanup(held.close)
        for statement, status in (("BEGIN EXCLUSIVE", 109), ("ROLLBACK", 0)):
            held.execute(statement)
            self.assertEqual(client.decrypt(envelope, BOB)[0], status)
            self.assertEqual(client.call("ST")[0], 0)


class Program(unittest.TestCase):
    def test_it_is_written_for_python_3_10(self):
        with zipfile.ZipFile(STANDIN) as program:
            modules = [name for name in program.namelist() if name.endswith(".py")]
            self.assertIn("__main__.py", modules)
            for name in modules:
                ast.parse(program.read(name), name, feature_version=(3, 10))


class Lifecycle(DaemonTest):
    def test_signals_end_it_in_the_middle_of_an_exchange(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            client = self.start("--store", self.folder / "store")
            client.socket.sendall(frame("LS", ("to", BOB), ("ky", SECRET[BOB]))[:20])
            self.assertEqual(self.client().call("ST")[0], 0)
            self.end(self.daemon, number)

    def test_wrong_arguments_and_a_taken_port(self):
        self.start()
        code, errors = self.run_to_end("--port", str(self.port))
        self.assertEqual(code, 4)
        self.assertIn(f"127.0.0.1:{self.port}: another program listens there", errors)
        for arguments in (("--port", "x"), ("--port", "70000"), ("--colour",), ("more",), ("--store",),
                          ("--answer", "ZZ=1"), ("--answer", "DE"), ("--answer", "DE=x"), ("--answer", "DE=40000"),
                          ("--delay", "-1"), ("--reset-after", "-1"), ("--idle", "x")):
            self.assertEqual(self.run_to_end(*arguments)[0], 2, arguments)
        self.assertIn("Exit codes", self.run_to_end("--help")[1])
        for arguments in (("--\x1b",), ("--answer", "\x1b"), ("--store", "no/\x1b")):
            self.assertNotIn("\x1b", self.run_to_end(*arguments)[1])

    def test_faults_on_purpose(self):
        client = self.start("--answer", "LS=18", "--answer", "SD=-2", "--reset-after", "2")
        self.assertEqual(client.call("LS", to=BOB, ky=SECRET[BOB])[0], 18)
        self.assertEqual(client.call("SD")[0], -2)
        client.send("ST")
        self.assertRaises(ConnectionResetError, client.receive, 1)
        self.assertEqual(self.client().call("ST")[0], 0)

    def test_a_delayed_reply_comes_at_the_latest_when_the_daemon_ends(self):
        clients = [self.start("--delay", "1000000", "--trace"), self.client()]
        for client in clients:
            client.send("ST")
            self.assertIn(b" -> ST", self.daemon.stdout.readline())
        self.assertEqual(select.select([client.socket for client in clients], [], [], 0)[0], [])
        self.daemon.terminate()
        self.assertEqual([client.reply("ST")[0] for client in clients], [0, 0])

    def test_the_trace_is_readable_and_shows_no_secret(self):
        client = self.start("--trace")
        token = client.login()["token"]
        envelope = client.encrypt(BOB, mime="Subject: x\n\n" + "€\x1b\u009b\u202e" * 1000)
        key = client.decrypt(envelope, BOB, po=True)[1]["ku"].decode()
        client.decrypt(envelope, BOB, "", sk=key)
        client.call("EU", ea="x", pw="hushhush1", pp="passphrase", qa={"securityAnswer1": "Rex"})
        client.call("SD")
        self.assertRaises(ConnectionRefusedError, self.client)
        self.assertEqual(self.daemon.wait(LIMIT), 0)
        text = self.daemon.stdout.read().decode()
        for secret in (token, key, "hushhush1", "passphrase", "Rex", "\x1b", "\u009b", "\u202e", *SECRET.values()):
            self.assertNotIn(secret, text)
        lines = re.findall(r"(?m)^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z #1 (?:->|<-) [A-Z]{2}\b.*$", text)
        self.assertEqual((len(lines), len(text.splitlines())), (14, 14))
        self.assertTrue(lines[0].endswith(' #1 -> LS tc="" to="alice@example.com" ky=(hidden)'), lines[0])
        self.assertRegex(lines[4], r' mm=".*€.*"\.\.\.\(9012 bytes\)$')
        self.assertRegex(lines[6], r" po=true$")


if __name__ == "__main__":
    if not STANDIN:
        raise SystemExit("wire_test.py: TARN_STANDIN does not name tarn-standin")
    unittest.main()
