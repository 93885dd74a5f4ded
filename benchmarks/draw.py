#!/usr/bin/env python3
"""Collects what the parts of ./dev bench measured, and draws and prints it for docs/performance.md.

Usage: draw.py collect   makes build/bench.json of build/bench-results
       draw.py draw      draws docs/pictures/performance-*.svg from build/bench.json
       draw.py tables    prints the tables of build/bench.json in Markdown
"""

import json
import math
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
RESULTS = TOP / "build" / "bench-results"
BENCH = TOP / "build" / "bench.json"
ARCHITECTURES = ("x64", "x86")
COLOURS = ("#1b6ca8", "#c0392b", "#218c5a", "#8e44ad", "#c77c11", "#2c7a7b", "#7f5539", "#b03a78")

WIDTH, HEIGHT = 760, 460
LEFT, RIGHT, TOP_EDGE, BOTTOM = 80, 250, 40, 60


def collect() -> None:
    collected: dict[str, object] = {}
    for architecture in ARCHITECTURES:
        rows = []
        for part in ("operations", "module"):
            file = RESULTS / f"{architecture}-{part}.json"
            if file.exists():
                rows += json.loads(file.read_text())
        if rows:
            collected[architecture] = rows
    writer = RESULTS / "writer.json"
    if writer.exists():
        collected["writer"] = [
            {"name": row["name"], "microseconds": row["cpu_time"] / 1000}
            for row in json.loads(writer.read_text())["benchmarks"]
        ]
    counts = RESULTS / "writer-instructions.txt"
    if counts.exists():
        collected["instructions"] = {
            name: int(count) for name, count in (line.split() for line in counts.read_text().splitlines())
        }
    BENCH.write_text(json.dumps(collected, indent=2) + "\n")


def decades(values: list[float]) -> range:
    return range(math.floor(math.log10(min(values))), math.ceil(math.log10(max(values))) + 1)


def curves(rows: list[dict]) -> dict[str, list[dict]]:
    """The operations that were measured with several sizes."""
    by_name: dict[str, list[dict]] = {}
    for row in rows:
        if row["records"] > 0:
            by_name.setdefault(row["name"], []).append(row)
    return {name: sorted(points, key=lambda row: row["records"]) for name, points in by_name.items() if len(points) > 1}


def picture(title: str, rows: list[dict]) -> str:
    """Cost over size, both logarithmic: a line for each operation, a dashed one for its floor."""
    lines = curves(rows)
    points = [row for line in lines.values() for row in line]
    x_range = decades([row["records"] for row in points])
    y_range = decades([row[key] for row in points for key in ("microseconds", "floor_microseconds")])

    def x(records: float) -> float:
        return LEFT + (math.log10(records) - x_range[0]) / (x_range[-1] - x_range[0]) * (WIDTH - LEFT - RIGHT)

    def y(microseconds: float) -> float:
        share = (math.log10(microseconds) - y_range[0]) / (y_range[-1] - y_range[0])
        return HEIGHT - BOTTOM - share * (HEIGHT - TOP_EDGE - BOTTOM)

    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
        f'<text x="{LEFT}" y="22" font-size="15">{title}</text>',
    ]
    for power in x_range:
        place = x(10**power)
        parts.append(f'<path d="M{place:.1f} {TOP_EDGE}V{HEIGHT - BOTTOM}" stroke="#ddd"/>')
        parts.append(f'<text x="{place:.1f}" y="{HEIGHT - BOTTOM + 18}" text-anchor="middle">{10**power:,}</text>')
    for power in y_range:
        place = y(10**power)
        label = f"{10**power:g} µs" if power < 3 else f"{10**(power - 3):g} ms" if power < 6 else f"{10**(power - 6):g} s"
        parts.append(f'<path d="M{LEFT} {place:.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>')
        parts.append(f'<text x="{LEFT - 8}" y="{place + 4:.1f}" text-anchor="end">{label}</text>')
    parts.append(f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 18}" text-anchor="middle">records</text>')
    for index, (name, line) in enumerate(lines.items()):
        colour = COLOURS[index % len(COLOURS)]
        for key, style in (("floor_microseconds", ' stroke-dasharray="4 3" opacity="0.7"'), ("microseconds", "")):
            path = "L".join(f'{x(row["records"]):.1f} {y(row[key]):.1f}' for row in line)
            parts.append(f'<path d="M{path}" fill="none" stroke="{colour}" stroke-width="1.6"{style}/>')
        place = TOP_EDGE + 14 + index * 20
        parts.append(f'<path d="M{WIDTH - RIGHT + 16} {place - 4}h18" stroke="{colour}" stroke-width="2"/>')
        parts.append(f'<text x="{WIDTH - RIGHT + 40}" y="{place}">{name}</text>')
    place = TOP_EDGE + 24 + len(lines) * 20
    parts.append(f'<path d="M{WIDTH - RIGHT + 16} {place - 4}h18" stroke="#555" stroke-dasharray="4 3"/>')
    parts.append(f'<text x="{WIDTH - RIGHT + 40}" y="{place}">its floor</text>')
    return "\n".join(parts) + "\n</svg>\n"


def draw() -> None:
    bench = json.loads(BENCH.read_text())
    for architecture in ARCHITECTURES:
        if architecture in bench and curves(bench[architecture]):
            file = TOP / "docs" / "pictures" / f"performance-{architecture}.svg"
            file.write_text(picture(f"Lists and batches, {architecture}: cost over size", bench[architecture]))


def duration(microseconds: float) -> str:
    if microseconds >= 1000:
        return f"{microseconds / 1000:,.1f} ms"
    return f"{microseconds:.1f} µs" if microseconds >= 1 else f"{microseconds:.2f} µs"


def table(rows: dict[str, list[dict]]) -> str:
    """A row for each name and number of records, with the columns of each architecture that was measured."""
    names = [(row["name"], row["records"]) for row in next(iter(rows.values()))]
    by_name = {architecture: {(row["name"], row["records"]): row for row in rows[architecture]} for architecture in rows}
    has_sizes = len({records for _, records in names}) > 1
    text = "| |" + " records |" * has_sizes + "".join(f" {architecture} | floor | ratio |" for architecture in rows)
    text += "\n|---|" + "---:|" * (has_sizes + 3 * len(rows)) + "\n"
    for name, records in names:
        text += f"| {name} |" + f" {records:,} |" * has_sizes
        for architecture in rows:
            row = by_name[architecture][name, records]
            text += f" {duration(row['microseconds'])} | {duration(row['floor_microseconds'])} | {row['ratio']:.2f} |"
        text += "\n"
    return text


# The tables, by the number of records.
TABLES = {
    "calls with few records": lambda records: records == 1,
    "lists and batches": lambda records: records > 1,
    "properties, pushes, loading": lambda records: records == 0,
}


def tables() -> None:
    bench = json.loads(BENCH.read_text())
    for title, belongs in TABLES.items():
        rows = {
            architecture: [row for row in bench[architecture] if belongs(row["records"])]
            for architecture in ARCHITECTURES
            if architecture in bench
        }
        if rows:
            print(f"{title}:\n\n{table(rows)}")
    for row in bench.get("writer", []):
        print(f"| {row['name']} | {duration(row['microseconds'])} |")
    for name, count in bench.get("instructions", {}).items():
        print(f"| {name} | {count:,} |")


def main() -> int:
    commands = {"collect": collect, "draw": draw, "tables": tables}
    if len(sys.argv) != 2 or sys.argv[1] not in commands:
        print(__doc__, file=sys.stderr)
        return 2
    commands[sys.argv[1]]()
    return 0


if __name__ == "__main__":
    sys.exit(main())
