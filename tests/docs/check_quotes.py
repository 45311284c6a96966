#!/usr/bin/env python3
"""Checks that what the pages quote is what is compiled: check_quotes.py CHECKOUT

A fenced block behind a line "<!-- quotes PATH -->" must stand in that file, letter by letter. Every path that a
page names in a link must exist.
"""
import pathlib
import re
import sys

QUOTE = re.compile(r"<!-- quotes (\S+) -->\n```\w*\n(.*?)```", re.S)
LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def main():
    checkout = pathlib.Path(sys.argv[1])
    wrong = 0
    quotes = 0
    for page in [*checkout.glob("*.md"), *(checkout / "docs").glob("*.md")]:
        text = page.read_text(encoding="utf-8")
        for path, quoted in QUOTE.findall(text):
            quotes += 1
            if quoted not in (checkout / path).read_text(encoding="utf-8"):
                wrong += 1
                print(f"{page.name}: a quotation of {path} is not what stands there:\n{quoted}")
        for target in LINK.findall(text):
            if not (page.parent / target).exists():
                wrong += 1
                print(f"{page.name}: the link to {target} leads nowhere")
    print(f"{quotes} quotations, {wrong} faults")
    return 1 if wrong else 0


sys.exit(main())
