"""ST and SD: reports the daemon's state, and stops it."""

import os
import statistics

from .commands import command
from .context import Context
from .exchange import Reply, Request, done
from .keyserver import VERSION
from .status import Status
from .wire import Long

_BUILD_NUMBER = 7


@command("ST", {}, uses_store=False)
def daemon_status(_: Request, context: Context) -> Reply:
    encryptions, decryptions = context.encryptions or [0.0], context.decryptions or [0.0]
    memory = _memory("SC_PHYS_PAGES")
    return Reply(Status.OK, "running", {
        "v ": VERSION, "bn": _BUILD_NUMBER, "bt": Long(context.started),
        "ct": context.connections_total, "ca": context.connections_open,
        "mf": Long(_memory("SC_AVPHYS_PAGES")), "mt": Long(memory), "mm": Long(memory),
        "bs": Long(len(context.encryptions) - context.encryptions_failed), "bf": Long(context.encryptions_failed),
        "ss": Long(len(context.decryptions)), "sa": statistics.fmean(decryptions), "sd": statistics.pstdev(decryptions),
        "es": Long(len(context.encryptions)), "ea": statistics.fmean(encryptions), "ed": statistics.pstdev(encryptions),
    })


def _memory(pages: str) -> int:
    """Bytes of the machine; 0 where the system does not tell."""
    if pages not in getattr(os, "sysconf_names", {}):
        return 0
    return os.sysconf(pages) * os.sysconf("SC_PAGESIZE")


@command("SD", {}, uses_store=False)
def stop_daemon(_: Request, context: Context) -> Reply:
    context.stopping.set()
    return done("stopping")
