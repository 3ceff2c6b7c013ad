"""Draws times against the size of the store as SVG, both axes logarithmic."""

import dataclasses
import math

WIDTH, HEIGHT = 880, 520
LEFT, RIGHT, TOP, BOTTOM = 72, 240, 56, 64  # around the plot area
AREAS_RANGE = (6, 140_000)
TIME_RANGE = (4, 12_000_000)  # ns

STYLE = """
  text { font: 13px 'Helvetica Neue', Arial, sans-serif; fill: #333; }
  .title { font-size: 16px; font-weight: bold; }
  .grid { stroke: #e3e3e3; }
  .frame { stroke: #999; fill: none; }
"""


@dataclasses.dataclass
class Curve:
    title: str
    points: list  # (areas, ns)
    colour: str
    bold: bool = False
    dashed: bool = False


def x_of(areas):
    low, high = map(math.log10, AREAS_RANGE)
    return LEFT + (math.log10(areas) - low) / (high - low) * (WIDTH - LEFT - RIGHT)


def y_of(ns):
    low, high = map(math.log10, TIME_RANGE)
    return HEIGHT - BOTTOM - (math.log10(ns) - low) / (high - low) * (HEIGHT - TOP - BOTTOM)


def text(x, y, content, anchor="start", attributes=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" {attributes}>{content}</text>'


def line(x1, y1, x2, y2, attributes):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" {attributes}/>'


def axes():
    right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
    for areas in (8, 100, 1000, 10_000, 100_000):
        yield line(x_of(areas), TOP, x_of(areas), bottom, 'class="grid"')
        yield text(x_of(areas), bottom + 20, f"{areas:,}", "middle")
    for exponent, label in enumerate(("10 ns", "100 ns", "1 µs", "10 µs", "100 µs", "1 ms", "10 ms"), 1):
        y = y_of(10**exponent)
        yield line(LEFT, y, right, y, 'class="grid"')
        yield text(LEFT - 8, y + 4, label, "end")
    yield f'<rect class="frame" x="{LEFT}" y="{TOP}" width="{right - LEFT}" height="{bottom - TOP}"/>'
    yield text((LEFT + right) / 2, HEIGHT - 18, "data areas in the store", "middle")


def drawn(curve):
    points = " ".join(f"{x_of(areas):.1f},{y_of(ns):.1f}" for areas, ns in curve.points)
    dashes = 'stroke-dasharray="6 4"' if curve.dashed else ""
    width = 3 if curve.bold else 2
    yield f'<polyline points="{points}" fill="none" stroke="{curve.colour}" stroke-width="{width}" {dashes}/>'
    for areas, ns in curve.points:
        yield f'<circle cx="{x_of(areas):.1f}" cy="{y_of(ns):.1f}" r="{width + 0.5}" fill="{curve.colour}"/>'
    areas, ns = curve.points[-1]
    weight = 'style="font-weight: bold"' if curve.bold else ""
    yield text(x_of(areas) + 24, y_of(ns) + 4, curve.title, attributes=weight)


def goal_marks(goals):
    for areas, ns in goals:
        yield line(x_of(areas) - 12, y_of(ns), x_of(areas) + 12, y_of(ns), 'stroke="#c0392b" stroke-width="2"')
    areas, ns = goals[-1]
    yield text(x_of(areas) - 16, y_of(ns) + 4, "goal, blocks in turn", "end", 'style="fill: #c0392b"')


def line_mark(ns):
    y = y_of(ns)
    yield line(LEFT, y, WIDTH - RIGHT, y, 'stroke="#27ae60" stroke-width="2"')
    yield text(LEFT + 8, y + 17, f"the line's own time at 115200 baud: {ns / 1e6:.1f} ms",
               attributes='style="fill: #1e8449"')


def draw(curves, goals, line_ns):
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}">',
        f"<style>{STYLE}</style>",
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
        text(LEFT, 32, "Driver time of one exchange that reads 8 words", attributes='class="title"'),
        *axes(),
        *line_mark(line_ns),
        *(part for curve in curves for part in drawn(curve)),
        *goal_marks(goals),
        "</svg>",
    ]
    return "\n".join(parts) + "\n"
