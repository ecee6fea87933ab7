"""The store: a SQLite file, or a database in memory."""

import os
import sqlite3
import stat
from contextlib import contextmanager
from typing import Any, Callable, Iterator

from .wire import to_bytes, to_text

StoreError = sqlite3.Error  # unreadable, damaged, locked, or its disk is full

_BUSY_SECONDS = 1
_APPLICATION_ID = 0x5441524E  # "TARN"
_VERSION = 5

# Dates are milliseconds since 1970 UTC, 0 for never.
_TABLES = """
CREATE TABLE accounts (address TEXT PRIMARY KEY, name TEXT NOT NULL, locale TEXT NOT NULL, password TEXT NOT NULL,
    state INTEGER NOT NULL, failures INTEGER NOT NULL DEFAULT 0, blockedUntil INTEGER NOT NULL DEFAULT 0);
CREATE TABLE answers (address TEXT NOT NULL REFERENCES accounts, question TEXT NOT NULL, answer TEXT NOT NULL,
    PRIMARY KEY (address, question));
CREATE TABLE enrollments (id TEXT PRIMARY KEY, address TEXT NOT NULL UNIQUE);
CREATE TABLE sessions (token TEXT PRIMARY KEY, address TEXT NOT NULL, expires INTEGER NOT NULL);
CREATE TABLE messages (id TEXT PRIMARY KEY, sender TEXT NOT NULL, subject TEXT NOT NULL, created INTEGER NOT NULL,
    size INTEGER NOT NULL, sensitivity INTEGER NOT NULL, attachments INTEGER NOT NULL, recipients INTEGER NOT NULL,
    configuration TEXT NOT NULL, mime BLOB NOT NULL);
CREATE INDEX messagesOfSender ON messages (sender);
CREATE TABLE recipients (serial INTEGER PRIMARY KEY, message TEXT NOT NULL REFERENCES messages, address TEXT NOT NULL,
    type TEXT NOT NULL, locked INTEGER NOT NULL DEFAULT 0, statusMessage TEXT NOT NULL DEFAULT '',
    expires INTEGER NOT NULL DEFAULT 0, tries INTEGER NOT NULL DEFAULT 0, firstOpened INTEGER NOT NULL DEFAULT 0,
    lastOpened INTEGER NOT NULL DEFAULT 0, lastFailed INTEGER NOT NULL DEFAULT 0, modified INTEGER NOT NULL,
    UNIQUE (message, address));
CREATE INDEX recipientsByAddress ON recipients (address);
CREATE TABLE sessionKeys (key TEXT PRIMARY KEY, message TEXT NOT NULL REFERENCES messages, address TEXT NOT NULL,
    expires INTEGER NOT NULL)
"""


class Store:
    """One connection, which one thread uses at a time. Texts that are not UTF-8 are kept as they are."""

    def __init__(self, path: str | None, fill: Callable[["Store"], None]) -> None:
        """In memory without a path. A new file is for its owner's eyes only, and is filled; an existing one must
        be sound and of this version."""
        if path:
            _prepare_file(path)
        self._connection = sqlite3.connect(path or ":memory:", timeout=_BUSY_SECONDS, isolation_level=None,
                                           check_same_thread=False)
        soundness = self.value("PRAGMA quick_check(1)")
        if soundness != "ok":
            raise StoreError(f"damaged: {soundness}")
        self.execute("PRAGMA synchronous = NORMAL")
        self.execute("PRAGMA foreign_keys = ON")
        with self.transaction():
            if self.value("SELECT 1 FROM sqlite_master LIMIT 1") is None:
                for table in _TABLES.split(";"):
                    self.execute(table)
                self.execute(f"PRAGMA application_id = {_APPLICATION_ID}")
                self.execute(f"PRAGMA user_version = {_VERSION}")
                fill(self)
            elif self.value("PRAGMA application_id") != _APPLICATION_ID:
                raise StoreError("a database of another program")
            elif self.value("PRAGMA user_version") != _VERSION:
                raise StoreError("a store of another version of tarn-standin")

    @contextmanager
    def transaction(self) -> Iterator[None]:
        self.execute("BEGIN IMMEDIATE")
        with self._connection:
            yield

    def execute(self, sql: str, *values: Any) -> int:
        """Returns how many rows were changed."""
        return self._cursor(sql, values).rowcount

    def rows(self, sql: str, *values: Any) -> list[tuple]:
        return [tuple(to_text(value) if isinstance(value, bytes) else value for value in row)
                for row in self._cursor(sql, values)]

    def row(self, sql: str, *values: Any) -> tuple | None:
        return next(iter(self.rows(sql, *values)), None)

    def value(self, sql: str, *values: Any) -> Any:
        """The first column of the first row; None when there is none."""
        row = self.row(sql, *values)
        return row and row[0]

    def blob(self, sql: str, *values: Any) -> bytes:
        return self._cursor(sql, values).fetchone()[0]

    def _cursor(self, sql: str, values: tuple) -> sqlite3.Cursor:
        return self._connection.execute(sql, [_bindable(value) for value in values])


def _bindable(value: Any) -> Any:
    """SQLite takes a text that is not UTF-8 as bytes alone."""
    if isinstance(value, str) and not value.isascii():
        data = to_bytes(value)
        return value if data.decode("utf-8", "replace") == value else data
    return value


def _prepare_file(path: str) -> None:
    """Makes the file, so that nobody else can read it. SQLite would take a device or a pipe for a file."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_CREAT | getattr(os, "O_NONBLOCK", 0), stat.S_IRUSR | stat.S_IWUSR)
        mode = os.fstat(file).st_mode
        os.close(file)
    except OSError as error:
        raise StoreError(error.strerror) from None
    if not stat.S_ISREG(mode):
        raise StoreError("not a regular file")
