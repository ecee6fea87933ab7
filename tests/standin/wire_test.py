"""Tests of tarn-standin over its socket. TARN_STANDIN names the binary."""

import base64
import contextlib
import os
import pathlib
import re
import resource
import select
import signal
import sqlite3
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
from wire import (ALICE, BOB, CAROL, DAVE, LIMIT, SECRET, Client, array, encode, frame, long, mapping, parameters,
                  records, sized)

STANDIN = os.environ.get("TARN_STANDIN", "")


class DaemonTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, text):
        (self.folder / name).write_text(text, "utf-8")
        return str(self.folder / name)

    def start(self, *arguments, **options):
        with open(self.folder / "errors", "wb") as errors:
            daemon = self.daemon = subprocess.Popen([STANDIN, "--port", "0", *arguments], stdout=subprocess.PIPE,
                                                    stderr=errors, **options)
        self.addCleanup(self.end, daemon)
        ready, _, _ = select.select([daemon.stdout], [], [], LIMIT)
        self.assertTrue(ready, "the daemon does not say that it listens")
        self.port = int(re.search(r"listening on 127\.0\.0\.1:(\d+)", daemon.stdout.readline().decode())[1])
        return self.client()

    def end(self, daemon, number=signal.SIGTERM):
        daemon.send_signal(number)
        self.assertEqual(daemon.wait(LIMIT), 0, "the daemon ended badly")
        daemon.stdout.close()

    def client(self):
        client = Client(self.port)
        self.addCleanup(client.socket.close)
        return client

    def expect_error(self, text, count=1):
        end = time.monotonic() + LIMIT
        while (errors := (self.folder / "errors").read_text("utf-8")).count(text) < count:
            self.assertLess(time.monotonic(), end, f"{text!r} is not in {errors!r}")
            time.sleep(0.005)

    def run_to_end(self, *arguments):
        done = subprocess.run([STANDIN, *arguments], capture_output=True, timeout=LIMIT, check=False)
        return done.returncode, (done.stdout + done.stderr).decode()

    def expect(self, client, code, *cases):
        for status, *sent in cases:
            with self.subTest(sent=sent):
                self.assertEqual(client.call(code, *sent)[0], status)


class Frames(DaemonTest):
    def test_bad_requests_are_named_and_only_their_connection_is_closed(self):
        other = self.start()
        bad_map = sized(b"k") + struct.pack(">i", 9) + b"v"
        unordered = sized(b"b") + sized(b"") + sized(b"a") + sized(b"")
        cases = [
            (b"\0\x08ST\xce\xde", "byte 0: version 8"),
            (frame("ZZ"), "byte 2: unknown command 'ZZ'"),
            (b"\0\7\x01\x02", "byte 2: unknown command 0x0102"),
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
            (frame("LS", ("to", "a"), ("ky", ""), ("to", "b")), "byte 17: parameter 'to' given twice"),
            (frame("ST")[:-1] + b"\0", "byte 6: CRC 0x"),
        ]
        for sent, complaint in cases:
            with self.subTest(complaint):
                bad = self.client()
                bad.socket.sendall(sent)
                self.assertRaises(ConnectionError, bad.receive, 1)
                self.expect_error(complaint)
                self.assertEqual(other.call("ST")[0], 0)
        lost = self.client()
        lost.socket.sendall(frame("ST")[:7])
        lost.socket.close()
        self.expect_error("lost in the middle of a request")
        self.expect_error("\n", len(cases) + 1)

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
        slow.socket.sendall(frame("DE", ("ky", SECRET[BOB]), ("en", envelope), ("to", BOB)))
        self.assertEqual(quick.call("ST")[0], 0)
        self.assertEqual(parameters(array(slow.reply("DE")[1]["da"])[0])["da"], content)
        slow.socket.sendall(frame("ST") + frame("KV", ("ep", "")) + frame("LT"))
        self.assertEqual([slow.reply(code)[0] for code in ("ST", "KV", "LT")], [0, 0, 0])


