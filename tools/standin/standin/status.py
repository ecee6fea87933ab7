"""The statuses of replies, and how a request is refused."""

from enum import IntEnum


class Status(IntEnum):
    """docs/standin.md tells how each is provoked."""

    OK = 0
    WRONG_PASSWORD = 2
    PASSWORD_NEEDED = 5
    SESSION_KEY_ALIVE = 6
    ASKED_BY_SENDER = 7
    NOT_ENROLLED = 11
    NOT_A_RECIPIENT = 15
    UNKNOWN_ENVELOPE = 16
    ACCOUNT_DISABLED = 17
    TOO_MANY_TRIES = 18
    EXPIRED = 19
    LOCKED_WITH_MESSAGE = 20
    LOCKED = 21
    ENROLLMENT_UNFINISHED = 25
    DAMAGED_ENVELOPE = 26
    NO_ENVELOPE = 34
    MISSING = 100
    BAD_VALUE = 101
    NOTHING_MATCHED = 102
    CONFIGURATION_UNREADABLE = 103
    CONFIGURATION_WRONG = 104
    NO_SESSION = 105
    ACCOUNT_EXISTS = 106
    FORM_REFUSED = 107
    NOT_A_MESSAGE = 108
    STORE_FAILED = 109
    INTERNAL_ERROR = 110
    TOO_LARGE = 111
    SESSION_KEY_INVALID = 200


class Refusal(Exception):
    """A request that cannot be granted. What it has changed is undone, unless a failed try was counted."""

    def __init__(self, status: Status, message: str, *, counted: bool = False, seconds_to_wait: int = 0) -> None:
        super().__init__(message)
        self.status = status
        self.message = message
        self.counted = counted
        self.seconds_to_wait = seconds_to_wait


def demand(condition: object, status: Status, message: str) -> None:
    if not condition:
        raise Refusal(status, message)


def demand_at_most(allowed: int, size: int, of_what: str) -> None:
    demand(size <= allowed, Status.TOO_LARGE, f"{of_what}: {size}, and at most {allowed} allowed")
