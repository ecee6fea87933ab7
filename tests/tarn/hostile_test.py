#!/usr/bin/env python3
"""The command-line client against a daemon whose replies are hostile: overlong, forged, or full of control characters.

TARN names the program.
"""
import json
import os
import resource
import socket
import struct
import subprocess
import sys
import threading
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "standin"))
from cli_test import ALICE, BOB, PORT, TIME_LIMIT, TarnTest  # noqa: E402
from programs import run_tests  # noqa: E402
from wire import frame, parameter, sized  # noqa: E402

UNSAFE = "\x1b[2J\x07\x9b31m\u202e\u2066\x7f\u061c\u200f\u2028"


def reply(code, status, *parameters):
    return frame(code, ("st", struct.pack(">h", status)), *parameters)


class HostileDaemon:
    """Answers each request with the next of the replies for its command, or with what a function returns."""

    def __init__(self, **replies):
        self.replies = {"ST": [reply("ST", 0)]} | {code: list(many) for code, many in replies.items()}
        self.server = socket.create_server(("127.0.0.1", PORT))
        self.server.settimeout(TIME_LIMIT)
        self.thread = threading.Thread(target=self.serve)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.thread.join(TIME_LIMIT)
        self.server.close()

    def serve(self):
        connection, _ = self.server.accept()
        with connection, connection.makefile("rb") as stream:
            while head := stream.read(4):
                while (tag := stream.read(2)) != b"\xce\xde":
                    stream.read(struct.unpack(">i", stream.read(4))[0])
                stream.read(4)
                answer = self.replies[head[2:].decode()].pop(0)
                try:
                    connection.sendall(answer() if callable(answer) else answer)
                except OSError:
                    return  # the client has ended


def memory_of(pid):
    """What a process can write to."""
    content = b""
    with open(f"/proc/{pid}/maps") as maps, open(f"/proc/{pid}/mem", "rb", buffering=0) as memory:
        for line in maps:
            addresses, rights = line.split()[:2]
            start, end = (int(address, 16) for address in addresses.split("-"))
            if rights.startswith("rw") and end - start < 64 << 20:  # not the room that is kept for texts
                memory.seek(start)
                content += memory.read(end - start)
    return content


class AgainstAHostileDaemon(TarnTest):
    def ask(self, *arguments, code=0, replies, **options):
        with HostileDaemon(**replies):
            return self.tarn(*arguments, code=code, user=ALICE, **options)

    def assertSafe(self, text):
        self.assertEqual([character for character in UNSAFE if not character.isprintable() and character in text], [])

    def test_texts_larger_than_their_buffers_end_the_process_cleanly(self):
        if b"__asan_init" in Path(os.environ["TARN"]).read_bytes():
            self.skipTest("AddressSanitizer needs more address space than this test leaves")

        def little_address_space():  # else there is room for any parameter of a reply
            resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))

        large = "x" * (20 << 20)
        self.file("letter.eml", "Subject: x\n\n")
        answers = {
            ("locales",): {"LT": [reply("LT", 0, ("sl", {"de": large}))]},
            ("body", "--locale", "de"): {"LT": [reply("LT", 0, ("tb", {"de": large}))]},
            ("encrypt", "letter.eml", "--from", ALICE, "--to", BOB): {
                "LS": [reply("LS", 0)], "BE": [reply("BE", 0, ("en", "e"), ("tb", "t"), ("th", large), ("an", "a"))]}}
        for arguments, replies in answers.items():
            error = self.ask(*arguments, "--json", code=6, replies=replies, preexec_fn=little_address_space)[1]
            self.assertIn("larger than tarn has room for", error)
        # A daemon may quote the message in HTML, with six characters for each.
        self.file("quotes.eml", "Subject: " + '"' * 400_000 + "\n\n")
        quoted = "&quot;" * 400_000
        replies = replies | {"BE": [reply("BE", 0, ("en", "e"), ("tb", "t"), ("th", quoted), ("an", "a"))]}
        self.assertIn(quoted, self.ask("encrypt", "quotes.eml", "--from", ALICE, "--to", BOB, "--json",
                                       replies=replies, preexec_fn=little_address_space)[0])
        # With address space to spare, the same replies are read.
        for arguments, replies in answers.items():
            self.assertIn(large, self.ask(*arguments, "--json", replies=replies)[0])

    def test_an_oversized_log_is_explained(self):
        answer = {"VC": [reply("VC", 1, ("em", "x" * 40000))]}
        output, error = self.ask("verify", ALICE, "--json", code=6, replies=answer)
        for text in (error, json.loads(output)["error"]):
            self.assertIn("operation log", text)

    def test_what_is_read_with_a_password_does_not_stay_in_memory(self):
        password, unused = "fruitbat-" * 20, "pangolin-" * 20
        self.file("password", f"{password}\n" + f"{unused}\n" * 300)  # more than later buffers write over
        found = []

        def look_and_answer():
            memory = memory_of(client.pid)
            found.extend(text.encode() in memory for text in (password, unused, unused[9:50]))
            return reply("LS", 2)

        for source in ("password", "-"):
            with HostileDaemon(LS=[look_and_answer]), (self.folder / "password").open() as standard_input:
                client = subprocess.Popen([os.environ["TARN"], "login", ALICE, "--password-file", source],
                                          cwd=self.folder, stdin=standard_input, stderr=subprocess.DEVNULL)
                self.assertEqual(client.wait(TIME_LIMIT), 1)
        self.assertEqual(found, [True, False, False] * 2)

    def test_no_control_character_reaches_the_terminal(self):
        self.file("envelope", "e")
        record = parameter("da", {"to": UNSAFE, "statusMsg": UNSAFE, "msgId": UNSAFE, "subject": UNSAFE + "\nforged"})
        entries = ("id", UNSAFE), ("mx", struct.pack(">i", 1)), ("ri", sized(record))
        for arguments, replies in {
            ("version",): {"ST": [reply("ST", 0, ("v ", UNSAFE))]},
            ("sent", ALICE): {"MI": [reply("MI", 0, *entries)]},
            ("tracking", "envelope"): {"DE": [reply("DE", 0)], "MI": [reply("MI", 0, *entries)]},
            ("verify", "alice" + UNSAFE): {"VC": [reply("VC", 7, ("em", UNSAFE))]},
            ("login", ALICE): {"LS": [reply("LS", 25, ("lk", UNSAFE), ("em", UNSAFE))]},
        }.items():
            for options in (["--log"], ["--json", "--log"]):
                code = 1 if arguments[0] in ("verify", "login") else 0
                output, error = self.ask(*arguments, *options, code=code, replies=replies)
                self.assertSafe(output + error)
                self.assertNotIn("\nforged", output)
        self.assertSafe(self.tarn("--" + UNSAFE, code=2)[1])
        with HostileDaemon():
            code, shown, unasked = self.at_terminal(["login", "alice" + UNSAFE], [(": ", "\x03")])
        self.assertEqual((code, unasked), (130, []))
        self.assertSafe(shown)

    def test_a_document_is_passed_on_as_it_is_but_not_to_a_terminal(self):
        answer = {"LT": [reply("LT", 0, ("tb", {"en": "one\r\n" + UNSAFE}))]}
        self.assertIn(UNSAFE, self.ask("body", replies=answer)[0])
        with HostileDaemon(**answer):
            code, shown, _ = self.at_terminal(["body"], [])
        self.assertEqual((code, "one\r\n" in shown), (0, True), shown)
        self.assertSafe(shown)


if __name__ == "__main__":
    run_tests("TARN")
