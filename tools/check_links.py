#!/usr/bin/env python3
"""Checks that every link between the pages of a folder has its target, anchors included.

usage: check_links.py FOLDER"""

import html
import pathlib
import re
import sys
from urllib.parse import unquote

folder = pathlib.Path(sys.argv[1])
pages = {page.name: page.read_text(encoding="utf-8", errors="replace") for page in sorted(folder.glob("*.html"))}
anchors = {name: set(re.findall(r'\s(?:id|name)="([^"]+)"', text)) for name, text in pages.items()}
checked, dead = 0, []
for name, text in pages.items():
    for link in re.findall(r'\s(?:href|src)="([^"]+)"', text):
        link = html.unescape(link)
        if re.match(r"[a-z]+:", link):
            continue
        checked += 1
        target, _, anchor = link.partition("#")
        target = unquote(target) or name
        if target not in pages:
            is_dead = not (folder / target).exists()
        else:
            is_dead = bool(anchor) and anchor not in anchors[target]
        if is_dead:
            dead.append(f"{name}: {link}")
for line in dead:
    print(line)
print(f"{checked} links between {len(pages)} pages, {len(dead)} dead")
sys.exit(1 if dead or not checked else 0)
