#!/usr/bin/env python3
"""Measures the tests: plants one small fault at a time in a room's sources, builds a copy of the tree and runs the room's
tests. A fault that no test notices survives and is printed as a diff. What is planted follows from the seed alone.

usage: mutate.py [ROOM ...] [--count N] [--seed S] [--jobs J] [--only ID ...] [--only-from LOG] [--log FILE]

The faults: a comparison or another operator turned, a whole number off by one, a condition negated, a statement dropped,
two arguments swapped. A fault that does not compile, or that leaves the object code as it was, is no fault: another one
takes its place. An endless loop counts as noticed. The log gets a line per fault: result, id, what was changed."""

import argparse
import concurrent.futures
import difflib
import hashlib
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "mutate"

# The programs of a room's tests, the one that notices most first: names of test programs, of fuzz targets as they are
# replayed, of the programs with many threads, of pages that are executed and of other tests as CTest knows them.
TESTS = {
    "base": ["test_base", "test_codepage", "test_crtcompat", "test_diag", "test_faults", "test_format", "test_stream",
             "shared_state_threads"],
    "platform": ["test_stream", "test_crtcompat", "test_diag", "test_faults", "test_memory"],
    "diag": ["test_diag", "test_faults"],
    "memory": ["test_memory", "test_heap_model", "test_faults", "memory_exit_probe", "heap_threads"],
    "containers": ["test_containers", "test_faults", "test_interface"],
    "codepage": ["test_codepage", "codepage.kernels_sse2", "codepage.kernels_portable", "docs.text",
                 "replay_narrow_to_wide", "replay_wide_to_narrow", "replay_mif_escape", "replay_text_iterator",
                 "docs.limits", "test_faults"],
    "fltcvt": ["test_fltcvt", "replay_number", "test_format", "docs.limits", "test_faults", "memory_exit_probe"],
    "format": ["test_format", "docs.units", "docs.text", "replay_format_output", "replay_scan_input", "docs.limits",
               "test_faults"],
    "stream": ["test_stream", "test_faults", "test_interface", "replay_path_split", "test_base"],
    "crtcompat": ["test_crtcompat", "docs.limits", "test_faults"],
    "porting": ["test_porting", "docs.porting"],
}
UNTESTED = {"HeapCheck.cpp", "HeapCheck.h"}  # the tests' own walker

OPERATORS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "+": "-",
             "-": "+", "*": "+", "/": "*", "%": "/", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "+=": "-=", "-=": "+=",
             "true": "false", "false": "true", "++": "--", "--": "++"}
TOKEN = re.compile(r'//.*|R?"(?:[^"\\]|\\.)*"|[LuU8]*\'(?:[^\'\\]|\\.)*\'|0[xX][0-9a-fA-F\']+[uUlLzZ]*|\d[\d\']*\.\d*\S*|'
                   r'\d[\d\']*[uUlLzZ]*\b|\w+|<<=|>>=|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\S')
STATEMENT = re.compile(r"^\s*(?!return\b|case\b|default\b|break\b|using\b|static_assert|template|struct|class|enum|union|"
                       r"friend|typedef|namespace|goto|throw\b|public|private|protected|extern)"
                       r"(?:[\w:.>\-\[\]()*]+(?:\([^;{}]*\))|[^;={}(]*[^;={}(<>! ]\s*(?:[-+*/%&|^]|<<|>>)?=[^=][^;{}]*|"
                       r"(?:\+\+|--)[\w>.\-\[\]]+|[\w>.\-\[\]]+(?:\+\+|--)|continue);\s*(?://.*)?$")
DECLARATION = re.compile(r"^\s*(?:(?:static|const|constexpr|auto|unsigned|char|wchar_t|int|bool|double|std::\w+)\b.*=|"
                         r"[\w:<>*& ]+ [\w]+\()")
TABLE_ROW = re.compile(r"^[\s\w{}(),'.+-]*,[\s\w{}(),'.+-]*(?://.*)?$")
DECLARES = re.compile(r"[^=!<>]= |;")  # a condition with a variable of its own
ARGUMENTS = re.compile(r"\(([\w.>\-]+), ([\w.>\-]+)\)")


