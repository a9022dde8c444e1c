"""The written form of a benchmark run: docs/benchmarks.md and a plot for every area. Called by bench_table.py --write."""

import datetime
import html
import math
import os
import pathlib
import re
import subprocess

# What the peers and the measuring come from, as Debian packages.
PACKAGES = ("libc6", "libstdc++6", "libmimalloc2.0", "libjemalloc2", "libtcmalloc-minimal4", "libfmt-dev", "libabsl-dev",
            "libfast-float-dev", "libdouble-conversion-dev", "libsimdutf-dev", "libicu-dev", "libbenchmark-dev")

BASELINE, PEER, FAINT = "#4878a8", "#a8b8c8", "#666"
LOWEST, HIGHEST = -2, 5  # The axis goes from 2^-2 to 2^5.
CHARACTER, BAR, GAP = 5.6, 12, 10  # Width of a letter at this font size, height of a bar, space between cases.


def first_line(*command: str) -> str:
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
    return result.stdout.split("\n")[0].strip()


def cache_entry(build: pathlib.Path, name: str) -> str:
    found = re.search(rf"^{name}:\w+=(.*)$", (build / "CMakeCache.txt").read_text(encoding="utf-8"), re.MULTILINE)
    return found[1] if found else ""


def circumstances(programs: pathlib.Path) -> str:
    """Machine, compiler, flags, date and versions, as sentences."""
    build = programs.parent
    cpu = re.search(r"^model name\s*:\s*(.*)$", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.MULTILINE)
    compiler = first_line(cache_entry(build, "CMAKE_CXX_COMPILER"), "--version")
    flags = f"{cache_entry(build, 'CMAKE_CXX_FLAGS')} {cache_entry(build, 'CMAKE_CXX_FLAGS_RELEASE')}".strip()
    versions = []
    for package in PACKAGES:
        version = first_line("dpkg-query", "-W", "-f", "${Version}", package)
        if version:
            versions.append(f"{package} {version}")
    return (f"Measured on {datetime.date.today().isoformat()}, on {os.cpu_count()} cores of "
            f"{cpu[1].strip() if cpu else 'an unknown processor'}, with {compiler}, `{flags}`. "
            f"Versions: {', '.join(versions) or 'unknown'}.")


def label(x: float, y: float, text: str, anchor: str = "start", colour: str = "#000") -> str:
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}">{html.escape(text)}</text>'


def plot(area: str, cases: dict, under: str) -> str:
    """An SVG with a bar per contender: its time or memory over ours, on a logarithmic axis. Ours is the line at 1."""
    rows = [(case, [(who, time / times["ours"]) for who, time in times.items() if who != "ours" and time])
            for (of, case), times in cases.items() if of == area]
    whos = [who for _, others in rows for who, _ in others]
    case_width = max(len(case) for case, _ in rows) * CHARACTER
    left = case_width + max((len(who) for who in whos), default=0) * CHARACTER + 34
    width, top = 420, 74
    right = left + width + 60

    def place(ratio: float) -> float:
        return left + (min(max(math.log2(ratio), LOWEST), HIGHEST) - LOWEST) * width / (HIGHEST - LOWEST)

    bars, y = [], top + 6
    for case, others in rows:
        bars.append(label(8, y + BAR * len(others) / 2 + 3, case))
        for index, (who, ratio) in enumerate(others):
            start, end = sorted((place(1), place(ratio)))
            colour = BASELINE if index == 0 else PEER
            bars.append(f'<rect x="{start:.1f}" y="{y}" width="{end - start:.1f}" height="{BAR - 2}" fill="{colour}"/>')
            bars.append(label(left - 6, y + 9, who, "end", FAINT))
            # A bar that leaves the picture ends in an arrow head.
            if ratio > 2.0**HIGHEST:
                bars.append(f'<path d="M{end},{y - 1} l8,{BAR / 2} l-8,{BAR / 2} z" fill="{colour}"/>')
            elif ratio < 2.0**LOWEST:
                bars.append(f'<path d="M{start},{y - 1} l-8,{BAR / 2} l8,{BAR / 2} z" fill="{colour}"/>')
            bars.append(label(max(end, place(1)) + (11 if ratio > 2.0**HIGHEST else 4), y + 9, f"{ratio:.2f}"))
            y += BAR
        y += GAP
    grid = []
    for exponent in range(LOWEST, HIGHEST + 1):
        x = place(2.0**exponent)
        grid.append(f'<line x1="{x:.1f}" y1="{top}" x2="{x:.1f}" y2="{y}" stroke="{"#000" if exponent == 0 else "#ddd"}"/>')
        grid.append(label(x, top - 5, f"{2.0**exponent:g}", "middle", FAINT))
    title = [
        f'<text x="8" y="18" font-size="13" font-weight="bold">{html.escape(area)}</text>',
        label(8, 34, under, colour=FAINT),
        f'<rect x="8" y="44" width="10" height="10" fill="{BASELINE}"/>', label(22, 53, "baseline"),
        f'<rect x="82" y="44" width="10" height="10" fill="{PEER}"/>', label(96, 53, "peers"),
        label(left + width / 2, top - 20, "theirs over ours: right of 1 ours is better", "middle", FAINT),
    ]
    right = max(right, 16 + len(under) * CHARACTER)
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{right:.0f}" height="{y + 6}" font-family="sans-serif" '
        'font-size="10">', f"<title>{html.escape(area)}: each contender over ours</title>",
        '<rect width="100%" height="100%" fill="#fff"/>', *title, *grid, *bars, "</svg>", ""])


def write(folder: pathlib.Path, programs: pathlib.Path, cases: dict, table: str) -> None:
    under = circumstances(programs)
    short = under[:under.index(" Versions:")]
    areas = list(dict.fromkeys(area for area, _ in cases))
    text = ["# Benchmarks\n\n",
            "One run on one machine, written by `./tq bench --write`: medians of processor time, the contenders of a case\n",
            "interleaved. The ratios are what to look at; above 1 ours is faster, or smaller where memory is measured. The\n",
            "first contender is the baseline, the others are peers.\n\n", under, "\n\n", table]
    for area in areas:
        name = f"benchmarks-{area.replace(' ', '-')}.svg"
        (folder / name).write_text(plot(area, cases, short.replace("`", "")), encoding="utf-8")
        text.append(f"\n## {area}\n\n![theirs over ours: {area}]({name})\n")
    (folder / "benchmarks.md").write_text("".join(text), encoding="utf-8")