class Login(DaemonTest):
    def test_each_class_of_login(self):
        client = self.start()
        session = client.login(BOB)
        self.assertEqual(session["user"], BOB)
        self.assertGreater(int(session["expires"]), time.time() * 1000)
        new, carol, wrong = ("to", "new@example.org"), ("to", CAROL), ("ky", "wrong")
        self.expect(client, "LS", (17, ("to", DAVE), ("ky", SECRET[DAVE])), (101, ("to", "nobody"), wrong),
                    (103, ("to", BOB), ("ky", SECRET[BOB]), ("ep", "/nowhere")), (25, new, wrong),
                    *[(2, carol, wrong)] * 5, (0, ("to", " Bob@Example.COM"), ("ky", SECRET[BOB])))
        link = client.call("LS", new, wrong)[1]["lk"].decode()
        self.assertRegex(link, r"^http://127\.0\.0\.1/enroll\?id=[0-9a-f]{32}$")
        status, reply = client.call("LS", carol, ("ky", SECRET[CAROL]))
        self.assertEqual(status, 18)
        self.assertIn(struct.unpack(">q", reply["se"])[0], range(1, 31))
        self.assertTrue(reply["em"])

    def test_configuration_check_names_each_problem(self):
        client = self.start()
        good = self.write("good", "\ufeff# comment\r\n\nhostname = mail.example.com\r\nkeyserver.host=k\n"
                                  "algorithm.cipher=x\nsecureport=443\nopenerurl=https://x/y\ninlinehtml=true\n")
        bad = self.write("bad", "hostname=\nnonsense\nopenerurl=ftp://x\nsecureport=65536\nunsecureport=0\n"
                                "algorithm.=x\ncolour=red\ncolour=blue\n=x\n")
        self.expect(client, "VC", (0, ("ep", good), ("fm", ALICE)), (0, ("fm", ALICE)),
                    *((103, ("ep", path), ("fm", ALICE)) for path in ("/nowhere", "/dev/zero", str(self.folder))))
        status, reply = client.call("VC", ("ep", bad), ("fm", "nobody@example.com"))
        self.assertEqual((status, reply["em"][:13]), (104, b"11 problems: "))
        self.assertEqual(set(mapping(reply["ec"])), {"hostname", "keyserver.host", "line 2", "line 8", "line 9",
                                                     "sender", "openerurl", "secureport", "unsecureport", "algorithm.",
                                                     "colour"})


