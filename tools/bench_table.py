#!/usr/bin/env python3
"""Runs the benchmark programs of a folder and prints one table: per case our time, the baseline's and each peer's of the
same run, and the ratio of baseline to ours. Benchmarks are named area/case/who; "ours" and then the baseline come first.
Those with a counter "bytes" tell what memory something takes; that stands in place of the time.

usage: bench_table.py FOLDER [--filter REGEX] [--repetitions N] [--min-time SECONDS] [--write]"""

import argparse
import html
import json
import math
import os
import pathlib
import subprocess
import sys

# What the benchmark of a peer that is not installed says.
MISSING = "missing"


def run(program: pathlib.Path, args: argparse.Namespace) -> list:
    command = [
        str(program),
        "--benchmark_format=json",
        f"--benchmark_repetitions={args.repetitions}",
        f"--benchmark_min_time={args.min_time}",
        "--benchmark_enable_random_interleaving=true",
    ]
    if args.filter:
        command.append(f"--benchmark_filter={args.filter}")
    # Some allocators need more thread-local storage than glibc keeps for libraries that are loaded late.
    environment = dict(os.environ, GLIBC_TUNABLES="glibc.rtld.optional_static_tls=8192")
    result = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False, env=environment)
    if result.returncode != 0:
        sys.exit(f"{program.name} failed:\n{result.stderr}")
    return json.loads(result.stdout)["benchmarks"] if result.stdout.strip() else []


class Measure:
    """What a benchmark measured: nanoseconds, or bytes."""

    def __init__(self, entry: dict) -> None:
        self.is_bytes = "bytes" in entry
        nanoseconds = entry["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
        self.amount = entry["bytes"] if self.is_bytes else nanoseconds

    def __truediv__(self, other: "Measure") -> float:
        return self.amount / other.amount

    def __str__(self) -> str:
        units = (("B", 1), ("KiB", 1024)) if self.is_bytes else (("ns", 1), ("us", 1e3), ("ms", 1e6), ("s", 1e9))
        unit, size = next((u for u in units if self.amount < u[1] * 1000), units[-1])
        return f"{self.amount / size:.3g} {unit}"


def ratio(other: "Measure | None", ours: Measure) -> str:
    return f"{other / ours:.2f}" if other else MISSING


def collect(programs: list, args: argparse.Namespace) -> dict:
    """The median of all contenders by (area, case), in the order of registration; None for a missing peer."""
    cases: dict = {}
    for program in programs:
        # Interleaved runs come shuffled; the family index is the order of registration.
        for entry in sorted(run(program, args), key=lambda entry: entry["family_index"]):
            area, case, who = entry["run_name"].split("/")[:3]
            if entry.get("error_message") == MISSING:
                cases.setdefault((area, case), {})[who] = None
                continue
            if "error_message" in entry:
                sys.exit(f"{entry['name']}: {entry['error_message']}")
            if entry.get("aggregate_name") != "median":
                continue
            cases.setdefault((area, case), {})[who] = Measure(entry)
    for (area, case), times in cases.items():
        if "ours" not in times or len(times) < 2:
            sys.exit(f"{area}/{case}: needs ours and a baseline, has {', '.join(times)}")
    return cases


def table(cases: dict) -> str:
    rows = [["area", "case", "ours", "baseline", "baseline/ours", "peers (peer/ours)"]]
    for (area, case), times in cases.items():
        ours = times["ours"]
        (base, base_time), *peers = [entry for entry in times.items() if entry[0] != "ours"]
        rows.append([
            area, case, str(ours), f"{base} {base_time or MISSING}", ratio(base_time, ours),
            ", ".join(f"{name} {ratio(time, ours)}" for name, time in peers) or "-",
        ])
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    rows.insert(1, ["-" * w for w in widths])
    return "".join("| " + " | ".join(cell.ljust(w) for cell, w in zip(row, widths)) + " |\n" for row in rows)


def plot(area: str, cases: dict) -> str:
    """An SVG with a bar per contender: its time or memory over ours, on a logarithmic scale from 1/4 to 32. Ours is the line at 1."""
    left, width, bar, gap, low, high = 250, 420, 12, 10, -2, 5
    lines, y = [], 30
    place = lambda value: left + (min(max(math.log2(value), low), high) - low) * width / (high - low)
    for (of, case), times in cases.items():
        if of != area:
            continue
        others = [(who, time) for who, time in times.items() if who != "ours" and time]
        label_y = y + bar * len(others) / 2 + 4
        lines.append(f'<text x="{left - 100}" y="{label_y:.0f}" text-anchor="end">{html.escape(case)}</text>')
        for index, (who, time) in enumerate(others):
            over_ours = time / times["ours"]
            start, end = sorted((place(1), place(over_ours)))
            colour = "#4878a8" if index == 0 else "#a8b8c8"
            lines.append(f'<rect x="{start:.1f}" y="{y}" width="{end - start:.1f}" height="{bar - 2}" fill="{colour}"/>')
            lines.append(f'<text x="{left - 6}" y="{y + 9}" text-anchor="end" fill="#666">{html.escape(who)}</text>')
            lines.append(f'<text x="{max(end, place(1)) + 4:.1f}" y="{y + 9}">{over_ours:.2f}</text>')
            y += bar
        y += gap
    grid = []
    for exponent in range(low, high + 1):
        x = place(2.0**exponent)
        grid.append(f'<line x1="{x:.1f}" y1="20" x2="{x:.1f}" y2="{y}" stroke="{"#000" if exponent == 0 else "#ddd"}"/>')
        grid.append(f'<text x="{x:.1f}" y="14" text-anchor="middle" fill="#666">{2.0**exponent:g}</text>')
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 60}" height="{y + 6}" font-family="sans-serif" '
        'font-size="10">',
        f"<title>{html.escape(area)}: each contender over ours</title>",
        '<rect width="100%" height="100%" fill="#fff"/>', *grid, *lines, "</svg>", ""])


def write_report(folder: pathlib.Path, cases: dict) -> None:
    areas = list(dict.fromkeys(area for area, _ in cases))
    text = ["# Benchmarks\n\n",
            "One run on one machine, written by `./tq bench --write`: medians of processor time, the contenders of a case\n",
            "interleaved. The ratios are what to look at; above 1 ours is faster, or smaller where memory is measured. The first\n",
            "contender is the baseline, the others are peers.\n\n", table(cases)]
    for area in areas:
        name = f"benchmarks-{area.replace(' ', '-')}.svg"
        (folder / name).write_text(plot(area, cases), encoding="utf-8")
        text.append(f"\n## {area}\n\n![each contender over ours]({name})\n")
    (folder / "benchmarks.md").write_text("".join(text), encoding="utf-8")


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--filter", default="")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--min-time", default="0.05")
    parser.add_argument("--write", action="store_true", help="also write docs/benchmarks.md and its plots")
    args = parser.parse_args()

    programs = sorted(p for p in args.folder.iterdir() if p.is_file() and os.access(p, os.X_OK))
    if not programs:
        sys.exit(f"no benchmark programs in {args.folder}")
    cases = collect(programs, args)
    print(table(cases), end="")
    if args.write:
        write_report(pathlib.Path(__file__).resolve().parent.parent / "docs", cases)
    return 0


if __name__ == "__main__":
    sys.exit(main())
