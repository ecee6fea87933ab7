#!/usr/bin/env python3
"""usage: package.py FILE: packs the stand-in daemon into one program file, the same bytes each time."""

import pathlib
import sys
import zipfile

FOLDER = pathlib.Path(__file__).resolve().parent


def pack(target: pathlib.Path) -> None:
    target.parent.mkdir(parents=True, exist_ok=True)
    new = target.with_name(target.name + ".new")  # one that runs reads on in the former file
    with new.open("wb") as file:
        file.write(b"#!/usr/bin/env python3\n")
        with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as archive:
            for module in [FOLDER / "__main__.py", *sorted((FOLDER / "standin").glob("*.py"))]:
                entry = zipfile.ZipInfo(module.relative_to(FOLDER).as_posix())  # with the earliest time of the format
                entry.external_attr = 0o644 << 16
                archive.writestr(entry, module.read_bytes(), zipfile.ZIP_DEFLATED)
    new.chmod(0o755)
    new.replace(target)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    pack(pathlib.Path(sys.argv[1]))
