#!/usr/bin/env python3
"""Makes the tables of docs/porting.md and the header TqOsBase/porting/Warnings.h from docs/porting.tsv, and the header's
declarations from the public headers. With --check it compares instead of writing.

A row of the data is: name, status, harm ("loses" data, "ends" the process, or nothing), what differs, what to use
instead, and for a name that a program has to ask for the header of porting/ that has it; separated by tabs. Such a
header is not read for the warnings: its functions are declared in tq::windows, where it finds them marked."""

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

// Made by tools/make_porting.py from docs/porting.tsv, which is what to edit.

#include <TqOsBase/Export.h>
{includes}

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

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
    return [(line.split("\t") + [""])[:6] for line in lines if not line.startswith("#")]


def cell(text: str) -> str:
    return text.replace("|", "\\|")


def page_table(of_pack: bool) -> str:
    columns = ["function", *(["header"] if of_pack else []), "status", "what differs", "instead"]
    lines = [f"| {' | '.join(columns)} |", "|---" * len(columns) + "|"]
    for name, status, _, difference, instead, source in rows():
        if bool(source) == of_pack:
            where = f"`{source}` | " if of_pack else ""
            lines.append(f"| `{name}` | {where}{status} | {cell(difference)} | {cell(instead)} |".replace("|  |", "| |"))
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
    marked = {(level, of_pack): [] for level in (1, 2) for of_pack in (False, True)}
    sources = set()
    for name, status, harm, difference, instead, pack in rows():
        if status == "complete" or "::" in name:
            continue
        found = [entry for entry in known.get(name, []) if not pack or entry[0].endswith(f"/{pack}")]
        if not found:
            sys.exit(f"{DATA.name}: no declaration of {name}")
        for source, declaration in found:
            if not pack:
                sources.add(source)
            pieces = textwrap.wrap(warning(status, difference, instead), 100, drop_whitespace=False)
            quoted = "\n             ".join(f'"{piece}"' for piece in pieces)
            visible = "TQ_API " if pack else ""
            marked[1 if harm else 2, bool(pack)].append(f"[[deprecated({quoted})]]\n{visible}{declaration};\n")
    includes = "\n".join(f"#include <{source}>" for source in sorted(sources))
    text = TOP.format(includes=includes)
    for level in (1, 2):
        body = "".join(marked[level, False])
        if marked[level, True]:
            body += f"namespace tq::windows {{\n{''.join(marked[level, True])}}} // namespace tq::windows\n"
        text += f"\n#if TQ_PORTING_WARNINGS >= {level}\n// clang-format off\n{body}// clang-format on\n#endif\n"
    return text


def page() -> str:
    text = PAGE.read_text(encoding="utf-8")
    for of_pack, heading in ((False, "| function | status |"), (True, "| function | header |")):
        start = text.index(heading)
        end = re.compile(r"(?:^\|.*\n)+", re.MULTILINE).match(text, start).end()
        text = text[:start] + page_table(of_pack) + text[end:]
    return text


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
