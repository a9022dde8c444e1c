#!/usr/bin/env python3
"""Makes the table of docs/porting.md and the header TqOsBase/porting/Warnings.h from docs/porting.tsv, and the header's
declarations from the public headers. With --check it compares instead of writing.

A row of the data is: name, status, harm ("loses" data, "ends" the process, or nothing), what differs, what to use
instead; separated by tabs."""

import pathlib
import re
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "docs" / "porting.tsv"
PAGE = ROOT / "docs" / "porting.md"
HEADER = ROOT / "include" / "TqOsBase" / "porting" / "Warnings.h"

TOP = """\
#pragma once

// Made by tools/make_porting.py from docs/porting.tsv.

#include <TqOsBase/Export.h>
{includes}

#include <cstdarg>
#include <cstddef>
#include <cstdint>

/// \\file
/// Warnings for ported code: after this header is included, every call of a Windows function that the library answers
/// otherwise than its namesake is a warning of the compiler, which says what differs and what to use. Include it from
/// the code that is being ported, or for all of it by `-include TqOsBase/porting/Warnings.h`. TQ_PORTING_WARNINGS
/// chooses, before it is included:
///   1   functions whose difference loses data or ends the process
///   2   also those that differ otherwise, or do nothing (this is the default)
/// A call that is right as it is says so by `#pragma GCC diagnostic ignored "-Wdeprecated-declarations"` around it.
/// Member functions (TqCharOp) cannot be marked this way: docs/porting.md has them.

#if !defined(TQ_PORTING_WARNINGS)
#define TQ_PORTING_WARNINGS 2
#endif
"""


def rows() -> list:
    lines = DATA.read_text(encoding="utf-8").splitlines()
    return [line.split("\t") for line in lines if not line.startswith("#")]


def cell(text: str) -> str:
    return text.replace("|", "\\|")


def page_table() -> str:
    lines = ["| function | status | what differs | instead |", "|---|---|---|---|"]
    for name, status, _, difference, instead in rows():
        lines.append(f"| `{name}` | {status} | {cell(difference)} | {cell(instead)} |".replace("|  |", "| |"))
    return "\n".join(lines) + "\n"


def declarations() -> dict:
    found = {}
    for path in sorted((ROOT / "include" / "TqOsBase").rglob("*.h")):
        text = re.sub(r"//.*", "", path.read_text(encoding="utf-8"))
        for match in re.finditer(r"\bTQ_API\s+([^;{}]*?\b(\w+)\([^;{}]*\));", text):
            source = path.relative_to(ROOT / "include").as_posix()
            found.setdefault(match[2], []).append((source, re.sub(r"\s+", " ", match[1])))
    return found


def warning(status: str, difference: str, instead: str) -> str:
    text = f"{status}: {difference}" if difference else status
    text = text.replace("`", "'").replace("as above", "as in docs/porting.md") + (f"; instead: {instead}" if instead else "")
    return text.replace("\\", "\\\\").replace('"', '\\"')


def header() -> str:
    known = declarations()
    levels = {1: [], 2: []}
    sources = set()
    for name, status, harm, difference, instead in rows():
        if status == "complete" or "::" in name:
            continue
        if name not in known:
            sys.exit(f"{DATA.name}: no declaration of {name}")
        for source, declaration in known[name]:
            sources.add(source)
            pieces = textwrap.wrap(warning(status, difference, instead), 100, drop_whitespace=False)
            quoted = "\n             ".join(f'"{piece}"' for piece in pieces)
            levels[1 if harm else 2].append(f"[[deprecated({quoted})]]\n{declaration};\n")
    includes = "\n".join(f"#include <{source}>" for source in sorted(sources))
    text = TOP.format(includes=includes)
    for level, marked in levels.items():
        text += f"\n#if TQ_PORTING_WARNINGS >= {level}\n// clang-format off\n{''.join(marked)}// clang-format on\n#endif\n"
    return text


def page() -> str:
    text = PAGE.read_text(encoding="utf-8")
    start = text.index("| function | status |")
    end = re.compile(r"(?:^\|.*\n)+", re.MULTILINE).match(text, start).end()
    return text[:start] + page_table() + text[end:]


def main() -> None:
    stale = []
    for path, text in ((PAGE, page()), (HEADER, header())):
        if sys.argv[1:] != ["--check"]:
            path.parent.mkdir(exist_ok=True)
            path.write_text(text, encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != text:
            stale.append(str(path.relative_to(ROOT)))
    if stale:
        sys.exit(f"make again with tools/make_porting.py: {', '.join(stale)}")


if __name__ == "__main__":
    main()