class Encryption(DaemonTest):
    def test_refusals(self):
        client = self.start()
        mine = ("sl", client.login(ALICE))
        good = (("fm", ALICE), ("to", BOB), ("mm", "Subject: x\n\ny"))
        cases = [(105, *good), (105, ("sl", {"token": "0" * 32, "user": ALICE}), *good),
                 (105, mine, ("fm", BOB), *good[1:]),
                 (101, mine, *good, ("bc", "no address")),
                 (100, mine, good[0], ("to", ""), ("cc", " "), good[2]), (101, mine, ("fm", "x"), *good[1:]),
                 (103, mine, *good, ("ep", "/nowhere")), (108, mine, *good[:2], ("mm", "")), (108, mine, *good[:2])]
        self.expect(client, "BE", *cases)
        client.decrypt(client.encrypt(BOB), BOB)
        figures = client.call("ST")[1]
        self.assertEqual([figures[tag] for tag in ("v ", "ca", "bs", "bf", "ss")],
                         [b"7.6.1", encode(1), long(1), long(len(cases)), long(1)])
        self.assertGreater(struct.unpack(">d", figures["ea"])[0], 0)

    def test_envelope_configuration_and_localized_envelopes(self):
        client = self.start()
        file = self.write("grüße.cfg", "hostname=file\nrid=7\n")
        status, reply = client.call("BE", ("fm", ALICE), ("to", BOB), ("to", BOB), ("to", ""), ("cc", CAROL),
                                    ("bc", "eve@example.org"), ("ec", {"hostname": "given"}), ("ep", file),
                                    ("mm", "Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\n\nx"))
        self.assertEqual(status, 0)
        self.assertTrue("Grüße" in reply["tb"].decode() and "Grüße" in reply["th"].decode())
        localized = map(parameters, array(reply["le"]))
        self.assertEqual({item["lc"]: array(item["rc"]) for item in localized}, {
            b"en": [b"eve@example.org"], b"de": [BOB.encode()], b"fr": [CAROL.encode()]})
        status, opened = client.decrypt(reply["en"], CAROL)
        self.assertEqual(status, 0)
        self.assertEqual(mapping(opened["ec"]), {"hostname": "given", "rid": "7"})
        self.assertEqual((array(opened["tr"]), array(opened["tc"])), ([BOB.encode()], [CAROL.encode()]))

    def test_mime_parts_come_back_as_they_were(self):
        client = self.start()
        every_byte = bytes(range(256)) * 40960
        inner = b"From: x@example.org\r\nSubject:  spaced   out\r\n\r\ninner\r\n"
        pieces = [
            (b"Content-Type: text/plain; charset=utf-8\r\n", "Zeile 1\r\nZeile 2 \u20ac ".encode()),
            (b"Content-Type: text/html\r\nContent-Disposition: inline\r\n", b"<b>x</b>"),
            (b"Content-Type: text/plain; name=\"=?utf-8?b?w6QudHh0?=\"\r\n", b"named"),
            (b"Content-Type: image/png\r\nContent-ID: <1>\r\nContent-Transfer-Encoding: base64\r\n"
             b"Content-Disposition: attachment; filename*=utf-8''..%2F%E2%82%AC.png\r\n", every_byte),
            (b"Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n", b"a=b"),
            (b"Content-Type: message/rfc822\r\n", inner),
            (b"Content-Type: application/x-nothing\r\n", b""),
        ]
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
        session = ("sl", client.login())
        deep = b"".join(b"Content-Type: multipart/mixed; boundary=b%d\n\n--b%d\n" % (i, i) for i in range(20000))
        for mime in (deep, b"Content-Type: message/rfc822\n\n" * 20000, b"A:" + bytes(range(256)) * 20 + b"\n\n"):
            self.assertIn(client.call("BE", session, ("fm", ALICE), ("to", BOB), ("mm", mime))[0], (0, 108))


