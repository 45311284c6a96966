#!/usr/bin/env python3
"""What the host says when a fetch fails, and that nothing half done is left: fetch_failures.py RUNNER HOST WEB_FOLDER FOLDER"""
import pathlib
import shutil
import subprocess
import sys

runner, host, web, folder = sys.argv[1:]
nginx, scripted, nobody = (pathlib.Path(web) / "ports.txt").read_text().split()
target = pathlib.Path(folder) / "sub"
shutil.rmtree(target, ignore_errors=True)
target.mkdir(parents=True)

ROWS = [
    (f"http://127.0.0.1:{scripted}/short", "out.bin", "only 60000 of 100000 bytes"),
    (f"http://127.0.0.1:{scripted}/chunked", "out.bin", "does not tell its length"),
    (f"http://127.0.0.1:{nobody}/", "out.bin", "no answer from its server"),
    (f"http://127.0.0.1:{nginx}/once.bin", "nowhere/out.bin", "is its folder there"),
    ("nosuchscheme:x", "out.bin", 'no module declares "Supplier.nosuchscheme"'),
    ("file:///Z:/nothing/here", "out.bin", "there is no such thing"),
    ("file:///Z:/dev/null:stream", "out.bin", "there is no such thing"),
    ("data:no comma", "out.bin", "there is no such thing"),
]

mine = target / "out.bin.part"  # the user's own
mine.write_text("mine")

wrong = 0
for location, file, said in ROWS:
    run = subprocess.run([runner, host, "--unattended", "fetch", location, str(target / file)], capture_output=True,
                         text=True, encoding="utf-8", timeout=60)
    left = [p.name for p in target.iterdir()]
    if run.returncode != 1 or said not in run.stderr or left != [mine.name] or mine.read_text() != "mine":
        wrong += 1
        print(f"{location}: exit code {run.returncode}, left {left}, said {run.stderr!r}")
print(f"{len(ROWS)} fetches, {wrong} wrong")
sys.exit(1 if wrong else 0)
