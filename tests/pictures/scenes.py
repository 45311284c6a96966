#!/usr/bin/env python3
"""Writes the scenes that contexts and cairo draw: scenes.py FILE

An operation a line. Colours are aarrggbb; matrices are a b c d e f; pictures are made by Scene.h.

    fill C, stroke C, width W, cap N, join N, miter L, dash PHASE L..., rule N (0 even-odd, 1 winding), transform M
    begin, m X Y, l X Y, c X1 Y1 X2 Y2 X Y, z, r X Y W H, paint N (0 stroke, 1 fill, 2 both), clip, clipstroke, rect X Y W H
    save, restore, opacity P, blend N, group, endgroup, endmask N (0 luminosity, 1 alpha), nomask, all
    image, stencil, tile, mask KIND W H M;  axial X Y X Y, radial X Y R X Y R, then EXTEND (OFFSET C)...;
    axial-stroke; interpolate LEVEL
    text, cliptext FONT SIZE M TEXT
"""
import math
import random
import sys

SCENES = {}
INK, WARM, COOL, SUN = "ff1e325a", "ffd6542c", "ff2882aa", "fffabe3c"
SANS = "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf"
SERIF = "/usr/share/fonts/opentype/urw-base35/P052-Roman.otf"
SYMBOL = "/usr/share/fonts/opentype/urw-base35/StandardSymbolsPS.otf"


def flat(lines):
    return [lines] if isinstance(lines, str) else [line for part in lines for line in flat(part)]


def scene(name, *lines):
    SCENES[name] = flat(lines)


def figure(points, close=True):
    steps = [f"{'l' if i else 'm'} {x:.4f} {y:.4f}" for i, (x, y) in enumerate(points)]
    return ["begin", *steps, *(["z"] if close else [])]


def polygon(x, y, radius, corners, turn=0.3, step=1):
    return [(x + radius * math.cos(turn + step * i * 2 * math.pi / corners),
             y + radius * math.sin(turn + step * i * 2 * math.pi / corners)) for i in range(corners)]


def circle(x, y, r):
    k = r * 0.5522847498
    return ["begin", f"m {x + r} {y}", f"c {x + r} {y + k} {x + k} {y + r} {x} {y + r}", f"c {x - k} {y + r} {x - r} {y + k} {x - r} {y}",
            f"c {x - r} {y - k} {x - k} {y - r} {x} {y - r}", f"c {x + k} {y - r} {x + r} {y - k} {x + r} {y}", "z"]


def matrix(scale_x, scale_y, degrees, x, y, shear=0):
    cos, sin = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    a, b, c, d = scale_x * cos, scale_x * sin, -scale_y * sin + shear * scale_x * cos, scale_y * cos + shear * scale_x * sin
    return f"{a:.6f} {b:.6f} {c:.6f} {d:.6f} {x} {y}"


def fills():
    for rule in (0, 1):
        scene(f"star-{'winding' if rule else 'even-odd'}", f"fill {WARM}", f"rule {rule}", figure(polygon(80, 60, 52, 5, 0.2, 2)), "paint 1")
    scene("triangle", f"fill {INK}", figure([(10.3, 12.7), (150.2, 40.6), (60.1, 110.9)]), "paint 1")
    scene("sliver", f"fill {INK}", figure([(5, 20.2), (155, 24.9), (155, 25.6)]), "paint 1", figure([(5, 60), (155, 61), (5, 61.3)]), "paint 1")
    scene("circles", *[[f"fill {c}", circle(30 + 33 * i, 60, 6 + 5 * i), "paint 1"] for i, c in enumerate((INK, WARM, COOL, SUN))])
    scene("translucent", f"fill {SUN}", "rect 10.5 30.25 140 40.5", *[[f"fill 80{c[2:]}", circle(45 + 35 * i, 60, 34), "paint 1"] for i, c in enumerate((WARM, COOL, INK))])
    random.seed(7)
    lines = []
    for i in range(220):
        x, y = random.uniform(0, 160), random.uniform(0, 120)
        lines += [f"fill ff{random.randrange(0x1000000):06x}"] + figure(polygon(x, y, random.uniform(3, 12), random.randrange(3, 9), random.random())) + ["paint 1"]
    scene("map", lines)
    scene("chart", f"fill {COOL}", *[f"rect {12 + 17.3 * i:.2f} {108 - h} 11.6 {h}" for i, h in enumerate((20, 34.4, 61.2, 48, 77.7, 90, 70.3, 85.5))],
          f"stroke {INK}", "width 1.5", figure([(8, 8), (8, 110), (154, 110)], False), "paint 0", f"stroke {WARM}", "width 2.5", "join 1",
          figure([(17 + 17.3 * i, 104 - h) for i, h in enumerate((20, 34.4, 61.2, 48, 77.7, 90, 70.3, 85.5))], False), "paint 0")
    scene("scaled", "transform " + matrix(2.1, 0.7, 20, 40, 20), f"fill {WARM}", "rect 0 0 40 60", f"fill {INK}", circle(30, 40, 14), "paint 1")


