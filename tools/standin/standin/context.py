"""What the handlers share."""

import threading
from argparse import Namespace

from .accounts import Accounts, add_ready_made
from .messages import Messages
from .store import Store
from .texts import now_millis


class Context:
    def __init__(self, settings: Namespace) -> None:
        self.settings = settings
        self.store = Store(settings.store, add_ready_made)
        self.accounts = Accounts(self.store)
        self.messages = Messages(self.store)
        self.started = now_millis()
        self.encryptions: list[float] = []  # how long each took, in milliseconds
        self.decryptions: list[float] = []
        self.encryptions_failed = 0
        self.lock = threading.Lock()  # held by whoever answers a request; what follows needs none
        self.connections_open = 0
        self.connections_total = 0
        self.stopping = threading.Event()
