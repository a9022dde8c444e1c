#!/usr/bin/env python3
"""Checks that the porting tables name every Windows and C runtime function that the shared library exports, and no
other: one those at global scope, the other those of the headers porting/Windows*.h, which take theirs from tq::windows.
Prints every offence and exits with 1 if there is one.

usage: check_porting.py LIBRARY [TABLE]"""

import pathlib
import re
import subprocess
import sys

# Exported functions at global scope are Windows or C runtime names, unless they begin with "tq" or "Tq" or stand here.
OWN = {
    "AnalyzeLineBreaks", "FormatScienceDoubleAndOutputString", "InputWithFormat", "IsMultiByteCodePage", "OutputWithFormat",
    "ReadBigfontIni", "createFileIOStreamBuf", "createFileIStreamBuf", "createFileOStreamBuf", "createFileStreamBuf",
    "createTqLock", "destoryFileIOStreamBuf", "findCodepageByBigfontInUserDefined", "initOsBaseUnits",
    "isAsianCodepage", "mapCodepage", "reMapCodepage",
}
# Classes whose members go by Windows names.
CLASSES = ("TqCharOp",)
STATUSES = {"complete", "partial", "fixed answer", "no effect", "ends the process"}
ROW = re.compile(r"^\| `([\w:]+)` \|(?: `(Windows\w+\.h)` \|)? ([^|`]*?) \|([^|]*)\|[^|]*\|$")
PACK = "tq::windows::"


def exported(library: str) -> set:
    nm = ["nm", "--dynamic", "--defined-only", library]
    lines = subprocess.run(nm, capture_output=True, text=True, check=True).stdout.splitlines()
    functions = [line.split()[2].split("@")[0] for line in lines if line.split()[1] in "TW"]
    shown = subprocess.run(["c++filt"], input="\n".join(functions), capture_output=True, text=True, check=True).stdout
    # The linker's own marks are no functions of ours.
    return {text.split("(")[0] for text in shown.splitlines() if text not in ("_init", "_fini")}


def is_foreign(name: str) -> bool:
    if name.startswith(CLASSES):
        return True
    return re.fullmatch(r"\w+", name) is not None and not name.startswith(("tq", "Tq")) and name not in OWN


def of_pack(root: pathlib.Path) -> dict:
    """The functions that the headers of the names pack take or bring to global scope, with their header."""
    found = {}
    for path in sorted((root / "include" / "TqOsBase" / "porting").glob("Windows*.h")):
        text = path.read_text(encoding="utf-8")
        taken = [name for name in re.findall(rf"^using {PACK}(\w+);$", text, re.MULTILINE) if f" {name}(" in text]
        found.update({name: path.name for name in taken + re.findall(r"^inline \w+ (\w+)\(", text, re.MULTILINE)})
    return found


def main() -> int:
    root = pathlib.Path(__file__).resolve().parent.parent
    table = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else root / "docs" / "porting.md"
    names = exported(sys.argv[1])
    pack = of_pack(root)
    wanted = {name for name in names if is_foreign(name)} | set(pack)
    offences = [] if wanted and pack else [f"{sys.argv[1]}: no such functions"]
    offences += [f"{name} is exported and in no header" for name in sorted(names)
                 if name.startswith(PACK) and name[len(PACK):] not in pack]
    seen = set()
    for number, line in enumerate(table.read_text(encoding="utf-8").splitlines(), 1):
        row = ROW.match(line)
        if not row:
            continue
        name, header, status, difference = row.groups()
        if name in seen:
            offences.append(f"{table}:{number}: {name} stands there twice")
        if name not in wanted:
            offences.append(f"{table}:{number}: {name} is not exported")
        if header != pack.get(name):
            offences.append(f"{table}:{number}: {name} is in {pack.get(name, 'the library itself')}")
        if status not in STATUSES:
            offences.append(f"{table}:{number}: {name}: no such status: {status}")
        if status == "partial" and not difference.strip():
            offences.append(f"{table}:{number}: {name}: what differs is not said")
        seen.add(name)
    offences += [f"{table}: {name} is there and missing" for name in sorted(wanted - seen)]
    print("\n".join(offences) if offences else f"{len(seen)} functions in the table")
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
