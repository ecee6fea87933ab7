#!/usr/bin/env python3
"""usage: package.py FILE: packs the stand-in daemon into one program file, the same bytes each time.

Each module also in the form that this version of Python has compiled, without which each start takes longer by a third;
another version compiles the sources.
"""

import pathlib
import py_compile
import sys
import tempfile
import zipfile

FOLDER = pathlib.Path(__file__).resolve().parent


def add(archive: zipfile.ZipFile, name: str, file: pathlib.Path) -> None:
    entry = zipfile.ZipInfo(name)  # with the earliest time of the format
    entry.external_attr = 0o644 << 16
    archive.writestr(entry, file.read_bytes(), zipfile.ZIP_DEFLATED)


def pack(target: pathlib.Path) -> None:
    target.parent.mkdir(parents=True, exist_ok=True)
    new = target.with_name(target.name + ".new")  # one that runs reads on in the former file
    with new.open("wb") as file:
        file.write(b"#!/usr/bin/env python3\n")
        with zipfile.ZipFile(file, "w") as archive, tempfile.TemporaryDirectory() as scratch:
            compiled = pathlib.Path(scratch, "compiled")
            for module in [FOLDER / "__main__.py", *sorted((FOLDER / "standin").glob("*.py"))]:
                name = module.relative_to(FOLDER).as_posix()
                py_compile.compile(str(module), str(compiled), name, doraise=True,
                                   invalidation_mode=py_compile.PycInvalidationMode.UNCHECKED_HASH)
                add(archive, name, module)
                add(archive, name + "c", compiled)
    new.chmod(0o755)
    new.replace(target)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    pack(pathlib.Path(sys.argv[1]))
