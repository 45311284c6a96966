"""Copies of corvix-desk for tests whose command line is: BIN_FOLDER SCRATCH_FOLDER PLUGIN,... EMULATOR..."""
import pathlib
import re
import shutil
import subprocess
import sys

bin_folder, scratch, plugins, emulator = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3].split(","), sys.argv[4:]
checkout = pathlib.Path(__file__).resolve().parents[3]
LONGEST_S = 120
wrong = 0


def complain(name, why):
    global wrong
    wrong += 1
    print(f"{name}: {why}")


class Desk:
    def __init__(self, name, without=()):
        self.name, self.folder = name, scratch / name
        (self.folder / "plugins").mkdir(parents=True)
        for file in [*bin_folder.glob("lib*.dll"), bin_folder / "corvix.dll", bin_folder / "corvix-desk.exe"]:
            shutil.copy(file, self.folder)
        for plugin in plugins:
            if plugin not in without:
                shutil.copy(bin_folder / "plugins" / f"{plugin}.dll", self.folder / "plugins")
        shutil.copy(bin_folder / "test-plugins" / "testformats.dll", self.folder / "plugins")
        for texts in bin_folder.glob("brisvaneres.*"):
            shutil.copy(texts, self.folder)
        (self.folder / "three.pages").write_text("abc")
        (self.folder / "many.pages").write_text("x" * 300)
        (self.folder / "words.plain").write_text("first line\nsecond line\n")

    def run(self, steps, *arguments, code=0):
        file = self.folder / "steps.txt"
        file.write_text(steps, encoding="utf-8")
        try:
            done = subprocess.run([*emulator, str(self.folder / "corvix-desk.exe"), *arguments, "--drive", "steps.txt"],
                                  cwd=self.folder, capture_output=True, text=True, encoding="utf-8", errors="replace",
                                  timeout=LONGEST_S, check=False)
        except subprocess.TimeoutExpired:
            return complain(self.name, f"it did not end by itself: {steps}")
        if done.returncode != code:
            complain(self.name, f"exit code {done.returncode} instead of {code}\n{done.stdout}{done.stderr}")
        return None

    def loaded(self):
        log = self.folder / "corvix-desk.exe.log"
        text = log.read_text(encoding="utf-8", errors="replace") if log.exists() else ""
        return sorted(set(re.findall(r"Load library .*\\(\w[\w-]*)\.dll", text)))


shutil.rmtree(scratch, ignore_errors=True)
