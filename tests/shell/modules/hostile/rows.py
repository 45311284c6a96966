"""The hostile modules, a row for each: its name, how it is made, what is said of it when it is listed and, if an object
of it is asked for, what comes of that. "" when listed: there is nothing to say; when asked for: systems say different
things, but each says something."""
import struct

import pe
from pe import DATA, NULL_FACTORY, RESOURCES, TEXT, Module, descriptor, element, interface

OUTSIDE = 0x00F00000
NO_FACTORY = "returned no class factory"
CUT, NONE, FOREIGN = "is cut short", "is not a Windows module", "is made for"
NO_DESCRIPTOR, RESOURCE_OUTSIDE = "has no descriptor", "descriptor lies outside"
MALFORMED = "descriptor is malformed"
EXPORTS = "table of exports lies outside"
PAINT = "\x1b[31mred\x07\x9b1m\u202e"
LONG = "a" * 500_000


def put(*where_and_value):
    return lambda: Module().put(*where_and_value)


def coded(code):
    return lambda: Module(code=bytes.fromhex(code))


def started(code):
    """In DllMain, at the start alone: the system calls it once more after it has failed."""
    def make():
        only_then = "83FA017401C3" if pe.IS_64 else "837C2408017403C20C00"
        return Module(code=bytes.fromhex(only_then + code)).put("entry", TEXT)
    return make


def described(make):
    return lambda: Module(plugin=make())


def spoilt(change):
    def make():
        content = bytearray(descriptor(interface()))
        change(content)
        return Module(plugin=bytes(content))
    return make


def settings(count, **more):
    return [element("Setting", Group="Hostile", Item=f"item{i}", Type="string", Data="x", **more) for i in range(count)]


def many(count, name, value):
    return ("element", "Setting", [("attribute", "Group", "Hostile"), ("attribute", "Item", "many")] +
            [("attribute", f"{name}{count - i}", value) for i in range(count)])


def many_needs():
    return Module(plugin=descriptor(interface("IPluginManagerAfterInit"),
                                    *[element("Requires", Interface="Needed", MinVersion="9")] * 64))


def many_declared():
    return Module(plugin=descriptor(*[interface("Needed")] * 100_000))


def deep(count):
    tree = ("text", "bottom")
    for _ in range(count):
        tree = ("element", "e", [tree])
    return pe.block(tree)


HEADERS = [
    ("empty", lambda: Module().cut(0), NONE),
    ("one_byte", lambda: Module().cut(1), NONE),
    ("two_bytes", lambda: Module().cut(2), NONE),
    ("dos_header_alone", lambda: Module().cut(0x40), CUT),
    ("signature_alone", lambda: Module().cut(0x84), CUT),
    ("file_header_alone", lambda: Module().cut(0x98), CUT),
    ("half_an_optional_header", lambda: Module().cut(0xC0), CUT),
    ("half_a_section_table", lambda: Module().cut(0x190), CUT),
    ("without_its_last_byte", lambda: Module().cut(-1), CUT),
    ("new_header_at_the_end_of_the_world", put("new", 0xFFFFFFFF), CUT),
    ("new_header_at_zero", put("new", 0), NONE),
    ("a_16_bit_module", put("signature", 0x454E), NONE),
    ("of_the_other_word_size", lambda: Module().put("machine", pe.other_machine(), 2), FOREIGN),
    ("for_no_machine", put("machine", 0, 2), FOREIGN),
    ("optional_header_of_another_kind", lambda: Module().put("magic", pe.other_magic(), 2), "contradict"),
    ("no_optional_header", put("optionalSize", 0, 2), "contradict"),
    ("optional_header_without_end", put("optionalSize", 0xFFFF, 2), CUT),
    ("no_sections", put("sectionCount", 0, 2), RESOURCE_OUTSIDE),
    ("sections_without_end", put("sectionCount", 0xFFFF, 2), CUT),
    ("a_program", put("flags", 0x0102, 2), "is a program"),
    ("no_directories", put("directoryCount", 0), NO_DESCRIPTOR),
    ("directories_without_end", put("directoryCount", 0xFFFFFFFF), "", NO_FACTORY),
    ("no_size_of_image", put("imageSize", 0), "", "headers are damaged"),
    ("size_of_image_without_end", put("imageSize", 0xFFFFF000), "", ""),
    ("size_of_headers_without_end", put("headersSize", 0xFFFFF000), "", ""),
    ("alignment_of_zero", put("alignment", 0), "", ""),
    ("alignment_of_files_of_zero", put("fileAlignment", 0), "", ""),
    ("odd_image_base", put("base", 0x12345), "", ""),
    ("entry_point_outside", put("entry", OUTSIDE), "", "crashed while it was starting"),
    ("section_beyond_the_end", put(("textSection", 20), 0x7FFFFE00), CUT),
    ("section_without_end", put(("textSection", 16), 0xFFFFFE00), CUT),
    ("section_beyond_memory", put(("textSection", 12), 0xFFFFF000), "", "The system"),
    ("sections_at_one_place", put(("textSection", 12), DATA), "", ""),
]