class Decryption(DaemonTest):
    def test_each_class_of_status(self):
        client = self.start()
        new = "new@example.org"
        envelope = client.encrypt(BOB, CAROL, DAVE, new, mime="Sensitivity: private\nSubject: s\n\nx")
        tampered = envelope.replace(b"waits", b"Waits")
        cases = [(5, BOB), (7, ALICE), (11, new), (15, "else@example.org"), (17, DAVE), (34, BOB, b""),
                 (34, BOB, b"<html>"), (26, BOB, envelope[:-20]), (26, BOB, tampered), (26, BOB, envelope[:170]),
                 (5, BOB, envelope.replace(b"\n", b"\r\n "))]
        self.expect(client, "DE", *((status, ("en", (*text, envelope)[0]), ("to", to)) for status, to, *text in cases))
        reply = client.ask(envelope, new)[1]
        self.assertEqual((reply["fm"], reply["ms"]), (ALICE.encode(), encode(2)))
        self.assertTrue(reply["lk"].endswith(reply["uu"]))
        self.expect(client, "DE", (5, ("en", envelope)), (5, ("en", envelope), ("to", BOB), ("ky", "")),
                    (0, ("en", envelope), ("to", ALICE), ("ky", SECRET[ALICE])),
                    *[(2, ("en", envelope), ("to", CAROL), ("ky", "wrong"))] * 5)
        status, reply = client.ask(envelope, CAROL)
        self.assertEqual((status, len(reply["se"])), (18, 8))
        elsewhere = self.start()
        self.assertEqual(elsewhere.ask(envelope, BOB)[0], 16)

    def test_locked_and_expired(self):
        client = self.start()
        envelope = client.encrypt(BOB)
        now = int(time.time() * 1000)
        for status, settings in ((21, (True, "")), (19, (False, "", now - 1)), (5, (False, "", now + 60000)),
                                 (20, (True, "Grüße"))):
            self.assertEqual(client.set(envelope, BOB, *settings)[0], 0)
            self.assertEqual(client.ask(envelope, BOB)[0], status)
            self.assertEqual(client.decrypt(envelope, BOB)[0], 0 if status == 5 else status)
        self.assertEqual(client.ask(envelope, BOB)[1]["em"].decode(), "Grüße")

    def test_keeping_open_and_finding_the_owner_of_a_password(self):
        client = self.start()
        envelope = client.encrypt(BOB, CAROL)
        self.assertEqual(client.decrypt(envelope, BOB)[1]["ku"], b"")
        key = client.decrypt(envelope, BOB, None, ("po", True))[1]["ku"]
        self.assertEqual(len(key), 32)
        this, bob, kept = ("en", envelope), ("to", BOB), ("sk", key)
        self.expect(client, "DE", (6, this, bob), (0, this, bob, kept), (0, this, kept),
                    (200, this, ("to", CAROL), kept), (200, ("en", client.encrypt(BOB)), bob, kept),
                    (2, this, ("ky", "wrong")))
        client.set(envelope, BOB, True)
        self.assertEqual(client.decrypt(envelope, BOB, "", kept)[0], 21)
        status, reply = client.call("DE", this, ("ky", SECRET[CAROL]))
        self.assertEqual((status, reply["em"]), (0, b"opened for carol@example.com"))


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
        opened = []
        for _ in range(2):
            time.sleep(0.005)
            client.decrypt(envelope, BOB)
            opened.append(client.track(envelope)[BOB])
        first, second = opened
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
        this, bob, alice = ("en", envelope), ("to", BOB), (("fm", ALICE), ("ky", SECRET[ALICE]))
        self.expect(client, "MI", (5, this), (2, this, ("ky", "x")), (100, ("ky", "x")), (5, alice[0]),
                    (2, alice[0], ("ky", "x")), (101, *alice, ("sf", "password")), (34, ("en", b"x")),
                    (11, ("fm", "new@example.org"), ("ky", "x")))
        lock = (("ky", SECRET[ALICE]), ("ls", True), ("sm", ""), ("ed", long(0)))
        self.expect(client, "SI", (102, this, ("to", CAROL), *lock), (100, this, *lock), (5, this, bob, *lock[1:]),
                    (101, ("ri", {"colour": "red"}), *lock), (100, ("ri", {}), *lock),
                    (102, ("ri", {"to": CAROL}), *lock), (2, ("ri", {"to": BOB}), ("ky", "x"), *lock[1:]),
                    (5, ("ri", {"to": BOB}), *lock[1:]), (101, this, bob, *lock[:3], ("ed", long(-1))))
        self.assertEqual(client.track(envelope)[BOB]["FLAGS"], "0")

    def test_selection_changes_only_the_owner_s_records(self):
        client = self.start()
        of_alice, of_carol = client.encrypt(BOB, DAVE), client.encrypt(BOB, sender=CAROL)
        self.assertEqual(client.call("SI", ("ky", SECRET[CAROL]), ("ri", {"to": BOB}), ("ls", True))[0], 0)
        self.assertEqual(client.track(of_alice)[BOB]["FLAGS"], "0")
        self.assertEqual(client.track(of_carol, CAROL)[BOB]["FLAGS"], "2")
        number = client.track(of_alice)[DAVE]["msgId"]
        status, reply = client.call("SI", ("ky", SECRET[ALICE]), ("ri", {"msgId": number, "FLAGS": "0"}), ("sm", "x"))
        self.assertEqual((status, reply["em"]), (0, b"2 records changed"))

    def test_ten_thousand_records_sorted_and_paged(self):
        client = self.start()
        names = [f"r{i:05d}@example.org" for i in range(10000)]
        client.encrypt(*names)
        client.encrypt(BOB, sender=CAROL)

        def page(start, size, ascending, sort="to"):
            status, reply = client.call("MI", ("fm", ALICE), ("ky", SECRET[ALICE]), ("sf", sort), ("as", ascending),
                                        ("si", start), ("mx", size))
            self.assertEqual((status, reply["si"], reply["mx"]), (0, encode(start), encode(10000)))
            return [record["to"] for record in records(reply)]

        begun = time.monotonic()
        for arguments, expected in (((0, -1, True), names), ((0, 3, False), names[:-4:-1]),
                                    ((9998, 50, True), names[9998:]), ((20000, 5, True), []), ((0, 0, True), []),
                                    ((10, 2, True, "numTries"), names[10:12])):
            self.assertEqual(page(*arguments), expected)
        self.assertLess(time.monotonic() - begun, 5)


