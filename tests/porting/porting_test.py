#!/usr/bin/env python3
"""Tests tq-porting on sample.cpp, whose comments say what is to be found, and the warnings of porting/Warnings.h.

usage: porting_test.py SOURCE_TREE COMPILER..."""

import collections
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

tree = pathlib.Path(sys.argv[1])
here = pathlib.Path(__file__).resolve().parent
failures = []
WARNED = r"warning: '(?:[^']*?[ *:])?(\w+)(?:\([^']*\))?' is deprecated"


def check(holds: bool, what: str) -> None:
    if not holds:
        failures.append(what)


def report(*arguments) -> subprocess.CompletedProcess:
    return subprocess.run([str(tree / "tools" / "tq-porting"), *map(str, arguments)], capture_output=True, text=True,
                          check=False)


def expected_findings() -> collections.Counter:
    found = collections.Counter()
    for number, line in enumerate((here / "sample.cpp").read_text(encoding="utf-8").splitlines(), 1):
        comment = re.search(r";\s*// (.*)$|\)\s+// (.*)$", line)
        for entry in (comment[1] or comment[2]).split(", ") if comment else []:
            kind, name = entry.rsplit(" ", 1)
            found[number, kind, name] += 1
    return found


def test_report() -> None:
    wanted = expected_findings()
    result = report("--json", "--all", here / "sample.cpp")
    found = collections.Counter((f["line"], f["kind"], f["name"]) for f in json.loads(result.stdout)["findings"])
    check(sum(wanted.values()) == 16, f"{sum(wanted.values())} comments read")
    for entry in sorted((wanted - found).elements()):
        check(False, f"not found: {entry}")
    for entry in sorted((found - wanted).elements()):
        check(False, f"found too much: {entry}")
    check(result.returncode == 2, f"status {result.returncode}")
    sarif = json.loads(report("--sarif", here / "sample.cpp").stdout)
    check(len(sarif["runs"][0]["results"]) == 15, "SARIF has all but the complete one")
    text = report(here).stdout
    check("sample.cpp:21: loses: _wtol: partial: reads in the base" in text and "instead: wcstol" in text, text)
    with tempfile.TemporaryDirectory() as folder:
        clean = pathlib.Path(folder, "clean.cpp")
        for source, status in (("int main() {}", 0), ("int p = GetACP();", 1), ("long l = _wtol(t);", 2)):
            clean.write_text(source, encoding="utf-8")
            check(report(folder).returncode == status, f"{source}: status is not {status}")
        check(report(pathlib.Path(folder, "none")).returncode == 3 and report("--what").returncode == 3, "bad arguments")


def warnings_of(compiler: str, source: str, *options: str, fails: bool = False) -> str:
    command = [compiler, "-std=c++17", f"-I{tree}/include", "-Wall", "-Wextra", "-fsyntax-only", *options, "-x", "c++", "-"]
    result = subprocess.run(command, input=source, capture_output=True, text=True, check=False,
                            env=dict(os.environ, LC_ALL="C"))
    check((result.returncode != 0) == fails, f"{compiler}: {result.stderr}")
    return result.stderr


def test_warnings(compiler: str) -> None:
    rows = [line.split("\t") for line in (tree / "docs" / "porting.tsv").read_text(encoding="utf-8").splitlines()]
    rows = [row for row in rows if not row[0].startswith("#") and "::" not in row[0]]
    calls = {"swprintf": "w, L\"\"", "vswprintf": "w, L\"\", list", "wcscpy_s": "w, w", "wcsncpy_s": "w, w, 1"}
    rows = [row for row in rows if row[1] != "complete" or not row[5:]]  # those of the names pack are overloaded
    source = "#include <TqOsBase/TqOsBase.h>\n#include <TqOsBase/porting/Warnings.h>\n"
    source += "#include <TqOsBase/porting/WindowsNames.h>\n"
    check(warnings_of(compiler, source) == "", f"{compiler}: warns without a call")
    source += "void all(wchar_t* w, std::va_list list) {\n"
    for name, *_ in rows:
        use = f"::{name}({calls[name]})" if name in calls else f"&::{name}"
        source += f"    static_cast<void>({use});\n"
    source += "    static_cast<void>(list);\n}\n"
    for level, wanted in ((2, lambda row: row[1] != "complete"), (1, lambda row: row[2] != "")):
        text = warnings_of(compiler, source, f"-DTQ_PORTING_WARNINGS={level}")
        warned = set(re.findall(WARNED, text))
        named = {row[0] for row in rows if wanted(row)}
        check(warned == named, f"{compiler}, level {level}: {sorted(warned ^ named)}")
        check(level == 1 or "instead: wcstol with base 10" in text, f"{compiler}: the warning says what to use")


def test_ported_program(compiler: str) -> None:
    """A program in the Windows way: nothing without the names pack; with it the report and the warnings name one set."""
    path = tree / "examples" / "ported_log_summary" / "main.cpp"
    include = "#include <TqOsBase/porting/WindowsNames.h>\n"
    source = path.read_text(encoding="utf-8")
    bare = source.replace(include, "")
    check(bare != source and "error" in warnings_of(compiler, bare, fails=True), f"{compiler}: compiles without the names")
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "bare.cpp").write_text(bare, encoding="utf-8")
        wanting = json.loads(report("--json", folder).stdout)["counts"]
    found = json.loads(report("--json", "--all", path).stdout)
    check(wanting["header"] > 50 and sum(wanting.values()) == sum(found["counts"].values()),
          f"without the names {wanting}, with them {found['counts']}")
    named = {(f["line"], f["name"]) for f in found["findings"] if f["kind"] != "complete"}
    text = warnings_of(compiler, source, "-include", "TqOsBase/porting/Warnings.h")
    warned = {(int(line), name) for line, name in re.findall(rf"<stdin>:(\d+):\d+: {WARNED}", text)}
    check(warned == named and len(named) > 8, f"{compiler}: report and warnings differ: {sorted(warned ^ named)}")


test_report()
for compiler in sys.argv[2:]:
    test_warnings(compiler)
    test_ported_program(compiler)
print("\n".join(failures) if failures else "all as expected")
sys.exit(1 if failures else 0)
