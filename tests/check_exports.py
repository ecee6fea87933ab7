"""Every function of the public header is documented by a comment there, declared by the C# binding, named on the
wrappers' pages, and called by both wrappers, by an export test, by the story and, when it reads a reply, by a hostile
case. Every command is tried on the stand-in daemon, and every method of the C# wrapper has its two forms."""
import re
import sys
from pathlib import Path

root = Path(__file__).resolve().parents[1]
WITHOUT_REPLY = {"StartTarnDaemon", "GetNextDecryptedItem", "GetNextDecryptedItemInfo",
                 "AddOrUpdateRemoteRecipientEntries"}
NOT_WRAPPED = {"AddOrUpdateRemoteRecipientEntries"}


def text_of(*patterns):
    return "\n".join(file.read_text(encoding="utf-8") for pattern in patterns for file in sorted(root.glob(pattern)))


header = text_of("include/TarnRemoteClient.h")
exports = re.findall(r"^TARN_API .*?(\w+)\(", header, re.MULTILINE)
test_files = re.search(r"tarn_test_program\(export-tests ([^)]+)\)", text_of("tests/CMakeLists.txt")).group(1).split()
tests = text_of(*(f"tests/{file}" for file in test_files))
cases = re.compile(r"^const ReplyCases .*?\n\n", re.MULTILINE | re.DOTALL)
called = {
    "called by an export test": cases.sub("", tests),
    "called by the story": text_of("tests/story_test.cpp"),
    "called by a hostile case": "".join(cases.findall(tests)),
    "declared by the C# binding": text_of("bindings/csharp/TarnRemoteClient.cs"),
    "called by the C# wrapper": text_of("bindings/csharp/TarnClient*.cs"),
    "called by the C++ wrapper": text_of("bindings/cpp/*.cpp"),
}
pages = {page: text_of(page) for page in ("docs/cpp.md", "docs/csharp.md")}
failures = [] if exports else ["the header declares nothing"]
for name in exports:
    if not re.search(rf"\*/\nTARN_API [\w ]+\b{name}\(", header):
        failures.append(f"{name} is not documented by the public header")
    for what, text in called.items():
        exempt = WITHOUT_REPLY if what.endswith("hostile case") else NOT_WRAPPED if what.endswith("wrapper") else set()
        call = rf"TarnRemoteClient\.{name}\b" if what == "called by the C# wrapper" else rf"\b{name}\("
        if name not in exempt and not re.search(call, text):
            failures.append(f"{name} is not {what}")
    failures += [f"{name} is not named by {page}" for page, text in pages.items() if f"`{name}`" not in text]
for code in sorted(set(re.findall(r'beginCommand\(code\("(..)"\)', text_of("src/client/*.cpp")))):
    if f'"{code}"' not in text_of("tests/standin/*_test.py"):
        failures.append(f"the command {code} is not tried by the stand-in's tests")
methods = {
    "ITarnClient": re.findall(r" (\w+)Async\(", text_of("bindings/csharp/ITarnClient.cs")),
    "TarnClient": re.findall(r"public .*Task.* (\w+)Async\(", text_of("bindings/csharp/TarnClient*.cs")),
    "TarnClientBlocking": re.findall(r" (\w+)\(this ITarnClient", text_of("bindings/csharp/TarnClientBlocking.cs")),
}
for method in sorted(set().union(*methods.values())):
    failures += [f"{method} is missing in {name}" for name, known in methods.items() if method not in known]
print("\n".join(failures) or f"{len(exports)} exports, all documented, declared and tested")
sys.exit(bool(failures))
