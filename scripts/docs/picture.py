"""docs/demo.svg shows what the tools do now."""

from documents import run, source


def check():
    drawn = run("scripts/picture", "-", timeout=60)
    if drawn.returncode != 0:
        yield f"scripts/picture failed: {drawn.stderr.strip()}"
    elif drawn.stdout != source("docs/demo.svg"):
        yield "docs/demo.svg is not what scripts/picture draws now: run it, look at the picture and commit it"
