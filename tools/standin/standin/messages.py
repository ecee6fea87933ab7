"""The messages behind the envelopes, what is tracked of their recipients, and the keys of those kept open."""

import json
from dataclasses import dataclass
from typing import NamedTuple

from .envelope import read_envelope
from .passwords import random_id
from .status import Refusal, Status
from .store import Store
from .texts import now_millis

_SESSION_KEY_MILLIS = 30 * 60_000


@dataclass
class Message:
    """A message without its bytes."""

    id: str
    sender: str
    subject: str
    sensitivity: int
    configuration: dict[str, str]
    recipients: dict[str, str]  # addresses to to, cc or bc

    def addresses_of(self, kind: str) -> list[str]:
        return [address for address, other in self.recipients.items() if other == kind]


class Tracking(NamedTuple):
    locked: int
    status_message: str
    expires: int


class Messages:
    def __init__(self, store: Store) -> None:
        self._store = store

    def add(self, message: Message, mime: bytes, attachments: int) -> None:
        now = now_millis()
        self._store.execute(
            "INSERT INTO messages (id, sender, subject, created, size, sensitivity, attachments, recipients,"
            " configuration, mime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            message.id, message.sender, message.subject, now, len(mime), message.sensitivity, attachments,
            len(message.recipients), json.dumps(message.configuration), mime)
        for address, kind in message.recipients.items():
            self._store.execute("INSERT INTO recipients (message, address, type, modified) VALUES (?, ?, ?, ?)",
                                message.id, address, kind, now)

    def of_envelope(self, envelope: bytes) -> Message:
        identifier = read_envelope(envelope)
        row = self._store.row("SELECT sender, subject, sensitivity, configuration FROM messages WHERE id = ?",
                              identifier)
        if row is None:
            raise Refusal(Status.UNKNOWN_ENVELOPE, "the message of this envelope is not in the store")
        recipients = self._store.rows("SELECT address, type FROM recipients WHERE message = ? ORDER BY serial",
                                      identifier)
        sender, subject, sensitivity, configuration = row
        return Message(identifier, sender, subject, sensitivity, json.loads(configuration), dict(recipients))

    def mime_of(self, identifier: str) -> bytes:
        return self._store.blob("SELECT mime FROM messages WHERE id = ?", identifier)

    def tracking(self, identifier: str, address: str) -> Tracking | None:
        row = self._store.row("SELECT locked, statusMessage, expires FROM recipients WHERE message = ? AND address = ?",
                              identifier, address)
        return row and Tracking(*row)

    def note_opened(self, identifier: str, address: str) -> None:
        now = now_millis()
        self._store.execute(
            "UPDATE recipients SET tries = tries + 1, lastOpened = ?, modified = ?,"
            " firstOpened = CASE firstOpened WHEN 0 THEN ? ELSE firstOpened END WHERE message = ? AND address = ?",
            now, now, now, identifier, address)

    def note_failed(self, identifier: str, address: str) -> None:
        now = now_millis()
        self._store.execute(
            "UPDATE recipients SET tries = tries + 1, lastFailed = ?, modified = ? WHERE message = ? AND address = ?",
            now, now, identifier, address)

    def keep_open(self, identifier: str, address: str) -> str:
        """The key of an address that has one, its life prolonged, else a new one."""
        now = now_millis()
        self._store.execute("DELETE FROM sessionKeys WHERE expires <= ?", now)
        key = self._store.value("SELECT key FROM sessionKeys WHERE message = ? AND address = ?", identifier, address)
        key = key or random_id()
        self._store.execute("INSERT OR REPLACE INTO sessionKeys (key, message, address, expires) VALUES (?, ?, ?, ?)",
                            key, identifier, address, now + _SESSION_KEY_MILLIS)
        return key

    def is_kept_open(self, identifier: str, address: str) -> bool:
        return self._store.value("SELECT 1 FROM sessionKeys WHERE message = ? AND address = ? AND expires > ?",
                                 identifier, address, now_millis()) == 1

    def key_holder(self, identifier: str, key: str) -> str | None:
        """Whose key of this message it is."""
        return self._store.value("SELECT address FROM sessionKeys WHERE message = ? AND key = ? AND expires > ?",
                                 identifier, key, now_millis())
