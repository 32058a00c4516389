#!/usr/bin/env python3
"""Runs the benchmarks and writes what they measured into docs/performance.md, with a picture of how costs grow.

usage: bench/report.py [--programs FOLDER] [--repetitions N] [--only WORD] [--print]

  --programs     the folder with the kovdoa_bench_* programs (default: build/release/bin)
  --repetitions  of each benchmark; medians are reported (default: 5)
  --only         run only the programs whose name contains WORD, and print
  --print        print the tables instead of writing them

Both sides of a ratio come from one run of one program. Needs gnuplot for the picture.
"""

import argparse
import datetime
import json
import math
import os
import pathlib
import platform
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs" / "performance.md"
PICTURE = ROOT / "docs" / "scale.png"
BEGIN = "<!-- bench/report.py writes from here -->"
END = "<!-- to here -->"
# What the runner appends to a name for the way the time was taken.
SUFFIXES = ("_median", "/manual_time", "/real_time")
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}

# The ratios that we promise. A benchmark may stand for several picture sizes.
TARGETS = {
    "ArrayReader/Init": 0.7,
    "ArrayReader/Publish": 1.3,
    "Filter/OneSection": 1.0,
    "GasLeak/LoadTable": 2.0,
    "Imaging/Regression": 0.3,
    "Imaging/Render": 0.5,
    "Imaging/RenderInsideAndOutside": 0.5,
    "Listening/ReadAll": 0.5,
    "MicCheck/RmsAndSame": 6.0,
    "MicCheck/Xcorr": 0.1,
    "Prpd/FeedAudio": 1.5,
    "Prpd/UpdatePdd": 2.0,
    "Pulses/GetPulse": 3.0,
    "Resampler/Fast96To48": 0.5,
    "Result/Load": 3.0,
    "Result/Save": 1.5,
    "Statistics/Median2D": 0.3,
    "Tracking/FeedData": 3.0,
}

# Benchmark, title, axis, what one step on the axis is.
SCALES = (
    ("Scale/Render", "Rendering", "picture, megapixels", 0.1),
    ("Scale/Load", "Loading a recording", "frames", 1.0),
    ("Scale/Track", "Tracking", "peaks, as many tracks", 1.0),
    ("Scale/Publish", "Publishing to four sources", "channels", 1.0),
)


