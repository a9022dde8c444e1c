#!/usr/bin/env python3
"""Compiles checked_faults.cpp, where every line with a comment must fail with the words in it, and no other line.

usage: checked_faults.py SOURCE_TREE COMPILER..."""

import collections
import pathlib
import re
import subprocess
import sys

tree = pathlib.Path(sys.argv[1])
source = pathlib.Path(__file__).resolve().with_suffix(".cpp")
wanted = {number: comment[1] for number, line in enumerate(source.read_text(encoding="utf-8").splitlines(), 1)
          if (comment := re.search(r";\s+// (.*)$", line))}
failures = 0


def names(text: str, words: str) -> bool:
    number, name = re.fullmatch(r"argument<(\d)>::(\w+)", words).groups()
    return bool(re.search(rf"argument<{number}>::{name}|argument<\w+>::{name}\w*\(\) \[with int \w+ = {number}\]", text))


for compiler in sys.argv[2:]:
    limit = "-ferror-limit=0" if "clang" in compiler else "-fmax-errors=0"
    output = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", limit, f"-I{tree / 'include'}", str(source)],
                            capture_output=True, text=True, check=False).stderr
    said = collections.defaultdict(str)
    number = 0
    for line in output.splitlines():
        if place := re.search(rf"{source.name}:(\d+):\d+:\s+(?:error|in )", line):
            number = int(place[1])
        said[number] += line + "\n"
    for number in sorted(wanted.keys() | (said.keys() - {0})):
        if number not in wanted or not names(said[number], wanted[number]):
            failures += 1
            print(f"{compiler}: line {number}: expected {wanted.get(number, 'no error')}, got:\n{said[number]}")
    print(f"{compiler}: {len(wanted)} faults")
sys.exit(1 if failures or not wanted else 0)
