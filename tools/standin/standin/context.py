"""What the handlers share."""

from __future__ import annotations

import math
import threading
from dataclasses import dataclass, field
from pathlib import Path

from .accounts import Accounts, add_ready_made
from .messages import Messages
from .store import Store
from .texts import now_millis


@dataclass
class Settings:
    """What the command line says."""

    store: str | None = None  # None for a store in memory
    port: int = 53007
    config_dir: Path | None = None  # resolved
    idle: int = 3600  # seconds, 0 for no limit
    trace: bool = False
    # Faults on purpose, for a program that is to meet them.
    answers: dict[str, int] = field(default_factory=dict)  # commands that are not carried out, and their status
    delay: float = 0.0  # seconds before each reply
    reset_after: int | None = None  # replies of each connection


class Statistics:
    """Count, mean and standard deviation of times, kept without keeping the times."""

    def __init__(self) -> None:
        self.count = 0
        self.mean = 0.0
        self._squares = 0.0

    def add(self, value: float) -> None:
        self.count += 1
        distance = value - self.mean
        self.mean += distance / self.count
        self._squares += distance * (value - self.mean)

    @property
    def deviation(self) -> float:
        return math.sqrt(self._squares / self.count) if self.count else 0.0


class Context:
    def __init__(self, settings: Settings) -> None:
        self.settings = settings
        self.store = Store(settings.store, add_ready_made)
        self.accounts = Accounts(self.store)
        self.messages = Messages(self.store)
        self.started = now_millis()
        self.encryptions = Statistics()  # in milliseconds, as the next
        self.decryptions = Statistics()
        self.encrypted = 0
        self.encryptions_failed = 0
        self.lock = threading.Lock()  # held by whoever answers a request; what follows needs none
        self.connections_open = 0
        self.connections_total = 0
        self.stopping = threading.Event()
