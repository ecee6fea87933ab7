"""Takes a MIME message apart. What a part holds comes back byte by byte, for the message is never written anew."""

import re
from collections import Counter
from dataclasses import dataclass
from email.errors import HeaderParseError
from email.header import decode_header
from email.message import Message
from email.parser import BytesHeaderParser
from email.policy import Compat32
from email.utils import collapse_rfc2231_value
from typing import Iterator

from . import limits
from .status import Refusal, Status, demand
from .texts import normalized

BODY, ATTACHMENT = 1, 2
SHOWN_INLINE, NAME_MADE_UP = 1, 2

_SENSITIVITIES = ["", "personal", "private", "company-confidential"]
_MESSAGE_TYPES = ("message/rfc822", "message/global", "message/news")
_HEADER = rb"[!-9;-~]+:[^\n]*(?:\n|\Z)(?:[ \t][^\n]*(?:\n|\Z))*"
_HEAD = re.compile(rb"(?:From [^\n]*\n)?((?:%b)*)(?:\r?\n)?" % _HEADER)
_ENCODED_WORD = r"=\?[^?\s]+\?[bq]\?[^?]*\?="
_ENCODED_WORDS = re.compile(rf"{_ENCODED_WORD}(?:\s+{_ENCODED_WORD})*", re.IGNORECASE)


@dataclass
class Item:
    type: int  # BODY or ATTACHMENT
    flags: int  # SHOWN_INLINE with a Content-ID or an inline disposition; NAME_MADE_UP when the message gave none
    name: str
    content_type: str
    data: bytes  # decoded


@dataclass
class SplitMessage:
    subject: str
    sensitivity: int  # 0 none, 1 personal, 2 private, 3 company-confidential
    items: list[Item]  # the leaves, in the message's order


class _Headers(Compat32):
    """Header values as texts on one line; bytes beyond ASCII are UTF-8, or Latin-1 where they are not."""

    def header_fetch_parse(self, name: str, value: str) -> str:
        data = re.sub(r"\r?\n|\r", "", value).strip().encode("ascii", "surrogateescape")
        try:
            return data.decode()
        except UnicodeDecodeError:
            return data.decode("latin-1")


_PARSER = BytesHeaderParser(policy=_Headers())


def split_mime(source: bytes) -> SplitMessage:
    root, _ = _split_head(source)
    demand(len(root) > 0, Status.NOT_A_MESSAGE, "the message is not a MIME message: it has no header")
    names: Counter[str] = Counter()
    try:
        items = [_item(head, body, names) for head, body in _leaves(source)]
    except (AttributeError, LookupError, TypeError, ValueError):  # what the header parser may raise at its limits
        raise Refusal(Status.NOT_A_MESSAGE, "a header of the message is malformed") from None
    demand(items, Status.NOT_A_MESSAGE, "the message has neither a body nor an attachment")
    sensitivity = normalized(root.get("Sensitivity", ""))
    return SplitMessage(_decoded(root.get("Subject", "")),
                        _SENSITIVITIES.index(sensitivity) if sensitivity in _SENSITIVITIES else 0, items)


def _leaves(source: bytes) -> Iterator[tuple[Message, bytes]]:
    pending = [(source, 0)]
    while pending:
        data, depth = pending.pop()
        head, body = _split_head(data)
        if head.get_content_maintype() == "multipart":
            demand(depth < limits.NESTING, Status.NOT_A_MESSAGE, "the message is nested too deeply")
            pending += [(part, depth + 1) for part in reversed(_parts(body, head.get_boundary("")))]
        else:
            yield head, body


def _split_head(data: bytes) -> tuple[Message, bytes]:
    found = _HEAD.match(data)
    assert found  # also nothing
    demand(len(found[1]) <= limits.HEADER, Status.NOT_A_MESSAGE, "a header of the message is too large")
    return _PARSER.parsebytes(found[1]), data[found.end():]


def _parts(body: bytes, boundary: str) -> list[bytes]:
    """The last one may end where the body does."""
    if not boundary:
        return []
    # To search for a text that the pattern begins with is fast; whether it begins a line is seen afterwards.
    delimiter = rb"--%b(--)?[ \t]*(?:\r?\n|\Z)" % re.escape(boundary.encode("utf-8", "surrogateescape"))
    parts, begin = [], None
    for found in re.finditer(delimiter, body):
        at = found.start()
        if at > 0 and body[at - 1:at] != b"\n":
            continue
        if begin is not None:
            parts.append(_without_line_end(body[begin:at]))
        if found[1]:
            return parts
        begin = found.end()
    return parts if begin is None else parts + [body[begin:]]


def _without_line_end(data: bytes) -> bytes:
    """The line end before a delimiter belongs to the delimiter."""
    data = data[:-1] if data.endswith(b"\n") else data
    return data[:-1] if data.endswith(b"\r") else data


def _item(head: Message, body: bytes, names: Counter[str]) -> Item:
    disposition = head.get_content_disposition()
    name = _decoded(head.get_filename(""))
    is_body = head.get_content_maintype() == "text" and not name and disposition != "attachment"
    flags = SHOWN_INLINE if "Content-ID" in head or disposition == "inline" else 0
    if not name:
        flags |= NAME_MADE_UP
        name = _made_up("body" if is_body else "attachment", _extension(head.get_content_type()), names)
    head.set_payload(body.decode("ascii", "surrogateescape"))
    return Item(BODY if is_body else ATTACHMENT, flags, name, _content_type(head), head.get_payload(decode=True))


def _made_up(stem: str, extension: str, names: Counter[str]) -> str:
    """body.txt, body-2.txt and so on."""
    names[stem + extension] += 1
    number = names[stem + extension]
    return stem + (f"-{number}" if number > 1 else "") + extension


def _extension(content_type: str) -> str:
    if content_type in _MESSAGE_TYPES:
        return ".eml"
    if content_type == "text/html":
        return ".html"
    return ".txt" if content_type.startswith("text/") else ".bin"


def _content_type(head: Message) -> str:
    charset = head.get_param("charset")
    given = head.get_content_type()
    return given if charset is None else f"{given}; charset={_decoded(collapse_rfc2231_value(charset))}"


def _decoded(text: str) -> str:
    """With its encoded words decoded."""
    return _ENCODED_WORDS.sub(_decoded_words, text).encode("utf-8", "replace").decode()


def _decoded_words(found: re.Match[str]) -> str:
    try:
        pieces = decode_header(found[0])
    except HeaderParseError:
        return found[0]
    return "".join(piece if isinstance(piece, str) else _decoded_bytes(piece, charset) for piece, charset in pieces)


def _decoded_bytes(data: bytes, charset: str | None) -> str:
    try:
        return data.decode(charset or "utf-8", "replace")
    except (LookupError, UnicodeError):
        return data.decode("latin-1")