class Enrollment(DaemonTest):
    def test_from_invitation_to_the_opened_message(self):
        client = self.start()
        new = "new@example.org"
        envelope = client.encrypt(new)
        identifier = client.ask(envelope, new)[1]["uu"]
        status, form = client.call("EP", ("tc", ""), ("ec", {"external.secure.url": "x"}), ("ea", new), ("ul", "de"))
        self.assertEqual((status, form["su"], form["qn"], form["qe"]), (0, encode(0), encode(3), encode(1)))
        self.assertGreaterEqual(len(mapping(form["sq"])), 3)
        answers = {f"security{kind}{n}": f"{kind} {n}" for kind in ("Question", "Answer") for n in "123"}

        def enroll(stage, **changes):
            sent = {"ea": new, "fn": "Nö", "ln": "Body", "pw": "secret99", "pc": identifier, "es": ALICE, "ul": "de",
                    "or": 0, "el": stage, "zo": 60, "qa": answers, **changes}
            status, reply = client.call("EU", *sent.items())
            return status, reply.get("el"), mapping(reply["ve"])

        cases = [("enrollUuid", {"pc": "0" * 32}), ("enrollUuid", {"ea": "other@example.org"}),
                 ("password", {"pw": "short1"}), ("password", {"pw": "onlyletters"}), ("firstName", {"fn": " "}),
                 ("lastName", {"ln": ""}),
                 ("securityQuestion2", {"qa": {**answers, "securityQuestion2": "Question 1"}}),
                 ("securityAnswer3", {"qa": {**answers, "securityAnswer3": ""}}),
                 ("senderEmailAddress", {"es": "x"}), ("emailAddress", {"ea": "x"}), ("enrollmentStage", {"el": 2})]
        for field, change in cases:
            status, _, problems = enroll(0, **change)
            self.assertEqual((status, list(problems)), (107, [field]))
        self.assertEqual(enroll(1)[0], 107)
        self.assertEqual(client.ask(envelope, new)[0], 11)
        self.assertEqual(enroll(0, qa={}, **{"or": 1})[0], 0)
        self.assertEqual(enroll(0)[1], encode(1))
        status, reply = client.ask(envelope, new)
        self.assertEqual((status, reply["uu"]), (25, identifier))
        self.assertEqual(client.call("LS", ("to", new), ("ky", "secret99"))[0], 25)
        self.assertEqual(enroll(1, pw="another77")[0], 107)
        status, stage, result = enroll(1)
        self.assertEqual((status, stage, result["account"]), (0, encode(2), "active"))
        self.assertEqual(client.call("LS", ("to", new), ("ky", "secret99"))[0], 0)
        self.assertEqual(client.decrypt(envelope, new, "secret99")[0], 0)
        self.assertEqual(enroll(0)[0], 106)
        self.assertEqual(enroll(0, ea=ALICE)[0], 106)


