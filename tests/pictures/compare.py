#!/usr/bin/env python3
"""Compares what contexts draw with cairo: compare.py FOLDER [--sheet SHEET.png] [--table TABLE.md] -- PROGRAM...

PROGRAM is corvix-pictures, with what runs it in front. Of the smooth context each scene has to be within 4 of 255 levels of
16 by 16 samples on average, and within 16 at the 99th percentile, over all pixels that are not plain in both pictures;
CairoScenes.cpp says what that means. Those of LOOSER may be farther, each for its reason; no scene may be refused there.
"""
import argparse
import collections
import os
import pathlib
import shlex
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
MEAN, PERCENTILE, PLAIN = 4, 16, 3

# Scene: mean, percentile, reason. Cairo's own smoothing is as far off in all of them but for the text.
LOOSER = {
    "map": (4, 20, "edges over edges within a pixel, of polygons drawn one after the other"),
    "clip-circle": (8, 44, "stripes that meet within a pixel let what is below through"),
    "tiles-turned": (4, 28, "one sample a pixel where tiles meet without matching"),
    "stencil-turned": (5, 26, "averaged first and turned then, which is softer than its samples"),
    "text-8": (4, 22, "masks of 65 levels, points on 64ths of a pixel; the same in all contexts"),
    "text-serif": (4, 22, "likewise"),
}


def run(*command, **more):
    return subprocess.run([str(word) for word in command], check=True, text=True, **more)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--sheet", default="")
    parser.add_argument("--table", type=pathlib.Path)
    parser.add_argument("program", nargs="+")
    given = parser.parse_args()
    folder = given.folder
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.png"):
        old.unlink()
    scenes, cairo = folder / "scenes.txt", folder / "cairo-scenes"
    run(sys.executable, HERE / "scenes.py", scenes, stdout=subprocess.DEVNULL)
    flags = shlex.split(run("pkg-config", "--cflags", "--libs", "cairo", "freetype2", capture_output=True).stdout)
    source = HERE / "CairoScenes.cpp"
    if not cairo.exists() or cairo.stat().st_mtime < max(source.stat().st_mtime, (HERE / "Scene.h").stat().st_mtime):
        run(os.environ.get("CXX", "c++"), "-O2", "-std=c++20", source, "-o", cairo, *flags)
    drawn = subprocess.run([*given.program, scenes, folder], stdout=subprocess.PIPE, text=True, check=False)
    if drawn.returncode:
        print(drawn.stdout)
        return 1
    lines = run(cairo, scenes, folder, *([given.sheet] if given.sheet else []), capture_output=True).stdout.splitlines()

    names = [line.split(" ", 1)[1] for line in scenes.read_text(encoding="utf-8").splitlines() if line.startswith("scene ")]
    errors = collections.defaultdict(dict)
    for line in lines:
        name, kind, mean, percentile, _, plain = line.split()
        errors[name][kind] = float(mean), int(percentile), int(plain)
    faults = []
    for name in names:
        if "smooth" not in errors[name]:
            faults.append(f"{name}: was refused")
            continue
        mean, percentile, plain = errors[name]["smooth"]
        most_mean, most_percentile, _ = LOOSER.get(name, (MEAN, PERCENTILE, ""))
        if mean > most_mean or percentile > most_percentile or plain > PLAIN:
            faults.append(f"{name}: mean {mean}, 99th percentile {percentile}, plain pixels {plain}")
    if given.table:
        rows = ["| scene | plain GDI | GDI+ | smooth | cairo |", "|---|---|---|---|---|"]
        for name in names:
            cells = [f"{errors[name][k][0]:.1f}, {errors[name][k][1]}" if k in errors[name] else "–"
                     for k in ("gdi", "gdiplus", "smooth", "cairo")]
            rows.append(f"| {name} | " + " | ".join(cells) + " |")
        given.table.write_text("\n".join(rows) + "\n", encoding="utf-8")
    print("\n".join(faults))
    print(f"{len(names)} scenes, {len(faults)} too far off")
    return 1 if faults else 0


sys.exit(main())
