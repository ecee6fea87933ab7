"""The solid arrows of the diagram in docs/architecture.md are the includes between the folders of C++ code, all of them
and no others; its folders are all there are. Dotted arrows are relations that no include shows."""

import posixpath
import re

from documents import document, folders, source, tracked

PAGE = "docs/architecture.md"
DRAWN = re.compile(r"(include|src|bindings/cpp|tools)/.*\.(h|cpp|h\.in)$")
SEARCHED = ("include", "src", "bindings/cpp/include", "bindings/cpp")
GENERATED = {"JavaPath.h": "src/client/JavaPath.h.in"}


def included(name, header):
    """The project's file that an include means; none for a header of the system or of a package."""
    if header in GENERATED:
        return GENERATED[header]
    for folder in (posixpath.dirname(name), *SEARCHED):
        found = posixpath.normpath(posixpath.join(folder, header))
        if found in tracked():
            return found
    return None


def check():
    diagrams = [block for block in document(PAGE).blocks if block.language == "mermaid"]
    if len(diagrams) != 1:
        yield f"{PAGE}: {len(diagrams)} diagrams, not one"
        return
    code, where = diagrams[0].code, diagrams[0].where
    label = dict(re.findall(r'^\s*(\w+)\["([\w/]+)(?:<br>[^"]*)?"\]$', code, re.MULTILINE))

    def drawn_in(name):
        """The deepest folder of the diagram that holds the file."""
        return max((folder for folder in label.values() if name.startswith(folder + "/")), key=len, default=None)

    drawn = {(label.get(start), label.get(end))
             for start, end in re.findall(r"^\s*(\w+) --> (\w+)$", code, re.MULTILINE)}
    real = {}
    for name in filter(DRAWN.match, sorted(tracked())):
        if not drawn_in(name):
            yield f"{where}: no folder is drawn that holds {name}"
        for header in re.findall(r'^#include [<"]([^>"]+)[>"]', source(name), re.MULTILINE):
            target = included(name, header)
            if target and drawn_in(target) != drawn_in(name):
                real.setdefault((drawn_in(name), drawn_in(target)), f"{name} includes {header}")
    for start, end in sorted(drawn - real.keys(), key=str):
        yield f"{where}: the arrow from {start} to {end} is drawn, but no file includes across it"
    for start, end in sorted(real.keys() - drawn, key=str):
        yield f"{where}: the arrow from {start} to {end} is missing: {real[start, end]}"
    for folder in sorted(set(label.values()) - folders()):
        yield f"{where}: there is no folder {folder}"
