"""Every sample of code is a piece of the file that the comment above it names, unchanged but for its indentation."""

import textwrap

from documents import documents, source, tracked

# The pages for a first look.
SHORT, LONGEST = ("README.md", "docs/embedding.md"), 10


def is_part_of(block, text):
    lines = text.splitlines()
    return any(textwrap.dedent("\n".join(lines[at:at + len(block)])).splitlines() == block for at in range(len(lines)))


def check():
    shown = set()
    for document in documents():
        for block in document.blocks:
            if block.is_shell and block.comment not in tracked() or block.language == "mermaid":
                continue
            code = block.code.splitlines()
            if block.comment not in tracked():
                yield f"{block.where}: the comment before this sample must name its source, not {block.comment!r}"
                continue
            shown.add(block.comment)
            if document.name in SHORT and len(code) > LONGEST:
                yield f"{block.where}: a sample of {len(code)} lines, where {LONGEST} are allowed"
            if not is_part_of(code, source(block.comment)):
                yield f"{block.where}: this sample is not in {block.comment}"
    for consumer in sorted(name for name in tracked() if name.startswith("tests/consumer/")):
        if consumer not in shown:
            yield f"{consumer}: no document shows it"
