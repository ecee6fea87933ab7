#!/usr/bin/env python3
"""Turns the results of scripts/bench into Markdown tables."""
import argparse
import collections
import json
import pathlib
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6}

# The ratio that a call must not exceed.
TARGETS = {
    "EncryptEnvelopeOnline 200 B": 1.6, "EncryptEnvelopeOnline 1 MB": 2.2, "EncryptEnvelopeOnline 10 MB": 1.7,
    "DecryptEnvelope 200 B": 1.6, "DecryptEnvelope 1 MB": 2.2, "DecryptEnvelope 10 MB": 1.7,
    "EncryptEnvelopeOnline 10 MB envelope back": 4,
}

CRC_KERNELS = {
    "library": "library", "tables": "tables", "vectors16": "vectors of 16 bytes", "vectors32": "vectors of 32 bytes",
    "byte": "byte step", "zlib": "zlib",
}

# The exchanges of the comparison with other libraries, in the order of the chart.
PEER_EXCHANGES = {
    "EncryptEnvelopeOnline 200 B": "200 B both ways", "EncryptEnvelopeOnline 1 MB": "1 MB up",
    "DecryptEnvelope 1 MB": "1 MB down", "EncryptEnvelopeOnline 10 MB": "10 MB up",
    "DecryptEnvelope 10 MB": "10 MB down",
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
        kernels = [f"{speed(kernel, size):.2f}" if f"crc/{kernel}/{size}" in results else "" for kernel in CRC_KERNELS]
        rows.append([f"{int(size):,}", *kernels])
    return table(["GB/s, by bytes", *CRC_KERNELS.values()], rows)


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
        verdict = "met" if max(value["first"], value["again"]) <= target else "**missed**"
        rows.append([name, f"{value['first']:.2f}", f"{value['again']:.2f}", f"{target} {verdict}",
                     f"{value['user']:.1f} + {value['system']:.1f}",
                     f"{value['floor_user']:.1f} + {value['floor_system']:.1f}"])
    return table(["client", "peak, first call (sizes)", "peak, later call (sizes)", "at most",
                  "CPU ms a call (user + system)", "floor's CPU ms"], rows)


def tables(results):
    measured = {name: medians(results / f"{name}.json") for name in ("calls", "growth", "codec")}
    return "\n".join([
        "### Calls against their floor\n", calls(measured["calls"]),
        "### CRC\n", crc(measured["codec"]),
        "### Growth\n", growth(measured["growth"]),
        "### Memory and CPU time\n", footprint(results / "footprint.jsonl"),
        "### Encoding and decoding in memory\n", codec(measured["codec"])])


def peer_ratios(results):
    """For each exchange, how many times its floor each library takes."""
    ratios = collections.defaultdict(dict)
    for name, result in results.items():
        peer, exchange = name.split("/")
        if peer != "floor":
            ratios[exchange][peer] = result["real_time"] / results[f"floor/{exchange}"]["real_time"]
    return {exchange: ratios[exchange] for exchange in PEER_EXCHANGES}


def peers_table(ratios):
    names = list(next(iter(ratios.values())))
    return table(["times the floor", *names],
                 [[PEER_EXCHANGES[exchange], *(f"{row[name]:.2f}" for name in names)]
                  for exchange, row in ratios.items()])


def peers_chart(ratios, path):
    import matplotlib
    matplotlib.use("svg")
    matplotlib.rcParams.update({"svg.hashsalt": "peers", "svg.fonttype": "none", "font.family": "sans-serif"})
    from matplotlib import pyplot
    figure, axes = pyplot.subplots(figsize=(9, 4), layout="constrained")
    colors = {"TarnRemoteClient": "#0072b2", "ZeroMQ": "#e69f00", "Redis": "#999999", "gRPC": "#cc79a7"}
    for i, (name, color) in enumerate(colors.items()):
        bars = axes.bar([at + 0.2 * i for at in range(len(ratios))], [row[name] for row in ratios.values()],
                        width=0.19, color=color, label=name)
        axes.bar_label(bars, fmt="%.1f", fontsize=8)
    axes.axhline(1, color="black", linewidth=1)
    axes.text(len(ratios) - 0.3, 1, "floor", va="center", fontsize=9)
    axes.set_xticks([at + 0.3 for at in range(len(ratios))], PEER_EXCHANGES.values())
    axes.set_ylabel("time, in floors (less is better)")
    axes.spines[["top", "right"]].set_visible(False)
    axes.legend(frameon=False, ncols=len(colors), loc="upper left", bbox_to_anchor=(0, 1.1))
    figure.savefig(path, metadata={"Date": None, "Creator": None})


def replace_section(page, name, text):
    begin, end = f"<!-- {name}: begin -->", f"<!-- {name}: end -->"
    before, rest = page.read_text().split(begin)
    page.write_text(f"{before}{begin}\n\n{text}\n{end}{rest.split(end)[1]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, help="the folder that scripts/bench measured into")
    parser.add_argument("--docs", type=pathlib.Path, help="a page whose tables are to be replaced")
    parser.add_argument("--peers", action="store_true", help="the comparison with other libraries, and its chart")
    arguments = parser.parse_args()
    if arguments.peers:
        section, chart = "peers", (arguments.docs or arguments.results / "peers.svg").with_name("peers.svg")
        ratios = peer_ratios(medians(arguments.results / "peers.json"))
        peers_chart(ratios, chart)
        text = f"![Times the floor, beside other libraries]({chart.name})\n\n" + peers_table(ratios)
    else:
        section, text = "tables", tables(arguments.results)
    print(text)
    if arguments.docs:
        replace_section(arguments.docs, section, text)


if __name__ == "__main__":
    main()
