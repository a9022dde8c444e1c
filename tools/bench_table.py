#!/usr/bin/env python3
"""Runs the benchmark programs of a folder and prints one table: per case our time, the baseline's and each peer's of the
same run, and the ratio of theirs to ours. Benchmarks are named area/case/who; "ours" and then the baseline come first.
Those with a counter "bytes" tell what memory something takes; that stands in place of the time.

usage: bench_table.py FOLDER [--filter REGEX] [--repetitions N] [--min-time SECONDS] [--write]

The filter is searched for in "area/case", whatever its letters' case; every contender of a chosen case runs."""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys

import bench_report

# What the benchmark of a peer that is not installed says.
MISSING = "missing"

# Some allocators need more thread-local storage than glibc keeps for libraries that are loaded late.
ENVIRONMENT = dict(os.environ, GLIBC_TUNABLES="glibc.rtld.optional_static_tls=8192")


def output_of(program: pathlib.Path, *options: str) -> str:
    result = subprocess.run([str(program), *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                            check=False, env=ENVIRONMENT)
    if result.returncode != 0:
        sys.exit(f"{program.name} failed:\n{result.stderr}")
    return result.stdout


def chosen(program: pathlib.Path, wanted: str) -> list:
    """The program's benchmarks whose "area/case" holds the wanted expression."""
    names = output_of(program, "--benchmark_list_tests=true").splitlines()
    return [name for name in names if re.search(wanted, "/".join(name.split("/")[:2]), re.IGNORECASE)]


def run(program: pathlib.Path, names: list, args: argparse.Namespace) -> list:
    # The benchmark library knows no names, only expressions.
    literal = "|".join(re.sub(r"([][(){}.*+?^$|\\])", r"\\\1", name) for name in names)
    text = output_of(
        program, "--benchmark_format=json", f"--benchmark_repetitions={args.repetitions}",
        f"--benchmark_min_time={args.min_time}", "--benchmark_enable_random_interleaving=true",
        f"--benchmark_filter=^({literal})$")
    return json.loads(text)["benchmarks"]


class Measure:
    """What a benchmark measured: nanoseconds, or bytes."""

    def __init__(self, entry: dict) -> None:
        self.is_bytes = "bytes" in entry
        clock = "real_time" if entry["run_name"].endswith(("/real_time", "/manual_time")) else "cpu_time"
        nanoseconds = entry[clock] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
        self.amount = entry["bytes"] if self.is_bytes else nanoseconds

    def __truediv__(self, other: "Measure") -> float:
        return self.amount / other.amount

    def __str__(self) -> str:
        units = (("B", 1), ("KiB", 1024), ("MiB", 1024**2)) if self.is_bytes else (("ns", 1), ("us", 1e3), ("ms", 1e6), ("s", 1e9))
        unit, size = next((u for u in units if self.amount < u[1] * 1000), units[-1])
        return f"{self.amount / size:.3g} {unit}"


def ratio(other: "Measure | None", ours: Measure) -> str:
    return f"{other / ours:.2f}" if other else MISSING


def collect(programs: dict, args: argparse.Namespace) -> dict:
    """The median of all contenders by (area, case), in the order of registration; None for a missing peer."""
    cases: dict = {}
    for program, names in programs.items():
        # Interleaved runs come shuffled; the family index is the order of registration.
        for entry in sorted(run(program, names, args), key=lambda entry: entry["family_index"]):
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
    rows = [["area", "case", "ours", "baseline", "baseline/ours", "best peer/ours", "peers (peer/ours)"]]
    for (area, case), times in cases.items():
        ours = times["ours"]
        (base, base_time), *peers = [entry for entry in times.items() if entry[0] != "ours"]
        measured = [time for _, time in peers if time]
        best = min(measured, key=lambda time: time.amount) if measured else None
        rows.append([
            area, case, str(ours), f"{base} {base_time or MISSING}", ratio(base_time, ours),
            ratio(best, ours) if best else "-",
            ", ".join(f"{name} {ratio(time, ours)}" for name, time in peers) or "-",
        ])
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    rows.insert(1, ["-" * w for w in widths])
    return "".join("| " + " | ".join(cell.ljust(w) for cell, w in zip(row, widths)) + " |\n" for row in rows)


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--filter", default="")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--min-time", default="0.05")
    parser.add_argument("--write", action="store_true", help="also write docs/benchmarks.md and its plots")
    args = parser.parse_args()

    found = sorted(p for p in args.folder.iterdir() if p.is_file() and os.access(p, os.X_OK))
    if not found:
        sys.exit(f"no benchmark programs in {args.folder}")
    programs = {program: names for program in found if (names := chosen(program, args.filter))}
    if not programs:
        sys.exit(f"no case matches {args.filter!r}")
    cases = collect(programs, args)
    text = table(cases)
    print(text, end="")
    if args.write:
        bench_report.write(pathlib.Path(__file__).resolve().parent.parent / "docs", args.folder, cases, text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
