#!/usr/bin/env python3
"""Compares the exported symbols of a Linux and a macOS build of the library, name by name, and exits with 1 when one is
missing on either side. Left out is what belongs to the language's run-time library, which the cross-linked macOS library
carries in itself; the standard library's inline namespaces and the two spellings of 64-bit integers and of FILE are made
alike.

usage: compare_symbols.py LINUX_LIBRARY MACOS_LIBRARY NM"""

import re
import subprocess
import sys

# Mangled names of the run-time library: std, its internals, operator new and delete, type information of built-in types.
FOREIGN = re.compile(r"_Z(T[ISVTC]|GV|Thn\d+_|Tv\w+_)?(N[KVR]*)?(St|S[abdios]|\d+__cxxabiv1|\d+__gnu_cxx|nw|na|dl|da)"
                     r"|_ZT[IS]P?K?[a-zD]\w?$")
# All functions but these have C++ linkage.
C_FUNCTION = re.compile(r"tq[A-Z]")
MACH_SYMBOL = re.compile(r"^[0-9a-f]+ \([^)]*\) (?:weak )?external (?:automatically hidden )?_(\S+)$")


def mangled(nm: str, library: str, is_mach: bool) -> list:
    if is_mach:
        # Only this form tells the hidden ("private external") ones apart.
        lines = subprocess.run([nm, "-m", library], capture_output=True, text=True, check=True).stdout.split("\n")
        return [match.group(1) for match in map(MACH_SYMBOL.match, lines) if match]
    flags = ["--dynamic", "--extern-only", "--defined-only", "--format=just-symbols"]
    lines = subprocess.run([nm, *flags, library], capture_output=True, text=True, check=True).stdout.split("\n")
    return [line.strip().split("@")[0] for line in lines if line.strip()]


def exported(nm: str, library: str, is_mach: bool) -> set:
    names = [name for name in mangled(nm, library, is_mach)
             if (C_FUNCTION.match(name) or name.startswith("_Z")) and not FOREIGN.match(name)]
    shown = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True).stdout
    return {normalised(name) for name in shown.split("\n") if name}


def normalised(name: str) -> str:
    name = re.sub(r"std::(__1|__cxx11)::", "std::", name)
    name = re.sub(r"\[abi:\w+\]", "", name)
    name = re.sub(r"\blong long\b", "long", name)
    name = re.sub(r"\b__sFILE\b", "_IO_FILE", name)
    return re.sub(r"> >", ">>", name)


def main() -> int:
    linux = exported(sys.argv[3], sys.argv[1], False)
    mac = exported(sys.argv[3], sys.argv[2], True)
    for name in sorted(linux - mac):
        print(f"missing on macOS: {name}")
    for name in sorted(mac - linux):
        print(f"only on macOS: {name}")
    print(f"{len(linux)} exported symbols on Linux, {len(mac)} on macOS, {len(linux & mac)} in both")
    return 0 if linux == mac and linux else 1


if __name__ == "__main__":
    sys.exit(main())
