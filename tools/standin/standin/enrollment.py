"""EP and EU: enrolls a user, with a form and a confirmation."""

from . import limits
from .accounts import State
from .commands import INT, MAP, SECRET, TEXT, command
from .context import Context
from .exchange import Reply, Request, done
from .languages import LANGUAGES, language_of
from .passwords import verify_password
from .status import Status, demand
from .texts import BLANKS, is_address, normalized
from .wire import to_bytes

_FORM_STAGE, _CONFIRM_STAGE, _DONE_STAGE = 0, 1, 2
_QUESTIONS_TO_ANSWER = ("1", "2", "3")
_MIN_PASSWORD_LENGTH = 8

_QUESTIONS = ["What was the name of your first pet?", "In which town were you born?",
              "What was the name of your first school?", "What is your favourite book?",
              "What is the name of your oldest friend?"]


@command("EP", {"tc": TEXT, "ec": MAP, "ea": TEXT, "ul": TEXT}, uses_store=False)
def enrollment_parameters(request: Request, _: Context) -> Reply:
    address = normalized(request["ea"])
    demand(is_address(address), Status.BAD_VALUE, "the address to enroll is not an e-mail address")
    # Two domains show the other forms: one whose users sign on elsewhere, one whose users enroll with one click.
    single_sign_on = address.endswith("@sso.example.com")
    one_click = address.endswith("@oneclick.example.com")
    return done("enrollment parameters", su=int(single_sign_on), ou=int(one_click),
                qn=0 if single_sign_on or one_click else len(_QUESTIONS_TO_ANSWER), qe=1,
                al={locale: language.name for locale, language in LANGUAGES.items()},
                sq={str(number): question for number, question in enumerate(_QUESTIONS, 1)})


@command("EU", {"tc": TEXT, "ec": MAP, "ea": TEXT, "fn": TEXT, "ln": TEXT, "pw": SECRET, "pc": TEXT, "es": TEXT,
                "ul": TEXT, "or": INT, "el": INT, "zo": INT, "pp": SECRET, "pe": INT, "qa": MAP})
def enroll_user(request: Request, context: Context) -> Reply:
    address = normalized(request["ea"])
    if not is_address(address):
        return _refuse(request, {"emailAddress": "is not an e-mail address"})
    account = context.accounts.find(address)
    if account and account.state != State.UNCONFIRMED:
        return Reply(Status.ACCOUNT_EXISTS, "this address has an account already",
                     {"el": request["el"], "ve": {"emailAddress": "has an account already"}})
    if not context.accounts.is_enrollment_id(request["pc"].strip(BLANKS), address):
        return _refuse(request, {"enrollUuid": "is not the enrollment id given out for this address"})
    if request["el"] == _FORM_STAGE:
        return _take_form(request, address, context)
    if request["el"] == _CONFIRM_STAGE:
        return _confirm(request, address, context)
    return _refuse(request, {"enrollmentStage": "is neither 0 nor 1"})


def _refuse(request: Request, problems: dict[str, str], what: str = "the form") -> Reply:
    told = "; ".join(f"{name} {problem}" for name, problem in sorted(problems.items()))
    return Reply(Status.FORM_REFUSED, f"{what} is refused: {told}", {"el": request["el"], "ve": problems})


def _take_form(request: Request, address: str, context: Context) -> Reply:
    problems = _form_problems(request)
    if problems:
        return _refuse(request, problems)
    name = " ".join(request[tag].strip(BLANKS) for tag in ("fn", "ln"))
    answers = {question: answer for question, answer in _security_questions(request).values() if question and answer}
    context.accounts.enroll(address, name, language_of(request["ul"]).locale, request["pw"], answers)
    return done("the form is accepted; the enrollment is to be confirmed", el=_CONFIRM_STAGE,
                ve={"account": "unconfirmed", "emailAddress": address, "enrollmentStage": "1"})


def _confirm(request: Request, address: str, context: Context) -> Reply:
    account = context.accounts.find(address)
    if account is None:
        return _refuse(request, {"enrollmentStage": "comes before the form was accepted"}, "the enrollment")
    if not verify_password(request["pw"], account.password):
        return _refuse(request, {"password": "is not that of the accepted form"}, "the enrollment")
    context.accounts.confirm(address)
    return done("the account is active", el=_DONE_STAGE,
                ve={"account": "active", "emailAddress": address, "enrollmentStage": "2"})


def _security_questions(request: Request) -> dict[str, tuple[str, str]]:
    """The questions of the form and their answers, by their numbers in it."""
    form = {key: value.strip(BLANKS) for key, value in request["qa"].items()}
    return {number: (form.get(f"securityQuestion{number}", ""), form.get(f"securityAnswer{number}", ""))
            for number in _QUESTIONS_TO_ANSWER}


def _form_problems(request: Request) -> dict[str, str]:
    sender = normalized(request["es"])
    problems = {
        "firstName": _missing(request["fn"]),
        "lastName": _missing(request["ln"]),
        "password": _password_problem(request["pw"]),
        "senderEmailAddress": "" if not sender or is_address(sender) else "is not an e-mail address",
    }
    questions_demanded = request["or"] == 0
    asked: set[str] = set()
    for number, (question, answer) in _security_questions(request).items():
        problems[f"securityAnswer{number}"] = _secret_problem(answer)
        if questions_demanded:
            problems[f"securityAnswer{number}"] += _missing(answer)
            problems[f"securityQuestion{number}"] = _missing(question) or "is asked twice" * (question in asked)
            asked.add(question)
    return {name: problem for name, problem in problems.items() if problem}


def _missing(text: str) -> str:
    return "" if text.strip(BLANKS) else "is missing"


def _password_problem(password: str) -> str:
    if len(password) < _MIN_PASSWORD_LENGTH:
        return f"is shorter than {_MIN_PASSWORD_LENGTH} characters"
    has_letter = any(character.isalpha() or not character.isascii() for character in password)
    has_digit = any(character in "0123456789" for character in password)
    return _secret_problem(password) if has_letter and has_digit else "needs a letter and a digit"


def _secret_problem(secret: str) -> str:
    """What keeps a text from being a password or an answer."""
    if "\0" in secret:
        return "has a zero byte"
    return f"is longer than {limits.PASSWORD} bytes" if len(to_bytes(secret)) > limits.PASSWORD else ""