def run(program, repetitions):
    """The median rows of one program by plain name: time in nanoseconds, and the counters."""
    arguments = [
        str(program),
        "--benchmark_format=json",
        f"--benchmark_repetitions={repetitions}",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_enable_random_interleaving=true",
    ]
    output = subprocess.run(arguments, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout
    rows = {}
    for row in json.loads(output)["benchmarks"]:
        if row.get("error_occurred"):
            sys.exit(f"{program.name}: {row['name']}: {row['error_message']}")
        if row.get("aggregate_name") != "median":
            continue
        name = row["name"]
        for suffix in SUFFIXES:
            name = name.replace(suffix, "")
        rows[name] = {"time": row["real_time"] * NANOSECONDS[row["time_unit"]],
                      "real time": row.get("real_time_factor")}
    return rows


def measure(folder, repetitions, only):
    programs = [program for program in sorted(folder.glob("kovdoa_bench_*")) if only in program.name and program.suffix == ""]
    if not programs:
        sys.exit(f"{sys.argv[0]}: no such kovdoa_bench_* programs in '{folder}'; build the preset 'release' first")
    rows = {}
    for program in programs:
        print(f"running {program.name}", file=sys.stderr)
        rows.update(run(program, repetitions))
    return rows


def readable(nanoseconds):
    for scale, unit in ((1e9, "s"), (1e6, "ms"), (1e3, "µs")):
        if nanoseconds >= scale:
            return f"{nanoseconds / scale:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def companion(rows, name, kind):
    """The time of a benchmark's peer or bound: the row of the same name with the kind somewhere in it."""
    for other, row in rows.items():
        if f"/{kind}" in other and other.replace(f"/{kind}", "") == name:
            return row["time"]
    return None


def target(name):
    """For all sizes and variants of an operation alike."""
    return TARGETS.get("/".join(name.split("/")[:2]))


def ratio_table(rows):
    lines = ["| Operation | Ours | Peer | Ours ÷ peer | At most | Bound | Ours ÷ bound |", "|---|---|---|---|---|---|---|"]
    missed = []
    for name, row in sorted(rows.items()):
        peer = companion(rows, name, "peer")
        if peer is None or "/peer" in name:
            continue
        ratio = row["time"] / peer
        most = target(name)
        if most is not None and ratio > most:
            missed.append(name)
        bound = companion(rows, name, "bound")
        bounds = f"{readable(bound)} | {row['time'] / bound:.2f}" if bound else " | "
        lines.append(f"| `{name}` | {readable(row['time'])} | {readable(peer)} | {ratio:.2f} | {most or ''} | {bounds} |")
    lines.append("")
    lines.append("Above its limit in this run: " + ", ".join(f"`{name}`" for name in missed) + "." if missed
                 else "Every limit was kept in this run.")
    return lines


def real_time_table(rows):
    lines = ["| Work, one core | Times real time |", "|---|---|"]
    for name, row in sorted(rows.items()):
        if row["real time"] and "/peer" not in name:
            factor = float(f"{row['real time']:.2g}")
            lines.append(f"| `{name}` | {factor:,.0f} |")
    return lines


def live_table(rows):
    lines = ["| Step | Time | Of 40 ms |", "|---|---|---|"]
    for step in ("Publish", "Render", "Save", "Track", "WholeFrame"):
        time = rows[f"Live/{step}"]["time"]
        lines.append(f"| `Live/{step}` | {readable(time)} | {100 * time / 40e6:.2f} % |")
    return lines


def series(rows, name, step):
    """Sizes and times of one scale benchmark, by size."""
    points = [(int(other.rsplit("/", 1)[1]) * step, row["time"]) for other, row in rows.items()
              if other.rsplit("/", 1)[0] == name]
    return sorted(points)


def slope(points):
    """How time grows with size, as an exponent: least squares of the logarithms over the upper half of the sizes."""
    upper = points[len(points) // 2:]
    x = [math.log(size) for size, _ in upper]
    y = [math.log(time) for _, time in upper]
    mean_x, mean_y = sum(x) / len(x), sum(y) / len(y)
    return sum((a - mean_x) * (b - mean_y) for a, b in zip(x, y)) / sum((a - mean_x) ** 2 for a in x)


def scale_table(rows):
    lines = ["| Work | From | To | Slope of the upper half |", "|---|---|---|---|"]
    for name, title, axis, step in SCALES:
        points = series(rows, name, step)
        ends = [f"{readable(time)} at {size:g}" for size, time in (points[0], points[-1])]
        lines.append(f"| {title} ({axis}) | {ends[0]} | {ends[1]} | {slope(points):.2f} |")
    return lines


def draw(rows):
    script = ["set terminal pngcairo size 1200,800 font 'sans,11'", f"set output '{PICTURE}'", "set multiplot layout 2,2",
              "set logscale xy", "set grid", "set key top left", "set ylabel 'milliseconds'", "set format x '%g'",
              "set format y '%g'"]
    for name, title, axis, step in SCALES:
        points = series(rows, name, step)
        last = points[-1]
        script += ["$points << end"] + [f"{size:g} {time * 1e-6:g}" for size, time in points] + ["end"]
        # Through the last point: what linear growth would look like.
        script += [f"set title '{title}'", f"set xlabel '{axis}'",
                   f"plot [{points[0][0] * 0.8:g}:{last[0] * 1.25:g}] $points using 1:2 with linespoints pt 7 lw 2 lc rgb '#0060ad' "
                   f"title 'measured', x * {last[1] * 1e-6 / last[0]:g} with lines dt 2 lc rgb '#888888' title 'linear'"]
    subprocess.run(["gnuplot"], input="\n".join(script) + "\n", text=True, check=True)


def machine():
    """The machine in one sentence."""
    facts = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8")
    processor = re.search(r"model name\s*:\s*(.*)", facts)
    memory = re.search(r"MemTotal:\s*(\d+)", pathlib.Path("/proc/meminfo").read_text(encoding="utf-8"))
    release = dict(line.split("=", 1) for line in pathlib.Path("/etc/os-release").read_text(encoding="utf-8").splitlines()
                   if "=" in line)
    # As pixelkernels.cpp chooses.
    kernels = "AVX-512" if " avx512vbmi " in facts else "AVX2" if " avx2 " in facts else "SSE2"
    compiler = subprocess.run([os.environ.get("CXX", "c++"), "--version"], capture_output=True, text=True,
                              check=True).stdout.splitlines()[0]
    return (f"{processor.group(1) if processor else platform.machine()} ({kernels}), {os.cpu_count()} cores, "
            f"{round(int(memory.group(1)) / 2**20)} GiB, {release.get('PRETTY_NAME', '').strip(chr(34))}, {compiler}")


def report(rows, repetitions):
    today = datetime.date.today().isoformat()
    return "\n".join([
        f"Measured on {today}: {machine()}; preset `release`, medians of {repetitions} repetitions.", "",
        *ratio_table(rows), "", "### Beside real time", "", *real_time_table(rows), "",
        "### One frame of the live picture", "", *live_table(rows), "",
        "### How the cost grows", "", *scale_table(rows), "", "![Time over size](scale.png)"])


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build" / "release" / "bin")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--only", default="")
    parser.add_argument("--print", action="store_true", dest="prints")
    arguments = parser.parse_args()
    rows = measure(arguments.programs, arguments.repetitions, arguments.only)
    if arguments.only:
        print("\n".join(ratio_table(rows)))
        return
    text = report(rows, arguments.repetitions)
    if arguments.prints:
        print(text)
        return
    draw(rows)
    before, rest = DOCUMENT.read_text(encoding="utf-8").split(BEGIN)
    after = rest.split(END)[1]
    DOCUMENT.write_text(f"{before}{BEGIN}\n\n{text}\n\n{END}{after}", encoding="utf-8")
    print(f"wrote {DOCUMENT.relative_to(ROOT)} and {PICTURE.relative_to(ROOT)}")


if __name__ == "__main__":
    main()
