#!/usr/bin/env python3
"""Checks that what the pages quote is what is compiled: check_quotes.py CHECKOUT

A fenced block behind a line "<!-- quotes PATH -->" must stand in that file, letter by letter. Every path and every
heading that a page names in a link must exist.
"""
import pathlib
import re
import sys

QUOTE = re.compile(r"<!-- quotes (\S+) -->\n```\w*\n(.*?)```", re.S)
LINK = re.compile(r"\]\(([^)#:]*)(?:#([^)]*))?\)")


def headings(page):
    """What links call them."""
    found = re.findall(r"(?m)^#+ +(.*)$", page.read_text(encoding="utf-8"))
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in found}


def main():
    checkout = pathlib.Path(sys.argv[1])
    wrong = 0
    quotes = 0
    for page in [*checkout.glob("*.md"), *checkout.glob("docs/*.md")]:
        text = page.read_text(encoding="utf-8")
        for path, quoted in QUOTE.findall(text):
            quotes += 1
            if not (checkout / path).is_file() or quoted not in (checkout / path).read_text(encoding="utf-8"):
                wrong += 1
                print(f"{page.name}: a quotation of {path} is not what stands there:\n{quoted}")
        if text.count("<!-- quotes ") != len(QUOTE.findall(text)):
            wrong += 1
            print(f"{page.name}: a quotation has no block right behind its line")
        for target, heading in LINK.findall(text):
            place = page.parent / target if target else page
            if not place.exists() or heading and heading not in headings(place):
                wrong += 1
                print(f"{page.name}: the link to {target}{heading and '#' + heading} leads nowhere")
    print(f"{quotes} quotations, {wrong} faults")
    return 1 if wrong else 0


sys.exit(main())
