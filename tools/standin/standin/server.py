"""Serves each connection in a thread of its own: a client that stalls holds up nobody."""

import errno
import os
import socket
import socketserver
import sys
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


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True
    block_on_close = False
    allow_reuse_address = os.name == "posix"
    request_queue_size = socket.SOMAXCONN
    timeout = 0.1  # seconds between two looks at whether to stop

    def __init__(self, context: Context, trace: Trace) -> None:
        """Listens on the loopback interface, at the port of the settings."""
        self._context = context
        self._trace = trace
        self._complained = float("-inf")
        self._deaf = threading.Event()  # nobody listens any more
        self._changed = threading.Condition()  # guards the connections
        self._connections: dict[socket.socket, Connection] = {}
        address = ("127.0.0.1", context.settings.port)
        try:
            super().__init__(address, socketserver.BaseRequestHandler)
        except OSError as error:
            taken = error.errno == errno.EADDRINUSE
            why = "another program listens there" if taken else os.strerror(error.errno or 0)
            raise ListenError(f"cannot listen on {address[0]}:{address[1]}: {why}") from None
        self.socket.setblocking(False)

    def run(self) -> None:
        """Until the context says to stop, as the handlers of signals do."""
        with self:
            while not self._context.stopping.is_set():
                self.handle_request()
        self._deaf.set()
        self._end_connections()

    def get_request(self) -> tuple[socket.socket, object]:
        try:
            return super().get_request()
        except (BlockingIOError, ConnectionAbortedError):
            raise  # the client has gone again
        except OSError as error:
            # Out of descriptors or memory, as a rule: somebody has to leave first.
            self._complain_about_newcomer(f"clients have to wait: {error.strerror}")
            self._context.stopping.wait(_RETRY_INTERVAL)
            raise

    def process_request(self, request: socket.socket, client_address: object) -> None:
        with self._changed:
            if len(self._connections) == limits.CONNECTIONS:
                request.close()
                self._complain_about_newcomer(f"a client is refused: there are {limits.CONNECTIONS} already")
                return
            self._context.connections_total += 1
            self._context.connections_open += 1
            self._connections[request] = Connection(request, self._context.connections_total,
                                                    self._context.settings.idle)
        super().process_request(request, client_address)

    def handle_error(self, request: socket.socket, client_address: object) -> None:
        self._complain_about_newcomer(f"a client is refused: {sys.exc_info()[1]}")

    def _complain_about_newcomer(self, why: str) -> None:
        """Clients that come again and again must not fill the terminal, or the disk that a log is on."""
        now = time.monotonic()
        if now - self._complained >= _COMPLAINT_INTERVAL:
            complain(why)
            self._complained = now

    def shutdown_request(self, request: socket.socket) -> None:
        """Only closes it: whether that is an orderly end is said before."""
        with self._changed:
            del self._connections[request]
            request.close()
            self._context.connections_open -= 1
            self._changed.notify_all()

    def finish_request(self, request: socket.socket, client_address: object) -> None:
        connection = self._connections[request]
        try:
            self._answer_requests(connection)
        except WireError as error:
            complain(f"{connection}: bad request, byte {error.offset}: {error}; closed")
        except ConnectionLost as error:
            connection.reset_at_close()
            complain(f"{connection}: {error}; closed")
        except Exception as error:  # a fault of this program, which must not end it
            complain(f"{connection}: {type(error).__name__}: {error}; closed")

    def _answer_requests(self, connection: Connection) -> None:
        settings, stopping = self._context.settings, self._context.stopping
        reader = RequestReader(connection.read)
        replies = 0
        while request := reader.next():
            if stopping.is_set():
                connection.reset_at_close()
                return
            self._trace.print(connection.number, "->", request.code, request.parameters)
            if replies == settings.reset_after:
                connection.reset_at_close()
                return
            replies += 1
            parameters = dispatch(request, self._context).parameters()
            stopping.wait(settings.delay / 1000)
            if stopping.is_set():
                self._deaf.wait()  # a client that has been told of the end can rely on it
            self._trace.print(connection.number, "<-", request.code, parameters)
            connection.send(encode_frame(request.code, parameters))

    def _end_connections(self) -> None:
        """Replies under way are given some time."""
        for direction in (socket.SHUT_RD, socket.SHUT_RDWR):
            with self._changed:
                for connection in self._connections.values():
                    connection.end(direction)
                self._changed.wait_for(lambda: not self._connections, _FAREWELL_SECONDS)
