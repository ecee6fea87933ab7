"""What the checks of the package share."""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
VERSION = re.search(r'#define TARN_REMOTE_CLIENT_VERSION "(.*)"',
                    (ROOT / "include/TarnRemoteClient.h").read_text()).group(1)
_failures = 0


def check(what, condition, details=""):
    global _failures
    _failures += not condition
    print(f"{'ok    ' if condition else 'FAILED'} {what}" + ("" if condition else f": {details}"))


def check_equal(what, actual, expected):
    check(what, actual == expected, f"{actual!r} instead of {expected!r}")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def finish():
    sys.exit(_failures > 0)
