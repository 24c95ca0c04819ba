# SPDX-License-Identifier: MIT
"""Plots as SVG texts, the same bytes for the same figures."""
import math
from collections import Counter
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 480, 440
LEFT, RIGHT, TOP, BOTTOM = 64, 20, 44, 56
GREY, LIGHT, DARK = "#6b7280", "#e5e7eb", "#1f2937"
COLOURS = ("#6b7280", "#c2410c", "#1d4ed8")
SHADES = ((1, "#93b4f5"), (4, "#4674dd"), (12, "#17348a"))  # from so many points in a cell
CELL = 8.0
FONT = "font-family='Helvetica, Arial, sans-serif'"
TICKS = 6
MARGIN = 0.04  # of the range of the values
LINE_OF_LABELS = 15  # distance at least between two labels of curves


@dataclass(frozen=True)
class Axis:
    """A scale of an axis; a logarithmic one has its ticks where they are given."""

    low: float
    high: float
    ticks: tuple[float, ...]
    logarithmic: bool = False

    def share(self, value: float) -> float:
        """0 at the low end, 1 at the high one."""
        if self.logarithmic:
            return math.log(value / self.low) / math.log(self.high / self.low)
        return (value - self.low) / (self.high - self.low)


def round_step(span: float, count: int) -> float:
    """A step of 1, 2 or 5 times a power of ten, so that about count of them make the span."""
    power = 10.0 ** math.floor(math.log10(span / count))
    return next(factor * power for factor in (1, 2, 5, 10) if factor * power * count >= span)


def linear_axis(values: Sequence[float], start: float | None = None) -> Axis:
    """An axis that holds all values with a margin, from start if that is given."""
    low, high = min(values), max(values)
    span = (high - low) or abs(high) or 1.0
    low, high = low - MARGIN * span if start is None else start, high + MARGIN * span
    step = round_step(high - low, TICKS)
    first = math.ceil(low / step)
    return Axis(low, high, tuple(step * number for number in range(first, math.floor(high / step) + 1)))


def scatter_plot(points: Sequence[Sequence[float]], title: str, unit: str, note: str) -> str:
    """Predicted against measured, with the diagonal; points are pairs. ValueError if there are none."""
    if not points:
        raise ValueError(f"there are no points for {title}")
    axis = linear_axis([value for point in points for value in point])
    places = [(round(_x(axis, x), 1), round(_y(axis, y), 1)) for x, y in points]
    diagonal = f"M{LEFT} {HEIGHT - BOTTOM}L{WIDTH - RIGHT} {TOP}"
    body = [
        *_shaded(places),
        f"<path d='{diagonal}' stroke='white' stroke-width='2.6'/>",
        f"<path d='{diagonal}' stroke='{DARK}' stroke-width='1.2'/>",
        _text(LEFT + 12, TOP + 20, note, DARK, 12),
    ]
    return _figure(title, _frame(axis, axis, f"measured / {unit}", f"predicted / {unit}") + body)


