"""What is inside the installed binaries: symbols, imports, flags, version, debug information, paths."""
import argparse
import re
import struct
from pathlib import Path

from checks import ROOT, VERSION, check, check_equal, finish, output

SYSTEM_DLLS = {"ADVAPI32.dll", "KERNEL32.dll", "msvcrt.dll", "ole32.dll", "SHELL32.dll", "USER32.dll", "WS2_32.dll"}
SYSTEM_LIBRARIES = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6", "ld-linux-x86-64.so.2"}
DESCRIPTIONS = {"TarnRemoteClient.dll": "Native client library of the secure-mail plug-in",
                "tarn.exe": "Command-line client of the secure-mail plug-in's daemon"}


def check_debug_file(file, objdump):
    debug = file.with_name(file.name + ".debug")
    sections = output(objdump, "-h", str(file))
    check(f"{file.name}: debug information is in {debug.name} alone",
          ".debug_info" not in sections and debug.exists() and ".debug_info" in output(objdump, "-h", str(debug)),
          sections)
    check(f"{file.name}: names its debug file", (debug.name + "\0").encode() in file.read_bytes(), "no link")


def check_version_information(file, name):
    data = file.read_bytes()
    numbers = re.search(rb"\xbd\x04\xef\xfe....(.{8})(.{8})", data, re.DOTALL)
    for index, label in ((1, "file"), (2, "product")):
        parts = numbers and struct.unpack("<4H", numbers.group(index))
        check_equal(f"{name}: {label} version",
                    parts and (parts[1], parts[0], parts[3], parts[2]), tuple(int(part) for part in VERSION.split(".")))
    expected = {
        "CompanyName": "The Tarn Remote Client developers", "FileDescription": DESCRIPTIONS[file.name],
        "FileVersion": VERSION, "InternalName": file.stem, "OriginalFilename": file.name,
        "LegalCopyright": "Copyright The Tarn Remote Client developers", "ProductName": "Tarn Remote Client",
        "ProductVersion": VERSION}
    found = {}
    for key in expected:
        value = re.search(re.escape((key + "\0").encode("utf-16-le")) + rb"(?:\0\0)?((?:[^\0]\0)+)\0\0", data)
        found[key] = value and value.group(1).decode("utf-16-le")
    check_equal(f"{name}: version information", found, expected)


def check_windows_file(file, bits):
    """The properties that the library and the tools share."""
    text = output("x86_64-w64-mingw32-objdump", "-p", str(file))
    name = f"{file.name} ({bits} bits)"
    check(f"{name}: machine", f"pei-{'x86-64' if bits == 64 else 'i386'}" in text, text.split("\n")[1])
    imports = set(re.findall(r"DLL Name: (\S+)", text))
    allowed = SYSTEM_DLLS | ({"TarnRemoteClient.dll"} if file.suffix == ".exe" else set())
    check(f"{name}: imports {' '.join(sorted(imports))}", imports and imports <= allowed, imports - allowed)
    wanted = {"DYNAMIC_BASE", "NX_COMPAT"} | ({"HIGH_ENTROPY_VA"} if bits == 64 else set())
    if bits == 32 and file.suffix == ".dll":
        wanted.add("NO_SEH")
    flags = set(re.search(r"DllCharacteristics\s+\S+\n((?:\t+\w+\n)*)", text).group(1).split())
    check(f"{name}: flags {' '.join(sorted(flags))}", wanted <= flags, wanted - flags)
    relocations = re.search(r"Entry 5 \S+ (\S+) Base Relocation", text)
    check(f"{name}: can be relocated", int(relocations.group(1), 16) > 0, "no relocations")
    check_version_information(file, name)
    return text


