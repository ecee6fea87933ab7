#!/usr/bin/env python3
"""The command-line client end to end, against the stand-in daemon.

TARN and TARN_STANDIN name the two programs, and TARN_LAUNCHING the folder of a library that launches the stand-in
daemon in place of Java. Everything runs without a terminal, but for the tests that make one.
"""
import base64
import json
import os
import pty
import resource
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import termios
import time
import unittest
from pathlib import Path

from programs import run_tests

PORT = 53007
TIME_LIMIT = 60
ALICE, BOB, CAROL = "alice@example.com", "bob@example.com", "carol@example.com"
PASSWORDS = {ALICE: "wonderland", BOB: "builder", CAROL: "caravan"}


def listens():
    with socket.socket() as probe:
        probe.settimeout(1)
        return probe.connect_ex(("127.0.0.1", PORT)) == 0


def require_free_port():
    if listens():
        raise RuntimeError(f"port {PORT} is taken: end what listens there first")


def mail(*attachments):
    """A message with a text and attachments, each a pair of a name and its bytes."""
    lines = ["From: alice@example.com", "To: bob@example.com", "Subject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?=",
             "MIME-Version: 1.0", 'Content-Type: multipart/mixed; boundary="=-b"', "",
             "--=-b", "Content-Type: text/plain; charset=utf-8", "", "Hello Bob"]
    for name, data in attachments:
        quoted = name.replace("\\", "\\\\").replace('"', '\\"')
        lines += ["--=-b", "Content-Type: application/octet-stream",
                  f'Content-Disposition: attachment; filename="{quoted}"',
                  "Content-Transfer-Encoding: base64", "", base64.encodebytes(data).decode().rstrip("\n")]
    return "\n".join(lines + ["--=-b--", ""])


class TarnTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="tarn-test-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def tarn(self, *arguments, user=None, code=0, env=None, text=None, **options):
        """Runs tarn without a terminal, checks its exit code and returns standard output and error."""
        environment = {key: value for key, value in os.environ.items() if not key.startswith("TARN_")}
        environment |= {"TARN_PASSWORD": PASSWORDS[user]} if user else {}
        environment |= env or {}
        result = subprocess.run([os.environ["TARN"], *map(str, arguments)], env=environment, cwd=self.folder,
                                input=text, stdin=None if text is not None else subprocess.DEVNULL,
                                capture_output=True, encoding="utf-8", timeout=TIME_LIMIT, start_new_session=True,
                                **options)
        self.assertEqual(result.returncode, code, f"{arguments}\n{result.stdout}\n{result.stderr}")
        return result.stdout, result.stderr

    def tarn_in_background(self, *arguments, user=ALICE, **options):
        return subprocess.Popen([os.environ["TARN"], *arguments], env=os.environ | {"TARN_PASSWORD": PASSWORDS[user]},
                                start_new_session=True, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, **options)

    def json(self, *arguments, **options):
        return json.loads(self.tarn(*arguments, "--json", **options)[0])

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def envelope(self, *attachments, to=(BOB,), name="letter.env"):
        self.file("letter.eml", mail(*attachments))
        self.tarn("encrypt", "letter.eml", "--from", ALICE, *(f"--to={address}" for address in to), "--out", name,
                  "--force", user=ALICE)
        return self.folder / name

    def at_terminal(self, arguments, answers):
        """Runs tarn at a terminal of its own, answers its questions one by one and returns what the terminal shows."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.environ.pop("TARN_PASSWORD", None)
            os.execv(os.environ["TARN"], [os.environ["TARN"], *map(str, arguments)])
        shown, answers, deadline = b"", list(answers), time.monotonic() + TIME_LIMIT
        try:
            while time.monotonic() < deadline:
                if not select.select([terminal], [], [], 1)[0]:
                    continue
                try:
                    shown += os.read(terminal, 4096)
                except OSError:
                    break  # tarn has ended
                if answers and shown.decode(errors="replace").endswith(answers[0][0]):
                    os.write(terminal, answers.pop(0)[1].encode())
            else:
                os.kill(pid, signal.SIGKILL)
        finally:
            self.echoes = bool(termios.tcgetattr(terminal)[3] & termios.ECHO)
            os.close(terminal)
            code = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
        return code, shown.decode(), answers

    def assertNothingLeft(self, folder=None):
        left = [path.name for path in (folder or self.folder).rglob("*") if path.name.startswith(".tarn-")]
        self.assertEqual(left, [])


class WithDaemon(TarnTest):
    @classmethod
    def setUpClass(cls):
        require_free_port()
        daemon = subprocess.Popen([os.environ["TARN_STANDIN"], "--config-dir", tempfile.gettempdir()],
                                  stdout=subprocess.DEVNULL)
        cls.addClassCleanup(daemon.wait, TIME_LIMIT)
        cls.addClassCleanup(daemon.kill)
        deadline = time.monotonic() + 10
        while not listens():
            if daemon.poll() is not None or time.monotonic() > deadline:
                raise RuntimeError("the stand-in daemon does not listen")
            time.sleep(0.05)

    def test_version_and_login(self):
        version = self.json("version")
        self.assertEqual(version["status"], 0)
        self.assertRegex(version["daemonVersion"], r"^\d+(\.\d+)+-\d+$")
        _, log = self.tarn("--log", "login", ALICE, user=ALICE)
        self.assertRegex(log, r"(?s)\[TarnRemoteClient:.*Status code: 0")
        self.assertNotIn(PASSWORDS[ALICE], log)

        password_file = self.file("password", PASSWORDS[ALICE] + "\r\nsecond line\n")
        self.tarn("login", ALICE, "--password-file", password_file, env={"TARN_PASSWORD": "wrong"})
        for encoding in ("utf-8-sig", "utf-16", "utf-16-be"):
            mark = b"\xfe\xff" if encoding == "utf-16-be" else b""
            self.file("password", mark + (PASSWORDS[ALICE] + "\r\n").encode(encoding))
            self.tarn("login", ALICE, "--password-file", password_file)
        refused = self.json("login", ALICE, env={"TARN_PASSWORD": "wrong"}, code=1)
        self.assertEqual(refused["status"], 2)
        _, error = self.tarn("login", ALICE, env={"TARN_PASSWORD": "wrong"}, code=1)
        self.assertIn("status 2 (wrong address or password): " + refused["message"], error)
        unknown = self.json("login", "new@example.com", env={"TARN_PASSWORD": "x"}, code=1)
        self.assertEqual((unknown["status"], unknown["text"][:4]), (25, "http"))
        self.assertIn("TARN_PASSWORD", self.tarn("login", ALICE, code=2)[1])  # there is no terminal to ask at

    def test_verify(self):
        good = self.file("gut \u00fc.properties", "hostname=127.0.0.1\nkeyserver.host=127.0.0.1\n")
        self.tarn("verify", ALICE, "--config", good.name)  # relative to tarn's folder, not to the daemon's
        bad = self.json("verify", ALICE, "--config", "missing.properties", code=1)
        self.assertIn(str(self.folder / "missing.properties"), bad["message"])

    def test_round_trip(self):
        attached = {"every byte.bin": bytes(range(256)) * 40, "empty.bin": b"", "\u00fc\U0001F600.bin": b"x"}
        envelope = self.envelope(*attached.items())
        self.assertEqual(self.tarn("recipients", envelope)[0], BOB + "\n")
        result = self.json("decrypt", envelope, "--out", "new/parts", "--recipient", BOB, "--save-config", "saved",
                           "--keep-open", user=BOB)
        parts = self.folder / "new/parts"
        written = {path.name: path.read_bytes() for path in parts.iterdir()}
        self.assertEqual(written, attached | {"body.txt": written["body.txt"]})
        self.assertEqual((sorted(item["file"] for item in result["items"]), result["from"]), (sorted(written), ALICE))
        self.assertEqual(parts.stat().st_mode & 0o777, 0o700)
        self.assertEqual({path.stat().st_mode & 0o777 for path in (*parts.iterdir(), self.folder / "saved")}, {0o600})

        # The session key opens it again, and the saved configuration makes a reply without a login.
        again = ("decrypt", envelope, "--force", "--out", "again", "--recipient", BOB)
        self.tarn(*again, "--session-key-file", self.file("key", result["key"]))
        self.tarn(*again, env={"TARN_SESSION_KEY": result["key"]})
        self.tarn(*again, "--session-key", result["key"], code=2)
        reply, _ = self.tarn("encrypt", "-", "--from", BOB, "--to", ALICE, "--envelope-config", "saved", text=mail())
        self.file("reply.env", reply)
        self.tarn("decrypt", "-", "--out", "reply", "--recipient", ALICE, user=ALICE, text=reply)
        self.assertIn("configuration", self.tarn("encrypt", "letter.eml", "--from", BOB, "--to", ALICE,
                                                 "--envelope-config", "reply.env", code=2)[1])
        self.assertNothingLeft()

    def test_encrypt_writes_all_outputs_or_json(self):
        self.file("letter.eml", mail())
        arguments = ("encrypt", "letter.eml", "--from", ALICE, "--to", BOB, "--cc", CAROL, "--bcc", ALICE)
        self.tarn(*arguments, "--out", "e", "--text", "t", "--html", "h", user=ALICE)
        self.assertIn("<html", (self.folder / "h").read_text().lower())
        self.assertTrue((self.folder / "t").read_text().strip())
        whole = self.json(*arguments, user=ALICE)
        self.assertTrue(whole["envelope"] and whole["textBody"] and whole["htmlBody"] and whole["attachmentName"])
        self.assertEqual(self.json("recipients", "e")["recipients"], [BOB, CAROL])
        self.assertIn("tarn login", self.tarn(*arguments, env={"TARN_PASSWORD": "wrong"}, code=1)[1])

    def test_malicious_names_stay_in_the_folder(self):
        names = ["../up.bin", "..\\..\\up.bin", "/etc/evil", "C:\\Windows\\evil", "C:evil", "..", ".hidden", "-rf",
                 "CON", "nul.txt", "COM1.log", "trailing. . ", "tab\there", "a:stream", "\u202egnp.exe",
                 "x" * 300 + ".bin", "SAME.bin", "same.bin", "same.bin", "   ",
                 "\u00c4\u03a9.bin", "\u00e4\u03c9.bin"]
        envelope = self.envelope(*((name, str(number).encode()) for number, name in enumerate(names)))
        before = set(self.folder.rglob("*"))
        result = self.json("decrypt", envelope, "--out", "parts", "--recipient", BOB, user=BOB)
        parts = self.folder / "parts"
        written = sorted(path.name for path in parts.rglob("*"))
        self.assertEqual(set(self.folder.rglob("*")) - before, {parts} | {parts / name for name in written})
        self.assertEqual(len(written), len(names) + 1)
        contents = {(parts / name).read_bytes() for name in written}
        self.assertLessEqual({str(number).encode() for number in range(len(names))}, contents)
        self.assertEqual(len({name.lower() for name in written}), len(written))
        for name in written:
            self.assertLessEqual(len(name.encode()), 255)
            self.assertNotRegex(name, r"^[.\-]|[\x00-\x1f/\\:\u202e]|[. ]$")
            self.assertNotIn(name.split(".")[0].lower(), {"con", "nul", "com1"})
        self.assertLessEqual({"up.bin", "up (2).bin", "evil", "evil (2)", "evil (3)", "_hidden", "_rf", "_CON",
                              "same (2).bin", "same (3).bin", "\u00c4\u03a9.bin", "\u00e4\u03c9 (2).bin"}, set(written))
        self.assertEqual([item["file"] for item in result["items"]][1], "up.bin")

    def test_nothing_is_overwritten_without_force(self):
        envelope = self.envelope(("first.bin", b"new"), ("taken.bin", b"new"))
        arguments = ("decrypt", envelope, "--out", self.folder / "parts", "--recipient", BOB)
        parts = self.folder / "parts"
        parts.mkdir()
        (parts / "taken.bin").symlink_to("target")  # a dangling link counts as a file as well
        self.assertIn("taken.bin exists already", self.tarn(*arguments, user=BOB, code=4)[1])
        self.assertEqual([path.name for path in parts.iterdir()], ["taken.bin"])
        self.tarn(*arguments, "--force", user=BOB)
        self.assertEqual((parts / "taken.bin").read_bytes(), b"new")
        self.assertFalse((parts / "target").exists())
        (parts / "taken.bin").unlink()
        os.mkfifo(parts / "taken.bin")  # a name from outside leads to no pipe, and none is replaced
        self.assertIn("not a regular file", self.tarn(*arguments, "--force", user=BOB, code=4)[1])
        self.assertTrue((parts / "taken.bin").is_fifo())
        self.assertIn("exists already", self.tarn("encrypt", "letter.eml", "--from", ALICE, "--to", BOB, "--out",
                                                  envelope, user=ALICE, code=4)[1])

    def test_full_disk_leaves_nothing(self):
        envelope = self.envelope(("small.bin", b"small"), ("large.bin", bytes(3_000_000)))

        def small_files_only():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1_000_000, 1_000_000))

        _, error = self.tarn("decrypt", envelope, "--out", "parts", "--recipient", BOB, user=BOB, code=4,
                             preexec_fn=small_files_only, restore_signals=False)
        self.assertIn("large.bin cannot be written", error)
        self.assertFalse((self.folder / "parts").exists())
        self.assertIn("No space left", self.tarn("encrypt", "letter.eml", "--from", ALICE, "--to", BOB, "--out",
                                                 "/dev/full", user=ALICE, code=4)[1])
        with open("/dev/full", "w") as full, self.tarn_in_background("version", stdout=full) as client:
            self.assertIn(b"No space left", client.communicate(timeout=TIME_LIMIT)[1])
        self.assertEqual(client.returncode, 4)

    def test_interrupt_leaves_all_or_nothing(self):
        large, count = 4, 100  # large ones take time to write, many take time to rename
        envelope = self.envelope(*((f"{number}.bin", bytes(4_000_000 * (number < large))) for number in range(count)))
        parts = self.folder / "parts"
        names = {"body.txt"} | {f"{number}.bin" for number in range(count)}
        phases = [lambda: True, parts.exists, lambda: len(list(parts.glob(".tarn-*"))) >= large,
                  (parts / "0.bin").exists]
        for ending in (signal.SIGINT, signal.SIGTERM):
            codes = set()
            for phase in phases:
                shutil.rmtree(parts, ignore_errors=True)
                with self.tarn_in_background("decrypt", envelope, "--out", parts, "--recipient", BOB, user=BOB,
                                             stdout=subprocess.DEVNULL) as client:
                    while client.poll() is None and not phase():
                        pass
                    client.send_signal(signal.SIGSTOP)
                    stopped = client.returncode is None and os.waitid(
                        os.P_PID, client.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT).si_code == os.CLD_STOPPED
                    client.send_signal(ending)
                    client.send_signal(signal.SIGCONT)
                    codes.add(code := client.wait(TIME_LIMIT))
                # Before the program is set up, the signal still ends it as it ends any program.
                if phase is not phases[0] or code != -ending:
                    self.assertEqual(code, 128 + ending if stopped else 0)
                written = {path.name for path in parts.rglob("*")} if parts.exists() else None
                self.assertIn(written, (None, names))
                self.assertTrue(written or code != 0)
            self.assertIn(128 + ending, codes)

    def test_a_file_that_appears_meanwhile_is_not_replaced(self):
        envelope = self.envelope(("a.bin", b"new"))
        parts, pipe = self.folder / "parts", self.folder / "config"
        os.mkfifo(pipe)  # where the program waits for a reader, after the items and before their names
        with self.tarn_in_background("decrypt", envelope, "--out", parts, "--recipient", BOB, "--save-config", pipe,
                                     user=BOB, stdout=subprocess.DEVNULL) as client:
            while client.poll() is None and not list(parts.glob(".tarn-*")):
                pass
            (parts / "a.bin").write_bytes(b"old")
            reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
            error = client.communicate(timeout=TIME_LIMIT)[1].decode()
            os.close(reader)
        self.assertEqual(client.returncode, 4, error)
        self.assertEqual((parts / "a.bin").read_bytes(), b"old")
        self.assertNothingLeft()

    def test_bad_input(self):
        self.file("zero.eml", b"Subject: x\n\n\0")
        encrypt = ("encrypt", "--from", ALICE, "--to", BOB)
        self.file("empty.env", "")
        self.assertIn("empty.env is empty", self.tarn("tracking", "empty.env", user=ALICE, code=2)[1])
        self.assertIn("zero byte", self.tarn(*encrypt, "zero.eml", user=ALICE, code=2)[1])
        self.assertIn("missing.eml", self.tarn(*encrypt, "missing.eml", user=ALICE, code=4)[1])
        self.assertIn("folder", self.tarn(*encrypt, self.folder, user=ALICE, code=4)[1])
        self.file("letter.eml", mail())
        self.tarn("encrypt", "letter.eml", "--from", ALICE, code=2)
        _, error = self.tarn(*encrypt, "letter.eml", *(f"--bcc=recipient-{i}@example.com" for i in range(1000)),
                             user=ALICE, code=2)
        self.assertIn("too much for one EncryptEnvelopeOnline", error)
        for wrong in ([], ["login"], ["start", "x", "--wait", "601"], ["version", "--nonsense"],
                      ["sent", ALICE, "--max", "-1"], ["expire", "letter.eml"],
                      ["expire", "letter.eml", "--at", "+1d", "--never"]):
            self.tarn(*wrong, code=2)
        for when in ("tomorrow", "2026-02-30", "2026-01-01T25:00", "2026-01-01x", "+1y", "+", "2026-01-01T10:00+1"):
            self.assertIn("is not a time", self.tarn("expire", "letter.eml", "--at", when, user=ALICE, code=2)[1])
        self.assertIn('unknown command "nonsense"', self.tarn("nonsense", code=2)[1])
        self.assertIn('is "decrypt" meant', self.tarn("decyrpt", code=2)[1])
        self.assertIn("TARN_PASSWORD", self.tarn("--help")[0])
        self.assertEqual(self.tarn("help", "decrypt")[0], self.tarn("decrypt", "--help")[0])
        self.assertRegex(self.tarn("--version")[0], r"^tarn \d+(\.\d+){3}\n$")
        self.assertEqual(self.json("decrypt", "letter.eml", "--out", "x", user=BOB, code=1)["status"], 34)
        self.assertFalse((self.folder / "x").exists())

    def test_status(self):
        envelope = self.envelope(to=(BOB, "new@example.com"))
        found = self.json("status", envelope, *(f"--recipient={who}" for who in (BOB, "new@example.com", CAROL)))
        self.assertEqual([entry["status"] for entry in found["recipients"]], [5, 11, 15])
        self.assertEqual((found["sender"], found["enrollId"] != ""), (ALICE, True))
        self.assertIn("not a recipient", self.tarn("status", envelope, "--recipient", CAROL)[0])
        ended = self.json("status", envelope, "--recipient", BOB, "--recipient", CAROL, "--config", "missing", code=1)
        self.assertEqual([entry["status"] for entry in ended["recipients"]], [ended["status"]])

    def test_lock_and_expiry_keep_each_other(self):
        envelope = self.envelope(to=(BOB, CAROL))

        def state(*names, of=BOB):
            states = self.json("tracking", envelope, user=ALICE)["recipients"]
            return [found[name] for found in states if found["recipient"] == of for name in names]

        self.tarn("expire", envelope, "--recipient", BOB.upper(), "--at", "2091-05-01T12:30:00+02:00", user=ALICE)
        self.tarn("lock", envelope, "--recipient", BOB, "--message", "Gr\u00fc\u00dfe, \U0001F512", user=ALICE)
        self.assertEqual(state("locked", "statusMessage", "expiryDate", "expires"),
                         [True, "Gr\u00fc\u00dfe, \U0001F512", 3828853800000, "2091-05-01T10:30:00.000Z"])
        self.assertEqual(state("locked", "expiryDate", of=CAROL), [False, 0])
        self.tarn("unlock", envelope, user=ALICE)
        self.assertEqual(state("locked", "expiryDate"), [False, 3828853800000])
        self.tarn("expire", envelope, "--at", "2001-01-01 00:00", user=ALICE, env={"TZ": "UTC"})
        self.assertEqual(state("expiryDate"), [978307200000])
        self.tarn("expire", envelope, "--never", user=ALICE)
        self.assertEqual(state("expiryDate"), [0])

        message_id = self.json("tracking", envelope, user=ALICE)["messageId"]
        by_id = ("--message-id", message_id, "--user", ALICE)
        self.tarn("lock", *by_id, "--recipient", BOB, "--message", "by id", user=ALICE)
        self.assertEqual(state("locked", "statusMessage"), [True, "by id"])
        self.tarn("unlock", *by_id, user=ALICE)
        self.assertEqual(state("locked", "statusMessage"), [False, "by id"])
        self.assertIn("not a recipient", self.tarn("lock", envelope, "--recipient", "x@y.com", user=ALICE, code=1)[1])
        for unclear in (["lock"], ["lock", envelope, *by_id], ["lock", "--message-id", message_id],
                        ["lock", envelope, "--user", ALICE]):
            self.assertRegex(self.tarn(*unclear, user=ALICE, code=2)[1], "either|together")
        _, error = self.tarn("lock", envelope, "--message", "x{plugin_delimiter}y", user=ALICE, code=2)
        self.assertIn("{plugin_delimiter}", error)
        self.assertEqual(self.json("tracking", envelope, user=BOB, code=1)["status"], 2)

    def test_sent(self):
        self.envelope(to=(BOB, CAROL))
        last = self.json("tracking", self.envelope(), user=ALICE)["messageId"]
        total = self.json("sent", ALICE, user=ALICE)["total"]
        self.assertGreaterEqual(total, 3)
        records = [self.json("sent", ALICE, "--start", start, "--max", 1, user=ALICE)["records"][0]
                   for start in range(total)]
        self.assertEqual(records[0]["messageId"], last)
        self.assertEqual(len({(record["messageId"], record["recipient"]) for record in records}), total)
        self.assertEqual(records, sorted(records, key=lambda record: -record["createDate"]))
        by_name = self.json("sent", ALICE, "--sort", "to", "--ascending", "--max", total, user=ALICE)["records"]
        self.assertEqual(by_name, sorted(by_name, key=lambda record: record["recipient"]))
        self.assertRegex(records[0]["created"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")
        self.assertEqual((records[0]["firstOpened"], records[0]["subject"]), (None, "Gr\u00fc\u00dfe"))
        table, _ = self.tarn("sent", ALICE, "--max", 2, user=ALICE, env={"TZ": "UTC"})
        self.assertIn(f"records 1 to 2 of {total}\n", table)
        self.assertIn(records[0]["created"][:16].replace("T", " "), table)
        self.assertIn("no records", self.tarn("sent", ALICE, "--start", total, user=ALICE)[0])
        self.assertIn("status 101: ", self.json("sent", ALICE, "--sort", "nonsense", user=ALICE, code=1)["error"])

    def test_key_server(self):
        features = self.json("features")
        for feature in ("readByEnabled", "expirationSupported", "localizedTextEnabled"):
            self.assertTrue(features[feature], feature)
        locales = self.json("locales")["locales"]
        bodies = {locale: self.json("body", "--locale", locale) for locale in locales}
        everything = "".join(body["text"] + body["html"] for body in bodies.values())
        self.assertTrue(any(ord(letter) > 0xFFFF for letter in everything))
        self.assertNotIn("\ufffd", everything)
        self.assertEqual(self.tarn("body", "--locale", "de", "--html")[0].strip(), bodies["de"]["html"].strip())
        self.assertIn("no texts", self.tarn("body", "--locale", "xx", code=1)[1])

    def test_enroll_by_options(self):
        address = "dora@example.com"
        envelope = self.envelope(to=(address,))
        status = self.json("status", envelope, "--recipient", address)
        arguments = ["enroll", address, "--key-server", "https://keys.example.com", "--enroll-id", status["enrollId"],
                     "--sender", status["sender"], "--first-name", "Dora", "--last-name", "D\u00f6rfler",
                     "--question", "1", "--question", "2", "--question", "My own question?", "--answers-file",
                     self.file("answers", "Rex\nUlm\nsecret answer\n")]
        refused = self.json(*arguments, env={"TARN_PASSWORD": "weak"}, code=1)
        self.assertIn("password", refused["message"])
        _, log = self.tarn(*arguments, "--log", env={"TARN_PASSWORD": "correct horse 1", "TARN_PASS_PHRASE": "Sesam"})
        self.assertNotRegex(log, "correct horse 1|Sesam|Rex|Ulm|secret answer")
        for entered in ("enrollmentStage 1", "What was the name of your first pet?"):
            self.assertIn(entered, log)
        self.tarn("decrypt", envelope, "--out", "x", "--recipient", address, env={"TARN_PASSWORD": "correct horse 1"})

    def test_enroll_at_a_terminal(self):
        address = "emil@example.com"
        envelope = self.envelope(to=(address,))
        status = self.json("status", envelope, "--recipient", address)
        code, shown, unasked = self.at_terminal(["enroll", address], [
            ("key server: ", "https://keys.example.com\n"), ('tells it): ', status["enrollId"] + "\n"),
            ("sender: ", ALICE + "\n"), ("First name: ", "Emil\n"), ("Last name: ", "Ernst\n"),
            ("New password: ", "tinker tailor 1\n"), ("(again): ", "tinker tailor 2\n"), ("try again. ", "\n"),
            ("New password: ", "tinker tailor 3\n"), ("(again): ", "tinker tailor 3\n"), ("for none): ", "\n"),
            ("own words): ", "2\n"), ('born?": ', "Hiddenburg\n"), ("own words): ", "Mine?\n"),
            ('Mine?": ', "Hiddenmine\n"), ("own words): ", "3\n"), ('school?": ', "Hiddenschool\n")])
        self.assertEqual((code, unasked), (0, []), shown)
        self.assertNotRegex(shown, "tinker|Hidden")
        self.tarn("decrypt", envelope, "--out", "x", "--recipient", address, env={"TARN_PASSWORD": "tinker tailor 3"})

    def test_interrupt_at_the_hidden_prompt(self):
        for key, ended in (("\x03", 130), ("\x1c", 131)):
            code, shown, unasked = self.at_terminal(["login", ALICE], [(ALICE + ": ", key)])
            self.assertEqual((code, unasked, self.echoes), (ended, [], True), shown)

    def test_json_has_one_shape(self):
        self.file("letter.eml", mail())
        outcomes = {0: ("features",), 1: ("login", "new@example.com"), 2: ("sent", ALICE, "--max", "-1"),
                    4: ("decrypt", "missing", "--out", "x")}
        for code, arguments in outcomes.items():
            outcome = self.json(*arguments, env={"TARN_PASSWORD": "x"}, code=code)
            self.assertLessEqual({"exitCode", "status", "error", "message"}, set(outcome))
            self.assertEqual(outcome["exitCode"], code)
            self.assertEqual([outcome["error"] is None, outcome["status"] == 0], [code == 0] * 2)
        nowhere = 'mkdir gone; cd gone; rmdir "$PWD"; exec "$0" --json verify "$1" --config relative'
        ended = subprocess.run(["sh", "-c", nowhere, os.environ["TARN"], ALICE], cwd=self.folder, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, timeout=TIME_LIMIT)
        self.assertEqual(json.loads(ended.stdout)["exitCode"], 4)
        whole, _ = self.tarn("encrypt", "letter.eml", "--from", ALICE, "--to", BOB, "--out", "-", user=ALICE)
        self.assertEqual(self.json("recipients", "-", text=whole)["recipients"], [BOB])

    def test_a_closed_standard_output_is_an_error_and_gets_nothing_of_the_connection(self):
        for arguments in (["version"], ["login", ALICE, "--json"]):
            shell = ["sh", "-c", '"$0" "$@" >&-', os.environ["TARN"], *arguments]
            ended = subprocess.run(shell, env=os.environ | {"TARN_PASSWORD": PASSWORDS[ALICE]}, stderr=subprocess.PIPE,
                                   timeout=TIME_LIMIT)
            self.assertEqual(ended.returncode, 4)
            self.assertIn(b"standard output cannot be written", ended.stderr)


class WithoutDaemon(TarnTest):
    def test_no_daemon(self):
        require_free_port()
        for command in (["version"], ["stop"], ["login", ALICE], ["status", "x", "--recipient", BOB], ["features"],
                        ["lock", "x"], ["enroll", BOB]):
            self.assertIn("no daemon listens", self.tarn(*command, code=3)[1])
        self.assertEqual(self.json("version", code=3)["exitCode"], 3)
        self.assertIn("is not a file", self.tarn("start", "missing.jar", code=4)[1])
        self.assertIn("no such program", self.tarn("start", self.file("daemon.jar", ""), code=1)[1])

    def test_start_waits_until_the_daemon_listens_and_stop_ends_it(self):
        environment = {"LD_LIBRARY_PATH": os.environ["TARN_LAUNCHING"]}
        self.file("idle.jar", "")
        _, error = self.tarn("start", "idle.jar", "--wait", 1, env=environment, code=3)
        self.assertIn("the launch was accepted, but no daemon listens after 1 seconds", error)
        started = self.json("start", self.file("daemon.jar", ""), "--wait", TIME_LIMIT, env=environment)
        try:
            self.assertEqual((started["listens"], started["launchResult"] > 32), (True, True))
            self.tarn("version")
        finally:
            self.tarn("stop")
        while listens():  # the daemon may still be ending
            time.sleep(0.05)
        self.tarn("stop", code=3)

    def with_listener(self, answer, act, *options):
        """Lets something that is no daemon listen; act runs once it has a connection."""
        with socket.create_server(("127.0.0.1", PORT)) as server:
            server.settimeout(TIME_LIMIT)
            client = self.tarn_in_background("version", *options, stdout=subprocess.PIPE)
            self.addCleanup(client.kill)
            connection, _ = server.accept()
            with connection:
                connection.sendall(answer)
                act(client)
                output, error = client.communicate(timeout=TIME_LIMIT)
        return client.returncode, error.decode(), output.decode()

    def test_interrupt_while_the_daemon_is_silent(self):
        def interrupt(client):
            self.assertIsNone(client.poll())
            client.send_signal(signal.SIGINT)

        self.assertEqual(self.with_listener(b"", interrupt), (130, "", ""))
        code, _, output = self.with_listener(b"", interrupt, "--json")
        self.assertEqual((code, json.loads(output)), (130, {"exitCode": 130, "status": None, "message": None,
                                                            "error": "ended by a signal"}))

    def test_a_time_limit_ends_a_call_that_waits(self):
        code, error, output = self.with_listener(b"", lambda client: None, "--timeout", "1", "--json")
        self.assertEqual((code, json.loads(output)["exitCode"]), (7, 7))
        for text in (error, json.loads(output)["error"]):
            self.assertIn("did not answer", text)

    def test_a_person_is_told_what_is_waited_for(self):
        with socket.create_server(("127.0.0.1", PORT)):
            code, shown, unasked = self.at_terminal(["version"], [("(Ctrl-C ends it)\r\n", "\x03")])
        self.assertEqual((code, unasked), (130, []), shown)

    def test_something_else_listens(self):
        code, error, _ = self.with_listener(b"HTTP/1.1 400 Bad Request\r\n\r\n", lambda client: None)
        self.assertEqual(code, 5)
        self.assertIn("does not keep to the protocol", error)


if __name__ == "__main__":
    run_tests("TARN", "TARN_STANDIN")
