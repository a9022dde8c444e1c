#!/usr/bin/env python3
"""Compiles and runs what a Markdown page claims.

    ```cpp with `int main`        a program
    ```cpp otherwise              statements, or with `<!-- shared -->` on the line before it declarations for the page
    ```text after a ```cpp       what that block prints; a block without one is only compiled
    <!-- check: f({1}, {2}) = {3} -->
                                  before a table, one or more: for every row the call, with the code of the cells put
                                  in for the numbers, gives the text of the cell after the equals sign

A line `<!-- c++20 -->` anywhere asks for that; otherwise the code is C++17. Statements and calls of a page are one program, and each runs in a process of its own, so that settings of one are not
seen by the next. Prints every difference; fails when there is one or when the page claims nothing.
"""

import argparse
import difflib
import pathlib
import re
import subprocess
import sys

PREAMBLE = """\
#include <TqOsBase/TqOsBase.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>

[[maybe_unused]] static void emit(const std::wstring& text) {
    TqVector<char> utf8;
    TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), utf8);
    std::fwrite(utf8.asArrayPtr(), 1, std::strlen(text.empty() ? "" : utf8.asArrayPtr()), stdout);
}
[[maybe_unused]] static void emit(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }
template <class T, class = std::enable_if_t<std::is_integral_v<T>>>
void emit(T value) {
    if constexpr (std::is_same_v<T, bool>)
        emit(std::string(value ? "true" : "false"));
    else
        emit(std::to_string(value));
}
"""


class Claim:
    def __init__(self, line, code, expected=None):
        self.line, self.code, self.expected = line, code, expected


class Page:
    def __init__(self, path):
        self.shared, self.programs, self.pieces = [], [], []
        self.path = path
        lines = path.read_text(encoding="utf-8").split("\n")
        self.standard = "c++20" if "<!-- c++20 -->" in lines else "c++17"
        before, last, checks, number = "", None, [], 0
        while number < len(lines):
            line = lines[number]
            number += 1
            fence = re.match(r"```(\w*)$", line)
            check = re.match(r"<!-- check: (.*\S) = \{(\d+)\} -->$", line)
            if fence:
                start = number
                while lines[number] != "```":
                    number += 1
                last = self.add_block(fence[1], start, lines[start:number], before, last)
                number += 1
            elif check:
                checks.append(check)
            elif line.startswith("|") and checks:
                rows = 0
                while line.startswith("|"):
                    rows += 1
                    for row_check in checks if rows > 2 else []:
                        self.add_row(number, line, row_check)
                    line = lines[number]
                    number += 1
                checks = []
            if line.strip():
                before = line
        if checks:
            sys.exit(f"{path.name}: a check without a table: {checks[0][0]}")

    def add_block(self, language, start, block, before, last):
        text = "\n".join(block) + "\n"
        if language == "text":
            if last is None:
                sys.exit(f"{self.path.name}:{start}: the output of no code")
            last.expected = text
        if language != "cpp":
            return None
        if before == "<!-- shared -->":
            self.shared.append(self.placed(start + 1, text))
            return None
        claim = Claim(start, text)
        (self.programs if "int main(" in text else self.pieces).append(claim)
        return claim

    def add_row(self, number, line, check):
        cells = [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        cells = [re.sub(r"^(`+)(.*)\1$", r"\2", cell).strip() for cell in cells]
        call = re.sub(r"\{(\d+)\}", lambda m: cells[int(m[1]) - 1], check[1])
        self.pieces.append(Claim(number, f"emit({call});\n", cells[int(check[2]) - 1]))

    def placed(self, line, code):
        return f'#line {line} "{self.path.name}"\n{code}'

    def pieces_program(self):
        functions = "".join(
            f"static void piece{i}() {{\n{self.placed(p.line + 1, p.code)}}}\n" for i, p in enumerate(self.pieces))
        calls = "".join(f"    case {i}: piece{i}(); break;\n" for i in range(len(self.pieces)))
        return (PREAMBLE + "\n".join(self.shared) + functions +
                f"int main(int, char** argv) {{\n    switch (std::atoi(argv[1])) {{\n{calls}    }}\n}}\n")


def main():
    options = argparse.ArgumentParser()
    options.add_argument("--compile", nargs=argparse.REMAINDER, required=True, help="compiler, options and library")
    options.add_argument("--work", type=pathlib.Path, required=True)
    options.add_argument("--page", type=pathlib.Path, required=True)
    options = options.parse_args()
    page = Page(options.page)
    options.work = options.work.resolve()
    options.work.mkdir(parents=True, exist_ok=True)

    def build(name, code):
        source = options.work / f"{page.path.stem}-{name}.cpp"
        source.write_text(code, encoding="utf-8")
        program = source.with_suffix("")
        compiler, *rest = options.compile
        command = [compiler, f"-std={page.standard}", "-Wall", "-Wextra", "-Werror", "-o", program, source, *rest]
        if subprocess.run(command).returncode != 0:
            sys.exit(f"{page.path.name}: does not compile")
        return program

    def differs(claim, command):
        if claim.expected is None:
            return False
        got = subprocess.run(command, cwd=options.work, capture_output=True, text=True, encoding="utf-8", timeout=60)
        if got.returncode == 0 and got.stdout == claim.expected:
            return False
        print(f"{page.path.name}:{claim.line + 1}: {claim.code.strip()}")
        print(f"  ends with {got.returncode}; {got.stderr.strip()}")
        sys.stdout.writelines(
            "  " + line.rstrip("\n") + "\n" for line in difflib.unified_diff(
                claim.expected.splitlines(), got.stdout.splitlines(), "the page says", "it prints", lineterm=""))
        return True

    failures = 0
    for i, program in enumerate(page.programs):
        failures += differs(program, [build(f"program{i}", page.placed(program.line + 1, program.code))])
    if page.pieces:
        pieces = build("pieces", page.pieces_program())
        failures += sum(differs(piece, [pieces, str(i)]) for i, piece in enumerate(page.pieces))
    claims = page.programs + page.pieces
    checked = sum(claim.expected is not None for claim in claims)
    print(f"{page.path.name}: {len(claims)} compiled, {checked} run, {failures} differ")
    sys.exit(failures > 0 or checked == 0)


if __name__ == "__main__":
    main()
