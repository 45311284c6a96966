// What the tests of xmlbinc share: the tool's steps in one call each, and blocks put together by hand.
#pragma once

#include "tools/xmlbinc/BlockReader.h"
#include "tools/xmlbinc/BlockWriter.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/ResourceFile.h"
#include "tools/xmlbinc/SourceText.h"
#include "tools/xmlbinc/XmlReader.h"
#include "tools/xmlbinc/XmlWriter.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

inline Tree treeOf(std::string_view xml) {
  SourceText source;
  source.load(xml);
  return readXml(source);
}

inline std::string compiled(std::string_view xml) { return writeBlock(treeOf(xml)); }

inline std::string resourceFor(std::string_view module, std::string_view xml, std::string_view menu = {}) {
  std::vector<NamedTree> templates;
  if (!menu.empty()) templates.push_back({u"MENUTEMPL", treeOf(menu)});
  return writeResourceFile(treeOf(xml), module, templates);
}

inline std::string decompiled(std::string_view block) { return writeXml(readBlock(block).tree); }

inline std::string at(const SourceText& source, std::size_t offset) {
  const Position position = source.locate(offset);
  return std::to_string(position.line) + ':' + std::to_string(position.column) + ": ";
}

/// "line:column: message", or empty if the text compiles.
inline std::string compileError(std::string_view xml) {
  SourceText source;
  try {
    source.load(xml);
    readXml(source);
  } catch (const InputError& error) {
    return at(source, error.offset()) + error.what();
  }
  return "";
}

/// "byte: message", or empty if the block can be written as XML.
inline std::string decompileError(std::string_view block) {
  try {
    decompiled(block);
  } catch (const InputError& error) {
    return std::to_string(error.offset()) + ": " + error.what();
  }
  return "";
}

/// A block, piece by piece, as its readers see it.
class Bytes {
 public:
  Bytes& u32(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) bytes_ += static_cast<char>(value >> shift & 0xFF);
    return *this;
  }
  Bytes& string(std::u16string_view text) {
    u32(static_cast<std::uint32_t>(text.size()));
    for (const char16_t unit : text) {
      bytes_ += static_cast<char>(unit & 0xFF);
      bytes_ += static_cast<char>(unit >> 8);
    }
    return *this;
  }
  Bytes& back(std::uint32_t number) { return u32(~number + 1); }
  Bytes& text(std::u16string_view text) { return u32(0).string(text); }
  Bytes& comment(std::u16string_view text) { return u32(1).string(text); }
  Bytes& element(std::u16string_view name, std::uint32_t count) { return u32(2).string(name).u32(count); }
  Bytes& attribute(std::u16string_view name, std::u16string_view value) { return u32(3).string(name).string(value); }
  std::string bytes() const { return bytes_; }

 private:
  std::string bytes_{"xmlbin\0\1\0\0", 10};
};

}  // namespace corvix::xmlbinc
