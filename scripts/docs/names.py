"""What the documents name exists: files, functions and other names of the code, presets, TARN_... settings. No sentence
counts what grows."""

import fnmatch
import functools
import json
import re

from documents import ROOT, documents, folders, source, tracked

TOP = "benchmarks|bindings|cmake|docs|fuzz|include|scripts|src|tests|tools"
KINDS = "h|c|cpp|cs|csproj|cmake|json|lua|md|proto|py|supp"
PATH = re.compile(rf"(?<![\w./*-])(?:(?:{TOP})/[\w./*+-]+|[\w/*-]+\.(?:{KINDS}))(?![\w(])")
PLACEHOLDER = re.compile(r"/[A-Z]{3,}\b(?!\.).*")
NUMBER = r"(?:\d+|three|four|five|six|seven|eight|nine|ten|eleven|twelve|[a-z]*teen|twenty[a-z-]*)"
COUNT = re.compile(rf"\b{NUMBER} (?:[a-z-]+ )?(?:classes|commands|documents|exports|functions|methods|presets|suites|"
                   r"tags|targets|tests)\b", re.IGNORECASE)
PRESETS = {preset["name"] for kind in ("configurePresets", "testPresets")
           for preset in json.loads(source("CMakePresets.json"))[kind] if not preset.get("hidden")}


@functools.cache
def words():
    """Every word of the project's files but its documents."""
    files = (name for name in tracked() if not name.endswith((".md", ".svg")) and not name.startswith("scripts/docs/"))
    return frozenset(word for name in files for word in re.findall(rb"\w+", (ROOT / name).read_bytes()))


def exists(path):
    if path.startswith("share/"):  # a place in an installation
        return True
    path = PLACEHOLDER.sub("", path).rstrip("/.")
    known = tracked() | folders()
    return path in known or any(fnmatch.fnmatchcase("/" + name, "*/" + path) for name in known)


def is_name(word):
    """Whether a word is spelled as names in code are, and as no word of a text is."""
    return len(word) > 3 and re.fullmatch(r"[a-z]+[A-Z]\w*|[A-Z][a-z]+[A-Z]\w*|\w+_\w+", word)


def settings(text):
    return re.findall(r"\bTARN_\w+|(?<![-\w])[A-Z][A-Z_]{2,}(?==)", text)


def cmake_settings(text):
    defined = "\n".join(source(name) for name in tracked() if name.endswith(("CMakeLists.txt", ".cmake")))
    for name in re.findall(r"-D(TARN_\w+)", text):
        if not re.search(rf"option\({name}\b|set\({name}\b[^)]*\bCACHE\b", defined):
            yield name


def missing(text):
    """What a piece of code or of a command names and the project has not."""
    for path in PATH.findall(text):
        if not exists(path):
            yield f"the file {path}"
    for name in cmake_settings(text):
        yield f"the CMake option {name}"
    for preset in re.findall(r"--preset[ =]([\w-]+)", text) + re.findall(r"\bbuild/([\w-]+)/(?:bin|lib)\b", text):
        if preset not in PRESETS:
            yield f"the preset {preset}"
    for word in (*filter(is_name, re.findall(r"(?<![-\w])\w+", text)), *settings(text)):
        if word.encode() not in words():
            yield f"the name {word}"


def check():
    for document in documents():
        pieces = document.spans + [(block.where, block.code) for block in document.blocks if block.is_shell]
        for where, text in pieces:
            for what in dict.fromkeys(missing(text)):
                yield f"{where}: {what} does not exist"
        for number, line in enumerate(document.text.splitlines(), 1):
            for count in COUNT.findall(line):
                yield f"{document.name}:{number}: \"{count}\": leave the number out, nothing keeps it right"
        for table in document.tables:
            if table.head[0] == "preset":
                listed = {name for row in table.rows for name in re.findall(r"`([\w-]+)`", row[0])}
                for preset in sorted(listed ^ PRESETS):
                    yield f"{table.where}: {preset} is not both in this table and in CMakePresets.json"
