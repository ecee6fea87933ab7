"""Answers requests, one at a time and each in one transaction where it uses the store."""

import time

from .commands import COMMANDS
from .context import Context
from .exchange import Reply, Request
from .output import complain
from .status import Refusal, Status, demand_at_most
from .store import StoreError
from .wire import encode, tag_name


def dispatch(request: Request, context: Context) -> Reply:
    told = dict(context.settings.answers).get(request.code)
    if told is not None:
        return Reply(told, "answered as --answer says")
    with context.lock:
        start = time.perf_counter()
        reply = _answer(request, context)
        millis = (time.perf_counter() - start) * 1000
        if request.code == "BE":
            context.encryptions.append(millis)
            context.encryptions_failed += reply.status != Status.OK
        elif request.code == "DE":
            context.decryptions.append(millis)
    return reply


def _answer(request: Request, context: Context) -> Reply:
    try:
        return _handle(request, context)
    except Refusal as refusal:
        return Reply.to_refusal(refusal)
    except StoreError as error:
        complain(f"store: {error}")
        return Reply(Status.STORE_FAILED, f"the store failed: {error}")
    except Exception as error:  # a fault of this program, which must not end it
        complain(f"{tag_name(request.code)}: {type(error).__name__}: {error}")
        return Reply(Status.INTERNAL_ERROR, f"the request failed: {error}")


def _handle(request: Request, context: Context) -> Reply:
    command = COMMANDS[request.code]
    for tag, value in request.parameters:
        demand_at_most(command.rules[tag].max_size, len(encode(value)), f"bytes of {tag_name(tag)}")
    if not command.uses_store:
        return command.handler(request, context)
    with context.store.transaction():
        try:
            return command.handler(request, context)
        except Refusal as refusal:
            if not refusal.counted:
                raise
            return Reply.to_refusal(refusal)
