#!/usr/bin/env python3
"""Breaks the code in one place after the other and sees whether the tests notice:  mutate.py [--fit | NUMBER...]

Works on a copy of the checkout in build/mutate, which is built as a whole once and then a file at a time. NUMBERs, as they are
printed, choose some of the breaks in mutants.py; --fit only looks whether each has its place in the code. Exit code 1 when fewer
than nine in ten were noticed of those that can be, or when a row does not fit the code any more.
"""
import collections
import os
import pathlib
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from mutants import MUTANTS  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = ROOT / "build" / "mutate"
LEAST_NOTICED = 0.9
SECONDS_A_RUN = 120


class Program:
    def __init__(self, build, target, folder, preset):
        self.build, self.target, self.folder, self.preset = TREE / build, target, TREE / folder, preset
        self.emulated = build == "build/debug"

    def make(self):
        if not (self.build / "build.ninja").exists():
            subprocess.run(["cmake", "--preset", self.preset], cwd=self.folder, check=True, stdout=subprocess.DEVNULL)
        return subprocess.run(["cmake", "--build", str(self.build), "--target", self.target, "--parallel", str(os.cpu_count())],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)

    def run(self, tests):
        """The exit code of the tests and their output; a run that does not end is noticed too."""
        name = self.target + (".exe" if self.emulated else "")
        command = [str(TREE / "scripts/wine-run")] if self.emulated else []
        command += [str(self.build / "bin" / name), f"--gtest_filter={tests}"]
        try:
            done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  timeout=SECONDS_A_RUN, text=True, errors="replace", check=False)
        except subprocess.TimeoutExpired:
            return 1, "did not end"
        return done.returncode, done.stdout


PROGRAMS = {
    "native": Program("build/native-64", "corvix-native-tests", "tests/native", "64"),
    "xmlbinc": Program("build/native-64", "corvix-xmlbinc-native-tests", "tests/native", "64"),
    "core": Program("build/debug", "corvix-core-tests", ".", "debug"),
    "graphics": Program("build/debug", "corvix-graphics-tests", ".", "debug"),
    "module": Program("build/debug", "corvix-module-tests", ".", "debug"),
}


def copy_checkout():
    """Files that are the same keep their time, so that only what changed is built again."""
    names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                           stdout=subprocess.PIPE, text=True).stdout.split("\0")
    known = {name for name in names if name and (ROOT / name).is_file()}
    for name in known:
        source, copy = ROOT / name, TREE / name
        if not copy.exists() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)
    for folder in TREE.iterdir():
        for copy in folder.rglob("*") if folder.name != "build" else ():
            if copy.is_file() and copy.relative_to(TREE).as_posix() not in known:
                copy.unlink()


def misfits(mutants):
    for number, mutant in mutants:
        file = ROOT / mutant.file
        count = file.read_text(encoding="utf-8").count(mutant.text) if file.is_file() else 0
        if count != 1:
            yield f"{number}: {mutant.file} has {count} times, not once: {mutant.text}"


def passes_unbroken(mutants):
    for program, tests in sorted({(mutant.program, mutant.tests) for _, mutant in mutants}):
        code, output = PROGRAMS[program].run(tests)
        if code or "[  PASSED  ] 0 tests" in output:
            yield f"{program} {tests}: {'fails without any break' if code else 'chooses no test'}\n{output[-2000:]}"


def fate(mutant):
    """What becomes of one break: "noticed", "unnoticed", or "does not compile"."""
    file = TREE / mutant.file
    whole = file.read_text(encoding="utf-8")
    program = PROGRAMS[mutant.program]
    try:
        file.write_text(whole.replace(mutant.text, mutant.replacement), encoding="utf-8")
        built = program.make()
        if built.returncode:
            print(built.stdout[-2000:])
            return "does not compile"
        return "noticed" if program.run(mutant.tests)[0] else "unnoticed"
    finally:
        file.write_text(whole, encoding="utf-8")


def give_up(faults):
    for fault in faults:
        print(fault)
    return bool(faults)


def main():
    only_fit = sys.argv[1:] == ["--fit"]
    chosen = set() if only_fit else {int(number) for number in sys.argv[1:]}
    mutants = [(number, mutant) for number, mutant in enumerate(MUTANTS, 1) if not chosen or number in chosen]
    misfitting = give_up(list(misfits(mutants)))
    if misfitting or only_fit:
        return misfitting
    TREE.mkdir(parents=True, exist_ok=True)
    copy_checkout()
    needed = [PROGRAMS[name] for name in dict.fromkeys(mutant.program for _, mutant in mutants)]
    if any(program.emulated for program in needed):
        subprocess.run([TREE / "scripts/setup", "test"], check=True)
    for program in needed:
        print(f"building {program.target}", flush=True)
        built = program.make()
        if built.returncode:
            print(built.stdout[-4000:])
            return 1
    if give_up(list(passes_unbroken(mutants))):
        return 1

    fates = collections.Counter()
    for number, mutant in mutants:
        began = time.monotonic()
        outcome = fate(mutant)
        if outcome != "does not compile" and mutant.equivalent:
            outcome = "equivalent" if outcome == "unnoticed" else "noticed, though it is said to be equivalent"
        fates[outcome] += 1
        place = f"{mutant.file}: {' '.join(mutant.text.split())[:60]}"
        print(f"{number:3} {outcome:10} {time.monotonic() - began:4.0f} s  {mutant.program:8} {place}", flush=True)
        if mutant.equivalent:
            print(f"{'':11}{mutant.equivalent}")
    counted = sum(fates.values()) - fates["equivalent"]
    print(f"{fates['noticed']} of {counted} noticed, {fates['equivalent']} equivalent")
    broken = set(fates) - {"noticed", "unnoticed", "equivalent"}
    return bool(broken) or fates["noticed"] < LEAST_NOTICED * counted


if __name__ == "__main__":
    sys.exit(main())
