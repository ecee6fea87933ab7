"""Reads the requests of a connection."""

import zlib
from typing import Callable

from . import limits
from .commands import COMMANDS, Command, Rule
from .exchange import Request
from .wire import END, VERSION, Value, WireError, tag_name


class RequestReader:
    """Reads requests one after the other. Memory is taken for bytes that have arrived alone, so a length that promises
    gigabytes costs nothing. After a WireError, whose offset is into the request, the reader is of no use any more."""

    def __init__(self, read: Callable[[], bytes]) -> None:
        """read waits for bytes and returns some, or none at their end."""
        self._read = read
        self._block = b""
        self._taken = 0  # of the block
        self._offset = 0  # into the request
        self._crc = 0

    def next(self) -> Request | None:
        """The next whole request; None when the bytes end before one begins."""
        self._offset = self._crc = 0
        if not self._has_more():
            return None
        version = int.from_bytes(self._take(2), "big")
        if version != VERSION:
            raise WireError(0, f"version {version} instead of {VERSION}")
        code = self._take_tag()
        if code not in COMMANDS:
            raise WireError(2, f"unknown command {tag_name(code)}")
        defaults = {tag: rule.default for tag, rule in COMMANDS[code].rules.items()}
        request = Request(code, self._take_parameters(code, COMMANDS[code]), defaults)
        computed, at = self._crc, self._offset
        received = int.from_bytes(self._take(4), "big")
        if received != computed:
            raise WireError(at, f"CRC 0x{received:08x} instead of 0x{computed:08x}")
        return request

    def _take_parameters(self, code: str, command: Command) -> list[tuple[str, Value]]:
        parameters: list[tuple[str, Value]] = []
        seen = set()
        while True:
            at = self._offset
            tag = self._take_tag()
            if tag == END:
                return parameters
            rule = command.rules.get(tag)
            if rule is None:
                raise WireError(at, f"unknown parameter {tag_name(tag)} in a {tag_name(code)} request")
            if tag in seen and not rule.repeats:
                raise WireError(at, f"parameter {tag_name(tag)} given twice")
            if len(parameters) == limits.PARAMETERS:
                raise WireError(at, f"more than {limits.PARAMETERS} parameters")
            seen.add(tag)
            parameters.append((tag, self._take_value(tag, rule)))

    def _take_value(self, tag: str, rule: Rule) -> Value:
        at = self._offset
        length = int.from_bytes(self._take(4), "big", signed=True)
        complaint = f"length {length} of {tag_name(tag)}"
        if length < 0:
            raise WireError(at, f"negative {complaint}")
        if self._offset + length > limits.REQUEST:
            raise WireError(at, f"{complaint} exceeds the limit of {limits.REQUEST} bytes for a request")
        if rule.size and length != rule.size:
            raise WireError(at, f"{complaint} instead of {rule.size}")
        at = self._offset
        data = self._take(length)
        try:
            return rule.decode(data)
        except ValueError as error:
            raise WireError(at, f"value of {tag_name(tag)} is {error}") from None
        except WireError as error:
            raise WireError(at + error.offset, f"{tag_name(tag)}: {error}") from None

    def _take_tag(self) -> str:
        return self._take(2).decode("latin-1")

    def _take(self, count: int) -> bytes:
        data = bytearray()
        while len(data) < count:
            if not self._has_more():
                raise WireError(self._offset + len(data), "lost in the middle of a request")
            end = self._taken + count - len(data)
            data += self._block[self._taken:end]
            self._taken = min(end, len(self._block))
        self._crc = zlib.crc32(data, self._crc)
        self._offset += count
        return bytes(data)

    def _has_more(self) -> bool:
        if self._taken == len(self._block):
            self._block, self._taken = self._read(), 0
        return bool(self._block)
