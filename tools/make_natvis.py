#!/usr/bin/env python3
"""Writes tools/debugger/TqOsBase.natvis from the descriptions in tools/debugger/tq_types.py; --check compares it."""

import pathlib
import sys
import xml.etree.ElementTree

FOLDER = pathlib.Path(__file__).parent / "debugger"
sys.dont_write_bytecode = True
sys.path.insert(0, str(FOLDER))
import tq_types  # noqa: E402


def main():
    parts = [f'  <Type Name="{name}">{shown}\n  </Type>\n'
             for name, shown in (described.natvis for described in tq_types.TYPES if hasattr(described, "natvis"))]
    text = ('<?xml version="1.0" encoding="utf-8"?>\n<!-- Made by tools/make_natvis.py. -->\n'
            '<AutoVisualizer xmlns="http://schemas.microsoft.com/vstudio/debugger/natvis/2010">\n'
            + "".join(parts) + "</AutoVisualizer>\n")
    xml.etree.ElementTree.fromstring(text.encode())
    file = FOLDER / "TqOsBase.natvis"
    if "--check" not in sys.argv:
        file.write_text(text, encoding="utf-8")
    elif not file.exists() or file.read_text(encoding="utf-8") != text:
        sys.exit(f"{file} is not what tools/make_natvis.py makes")


main()
