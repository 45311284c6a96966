#include "tools/xmlbinc/ResourceFile.h"

#include "tools/xmlbinc/BlockWriter.h"
#include "tools/xmlbinc/ByteWriter.h"
#include "tools/xmlbinc/DescriptorCheck.h"
#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <array>
#include <vector>

namespace corvix::xmlbinc {

namespace {

constexpr std::uint32_t kEnglish = 0x0409;
constexpr std::uint32_t kUnicode = 0x04B0;
constexpr std::size_t kLongestText = 1000;  // lengths have 16 bits

const std::u16string kDescriptorName = u"PLUGININFO";

/// The string table of version information says both as text.
const std::u16string kEnglishInUnicode = u"040904B0";

void name(ByteWriter& bytes, std::u16string_view text) {
  bytes.units(text);
  bytes.u16(0);
}

void number(ByteWriter& bytes, std::uint32_t value) {
  bytes.u16(0xFFFF);
  bytes.u16(value);
}

/// `names` holds the entry's type and name as they stand in the file.
void entry(ByteWriter& bytes, const std::string& names, const std::string& data) {
  bytes.pad();
  ByteWriter header;
  header.raw(names);
  header.pad();
  header.u32(0);       // the data's version
  header.u16(0x0030);  // movable, pure
  header.u16(kEnglish);
  header.u32(0);  // version and characteristics: free for the author
  header.u32(0);
  bytes.u32(static_cast<std::uint32_t>(data.size()));
  bytes.u32(static_cast<std::uint32_t>(8 + header.size()));
  bytes.raw(header.take());
  bytes.raw(data);
  bytes.pad();
}

/// The blocks of version information, each with its length before it and other blocks inside it.
class VersionWriter {
 public:
  template <class Inside>
  void block(std::u16string_view key, Inside inside) {
    const std::size_t start = open(key, 0, 0);
    inside();
    close(start);
  }

  void text(std::u16string_view key, std::u16string_view value) {
    if (value.empty()) return;
    value = value.substr(0, kLongestText);
    const std::size_t start = open(key, value.size() + 1, 1);
    name(bytes_, value);
    close(start);
  }

  void numbers(std::u16string_view key, const std::vector<std::uint16_t>& values) {
    const std::size_t start = open(key, values.size() * 2, 0);
    for (const std::uint16_t value : values) bytes_.u16(value);
    close(start);
  }

  /// The outermost block; its value is the fixed part.
  template <class Inside>
  std::string run(const std::array<std::uint16_t, 4>& version, Inside inside) {
    constexpr std::uint32_t kFixedSize = 13 * 4, kWindows = 4, kLibrary = 2;
    const std::size_t start = open(u"VS_VERSION_INFO", kFixedSize, 0);
    bytes_.u32(0xFEEF04BD);
    bytes_.u32(0x00010000);
    for (int times = 0; times < 2; ++times) {  // of the file, of the product
      bytes_.u32(static_cast<std::uint32_t>(version[0]) << 16 | version[1]);
      bytes_.u32(static_cast<std::uint32_t>(version[2]) << 16 | version[3]);
    }
    for (const std::uint32_t word : {0x3FU, 0U, kWindows, kLibrary, 0U, 0U, 0U}) bytes_.u32(word);
    inside();
    close(start);
    return bytes_.take();
  }

 private:
  /// `valueSize` counts bytes, or units of a text.
  std::size_t open(std::u16string_view key, std::size_t valueSize, std::uint32_t isText) {
    bytes_.pad();
    const std::size_t start = bytes_.size();
    bytes_.u16(0);
    bytes_.u16(static_cast<std::uint32_t>(valueSize));
    bytes_.u16(isText);
    name(bytes_, key);
    bytes_.pad();
    return start;
  }

  void close(std::size_t start) { bytes_.patch16(start, bytes_.size() - start); }

  ByteWriter bytes_;
};

/// An attribute of the first Plugin or Language element; empty if there is none.
std::u16string attributeOf(const Tree& tree, std::u16string_view attribute) {
  const auto plugin = std::find_if(tree.nodes.begin(), tree.nodes.end(), [&](const Node& node) {
    return node.type == NodeType::Element && (tree.name(node) == u"Plugin" || tree.name(node) == u"Language");
  });
  if (plugin == tree.nodes.end()) return {};
  for (auto node = plugin + 1; node != tree.nodes.end() && node->type == NodeType::Attribute; ++node) {
    if (tree.name(*node) == attribute) return tree.value(*node);
  }
  return {};
}

/// "1.2.3" as numbers; what is missing or no number counts as 0.
std::array<std::uint16_t, 4> versionNumbers(std::u16string_view text) {
  std::array<std::uint16_t, 4> numbers{};
  std::size_t at = 0;
  for (const char16_t unit : text) {
    if (unit == u'.') {
      if (++at == numbers.size()) break;
    } else if (unit >= u'0' && unit <= u'9') {
      numbers[at] = static_cast<std::uint16_t>(numbers[at] * 10 + (unit - u'0'));
    } else {
      break;
    }
  }
  return numbers;
}

std::string versionInformation(const Tree& tree, std::string_view module) {
  const std::u16string version = attributeOf(tree, u"Version");
  const std::u16string file = toUtf16(module);
  VersionWriter writer;
  return writer.run(versionNumbers(version), [&] {
    writer.block(u"StringFileInfo", [&] {
      writer.block(kEnglishInUnicode, [&] {
        writer.text(u"CompanyName", attributeOf(tree, u"Manufacturer"));
        writer.text(u"FileDescription", attributeOf(tree, u"Name"));
        writer.text(u"FileVersion", version);
        writer.text(u"InternalName", file.substr(0, file.rfind(u'.')));
        writer.text(u"OriginalFilename", file);
        writer.text(u"ProductName", attributeOf(tree, u"Name"));
        writer.text(u"ProductVersion", version);
      });
    });
    writer.block(u"VarFileInfo", [&] { writer.numbers(u"Translation", {kEnglish, kUnicode}); });
  });
}

}  // namespace

const std::string_view kResourceFileStart{"\0\0\0\0\x20\0\0\0\xFF\xFF\0\0\xFF\xFF\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0",
                                          32};

std::string writeResourceFile(const Tree& tree, std::string_view module, std::span<const NamedTree> templates) {
  constexpr std::uint32_t kVersionType = 16, kOnlyOne = 1;
  ByteWriter bytes(kResourceFileStart);
  const auto block = [&](std::u16string_view resource, const Tree& content) {
    ByteWriter names;
    name(names, kDescriptorName);
    name(names, resource);
    entry(bytes, names.take(), writeBlock(content));
  };
  block(toUtf16(formOf(tree).resource), tree);
  for (const NamedTree& one : templates) block(one.name, one.tree);
  ByteWriter numbers;
  number(numbers, kVersionType);
  number(numbers, kOnlyOne);
  entry(bytes, numbers.take(), versionInformation(tree, module));
  return bytes.take();
}

}  // namespace corvix::xmlbinc
