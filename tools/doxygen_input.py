#!/usr/bin/env python3
"""What Doxygen reads of a header, named as the only argument.

In the headers one comment stands for all overloads that follow it without a blank line, and that of a copy constructor
for the assignment behind it. Doxygen wants each to have its own, so it is repeated in front of them, on the same line,
to keep the line numbers of warnings. Doxygen leaves out the free names of a file without a file comment, and says
nothing: every header gets one at its end. It makes dead links to the members of a union or structure without a name,
whose braces are left out, and to types declared in a private part, which is left out as a whole.

In headers and pages alike, Doxygen drops a % in front of a word that is not quoted, where it turns a link off, and
keeps the backslash of \\| in a table's code: both are written as it wants them. It knows no headings of other pages: a
link to one leads to the page."""

import pathlib
import re
import sys

# A dereferenced name in a comment, which Markdown would take for emphasis.
STAR = re.compile(r"(?<=[\s(])\*(?=\w)")
PERCENT = re.compile(r'("[^"]*")|%(?=[A-Za-z_])')
CODE_WITH_BAR = re.compile(r"`([^`]*\\\|[^`]*)`")
PLACE_IN_PAGE = re.compile(r"(\]\([\w/]+\.md)#[\w-]+\)")
PRIVATE_PART = re.compile(r"^private:\n(?:(?!\};).*\n)*", re.MULTILINE)
UNNAMED_UNION = re.compile(r"^    (?:union|__extension__ struct) \{\n((?:        .*\n)+)    \};\n", re.MULTILINE)
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
            line = with_percents(STAR.sub(r"\\*", line))
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


def with_percents(line):
    return PERCENT.sub(lambda found: found[1] or "%%", line)


def page(lines):
    is_code = False
    for line in lines:
        is_code ^= line.startswith("```")
        if not is_code:
            line = PLACE_IN_PAGE.sub(r"\1)", line)
            line = CODE_WITH_BAR.sub(r"<code>\1</code>", with_percents(line))
        yield line


with open(sys.argv[1], encoding="utf-8") as file:
    text = file.read()
if sys.argv[1].endswith(".md"):
    sys.stdout.writelines(page(text.splitlines(keepends=True)))
else:
    text = UNNAMED_UNION.sub(r"\n\1\n", text)
    text = PRIVATE_PART.sub(lambda part: "\n" * part[0].count("\n"), text)
    sys.stdout.writelines(repeat_for_overloads(text.splitlines(keepends=True)))
    room = pathlib.PurePath(sys.argv[1]).parent.name.replace("TqOsBase", "all")
    print(f"/** @file\n    @ingroup room_{room}\n    <!-- declarations of one header --> */")
