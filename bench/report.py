#!/usr/bin/env python3
"""Runs the benchmarks and prints, as a Markdown table, each operation beside its peer and the ratio of the two.

usage: bench/ratios.py [FOLDER]     the folder with the kovdoa_bench_* programs (default: build/release/bin)

Both sides of a ratio come from one run of one program, five repetitions each, medians.
"""

import json
import pathlib
import subprocess
import sys

REPETITIONS = 5
# What the runner appends to a name for the way the time was taken.
SUFFIXES = ("_median", "/manual_time", "/real_time")


def medians(program):
    """Median time in nanoseconds of each benchmark of a program, by its plain name."""
    arguments = [
        str(program),
        "--benchmark_format=json",
        f"--benchmark_repetitions={REPETITIONS}",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_enable_random_interleaving=true",
    ]
    output = subprocess.run(arguments, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout
    unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for row in json.loads(output)["benchmarks"]:
        if row.get("aggregate_name") != "median":
            continue
        name = row["name"]
        for suffix in SUFFIXES:
            name = name.replace(suffix, "")
        times[name] = row["real_time"] * unit[row["time_unit"]]
    return times


def readable(nanoseconds):
    for scale, unit in ((1e6, "ms"), (1e3, "µs")):
        if nanoseconds >= scale:
            return f"{nanoseconds / scale:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "build/release/bin")
    programs = sorted(folder.glob("kovdoa_bench_*"))
    if not programs:
        sys.exit(f"{sys.argv[0]}: no kovdoa_bench_* programs in '{folder}'; build the preset 'release' first")
    print("| Operation | Ours | Peer | Ours ÷ peer |")
    print("|---|---|---|---|")
    for program in programs:
        times = medians(program)
        for name, ours in sorted(times.items()):
            if "/peer" in name:
                continue
            peers = {other.replace("/peer", ""): time for other, time in times.items() if "/peer" in other}
            peer = peers.get(name)
            if peer is not None:
                print(f"| `{name}` | {readable(ours)} | {readable(peer)} | {ours / peer:.2f} |")


if __name__ == "__main__":
    main()
