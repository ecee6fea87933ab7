"""The command line."""

import argparse
import signal
from pathlib import Path
from typing import Callable, NoReturn, Sequence

from . import configuration, daemon, decryption, encryption, enrollment, keyserver, tracking  # noqa: F401
from .commands import COMMANDS
from .context import Context
from .output import complain, prepare, printable, write_line
from .server import ListenError, Server
from .store import StoreError
from .trace import Trace

SUCCESS, UNEXPECTED_FAILURE, WRONG_ARGUMENTS, STORE_FAILURE, PORT_FAILURE, OUTPUT_FAILURE = range(6)

_EPILOG = """\
Accounts of a new store: alice@example.com (wonderland), bob@example.com (builder),
carol@example.com (caravan), and the disabled dave@example.com (doorstop).

Exit codes: 0 ended by a signal or a stop request, 1 unexpected failure, 2 wrong arguments,
3 the store cannot be used, 4 the port cannot be listened on, 5 standard output cannot be written.
"""


def _number(least: int, most: int) -> Callable[[str], int]:
    def parse(text: str) -> int:
        if not text.isascii() or not text.isdigit() or not least <= int(text) <= most:
            raise argparse.ArgumentTypeError(f'"{text}" is not a number from {least} to {most}')
        return int(text)

    return parse


def _store_path(text: str) -> str:
    if not text:
        raise argparse.ArgumentTypeError("the file name is empty")
    if text.startswith(":") or text[:5].lower() == "file:":
        raise argparse.ArgumentTypeError(f"SQLite gives a meaning of its own to this name: write ./{text}")
    return text


def _folder(text: str) -> Path:
    folder = Path(text)
    if not folder.is_dir():
        raise argparse.ArgumentTypeError(f'"{text}" is not a folder')
    return folder.resolve()


def _answer(text: str) -> tuple[str, int]:
    code, _, status = text.partition("=")
    try:
        number = int(status)
    except ValueError:
        number = 1 << 16
    if code not in COMMANDS or not -32768 <= number <= 32767:
        raise argparse.ArgumentTypeError(f'"{text}" is not a command and a status, such as DE=20')
    return code, number


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        super().error(printable(message))  # it quotes the arguments


def _parser() -> argparse.ArgumentParser:
    parser = _Parser(
        "tarn-standin", usage="%(prog)s [OPTIONS]", epilog=_EPILOG, allow_abbrev=False,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        description="A stand-in for the secure-mail daemon, for development and demonstration. It encrypts nothing.")
    option = parser.add_argument
    option("--store", metavar="FILE", type=_store_path,
           help="SQLite file that keeps the state (default: in memory)")
    option("--port", metavar="N", type=_number(0, 65535), default=53007,
           help="port of the loopback interface, 0 for any free one (default: %(default)s)")
    option("--config-dir", metavar="DIR", type=_folder,
           help="folder of the envelope configuration files that requests may name (default: none may)")
    option("--idle", metavar="SECONDS", type=_number(0, 1_000_000), default=3600,
           help="seconds until a silent connection is reset, 0 for never (default: %(default)s)")
    option("--trace", action="store_true", help="print each request and reply on a line, secrets masked")
    option("--answer", metavar="CODE=STATUS", type=_answer, action="append", default=[], dest="answers",
           help="answer this command with this status and do nothing else; can be given several times")
    option("--delay", metavar="MS", type=_number(0, 1_000_000), default=0,
           help="milliseconds to wait before each reply")
    option("--reset-after", metavar="N", type=_number(0, 2**31 - 1),
           help="replies after which a connection is reset, at its next request")
    return parser


def _serve(settings: argparse.Namespace) -> int:
    context = Context(settings)
    ending_signals = (signal.SIGINT, signal.SIGTERM)
    for number in ending_signals:
        signal.signal(number, lambda *_: context.stopping.set())
    server = Server(context, Trace(settings.trace))
    where = "%s:%s" % server.server_address
    if not write_line(f"tarn-standin: listening on {where}, store {settings.store or 'in memory'}"):
        complain("standard output cannot be written")
        return OUTPUT_FAILURE
    server.run()
    for number in ending_signals:
        signal.signal(number, signal.SIG_IGN)  # one more would end the process before it can end well
    return SUCCESS


def main(arguments: Sequence[str] | None = None) -> int:
    prepare()
    settings = _parser().parse_args(arguments)
    try:
        return _serve(settings)
    except StoreError as error:
        complain(f"store {settings.store or 'in memory'}: {error}")
        return STORE_FAILURE
    except ListenError as error:
        complain(str(error))
        return PORT_FAILURE
    except Exception as error:  # nobody is shown a traceback
        complain(f"{type(error).__name__}: {error}")
        return UNEXPECTED_FAILURE
