"""The project's documents, and what the checks ask of them: blocks of code, code spans, links, headings and tables."""

import functools
import pathlib
import re
import subprocess
from dataclasses import dataclass

from markdown_it import MarkdownIt

ROOT = pathlib.Path(__file__).resolve().parents[2]
PARSER = MarkdownIt("commonmark").enable("table")


def run(*command, **options):
    """The finished process; its output is text."""
    return subprocess.run(command, cwd=ROOT, text=True, stdin=subprocess.DEVNULL, capture_output=True, **options)


@functools.cache
def tracked():
    """Every file of the project, with those that were not added yet."""
    listed = run("git", "ls-files", "--cached", "--others", "--exclude-standard", check=True).stdout.split("\n")
    return frozenset(name for name in listed if name and (ROOT / name).is_file())


@functools.cache
def source(name):
    return (ROOT / name).read_text(encoding="utf-8")


@dataclass
class Block:
    """A block of code; its comment is the HTML comment before it, its language is empty when it is indented."""
    where: str
    language: str
    code: str
    comment: str

    @property
    def is_shell(self):
        return self.language in ("", "sh")


@dataclass
class Table:
    where: str
    head: list
    rows: list


class Document:
    def __init__(self, name):
        self.name = name
        self.text = source(name)
        self.blocks, self.spans, self.links, self.headings, self.tables = [], [], [], [], []
        self._read(PARSER.parse(self.text))
        self.anchors = set(anchors(self.headings))

    def _read(self, tokens):
        comment, line = "", 0
        for at, token in enumerate(tokens):
            line = token.map[0] + 1 if token.map else line
            where = f"{self.name}:{line}"
            if token.type in ("fence", "code_block"):
                self.blocks.append(Block(where, token.info.strip(), token.content, comment))
            elif token.type == "table_open":
                self.tables.append(Table(where, [], []))
            elif token.type == "tr_open":
                self.tables[-1].rows.append([])
            elif token.type == "inline":
                self._read_inline(token, where, tokens[at - 1].type)
            found = re.fullmatch(r"<!-- (.*?) -->\s*", token.content) if token.type == "html_block" else None
            comment = found.group(1) if found else ""

    def _read_inline(self, token, where, parent):
        if parent == "heading_open":
            self.headings.append("".join(child.content for child in token.children))
        elif parent == "th_open":
            self.tables[-1].head.append(token.content)
            self.tables[-1].rows = []
        elif parent == "td_open":
            self.tables[-1].rows[-1].append(token.content)
        for child in token.children:
            if child.type == "code_inline":
                self.spans.append((where, child.content))
            elif child.type in ("link_open", "image"):
                self.links.append((where, child.attrs.get("href") or child.attrs["src"]))


def anchors(headings):
    """The names by which the headings of a page can be linked to, as code hosts make them."""
    seen = {}
    for heading in headings:
        anchor = re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
        seen[anchor] = seen.get(anchor, -1) + 1
        yield f"{anchor}-{seen[anchor]}" if seen[anchor] else anchor


@functools.cache
def documents():
    return [Document(name) for name in sorted(tracked())
            if re.fullmatch(r"README\.md|CONTRIBUTING\.md|CHANGELOG\.md|docs/[^/]+\.md", name)]


def document(name):
    return next(one for one in documents() if one.name == name)


def folders():
    return {str(parent) for name in tracked() for parent in pathlib.PurePath(name).parents if parent.name}
