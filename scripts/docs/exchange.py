"""The exchange in docs/protocol.md is what the library does: each row's bytes are what the row says, the library sends
exactly the request, and from exactly the reply it reads what the page tells."""

import ctypes
import re
import socket
import struct
import subprocess
import sys
import threading
import zlib

from documents import ROOT, document, source

PAGE = "docs/protocol.md"
LIBRARY = ROOT / "build/linux/lib/libTarnRemoteClient.so"
PORT, LIMIT = 53007, 20  # seconds


def rows(kind):
    """(bytes, what they are read as) for each row of the table below its marker."""
    table = source(PAGE).partition(f"<!-- exchange: {kind} -->\n\n")[2].partition("\n\n")[0]
    for row in table.splitlines()[2:]:
        data, value, _ = (cell.strip() for cell in row.strip("|").split("|"))
        yield bytes.fromhex(data.strip("`")), value


def message(kind):
    return b"".join(data for data, _ in rows(kind))


def wrong_rows(kind):
    for data, value in rows(kind):
        meant = value.strip('"').encode() if '"' in value else int(value).to_bytes(len(data), "big") if value else data
        if data != meant:
            yield f"{PAGE}: {kind}: {data.hex(' ')} is not {value}"
    whole = message(kind)
    if whole[-4:] != struct.pack(">I", zlib.crc32(whole[:-4])):
        yield f"{PAGE}: {kind}: the CRC is wrong"


def call_library():
    """Answers the library's request with the page's reply. Ends with the request, the status and the flags as text."""
    server = socket.create_server(("127.0.0.1", PORT))
    received = bytearray()

    def serve():
        connection = server.accept()[0]
        while len(received) < len(message("request")) and (data := connection.recv(4096)):
            received.extend(data)
        connection.sendall(message("reply"))
        connection.recv(1)  # until the process ends

    threading.Thread(target=serve, daemon=True).start()
    library = ctypes.CDLL(str(LIBRARY))
    flags = [ctypes.c_uint8(9) for _ in range(3)]
    path = re.search(r"configuration file `(.*?)`", source(PAGE)).group(1)
    status = library.GetKeyServerInfo((path + "\0").encode("utf-16-le"), *map(ctypes.byref, flags),
                                      ctypes.create_string_buffer(32766))
    print(received.hex(), status, *(flag.value for flag in flags))


def check():
    for kind in ("request", "reply"):
        yield from wrong_rows(kind)
    shortest = bytes.fromhex(re.search(r"no parameters: `([0-9A-F ]+)`", source(PAGE)).group(1))
    if shortest != b"\0\7ST\xce\xde" + struct.pack(">I", zlib.crc32(b"\0\7ST\xce\xde")):
        yield f"{PAGE}: the shortest request is wrong"
    try:
        done = subprocess.run(["unshare", "--net", "--map-root-user", "sh", "-c", 'ip link set lo up && exec "$@"', "-",
                               sys.executable, "-B", __file__], text=True, capture_output=True, timeout=LIMIT)
    except subprocess.TimeoutExpired:
        yield f"{PAGE}: the library waits for more than the reply that is shown, or sends less than the request"
        return
    # The third flag is left as it was: the reply tells nothing of localized texts.
    expected = f"{message('request').hex()} 0 1 1 9"
    if done.returncode != 0 or done.stdout.strip() != expected:
        yield f"{PAGE}: the library did {done.stdout.strip() or done.stderr.strip()}, the page says {expected}"


if __name__ == "__main__":
    call_library()
