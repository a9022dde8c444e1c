#!/usr/bin/env python3
"""Prints how much of every room the test suite has run, from the counters in a build folder of the preset coverage: lines
and branches of its sources and internal headers, and the files of which fewer than 90 % of the lines ran. Branches that
the compiler adds for exceptions are left out. Then how large the tests are beside the library, in lines of C++ that are
not blank. Exits with 1 when a room as a whole has fewer than 90 % of its lines, or the tests have more than 34 % of the
library's.

usage: coverage.py BUILD"""

import collections
import json
import pathlib
import subprocess
import sys

ENOUGH = 0.9
MOST_TESTS = 0.34
ROOMS = ["platform", "base", "diag", "memory", "containers", "codepage", "fltcvt", "format", "stream", "crtcompat",
         "porting"]


def share(part: int, whole: int) -> str:
    return f"{100 * part / whole:5.1f} %" if whole else "      -"


class Count:
    def __init__(self):
        self.lines = self.lines_run = self.branches = self.branches_run = 0

    def add(self, data: dict) -> None:
        for line in data["lines"]:
            if line.get("gcovr/noncode"):
                continue
            self.lines += 1
            self.lines_run += line["count"] > 0
            self.branches += len(line["branches"])
            self.branches_run += sum(branch["count"] > 0 for branch in line["branches"])

    def is_enough(self) -> bool:
        return self.lines_run >= ENOUGH * self.lines

    def text(self) -> str:
        return (f"{share(self.lines_run, self.lines)} of {self.lines:5} lines   "
                f"{share(self.branches_run, self.branches)} of {self.branches:5} branches")


def source_lines(folder: pathlib.Path) -> int:
    return sum(bool(line.strip()) for path in folder.rglob("*") if path.suffix in (".h", ".cpp")
               for line in path.read_text(encoding="utf-8").splitlines())


def tests_are_small(root: pathlib.Path) -> bool:
    """Prints the lines of every folder of tests and their share of the library's."""
    library = source_lines(root / "include") + source_lines(root / "src")
    folders = {path.name: source_lines(path) for path in sorted((root / "tests").iterdir()) if path.is_dir()}
    tests = sum(folders.values())
    print("lines of tests:", ", ".join(f"{name} {lines}" for name, lines in folders.items() if lines))
    print(f"{tests} lines of tests beside {library} of the library: {share(tests, library).strip()}, at most {MOST_TESTS:.0%}")
    return tests <= MOST_TESTS * library


def main() -> int:
    root = pathlib.Path(__file__).resolve().parent.parent
    build = pathlib.Path(sys.argv[1]).resolve()
    command = ["gcovr", "--root", str(root), "--object-directory", str(build), "--exclude-throw-branches",
               "--exclude-unreachable-branches", "--filter", "src/", "--exclude", "src/memory/HeapCheck.cpp", "--json", "-",
               "--gcov-ignore-parse-errors", "-j", "2", str(build)]
    report = json.loads(subprocess.run(command, cwd=root, capture_output=True, text=True, check=True).stdout)
    rooms = collections.defaultdict(Count)
    low = []
    for data in report["files"]:
        file = Count()
        file.add(data)
        rooms[pathlib.PurePosixPath(data["file"]).parts[1]].add(data)
        if file.lines and not file.is_enough():
            low.append(f"  {data['file']}: {file.text()}")
    total = Count()
    for data in report["files"]:
        total.add(data)
    for room in ROOMS:
        print(f"{room:11} {rooms[room].text()}")
    print(f"{'all':11} {total.text()}")
    if low:
        print(f"files below {ENOUGH:.0%} of their lines:", *low, sep="\n")
    is_small = tests_are_small(root)
    return 0 if total.lines and is_small and all(rooms[room].is_enough() for room in ROOMS) else 1


if __name__ == "__main__":
    sys.exit(main())
