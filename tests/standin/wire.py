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
    if isinstance(value, (bool, int)):
        return struct.pack(">?" if isinstance(value, bool) else ">i", value)
    if isinstance(value, str):
        return value.encode()
    if isinstance(value, dict):
        return b"".join(sized(k) + sized(v) for k, v in sorted((k.encode(), v.encode()) for k, v in value.items()))
    return value


def long(number):
    return struct.pack(">q", number)


def parameter(tag, value):
    return tag.encode() + sized(encode(value))


def frame(code, *parameters):
    data = b"\0\7" + code.encode() + b"".join(parameter(*p) for p in parameters) + b"\xce\xde"
    return data + struct.pack(">I", zlib.crc32(data))


def request(code, values):
    """A frame with the values by their tags; those of a list come one by one under the same tag."""
    return frame(code, *((tag, value) for tag, given in values.items()
                         for value in (given if isinstance(given, list) else [given])))


def parameters(value, tag_size=2):
    found, at = [], 0
    while at < len(value):
        start = at + tag_size + 4
        end = start + struct.unpack_from(">i", value, at + tag_size)[0]
        found.append((value[at:at + tag_size].decode(), value[start:end]))
        at = end
    assert at == len(value)
    return dict(found) if tag_size else [item for _, item in found]


def array(value):
    return parameters(value, 0)


def mapping(value):
    items = [item.decode() for item in array(value)]
    return dict(zip(items[::2], items[1::2], strict=True))


def records(reply):
    return [mapping(parameters(item)["da"]) for item in array(reply["ri"])]


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), LIMIT)

    def receive(self, count):
        data = bytearray()
        while len(data) < count:
            block = self.socket.recv(min(count - len(data), 1 << 20))
            if not block:
                raise EOFError("closed by the daemon")
            data += block
        return bytes(data)

    def reply(self, code):
        read, found = self.receive(4), {}
        assert read == b"\0\7" + code.encode(), read
        while (tag := self.receive(2)) != b"\xce\xde":
            length = self.receive(4)
            value = self.receive(struct.unpack(">i", length)[0])
            read += tag + length + value
            assert tag.decode() not in found
            found[tag.decode()] = value
        assert self.receive(4) == struct.pack(">I", zlib.crc32(read + tag))
        return struct.unpack(">h", found.pop("st"))[0], found

    def send(self, code, **values):
        self.socket.sendall(request(code, values))

    def call(self, code, **values):
        """Status and reply. Tags that Python keeps for itself are written with an underscore: as_, or_."""
        self.send(code, **{tag.rstrip("_"): value for tag, value in values.items()})
        return self.reply(code)

    def done(self, code, **values):
        status, reply = self.call(code, **values)
        assert status == 0, (status, reply)
        return reply

    def login(self, user=ALICE):
        return mapping(self.done("LS", tc="", to=user, ky=SECRET[user])["sl"])

    def encrypt(self, *recipients, sender=ALICE, mime=b"Subject: Test\n\nHello\n", **more):
        return self.done("BE", tc="", sl=self.login(sender), fm=sender, to=list(recipients), **more, mm=mime)["en"]

    def decrypt(self, envelope, who, password=None, **more):
        return self.call("DE", ky=SECRET[who] if password is None else password, en=envelope, to=who, **more)

    def ask(self, envelope, who):
        return self.call("DE", en=envelope, to=who)

    def track(self, envelope, sender=ALICE):
        return {record["to"]: record for record in records(self.done("MI", ky=SECRET[sender], en=envelope))}

    def set(self, envelope, who, locked=False, message="", expires=0, password="wonderland"):
        return self.call("SI", ky=password, en=envelope, to=who, ls=locked, sm=message, ed=long(expires))
