"""DE: opens an envelope, or tells what that would need."""

import re

from .accounts import enrollment_link
from .commands import DATA, FLAG, SECRET, TEXT, command
from .configuration import named_configuration
from .context import Context
from .exchange import Reply, Request, done
from .messages import Message
from .mime import Item, split_mime
from .status import Refusal, Status, demand
from .texts import normalized, now_millis
from .wire import Secret, Value, encode_parameters

_SENSITIVITY_UNKNOWN = -1


@command("DE", {"ky": SECRET, "en": DATA, "ep": TEXT, "to": TEXT, "sk": SECRET, "po": FLAG})
def open_envelope(request: Request, context: Context) -> Reply:
    try:
        named_configuration(request, context)
        message = context.messages.of_envelope(request["en"])
    except Refusal as refusal:
        return Reply(refusal.status, refusal.message, {"ms": _SENSITIVITY_UNKNOWN})
    if request["po"] and not any(tag in request for tag in ("ky", "to", "sk")):
        return done("the recipients of the message", id=message.id, ms=message.sensitivity,
                    tr=message.addresses_of("to"), tc=message.addresses_of("cc"))
    return _Opening(request, context, message).run()


class _Opening:
    """One attempt, or question, about one stored message."""

    def __init__(self, request: Request, context: Context, message: Message) -> None:
        self._request = request
        self._accounts = context.accounts
        self._messages = context.messages
        self._message = message
        self._password = request["ky"]
        self._who = normalized(request["to"])

    def run(self) -> Reply:
        authenticated = by_key = self._identify_by_key()
        try:
            if not by_key and self._request["sk"] and not self._password:
                raise Refusal(Status.SESSION_KEY_INVALID, "the session key is not valid or has expired")
            if not self._who:
                self._identify_by_password()
                authenticated = True
        except Refusal as refusal:
            return self._refuse(refusal)
        try:
            self._demand_access()
            self._accounts.demand_standing(self._who)
            if not authenticated:
                self._authenticate()
        except Refusal as refusal:
            if self._password or by_key:
                self._messages.note_failed(self._message.id, self._who)
            return self._refuse(refusal)
        return self._open()

    def _identify_by_key(self) -> bool:
        key = self._request["sk"]
        holder = self._messages.key_holder(self._message.id, key) if key else None
        if holder is None or self._who not in ("", holder):
            return False
        self._who = holder
        return True

    def _identify_by_password(self) -> None:
        demand(self._password, Status.PASSWORD_NEEDED, "a password is needed")
        candidates = dict.fromkeys([*self._message.recipients, self._message.sender])
        owners = self._accounts.owners(list(candidates), self._password)
        demand(owners, Status.WRONG_PASSWORD, "the password is that of no recipient, nor the sender's")
        self._who = owners[0]

    def _demand_access(self) -> None:
        """Whether the message is meant for the asker, and still open."""
        tracking = self._messages.tracking(self._message.id, self._who)
        if tracking is None:
            demand(self._who == self._message.sender, Status.NOT_A_RECIPIENT, "the message is not for this address")
            return
        demand(not (tracking.locked and tracking.status_message), Status.LOCKED_WITH_MESSAGE, tracking.status_message)
        demand(not tracking.locked, Status.LOCKED, "the sender has locked the message")
        demand(not 0 < tracking.expires <= now_millis(), Status.EXPIRED, "the message has expired")

    def _authenticate(self) -> None:
        """Without a password, what is needed is the answer."""
        if self._password:
            self._accounts.authenticate(self._who, self._password)
            return
        demand(not self._messages.is_kept_open(self._message.id, self._who), Status.SESSION_KEY_ALIVE,
               "the message is kept open: its session key or the password opens it")
        demand(self._who != self._message.sender, Status.ASKED_BY_SENDER,
               "this address sent the message: its own password opens it")
        raise Refusal(Status.PASSWORD_NEEDED, "a password is needed")

    def _refuse(self, refusal: Refusal) -> Reply:
        reply = Reply.to_refusal(refusal)
        reply.values.update(id=self._message.id, ms=self._message.sensitivity, fm=self._message.sender)
        if refusal.status in (Status.NOT_ENROLLED, Status.ENROLLMENT_UNFINISHED):
            identifier = self._accounts.enrollment_id(self._who)
            reply.values.update(uu=identifier, lk=enrollment_link(identifier))
        return reply

    def _open(self) -> Reply:
        message = self._message
        self._messages.note_opened(message.id, self._who)
        items = split_mime(self._messages.mime_of(message.id)).items
        key = self._messages.keep_open(message.id, self._who) if self._request["po"] else ""
        return done(f"opened for {self._who}", id=message.id, ms=message.sensitivity, ku=Secret(key),
                    ec=message.configuration, fm=message.sender, sj=message.subject,
                    tr=message.addresses_of("to"), tc=message.addresses_of("cc"), da=[_entry(item) for item in items])


def _entry(item: Item) -> bytes:
    values: dict[str, Value] = {"ty": item.type, "fl": item.flags, "fn": re.split(r"[/\\]", item.name)[-1],
                                "on": item.name, "fc": item.content_type, "da": item.data}
    return encode_parameters(values.items())