def strokes():
    for cap in range(3):
        scene(f"cap-{cap}", f"stroke {INK}", f"cap {cap}", *[[f"width {w}", figure([(20, 14 + 18 * i), (140, 20 + 17 * i)], False), "paint 0"] for i, w in enumerate((1, 2, 4, 7, 11, 15))])
    for join in range(3):
        scene(f"join-{join}", f"stroke {COOL}", "width 12", f"join {join}", figure([(20, 100), (45, 20), (70, 100), (90, 60), (140, 95)], False), "paint 0",
              "width 5", figure(polygon(115, 35, 22, 5)), "paint 0")
    for limit in (1.5, 4, 20):
        scene(f"miter-{limit}", f"stroke {INK}", "width 8", f"miter {limit}", figure([(15, 100), (40, 25), (65, 100), (90, 40), (145, 60), (96, 84)], False), "paint 0")
    for name, cap, dash in (("long", 0, "3 12 6"), ("round", 1, "0 0.01 9"), ("mixed", 2, "2 10 7 2 7"), ("odd", 0, "0 9 4 3")):
        scene(f"dash-{name}", f"stroke {WARM}", "width 4", f"cap {cap}", f"dash {dash}", "begin", "m 8 30", "c 50 -10 90 80 152 20", "paint 0",
              figure([(10, 70), (80, 105), (150, 66)], False), "paint 0")
    scene("hairlines", f"stroke {INK}", "width 0", *[figure([(80, 60), p], False) + ["paint 0"] for p in polygon(80, 60, 55, 15)])
    scene("thin", f"stroke {INK}", "width 0.4", *[figure([(10, 10 + 9 * i), (150, 14 + 10 * i)], False) + ["paint 0"] for i in range(10)])
    scene("curve", f"stroke {WARM}", "width 9", "cap 1", "join 1", "begin", "m 15 100", "c 20 -60 60 170 90 40", "c 105 -10 140 20 145 105", "paint 0")
    scene("rings", f"stroke {COOL}", *[[f"width {1 + 2 * i}", circle(80, 60, 10 + 11 * i), "paint 0"] for i in range(4)])
    scene("pen-stretched", "transform " + matrix(3, 0.8, 30, 40, 10), f"stroke {INK}", "width 5", figure([(5, 20), (30, 20), (30, 90), (5, 60)]), "paint 0")
    scene("both", f"fill {SUN}", f"stroke {INK}", "width 3", "join 1", figure(polygon(80, 60, 48, 7)), "paint 2")


def clips():
    scene("clip-circle", circle(80, 60, 45), "clip", *[[f"fill {WARM if i % 2 else COOL}", figure([(i * 14, 0), (i * 14 + 14, 0), (i * 14 - 46, 120), (i * 14 - 60, 120)]), "paint 1"] for i in range(16)])
    scene("clip-photo", figure(polygon(80, 60, 56, 6)), "clip", "image photo 160 120 160 0 0 120 0 0")
    scene("clip-nested", circle(60, 60, 44), "clip", circle(100, 60, 44), "clip", f"fill {INK}", "rect 0 0 160 120")
    scene("clip-stack", "save", circle(45, 60, 32), "clip", f"fill {WARM}", "rect 0 0 160 120", "restore", "save", circle(115, 60, 32), "clip", f"fill {COOL}", "rect 0 0 160 120",
          "restore", f"stroke {INK}", "width 2", "begin", "r 6 6 148 108", "paint 0")
    scene("clip-stroke", "width 14", "join 1", figure(polygon(80, 60, 40, 5, 0.2, 2)), "clipstroke", f"fill {COOL}", "rect 0 0 80 120", f"fill {WARM}", "rect 80 0 80 120")
    scene("clip-text", f"cliptext {SANS} 60 1 0 0 1 8 82 Clip", "image photo 160 120 160 0 0 120 0 0")


def images():
    scene("image-1to1", "image photo 120 90 120 0 0 90 20 15")
    scene("image-8to1", "image photo 960 720 120 0 0 90 20 15")
    scene("image-3to2", "image photo 225 150 150 0 0 100 5 10")
    scene("image-larger", "interpolate 192", "image photo 20 15 140 0 0 105 10 8")
    scene("image-turned", "interpolate 192", "image photo 100 75 " + matrix(100, 75, 25, 45, 10))
    scene("image-turned-smaller", "interpolate 192", "image photo 600 450 " + matrix(100, 75, -20, 20, 45))
    scene("image-sheared", "interpolate 192", "image photo 90 70 " + matrix(90, 70, 0, 20, 25, 0.4))
    scene("image-alpha", f"fill {INK}", "rect 0 0 80 120", "image glow 100 80 140 0 0 110 10 5")
    scene("image-alpha-smaller", f"fill {COOL}", "rect 0 40 160 40", "image glow 600 400 120 0 0 90 20 15")
    scene("image-mirrored", "image photo 140 100 -140 0 0 -100 150 110")
    scene("stencil", f"fill {WARM}", "stencil bits 120 90 120 0 0 90 20 15")
    scene("stencil-turned", f"fill {COOL}", "stencil bits 960 720 " + matrix(120, 90, 20, 40, 2))
    scene("stencil-smaller", f"fill {INK}", "stencil bits 480 360 120 0 0 90 20 15")


