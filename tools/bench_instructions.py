#!/usr/bin/env python3
"""Counts the instructions that our side of the benchmarks executes per iteration, by callgrind. The counts hardly change
from run to run, so they show what a change of ours does where times on a busy machine do not.

usage: bench_instructions.py FOLDER [--filter REGEX]"""

import argparse
import os
import pathlib
import re
import subprocess
import sys

# Counted at two numbers of iterations; what comes before and after the loop falls out of the difference.
FEW, MANY = 10, 60

# What these areas measure is done in processes of their own.
OF_OTHER_PROCESSES = ("memory", "workload")


def run(command: list, **environment: str) -> subprocess.CompletedProcess:
    result = subprocess.run(command, capture_output=True, text=True, check=False, env=dict(os.environ, **environment))
    if result.returncode != 0:
        sys.exit(f"{' '.join(command)} failed:\n{result.stderr}")
    return result


def count(program: pathlib.Path, name: str, iterations: int) -> int:
    result = run(
        ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", str(program),
         "--benchmark_filter=^" + re.sub(r"[^\w/:]", ".", name) + "$"], TQ_BENCH_ITERATIONS=str(iterations))
    if name not in result.stdout:
        sys.exit(f"{program.name} did not run {name}")
    return int(re.search(r"Collected : (\d+)", result.stderr)[1])


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--filter", default="")
    args = parser.parse_args()

    print("| case | instructions per iteration |\n| ---- | ---- |")
    for program in sorted(p for p in args.folder.iterdir() if p.is_file() and os.access(p, os.X_OK)):
        for line in run([str(program), "--benchmark_list_tests"]).stdout.splitlines():
            area, case, who = line.split("/")[:3]
            if who != "ours" or area in OF_OTHER_PROCESSES or not re.search(args.filter, f"{area}/{case}"):
                continue
            name = "/".join((area, case, who, f"iterations:{FEW}"))
            few = count(program, name, FEW)
            many = count(program, name.replace(f":{FEW}", f":{MANY}"), MANY)
            print(f"| {area}: {case} | {(many - few) / (MANY - FEW):,.0f} |", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
