"""Every link leads to a file of the project, and to a heading in it."""

import posixpath

from documents import ROOT, documents


def check():
    by_name = {document.name: document for document in documents()}
    for document in documents():
        for where, target in document.links:
            if "://" in target:
                yield f"{where}: {target} leads out of the project, where nothing can be checked"
                continue
            path, _, anchor = target.partition("#")
            name = posixpath.normpath(posixpath.join(posixpath.dirname(document.name), path)) if path else document.name
            if not (ROOT / name).exists():
                yield f"{where}: the link's file {name} does not exist"
            elif anchor and (name not in by_name or anchor not in by_name[name].anchors):
                yield f"{where}: {name} has no heading #{anchor}"
