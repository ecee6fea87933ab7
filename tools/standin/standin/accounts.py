"""Accounts, their sessions, and the enrollment ids handed out. All addresses are normalized."""

from enum import IntEnum
from typing import NamedTuple

from .passwords import hash_password, random_id, verify_password
from .status import Refusal, Status, demand
from .store import Store
from .texts import now_millis

_MAX_FAILURES = 5
_BLOCK_MILLIS = 30_000
_SESSION_MILLIS = 30 * 60_000


class State(IntEnum):
    ACTIVE = 0
    UNCONFIRMED = 1
    DISABLED = 2


class Account(NamedTuple):
    state: State
    password: str  # hashed
    blocked_until: int


# With their passwords hashed beforehand: everybody may know them, and hashing would take most of the daemon's start.
_READY_MADE = [
    ("alice@example.com", "Alice", "en", State.ACTIVE,  # wonderland
     "83d43a198d86a5c4e30312b2610e35f5$54d178c75fbdc30f6ea0ee819058435a"),
    ("bob@example.com", "Bob", "de", State.ACTIVE,  # builder
     "4529d7ec43273297226593d8c86b2742$55059655569253c4e60cbe2c54e4c558"),
    ("carol@example.com", "Carol", "fr", State.ACTIVE,  # caravan
     "8bc4aa1bf5897ec2cc8b196285c632e6$e7c118043a3eed48a05de5651e798283"),
    ("dave@example.com", "Dave", "en", State.DISABLED,  # doorstop
     "ff01b81dc912c72e29f8979bd3aca5b6$ea339fc36fa5d88c6c3a12da5e018285"),
]


def add_ready_made(store: Store) -> None:
    for account in _READY_MADE:
        store.execute("INSERT INTO accounts (address, name, locale, state, password) VALUES (?, ?, ?, ?, ?)", *account)


class Accounts:
    def __init__(self, store: Store) -> None:
        self._store = store

    def find(self, address: str) -> Account | None:
        row = self._store.row("SELECT state, password, blockedUntil FROM accounts WHERE address = ?", address)
        return row and Account(*row)

    def locale_of(self, address: str) -> str | None:
        return self._store.value("SELECT locale FROM accounts WHERE address = ?", address)

    def demand_standing(self, address: str) -> Account:
        """The account, if it could log in, its password aside."""
        account = self.find(address)
        if account is None:
            raise Refusal(Status.NOT_ENROLLED, "there is no account of this address: it can be enrolled")
        demand(account.state != State.UNCONFIRMED, Status.ENROLLMENT_UNFINISHED,
               "the enrollment of this address is not confirmed yet")
        demand(account.state != State.DISABLED, Status.ACCOUNT_DISABLED, "the account is disabled")
        wait = account.blocked_until - now_millis()
        if wait > 0:
            seconds = (wait + 999) // 1000
            raise Refusal(Status.TOO_MANY_TRIES, f"too many wrong passwords: try again in {seconds} seconds",
                          seconds_to_wait=seconds)
        return account

    def authenticate(self, address: str, password: str) -> None:
        """Counts a wrong password; five of them block the account for a while."""
        account = self.demand_standing(address)
        if not verify_password(password, account.password):
            self._count_failure(address)
            raise Refusal(Status.WRONG_PASSWORD, "wrong password", counted=True)
        self._store.execute("UPDATE accounts SET failures = 0, blockedUntil = 0 WHERE address = ?", address)

    def authenticate_owner(self, address: str, password: str) -> None:
        """As authenticate, of the sender of tracked messages."""
        demand(password, Status.PASSWORD_NEEDED, "the password of the sender is needed")
        self.authenticate(address, password)

    def owners(self, addresses: list[str], password: str) -> list[str]:
        """Those of the addresses whose password it is; one that fits none counts as wrong for all of them."""
        matching, failing = [], []
        for address in addresses:
            try:
                account = self.demand_standing(address)
            except Refusal:
                continue
            (matching if verify_password(password, account.password) else failing).append(address)
        if not matching:
            for address in failing:
                self._count_failure(address)
        return matching

    def _count_failure(self, address: str) -> None:
        self._store.execute("UPDATE accounts SET failures = failures + 1 WHERE address = ?", address)
        self._store.execute("UPDATE accounts SET failures = 0, blockedUntil = ? WHERE address = ? AND failures >= ?",
                            now_millis() + _BLOCK_MILLIS, address, _MAX_FAILURES)

    def open_session(self, address: str) -> dict[str, str]:
        """The session as its user carries it: token, user and dates."""
        now, token = now_millis(), random_id()
        self._store.execute("DELETE FROM sessions WHERE expires <= ?", now)
        self._store.execute("INSERT INTO sessions (token, address, expires) VALUES (?, ?, ?)", token, address,
                            now + _SESSION_MILLIS)
        return {"token": token, "user": address, "created": str(now), "expires": str(now + _SESSION_MILLIS)}

    def session_user(self, token: str) -> str | None:
        """The user of a session that has not expired."""
        return self._store.value("SELECT address FROM sessions WHERE token = ? AND expires > ?", token, now_millis())

    def enrollment_id(self, address: str) -> str:
        """The enrollment id of an address, made when it has none."""
        self._store.execute("INSERT OR IGNORE INTO enrollments (id, address) VALUES (?, ?)", random_id(), address)
        return self._store.value("SELECT id FROM enrollments WHERE address = ?", address)

    def is_enrollment_id(self, identifier: str, address: str) -> bool:
        return self._store.value("SELECT 1 FROM enrollments WHERE id = ? AND address = ?", identifier, address) == 1

    def enroll(self, address: str, name: str, locale: str, password: str, answers: dict[str, str]) -> None:
        """Keeps an unconfirmed account, in the place of a former one, with its security questions and answers."""
        self._store.execute(
            "INSERT INTO accounts (address, name, locale, password, state) VALUES (?, ?, ?, ?, ?)"
            " ON CONFLICT (address) DO UPDATE SET name = excluded.name, locale = excluded.locale,"
            " password = excluded.password, failures = 0, blockedUntil = 0",
            address, name, locale, hash_password(password), State.UNCONFIRMED)
        self._store.execute("DELETE FROM answers WHERE address = ?", address)
        for question, answer in answers.items():
            self._store.execute("INSERT INTO answers (address, question, answer) VALUES (?, ?, ?)", address, question,
                                hash_password(answer))

    def confirm(self, address: str) -> None:
        self._store.execute("UPDATE accounts SET state = ? WHERE address = ?", State.ACTIVE, address)
        self._store.execute("DELETE FROM enrollments WHERE address = ?", address)


def enrollment_link(identifier: str) -> str:
    return "http://127.0.0.1/enroll?id=" + identifier
