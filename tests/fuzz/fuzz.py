#!/usr/bin/env python3
"""Runs the fuzzer's targets:  fuzz.py PROGRAM FOLDER --seconds N [TARGET...] | fuzz.py PROGRAM FOLDER --replay TARGET

--seconds  looks for findings in every target, as many at a time as there are processors, for so long each. What was learnt
           stays in FOLDER and is where the next call goes on. All output of a target is in FOLDER/TARGET/log.
--replay   runs the seeds and 20,000 inputs made of them (of fonts 5,000), the same ones every time.
A finding is kept as a file in FOLDER/TARGET. Exit code 1 when there is one.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
from seeds import SEEDS  # noqa: E402

MOST_BYTES = {"descriptors": 1024, "xml": 1024, "modules": 4096, "locations": 256, "decoders": 512, "settings": 128, "fonts": 4096,
              "images": 512, "texts": 256}
RUNS = 20000
FEWER_RUNS = {"fonts": 5000}  # that take longer


def write_seeds(target, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for number, seed in enumerate(SEEDS[target]):
        (folder / f"seed-{number:02}").write_bytes(seed)


def run(program, target, folder, options):
    """The finished fuzzer; its output is in `folder`/log."""
    write_seeds(target, folder / "seeds")
    learnt = folder / "learnt"
    if any(option.startswith("-runs=") for option in options):
        shutil.rmtree(learnt, ignore_errors=True)  # else it would not be the same every time
    learnt.mkdir(exist_ok=True)
    with open(folder / "log", "w", encoding="utf-8") as log:
        return subprocess.run(
            [program, f"--target={target}", f"-max_len={MOST_BYTES[target]}", "-timeout=20", "-rss_limit_mb=1024",
             f"-artifact_prefix={folder}/", "-print_final_stats=1", *options, learnt, folder / "seeds"],
            stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT, check=False)


def report(program, target, folder, failed):
    text = (folder / "log").read_text(encoding="utf-8", errors="replace")
    count = re.search(r"number_of_executed_units: (\d+)", text)
    rate = re.search(r"average_exec_per_sec: +(\d+)", text)
    covered = re.findall(r" cov: (\d+)", text)
    print(f"{target:12} {int(count.group(1)) if count else 0:>9,} runs, {int(rate.group(1)) if rate else 0:>7,} a second, "
          f"{covered[-1] if covered else '?':>5} edges: {'a FINDING' if failed else 'nothing found'}", flush=True)
    if failed:
        kept = re.search(r"Test unit written to (\S.*)", text)
        print(text[-4000:])
        print(f"Once more:  {program} --target={target} '{kept.group(1) if kept else folder / 'log'}'\n"
              f"When it is repaired, add the input to SEEDS in {pathlib.Path(__file__).parent / 'seeds.py'} and a row to the tests.")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--seconds", type=int)
    parser.add_argument("--replay", choices=SEEDS)
    parser.add_argument("targets", nargs="*", metavar="TARGET", help=", ".join(SEEDS))
    arguments = parser.parse_args()
    if unknown := set(arguments.targets) - set(SEEDS):
        parser.error(f"no such target: {', '.join(sorted(unknown))}; there are: {', '.join(SEEDS)}")
    program = arguments.program.resolve()

    def one(target):
        folder = arguments.folder.resolve() / target
        how = [f"-max_total_time={arguments.seconds}"] if arguments.seconds else ["-seed=1", f"-runs={FEWER_RUNS.get(target, RUNS)}"]
        failed = run(program, target, folder, how).returncode != 0
        report(program, target, folder, failed)
        return failed

    targets = [arguments.replay] if arguments.replay else arguments.targets or list(SEEDS)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return any(list(pool.map(one, targets)))


if __name__ == "__main__":
    sys.exit(main())
