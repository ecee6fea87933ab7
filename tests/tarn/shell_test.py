#!/usr/bin/env python3
"""What the shell completes, and the manual pages: both come from the help of the programs.

TARN and TARN_STANDIN name the two programs.
"""
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from programs import run_tests

TOOL = Path(__file__).resolve().parents[2] / "tools/tarn"


def output_of(*command, **options):
    done = subprocess.run(command, capture_output=True, check=True, encoding="utf-8", timeout=60, **options)
    assert done.stderr == "", done.stderr
    return done.stdout


def help_of(program, *command):
    return output_of(os.environ[program], *command, "--help")


def options_in(text):
    return set(re.findall(r"^  (?:-\w, ?)?(--[a-z-]+)", text, re.MULTILINE))


def commands():
    return re.findall(r"^  ([a-z]+)  ", help_of("TARN").split("\nCommands:\n")[1].split("\n\n")[0], re.MULTILINE)


class ShellTest(unittest.TestCase):
    def complete(self, *words):
        """What bash offers for the last one of the words."""
        script = 'source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _tarn; printf "%s\\n" "${COMPREPLY[@]}"'
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "a file").touch()
            (Path(folder) / "folder").mkdir()
            offered = output_of("bash", "-c", script, TOOL / "completions/tarn.bash", *words, cwd=folder)
        return set(offered.split("\n")) - {""}

    def test_bash_completes_what_the_help_lists(self):
        tarn, standin = os.environ["TARN"], os.environ["TARN_STANDIN"]
        self.assertGreaterEqual(len(commands()), 18)
        self.assertEqual(self.complete(tarn, ""), {*commands(), "help"})
        self.assertEqual(self.complete(tarn, "--json", "enc"), {"encrypt"})
        self.assertEqual(self.complete(tarn, "help", "unl"), {"unlock"})
        for command in commands():
            self.assertEqual(self.complete(tarn, command, "--"), options_in(help_of("TARN", command)), command)
        self.assertEqual(self.complete(tarn, "--"), options_in(help_of("TARN")))
        self.assertEqual(self.complete(standin, "--"), options_in(help_of("TARN_STANDIN")))

        self.assertEqual(self.complete(tarn, "decrypt", "letter", "--out", ""), {"folder"})
        self.assertEqual(self.complete(tarn, "decrypt", "--password-file", ""), {"a file", "folder"})
        self.assertEqual(self.complete(tarn, "decrypt", "a"), {"a file"})
        self.assertEqual(self.complete(tarn, "encrypt", "--from", ""), set())

    def test_the_manual_pages_hold_the_help(self):
        pages = {}
        for program in ("TARN", "TARN_STANDIN"):
            made = output_of(TOOL / "man/help-to-man", os.environ[program], "1.2",
                             env=os.environ | {"SOURCE_DATE_EPOCH": "0"})
            pages[program] = made.replace("\\-", "-")
            self.assertIn(" 1970-01-01 ", pages[program].split("\n")[0])
        sections = re.findall(r'^\.SH "?([A-Z ]+)', pages["TARN"], re.MULTILINE)
        self.assertEqual(sections, ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
                                    "ENVIRONMENT", "EXAMPLES", "SEE ALSO"])
        for command in commands():
            described = pages["TARN"].split(f"\n.SS {command}\n")[1].split("\n.S")[0]
            for option in options_in(help_of("TARN", command)) - {"--help"}:  # as with every command
                self.assertIn(option, described, command)
        for option in options_in(help_of("TARN_STANDIN")):
            self.assertIn(option, pages["TARN_STANDIN"])
        self.assertIn("\n.TP\n\\fB128 and more\\fR\nended by a signal", pages["TARN"])


if __name__ == "__main__":
    run_tests("TARN", "TARN_STANDIN")
