#!/usr/bin/env python3
"""Draws the panel images beside this script: run it again after changing a scene.

Four landscapes of 720 x 405 pixels: a sky gradient, a sun or moon, and hills that fade with distance.
"""

import math
import pathlib
import random
import struct
import zlib

WIDTH, HEIGHT = 720, 405
EDGE = 1.2  # pixels over which an outline is blended


def mix(a, b, t):
    t = min(1.0, max(0.0, t))
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def colour(text):
    return tuple(int(text[i:i + 2], 16) for i in (0, 2, 4))


def gradient(stops, t):
    for (at, low), (end, high) in zip(stops, stops[1:]):
        if t <= end:
            return mix(low, high, (t - at) / (end - at))
    return stops[-1][1]


def ridge(seed, base, height, roughness):
    """A hill's outline: its y for each x."""
    rng = random.Random(seed)
    waves = [(rng.uniform(0.6, 1.4) * 2 ** k, rng.uniform(0, 2 * math.pi), roughness ** k) for k in range(6)]
    scale = height / sum(weight for _, _, weight in waves)
    return [base - scale * sum(w * math.sin(f * x / WIDTH * 2 * math.pi + p) for f, p, w in waves)
            for x in range(WIDTH)]


def draw(scene):
    sky = [(at, colour(text)) for at, text in scene["sky"]]
    cx, cy, radius, disc = scene["disc"]
    disc, glow = colour(disc), scene["glow"]
    layers = [(ridge(*shape), colour(top), colour(bottom)) for shape, top, bottom in scene["hills"]]
    rng = random.Random(7)
    stars = {(rng.randrange(WIDTH), rng.randrange(HEIGHT * 2 // 3)): rng.uniform(0.3, 1)
             for _ in range(scene.get("stars", 0))}
    rows = []
    for y in range(HEIGHT):
        row = []
        base = gradient(sky, y / HEIGHT)
        for x in range(WIDTH):
            pixel = base
            if (x, y) in stars:
                pixel = mix(pixel, (255, 255, 255), stars[x, y])
            distance = math.hypot(x - cx, y - cy)
            pixel = mix(pixel, disc, glow * math.exp(-max(0.0, distance - radius) / (radius * 1.6)))
            pixel = mix(pixel, disc, (radius - distance) / EDGE + 0.5)
            for outline, top, bottom in layers:
                cover = (y - outline[x]) / EDGE + 0.5
                if cover > 0:
                    pixel = mix(pixel, mix(top, bottom, (y - outline[x]) / 140), cover)
            row.append(bytes(round(channel) for channel in pixel))
        rows.append(b"".join(row))
    return rows


def png(rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    previous, filtered = bytes(WIDTH * 3), []
    for row in rows:
        filtered.append(b"\x02" + bytes((a - b) & 255 for a, b in zip(row, previous)))
        previous = row
    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"".join(filtered), 9))
            + chunk(b"IEND", b""))


SCENES = {
    "sunrise": {
        "sky": [(0, "3B2E6E"), (0.35, "B5547A"), (0.6, "F59A6B"), (0.8, "FFD9A0"), (1, "FFE9C9")],
        "disc": (470, 225, 44, "FFF3C4"), "glow": 0.75,
        "hills": [((1, 250, 42, 0.55), "C9738A", "B25C7C"), ((2, 295, 40, 0.5), "8A4A78", "6B3A6C"),
                  ((3, 345, 34, 0.5), "4A2A5C", "2C1A42")],
    },
    "forest": {
        "sky": [(0, "7FC4D6"), (0.5, "CFEBE3"), (1, "F4F7E4")],
        "disc": (180, 105, 36, "FFFBE0"), "glow": 0.5,
        "hills": [((11, 205, 46, 0.6), "A5CDB6", "8FBFA5"), ((12, 255, 44, 0.62), "6BA886", "4F9070"),
                  ((13, 305, 40, 0.66), "3A7A57", "2A6146"), ((14, 355, 34, 0.7), "1E5038", "123726")],
    },
    "ocean": {
        "sky": [(0, "1E6FB8"), (0.4, "63B3E4"), (0.62, "D7F1FA"), (1, "D7F1FA")],
        "disc": (560, 90, 34, "FFFFFF"), "glow": 0.45,
        "hills": [((21, 252, 4, 0.3), "2E8FC0", "1F74A8"), ((22, 290, 9, 0.35), "1C6FA3", "165C8C"),
                  ((23, 330, 14, 0.35), "12547F", "0E4269"), ((24, 372, 18, 0.35), "F2DFB4", "DDBF86")],
    },
    "night": {
        "sky": [(0, "070B24"), (0.5, "16224F"), (0.8, "3A4A86"), (1, "5B6BA6")],
        "disc": (210, 110, 38, "F4F1DE"), "glow": 0.35, "stars": 220,
        "hills": [((31, 270, 48, 0.6), "2B376B", "222C59"), ((32, 315, 42, 0.6), "18204A", "121938"),
                  ((33, 360, 30, 0.62), "0C112B", "060919")],
    },
}

if __name__ == "__main__":
    for name, scene in SCENES.items():
        (pathlib.Path(__file__).parent / f"{name}.png").write_bytes(png(draw(scene)))
