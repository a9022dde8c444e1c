#!/usr/bin/env python3
"""Prints CHANGELOG.md as a changelog of Debian packages: its dated versions, each item in its short form.

usage: debian_changelog.py MAINTAINER"""

import datetime
import pathlib
import re
import sys
import textwrap

VERSION = re.compile(r"^## \[([0-9.]+)\] - (\d{4}-\d{2}-\d{2})$", re.MULTILINE)


def items(text):
    """The items, with the heading that they stand under, which a changelog of packages has no place for."""
    for part in re.split(r"^### ", text, flags=re.MULTILINE)[1:]:
        heading, _, rest = part.partition("\n")
        for found in re.finditer(r"^- (.*?)(?=\n- |\n\n|\n?\Z)", rest, re.MULTILINE | re.DOTALL):
            yield f"{heading}: " + re.sub(r"\s+", " ", found[1].replace("`", ""))


def main():
    changes = (pathlib.Path(__file__).parent.parent / "CHANGELOG.md").read_text(encoding="utf-8")
    parts = VERSION.split(changes)[1:]
    if not parts:
        sys.exit("CHANGELOG.md has no dated version")
    for version, date, text in zip(parts[::3], parts[1::3], parts[2::3]):
        print(f"tqosbase ({version}-1) unstable; urgency=medium\n")
        for item in items(text):
            print(textwrap.fill(item, 78, initial_indent="  * ", subsequent_indent="    ", break_on_hyphens=False))
        day = datetime.datetime.strptime(date, "%Y-%m-%d")
        print(f"\n -- {sys.argv[1]}  {day:%a, %d %b %Y} 00:00:00 +0000\n")


main()
