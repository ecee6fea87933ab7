"""Tests of tarn-standin over its socket. TARN_STANDIN names the binary."""

import base64
import os
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

sys.dont_write_bytecode = True
from wire import (ALICE, BOB, CAROL, DAVE, LIMIT, SECRET, Client, array, encode, frame, long, mapping, parameters,
                  sized)

STANDIN = os.environ.get("TARN_STANDIN", "")


class DaemonTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.errors = self.path("errors")

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def start(self, *arguments, **options):
        with open(self.errors, "wb") as errors:
            self.daemon = subprocess.Popen([STANDIN, "--port", "0", *arguments], stdout=subprocess.PIPE, stderr=errors,
                                           **options)
        daemon = self.daemon
        self.addCleanup(self.end, daemon)
        ready, _, _ = select.select([daemon.stdout], [], [], LIMIT)
        self.assertTrue(ready, "the daemon does not say that it listens")
        self.port = int(re.search(r"listening on 127\.0\.0\.1:(\d+)", daemon.stdout.readline().decode())[1])
        return self.client()

    def end(self, daemon):
        if daemon.poll() is None:
            daemon.terminate()
        self.assertEqual(daemon.wait(LIMIT), 0, "the daemon ended badly")
        daemon.stdout.close()

    def client(self):
        client = Client(self.port)
        self.addCleanup(client.close)
        return client

    def error_text(self):
        with open(self.errors, encoding="utf-8", errors="replace") as file:
            return file.read()

    def expect_error(self, text):
        end = time.monotonic() + LIMIT
        while text not in self.error_text():
            self.assertLess(time.monotonic(), end, f"{text!r} is not in {self.error_text()!r}")
            time.sleep(0.005)

    def run_to_end(self, *arguments):
        done = subprocess.run([STANDIN, *arguments], capture_output=True, timeout=LIMIT, check=False)
        return done.returncode, done.stdout.decode(), done.stderr.decode()


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
                with self.assertRaises(ConnectionError):
                    bad.receive(1)
                self.expect_error(complaint)
                self.assertEqual(other.call("ST")[0], 0)
        lost = self.client()
        lost.socket.sendall(frame("ST")[:7])
        lost.close()
        self.expect_error("lost in the middle of a request")
        self.assertEqual(self.error_text().count("\n"), len(cases) + 1)

    def test_a_promised_length_takes_no_memory(self):
        client = self.start()
        client.socket.sendall(b"\0\7BEmm" + struct.pack(">i", 200 << 20) + b"x")
        self.assertEqual(self.client().call("ST")[0], 0)
        with open(f"/proc/{self.daemon.pid}/statm", encoding="ascii") as file:
            resident = int(file.read().split()[1]) * resource.getpagesize()
        with open(f"/proc/{self.daemon.pid}/maps", encoding="ascii") as file:
            sanitized = "libasan" in file.read()
        self.assertLess(resident, (200 if sanitized else 60) << 20)

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

    def test_requests_sent_together_are_answered_in_turn(self):
        client = self.start()
        client.socket.sendall(frame("ST") + frame("KV", ("ep", "")) + frame("LT"))
        self.assertEqual([client.reply(code)[0] for code in ("ST", "KV", "LT")], [0, 0, 0])


