"""Envelope configuration files: "key=value" lines, blank lines, and comments that begin with "#"."""

from dataclasses import dataclass, field
from pathlib import Path

from . import limits
from .accounts import State
from .commands import TEXT, command
from .context import Context
from .exchange import Reply, Request, done
from .status import Refusal, Status
from .texts import BLANKS, is_address, normalized
from .wire import to_bytes, to_text

_KNOWN_KEYS = frozenset("""
    bodytemplate.text.filename bodytemplate.text.mimetype bodytemplate.text.templateengine
    bodytemplate.text.fileencoding bodytemplate.html.filename bodytemplate.html.mimetype
    bodytemplate.html.templateengine bodytemplate.html.fileencoding inlinehtml messagebar.filename messagebar.mimetype
    messagebar.templateengine messagebar.fileencoding messagebar.helphost messagebar.logourl messagebar.logohref
    messagebar.securereplyurl hostname secureport unsecureport internal.url external.secure.url external.unsecure.url
    passwordexpired.url keyserver.token proxy.filename keyserver.host keyserver.externalurl keyserver.proxy
    keyserver.internalurl graphic.url enrollment.url gpt.baseurl gpt.token gpt.tokenalias accountid
    authentication.provider gpt.enable identity jceprovider lookupname masterkeybase openerhost openerurl
    registration.url rid securereplyhost securereplyurl signerinfo.privatekey securereply.token authframe.url
""".split())
_FAMILY = "algorithm."


@dataclass
class Configuration:
    values: dict[str, str] = field(default_factory=dict)
    line_problems: dict[str, str] = field(default_factory=dict)  # "line N" to what is wrong with it


def named_configuration(request: Request, context: Context) -> Configuration:
    """What the file that a request names in 'ep' says; nothing when it names none. Anybody can ask for a file, so it
    has to be in the folder for such files."""
    path = request["ep"]
    return _parse(_read(path, context.settings.config_dir)) if path else Configuration()


def _read(path: str, folder: Path | None) -> bytes:
    def unreadable(why: str) -> Refusal:
        return Refusal(Status.CONFIGURATION_UNREADABLE, f"the configuration file {path} cannot be read: {why}")

    if folder is None:
        raise unreadable("tarn-standin was started without --config-dir")
    try:
        place = (folder / path).resolve()
        allowed = folder in place.parents and place.is_file()
    except (OSError, RuntimeError, ValueError):
        allowed = False
    if not allowed:
        # One answer for all: nobody is to learn what there is elsewhere.
        raise unreadable("there is no such file in the folder given with --config-dir")
    try:
        with place.open("rb") as file:
            content = file.read(limits.CONFIGURATION_FILE + 1)
    except OSError as error:
        raise unreadable(error.strerror) from None
    if len(content) > limits.CONFIGURATION_FILE:
        raise unreadable(f"it is larger than {limits.CONFIGURATION_FILE} bytes")
    return content


def _parse(content: bytes) -> Configuration:
    configuration = Configuration()
    problems, values = configuration.line_problems, configuration.values
    for number, raw in enumerate(to_text(content).lstrip("\ufeff").split("\n"), 1):
        line = raw.strip(BLANKS)
        if not line or line.startswith("#"):
            continue
        key, equals, value = (part.strip(BLANKS) for part in line.partition("="))
        if len(to_bytes(line)) > limits.CONFIGURATION_LINE:
            problems[f"line {number}"] = f"is longer than {limits.CONFIGURATION_LINE} bytes"
        elif not (key and equals):
            problems[f"line {number}"] = "is not a key=value line"
        elif key in values:
            problems[f"line {number}"] = f"gives {key} again"
        else:
            values[key] = value
    return configuration


def _problems(configuration: Configuration) -> dict[str, str]:
    """What is wrong with the lines, the keys and their values: each problem under its line or key."""
    values = configuration.values
    problems = {key: _problem(key, value) for key, value in values.items()}
    if "hostname" not in values:
        problems["hostname"] = "is missing"
    if "keyserver.host" not in values and "keyserver.externalurl" not in values:
        problems["keyserver.host"] = "is missing, and so is keyserver.externalurl"
    return {**configuration.line_problems, **{key: problem for key, problem in problems.items() if problem}}


def _problem(key: str, value: str) -> str:
    if key not in _KNOWN_KEYS and not (key.startswith(_FAMILY) and key != _FAMILY):
        return "is not a known key"
    if not value:
        return "has no value"
    if key.endswith("port") and not _is_port(value):
        return "is not a port number from 1 to 65535"
    if (key.endswith("url") or key == "messagebar.logohref") and not _is_url(value):
        return "is not an http or https address"
    if (key.endswith("host") or key == "hostname") and any(character in value for character in " \t/"):
        return "is not a host name"
    if key in ("inlinehtml", "gpt.enable") and value not in ("true", "false"):
        return "is neither true nor false"
    return ""


def _is_port(text: str) -> bool:
    return text.isascii() and text.isdigit() and 1 <= int(text) <= 65535


def _is_url(text: str) -> bool:
    scheme, separator, rest = text.partition("://")
    if scheme not in ("http", "https") or not separator or not rest or rest.startswith("/"):
        return False
    return not any(character in text for character in ' \t"<>')


def _sender_problem(sender: str, context: Context) -> str:
    if not sender:
        return "is missing"
    if not is_address(sender):
        return "is not an e-mail address"
    account = context.accounts.find(sender)
    if account is None:
        return "has no account"
    return "" if account.state == State.ACTIVE else "has an account that is not active"


@command("VC", {"ep": TEXT, "fm": TEXT})
def verify_configuration(request: Request, context: Context) -> Reply:
    problems: dict[str, str] = {}
    status = Status.CONFIGURATION_WRONG
    if request["ep"]:
        try:
            problems = _problems(named_configuration(request, context))
        except Refusal as refusal:
            problems["file"] = refusal.message
            status = refusal.status
    sender_problem = _sender_problem(normalized(request["fm"]), context)
    if sender_problem:
        problems["sender"] = sender_problem
    if not problems:
        return done("nothing is wrong", ec={})
    named = dict(sorted(problems.items())[:limits.PROBLEMS])
    count = f"{len(problems)} problem{'' if len(problems) == 1 else 's'}"
    return Reply(status, f"{count}: " + "; ".join(f"{where}: {what}" for where, what in named.items()), {"ec": named})
