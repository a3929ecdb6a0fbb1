"""Line charts as SVG, from points alone."""

WIDTH, HEIGHT = 560, 300
LEFT, RIGHT, TOP, BOTTOM = 64, 16, 40, 46
COLOURS = ["#1b6ac9", "#c4551b", "#3a8f4b"]


def ticks(most):
    """Round numbers from nought to what holds the most."""
    step = 10 ** len(str(int(most / 5))) / 10 if most >= 5 else 1
    step = next(step * factor for factor in (1, 2, 5, 10) if most / (step * factor) <= 6)
    return [step * index for index in range(int(-(-most // step)) + 1)]


def text(x, y, content, anchor="middle", size=12):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}">{content}</text>'


def chart(title, across, up, series):
    """`series`: name -> [(x, y)]."""
    points = [point for line in series.values() for point in line]
    columns, rows = ticks(max(x for x, _ in points)), ticks(max(y for _, y in points))
    place_x = lambda x: LEFT + x / columns[-1] * (WIDTH - LEFT - RIGHT)
    place_y = lambda y: HEIGHT - BOTTOM - y / rows[-1] * (HEIGHT - TOP - BOTTOM)
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" fill="#333">',
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>',
        text(LEFT, 20, title, "start", 14),
        text(WIDTH - RIGHT, HEIGHT - 8, across, "end"),
        text(LEFT - 8, TOP - 6, up, "start"),
    ]
    for y in rows:
        parts.append(f'<path d="M{LEFT} {place_y(y):.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>')
        parts.append(text(LEFT - 6, place_y(y) + 4, f"{y:g}", "end"))
    parts += [text(place_x(x), HEIGHT - BOTTOM + 16, f"{x:g}") for x in columns]
    for (name, line), colour in zip(series.items(), COLOURS):
        path = " ".join(f"{place_x(x):.1f},{place_y(y):.1f}" for x, y in sorted(line))
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{place_x(x):.1f}" cy="{place_y(y):.1f}" r="3" fill="{colour}"/>' for x, y in line]
        x, y = max(line)
        parts.append(f'<g fill="{colour}">{text(place_x(x) - 4, place_y(y) - 8, name, "end")}</g>')
    return "\n".join(parts + ["</svg>", ""])
