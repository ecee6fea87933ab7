"""The wire format and a client of it, written for the tests of tarn-standin."""

import socket
import struct
import zlib

LIMIT = 10  # seconds that any wait may take

ALICE, BOB, CAROL, DAVE = (name + "@example.com" for name in ("alice", "bob", "carol", "dave"))
SECRET = {ALICE: "wonderland", BOB: "builder", CAROL: "caravan", DAVE: "doorstop"}


def sized(data):
    return struct.pack(">i", len(data)) + data


def encode(value):
    if isinstance(value, bool):
        return b"\1" if value else b"\0"
    if isinstance(value, int):
        return struct.pack(">i", value)
    if isinstance(value, str):
        return value.encode()
    if isinstance(value, dict):
        return b"".join(sized(k) + sized(v) for k, v in sorted((k.encode(), v.encode()) for k, v in value.items()))
    return value


def long(number):
    return struct.pack(">q", number)


def parameter(tag, value):
    return tag.encode() + sized(encode(value))


def body(code, *parameters):
    return b"\0\7" + code.encode() + b"".join(parameter(*p) for p in parameters) + b"\xce\xde"


def frame(code, *parameters):
    data = body(code, *parameters)
    return data + struct.pack(">I", zlib.crc32(data))


def array(value):
    items, at = [], 0
    while at < len(value):
        end = at + 4 + struct.unpack_from(">i", value, at)[0]
        items.append(value[at + 4:end])
        at = end
    assert at == len(value)
    return items


def mapping(value):
    items = [item.decode() for item in array(value)]
    return dict(zip(items[::2], items[1::2], strict=True))


def parameters(value):
    found, at = {}, 0
    while at < len(value):
        end = at + 6 + struct.unpack_from(">i", value, at + 2)[0]
        found[value[at:at + 2].decode()] = value[at + 6:end]
        at = end
    assert at == len(value)
    return found


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), LIMIT)

    def close(self):
        self.socket.close()

    def receive(self, count):
        data = bytearray()
        while len(data) < count:
            block = self.socket.recv(min(count - len(data), 1 << 20))
            if not block:
                raise ConnectionError("closed by the daemon")
            data += block
        return bytes(data)

    def reply(self, code):
        head = self.receive(4)
        read = [head]
        found = {}
        while (tag := self.receive(2)) != b"\xce\xde":
            length = self.receive(4)
            value = self.receive(struct.unpack(">i", length)[0])
            read += [tag, length, value]
            assert tag.decode() not in found
            found[tag.decode()] = value
        crc = zlib.crc32(b"".join(read) + b"\xce\xde")
        assert self.receive(4) == struct.pack(">I", crc)
        assert head == b"\0\7" + code.encode()
        return struct.unpack(">h", found.pop("st"))[0], found

    def call(self, code, *sent):
        self.socket.sendall(frame(code, *sent))
        return self.reply(code)

    def login(self, user=ALICE):
        status, reply = self.call("LS", ("tc", ""), ("to", user), ("ky", SECRET[user]))
        assert status == 0, (status, reply)
        return mapping(reply["sl"])

    def encrypt(self, *recipients, sender=ALICE, mime=b"Subject: Test\n\nHello\n", **extra):
        sent = [("tc", ""), ("sl", self.login(sender)), ("fm", sender)] + [("to", r) for r in recipients]
        status, reply = self.call("BE", *sent, *extra.items(), ("mm", mime))
        assert status == 0, (status, reply)
        return reply["en"]

    def decrypt(self, envelope, who, password=None, *more):
        password = SECRET[who] if password is None else password
        return self.call("DE", ("ky", password), ("en", envelope), ("to", who), *more)

    def ask(self, envelope, who):
        return self.call("DE", ("en", envelope), ("to", who))

    def track(self, envelope, sender=ALICE):
        status, reply = self.call("MI", ("ky", SECRET[sender]), ("en", envelope))
        assert status == 0, (status, reply)
        records = [mapping(parameters(item)["da"]) for item in array(reply["ri"])]
        return {record["to"]: record for record in records}

    def set(self, envelope, who, locked=False, message="", expires=0, password="wonderland"):
        return self.call("SI", ("ky", password), ("en", envelope), ("to", who), ("ls", locked), ("sm", message),
                         ("ed", long(expires)))
