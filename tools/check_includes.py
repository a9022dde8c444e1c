#!/usr/bin/env python3
"""Checks that the rooms include each other in one direction only, that no operating system is named outside the
platform room, and that the files that CONTRIBUTING.md names are there. Prints every offence as file:line and exits with
1 if there is one."""

import pathlib
import re
import sys

# Lowest first; a room may include itself and those before it. Rooms in one entry do not include each other.
ORDER = [{"platform"}, {"base"}, {"diag"}, {"memory"}, {"containers"}, {"codepage", "fltcvt"}, {"format"}, {"stream"},
         {"crtcompat"}, {"porting"}]
RANK = {room: rank for rank, rooms in enumerate(ORDER) for room in rooms}
# The crossings that the functions themselves ask for.
ALLOWED = {("codepage", "crtcompat")}

INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([a-z]+)/|<TqOsBase/([a-z]+)/)')
NAMED = re.compile(r"`((?:src|include|tests|tools|docs|bench|fuzz)/[\w./-]+\.\w+)`")
SYSTEM = re.compile(r"^\s*#\s*(?:el)?if.*\b(__linux__|__APPLE__|__MACH__|_WIN32|__unix__)\b")


def main() -> int:
    root = pathlib.Path(__file__).resolve().parent.parent
    offences = []
    count = 0
    for base in ("include/TqOsBase", "src"):
        for path in sorted((root / base).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            count += 1
            parts = path.relative_to(root / base).parts
            room = parts[0] if len(parts) > 1 else None
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                where = f"{path.relative_to(root)}:{number}"
                if room != "platform" and SYSTEM.match(line):
                    offences.append(f"{where}: an operating system is named outside src/platform")
                match = INCLUDE.match(line)
                if not match or room is None:
                    continue
                target = match.group(1) or match.group(2)
                if target not in RANK:
                    offences.append(f"{where}: unknown room {target}")
                elif target != room and RANK[target] >= RANK[room] and (room, target) not in ALLOWED:
                    offences.append(f"{where}: {room} includes {target}, which stands above or beside it")
                if base != "src" and match.group(1):
                    offences.append(f"{where}: a public header includes an internal one")
    for number, line in enumerate((root / "CONTRIBUTING.md").read_text(encoding="utf-8").splitlines(), 1):
        offences += [f"CONTRIBUTING.md:{number}: there is no {name}" for name in NAMED.findall(line)
                     if not (root / name).exists()]
    print("\n".join(offences) if offences else f"{count} files, every include points downwards")
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