class Store(DaemonTest):
    def test_unusable_stores_end_the_start_with_code_3(self):
        other, held, damaged = (str(self.folder / name) for name in ("other", "held", "damaged"))
        with contextlib.closing(sqlite3.connect(other)) as database:
            database.execute("CREATE TABLE t (x)")
        self.start("--store", damaged).encrypt(BOB, mime=b"A: b\n\n" + b"x" * 100000)
        self.end(self.daemon)
        with open(damaged, "r+b") as file:
            file.seek(4096)
            file.write(os.urandom(8 * 4096))
        self.start("--store", held)
        lock = sqlite3.connect(held)
        self.addCleanup(lock.close)
        lock.execute("BEGIN EXCLUSIVE")
        text = self.write("text", "no database at all, but long enough to be looked at\n" * 20)
        for path, complaint in ((str(self.folder), "not a regular file"), ("/dev/full", "not a regular file"),
                                (text, "not a database"), (other, "another program"), (held, "locked"),
                                (str(self.folder / "no/such"), "unable to open"), (damaged, "damaged|malformed")):
            code, errors = self.run_to_end("--port", "0", "--store", path)
            self.assertEqual(code, 3, path)
            self.assertRegex(errors, complaint)
            self.assertIn(path, errors)

    def test_state_outlives_the_daemon_and_holds_no_password(self):
        path = self.folder / "store"
        envelope = self.start("--store", path).encrypt(BOB)
        self.end(self.daemon)
        self.assertFalse([password for password in SECRET.values() if password.encode() in path.read_bytes()])
        self.assertEqual(self.start("--store", path).decrypt(envelope, BOB)[0], 0)

    def test_a_failing_store_refuses_whole_requests(self):
        path, limited = self.folder / "store", 400_000
        client = self.start("--store", path, restore_signals=True,
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limited, limited)))
        envelope = client.encrypt(BOB)
        status, reply = client.call("BE", ("sl", client.login()), ("fm", ALICE), ("to", CAROL),
                                    ("mm", b"A: b\n\n" + b"x" * 3 * limited))
        self.assertEqual(status, 109)
        self.assertIn(b"store", reply["em"])
        self.expect_error("store: ")
        status, reply = client.call("MI", ("fm", ALICE), ("ky", SECRET[ALICE]), ("mx", 9))
        self.assertEqual((status, reply["mx"]), (0, encode(1)))
        held = sqlite3.connect(path)
        self.addCleanup(held.close)
        for statement, status in (("BEGIN EXCLUSIVE", 109), ("ROLLBACK", 0)):
            held.execute(statement)
            self.assertEqual(client.decrypt(envelope, BOB)[0], status)
            self.assertEqual(client.call("ST")[0], 0)


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
        for arguments in (("--port", "x"), ("--port", "70000"), ("--colour",), ("more",), ("--store",)):
            self.assertEqual(self.run_to_end(*arguments)[0], 2, arguments)
        self.assertIn("Exit codes", self.run_to_end("--help")[1])

    def test_the_trace_is_readable_and_shows_no_secret(self):
        client = self.start("--trace")
        token = client.login()["token"]
        envelope = client.encrypt(BOB, mime="Subject: x\n\n" + "\u20ac\x1b" * 1000)
        key = client.decrypt(envelope, BOB, None, ("po", True))[1]["ku"].decode()
        client.decrypt(envelope, BOB, "", ("sk", key))
        client.call("EU", ("ea", "x"), ("pw", "hushhush1"), ("pp", "passphrase"), ("qa", {"securityAnswer1": "Rex"}))
        client.call("SD")
        self.assertEqual(self.daemon.wait(LIMIT), 0)
        text = self.daemon.stdout.read().decode()
        for secret in (token, key, "hushhush1", "passphrase", "Rex", "\x1b", *SECRET.values()):
            self.assertNotIn(secret, text)
        self.assertIn("#1 ->   'to' text \"bob@example.com\"\n", text)
        self.assertIn("#1 ->   'po' bool true\n", text)
        self.assertRegex(text, r"'mm' text \".*\"\.\.\. \(4012 bytes\)\n")


if __name__ == "__main__":
    if not STANDIN:
        raise SystemExit("wire_test.py: TARN_STANDIN does not name the tarn-standin binary")
    unittest.main()
