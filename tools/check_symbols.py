#!/usr/bin/env python3
"""Compares the symbols that a build of the library exports with the list of its interface, name by name, and exits with 1
when one has gone or one stands not in the list. With --write the library's symbols become the list.

The list is of demangled names, one a line, sorted. A library for Linux must export nothing else. In one for macOS, which
carries the language's run-time library in itself, that library's names are left out; the standard library's inline
namespaces and the two spellings of 64-bit integers and of FILE are made alike. The list is that of x86-64; on arm64 a
va_list is another type, and macOS keeps there the type information of types without virtual functions to itself.

usage: check_symbols.py [--write] LIST LIBRARY [NM]"""

import argparse
import pathlib
import re
import subprocess
import sys

# Mangled names of the run-time library: std, its internals, operator new and delete, type information of built-in types.
FOREIGN = re.compile(r"_Z(T[ISVTC]|GV|Thn\d+_|Tv\w+_)?(N[KVR]*)?(St|S[abdios]|\d+__cxxabiv1|\d+__gnu_cxx|nw|na|dl|da)"
                     r"|_ZT[IS]P?K?[a-zD]\w?$")
# All functions but these have C++ linkage; variables at global scope are not mangled.
UNMANGLED = re.compile(r"tq[A-Z]|G_")
MACH_SYMBOL = re.compile(r"^[0-9a-f]+ \([^)]*\) (?:weak )?external (?:automatically hidden )?_(\S+)$")
# The linker's own marks.
MARKS = {"_init", "_fini"}


def lines_of(*command: str, text: str = "") -> list:
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout.splitlines()


def mangled(nm: str, library: str) -> list:
    if pathlib.Path(library).read_bytes()[:4] == b"\x7fELF":
        flags = ["--dynamic", "--extern-only", "--defined-only", "--format=posix"]
        return [line.split()[0].split("@")[0] for line in lines_of(nm, *flags, library)]
    # Only this form tells the hidden ("private external") ones apart.
    names = [match.group(1) for match in map(MACH_SYMBOL.match, lines_of(nm, "-m", library)) if match]
    return [name for name in names if (UNMANGLED.match(name) or name.startswith("_Z")) and not FOREIGN.match(name)]


def normalised(name: str) -> str:
    name = re.sub(r"std::(__1|__cxx11)::", "std::", name)
    name = re.sub(r"\[abi:\w+\]", "", name)
    name = re.sub(r"\blong long\b", "long", name)
    name = re.sub(r"\b__sFILE\b", "_IO_FILE", name)
    return re.sub(r"> >", ">>", name)


def expected(name: str, library: str) -> str:
    """What a listed symbol is called in this library; nothing for one that its system keeps to itself."""
    head = pathlib.Path(library).read_bytes()[:20]
    if head[:4] == b"\x7fELF":
        is_arm = head[18] == 0xB7
        return name.replace("__va_list_tag*", "std::__va_list") if is_arm else name
    if head[4:8] != b"\x0c\x00\x00\x01":
        return name
    return "" if re.fullmatch("typeinfo (name )?for Lumo::ErrorStatus", name) else name.replace("__va_list_tag*", "char*")


def exported(nm: str, library: str) -> set:
    names = set(mangled(nm, library)) - MARKS
    return {normalised(name) for name in lines_of("c++filt", text="\n".join(sorted(names))) if name}


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("library")
    parser.add_argument("nm", nargs="?", default="nm")
    arguments = parser.parse_args()
    found = exported(arguments.nm, arguments.library)
    if arguments.write:
        arguments.list.write_text("".join(name + "\n" for name in sorted(found)), encoding="utf-8")
    listed = {expected(name, arguments.library) for name in arguments.list.read_text(encoding="utf-8").splitlines()}
    listed.discard("")
    for name in sorted(listed - found):
        print(f"{arguments.library}: gone: {name}")
    for name in sorted(found - listed):
        print(f"{arguments.library}: not in {arguments.list.name}: {name}")
    print(f"{len(found & listed)} exported symbols as listed")
    return 0 if found == listed and found else 1


if __name__ == "__main__":
    sys.exit(main())
