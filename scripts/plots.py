#!/usr/bin/env python3
"""Draws the tables of docs/performance.md and docs/soak.md as pictures, docs/plots/NAME.svg. With --check, fails when a picture is not that of its table."""

import math
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/performance.md"
SOAK_PAGE = ROOT / "docs/soak.md"
FOLDER = ROOT / "docs/plots"
COLOURS = {"agent": "#0b57a4", "copy": "#b4540a", "host": "#5b7f2b", "map": "#b4540a",
           "devhost": "#0b57a4", "floor": "#5b7f2b", "loop": "#777", "ansible": "#b4540a"}
WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 230, 190, 48, 14, 26, 34  # of one panel, in pixels


def lines_of(name, page=PAGE):
    """Returns the lines of the table that the page marks with this name."""
    return re.search(r"^```text example=%s\n(.*?)\n(?:\n|```)" % name, page.read_text(), re.M | re.S).group(1).splitlines()


def table(name):
    """Returns the rows of a table of the performance page, cut where two blanks or a number begin."""
    return [re.split(r"\s+(?=[-\d])|\s{2,}", line.strip()) for line in lines_of(name)[1:]]


def number(text):
    """Returns a size such as "5 KB", or a plain number."""
    value, _, unit = text.partition(" ")
    return float(value) * {"": 1, "KB": 1e3, "MB": 1e6}[unit]


def short(value):
    for limit, unit in ((1e9, "G"), (1e6, "M"), (1e3, "k")):
        if value >= limit:
            return "%g%s" % (value / limit, unit)
    return "%g" % value


def three_digits(value):
    """A number of an axis."""
    return "%.0f" % value if value >= 1000 else "%.3g" % value


def text(x, y, content, anchor="start", colour="#333"):
    return '<text x="%.1f" y="%.1f" text-anchor="%s" fill="%s">%s</text>' % (x, y, anchor, colour, content)


