#!/usr/bin/env python3
"""What `open`, `convert` and `language` print, leave, log and return: documents_test.py FOLDER BIN_FOLDER RUNNER"""
import pathlib
import shutil
import subprocess
import sys

folder, programs, *runner = sys.argv[1:]
folder, programs = pathlib.Path(folder), pathlib.Path(programs)
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
own = folder.with_name(folder.name + " program")  # with a log of its own
shutil.rmtree(own, ignore_errors=True)
(own / "plugins").mkdir(parents=True)
for file in [*programs.glob("*.dll"), programs / "corvix-host.exe"]:
    shutil.copy(file, own)
for file in programs.glob("plugins/format-*.dll"):
    shutil.copy(file, own / "plugins")
host = [*runner, str(own / "corvix-host.exe"), "--unattended", "--show-log"]
subprocess.run([*host, "log", "on"], capture_output=True, check=True)
(folder / "notes.md").write_text("# One\n\ntext\n")
(folder / "\U0001F600 long.txt").write_text("x" * 1_000_000)
(folder / "wrong.png").write_text("This is no picture.\n")
(folder / "bad.png").write_bytes(b"\x89PNG\r\n\x1a\n\0\0\0\0")

# arguments, exit code, what is printed, what is said on the standard error, what the log does not say
ROWS = [
    (["open", "notes.md", "\U0001F600 long.txt"], 0,
     "notes.md: Markdown, 4 lines, 12 units, 1 heading\n", "", "format-image.dll"),
    (["open", "none.txt", "notes.md"], 1, "notes.md: Markdown", 'none.txt" cannot be opened', ""),
    (["open", "bad.png"], 1, "", "PNG image: its head is damaged", ""),
    (["open"], 106, "", "LOCATION is required", ""),
    (["open", "wrong.png"], 0, "wrong.png: Text", "PNG image: ", ""),
    (["convert", "wrong.png", "page.txt"], 0, "page.txt written, as Text\n", '"wrong.png" was opened as Text.', ""),
    (["language", "xx"], 0, "Chosen: xx", "there are no texts of it", ""),
    (["convert", "notes.md", "page.html"], 0, "page.html written\n", "", "format-image.dll"),
    (["convert", "notes.md", "page.png"], 1, "", "the document has no pages", ""),
    (["convert", "notes.md", "page.unknown"], 0, "page.unknown written, as Markdown\n", "", ""),
    (["convert", "notes.md", "nowhere/x.txt"], 1, "", "was not saved", ""),
    (["taken away", "format-image.dll"], 0, "", "", ""),
    (["open", "notes.md"], 0, "1 heading", "", ""),
    (["taken away", "format-text.dll"], 0, "", "", ""),
    (["open", "notes.md"], 1, "", "No format is there that could read it", ""),
]
wrong = 0
for arguments, code, said, complained, unlogged in ROWS:
    if arguments[0] == "taken away":
        (own / "plugins" / arguments[1]).unlink()
        continue
    run = subprocess.run([*host, *arguments], cwd=folder, capture_output=True, text=True,
                         encoding="utf-8", timeout=60)
    loaded = [line for line in run.stdout.splitlines() if line.startswith("Load library")]
    if (run.returncode != code or said not in run.stdout or complained not in run.stderr
            or (code < 100 and "Log of this run" not in run.stdout) or any(unlogged and unlogged in line for line in loaded)):
        wrong += 1
        print(f"{arguments}: exit code {run.returncode}, printed {run.stdout!r}, said {run.stderr!r}")
left = sorted(path.name for path in folder.iterdir())
if left != sorted(["bad.png", "notes.md", "page.html", "page.txt", "page.unknown", "wrong.png", "\U0001F600 long.txt"]):
    wrong += 1
    print(f"left {left}")
if "<h1>One</h1>" not in (folder / "page.html").read_text() or (folder / "page.unknown").read_text() != "# One\n\ntext\n":
    wrong += 1
    print("what was converted is not what was wanted")
print(f"{len(ROWS)} calls, {wrong} wrong")
sys.exit(1 if wrong else 0)