def mutants_of(path: pathlib.Path) -> list:
    """(line index, changed line, what) for every fault that can be planted in a file."""
    found = []
    is_comment = False
    for index, line in enumerate(path.read_text(encoding="utf-8").split("\n")):
        text = line.strip()
        if is_comment or text.startswith("/*"):
            is_comment = "*/" not in text
            continue
        if not text or text.startswith(("//", "#", "static_assert", "template", "using", "extern", "friend")):
            continue
        if "TQ_ASSERT" in text or text.startswith("assert("):
            continue
        for token in TOKEN.finditer(line):
            word = token[0]
            if word.startswith("//"):
                break
            before, after = line[:token.start()], line[token.end():]
            is_spaced = before.endswith(" ") and after.startswith(" ")
            if word in ("true", "false", "++", "--") or (word in OPERATORS and is_spaced and before.strip()):
                found.append((index, before + OPERATORS[word] + after, f"{word} to {OPERATORS[word]}"))
            elif re.fullmatch(r"\d[\d']*[uUlLzZ]*", word) and not before.endswith(("<", "_")):
                digits = re.match(r"[\d']+", word)[0]
                if len(digits) < 10 and "." not in digits:
                    value = int(digits.replace("'", ""), 8 if re.fullmatch("0[0-7]+", digits) else 10)
                    found.append((index, f"{before}{value + 1}{word[len(digits):]}{after}", f"{digits} to {value + 1}"))
        condition = re.match(r"^(\s*(?:\} )?(?:else )?(?:if|while) )\((.*)\)( \{|)$", line)
        if condition and "constexpr" not in condition[1] and not DECLARES.search(condition[2]):
            found.append((index, f"{condition[1]}(!({condition[2]})){condition[3]}", "condition negated"))
        if STATEMENT.match(line) and not DECLARATION.match(line):
            found.append((index, re.match(r"\s*", line)[0] + ";", "statement dropped"))
        for arguments in ARGUMENTS.finditer(line):
            if arguments[1] != arguments[2]:
                found.append((index, line[:arguments.start()] + f"({arguments[2]}, {arguments[1]})" + line[arguments.end():],
                              "arguments swapped"))
    return found


def candidates(room: str) -> list:
    """All faults of a room as (id, file, line index, changed line, what)."""
    files = sorted(p for folder in (ROOT / "src" / room, ROOT / "include" / "TqOsBase" / room) if folder.exists()
                   for p in folder.iterdir() if p.suffix in (".cpp", ".h") and p.name not in UNTESTED)
    result = []
    for path in files:
        name = path.relative_to(ROOT)
        for index, changed, what in mutants_of(path):
            key = hashlib.sha256(f"{name}:{index}:{changed}".encode()).hexdigest()[:8]
            result.append((key, name, index, changed, what))
    return result


