"""Requests and replies as the handlers see them."""

from dataclasses import dataclass, field
from typing import Any

from . import limits
from .status import Refusal, Status
from .texts import cut
from .wire import Long, Short, Value, to_bytes, to_text


class Request:
    """A whole, well-formed request. A parameter that did not come reads as empty, zero or false."""

    def __init__(self, code: str, parameters: list[tuple[str, Value]], defaults: dict[str, Any]) -> None:
        self.code = code
        self.parameters = parameters
        self._values = {**defaults, **dict(parameters)}

    def __contains__(self, tag: str) -> bool:
        return any(tag == other for other, _ in self.parameters)

    def __getitem__(self, tag: str) -> Any:
        return self._values[tag]

    def all(self, tag: str) -> list[Any]:
        """The values of a tag that repeats."""
        return [value for other, value in self.parameters if other == tag]


@dataclass
class Reply:
    """A status, its text, and what else the command answers."""

    status: int
    text: str
    values: dict[str, Value] = field(default_factory=dict)

    @classmethod
    def to_refusal(cls, refusal: Refusal) -> "Reply":
        seconds = refusal.seconds_to_wait
        return cls(refusal.status, refusal.message, {"se": Long(seconds)} if seconds else {})

    def parameters(self) -> list[tuple[str, Value]]:
        text = to_bytes(self.text)
        shown = cut(text, limits.STATUS_MESSAGE)
        ending = "..." if len(shown) < len(text) else ""
        return [("st", Short(self.status)), ("em", to_text(shown) + ending), *self.values.items()]


def done(text: str, **values: Value) -> Reply:
    return Reply(Status.OK, text, values)