def shading():
    stops = f"0 {INK} 0.5 {WARM} 1 {SUN}"
    scene("axial", f"axial 20 20 140 100 3 {stops}", "rect 10 10 140 100")
    scene("axial-ends", f"axial 50 60 110 60 0 {stops}", "rect 10 10 140 100")
    scene("axial-edges", f"axial 20 0 140 0 3 0 {INK} 0.3 {INK} 0.3 {SUN} 0.7 {SUN} 0.7 {COOL} 1 {COOL}", circle(80, 60, 52), "paint 1")
    scene("axial-alpha", f"fill {INK}", "rect 0 50 160 20", f"axial 10 0 150 0 3 0 00d6542c 1 ffd6542c", "rect 0 0 160 120")
    scene("axial-stroke", "width 14", "cap 1", "join 1", f"axial-stroke 10 10 150 110 3 {stops}", figure(polygon(80, 60, 44, 5, 0.2, 2)), "paint 0")
    scene("axial-turned", "transform " + matrix(1.6, 0.9, 35, 50, 0), f"axial 0 0 60 0 3 {stops}", "rect 5 5 60 80")
    scene("radial", f"radial 70 50 0 80 60 50 0 0 ffffffff 0.4 {COOL} 1 {INK}", "rect 0 0 160 120")
    scene("radial-cone", f"radial 40 60 10 115 60 30 3 {stops}", "rect 0 0 160 120")
    scene("radial-extended", f"radial 80 60 10 80 60 40 3 {stops}", "rect 10 10 140 100")
    scene("tiles", "tile photo 16 12 16 0 0 12 0 0", circle(80, 60, 50), "paint 1")
    scene("tiles-turned", "interpolate 192", "tile photo 24 24 " + matrix(24, 24, 30, 10, 5), "rect 10 10 140 100")
    scene("tiles-smaller", "tile photo 80 60 20 0 0 15 3 4", "rect 10 10 140 100")


def blending():
    for number, name in enumerate(("normal", "multiply", "screen", "overlay", "darken", "lighten", "dodge", "burn", "hard", "soft", "difference", "exclusion")):
        scene(f"blend-{name}", "image photo 160 120 160 0 0 120 0 0", f"blend {number}", f"fill {SUN}", circle(50, 60, 40), "paint 1", f"fill b0{COOL[2:]}", circle(110, 60, 40), "paint 1")
    scene("opacity", f"fill {INK}", "rect 0 50 160 20", "opacity 0.4", f"fill {WARM}", circle(55, 60, 45), "paint 1", "image photo 60 60 60 0 0 60 90 30")
    scene("group", f"fill {INK}", "rect 0 50 160 20", "opacity 0.5", "group", f"fill {WARM}", circle(60, 60, 40), "paint 1", f"fill {COOL}", circle(100, 60, 40), "paint 1", "endgroup")
    scene("group-multiply", "image photo 160 120 160 0 0 120 0 0", "blend 1", "opacity 0.8", "group", f"fill {SUN}", "rect 20.5 20.5 80 60", f"fill {COOL}", circle(100, 70, 36), "paint 1", "endgroup")
    scene("mask-image", "mask fade 64 8 160 0 0 120 0 0", f"fill {WARM}", "rect 10 10 140 100", f"fill {INK}", circle(80, 60, 40), "paint 1")
    scene("mask-group", "group", "fill ffffffff", circle(80, 60, 48), "paint 1", "fill ff808080", "rect 60 0 40 120", "endmask 0", "image photo 160 120 160 0 0 120 0 0", "nomask")
    scene("mask-alpha", "group", "fill a0000000", figure(polygon(80, 60, 54, 6)), "paint 1", "endmask 1", f"axial 0 0 160 0 3 0 {INK} 1 {SUN}", "all", "nomask")


def text():
    for size in (8, 11, 14, 20, 32, 60):
        scene(f"text-{size}", f"fill {INK}", *[f"text {SANS} {size} 1 0 0 1 4 {y:.1f} Hamburgefons {size}" for y in (size + 4, 2.6 * size + 4, 4.2 * size + 4) if y < 118])
    for angle in (15, 45, 200):
        scene(f"text-at-{angle}", f"fill {WARM}", f"text {SANS} 22 " + matrix(1, 1, angle, *({15: (10, 50), 45: (30, 20), 200: (150, 70)}[angle])) + " Turned text")
    scene("text-serif", f"fill {INK}", f"text {SERIF} 26 1 0 0 1 6 40 Serif Qq fi", f"text {SERIF} 13 1.3 0 0.3 1 6 80 sheared and wide")
    scene("text-symbol", f"fill {INK}", f"text {SYMBOL} 30 1 0 0.2 1 6 50 +=*%(<>)")


for make in (fills, strokes, clips, images, shading, blending, text):
    make()
if __name__ == "__main__":
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        for name, lines in SCENES.items():
            file.write("\n".join([f"scene {name}", *lines]) + "\n")
    print(len(SCENES), "scenes")