def _shaded(places: Sequence[tuple[float, float]]) -> list[str]:
    """Dots, the darker the more of them a cell of the plane holds, dark ones on top."""
    cells = Counter((x // CELL, y // CELL) for x, y in places)
    parts = []
    for number, (least, colour) in enumerate(SHADES):
        most = SHADES[number + 1][0] if number + 1 < len(SHADES) else math.inf
        own = sorted({(x, y) for x, y in places if least <= cells[(x // CELL, y // CELL)] < most})
        marks = "".join(f"M{x:g} {y:g}h0" for x, y in own)
        parts.append(f"<path d='{marks}' stroke='{colour}' stroke-width='4' stroke-linecap='round' fill='none'/>")
    return parts


def curve_plot(curves: Mapping[str, Sequence[tuple[float, float]]], title: str, across: str, upwards: str) -> str:
    """Lines through points, with their names at the right ends; the axis across is logarithmic with a tick at each
    point of the first curve. ValueError if there are no curves."""
    if not curves:
        raise ValueError(f"there are no curves for {title}")
    steps = tuple(x for x, _ in next(iter(curves.values())))
    horizontal = Axis(steps[0] / 1.15, steps[-1] * 3.2, steps, True)
    vertical = linear_axis([y for points in curves.values() for _, y in points], 0.0)
    body = []
    ends = {name: _y(vertical, points[-1][1]) for name, points in curves.items()}
    labels = _spread_labels(ends)
    for colour, (name, points) in zip(COLOURS, curves.items()):
        places = [(_x(horizontal, x), _y(vertical, y)) for x, y in points]
        line = "M" + "L".join(f"{x:.1f} {y:.1f}" for x, y in places)
        dots = "".join(f"M{x:.1f} {y:.1f}h0" for x, y in places)
        body += [
            f"<path d='{line}' stroke='{colour}' stroke-width='2' fill='none'/>",
            f"<path d='{dots}' stroke='{colour}' stroke-width='6' stroke-linecap='round' fill='none'/>",
            _text(places[-1][0] + 10, labels[name] + 4, name, colour, 12),
        ]
    return _figure(title, _frame(horizontal, vertical, across, upwards) + body)


def _spread_labels(ends: Mapping[str, float]) -> dict[str, float]:
    """Heights of labels near those of the ends, moved so that none overlap."""
    order = sorted(ends, key=lambda name: ends[name])
    heights = [ends[name] for name in order]
    for _ in range(100):
        for place in range(1, len(heights)):
            lacking = LINE_OF_LABELS - (heights[place] - heights[place - 1])
            if lacking > 0:
                heights[place - 1] -= lacking / 2
                heights[place] += lacking / 2
    return dict(zip(order, heights))


def _x(axis: Axis, value: float) -> float:
    return LEFT + axis.share(value) * (WIDTH - LEFT - RIGHT)


def _y(axis: Axis, value: float) -> float:
    return HEIGHT - BOTTOM - axis.share(value) * (HEIGHT - TOP - BOTTOM)


def _text(x: float, y: float, text: str, colour: str, size: int, anchor: str = "start", more: str = "") -> str:
    return (
        f"<text x='{x:.1f}' y='{y:.1f}' fill='{colour}' font-size='{size}' text-anchor='{anchor}'{more}>"
        f"{escape(text)}</text>"
    )


def _tick_text(value: float) -> str:
    return f"{value:.10g}".replace("-", "\u2212")


def _frame(horizontal: Axis, vertical: Axis, across: str, upwards: str) -> list[str]:
    """Grid, ticks and the names of the axes."""
    parts = []
    low, high = HEIGHT - BOTTOM, TOP
    for value in horizontal.ticks:
        x = _x(horizontal, value)
        parts.append(f"<path d='M{x:.1f} {low}V{high}' stroke='{LIGHT}'/>")
        parts.append(_text(x, low + 18, _tick_text(value), GREY, 12, "middle"))
    for value in vertical.ticks:
        y = _y(vertical, value)
        parts.append(f"<path d='M{LEFT} {y:.1f}H{WIDTH - RIGHT}' stroke='{LIGHT}'/>")
        parts.append(_text(LEFT - 8, y + 4, _tick_text(value), GREY, 12, "end"))
    middle = (low + high) / 2
    parts.append(_text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 14, across, DARK, 13, "middle"))
    parts.append(_text(18, middle, upwards, DARK, 13, "middle", f" transform='rotate(-90 18 {middle:.1f})'"))
    return parts


def _figure(title: str, parts: Sequence[str]) -> str:
    head = f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {WIDTH} {HEIGHT}' {FONT} role='img'>"
    name = f"<title>{escape(title)}</title>"
    back = f"<rect width='{WIDTH}' height='{HEIGHT}' fill='white'/>"
    heading = _text(LEFT, 26, title, DARK, 16, "start", " font-weight='bold'")
    return "\n".join([head, name, back, heading, *parts, "</svg>"]) + "\n"
