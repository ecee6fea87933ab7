"""What is done with texts and times in many places."""

import string
import time

from . import limits
from .wire import to_bytes

BLANKS = " \t\r\n"
_SEPARATORS = frozenset(",;:<>()[]\"\\\x7f")
_LOWER = str.maketrans(string.ascii_uppercase, string.ascii_lowercase)


def now_millis() -> int:
    """Milliseconds since 1970 UTC, the unit of all dates of the protocol."""
    return time.time_ns() // 1_000_000


def normalized(text: str) -> str:
    """Without blanks around it and in lower case: so addresses, locales and sensitivities are compared."""
    return text.strip(BLANKS).translate(_LOWER)


def is_address(address: str) -> bool:
    """something@something, without blanks, control characters or the separators of address lists."""
    name, at, domain = address.partition("@")
    if not (name and domain) or "@" in domain or len(to_bytes(address)) > limits.ADDRESS:
        return False
    return not any(character <= " " or character in _SEPARATORS for character in address)


def cut(text: bytes, size: int) -> bytes:
    """The beginning of a UTF-8 text, of at most so many bytes, that does not end inside a character."""
    if len(text) <= size:
        return text
    while size > 0 and text[size] & 0xC0 == 0x80:
        size -= 1
    return text[:size]
