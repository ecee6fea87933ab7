"""Standard output and standard error."""

import io
import os
import sys


def prepare() -> None:
    """Nothing that is opened later becomes standard input, output or error: a client would receive what is printed."""
    descriptor = os.open(os.devnull, os.O_RDWR)
    while descriptor <= 2:
        descriptor = os.open(os.devnull, os.O_RDWR)
    os.close(descriptor)
    sys.stdout = sys.stdout or open(os.devnull, "w")
    sys.stderr = sys.stderr or open(os.devnull, "w")
    for stream in (sys.stdout, sys.stderr):
        if isinstance(stream, io.TextIOWrapper):
            stream.reconfigure(encoding="utf-8", errors="backslashreplace")


def write_line(text: str) -> bool:
    """On standard output. Whether it could be written; when not, all that follows is dropped."""
    try:
        print(text, flush=True)
        return True
    except OSError:
        # What is left in the buffer would fail once more at the end of the program.
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        return False


def complain(text: str) -> None:
    """One line on standard error, as long as somebody reads that."""
    try:
        sys.stderr.write(f"tarn-standin: {printable(text)}\n")
    except OSError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 2)


def printable(text: str) -> str:
    """Without anything that a terminal could take for more than a character."""
    return "".join(c if c.isprintable() else f"\\u{{{ord(c):x}}}" for c in text)
