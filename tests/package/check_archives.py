"""What the archives say about themselves: the links in the documents, the notices, what the Linux files need."""
import argparse
import os
import re
import tarfile
import tempfile
import zipfile
from pathlib import Path

from checks import ROOT, check, finish, output

# Headers of these declare what shared libraries do, and leave no code in a binary.
DECLARATIONS = {"linux-libc-dev"}


def check_links(folder, name):
    """Each link of each document leads to a file of the same package."""
    documents = sorted(folder.rglob("*.md"))
    broken = [f"{document.relative_to(folder)}: {link}" for document in documents
              for link in re.findall(r"\]\(([^)#\s]+)", document.read_text(encoding="utf-8"))
              if "://" not in link and not (document.parent / link).is_file()]
    check(f"{name}: links in {len(documents)} documents", len(documents) > 5 and not broken, broken)


def compiled_in(build):
    """The headers of the system, and the static libraries, that the library and the tools are built of."""
    files, shipped = set(), False
    for line in output("ninja", "-C", str(build), "-t", "deps").splitlines():
        if not line.startswith(" "):
            shipped = line.startswith(("src/", "tools/"))
        elif shipped and line.strip().startswith("/"):
            # The cross builds have copies of the header-only packages.
            files.add(re.sub(r"^.*/tools/tarn/headers/", "/usr/include/", line.strip()))
    programs = ["bin/tarn"] if (build / "bin/tarn").exists() else []
    files.update(re.findall(r"(?<= )/\S+\.a(?= )", output("ninja", "-C", str(build), "-t", "commands", *programs)))
    return {os.path.realpath(file) for file in files if not file.startswith((str(ROOT), str(build)))}


def check_notices(notices, build, name):
    owners = {line.split(":")[0] for line in output("dpkg", "-S", *compiled_in(build.resolve())).splitlines()}
    missing = [owner for owner in owners - DECLARATIONS
               if (Path("/usr/share/doc") / owner / "copyright").read_text(encoding="utf-8") not in notices]
    check(f"{name}: notices of {' '.join(sorted(owners - DECLARATIONS))}", owners and not missing, missing)


def newest(label, text):
    versions = [tuple(map(int, version.split("."))) for version in re.findall(rf"\b{label}_([0-9.]+)", text)]
    return ".".join(map(str, max(versions, default=())))


def check_needs(folder):
    page = (ROOT / "docs/embedding.md").read_text(encoding="utf-8")
    for file in ("lib/libTarnRemoteClient.so", "bin/tarn"):
        text = output("objdump", "-p", str(folder / file))
        libraries = " ".join(sorted(re.findall(r"NEEDED +(\S+)", text)))
        row = f"| `{file}` | {newest('GLIBC', text)} | {newest('GLIBCXX', text)} | {libraries} |"
        check(f"needed at run time: {row}", row in page.splitlines(), "not in docs/embedding.md")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("installed", type=Path, help="where the Linux build is installed")
    parser.add_argument("archives", type=Path, help="the folder of the archives")
    parser.add_argument("builds", type=Path, nargs=3, help="the builds: Linux, 64-bit Windows, 32-bit Windows")
    arguments = parser.parse_args()
    check_links(arguments.installed / "share/doc/TarnRemoteClient", "installed")
    for build, pattern in zip(arguments.builds, ("*linux*.tar.gz", "*windows-x86_64.zip", "*windows-x86.zip")):
        archive, = arguments.archives.glob(pattern)
        with tempfile.TemporaryDirectory() as scratch:
            (tarfile.open if pattern.endswith("gz") else zipfile.ZipFile)(archive).extractall(scratch)
            unpacked, = Path(scratch).iterdir()
            check_links(unpacked, archive.name)
            check_notices((unpacked / "NOTICES").read_text(encoding="utf-8"), build, archive.name)
            if "linux" in pattern:
                check_needs(unpacked)
    finish()


main()
