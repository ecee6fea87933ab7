"""What each request may carry, and who answers it: every handler registers itself here."""

from dataclasses import dataclass
from typing import Any, Callable

from . import limits
from .exchange import Reply, Request
from .wire import Long, Secret, Value, decode_map, to_text

Handler = Callable[[Request, Any], Reply]  # and the context


@dataclass(frozen=True)
class Rule:
    """What a parameter holds, and how much of it the handlers take."""

    decode: Callable[[bytes], Value]
    default: Value = ""  # what a parameter that did not come reads as
    max_size: int = limits.TEXT
    size: int = 0  # of a value that always has the same size
    repeats: bool = False


def _flag(data: bytes) -> bool:
    if data[0] > 1:
        raise ValueError("neither 0 nor 1")
    return data[0] == 1


TEXT = Rule(to_text)
STATUS_MESSAGE = Rule(to_text, max_size=limits.STATUS_MESSAGE)
SECRET = Rule(lambda data: Secret(to_text(data)), max_size=limits.PASSWORD)
RECIPIENT = Rule(to_text, repeats=True)
DATA = Rule(bytes, b"", limits.REQUEST)
MAP = Rule(decode_map, {})
FLAG = Rule(_flag, False, size=1)
INT = Rule(lambda data: int.from_bytes(data, "big", signed=True), 0, size=4)
LONG = Rule(lambda data: Long(int.from_bytes(data, "big", signed=True)), 0, size=8)


@dataclass(frozen=True)
class Command:
    handler: Handler
    uses_store: bool
    rules: dict[str, Rule]


COMMANDS: dict[str, Command] = {}


def command(code: str, rules: dict[str, Rule], *, uses_store: bool = True) -> Callable[[Handler], Handler]:
    """Makes a function the handler of a command. It gets well-formed requests and may raise a Refusal."""

    def register(handler: Handler) -> Handler:
        COMMANDS[code] = Command(handler, uses_store, rules)
        return handler

    return register
