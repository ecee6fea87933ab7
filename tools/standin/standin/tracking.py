"""MI and SI: tells and changes what is tracked of the recipients of messages."""

from typing import Any, NamedTuple

from .commands import DATA, FLAG, INT, LONG, MAP, SECRET, STATUS_MESSAGE, TEXT, command
from .configuration import named_configuration
from .context import Context
from .exchange import Reply, Request, done
from .status import Refusal, Status, demand
from .texts import normal_address, now_millis
from .wire import encode_parameters


class _Field(NamedTuple):
    expression: str  # over the tables of _TABLES
    is_text: bool = False


# What a record tells; also what can be sorted by and selected with.
_FIELDS = {
    "FLAGS": _Field("(r.locked * 2)"),
    "attachmentCount": _Field("m.attachments"),
    "createDate": _Field("m.created"),
    "expiryDate": _Field("r.expires"),
    "firstOpenDate": _Field("r.firstOpened"),
    "from": _Field("m.sender", True),
    "id": _Field("r.serial"),
    "lastFailOpenDate": _Field("r.lastFailed"),
    "lastModifiedDate": _Field("r.modified"),
    "lastOpenDate": _Field("r.lastOpened"),
    "messageSize": _Field("m.size"),
    "msgId": _Field("m.id", True),
    "numTries": _Field("r.tries"),
    "recipient": _Field("r.address", True),
    "recipientCount": _Field("m.recipients"),
    "recipientType": _Field("r.type", True),
    "sensitivity": _Field("m.sensitivity"),
    "statusLocked": _Field("r.locked"),
    "statusMsg": _Field("r.statusMessage", True),
    "subject": _Field("m.subject", True),
    "to": _Field("r.address", True),
}
_TABLES = "FROM recipients r JOIN messages m ON m.id = r.message"
_SELECT = f"SELECT {', '.join(field.expression for field in _FIELDS.values())} {_TABLES}"


def _field(name: str) -> _Field:
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
    sender = normal_address(request["fm"])
    demand(sender, Status.MISSING, "neither an envelope nor a user name came")
    field = _field(request["sf"] or "createDate")
    context.accounts.authenticate_owner(sender, request["ky"])
    total = context.store.value(f"SELECT count(*) {_TABLES} WHERE m.sender = ?", sender)
    # Start and size of the page are unsigned numbers on the caller's side.
    start, size = (request[tag] & 0xFFFFFFFF for tag in ("si", "mx"))
    collation = " COLLATE NOCASE" if field.is_text else ""
    direction = "ASC" if request["as"] else "DESC"
    rows = context.store.rows(f"{_SELECT} WHERE m.sender = ? ORDER BY {field.expression}{collation} {direction},"
                              " r.serial LIMIT ? OFFSET ?", sender, size, start)
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
        field = _field(name)
        expression = field.expression if field.is_text else f"CAST({field.expression} AS TEXT)"
        self.condition += f"{' AND ' if self.condition else ''}{expression} = ?"
        self.values.append(normal_address(value) if name in ("to", "recipient", "from") else value)


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
    recipient = normal_address(request["to"])
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
    if "ls" in request:
        changes["locked"] = int(request["ls"])
    if "sm" in request:
        changes["statusMessage"] = request["sm"]
    if "ed" in request:
        changes["expires"] = int(request["ed"])
    assignments = ", ".join(f"{column} = ?" for column in changes)
    return context.store.execute(
        f"UPDATE recipients SET {assignments} WHERE serial IN (SELECT r.serial {_TABLES} WHERE {selection.condition})",
        *changes.values(), *selection.values)
