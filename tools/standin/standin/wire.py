"""The wire format that requests and replies share: numbers are big-endian; a value is a tag, a length and its bytes."""

import struct
import zlib
from typing import Iterable, Union

from . import limits

VERSION = 7
END = "\xce\xde"  # where the next tag would be


class Short(int):
    """A number of two bytes; a plain int has four."""


class Long(int):
    """A number of eight bytes."""


class Secret(str):
    """A text that the trace does not show."""


Value = Union[str, bytes, bool, int, float, "dict[str, str]", "list[str]", "list[bytes]"]


class WireError(Exception):
    """Bytes that break the format, and where they are."""

    def __init__(self, offset: int, what: str) -> None:
        super().__init__(what)
        self.offset = offset


def to_text(data: bytes) -> str:
    """A text as it came: bytes that are not UTF-8 are kept, as lone surrogates."""
    return data.decode("utf-8", "surrogateescape")


def to_bytes(text: str) -> bytes:
    return text.encode("utf-8", "surrogateescape")


def sized(data: bytes) -> bytes:
    return struct.pack(">i", len(data)) + data


def encode(value: Value) -> bytes:
    if isinstance(value, bytes):
        return value
    if isinstance(value, str):
        return to_bytes(value)
    if isinstance(value, dict):
        entries = sorted((to_bytes(key), to_bytes(text)) for key, text in value.items())
        return b"".join(sized(key) + sized(text) for key, text in entries)
    if isinstance(value, list):
        return b"".join(sized(encode(item)) for item in value)
    if isinstance(value, float):
        return struct.pack(">d", value)
    size = {bool: 1, Short: 2, Long: 8}.get(type(value), 4)
    return (value & (1 << 8 * size) - 1).to_bytes(size, "big")


def encode_parameters(parameters: Iterable[tuple[str, Value]]) -> bytes:
    return b"".join(piece for tag, value in parameters for piece in (tag.encode("latin-1"), sized(encode(value))))


def encode_frame(code: str, parameters: Iterable[tuple[str, Value]]) -> bytes:
    frame = struct.pack(">H", VERSION) + code.encode("latin-1") + encode_parameters(parameters) + END.encode("latin-1")
    return frame + struct.pack(">I", zlib.crc32(frame))


def decode_map(data: bytes) -> dict[str, str]:
    """Demands exact lengths and strictly ascending keys."""
    entries: dict[bytes, bytes] = {}
    at, last = 0, None
    while at < len(data):
        start = at
        key, at = _take_sized(data, at, "key")
        value, at = _take_sized(data, at, "value")
        if last is not None and key <= last:
            raise WireError(start, "the keys of the map do not ascend")
        if len(entries) == limits.MAP_ENTRIES:
            raise WireError(start, f"the map has more than {limits.MAP_ENTRIES} entries")
        entries[key] = value
        last = key
    return {to_text(key): to_text(value) for key, value in entries.items()}


def _take_sized(data: bytes, at: int, what: str) -> tuple[bytes, int]:
    if len(data) - at < 4:
        raise WireError(at, f"the map ends inside the length of a {what}")
    (length,) = struct.unpack_from(">i", data, at)
    if not 0 <= length <= len(data) - at - 4:
        raise WireError(at, f"the length of a {what} does not fit into its map")
    end = at + 4 + length
    return data[at + 4:end], end


def tag_name(tag: str) -> str:
    """The two letters in quotes, or the number in hexadecimal where they are not printable."""
    if tag.isascii() and tag.isprintable():
        return f"'{tag}'"
    return "0x" + tag.encode("latin-1").hex().upper()
