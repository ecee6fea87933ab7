"""The tags of the wire protocol are stated by the library's code, by the Wireshark dissector and by the table in
docs/protocol.md: all three agree on what each is and where it appears."""

import re

from documents import document, source, tracked

PAGE, DISSECTOR = "docs/protocol.md", "tools/wireshark/tarn.lua"
# The kinds that a call or a field of the library can have; the code does not tell texts from bytes, and one function
# logs and sends texts and ints.
WRITES = {"writeBoolParam": {"flag"}, "writeIntParam": {"int"}, "writeLongParam": {"long"},
          "writeStringMapParam": {"map"}, "sendLogged": {"text", "int"}}
FIELDS = {"std::int16_t": {"short"}, "std::int32_t": {"int"}, "std::int64_t": {"long"}, "double": {"double"},
          "std::string": {"text", "bytes"}, "std::vector<std::string>": {"array"}, "StringMap": {"map"}}


def documented():
    """(tag, kind, place) for each place in which the table says that a tag appears."""
    tables = [table for table in document(PAGE).tables if table.head[0] == "tag"]
    codes = [row[0].strip("`") for table in document(PAGE).tables if table.head[0] == "code" for row in table.rows]
    for table in tables:
        for tag, kind, _, requests, replies in table.rows:
            tag = tag.strip("`")
            yield from ((tag, kind, f"{code} request") for code in re.findall(r"\b[A-Z]{2}\b", requests))
            if replies == "all":
                replies = " ".join(codes)
            yield from ((tag, kind, f"{code} reply") for code in re.findall(r"\b[A-Z]{2}\b", replies))
            yield from ((tag, kind, f"item of {items}") for items in re.findall(r"`(\w\w)`", replies))


def dissected():
    text = source(DISSECTOR)
    table = re.search(r"parameter_fields = \[\[(.*?)\]\]", text, re.DOTALL).group(1)
    kinds = dict(re.findall(r"([a-z.]+) ([a-z]+) [^,\n]+", table))

    def found(keys, place):
        for key in keys.split():
            yield key[:2].ljust(2), kinds[key].replace("items", "collection"), place

    login = re.search(r'local login = "(.*?)"', text).group(1)
    for items, keys in re.findall(r'rules\["(\w\w)[\w.]*"\]\.item = rules_of\("(.*?)"\)', text):
        yield from found(keys, f"item of {items}")
    for code, request, has_login, reply in re.findall(
            r'^  ([A-Z]{2}) = command\(".*?", "(.*?)", (login(?: \.\. )?)?(?:"(.*?)")?\)', text, re.MULTILINE):
        yield from found(request, f"{code} request")
        yield from found(f"st em cd {login if has_login else ''} {reply}", f"{code} reply")


def requests():
    """(tag, possible kinds, place) for each parameter that the library sends."""
    text = "\n".join(source(name) for name in sorted(tracked()) if re.match(r"src/client/.*\.cpp$", name))
    helpers = dict(re.findall(r"^void (send\w+)\([^{;]*\)\n\{\n(.*?)^\}", text, re.MULTILINE | re.DOTALL))

    def sent(code):
        for function, argument in re.findall(r'\b(\w+)\((?:(?:call\.)?out, )?(?:tag\("(..)"\))?', code):
            if argument:
                yield argument, frozenset(WRITES.get(function, {"text"}))
            elif function in helpers:
                yield from sent(helpers[function])

    for code, body in re.findall(r'beginCommand\(code\("(..)"\)\);(.*?)endCommand\(\)', text, re.DOTALL):
        yield from ((tag, kinds, f"{code} request") for tag, kinds in sent(body))


def replies():
    """The same for each parameter that the library reads."""
    text = "\n".join(source(name) for name in sorted(tracked()) if re.match(r"src/remote/.*\.h$", name))
    text = re.sub(r"WithFields<\w+, (\w+)>", r"\1", re.sub(r"WithFields<\w+>", "RemoteResponse", text))
    aliases = dict(re.findall(r"using (\w+) = (\S+);", text))
    classes = {name: (base, body) for name, base, body in re.findall(
        r"^(?:class|struct) (\w+)(?: final)?(?: : public (\w+))?\n\{\n(.*?)^\};", text, re.MULTILINE | re.DOTALL)}

    def read(name, place):
        base, body = classes[name]
        types = dict((field, kind) for kind, field in re.findall(r"^    ([\w:<>]+) (\w+)(?: = .*?)?;", body,
                                                                 re.MULTILINE))
        for tag, field in re.findall(r'visit\(tag\("(..)"\), (\w+)\)', body):
            kind = aliases.get(types[field], types[field])
            if item := re.search(r"_ptr<(\w+)>", kind):
                yield tag, frozenset({"collection"}), place
                yield from read(item.group(1), f"item of {tag}")
            else:
                yield tag, frozenset(FIELDS[kind]), place
        if base and place.endswith("reply"):
            yield from read(base, place)

    for name, (_, body) in classes.items():
        for code in re.findall(r'readResponse\(code\("(..)"\), stream\)', body):
            yield from read(name, f"{code} reply")


def check():
    table, lua = set(documented()), set(dissected())
    for tag, kind, place in sorted(table - lua):
        yield f"{PAGE}: '{tag}', {kind}, {place}: not so in {DISSECTOR}"
    for tag, kind, place in sorted(lua - table):
        yield f"{DISSECTOR}: '{tag}', {kind}, {place}: not so in {PAGE}"
    code = {(tag, place): kinds for tag, kinds, place in (*requests(), *replies())}
    listed = {(tag, place): kind for tag, kind, place in table}
    for tag, place in sorted(code.keys() | listed.keys()):
        kind, kinds = listed.get((tag, place)), code.get((tag, place), {"nothing"})
        if kind not in kinds:
            yield f"{PAGE}: '{tag}' in {place} is {kind or 'missing'}, but {' or '.join(sorted(kinds))} in the library"
