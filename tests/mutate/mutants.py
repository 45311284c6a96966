"""Forty breaks of the code, one at a time: file, the text that stands there once, what replaces it, the program whose tests are to
notice, and which of them. A break that changes nothing that can be seen says why, in place of being noticed.
"""
import typing


class Mutant(typing.NamedTuple):
    file: str
    text: str
    replacement: str
    program: str  # a row of PROGRAMS in mutate.py
    tests: str  # a filter of GoogleTest
    equivalent: str = ""


BASELIB = "core/baselib/"
DECODING = "core/suppliers/decoding/"
MUTANTS = [
    # identity and objects
    Mutant(BASELIB + "identity/ParseClassWords.cpp", "number.isNegative ? 0u - number.low32 : number.low32", "number.low32",
           "native", "ParseClassWords.*"),
    Mutant(BASELIB + "identity/StypeInfo.cpp", "if (!text_[0]) buildText();", "buildText();", "native", "StypeInfo.*"),
    Mutant(BASELIB + "identity/IdentityWalk.h", "if (outcome != Walk::Found) leaveClass(visitor);", "leaveClass(visitor);",
           "native", "IdentityWalk.*"),
    Mutant(BASELIB + "objects/ListenerList.cpp", "levels_.upper_bound(priority)", "levels_.lower_bound(priority)",
           "native", "NotifySenderTest.*"),
    Mutant(BASELIB + "objects/ListenerList.cpp", "repeat->toldBy = entry->toldBy;", "", "native", "NotifySenderRule.*"),
    Mutant(BASELIB + "objects/ListenerList.cpp", "if (isNeeded(*entry)) {\n    entry->previous", "if (false) {\n    entry->previous", "native", "NotifySenderTest.*"),
    Mutant(BASELIB + "objects/SmartObject.cpp", "everybody.hasListeners() ? deliverDestroy(everybody, &object) : own", "own",
           "native", "SmartObject.*"),
    Mutant(BASELIB + "objects/GlobalData.cpp", "if (item && item->value && item->destructor) {",
           "if (item && item->value != value && item->value && item->destructor) {", "native", "GlobalDataTest.*"),
    Mutant(BASELIB + "objects/GlobalData.cpp", "if (all.items.isWalked()) return;", "", "native", "GlobalDataTest.*"),
    # text
    Mutant(BASELIB + "text/StringHash.h", "((unit << 6) ^ unit ^ hash)", "((unit << 5) ^ unit ^ hash)", "native", "StringHash.*"),
    Mutant(BASELIB + "text/NameTable_p.h", "* 24575", "* 34575", "native", "GlobalDataGrowthTest.*"),
    Mutant(BASELIB + "text/WideString.h", "return (length & ~31u) + 32;", "return ((length + 31) & ~31u) + 32;",
           "native", "WideString.*"),
    Mutant(BASELIB + "text/WideString.h", "std::memmove(text_, text.data()", "std::memcpy(text_, text.data()",
           "native", "WideString.*"),
    Mutant(BASELIB + "text/NumberText.cpp", "(at[1] != L'x' && at[1] != L'X')) return 8;",
           "(at[1] != L'x' && at[1] != L'X')) return 10;", "native", "NumberText.*"),
    Mutant(BASELIB + "text/NumberText.cpp", "return place + (isNegative ? -exponent : exponent) > 0;",
           "return place + (isNegative ? -exponent : exponent) >= 0;", "native", "NumberText.*",
           "a number whose first digit stands right behind the point is never out of range"),
    Mutant(BASELIB + "text/NumberText.cpp", "result.isAbove32 = result.isAbove32 || value >> 32;",
           "result.isAbove32 = value >> 32;", "native", "NumberText.*"),
    # descriptors
    Mutant("core/xml/XmlbinReader.cpp", "if (number > strings_.size()) return false;",
           "if (number > strings_.size() + 1) return false;", "native", "XmlbinReader.*"),
    Mutant("core/xml/XmlbinReader.cpp", "version != kVersion", "version < kVersion", "native", "XmlbinReader.*"),
    Mutant("core/xml/XmlNode.cpp", "if (child->refCount() > 0) {", "if (child->refCount() > 1) {", "native", "XmlNode.*"),
    Mutant("core/xml/XmlNode.cpp", "std::max(kFirstCapacity, count_ * 2)", "count_ + kFirstCapacity",
           "native", "XmlNode.*", "arrays grow more often, with the same content"),
    Mutant("tools/xmlbinc/BlockWriter.cpp", "u32(0U - known->second);", "u32(1U - known->second);", "xmlbinc", "RoundTrip.*"),
    Mutant("tools/xmlbinc/XmlReader.cpp", "else if (attribute && isXmlSpace(raw[i]))", "else if (attribute && raw[i] == '\\n')",
           "xmlbinc", "RoundTrip.*"),
    Mutant("tools/xmlbinc/XmlReader.cpp", "if (!names.insert(name).second)", "if (names.count(name))", "xmlbinc", "XmlReader.*"),
    # settings
    Mutant("core/settings/SettingText.cpp", "matches < 2", "matches < 3", "native", "SettingText.*"),
    Mutant("core/settings/SettingText.cpp", "value.tag() == Variant::Tag::Float ? value.number() != 0.0 : value.toInteger() != 0",
           "value.toInteger() != 0", "native", "SettingText.*"),
    Mutant("core/settings/BSettings.cpp", "openBrackets_ == 0 || --openBrackets_ != 0", "--openBrackets_ != 0",
           "native", "BSettingsTest.*"),
    # locations
    Mutant("core/suppliers/UrlRecord.cpp", "if (semicolon == kAbsent && !isFile) semicolon = at;",
           "if (semicolon == kAbsent) semicolon = at;", "native", "UrlRecord.*"),
    Mutant("core/suppliers/UrlRecord.cpp", "dot != kAbsent && dot > name", "dot != kAbsent && dot >= name", "native", "UrlRecord.*"),
    Mutant("core/suppliers/UrlEscape.cpp", "first < 0xC2 || first > 0xF4", "first < 0xC0 || first > 0xF4", "native", "UrlRecord.*",
           "what C0 and C1 begin is below 0x80, and too long for it all the same"),
    Mutant("core/suppliers/UrlEscape.cpp", " || (point & 0xFFFFF800) == 0xD800", "", "native", "UrlRecord.*"),
    Mutant("core/suppliers/UrlResolve.cpp", "target.compare(pathStart, 2, L\"//\") == 0", "false", "native", "UrlRecord.*"),
    # decoders
    Mutant(DECODING + "LzwInputStream.cpp", "known_ + early_ >= (1u << width_)", "known_ + early_ > (1u << width_)",
           "native", "PackDecodeStream.*"),
    Mutant(DECODING + "LzwInputStream.cpp", "width_ < 12", "width_ < 13", "native", "PackDecodeStream.*"),
    Mutant(DECODING + "TextDecoders.cpp", "value = value * 85 + 84;", "value = value * 85;", "native", "PackDecodeStream.*"),
    Mutant(DECODING + "PackImageInputStream.cpp", "if (toLeft <= toAbove && toLeft <= toCorner)",
           "if (toLeft < toAbove && toLeft <= toCorner)", "native", "PackDecodeStream.*",
           "left and above are as near only when they are the same, or the corner lies between them and is nearer"),
    # under Wine: memory, streams, drawing, modules
    Mutant(BASELIB + "memory/SizeClassMemoryPool.cpp", "sizeBytes <= kLargestInClass", "sizeBytes < kLargestInClass",
           "core", "SizeClassPool.*:GetPool.*"),
    Mutant(BASELIB + "streams/ChunkInputStream.cpp", "(0x80u >> (page & 7))) != 0", "(0x80u >> (page & 3))) != 0",
           "core", "BChunkInputStream.*:StreamContract.*"),
    Mutant("core/suppliers/FileLocation.cpp", " || name.back() == L' '", "", "core", "FileLocation.*"),
    Mutant("graphics/path/PathClip.cpp", "if (distance2 >= 0) kept.push_back(to);", "if (distance2 > 0) kept.push_back(to);",
           "graphics", "*Clip*:*Drawing*"),
    Mutant("shell/modules/KClassFactoryLocal.cpp", "{L\"Hight\", -100}", "{L\"Hight\", 100}", "module", "PluginManager.*"),
]
