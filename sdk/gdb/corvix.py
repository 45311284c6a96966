"""How gdb shows the types that Corvix's modules share:  source corvix.py

Ref        what it holds; "nothing" when it is empty
WideString its text
Variant    its value
XML nodes  <name>, @name="value", "text"; an element with the heads of its children
"""
import gdb

MOST_UNITS = 200
MOST_CHILDREN = 200


def text_of(units, length):
    """UTF-16 units of the program, quoted; what cannot be read says so."""
    shown = min(int(length), MOST_UNITS)
    if not shown:
        return '""'
    try:
        data = gdb.selected_inferior().read_memory(int(units), 2 * shown).tobytes()
    except gdb.MemoryError:
        return "<cannot be read>"
    text = data.decode("utf-16-le", "replace")
    text = "".join(c if c.isprintable() else f"\\u{ord(c):04x}" for c in text)
    return f'"{text}"' + ("..." if shown < int(length) else "")


class WideStringPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return text_of(self.value["text_"], self.value["length_"])


class VariantPrinter:
    FIELDS = {2: "float_", 3: "integer_", 4: "bool_"}

    def __init__(self, value):
        self.value = value

    def to_string(self):
        tag = int(self.value["tag_"])
        if tag == 0:
            return "empty"
        if tag == 1:
            return WideStringPrinter(self.value["text_"]).to_string()
        return str(self.value[self.FIELDS[tag]]) if tag in self.FIELDS else f"<no variant: tag {tag}>"


class RefPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        pointer = self.value["object_"]
        kind = pointer.type.strip_typedefs().target()
        if not int(pointer):
            return f"nothing ({kind})"
        try:
            actual = pointer.dynamic_type.target()
        except gdb.error:
            actual = kind
        return f"{actual} at {int(pointer):#x}"

    def children(self):
        pointer = self.value["object_"]
        if int(pointer):
            try:
                pointer = pointer.cast(pointer.dynamic_type)
            except gdb.error:
                pass
            yield "object", pointer.dereference()


class NodePrinter:
    def __init__(self, value):
        self.value = value

    @staticmethod
    def head(node):
        name = text_of(node["name_"]["units"], node["name_"]["length"])
        kind = int(node["type_"])
        if kind == 2:
            return f"<{name[1:-1]}>"
        if kind == 1:
            return f"<!-- {name[1:-1]} -->"
        if kind == 3:
            value = node.cast(gdb.lookup_type("corvix::XMLNodeParam"))["value_"]
            return f"@{name[1:-1]}={text_of(value['units'], value['length'])}"
        return name

    @staticmethod
    def whole(node):
        """The node as what its type says it is."""
        name = {2: "corvix::XMLNodeNode", 3: "corvix::XMLNodeParam"}.get(int(node["type_"]))
        return node.address.cast(gdb.lookup_type(name).pointer()).dereference() if name and node.address else node

    def to_string(self):
        return self.head(self.whole(self.value))

    def children(self):
        node = self.whole(self.value)
        if int(node["type_"]) != 2:
            return
        count = int(node["count_"])
        for i in range(min(count, MOST_CHILDREN)):
            yield f"[{i}]", self.head(self.whole((node["children_"] + i).dereference().dereference()))
        if count > MOST_CHILDREN:
            yield "...", f"{count - MOST_CHILDREN} more"


PLAIN = {"corvix::WideString": WideStringPrinter, "corvix::Variant": VariantPrinter}
NODES = {"corvix::XMLNode", "corvix::XMLNodeNode", "corvix::XMLNodeParam", "corvix::XMLNodeText",
         "corvix::XMLNodeComment"}


def find_printer(value):
    name = value.type.unqualified().strip_typedefs().tag or ""
    if name in PLAIN:
        return PLAIN[name](value)
    if name in NODES:
        return NodePrinter(value)
    return RefPrinter(value) if name.startswith("corvix::Ref<") else None


gdb.pretty_printers.append(find_printer)