def forwarding_among_names_outside():
    """The system looks it up among names of which only ours is inside."""
    count, begin = 21, 0x100
    module = Module(export="ntdll.RtlGetLastWin32Error")
    for i in range(1, count):
        module.put(("exports", begin + 4 * i), 0x7FFF0000)
    module.put(("exports", begin), DATA + 52).put(("exports", 24), count)
    return module.put(("exports", 32), DATA + begin).put(("exports", 36), DATA + begin + 4 * count)


DIRECTORIES = [
    ("exports_outside", put("exportDirectory", OUTSIDE), "", EXPORTS),
    ("no_exports", put("exportDirectory", 0), "", "does not export"),
    ("another_export", lambda: Module(name="queryClassFactoryLoca1"), "", "does not export"),
    ("export_functions_outside", put(("exports", 28), OUTSIDE), "", EXPORTS),
    ("export_names_outside", put(("exports", 32), OUTSIDE), "", EXPORTS),
    ("export_ordinals_outside", put(("exports", 36), OUTSIDE), "", EXPORTS),
    ("export_names_without_end", put(("exports", 24), 0xFFFFFFFF), "", EXPORTS),
    ("export_functions_none", put(("exports", 20), 0), "", EXPORTS),
    ("export_name_outside", put(("exports", 44), OUTSIDE), "", "does not export"),
    ("export_ordinal_outside", put(("exports", 48), 0xFFFF, 2), "", EXPORTS),
    ("export_address_outside", put(("exports", 40), OUTSIDE), "", EXPORTS),
    ("export_is_data", lambda: Module(export=DATA + 0x1000), "", "is data"),
    ("export_is_a_header", lambda: Module(export=0), "", "is data"),
    ("export_in_a_missing_module", lambda: Module(export="absent.function"), "", "does not export"),
    ("forwards_to_itself", lambda: Module(export="forwards_to_itself.queryClassFactoryLocal"), "", "a stack overflow"),
    ("forwards_among_names_outside", forwarding_among_names_outside, "", "an access violation"),
    ("export_of_another_module", lambda: Module(export="ntdll.RtlGetLastWin32Error"), "", ""),
    ("factory_writes_to_zero", coded("31C08900C3"), "", "an access violation"),
    ("factory_is_no_code", coded("0F0B"), "", "an illegal instruction"),
    ("factory_takes_all_registers", coded("31DB31F631FF31ED0F0B"), "", "an illegal instruction"),
    ("factory_stops_the_machine", coded("F4"), "", "a privileged instruction"),
    ("factory_breaks", coded("CCC3"), "", "0x80000003"),
    ("factory_divides_by_zero", coded("31C9F7F1C3"), "", "a division by zero"),
    ("factory_without_end", coded("E8FBFFFFFF"), "", "a stack overflow"),
    ("factory_without_end_either", coded("E8FBFFFFFF"), "", "a stack overflow"),
    ("factory_takes_the_modes_of_numbers", coded("68006000000FAE14245868400F0000D92C24580F0B"), "", "an illegal instruction"),
    ("start_divides_by_zero", started("31C9F7F1C3"), "", "starting: a division by zero (0xC0000094)."),
    ("start_breaks", started("CCC3"), "", "starting: exception (0x80000003)."),
    ("start_without_end", started("E8FBFFFFFF"), "", "ran out of stack"),
    ("start_without_end_either", started("E8FBFFFFFF"), "", "ran out of stack"),
    ("factory_is_no_object", coded("B801000000C3"), "", "an access violation"),
    ("factory_is_text", coded("B82C200010C3"), "", ""),
    ("imports_outside", put("importDirectory", OUTSIDE), "", "an access violation"),
    ("import_name_outside", lambda: Module(imports=[b"absent.dll"]).put(("importTable", 12), OUTSIDE), "", ""),
    ("import_missing", lambda: Module(imports=[b"absent.dll"]), "", "absent.dll, which"),
    ("import_with_a_path", lambda: Module(imports=[b"..\\\\absent.dll"]), "", "no file can have"),
    ("import_on_another_machine", lambda: Module(imports=[b"\\\\\\\\absent\\\\share\\\\absent.dll"]), "", "no file can have"),
    ("import_that_paints", lambda: Module(imports=[b"\x1b[31mabsent.dll"]), "", "no file can have"),
    ("import_without_end", lambda: Module(imports=[b"a" * 4000]), "", "which"),
    ("imports_by_the_hundred", lambda: Module(imports=[b"absent%d.dll" % i for i in range(900)]), "", "which"),
    ("thread_storage_outside", put("tls", OUTSIDE), "", ""),
    ("relocations_outside", lambda: Module().put("relocations", OUTSIDE).put(("relocations", 4), 100), "", ""),
]

