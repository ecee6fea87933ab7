"""MI and SI: reads and changes the tracking records of messages."""

from typing import Any

from .commands import DATA, FLAG, INT, LONG, MAP, SECRET, STATUS_MESSAGE, TEXT, command
from .configuration import named_configuration
from .context import Context
from .exchange import Reply, Request, done
from .status import Refusal, Status, demand
from .texts import normalized, now_millis
from .wire import encode_parameters

# What a record tells, over _TABLES; also what can be sorted by and selected with.
_FIELDS = {
    "FLAGS": "(r.locked * 2)", "attachmentCount": "m.attachments", "createDate": "m.created",
    "expiryDate": "r.expires", "firstOpenDate": "r.firstOpened", "from": "m.sender", "id": "r.serial",
    "lastFailOpenDate": "r.lastFailed", "lastModifiedDate": "r.modified", "lastOpenDate": "r.lastOpened",
    "messageSize": "m.size", "msgId": "m.id", "numTries": "r.tries", "recipient": "r.address",
    "recipientCount": "m.recipients", "recipientType": "r.type", "sensitivity": "m.sensitivity",
    "statusLocked": "r.locked", "statusMsg": "r.statusMessage", "subject": "m.subject", "to": "r.address",
}
_TEXT_FIELDS = ("from", "msgId", "recipient", "recipientType", "statusMsg", "subject", "to")
_TABLES = "FROM recipients r JOIN messages m ON m.id = r.message"
_SELECT = f"SELECT {', '.join(_FIELDS.values())} {_TABLES}"


def _column(name: str) -> str:
    demand(name in _FIELDS, Status.BAD_VALUE, f'"{name}" is not a field of a tracking record')
    return _FIELDS[name]


@command("MI", {"tc": TEXT, "ky": SECRET, "en": DATA, "ep": TEXT, "fm": TEXT, "sf": TEXT, "as": FLAG, "si": INT,
                "mx": INT})
def message_information(request: Request, context: Context) -> Reply:
    named_configuration(request, context)
    if "en" in request:
        message = context.messages.of_envelope(request["en"])
        context.accounts.authenticate_owner(message.sender, request["ky"])
        rows = context.store.rows(f"{_SELECT} WHERE m.id = ? ORDER BY r.serial", message.id)
        return _records(rows, message.id, 0, len(rows))
    return _records_of_sender(request, context)


def _records_of_sender(request: Request, context: Context) -> Reply:
    sender = normalized(request["fm"])
    demand(sender, Status.MISSING, "neither an envelope nor a user name came")
    field = request["sf"] or "createDate"
    order = _column(field) + (" COLLATE NOCASE" if field in _TEXT_FIELDS else "")
    order += " ASC" if request["as"] else " DESC"
    context.accounts.authenticate_owner(sender, request["ky"])
    total = context.store.value(f"SELECT count(*) {_TABLES} WHERE m.sender = ?", sender)
    # Start and size of the page are unsigned numbers on the caller's side.
    start, size = (request[tag] & 0xFFFFFFFF for tag in ("si", "mx"))
    rows = context.store.rows(f"{_SELECT} WHERE m.sender = ? ORDER BY {order}, r.serial LIMIT ? OFFSET ?",
                              sender, size, start)
    return _records(rows, "", start, total)


def _records(rows: list[tuple], identifier: str, start: int, total: int) -> Reply:
    records = [encode_parameters([("da", dict(zip(_FIELDS, map(str, row))))]) for row in rows]
    return done(f"{len(records)} tracking records", id=identifier, si=start, mx=total, ri=records)


class _Selection:
    """The records to change, as a condition of SQL and the values of its placeholders."""

    def __init__(self, fields: dict[str, str]) -> None:
        self.condition = ""
        self.values: list[Any] = []
        for name, value in fields.items():
            self.add(name, value)

    def add(self, name: str, value: str) -> None:
        expression = _column(name) if name in _TEXT_FIELDS else f"CAST({_column(name)} AS TEXT)"
        self.condition += f"{' AND ' if self.condition else ''}{expression} = ?"
        self.values.append(normalized(value) if name in ("to", "recipient", "from") else value)


@command("SI", {"tc": TEXT, "ky": SECRET, "en": DATA, "ep": TEXT, "to": TEXT, "ri": MAP, "ls": FLAG,
                "sm": STATUS_MESSAGE, "ed": LONG})
def set_information(request: Request, context: Context) -> Reply:
    named_configuration(request, context)
    demand(request["ed"] >= 0, Status.BAD_VALUE, "the expiry date lies before 1970")
    find = _records_of_map if "ri" in request else _record_of_recipient
    count = _change(request, context, find(request, context))
    demand(count, Status.NOTHING_MATCHED, "no tracking record matches")
    return done(f"{count} record{'' if count == 1 else 's'} changed")


def _record_of_recipient(request: Request, context: Context) -> _Selection:
    recipient = normalized(request["to"])
    demand(recipient, Status.MISSING, "no recipient came")
    message = context.messages.of_envelope(request["en"])
    context.accounts.authenticate_owner(message.sender, request["ky"])
    return _Selection({"msgId": message.id, "to": recipient})


def _records_of_map(request: Request, context: Context) -> _Selection:
    """No user name comes with the map: the password says whose records are meant."""
    wanted, password = request["ri"], request["ky"]
    demand(wanted, Status.MISSING, "no field says which records to change")
    selection = _Selection(wanted)
    senders = [row[0] for row in context.store.rows(f"SELECT DISTINCT m.sender {_TABLES} WHERE {selection.condition}",
                                                    *selection.values)]
    demand(senders, Status.NOTHING_MATCHED, "no tracking record matches")
    if len(senders) == 1 or not password:
        context.accounts.authenticate_owner(senders[0], password)
        owners = senders
    else:
        owners = context.accounts.owners(senders, password)
        if not owners:
            raise Refusal(Status.WRONG_PASSWORD, "the password is that of no sender of these messages", counted=True)
        demand(len(owners) == 1, Status.BAD_VALUE, 'the records are of several senders: add the field "from"')
    selection.add("from", owners[0])
    return selection


def _change(request: Request, context: Context, selection: _Selection) -> int:
    changes: dict[str, Any] = {"modified": now_millis()}
    for tag, column in (("ls", "locked"), ("sm", "statusMessage"), ("ed", "expires")):
        if tag in request:
            changes[column] = request[tag]
    assignments = ", ".join(f"{column} = ?" for column in changes)
    return context.store.execute(
        f"UPDATE recipients SET {assignments} WHERE serial IN (SELECT r.serial {_TABLES} WHERE {selection.condition})",
        *changes.values(), *selection.values)
