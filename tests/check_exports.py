"""Every function of the public header is documented by a comment there, declared by the C# binding, called by both
wrappers and named in their documentation, and called by an export test, by the story and, when it reads a reply, by a
hostile case. Every command of the protocol is answered by the stand-in daemon, and tried on it. Every method of the C++
wrapper is called by tarn, whose every command has a test. Every method of the C# wrapper has its two forms and a test."""
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
call, call_of_class = r"\b{}\(", r"TarnRemoteClient\.{}\b"
uses = {
    "called by an export test": (call, cases.sub("", tests)),
    "called by the story": (call, text_of("tests/story_test.cpp")),
    "called by a hostile case": (call, "".join(cases.findall(tests))),
    "declared by the C# binding": (call, text_of("bindings/csharp/TarnRemoteClient.cs")),
    "called by the C# wrapper": (call_of_class, text_of("bindings/csharp/TarnClient*.cs")),
    "named in the C# wrapper's documentation": (call_of_class, text_of("bindings/csharp/ITarnClient.cs")),
    "called by the C++ wrapper": (call, text_of("bindings/cpp/*.cpp")),
    "named in the C++ wrapper's documentation": (r"// .*\b{}\b", text_of("bindings/cpp/include/tarn/Client.h")),
}
failures = [] if exports else ["the header declares nothing"]
for name in exports:
    if not re.search(rf"\*/\nTARN_API [\w ]+\b{name}\(", header):
        failures.append(f"{name} is not documented by the public header")
    for what, (pattern, text) in uses.items():
        exempt = WITHOUT_REPLY if what.endswith("hostile case") else NOT_WRAPPED if "wrapper" in what else set()
        if name not in exempt and not re.search(pattern.format(name), text):
            failures.append(f"{name} is not {what}")
for code in sorted(set(re.findall(r'beginCommand\(code\("(..)"\)', text_of("src/client/*.cpp")))):
    if f'@command("{code}"' not in text_of("tools/standin/standin/*.py"):
        failures.append(f"the command {code} is not answered by the stand-in daemon")
    if f'"{code}"' not in text_of("tests/standin/*_test.py"):
        failures.append(f"the command {code} is not tried by the stand-in's tests")
tool, tool_tests = text_of("tools/tarn/*.cpp"), text_of("tests/tarn/cli_test.py")
cpp_header = text_of("bindings/cpp/include/tarn/Client.h")
for method in re.findall(r"^    [\w:<>]+ ([a-z]\w*)\(", cpp_header.split("private:")[0], re.MULTILINE):
    if not re.search(rf"\.{method}\(", tool):
        failures.append(f"the C++ wrapper's {method} is called by no command of tarn")
for command in re.findall(r'\b(?:program, context, |add\()"(\w+)"', tool):
    if not re.search(rf'(\b(tarn|json)\((?:"--[\w-]+", )*|= [(\[])"{command}"[,)]', tool_tests):
        failures.append(f"the command {command} of tarn is tried by no test of its own")
methods = {
    "ITarnClient": re.findall(r" (\w+)Async\(", text_of("bindings/csharp/ITarnClient.cs")),
    "TarnClient": re.findall(r"public .*Task.* (\w+)Async\(", text_of("bindings/csharp/TarnClient*.cs")),
    "TarnClientBlocking": re.findall(r" (\w+)\(this ITarnClient", text_of("bindings/csharp/ITarnClient.cs")),
}
tried = re.findall(r"\.(\w+?)(?:Async)?\(", text_of("tests/csharp/*.cs"))
for method in sorted(set().union(*methods.values())):
    failures += [f"{method} is missing in {name}" for name, known in methods.items() if method not in known]
    if method not in tried:
        failures.append(f"the C# wrapper's {method} is tried by no test")
print("\n".join(failures) or f"{len(exports)} exports, all documented, declared and tested")
sys.exit(bool(failures))
