"""The envelope: an HTML document that refers to a stored message by its id. Nothing in it is encrypted."""

import zlib
from html import escape

from .status import Refusal, Status, demand
from .texts import BLANKS
from .wire import to_bytes, to_text

FILE_NAME = "tarn-envelope.html"
CONTENT_TYPE = "text/html; charset=utf-8"

_MARKER = b'name="tarn-envelope" content="'
_ID_SIZE = 32
_CHECK_SIZE = 8

_BEFORE_ID = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Message from {sender}</title>
<meta """
_AFTER_CHECK = """">
</head>
<body>
<h1>A message from {sender} waits for you</h1>
<p>Open this file with your mail program's plug-in.</p>
<p><strong>Nothing here is encrypted.</strong> This envelope was made by tarn-standin, a stand-in daemon for \
development and demonstration. The message itself lies unencrypted in the store of that daemon; this file only refers \
to it.</p>
</body>
</html>
"""


def make_envelope(message_id: str, sender: str) -> bytes:
    shown = escape(sender)
    before = to_bytes(_BEFORE_ID.format(sender=shown)) + _MARKER + to_bytes(message_id) + b" "
    after = to_bytes(_AFTER_CHECK.format(sender=shown))
    return before + _check(before + after) + after


def read_envelope(envelope: bytes) -> str:
    """The message id of an envelope. Blanks and line ends may have changed on the way, nothing else."""
    start, marker, content = envelope.partition(_MARKER)
    demand(marker, Status.NO_ENVELOPE, "this is not an envelope")
    at = _ID_SIZE + 1
    check = content[at:at + _CHECK_SIZE]
    demand(len(check) == _CHECK_SIZE, Status.DAMAGED_ENVELOPE, "the envelope is damaged: it ends early")
    if check != _check(start + marker + content[:at] + content[at + _CHECK_SIZE:]):
        raise Refusal(Status.DAMAGED_ENVELOPE, "the envelope is damaged: its text was changed")
    return to_text(content[:_ID_SIZE])


def _check(text: bytes) -> bytes:
    return b"%08x" % zlib.crc32(text.translate(None, BLANKS.encode()))
