"""Every shell block of the README and of CONTRIBUTING works: it is run in the source tree, in a network of its own, or
a comment before it says why it is not, as in <!-- not run: takes minutes -->."""

import subprocess

from documents import document, run

LIMIT = 120  # seconds
# Whatever a command leaves behind ends with it.
ON_ITS_OWN = ("unshare", "--map-root-user", "--net", "--pid", "--fork", "--kill-child",
              "sh", "-c", 'ip link set lo up && exec "$@"', "-")


def check():
    for name in ("README.md", "CONTRIBUTING.md"):
        for block in document(name).blocks:
            if not block.is_shell:
                continue
            shell = ("bash", "-n", "-c", block.code)
            if not block.comment.startswith("not run: "):
                shell = (*ON_ITS_OWN, "bash", "-euo", "pipefail", "-c", block.code)
            try:
                done = run(*shell, timeout=LIMIT)
            except subprocess.TimeoutExpired:
                yield f"{block.where}: still running after {LIMIT} seconds"
                continue
            if done.returncode != 0:
                last = (done.stdout + done.stderr).strip().splitlines()[-5:]
                yield "\n    ".join([f"{block.where}: exit code {done.returncode}", *last])