def panel(title, lines, unit, high, low):
    """Returns one picture: `lines` are points by name, both axes are logarithmic, and all panels share the upright one."""
    xs = [x for points in lines.values() for x, _ in points]
    first, last = math.log10(min(xs)), math.log10(max(xs))

    def across(x):
        return LEFT + (math.log10(x) - first) / (last - first) * (WIDTH - LEFT - RIGHT)

    def up(y):
        return HEIGHT - BOTTOM - (math.log10(y) - low) / (high - low) * (HEIGHT - TOP - BOTTOM)

    parts = [text(LEFT, 16, title)]
    for power in range(low, high + 1, max(1, (high - low + 3) // 4)):
        y = up(10 ** power)
        parts.append('<path d="M%d %.1fH%d" stroke="#ddd"/>' % (LEFT, y, WIDTH - RIGHT))
        parts.append(text(LEFT - 5, y + 4, short(10 ** power), "end"))
    for x in sorted(set(xs)):
        parts.append(text(across(x), HEIGHT - 17, short(x), "middle"))
    parts.append(text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 3, unit, "middle", "#666"))
    for name, points in lines.items():
        path = " ".join("%.1f,%.1f" % (across(x), up(y)) for x, y in points)
        parts.append('<polyline points="%s" fill="none" stroke="%s" stroke-width="2"/>' % (path, COLOURS[name]))
        parts += ['<circle cx="%.1f" cy="%.1f" r="2.5" fill="%s"/>' % (across(x), up(y), COLOURS[name]) for x, y in points]
    return "".join(parts)


def picture(title, unit, panels):
    """Returns panels beside each other, three in a row, under one legend."""
    ys = [y for lines in panels.values() for points in lines.values() for _, y in points]
    low, high = math.floor(math.log10(min(ys))), math.ceil(math.log10(max(ys)))
    rows = (len(panels) + 2) // 3
    parts = [text(8, 18, title)]
    x = 8
    for name in next(iter(panels.values())):
        parts.append('<path d="M%d 34h18" stroke="%s" stroke-width="3"/>' % (x, COLOURS[name]) + text(x + 24, 38, name))
        x += 90
    for index, (name, lines) in enumerate(panels.items()):
        parts.append('<g transform="translate(%d %d)">%s</g>' % (
            index % 3 * WIDTH, 48 + index // 3 * HEIGHT, panel(name, lines, unit, high, low)))
    width, height = 3 * WIDTH, 52 + rows * HEIGHT
    return frame(width, height, title, parts)


def frame(width, height, title, parts):
    return ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d" role="img" font-family="sans-serif" '
            'font-size="11">\n<title>%s</title>\n<rect width="100%%" height="100%%" fill="#fff"/>\n%s\n</svg>\n' % (
                width, height, width, height, title, "\n".join(parts)))


def growth(name, columns, title, unit):
    panels = {}
    for row in table(name):
        lines = panels.setdefault(row[0], {column: [] for column in columns})
        for column, value in zip(columns, row[2:]):
            if value != "-" and float(value) > 0:
                lines[column].append((number(row[1]), float(value)))
    return picture(title, unit, panels)


def fleet():
    """Returns the time of each way to change many controllers, a panel for each line and run."""
    panels = {}
    for count, line, run, *times in table("fleet"):
        lines = panels.setdefault("%s, %s" % (line, run), {name: [] for name in ("floor", "devhost", "loop", "ansible")})
        for points, value in zip(lines.values(), times):
            points.append((float(count), float(value)))
    return picture("Time for all controllers, in seconds, by their number (both logarithmic)", "controllers", panels)


def bars():
    """Returns the time of each program, as bars on a logarithmic axis, one below the other."""
    rows = [(row[0], row[1], float(row[2])) for row in table("programs")]
    longest, step, left, width = math.log10(max(row[2] for row in rows)), 18, 130, 3 * WIDTH
    parts = [text(8, 18, "The section of a file replaced by whole processes, best time in milliseconds (logarithmic)")]
    for index, (size, program, value) in enumerate(rows):
        y = 34 + index * step
        length = 8 + math.log10(value) / longest * (width - left - 80)
        parts.append(text(left - 6, y + 11, "%s, %s" % (program, size), "end"))
        parts.append('<rect x="%d" y="%d" width="%.1f" height="13" fill="%s"/>' % (
            left, y, length, "#0b57a4" if program == "devhost" else "#b9c3d0"))
        parts.append(text(left + length + 5, y + 11, "%g" % value))
    return frame(width, 40 + len(rows) * step, "Whole processes", parts)


def over_time(title, points, bottom, top):
    """Returns one picture of a figure by time, both axes linear, the upright one from 0."""
    last = max(x for x, _ in points) or 1
    high = 1.15 * max(y for _, y in points) or 1
    path = " ".join("%.1f,%.1f" % (LEFT + x / last * (WIDTH - LEFT - RIGHT), bottom - y / high * (bottom - top)) for x, y in points)
    parts = [text(LEFT, 16, title)]
    for share in (0, 0.5, 1):
        y = bottom - share * (bottom - top)
        parts.append('<path d="M%d %.1fH%d" stroke="#ddd"/>' % (LEFT, y, WIDTH - RIGHT))
        parts.append(text(LEFT - 5, y + 4, three_digits(share * high), "end"))
    for share in (0, 0.5, 1):
        parts.append(text(LEFT + share * (WIDTH - LEFT - RIGHT), HEIGHT - 17, three_digits(share * last), "middle"))
    parts.append(text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 3, "minutes", "middle", "#666"))
    parts.append('<polyline points="%s" fill="none" stroke="%s" stroke-width="2"/>' % (path, COLOURS["agent"]))
    return "".join(parts)


def soak(lines):
    """Returns the picture of the table that bench/soak prints: each column by the first one."""
    rows = [line.split() for line in lines[1:]]
    names = re.split(r"\s{2,}", lines[0].strip())
    parts = [text(8, 18, "A soak: each figure by time")]
    for column, name in enumerate(names[1:]):
        points = [(float(row[0]), float(row[column + 1])) for row in rows if row[column + 1] != "-"]
        if points:
            parts.append('<g transform="translate(%d %d)">%s</g>' % (
                column % 3 * WIDTH, 30 + column // 3 * HEIGHT, over_time(name, points, HEIGHT - BOTTOM, TOP)))
    return frame(3 * WIDTH, 34 + (len(names) + 1) // 3 * HEIGHT, "A soak", parts)


def pictures():
    return {
        "texts": growth("texts", ["agent", "copy"], "Time for a text, in microseconds, by its size in bytes (both logarithmic)", "bytes"),
        "variables": growth("variables", ["agent", "host", "map"],
                            "Time for a variable, in nanoseconds, by their number (both logarithmic)", "variables"),
        "programs": bars(),
        "fleet": fleet(),
        "soak": soak(lines_of("soak", SOAK_PAGE)),
    }


def main():
    check = sys.argv[1:] == ["--check"]
    if sys.argv[1:] and not check:
        sys.exit("usage: scripts/plots.py [--check]")
    for name, content in pictures().items():
        file = FOLDER / (name + ".svg")
        if not check:
            FOLDER.mkdir(exist_ok=True)
            file.write_text(content)
        elif not file.exists() or file.read_text() != content:
            sys.exit("plots: %s is not the picture of its table; call scripts/plots.py" % file.relative_to(ROOT))


if __name__ == "__main__":
    main()
