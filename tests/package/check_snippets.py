"""Every block of code in docs/embedding.md has at most ten lines and stands, unchanged but for its indentation, in the
file that the comment above it names; every file of tests/consumer is shown. The blocks of the README that have such a
comment are held to the same."""
import re
import sys
from pathlib import Path
from textwrap import dedent

root = Path(__file__).resolve().parents[2]
failures = []
shown = set()


def stands_in(block, file):
    lines = file.read_text(encoding="utf-8").splitlines()
    count = len(block)
    return any(dedent("\n".join(lines[i:i + count])).splitlines() == block for i in range(len(lines) - count + 1))


def check_page(page, every_block):
    text = (root / page).read_text(encoding="utf-8")
    for name, code in re.findall(r"(?:^<!-- (\S+) -->\n)?^```\w+\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
        block = code.splitlines()
        where = f"{page}: the block that starts with {block[0]!r}"
        if not name and every_block:
            failures.append(f"{where} names no file")
        if not name:
            continue
        shown.add(name)
        if len(block) > 10:
            failures.append(f"{where} has {len(block)} lines")
        if not (root / name).exists() or not stands_in(block, root / name):
            failures.append(f"{where} does not stand in {name}")


check_page("docs/embedding.md", True)
for consumer in sorted((root / "tests/consumer").iterdir()):
    if str(consumer.relative_to(root)) not in shown:
        failures.append(f"docs/embedding.md does not show {consumer.relative_to(root)}")
check_page("README.md", False)
print("\n".join(f"FAILED {failure}" for failure in failures) or f"ok     the documents show {' '.join(sorted(shown))}")
sys.exit(bool(failures))
