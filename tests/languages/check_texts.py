#!/usr/bin/env python3
"""Whether the languages of the product are complete: check_texts.py CHECKOUT

A text that the user sees and a language lacks is an error, and so are a place ("%1") that its translation lacks or has
twice, and a translation of what nobody shows. Texts are those of templates and descriptors, and of the sources of the
plug-ins that show windows what is handed to the translator. There every literal that reads like a sentence must be
handed to it: what is none stands in `NO_TEXTS`.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree

checkout = pathlib.Path(sys.argv[1])
SHOWN = [checkout / "plugins" / name for name in ("dialogs", "gui", "panel-pages", "panel-report", "views", "windows")]
DESCRIBED = [*SHOWN, *(checkout / "plugins" / name for name in ("format-image", "format-text"))]
EXAMPLES = [checkout / "examples/plugins" / name for name in ("facts", "greeter", "worker")]
TRANSLATES = re.compile(r"\b(?:translated|sentence|stepText|of|addButton)\($")  # what stands before a literal
NO_TEXTS = re.compile(r"guarded\($|Guarded\([\w*>. ()&-]+, $|swscanf\(.*, $|swprintf\(.*, $|const family : \{.*$")
LITERAL = re.compile(r'L"((?:[^"\\\n]|\\.)*)"')
wrong = []


def unescaped(literal):
    return re.sub(r"\\(.)", r"\1", literal)


def texts_of_sources():
    for file in (file for folder in SHOWN for file in sorted(folder.iterdir()) if file.suffix in (".cpp", ".h")):
        source = re.sub(r"(?m)//.*$|^#.*$", "", file.read_text(encoding="utf-8"))
        source = re.sub(r'"\s*\n\s*L?"', "", source)  # a literal in two lines
        flat = re.sub(r"\s*\n\s*", " ", source).replace("( ", "(")
        for found in LITERAL.finditer(flat):
            before, text = flat[max(0, found.start() - 120) : found.start()], unescaped(found[1])
            if TRANSLATES.search(before):
                yield text, file.name
            elif re.match(r"[A-Za-z%][^ .]* [^ ]*[A-Za-z%]", text) and not NO_TEXTS.search(before):
                yield text, file.name + ", not handed to the translator there"
    for text in re.findall(r'sentence\(\s*L"((?:[^"\\]|\\.)*)"', (checkout / "shell/documents/manager/KDocManager.cpp").read_text()):
        yield unescaped(text), "KDocManager.cpp"
    for text in re.findall(r'L"([a-z ]+)"', re.search(r"text\(\) const noexcept override \{(.*?)\}", (checkout / "plugins/format-text/TextDocument.cpp").read_text(), re.S)[1]):
        yield text, "TextDocument.cpp"
    for text in re.findall(r'add\(L"([^"]+)"', (checkout / "shell/documents/manager/FormatList.cpp").read_text()):
        yield text, "FormatList.cpp"


def texts_of_files():
    for file in (file for folder in DESCRIBED + EXAMPLES for file in sorted(folder.glob("*.xml"))):
        for element in xml.etree.ElementTree.parse(file).iter():
            name = element.get("Name", "")
            if element.get("Text"):
                yield element.get("Text"), file.parent.name
            if name.startswith(("Actions.", "DocFormat.")) and element.get("sHumanName"):
                yield element.get("sHumanName"), file.parent.name
    descriptors = [*(checkout / "resources").glob("*.xml"), *(folder / "plugin.xml" for folder in DESCRIBED + EXAMPLES)]
    for file in filter(pathlib.Path.exists, descriptors):
        for setting in xml.etree.ElementTree.parse(file).iter("Setting"):
            if setting.get("Visible") == "false":
                continue
            values = setting.get("Values", "") if setting.get("Type") == "enum" else ""
            for text in [*setting.get("path", setting.get("Item")).split("\\"), setting.get("comment", ""), *values.split("|")]:
                if text:
                    yield text, file.parent.name


def keys():
    source = (checkout / "plugins/gui/Keys.cpp").read_text()
    return {name.rstrip("+") for name in re.findall(r'\{L"([A-Za-z]+\+?)", ', source)}


def places(text):
    return sorted(re.findall(r"%[1-9]", text))


def main():
    shown = {}
    for text, where in [*texts_of_sources(), *texts_of_files()]:
        shown.setdefault(text, where)
    if len(shown) < 150 or len(keys()) < 20:
        wrong.append(f"only {len(shown)} texts and {len(keys())} keys were found: the search is wrong")
    for file in sorted((checkout / "languages").glob("*/texts.xml")):
        language = file.parent.name
        rows = [(row.get("In", ""), row.get("From"), row.get("To")) for row in xml.etree.ElementTree.parse(file).iter("Text")]
        known = {source for _, source, _ in rows}
        wrong.extend(f"{language} lacks {text!r} ({where})" for text, where in shown.items() if text not in known)
        wrong.extend(f"{language} lacks the key {key}" for key in keys() if ("Key", key) not in {row[:2] for row in rows})
        for place, source, text in rows:
            if place != "Key" and source not in shown:
                wrong.append(f"{language} has {source!r}, which nobody shows")
            if places(source) != places(text) or len(set(places(text))) != len(places(text)):
                wrong.append(f"{language} has other places in {text!r} than in {source!r}")
    for line in wrong:
        print(line)


main()
sys.exit(bool(wrong))