def check_dll(file, bits, exports):
    text = check_windows_file(file, bits)
    table = text[text.index("[Ordinal/Name Pointer] Table"):]
    names = re.findall(r"^\s*\[\s*\d+\] (\S+)$", table, re.MULTILINE)
    check_equal(f"{file.name} ({bits} bits): exports the {len(exports)} names", sorted(names), exports)
    base = 0x180000000 if bits == 64 else 0x10000000
    addresses = {int(address, 16) + base for address in re.findall(r"\t\[ *\d+\] \+base\[ *\d+\] ([0-9a-f]+) Export", text)}
    lines = re.findall(r"^([0-9a-f]+) T (?:_(?=[A-Z]))?(\w+)$", file.with_suffix(".map").read_text(), re.MULTILINE)
    mapped = {int(address, 16) for address, name in lines if name in exports}
    check_equal(f"{file.name} ({bits} bits): addresses in the map", sorted(mapped), sorted(addresses))
    check_debug_file(file, "x86_64-w64-mingw32-objdump")


def check_shared_object(file, exports):
    names = [line.split()[-1] for line in output("nm", "-D", "--defined-only", str(file)).splitlines()]
    check_equal(f"{file.name}: exports the {len(exports)} names", sorted(names), exports)
    dynamic = output("readelf", "-dW", str(file))
    check_equal(f"{file.name}: SONAME", re.findall(r"soname: \[(.*)\]", dynamic), ["libTarnRemoteClient.so.7"])
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic))
    check(f"{file.name}: needs {' '.join(sorted(needed))}", needed <= SYSTEM_LIBRARIES, needed - SYSTEM_LIBRARIES)
    check_debug_file(file, "objdump")


def check_elf_files(build):
    """Every program and library that was built: hardened, and with no run path but the one beside it."""
    files = [file for folder in ("bin", "lib") for file in sorted((build / folder).iterdir())
             if not file.is_symlink() and file.suffix != ".debug" and file.read_bytes()[:4] == b"\x7fELF"]
    check(f"{build.name}: has programs", len(files) > 5, files)
    for file in files:
        text = output("readelf", "-hldW", str(file))
        paths = re.findall(r"\(R(?:UN)?PATH\).*\[(.*)\]", text)
        check(f"{file.name}: run path {paths}", paths in ([], ["$ORIGIN/../lib"]), paths)
        stack = re.search(r"GNU_STACK .* (\S+) +0x", text)
        hardened = {"position-independent": "Type:                              DYN" in text,
                    "read-only after relocation": "GNU_RELRO" in text, "bound at start": "BIND_NOW" in text,
                    "stack not executable": stack and "E" not in stack.group(1)}
        check(f"{file.name}: hardened", all(hardened.values()), hardened)
    for file in (build / "bin/tarn", build / "lib/libTarnRemoteClient.so"):
        symbols = output("nm", "-D", str(file))
        missing = [name for name in ("__stack_chk_fail@", "_chk@", "glibcxx_assert_fail") if name not in symbols]
        check(f"{file.name}: guarded stack, checked copies and indices", not missing, missing)


def check_paths(prefix, paths):
    files = [file for file in sorted(prefix.rglob("*")) if file.is_file()]
    found = [f"{file.relative_to(prefix)} has {path}" for file in files for path in paths
             if str(path).encode() in file.read_bytes()]
    check(f"{prefix.name}: no path of the build in {len(files)} files", files and not found, found)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("linux", type=Path, help="where the Linux build is installed")
    parser.add_argument("x64", type=Path, help="where the 64-bit Windows build is installed")
    parser.add_argument("x86", type=Path, help="where the 32-bit Windows build is installed")
    parser.add_argument("builds", type=Path, nargs="+", help="the folders that they were built in")
    arguments = parser.parse_args()
    header = (ROOT / "include/TarnRemoteClient.h").read_text()
    exports = sorted(re.findall(r"^TARN_API .*?(\w+)\(", header, re.MULTILINE))
    check_elf_files(arguments.builds[0])
    check_shared_object((arguments.linux / "lib/libTarnRemoteClient.so").resolve(), exports)
    for prefix, bits in ((arguments.x64, 64), (arguments.x86, 32)):
        check_dll(prefix / "bin/TarnRemoteClient.dll", bits, exports)
        for tool in prefix.glob("bin/*.exe"):
            text = check_windows_file(tool, bits)
            check(f"{tool.name} ({bits} bits): no DLL from the current folder", "SetDllDirectoryW" in text, "not called")
    for prefix in (arguments.linux, arguments.x64, arguments.x86):
        check_paths(prefix, [ROOT, *(build.resolve() for build in arguments.builds)])
    finish()


main()