def limit() -> None:
    resource.setrlimit(resource.RLIMIT_AS, (1 << 40, 1 << 40))  # every heap of a thread reserves addresses
    resource.setrlimit(resource.RLIMIT_FSIZE, (32 << 30, 32 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    os.nice(5)


def runs(command: list, seconds: float, folder: pathlib.Path) -> bool:
    process = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=limit, start_new_session=True)
    try:
        return process.wait(timeout=seconds) == 0
    except subprocess.TimeoutExpired:
        return False
    finally:
        try:
            os.killpg(process.pid, 9)
        except ProcessLookupError:
            pass
        process.wait()


class Copy:
    """A copy of the tree with a build of its own."""

    def __init__(self, number: int) -> None:
        self.tree = BUILD / f"tree{number}"
        self.build = BUILD / f"build{number}"
        names = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, stdout=subprocess.PIPE,
                               text=True, check=True).stdout.split("\n")
        kept = set()
        for name in names:
            source, target = ROOT / name, self.tree / name
            if not name or not source.is_file():
                continue
            kept.add(target)
            if not target.exists() or source.read_bytes() != target.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        for path in list(self.tree.rglob("*")):
            if path.is_file() and path not in kept:
                path.unlink()
        subprocess.run(
            ["cmake", "-S", str(self.tree), "-B", str(self.build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
             "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g0 -w", "-DTQ_BUILD_EXAMPLES=OFF", "-DTQ_BUILD_FUZZ=ON",
             "-DTQ_WARNINGS_AS_ERRORS=OFF", "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"],
            check=True, stdout=subprocess.DEVNULL)

    def make(self, program: str) -> bool:
        target = {"docs": "TqOsBaseStatic", "codepage": "test_codepage"}.get(program.split(".")[0], program)
        return subprocess.run(["cmake", "--build", str(self.build), "-j", "1", "--target", target],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0

    def command(self, name: str) -> list:
        if "." in name:
            return ["ctest", "--test-dir", str(self.build), "-R", f"^{re.escape(name)}$"]
        if name.endswith("_threads"):
            return [str(self.build / "fuzz" / name), "4"]
        if name.startswith("replay_"):
            return [str(self.build / "fuzz" / name), str(self.tree / "fuzz" / "corpus" / name[len("replay_"):])]
        program = next(path for path in self.build.glob(f"tests/*/{name}") if path.is_file())
        return [str(program), "--gtest_brief=1", "--gtest_fail_fast"]

    def passes(self, name: str, seconds: float) -> bool:
        scratch = self.build / "scratch"
        scratch.mkdir(exist_ok=True)
        return runs(self.command(name), seconds, scratch)

    def archive(self) -> bytes:
        return hashlib.sha256((self.build / "libTqOsBase.a").read_bytes()).digest()


def try_fault(copy: Copy, programs: list, seconds: dict, sound: bytes, fault: tuple) -> str:
    _, name, index, changed, _ = fault
    path = copy.tree / name
    original = path.read_text(encoding="utf-8")
    lines = original.split("\n")
    lines[index] = changed
    path.write_text("\n".join(lines), encoding="utf-8")
    try:
        for program in programs:
            if not copy.make(program):
                return "not compiled"
            if str(name).startswith("src") and copy.archive() == sound:
                return "no change"
            if not copy.passes(program, seconds[program]):
                return "caught"
        return "survived"
    finally:
        path.write_text(original, encoding="utf-8")


def measure(room: str, args: argparse.Namespace, copies: "queue.Queue[Copy]", log) -> tuple:
    faults = candidates(room)
    if args.only is not None:
        faults = [fault for fault in faults if fault[0] in args.only]
    else:
        chance = random.Random(f"{args.seed} {room}")
        chance.shuffle(faults)
        # A table of facts has more numbers than the code around it: one of its rows for nine faults of the code.
        rows, code = ([fault for fault in faults if bool(TABLE_ROW.match(fault[3])) == is_row] for is_row in (True, False))
        faults = [fault for i in range(len(code)) for fault in code[i:i + 1] + (rows[i // 9:i // 9 + 1] if i % 9 == 8 else [])]
    programs = [name for name in TESTS[room] if name in KNOWN or not name.startswith("test_")]
    seconds = {}
    for copy in list(copies.queue):
        for program in programs:
            if not copy.make(program):
                sys.exit(f"{program} does not build")
            started = os.times().elapsed
            if not copy.passes(program, 600):
                sys.exit(f"{program} fails before anything is changed")
            seconds[program] = 10 + 6 * (os.times().elapsed - started)
    sound = list(copies.queue)[0].archive()
    caught, survived = 0, []

    def attempt(fault):
        copy = copies.get()
        try:
            return fault, try_fault(copy, programs, seconds, copy.sound, fault)
        finally:
            copies.put(copy)

    for copy in list(copies.queue):
        copy.sound = copy.archive()
    wanted = len(faults) if args.only is not None else args.count
    remaining = iter(faults)
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        pending = set()
        while True:
            while len(pending) < min(args.jobs, wanted - caught - len(survived)) and (fault := next(remaining, None)):
                pending.add(pool.submit(attempt, fault))
            if not pending:
                break
            done, pending = concurrent.futures.wait(pending, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                fault, result = future.result()
                key, name, index, changed, what = fault
                print(f"{result}\t{key}\t{name}:{index + 1}\t{what}", file=log, flush=True)
                if result == "caught":
                    caught += 1
                elif result == "survived":
                    survived.append(fault)
                    show(fault)
    return caught, survived, len(faults)


def show(fault: tuple) -> None:
    key, name, index, changed, what = fault
    lines = (ROOT / name).read_text(encoding="utf-8").split("\n")
    changed_lines = lines[:index] + [changed] + lines[index + 1:]
    print(f"survived {key}: {what}")
    print("\n".join(difflib.unified_diff(lines, changed_lines, str(name), str(name), n=1, lineterm="")), flush=True)


def test_programs() -> set:
    text = "\n".join(path.read_text(encoding="utf-8") for path in (ROOT / "tests").glob("*/CMakeLists.txt"))
    return set(re.findall(r"tq_add_(?:test|program)\(\s*(\w+)", text))


KNOWN = test_programs()


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("rooms", nargs="*")
    parser.add_argument("--count", type=int, default=60, help="faults of every room that compile (60)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", nargs="+", help="ids of faults, from an earlier run of the same sources")
    parser.add_argument("--only-from", metavar="LOG", help="the faults that the log of an earlier run calls caught")
    parser.add_argument("--log", help="a line per fault (build/mutate/log.tsv)")
    args = parser.parse_args()
    if args.only_from:
        rows = [line.split("\t") for line in open(args.only_from, encoding="utf-8")]
        args.only = [row[1] for row in rows if row[0] == "caught"] + (args.only or [])
    rooms = args.rooms or [room for room in TESTS if (ROOT / "src" / room).exists()]
    for room in rooms:
        if room not in TESTS or not (ROOT / "src" / room).exists():
            sys.exit(f"no room {room}; there are {', '.join(TESTS)}")

    BUILD.mkdir(parents=True, exist_ok=True)
    copies: "queue.Queue[Copy]" = queue.Queue()
    for number in range(args.jobs):
        copies.put(Copy(number))
    results = []
    with open(args.log or BUILD / "log.tsv", "a", encoding="utf-8") as log:
        for room in rooms:
            caught, survived, possible = measure(room, args, copies, log)
            results.append(f"{room:11} {caught + len(survived):4} planted of {possible:5} possible   {caught:4} caught   "
                           f"{len(survived):3} survived")
            print(results[-1], flush=True)
    print(f"== seed {args.seed}", *results, sep="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
