#!/usr/bin/env python3
"""Turns the results of scripts/bench into Markdown tables."""
import argparse
import collections
import json
import pathlib
import statistics
import sys

BEGIN, END = "<!-- tables: begin -->", "<!-- tables: end -->"
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6}

# The ratio that a call must not exceed.
TARGETS = {
    "EncryptEnvelopeOnline 200 B": 2.2, "EncryptEnvelopeOnline 1 MB": 3.6, "EncryptEnvelopeOnline 10 MB": 3.3,
    "DecryptEnvelope 200 B": 2.2, "DecryptEnvelope 1 MB": 3.6, "DecryptEnvelope 10 MB": 3.3,
}


def medians(path):
    """The median of each benchmark: its time in nanoseconds, and its counters."""
    runs = collections.defaultdict(list)
    measured = json.loads(path.read_text())["benchmarks"]
    for run in sorted(measured, key=lambda run: (run["family_index"], run["per_family_instance_index"])):
        if run.get("error_occurred"):
            sys.exit(f"report: {run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            runs[run["name"].removesuffix("/real_time")].append(run)
    results = {}
    for name, group in runs.items():
        results[name] = group[0] | {
            key: statistics.median(run[key] * NANOSECONDS[run["time_unit"]] for run in group)
            for key in ("real_time", "cpu_time")}
    return results


def table(head, rows):
    align = ["---"] + ["---:"] * (len(head) - 1)
    return "\n".join("| " + " | ".join(map(str, row)) + " |" for row in [head, align, *rows]) + "\n"


def duration(nanoseconds):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= 10 * size:
            return f"{nanoseconds / size:,.0f} {unit}"
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:,.0f} ns"


def calls(results):
    rows = []
    for name in (name.removeprefix("call/") for name in results if name.startswith("call/")):
        call, floor, pieces = (results[f"{kind}/{name}"] for kind in ("call", "floor", "pieces"))
        ratio = call["real_time"] / floor["real_time"]
        target = TARGETS.get(name)
        verdict = "" if target is None else f"{target} " + ("met" if ratio <= target else "**missed**")
        rows.append([name, f"{call['sent']:,.0f}", f"{call['received']:,.0f}", f"{pieces['system calls']:,.0f}",
                     duration(floor["real_time"]), duration(pieces["real_time"]), duration(call["real_time"]),
                     f"{ratio:.2f}", verdict, f"{call['real_time'] / pieces['real_time']:.2f}"])
    return table(["call", "bytes sent", "bytes received", "sends and receives", "floor", "same system calls", "call",
                  "call / floor", "at most", "call / same system calls"], rows)


def crc(results):
    def speed(kernel, size):
        return int(size) / results[f"crc/{kernel}/{size}"]["cpu_time"]

    rows = []
    for size in (name.split("/")[2] for name in results if name.startswith("crc/library/")):
        kernels = [speed(kernel, size) for kernel in ("byte", "library", "zlib")]
        rows.append([f"{int(size):,}", *(f"{value:.2f}" for value in kernels), f"{kernels[1] / kernels[0]:.1f}"])
    return table(["bytes", "byte step, GB/s", "library, GB/s", "zlib, GB/s", "library / byte step"], rows)


def codec(results):
    rows = [[name.replace("/", " "), duration(result["cpu_time"]), f"{result['bytes_per_second'] / 1e9:.2f}"]
            for name, result in results.items() if not name.startswith("crc/")]
    return table(["in memory", "time", "GB/s"], rows)


def growth(results):
    kinds = collections.defaultdict(dict)
    for name, result in results.items():
        _, kind, count = name.split("/")
        kinds[kind][int(count)] = result["real_time"] / int(count)
    sizes = sorted({size for kind in kinds.values() for size in kind})
    rows = [[kind] + [f"{times[size]:,.0f}" if size in times else "" for size in sizes]
            for kind, times in kinds.items()]
    return table(["ns for each"] + [f"{size:,}" for size in sizes], rows)


def footprint(path):
    runs = collections.defaultdict(list)
    for line in path.read_text().splitlines():
        run = json.loads(line)
        runs[run["case"]].append(run)
    names = {"item": ("DecryptEnvelope and GetNextDecryptedItem, 10 MB item", 3.0),
             "message": ("EncryptEnvelopeOnline, 10 MB message", 1.2)}
    rows = []
    for case, group in runs.items():
        value = {key: statistics.median(run[key] for run in group) for key in group[0] if key != "case"}
        name, target = names[case]
        rows.append([name, f"{value['first']:.2f}", f"{value['again']:.2f}", target,
                     f"{value['user']:.1f} + {value['system']:.1f}",
                     f"{value['floor_user']:.1f} + {value['floor_system']:.1f}"])
    return table(["client", "peak, first call (sizes)", "peak, later call (sizes)", "at most",
                  "CPU ms a call (user + system)", "floor's CPU ms"], rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, help="the folder that scripts/bench measured into")
    parser.add_argument("--docs", type=pathlib.Path, help="a page whose tables are to be replaced")
    arguments = parser.parse_args()
    measured = {name: medians(arguments.results / f"{name}.json") for name in ("calls", "growth", "codec")}
    tables = "\n".join([
        "### Calls against their floor\n", calls(measured["calls"]),
        "### CRC\n", crc(measured["codec"]),
        "### Growth\n", growth(measured["growth"]),
        "### Memory and CPU time\n", footprint(arguments.results / "footprint.jsonl"),
        "### Encoding and decoding in memory\n", codec(measured["codec"])])
    print(tables)
    if arguments.docs:
        before, rest = arguments.docs.read_text().split(BEGIN)
        after = rest.split(END)[1]
        arguments.docs.write_text(f"{before}{BEGIN}\n\n{tables}\n{END}{after}")


if __name__ == "__main__":
    main()
