#!/usr/bin/env python3
"""Compiles mistakes.cpp and looks for the sentences that it says: check_mistakes.py CHECKOUT [COMPILER]

Without a compiler it is clang, by the rules of Microsoft's.
"""
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[2] / "support"))
import windows_clang  # noqa: E402


def main():
    checkout = sys.argv[1]
    compiler = [sys.argv[2], "-std=c++17", "-I", checkout] if len(sys.argv) > 2 else windows_clang.command(checkout)
    source = HERE / "mistakes.cpp"
    run = subprocess.run(compiler + ["-fsyntax-only", str(source)], capture_output=True, text=True, check=False)
    expected = re.findall(r'^// "(.*)"$', source.read_text(encoding="utf-8"), re.M)
    said = [line for line in run.stderr.splitlines() if re.search("error: static.assert", line)]
    wrong = [f"missing: {sentence}" for sentence in expected if sum(sentence in line for line in said) != 1]
    wrong += [f"not expected: {line}" for line in said if not any(sentence in line for sentence in expected)]
    if not expected or wrong:
        print("\n".join(wrong), run.stderr, sep="\n")
        return 1
    print(f"{len(expected)} mistakes are answered with their sentence")
    return 0


sys.exit(main())
