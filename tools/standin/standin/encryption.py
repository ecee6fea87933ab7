"""BE: takes a message and makes its envelope."""

from . import limits
from .commands import DATA, MAP, RECIPIENT, TEXT, command
from .configuration import named_configuration
from .context import Context
from .envelope import CONTENT_TYPE, FILE_NAME, make_envelope
from .exchange import Reply, Request, done
from .languages import LANGUAGES
from .messages import Message
from .mime import ATTACHMENT, split_mime
from .passwords import random_id
from .status import Status, demand, demand_at_most
from .texts import is_address, normalized
from .wire import encode, encode_parameters

_LOCALES = ("en", "de", "fr")  # that get an envelope of their own
_DEFAULT_CONFIGURATION = {"external.secure.url": "http://127.0.0.1/", "hostname": "127.0.0.1"}


@command("BE", {"tc": TEXT, "sl": MAP, "fm": TEXT, "to": RECIPIENT, "cc": RECIPIENT, "bc": RECIPIENT, "ec": MAP,
                "ep": TEXT, "mm": DATA})
def build_envelope(request: Request, context: Context) -> Reply:
    sender = normalized(request["fm"])
    demand(is_address(sender), Status.BAD_VALUE, "the sender is not an e-mail address")
    _demand_session(request, sender, context)
    recipients = _recipients(request)
    configuration = _configuration(request, context)
    mime = request["mm"]
    split = split_mime(mime)
    message = Message(random_id(), sender, split.subject, split.sensitivity, configuration, recipients)
    demand_at_most(limits.SUBJECT, len(encode(message.subject)), "bytes of subject")
    context.messages.add(message, mime, sum(item.type == ATTACHMENT for item in split.items))

    language = LANGUAGES["en"]
    return done("the envelope is made; nothing in it is encrypted",
                en=make_envelope(message.id, sender), ct=CONTENT_TYPE, id=message.id, an=FILE_NAME, lc=language.locale,
                tb=language.plain_body(sender, message.subject), th=language.html_body(sender, message.subject),
                le=_localized_envelopes(message, context))


def _demand_session(request: Request, sender: str, context: Context) -> None:
    """A configuration given with the request replaces the login, as in a reply to a received envelope."""
    if "ec" in request:
        return
    token = request["sl"].get("token")
    demand(token is not None, Status.NO_SESSION, "neither a login session nor an envelope configuration came")
    user = context.accounts.session_user(token)
    demand(user, Status.NO_SESSION, "the login session is unknown or has expired: log in again")
    demand(user == sender, Status.NO_SESSION, "the login session is not the sender's")


def _recipients(request: Request) -> dict[str, str]:
    recipients: dict[str, str] = {}
    for kind in ("to", "cc", "bc"):
        for text in request.all(kind):
            address = normalized(text)
            if address:
                demand(is_address(address), Status.BAD_VALUE, f'the recipient "{text}" is not an e-mail address')
                recipients.setdefault(address, kind)
    demand(recipients, Status.MISSING, "there is no recipient")
    demand_at_most(limits.RECIPIENTS, len(recipients), "recipients")
    return recipients


def _configuration(request: Request, context: Context) -> dict[str, str]:
    configuration = {**named_configuration(request, context).values, **request["ec"]} or _DEFAULT_CONFIGURATION
    demand_at_most(limits.CONFIGURATION, len(encode(configuration)), "bytes of configuration")
    return configuration


def _localized_envelopes(message: Message, context: Context) -> list[bytes]:
    """One for each of a few languages, with the recipients who prefer it."""
    readers: dict[str, list[str]] = {locale: [] for locale in _LOCALES}
    for address in message.recipients:
        locale = context.accounts.locale_of(address)
        readers[locale if locale in readers else "en"].append(address)
    return [encode_parameters({
        "lc": locale, "rc": addresses, "en": "", "ct": CONTENT_TYPE,
        "tb": LANGUAGES[locale].plain_body(message.sender, message.subject),
        "th": LANGUAGES[locale].html_body(message.sender, message.subject)}.items())
        for locale, addresses in readers.items()]