class Login(DaemonTest):
    def test_each_class_of_login(self):
        client = self.start()
        session = client.login(BOB)
        self.assertEqual(session["user"], BOB)
        self.assertGreater(int(session["expires"]), time.time() * 1000)

        def login(user, password, *more):
            return client.call("LS", ("to", user), ("ky", password), *more)

        self.assertEqual(login(DAVE, SECRET[DAVE])[0], 17)
        self.assertEqual(login("nobody", "x")[0], 101)
        self.assertEqual(login(BOB, SECRET[BOB], ("ep", "/nowhere"))[0], 103)
        status, reply = login("new@example.org", "x")
        self.assertEqual(status, 25)
        self.assertRegex(reply["lk"].decode(), r"^http://127\.0\.0\.1/enroll\?id=[0-9a-f]{32}$")
        self.assertEqual([login(CAROL, "wrong")[0] for _ in range(5)], [2] * 5)
        status, reply = login(CAROL, SECRET[CAROL])
        self.assertEqual(status, 18)
        self.assertIn(struct.unpack(">q", reply["se"])[0], range(1, 31))
        self.assertTrue(reply["em"])
        self.assertEqual(login(" Bob@Example.COM", SECRET[BOB])[0], 0)

    def test_configuration_check_names_each_problem(self):
        client = self.start()
        good = self.write("good", "\ufeff# comment\r\n\nhostname = mail.example.com\r\nkeyserver.host=k\n"
                                  "algorithm.cipher=x\nsecureport=443\nopenerurl=https://x/y\ninlinehtml=true\n")
        bad = self.write("bad", "hostname=\nnonsense\nopenerurl=ftp://x\nsecureport=65536\nunsecureport=0\n"
                                "algorithm.=x\ncolour=red\ncolour=blue\n=x\n")
        self.assertEqual(client.call("VC", ("ep", good), ("fm", ALICE))[0], 0)
        self.assertEqual(client.call("VC", ("fm", ALICE))[0], 0)
        status, reply = client.call("VC", ("ep", bad), ("fm", "nobody@example.com"))
        self.assertEqual(status, 104)
        problems = mapping(reply["ec"])
        self.assertEqual(set(problems), {"hostname", "keyserver.host", "line 2", "line 8", "line 9", "openerurl",
                                         "secureport", "unsecureport", "algorithm.", "colour", "sender"})
        self.assertTrue(reply["em"].startswith(b"11 problems: "))
        os.mkfifo(self.path("pipe"))
        for path in (self.folder.name, self.path("pipe"), self.path("none"), "/dev/zero"):
            self.assertEqual(client.call("VC", ("ep", path), ("fm", ALICE))[0], 103)
            self.assertEqual(client.call("KV", ("ep", path))[0], 103)

    def test_features_texts_and_status_figures(self):
        client = self.start()
        features = mapping(client.call("KV", ("ep", ""))[1]["kd"])
        self.assertEqual((features["feature.readByEnabled"], features["feature.localizedText"]), ("true", "true"))
        self.assertIn("version", features)
        reply = client.call("LT")[1]
        names, plain, html = (mapping(reply[tag]) for tag in ("sl", "tb", "th"))
        self.assertGreaterEqual(len(names), 6)
        self.assertEqual(set(names), set(plain) & set(html))
        self.assertTrue(any(max(text) > "\uffff" for text in plain.values()))
        client.decrypt(client.encrypt(BOB), BOB)
        figures = client.call("ST")[1]
        self.assertEqual((figures["v "], figures["ca"], figures["bs"], figures["ss"]),
                         (b"7.6.1", encode(1), long(1), long(1)))
        self.assertGreater(struct.unpack(">d", figures["ea"])[0], 0)


