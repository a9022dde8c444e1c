#!/usr/bin/env python3
"""Stops the sample program in a debugger and compares how its variables are shown.

usage: debugger_test.py gdb|lldb PROGRAM PRINTERS_FOLDER [--without VARIABLE]"""

import glob
import os
import re
import shutil
import subprocess
import sys

# What each variable must show, in this order.
EXPECTED = {
    "emptyText": ['"" (code page 0)'],
    "text": ['"a \\"quoted\\" layer" (code page 0)'],
    "wide": ['L"Straße 5"'],
    "longWide": ['L"longer than the string keeps within itself"'],
    "numbers": ["3 elements of 8, grows by 4, shared by 2", "[0] = 11", "[1] = 22", "[2] = 33"],
    "sharing": ["3 elements of 8, grows by 4, shared by 2", "[2] = 33"],
    "none": ["0 elements of 0, grows by"],
    "wideText": ['L"Été\\0", 4 elements of 8, grows by 8', "[0] = "],
    "bytes": ["position 10 of 10 bytes: 30 31 32 33 34 35 36 37 38 39"],
    "bytesAgain": ["position 10 of 10 bytes"],
    "plain": ['at L"plain.cpp" line 12'],
    "told": ['L"message" at L"told.cpp" line 13'],
    "status": ['365: L"no path" at L"status.cpp" line 14'],
    "array": ["2 strings", '[0] = L"first"', '[1] = L"second"'],
    "list": ["2 strings", '[0] = L"head"', '[1] = L"tail"'],
    "map": ["2 entries in 17 buckets", '[L"'],
    "heap": ["1 segment of blocks, 1 segment of page units"],
}
# Members of the classes themselves, which show where the printers are not at work.
INSIDES = re.compile(r"\b(m_|_M_)\w")
# Entries of a map come in the order of their buckets.
ENTRIES = {"map": [r'\[L"one"\] = .*0x0*[1-9a-f]', r'\[L"two"\] = .*0x0']}


def commands(debugger, printers):
    if debugger == "gdb":
        setup = ["set confirm off", "set width 0", "set startup-with-shell off", "set disable-randomization off",
                 f"source {printers}/tq_gdb.py", "break stopHere", "run", "up"]
        show = [(f"echo \\n=={name}\\n", f"print {name}") for name in EXPECTED]
    else:
        setup = ["settings set target.disable-aslr false", f"command script import {printers}/tq_lldb.py",
                 "breakpoint set -n stopHere", "run", "up"]
        show = [(f"script print('\\n=={name}')", f"frame variable {name}") for name in EXPECTED]
    return setup + [command for pair in show for command in pair] + ["kill", "quit"]


def run(debugger, program, printers):
    flag, batch = ("-ex", ["-nx", "-batch"]) if debugger == "gdb" else ("-o", ["--no-lldbinit", "-b"])
    command = [debugger, *batch]
    for line in commands(debugger, printers):
        command += [flag, line]
    environment = dict(os.environ, LC_ALL="C.UTF-8", PYTHONDONTWRITEBYTECODE="1", DEBUGINFOD_URLS="")
    # Debian's lldb does not find its own Python module, nor the system's when another Python comes first in PATH.
    modules = glob.glob("/usr/lib/llvm-*/lib/python3.*/dist-packages/lldb/__init__.py")
    if debugger == "lldb" and modules:
        environment["PYTHONPATH"] = os.path.dirname(os.path.dirname(modules[0])) + ":/usr/lib/python3/dist-packages"
    result = subprocess.run(
        command + [program], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True,
        env=environment, check=False, timeout=120)
    return result.stdout


def main():
    debugger, program, printers, *without = sys.argv[1:]
    for name in without[1:]:
        del EXPECTED[name]
    if shutil.which(debugger) is None:
        sys.exit(f"{debugger} is not installed: apt-get install {debugger}")
    output = run(debugger, program, printers)
    shown = {}
    for part in re.split(r"^==", output, flags=re.MULTILINE)[1:]:
        name, _, text = part.partition("\n")
        shown[name.strip("')")] = re.sub(r"\s+", " ", text)
    failures = 0
    for name, expected in EXPECTED.items():
        text = shown.get(name, "")
        at = 0
        for fragment in expected:
            found = text.find(fragment, at)
            if found < 0:
                print(f"{name}: {fragment!r} is missing in: {text!r}")
                failures += 1
                break
            at = found + len(fragment)
        if INSIDES.search(text) is not None:
            print(f"{name}: members are shown: {text[:1000]!r}")
            failures += 1
        for entry in ENTRIES.get(name, []):
            if re.search(entry, text) is None:
                print(f"{name}: {entry!r} is missing in: {text!r}")
                failures += 1
    if failures:
        print(output)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
