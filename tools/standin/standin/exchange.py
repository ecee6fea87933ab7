"""Requests and replies as the handlers see them."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

from . import limits
from .status import Refusal, Status
from .texts import cut
from .wire import Long, Short, Value, to_bytes, to_text


class Request:
    """A whole, well-formed request. A parameter that did not come reads as empty, zero or false."""

    def __init__(self, code: str, parameters: list[tuple[str, Value]]) -> None:
        self.code = code
        self.parameters = parameters
        self._values: dict[str, Any] = dict(reversed(parameters))  # the first one where a tag repeats

    def __contains__(self, tag: str) -> bool:
        return tag in self._values

    def text(self, tag: str) -> str:
        return self._values.get(tag, "")

    def texts(self, tag: str) -> list[str]:
        return [value for other, value in self.parameters if other == tag and isinstance(value, str)]

    def data(self, tag: str) -> bytes:
        return self._values.get(tag, b"")

    def flag(self, tag: str) -> bool:
        return self._values.get(tag, False)

    def number(self, tag: str) -> int:
        return self._values.get(tag, 0)

    def map(self, tag: str) -> dict[str, str]:
        return dict(self._values.get(tag, {}))


@dataclass
class Reply:
    """A status, its text, and what else the command answers."""

    status: int
    text: str
    values: dict[str, Value] = field(default_factory=dict)

    @classmethod
    def to_refusal(cls, refusal: Refusal) -> Reply:
        seconds = refusal.seconds_to_wait
        return cls(refusal.status, refusal.message, {"se": Long(seconds)} if seconds else {})

    def parameters(self) -> list[tuple[str, Value]]:
        text = to_bytes(self.text)
        shown = cut(text, limits.STATUS_MESSAGE)
        ending = "..." if len(shown) < len(text) else ""
        return [("st", Short(self.status)), ("em", to_text(shown) + ending), *self.values.items()]


def done(text: str, **values: Value) -> Reply:
    return Reply(Status.OK, text, values)
