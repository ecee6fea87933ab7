"""LS, KV and LT: logs in, and tells what the key server can do and which texts it has."""

from .accounts import enrollment_link
from .commands import SECRET, TEXT, command
from .configuration import named_configuration
from .context import Context
from .exchange import Reply, Request, done
from .languages import LANGUAGES
from .status import Refusal, Status, demand
from .texts import is_address, normalized

VERSION = "7.6.1"

_FEATURES = {
    "version": VERSION,
    "feature.enrollment": "true",
    "feature.expiration": "true",
    "feature.localizedText": "true",
    "feature.lock": "true",
    "feature.readByEnabled": "true",
    "feature.singleSignOn": "false",
    "product": "tarn-standin",
}


@command("LS", {"tc": TEXT, "to": TEXT, "ky": SECRET, "ep": TEXT})
def log_in(request: Request, context: Context) -> Reply:
    named_configuration(request, context)
    user = normalized(request["to"])
    demand(is_address(user), Status.BAD_VALUE, "the user name is not an e-mail address")
    try:
        context.accounts.authenticate(user, request["ky"])
    except Refusal as refusal:
        if refusal.status not in (Status.NOT_ENROLLED, Status.ENROLLMENT_UNFINISHED):
            raise
        return Reply(Status.ENROLLMENT_UNFINISHED, refusal.message,
                     {"lk": enrollment_link(context.accounts.enrollment_id(user))})
    return done("logged in", sl=context.accounts.open_session(user))


@command("KV", {"ep": TEXT}, uses_store=False)
def key_server_version(request: Request, context: Context) -> Reply:
    named_configuration(request, context)
    return done("key server features", kd=_FEATURES)


@command("LT", {"ep": TEXT}, uses_store=False)
def localized_texts(request: Request, context: Context) -> Reply:
    named_configuration(request, context)
    return done(f"{len(LANGUAGES)} locales",
                sl={locale: language.name for locale, language in LANGUAGES.items()},
                tb={locale: language.plain_body() for locale, language in LANGUAGES.items()},
                th={locale: language.html_body() for locale, language in LANGUAGES.items()})
