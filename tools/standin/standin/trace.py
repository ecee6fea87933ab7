"""Prints requests and replies to standard output, one line for each, secrets masked."""

import threading
from datetime import datetime, timezone
from typing import Any, Callable, Collection, Iterable

from .output import complain, printable, write_line
from .texts import cut
from .wire import Secret, Value, to_bytes

_SHOWN_BYTES = 72
_SHOWN_ENTRIES = 12


class Trace:
    def __init__(self, on: bool) -> None:
        self._on = on
        self._lock = threading.Lock()

    def print(self, connection: int, arrow: str, code: str, parameters: Iterable[tuple[str, Value]]) -> None:
        if not self._on:
            return
        values = "".join(f" {tag}={_shown(value)}" for tag, value in parameters)
        with self._lock:
            stamp = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%S.%fZ")
            if self._on and not write_line(f"{stamp} #{connection} {arrow} {code}{values}"):
                self._on = False
                complain("the trace cannot be written and ends")


def _shown(value: Value) -> str:
    if isinstance(value, Secret):
        return "(hidden)" if value else '""'
    if isinstance(value, dict):
        return _listed("{", value.items(), "}", _shown_entry)
    if isinstance(value, list):
        return _listed("[", value, "]", lambda item: _quoted(item) if isinstance(item, str) else f"{len(item)} bytes")
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, float):
        return f"{value:f}"
    return str(int(value)) if isinstance(value, int) else _quoted(value)


def _shown_entry(entry: tuple[str, str]) -> str:
    key, value = entry
    secret = key == "token" or key.startswith("securityAnswer")
    return f"{_quoted(key)}: {'(hidden)' if secret else _quoted(value)}"


def _listed(begin: str, entries: Collection[Any], end: str, describe: Callable[[Any], str]) -> str:
    """The first of the entries, and how many there are when these are not all."""
    shown = [describe(entry) for entry, _ in zip(entries, range(_SHOWN_ENTRIES))]
    if len(entries) > len(shown):
        shown.append(f"...({len(entries)} in all)")
    return begin + ", ".join(shown) + end


def _quoted(text: str | bytes) -> str:
    data = to_bytes(text) if isinstance(text, str) else text
    shown = cut(data, _SHOWN_BYTES)
    quoted = printable(shown.decode("utf-8", "replace").replace("\\", "\\\\").replace('"', '\\"'))
    return f'"{quoted}"' + (f"...({len(data)} bytes)" if len(shown) < len(data) else "")
