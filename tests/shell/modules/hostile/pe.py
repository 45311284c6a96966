"""Small Windows modules, byte by byte: a library with a descriptor, and every place in it by name for those who spoil it."""
import struct

TEXT, DATA, RESOURCES = 0x1000, 0x2000, 0x20000  # where the three sections lie in memory
HEADERS = 0x400
IMPORTS = 0x200  # where in .rdata; the exports are before
NULL_FACTORY = b"\x31\xC0\xC3"
LATIN = "PLUGININFO"
IS_64 = False  # what is made, for the word size of the programs that are to meet it


def take_word_size(program):
    """From the headers of a program."""
    global IS_64
    image = program.read_bytes()
    IS_64 = image[image.index(b"PE\0\0") + 4:][:2] == b"\x64\x86"


def own_machine():
    return 0x8664 if IS_64 else 0x14C


def other_machine():
    return 0x14C if IS_64 else 0x8664


def other_magic():
    return 0x10B if IS_64 else 0x20B



def block(root):
    """A descriptor: ("element", name, [children]), ("attribute", name, value) or ("text", text). A text that was used
    before is referred to."""
    out, known = bytearray(b"xmlbin\0\1\0\0"), {}

    def string(text):
        if text in known:
            out.extend(struct.pack("<i", -known[text]))
            return
        known[text] = len(known) + 1
        units = text.encode("utf-16-le", "surrogatepass")
        out.extend(struct.pack("<i", len(units) // 2) + units)

    todo = [root]
    while todo:
        kind, name, *rest = todo.pop()
        out.extend(struct.pack("<I", {"text": 0, "element": 2, "attribute": 3}[kind]))
        string(name)
        if kind == "attribute":
            string(rest[0])
        elif kind == "element":
            out.extend(struct.pack("<I", len(rest[0])))
            todo.extend(reversed(rest[0]))
    return bytes(out)


def element(name, *children, **attributes):
    return ("element", name, [("attribute", key, value) for key, value in attributes.items()] + list(children))


def descriptor(*children, guid="0xFA017E10, 1, 2, 3", **attributes):
    return block(element("CorvixRC", element("Plugin", *children, GUID=guid, Manufacturer="Nobody", **attributes)))


def interface(name="Hostile.object", **more):
    return element("Interface", Name=name, GUID="1, 2, 3, 4", **more)


class Module:
    """`bytes` and, in `at`, the offset of everything that a row may want to change."""

    def __init__(self, plugin=None, code=NULL_FACTORY, imports=(), export=TEXT, name="queryClassFactoryLocal"):
        self.at = {}
        data = self._exports(export, name).ljust(IMPORTS, b"\0") + self._imports(imports)
        resources = self._resources(descriptor(interface()) if plugin is None else plugin)
        sections = [(b".text", TEXT, code, 0x60000020), (b".rdata", DATA, data, 0x40000040),
                    (b".rsrc", RESOURCES, resources, 0x40000040)]
        self.bytes = bytearray(self._headers(sections))
        for (_, address, content, _), offset in zip(sections, self.offsets):
            assert len(self.bytes) == offset, (address, offset)
            self.bytes += content + bytes(-len(content) % 0x200)

    def put(self, where, value, size=4):
        """A little-endian number at a place by name, or at a name and a distance."""
        name, distance = where if isinstance(where, tuple) else (where, 0)
        begin = self.at[name] + distance
        self.bytes[begin:begin + size] = (value & (1 << 8 * size) - 1).to_bytes(size, "little")
        return self

    def cut(self, size):
        del self.bytes[size:]
        return self

    def _headers(self, sections):
        self.at.update(dos=0, new=0x3C, signature=0x80, machine=0x84, sectionCount=0x86, optionalSize=0x94, flags=0x96,
                       magic=0x98, entry=0xA8, base=0xB0 if IS_64 else 0xB4, alignment=0xB8, fileAlignment=0xBC, imageSize=0xD0,
                       headersSize=0xD4)
        first = 0x108 if IS_64 else 0xF8
        self.at["directoryCount"] = first - 4
        for key, index in (("export", 0), ("import", 1), ("resource", 2)):
            self.at[key + "Directory"] = first + index * 8
        self.at.update(relocations=first + 5 * 8, tls=first + 9 * 8)
        for i, key in enumerate(("text", "data", "resources")):
            self.at[key + "Section"] = first + 16 * 8 + i * 40
        self.offsets, offset, end = [], HEADERS, 0
        table = b""
        for name, address, content, flags in sections:
            raw = len(content) + -len(content) % 0x200
            size = RESOURCES - DATA if address == DATA else len(content)  # no gap between sections
            table += struct.pack("<8sIIIIIIHHI", name, size, address, raw, offset, 0, 0, 0, 0, flags)
            self.offsets.append(offset)
            offset += raw
            end = address + len(content) + -len(content) % 0x1000
        for key, delta, section in (("exports", 0, 1), ("importTable", IMPORTS, 1)):
            self.at[key] = self.offsets[section] + delta
        self.at["tree"] = self.offsets[2]
        self.at["code"] = self.offsets[0]
        directories = [0] * 32
        directories[0:2] = [DATA, IMPORTS]
        if self.importCount:
            directories[2:4] = [DATA + IMPORTS, 20 * (self.importCount + 1)]
        directories[4:6] = [RESOURCES, len(sections[2][2])]
        word = "Q" if IS_64 else "I"
        base = struct.pack("<Q", 0x10000000) if IS_64 else struct.pack("<II", DATA, 0x10000000)
        optional = (struct.pack("<HBBIIIII", 0x20B if IS_64 else 0x10B, 2, 0, 0x200, 0x200, 0, 0, TEXT) + base +
                    struct.pack("<IIHHHHHHIIIIHH4" + word + "II", 0x1000, 0x200, 4, 0, 0, 0, 4, 0, 0, end, HEADERS, 0, 2,
                                0x100, 0x100000, 0x1000, 0x100000, 0x1000, 0, 16) + struct.pack("<32I", *directories))
        file = struct.pack("<HHIIIHH", own_machine(), len(sections), 0, 0, 0, len(optional), 0x2022 if IS_64 else 0x2102)
        dos = b"MZ" + bytes(0x3A) + struct.pack("<I", 0x80)
        headers = dos + bytes(0x80 - len(dos)) + b"PE\0\0" + file + optional + table
        return headers + bytes(HEADERS - len(headers))

    @staticmethod
    def _exports(address, name):
        """At the beginning of .rdata; one function."""
        text = DATA + 40 + 4 + 4 + 2 + 2
        table = struct.pack("<IIHHIIIIIII", 0, 0, 0, 0, text, 1, 1, 1, DATA + 40, DATA + 44, DATA + 48)
        names = name.encode() + b"\0"
        if isinstance(address, str):  # a forwarder
            return table + struct.pack("<IIHH", text + len(names), text, 0, 0) + names + address.encode() + b"\0"
        return table + struct.pack("<IIHH", address, text, 0, 0) + names

    def _imports(self, names):
        self.importCount = len(names)
        begin = DATA + IMPORTS
        thunks = begin + 20 * (len(names) + 1)
        pair = struct.Struct("<QQ" if IS_64 else "<II")
        texts = thunks + pair.size * len(names)
        table, slots, strings = b"", b"", b""
        for i, name in enumerate(names):
            hint = texts + len(strings)
            strings += b"\0\0function\0\0" + name + b"\0"
            table += struct.pack("<IIIII", 0, 0, 0, hint + 12, thunks + pair.size * i)
            slots += pair.pack(hint, 0)
        return table + bytes(20) + slots + strings

    def _resources(self, content):
        """Type, name and language, then the name as a text, the entry and the descriptor."""
        directory = lambda named, ids: struct.pack("<IIHHHH", 0, 0, 0, 0, named, ids)
        text, entry, begin = 72, 96, 112
        tree = directory(1, 0) + struct.pack("<II", 0x80000000 | text, 0x80000000 | 24)
        tree += directory(1, 0) + struct.pack("<II", 0x80000000 | text, 0x80000000 | 48)
        tree += directory(0, 1) + struct.pack("<II", 0x409, entry)
        tree += struct.pack("<H", len(LATIN)) + LATIN.encode("utf-16-le")
        tree += bytes(entry - len(tree)) + struct.pack("<IIII", RESOURCES + begin, len(content), 0, 0)
        return tree + content
