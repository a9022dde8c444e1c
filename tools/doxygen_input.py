#!/usr/bin/env python3
"""What Doxygen reads of a header, named as the only argument.

In the headers one comment stands for all overloads that follow it without a blank line, and that of a copy constructor
for the assignment behind it. Doxygen wants each to have its own, so it is repeated in front of them, on the same line,
to keep the line numbers of warnings. And Doxygen leaves out the free names of a file without a file comment, and says
nothing: every header gets one at its end."""

import re
import sys

# A dereferenced name in a comment, which Markdown would take for emphasis.
STAR = re.compile(r"(?<=[\s(])\*(?=\w)")
NAME = re.compile(r"(operator[^(\s]*(?:\(\))?|~?\w+)\s*\(")


def repeat_for_overloads(lines):
    comment, documented, name, depth = [], [], None, 0
    for line in lines:
        text = line.strip()
        if depth > 0:  # inside a declaration of several lines, or a body
            depth += opened(text)
        elif text.startswith("///"):
            if text not in ("/// @{", "/// @}"):
                comment.append(text[3:])
            line = STAR.sub(r"\\*", line)
        elif not text or text.startswith(("#", "//")):
            comment, documented, name = [], [], None
        else:
            found = NAME.search(text)
            if comment:
                documented, name = comment, found.group(1) if found else None
            elif found and "///<" not in text and is_told_with(found.group(1), name, text):
                line = "/**" + " ".join(documented) + " */ " + line
            comment = []
            # Members of a class are declarations of their own.
            if not re.match(r"(class|struct|union|enum|namespace|extern \"C\")\b.*\{$", text):
                depth = max(opened(text), 0)
        yield line


def is_told_with(name, documented_name, text):
    return name == documented_name or (name == "operator=" and text.startswith(f"{documented_name}& "))


def opened(text):
    return sum(text.count(c) for c in "({") - sum(text.count(c) for c in ")}")


with open(sys.argv[1], encoding="utf-8") as header:
    sys.stdout.writelines(repeat_for_overloads(header))
print("/** @file\n    <!-- declarations of one header --> */")