class Encryption(DaemonTest):
    def test_refusals(self):
        client = self.start()
        mine = ("sl", client.login(ALICE))
        good = (("fm", ALICE), ("to", BOB), ("mm", "Subject: x\n\ny"))
        cases = [
            (105, good),
            (105, (("sl", {"token": "0" * 32, "user": ALICE}), *good)),
            (105, (mine, ("fm", BOB), *good[1:])),
            (100, (mine, good[0], ("to", ""), ("cc", " "), good[2])),
            (101, (mine, *good, ("bc", "no address"))),
            (101, (mine, ("fm", "x"), *good[1:])),
            (103, (mine, *good, ("ep", "/nowhere"))),
            (108, (mine, *good[:2], ("mm", ""))),
            (108, (mine, *good[:2])),
        ]
        for status, sent in cases:
            with self.subTest(sent=sent):
                self.assertEqual(client.call("BE", *sent)[0], status)
        figures = client.call("ST")[1]
        self.assertEqual((figures["bs"], figures["bf"]), (long(0), long(len(cases))))

    def test_envelope_configuration_and_localized_envelopes(self):
        client = self.start()
        file = self.write("grüße.cfg", "hostname=file\nrid=7\n")
        status, reply = client.call("BE", ("fm", ALICE), ("to", BOB), ("to", BOB), ("to", ""), ("cc", CAROL),
                                    ("bc", "eve@example.org"), ("ec", {"hostname": "given"}), ("ep", file),
                                    ("mm", "Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\n\nx"))
        self.assertEqual(status, 0)
        self.assertIn("Grüße", reply["tb"].decode())
        self.assertIn("Grüße", reply["th"].decode())
        self.assertIn(b"Nothing here is encrypted", reply["en"])
        localized = [parameters(item) for item in array(reply["le"])]
        readers = {item["lc"]: array(item["rc"]) for item in localized}
        self.assertEqual(readers, {b"en": [b"eve@example.org"], b"de": [BOB.encode()], b"fr": [CAROL.encode()]})
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
        envelope = client.encrypt(BOB, mime=mime + b"--b--\r\n")
        status, reply = client.decrypt(envelope, BOB)
        self.assertEqual((status, reply["ms"]), (0, encode(3)))
        items = [parameters(item) for item in array(reply["da"])]
        for item, (_, data) in zip(items, pieces, strict=True):
            self.assertTrue(item["da"] == data, item["on"])
        told = [(item["on"].decode(), item["fc"].decode(), item["ty"][3], item["fl"][3]) for item in items]
        self.assertEqual(told, [
            ("body.txt", "text/plain; charset=utf-8", 1, 2), ("body.html", "text/html", 1, 3),
            ("ä.txt", "text/plain", 2, 0), ("../€.png", "image/png", 2, 1), ("body-2.txt", "text/plain", 1, 2),
            ("attachment.eml", "message/rfc822", 2, 2), ("attachment.bin", "application/x-nothing", 2, 2)])
        self.assertEqual(items[3]["fn"].decode(), "€.png")

    def test_deep_and_broken_mime_does_no_harm(self):
        client = self.start()
        session = ("sl", client.login())
        deep = b"".join(b"Content-Type: multipart/mixed; boundary=b%d\n\n--b%d\n" % (i, i) for i in range(20000))
        for mime in (deep, b"Content-Type: message/rfc822\n\n" * 20000, b"Content-Type: multipart/mixed\n\n",
                     b"A:" + bytes(range(256)) * 20 + b"\n\n"):
            self.assertIn(client.call("BE", session, ("fm", ALICE), ("to", BOB), ("mm", mime))[0], (0, 108))


