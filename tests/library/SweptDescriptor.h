// A descriptor for the operations that read one, and what writes blocks by hand.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlNode.h"
#include "core/xml/XmlbinReader.h"

#include <string>

namespace corvix::testing_support {

// Writes a block by hand.
struct Block {
  std::string bytes{"xmlbin\0\1\0\0", 10};
  void word(i32 value) { bytes.append(reinterpret_cast<const char*>(&value), sizeof value); }
  void string(std::wstring_view text) {
    word(static_cast<i32>(text.size()));
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
  }
  void element(std::wstring_view name, i32 children) {
    word(2);
    string(name);
    word(children);
  }
  void attribute(std::wstring_view name, std::wstring_view value) {
    word(3);
    string(name);
    string(value);
  }
};

// A descriptor with an interface and a setting.
inline std::string descriptor() {
  Block block;
  block.element(L"CorvixRC", 1);
  block.element(L"Plugin", 4);
  block.attribute(L"Name", L"Swept module");
  block.attribute(L"GUID", L"1, 2, 3, 4");
  block.element(L"Interface", 2);
  block.attribute(L"Name", L"Swept.Interface");
  block.attribute(L"GUID", L"1, 2, 3, 5");
  block.element(L"Setting", 4);
  block.attribute(L"Group", L"Swept");
  block.attribute(L"Item", L"One");
  block.attribute(L"Type", L"int");
  block.attribute(L"Data", L"4");
  return block.bytes;
}

// A format of documents, and files.
inline std::string formatDescriptor() {
  Block block;
  block.element(L"CorvixRC", 1);
  block.element(L"Plugin", 3);
  block.attribute(L"GUID", L"1, 2, 3, 4");
  block.element(L"Interface", 4);
  block.attribute(L"Name", L"DocFormat.Swept");
  block.attribute(L"GUID", L"1, 2, 3, 5");
  block.attribute(L"Pattern", L"*.txt");
  block.attribute(L"Access", L"rw");
  block.element(L"Interface", 2);
  block.attribute(L"Name", L"Supplier.file");
  block.attribute(L"GUID", L"1, 2, 3, 6");
  return block.bytes;
}

// A menu with an item.
inline std::string menuTemplate() {
  Block block;
  block.element(L"CorvixRC", 1);
  block.element(L"Menu", 2);
  block.attribute(L"Name", L"Menu.Swept");
  block.element(L"Item", 2);
  block.attribute(L"Action", L"Actions.Swept");
  block.attribute(L"Key", L"Ctrl+S");
  return block.bytes;
}

inline Ref<XMLNode> read(const std::string& block) {
  return Ref<XMLNode>::adopt(readXmlbin(block.data(), static_cast<u32>(block.size())));
}
inline Ref<XMLNode> readDescriptor() { return read(descriptor()); }

}  // namespace corvix::testing_support
