"""Serves each connection in a thread of its own: a client that stalls holds up nobody."""

from __future__ import annotations

import errno
import os
import select
import signal
import socket
import threading
import time

from . import limits
from .connection import Connection, ConnectionLost
from .context import Context
from .dispatcher import dispatch
from .output import complain
from .reader import RequestReader
from .trace import Trace
from .wire import WireError, encode_frame

_FAREWELL_SECONDS = 2
_COMPLAINT_INTERVAL = 1
_RETRY_INTERVAL = 1


class ListenError(Exception):
    """The port cannot be listened on."""


class Server:
    def __init__(self, context: Context, trace: Trace) -> None:
        """Listens on the loopback interface, at the port of the settings."""
        self._context = context
        self._trace = trace
        self._complained = float("-inf")
        self._changed = threading.Condition()  # guards the connections
        self._connections: dict[int, Connection] = {}
        address = ("127.0.0.1", context.settings.port)
        try:
            self._listener = socket.create_server(address, backlog=socket.SOMAXCONN)
        except OSError as error:
            taken = error.errno == errno.EADDRINUSE
            why = "another program listens there" if taken else os.strerror(error.errno or 0)
            raise ListenError(f"cannot listen on {address[0]}:{address[1]}: {why}") from None
        self._listener.setblocking(False)
        # A byte in here ends the waiting for clients: a signal, a stop request, or a client that has left.
        self._bell, self._button = socket.socketpair()
        for end in (self._bell, self._button):
            end.setblocking(False)

    @property
    def port(self) -> int:
        return self._listener.getsockname()[1]

    def run(self) -> None:
        """Until the context says to stop, as the handlers of signals do."""
        signal.set_wakeup_fd(self._button.fileno(), warn_on_full_buffer=False)
        try:
            while not self._context.stopping.is_set():
                self._accept()
        finally:
            signal.set_wakeup_fd(-1)
            self._listener.close()
        self._end_connections()

    def _accept(self) -> None:
        self._wait([self._listener, self._bell])
        try:
            client, _ = self._listener.accept()
        except (BlockingIOError, ConnectionAbortedError):
            return
        except OSError as error:
            # Out of descriptors or memory, as a rule: somebody has to leave first.
            self._complain_about_newcomer(f"clients have to wait: {error.strerror}")
            self._wait([self._bell], _RETRY_INTERVAL)
            return
        self._take_in(client)

    def _wait(self, sockets: list[socket.socket], seconds: float | None = None) -> None:
        if self._bell in select.select(sockets, [], [], seconds)[0]:
            self._bell.recv(4096)

    def _ring(self) -> None:
        try:
            self._button.send(b"\0")
        except BlockingIOError:
            pass  # it has been rung often enough

    def _take_in(self, client: socket.socket) -> None:
        with self._changed:
            if len(self._connections) == limits.CONNECTIONS:
                client.close()
                self._complain_about_newcomer(f"a client is refused: there are {limits.CONNECTIONS} already")
                return
            self._context.connections_total += 1
            number = self._context.connections_total
            connection = Connection(client, number, self._context.settings.idle)
            self._connections[number] = connection
            self._context.connections_open += 1
        try:
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()
        except RuntimeError as error:
            self._complain_about_newcomer(f"a client is refused: {error}")
            self._forget(connection)

    def _complain_about_newcomer(self, why: str) -> None:
        """Clients that come again and again must not fill the terminal, or the disk that a log is on."""
        now = time.monotonic()
        if now - self._complained >= _COMPLAINT_INTERVAL:
            complain(why)
            self._complained = now

    def _serve(self, connection: Connection) -> None:
        try:
            self._answer_requests(connection)
        except WireError as error:
            complain(f"{connection}: bad request, byte {error.offset}: {error}; closed")
        except ConnectionLost as error:
            connection.reset_at_close()
            complain(f"{connection}: {error}; closed")
        except Exception as error:  # a fault of this program, which must not end it
            complain(f"{connection}: {type(error).__name__}: {error}; closed")
        finally:
            self._forget(connection)

    def _answer_requests(self, connection: Connection) -> None:
        settings, stopping = self._context.settings, self._context.stopping
        reader = RequestReader(connection.read)
        replies = 0
        while not stopping.is_set():
            request = reader.next()
            if request is None or stopping.is_set():
                return
            self._trace.print(connection.number, "->", request.code, request.parameters)
            if replies == settings.reset_after:
                connection.reset_at_close()
                return
            replies += 1
            parameters = dispatch(request, self._context).parameters()
            if settings.delay:
                connection.wait_while_open(settings.delay)
            self._trace.print(connection.number, "<-", request.code, parameters)
            connection.send(encode_frame(request.code, parameters))

    def _forget(self, connection: Connection) -> None:
        with self._changed:
            connection.close()
            self._context.connections_open -= 1
            del self._connections[connection.number]
            self._changed.notify_all()
        self._ring()

    def _end_connections(self) -> None:
        """Replies under way are given some time."""
        for direction in (socket.SHUT_RD, socket.SHUT_RDWR):
            with self._changed:
                for connection in self._connections.values():
                    connection.end(direction)
                self._changed.wait_for(lambda: not self._connections, _FAREWELL_SECONDS)