class Decryption(DaemonTest):
    def test_each_class_of_status(self):
        client = self.start()
        new = "new@example.org"
        envelope = client.encrypt(BOB, CAROL, DAVE, new, mime="Sensitivity: private\nSubject: s\n\nx")
        cases = [(5, BOB), (7, ALICE), (11, new), (15, "else@example.org"), (17, DAVE)]
        for status, who in cases:
            self.assertEqual(client.ask(envelope, who)[0], status, who)
        status, reply = client.ask(envelope, new)
        self.assertEqual((reply["fm"], reply["ms"]), (ALICE.encode(), encode(2)))
        self.assertTrue(reply["lk"].endswith(reply["uu"]))
        self.assertEqual(client.call("DE", ("en", envelope))[0], 5)
        self.assertEqual(client.decrypt(envelope, BOB, "")[0], 5)
        self.assertEqual(client.decrypt(envelope, ALICE)[0], 0)

        tampered = envelope.replace(b"waits", b"Waits")
        for status, text in ((34, b""), (34, b"<html>"), (26, envelope[:-20]), (26, tampered), (26, envelope[:170])):
            self.assertEqual(client.ask(text, BOB)[0], status, text)
        self.assertEqual(client.ask(envelope.replace(b"\n", b"\r\n "), BOB)[0], 5)

        now = int(time.time() * 1000)
        for status, settings in ((21, (True, "")), (20, (True, "Grüße")), (19, (False, "", now - 1)),
                                 (5, (False, "", now + 60000))):
            self.assertEqual(client.set(envelope, BOB, *settings)[0], 0)
            self.assertEqual(client.ask(envelope, BOB)[0], status)
            self.assertEqual(client.decrypt(envelope, BOB)[0], 0 if status == 5 else status)
        client.set(envelope, BOB, True, "Grüße")
        self.assertEqual(client.ask(envelope, BOB)[1]["em"].decode(), "Grüße")

        self.assertEqual([client.decrypt(envelope, CAROL, "wrong")[0] for _ in range(5)], [2] * 5)
        status, reply = client.ask(envelope, CAROL)
        self.assertEqual((status, len(reply["se"])), (18, 8))

    def test_an_envelope_of_another_store_is_unknown(self):
        envelope = self.start().encrypt(BOB)
        self.assertEqual(self.start().ask(envelope, BOB)[0], 16)

    def test_recipients_without_a_password(self):
        client = self.start()
        envelope = client.encrypt(BOB, cc=CAROL, bc="eve@example.org")
        status, reply = client.call("DE", ("en", envelope), ("po", True))
        self.assertEqual((status, array(reply["tr"]), array(reply["tc"])), (0, [BOB.encode()], [CAROL.encode()]))
        self.assertNotIn("da", reply)
        self.assertEqual(client.call("DE", ("en", b"x"), ("po", True))[0], 34)

    def test_keeping_open_and_finding_the_owner_of_a_password(self):
        client = self.start()
        envelope = client.encrypt(BOB, CAROL)
        self.assertEqual(client.decrypt(envelope, BOB)[1]["ku"], b"")
        key = client.decrypt(envelope, BOB, None, ("po", True))[1]["ku"]
        self.assertEqual(len(key), 32)
        self.assertEqual(client.ask(envelope, BOB)[0], 6)
        self.assertEqual(client.decrypt(envelope, BOB, "", ("sk", key))[0], 0)
        self.assertEqual(client.call("DE", ("ky", ""), ("en", envelope), ("sk", key))[0], 0)
        self.assertEqual(client.decrypt(envelope, CAROL, "", ("sk", key))[0], 200)
        self.assertEqual(client.decrypt(client.encrypt(BOB), BOB, "", ("sk", key))[0], 200)
        client.set(envelope, BOB, True)
        self.assertEqual(client.decrypt(envelope, BOB, "", ("sk", key))[0], 21)
        status, reply = client.call("DE", ("ky", SECRET[CAROL]), ("en", envelope))
        self.assertEqual((status, reply["em"]), (0, b"opened for carol@example.com"))
        self.assertEqual(client.call("DE", ("ky", "wrong"), ("en", envelope))[0], 2)


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
        time.sleep(0.005)
        client.decrypt(envelope, BOB)
        second = client.track(envelope)[BOB]
        self.assertEqual((second["numTries"], second["firstOpenDate"]), ("3", first["firstOpenDate"]))
        self.assertGreater(int(second["lastOpenDate"]), int(first["lastOpenDate"]))
        self.assertEqual(second["lastModifiedDate"], second["lastOpenDate"])
        self.assertEqual(client.track(envelope)[CAROL]["numTries"], "0")
        client.set(envelope, BOB, True, "m", 2**40)
        record = client.track(envelope)[BOB]
        self.assertEqual((record["FLAGS"], record["statusMsg"], record["expiryDate"]), ("2", "m", str(2**40)))

    def test_refusals(self):
        client = self.start()
        envelope = client.encrypt(BOB)
        alice = (("fm", ALICE), ("ky", SECRET[ALICE]))
        info = [(5, (("en", envelope),)), (2, (("en", envelope), ("ky", "x"))), (100, (("ky", "x"),)),
                (5, (("fm", ALICE),)), (2, (("fm", ALICE), ("ky", "x"))), (101, (*alice, ("sf", "password"))),
                (34, (("en", b"x"),)), (11, (("fm", "new@example.org"), ("ky", "x")))]
        for status, sent in info:
            self.assertEqual(client.call("MI", *sent)[0], status, sent)
        lock = (("ky", SECRET[ALICE]), ("ls", True), ("sm", ""), ("ed", long(0)))
        settings = [(102, (("en", envelope), ("to", CAROL), *lock)), (100, (("en", envelope), *lock)),
                    (5, (("en", envelope), ("to", BOB), *lock[1:])), (101, (("ri", {"colour": "red"}), *lock)),
                    (100, (("ri", {}), *lock)), (102, (("ri", {"to": CAROL}), *lock)),
                    (2, (("ri", {"to": BOB}), ("ky", "x"), *lock[1:])),
                    (101, (("en", envelope), ("to", BOB), *lock[:3], ("ed", long(-1))))]
        for status, sent in settings:
            self.assertEqual(client.call("SI", *sent)[0], status, sent)
        self.assertEqual(client.track(envelope)[BOB]["FLAGS"], "0")

    def test_selection_changes_only_the_owner_s_records(self):
        client = self.start()
        of_alice, of_carol = client.encrypt(BOB, DAVE), client.encrypt(BOB, sender=CAROL)
        self.assertEqual(client.call("SI", ("ky", SECRET[CAROL]), ("ri", {"to": BOB}), ("ls", True))[0], 0)
        self.assertEqual(client.call("SI", ("ri", {"to": BOB}), ("ls", False))[0], 5)
        self.assertEqual(client.call("SI", ("ky", "x"), ("ri", {"to": BOB}), ("ls", False))[0], 2)
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
            return [mapping(parameters(item)["da"])["to"] for item in array(reply["ri"])]

        begun = time.monotonic()
        self.assertEqual(page(0, -1, True), names)
        self.assertEqual(page(0, 3, False), names[:-4:-1])
        self.assertEqual(page(9998, 50, True), names[9998:])
        self.assertEqual(page(20000, 5, True), [])
        self.assertEqual(page(0, 0, True), [])
        self.assertEqual(page(10, 2, True, "numTries"), names[10:12])
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
        other = sqlite3.connect(self.path("other"))
        other.execute("CREATE TABLE t (x)")
        other.close()
        self.write("text", "no database at all, but long enough to be looked at\n" * 20)
        self.start("--store", self.path("held"))
        held = sqlite3.connect(self.path("held"))
        self.addCleanup(held.close)
        held.execute("BEGIN EXCLUSIVE")
        cases = [(self.folder.name, "not a regular file"), ("/dev/full", "not a regular file"),
                 (self.path("text"), "not a database"), (self.path("other"), "another program"),
                 (self.path("held"), "locked"), (self.path("no/such/folder"), "unable to open")]
        for path, complaint in cases:
            code, _, errors = self.run_to_end("--port", "0", "--store", path)
            self.assertEqual(code, 3, path)
            self.assertIn(complaint, errors)
            self.assertIn(path, errors)

    def test_a_damaged_store_is_refused(self):
        path = self.path("store")
        self.start("--store", path).encrypt(BOB, mime=b"A: b\n\n" + b"x" * 100000)
        self.end(self.daemon)
        with open(path, "r+b") as file:
            file.seek(4096)
            file.write(os.urandom(8 * 4096))
        code, _, errors = self.run_to_end("--port", "0", "--store", path)
        self.assertEqual(code, 3)
        self.assertRegex(errors, "damaged|malformed")

    def test_state_outlives_the_daemon_and_holds_no_password(self):
        path = self.path("store")
        envelope = self.start("--store", path).encrypt(BOB)
        self.end(self.daemon)
        with open(path, "rb") as file:
            content = file.read()
        self.assertFalse([password for password in SECRET.values() if password.encode() in content])
        self.assertEqual(self.start("--store", path).decrypt(envelope, BOB)[0], 0)

    def test_a_failing_store_refuses_whole_requests(self):
        path = self.path("store")
        limited = 400_000
        client = self.start("--store", path, restore_signals=True,
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limited, limited)))
        envelope = client.encrypt(BOB)
        session = ("sl", client.login())
        large = (session, ("fm", ALICE), ("to", CAROL), ("mm", b"A: b\n\n" + b"x" * 3 * limited))
        status, reply = client.call("BE", *large)
        self.assertEqual(status, 109)
        self.assertIn(b"store", reply["em"])
        self.expect_error("store: ")
        self.assertEqual(client.decrypt(envelope, BOB)[0], 0)
        status, reply = client.call("MI", ("fm", ALICE), ("ky", SECRET[ALICE]), ("mx", 9))
        self.assertEqual((status, reply["mx"]), (0, encode(1)))
        held = sqlite3.connect(path)
        self.addCleanup(held.close)
        held.execute("BEGIN EXCLUSIVE")
        self.assertEqual(client.decrypt(envelope, BOB)[0], 109)
        self.assertEqual(client.call("ST")[0], 0)
        held.execute("ROLLBACK")
        self.assertEqual(client.decrypt(envelope, BOB)[0], 0)