def imports_of_one_name():
    """900 modules with 99,000 functions each, in one table, all of one name."""
    content = descriptor(interface())
    name = (b"\0\0" + b"n" * 5000 + b"\0").ljust(5004, b"\0")
    text = RESOURCES + 112 + len(content)
    functions = text + len(name)
    table = functions + 4 * 99_001
    module = Module(plugin=content + name + struct.pack("<I", text) * 99_000 + bytes(4) +
                    struct.pack("<IIIII", functions, 0, 0, text + 2, functions) * 900 + bytes(20))
    return module.put(("tree", 100), len(content)).put("importDirectory", table)


TREE = 24  # from one directory of the resources to the next
RESOURCE = [
    ("resources_outside", put("resourceDirectory", OUTSIDE), RESOURCE_OUTSIDE),
    ("imports_of_one_name", imports_of_one_name, ""),
    ("resources_beyond_memory", put("resourceDirectory", 0xFFFFFFF8), RESOURCE_OUTSIDE),
    ("no_resources", put("resourceDirectory", 0), NO_DESCRIPTOR),
    ("no_types", put(("tree", 12), 0, 2), NO_DESCRIPTOR),
    ("types_without_end", put(("tree", 12), 0xFFFF, 2), RESOURCE_OUTSIDE),
    ("type_name_outside", put(("tree", 16), 0x80F00000), RESOURCE_OUTSIDE),
    ("type_name_without_end", put(("tree", 72), 0xFFFF, 2), NO_DESCRIPTOR),
    ("type_of_another_name", put(("tree", 74), ord("Q"), 2), NO_DESCRIPTOR),
    ("type_leads_to_data", put(("tree", 20), 96), RESOURCE_OUTSIDE),
    ("type_leads_outside", put(("tree", 20), 0xFFFFFFFF), RESOURCE_OUTSIDE),
    ("type_leads_to_itself", put(("tree", 20), 0x80000000), RESOURCE_OUTSIDE),
    ("no_names", put(("tree", TREE + 12), 0, 2), NO_DESCRIPTOR),
    ("no_languages", put(("tree", 2 * TREE + 14), 0, 2), RESOURCE_OUTSIDE),
    ("language_is_a_directory", put(("tree", 2 * TREE + 20), 0x80000000), RESOURCE_OUTSIDE),
    ("language_leads_outside", put(("tree", 2 * TREE + 20), 0x7FFFFFF0), RESOURCE_OUTSIDE),
    ("descriptor_outside", put(("tree", 96), OUTSIDE), RESOURCE_OUTSIDE),
    ("descriptor_empty", put(("tree", 100), 0), "is empty"),
    ("descriptor_beyond_its_section", put(("tree", 100), 0x10000), RESOURCE_OUTSIDE),
    ("descriptor_without_end", put(("tree", 100), 0xFFFFFFFF), "larger than 64 MiB"),
]

