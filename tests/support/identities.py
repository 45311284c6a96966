"""What the sources say of the identities of their classes, for the checks that compare it."""
import collections
import pathlib
import re

# A class with one or more bases, an identity or an operation that begins with `virtual`: where it stands, what its
# CORVIX_IDENTITY says (None where it has none), and the names in the list of bases that the class declares, in their order.
Class = collections.namedtuple("Class", "path line name words bases declared is_root is_final")

CLASS = re.compile(r"\b(?:class|struct)\s+(?:(?:CORVIX_API|\[\[[^\]]*\]\]|alignas\([^)]*\))\s*)*(\w+)(?:<[^;{]*?>)?\s*(final\s*)?(?::\s*([^;{]*?))?\s*\{")
LINE = re.compile(r"\bCORVIX_IDENTITY(_ROOT)?\(([^()]*)\)")


def without_comments(text):
    """The same lines, their comments blank."""
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda found: re.sub(r"[^\n]", " ", found.group()), text, flags=re.S)


def words_of(texts):
    """Four numbers as a descriptor spells them."""
    return tuple(int(re.sub(r"^0(?=\d)", "0o", text.strip()), 0) & 0xFFFFFFFF for text in texts)


def last_name(name):
    return name.strip().rpartition("::")[2]


def names_in(bases):
    found = re.findall(r"[\w:]+", bases or "")
    return [last_name(name) for name in found if name not in ("public", "protected", "private", "virtual")]


def in_file(checkout, path):
    """Every class that says what it is, or whose bases may."""
    text = without_comments((checkout / path).read_text(encoding="utf-8"))
    heads = list(CLASS.finditer(text))
    for head, end in zip(heads, [h.start() for h in heads[1:]] + [len(text)]):
        line = LINE.search(text, head.end(), end)
        number = text.count("\n", 0, (line or head).start()) + 1
        declared = names_in(head.group(3))
        if line:
            parts = [part.strip() for part in line.group(2).replace("\n", " ").split(",")]
            yield Class(path, number, parts[0], words_of(parts[1:5]), names_in(" ".join(parts[5:])), declared,
                        bool(line.group(1)), bool(head.group(2)))
        elif declared or re.search(r"\bvirtual\b", text[head.end():end]):
            yield Class(path, number, head.group(1), None, [], declared, False, bool(head.group(2)))


def in_tree(checkout, *folders):
    checkout = pathlib.Path(checkout)
    for folder in folders:
        for path in sorted((checkout / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield from in_file(checkout, path.relative_to(checkout).as_posix())


def public(checkout):
    """Those with an identity, or slots that no base has, in the public headers."""
    return [one for one in in_tree(checkout, "core", "shell", "graphics")
            if (one.words or not one.declared) and one.path.endswith(".h") and not one.path.endswith("_p.h")]
