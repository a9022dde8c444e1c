#!/usr/bin/env python3
"""Runs the benchmark programs of a folder and prints one table: per case our time, the baseline's and each peer's of the
same run, and the ratio of baseline to ours. Benchmarks are named area/case/who; "ours" and then the baseline come first.

usage: bench_table.py FOLDER [--filter REGEX] [--repetitions N] [--min-time SECONDS]"""

import argparse
import json
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
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"{program.name} failed:\n{result.stderr}")
    return json.loads(result.stdout)["benchmarks"] if result.stdout.strip() else []


def in_nanoseconds(entry: dict) -> float:
    return entry["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]


def shown(nanoseconds: float) -> str:
    for unit, size in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
        if nanoseconds < size * 1000:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds / 1e9:.3g} s"


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--filter", default="")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--min-time", default="0.05")
    args = parser.parse_args()

    programs = sorted(p for p in args.folder.iterdir() if p.is_file() and os.access(p, os.X_OK))
    if not programs:
        sys.exit(f"no benchmark programs in {args.folder}")
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
            cases.setdefault((area, case), {})[who] = in_nanoseconds(entry)

    header = ["area", "case", "ours", "baseline", "baseline/ours", "peers (peer/ours)"]
    rows = []
    for (area, case), times in cases.items():
        if "ours" not in times or len(times) < 2:
            sys.exit(f"{area}/{case}: needs ours and a baseline, has {', '.join(times)}")
        ours = times.pop("ours")
        (base, base_time), *peers = times.items()
        rows.append([
            area, case, shown(ours), f"{base} {shown(base_time)}", f"{base_time / ours:.2f}",
            ", ".join(f"{name} {f'{time / ours:.2f}' if time else MISSING}" for name, time in peers) or "-",
        ])
    widths = [max(len(row[i]) for row in [header, *rows]) for i in range(len(header))]
    for row in [header, ["-" * w for w in widths], *rows]:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
