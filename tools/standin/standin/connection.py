"""A client's connection. Its operations wait, for the idle limit at the longest."""

import contextlib
import os
import socket
import struct

_BLOCK = 1 << 16


class ConnectionLost(Exception):
    """The client sends nothing, takes nothing, or is gone."""


class Connection:
    def __init__(self, client: socket.socket, number: int, idle: int) -> None:
        self.number = number
        self._socket = client
        self._idle = idle
        client.settimeout(idle or None)
        with contextlib.suppress(OSError):  # it is gone already, as in what follows
            client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def __str__(self) -> str:
        return f"connection {self.number}"

    def read(self) -> bytes:
        """What has come; nothing at the end, or when the client is gone."""
        try:
            return self._socket.recv(_BLOCK)
        except socket.timeout:
            raise ConnectionLost(f"nothing came for {self._idle} seconds") from None
        except OSError:
            return b""

    def send(self, frame: bytes) -> None:
        rest = memoryview(frame)
        try:
            while rest:
                rest = rest[self._socket.send(rest):]
        except socket.timeout:
            raise ConnectionLost("the client does not take its reply") from None
        except OSError as error:
            raise ConnectionLost(error.strerror) from None

    def reset_at_close(self) -> None:
        """The closing will look like a lost connection: a client that waits for a reply waits on after an orderly
        end."""
        linger = struct.pack("hh" if os.name == "nt" else "ii", 1, 0)
        with contextlib.suppress(OSError):
            self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, linger)

    def end(self, direction: int) -> None:
        """Called by another thread: what is under way in this direction fails."""
        with contextlib.suppress(OSError):
            self._socket.shutdown(direction)