class Lifecycle(DaemonTest):
    def test_signals_end_it_in_the_middle_of_an_exchange(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            client = self.start("--store", self.path("store"))
            client.socket.sendall(frame("LS", ("to", BOB), ("ky", SECRET[BOB]))[:20])
            self.assertEqual(self.client().call("ST")[0], 0)
            self.daemon.send_signal(number)
            self.assertEqual(self.daemon.wait(LIMIT), 0)

    def test_stop_answers_and_ends_it(self):
        client = self.start()
        stalled = self.client()
        stalled.socket.sendall(b"\0")
        self.assertEqual(client.call("SD")[0], 0)
        self.assertEqual(self.daemon.wait(LIMIT), 0)

    def test_wrong_arguments_and_a_taken_port(self):
        self.start()
        code, _, errors = self.run_to_end("--port", str(self.port))
        self.assertEqual(code, 4)
        self.assertIn(f"127.0.0.1:{self.port}: another program listens there", errors)
        for arguments in (("--port", "x"), ("--port", "70000"), ("--colour",), ("more",), ("--store",)):
            self.assertEqual(self.run_to_end(*arguments)[0], 2, arguments)
        code, text, _ = self.run_to_end("--help")
        self.assertEqual(code, 0)
        for word in ("--store", "--port", "--trace", "Exit codes"):
            self.assertIn(word, text)

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
        for secret in (token, key, "hushhush1", "passphrase", "Rex", *SECRET.values()):
            self.assertNotIn(secret, text)
        self.assertIn("#1 ->   'to' text \"bob@example.com\"\n", text)
        self.assertIn("#1 ->   'po' bool true\n", text)
        self.assertRegex(text, r"'mm' text \".*\"\.\.\. \(4012 bytes\)\n")
        self.assertNotIn("\x1b", text)

    def test_a_trace_that_cannot_be_written_ends_alone(self):
        with open("/dev/full", "wb") as full, open(self.errors, "wb") as errors:
            with socket.socket() as free:
                free.bind(("127.0.0.1", 0))
                self.port = free.getsockname()[1]
            daemon = subprocess.Popen([STANDIN, "--trace", "--port", str(self.port)], stdout=full, stderr=errors)
        self.addCleanup(daemon.wait, LIMIT)
        self.addCleanup(daemon.terminate)
        self.expect_error("standard output cannot be written")
        client = self.client()
        self.assertEqual([client.call("ST")[0], client.call("ST")[0]], [0, 0])
        self.assertEqual(self.error_text().count("the trace cannot be written and ends"), 1)


if __name__ == "__main__":
    if not STANDIN:
        raise SystemExit("wire_test.py: TARN_STANDIN does not name the tarn-standin binary")
    unittest.main()