BLOCKS = [
    ("block_of_another_kind", spoilt(lambda b: b.__setitem__(5, 0x4E)), MALFORMED),
    ("block_of_another_version", spoilt(lambda b: b.__setitem__(6, 1)), MALFORMED),
    ("node_of_another_kind", spoilt(lambda b: b.__setitem__(10, 4)), MALFORMED),
    ("block_cut_short", described(lambda: descriptor(interface())[:-3]), MALFORMED),
    ("block_of_a_header", described(lambda: b"xmlbin\0\1\0\0"), MALFORMED),
    ("text_without_end", described(lambda: b"xmlbin\0\1\0\0" + b"\0\0\0\0\xff\xff\xff\x7f"), MALFORMED),
    ("text_of_later", described(lambda: b"xmlbin\0\1\0\0" + b"\0\0\0\0\x00\x00\x00\x80"), MALFORMED),
    ("children_without_end", described(lambda: b"xmlbin\0\1\0\0\2\0\0\0\0\0\0\0\xff\xff\xff\x7f"), MALFORMED),
    ("no_plugin", described(lambda: pe.block(element("CorvixRC"))), "no Plugin element"),
    ("root_is_a_text", described(lambda: pe.block(("text", "Plugin"))), "no Plugin element"),
    ("deep", described(lambda: deep(300_000)), "no Plugin element"),
    ("nothing_declared", described(descriptor), ""),
    ("no_identifier", described(lambda: descriptor(interface(), guid="1, 2, 3")), "does not have four numbers",
     "does not have four numbers"),
    ("one_long_text_for_all", described(lambda: descriptor(*[interface(f"I{i}", sHumanName=LONG) for i in range(3000)])),
     "Attributes left out: 3000 "),
    ("attributes_by_the_hundred_thousand", described(lambda: descriptor(many(100_000, "a", "x"))), "Attributes left out: 99002 "),
    ("interfaces_by_the_hundred_thousand",
     described(lambda: descriptor(*[interface("Hostile.falling", Order=str(-i)) for i in range(100_000)])), ""),
    ("settings_by_the_ten_thousand", described(lambda: descriptor(*settings(10_000))), "Settings left out: 5904 "),
    ("settings_with_one_long_text", described(lambda: descriptor(*settings(3000, comment=LONG))), "Attributes left out: 3000 "),
    ("settings_with_one_text_that_may_be",
     described(lambda: descriptor(*settings(3000, comment="b" * 60_000))), "Settings left out: 2983 "),
    ("a_name_of_half_a_million", described(lambda: descriptor(interface(LONG), Name=LONG)), "Interfaces and settings left out: 1 "),
    ("an_attribute_name_of_2000", described(lambda: descriptor(interface(**{"a" * 2000: "x"}))), "Attributes left out: 1 "),
    ("names_that_paint", described(lambda: descriptor(interface("GlobalEvent.Paint", sHumanName=PAINT), interface(PAINT), Name="\x1b]0;title\x07")), ""),
    ("long_but_allowed", described(lambda: descriptor(interface("n" * 1024, sHumanName="h" * 65_536), *settings(3, Values=PAINT),
                                                      Name="p" * 60_000, Version=PAINT)), ""),
    ("names_of_nothing", described(lambda: descriptor(interface("", sHumanName=""), Name="", Version="")), ""),
    ("names_with_zeros", described(lambda: descriptor(interface("Zero\0behind"), Name="\0")), ""),
    ("names_of_half_a_letter", described(lambda: descriptor(interface("\ud800"), Name="\udfff")), ""),
]
