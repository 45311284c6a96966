#include "core/xml/XmlbinReader.h"

#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlArena_p.h"

#include <vector>

namespace corvix {

namespace {

constexpr char kMagic[6] = {'x', 'm', 'l', 'b', 'i', 'n'};
constexpr u32 kVersion = 0x100;
constexpr u32 kHeaderSize = 10;
constexpr u32 kSmallestNode = 8;  // a type and an empty string

}  // namespace

// Builds the tree of one block inside one arena. The block's bytes are copied there once and every text is a
// piece of that copy, so a back-reference costs nothing.
class XmlTreeBuilder {
 public:
  XmlTreeBuilder(const unsigned char* body, u32 sizeBytes) : left_(sizeBytes) {
    auto* const copy = static_cast<unsigned char*>(arena_->allocate(sizeBytes));
    std::memcpy(copy, body, sizeBytes);
    at_ = copy;
    strings_.reserve(32);
  }
  XmlTreeBuilder(const XmlTreeBuilder&) = delete;
  XmlTreeBuilder& operator=(const XmlTreeBuilder&) = delete;

  // An element is open until it has as many children as its array has room for: no stack is needed.
  Ref<XMLNode> build() {
    Ref<XMLNode> root = Ref<XMLNode>::adopt(readNode(nullptr));
    if (!root || !root->isElement_) return root;
    auto* open = static_cast<XMLNodeNode*>(root.get());
    while (open) {
      if (open->count_ == open->capacity_) {
        open = open->parent_;
        continue;
      }
      XMLNode* const child = readNode(open);
      if (!child) return nullptr;
      open->children_[open->count_++] = child;  // takes over the only reference
      if (child->isElement_) open = static_cast<XMLNodeNode*>(child);
    }
    return root;
  }

 private:
  // Each reads one thing, or fails and leaves the rest unread.
  bool readWord(u32& word) noexcept {
    if (left_ < sizeof word) return false;
    std::memcpy(&word, at_, sizeof word);
    advance(sizeof word);
    return true;
  }

  bool readString(XMLNode::Text& text) {
    u32 count = 0;
    if (!readWord(count)) return false;
    if (static_cast<i32>(count) < 0) {
      const u32 number = 0u - count;
      if (number > strings_.size()) return false;
      text = strings_[number - 1];
      return true;
    }
    if (count > left_ / sizeof(wchar_t)) return false;
    if (count) text = {reinterpret_cast<const wchar_t*>(at_), count};
    advance(count * static_cast<u32>(sizeof(wchar_t)));
    strings_.push_back(text);
    return true;
  }

  XMLNode* readNode(XMLNodeNode* parent) {
    u32 type = 0;
    XMLNode::Text name;
    if (!readWord(type) || !readString(name)) return nullptr;
    switch (static_cast<XmlNodeType>(type)) {
      case XmlNodeType::Text:
        return place<XMLNodeText>(parent, XmlNodeType::Text, name);
      case XmlNodeType::Comment:
        return place<XMLNodeComment>(parent, XmlNodeType::Comment, name);
      case XmlNodeType::Attribute: {
        XMLNode::Text value;
        return readString(value) ? place<XMLNodeParam>(parent, name, value) : nullptr;
      }
      case XmlNodeType::Element: {
        u32 count = 0;
        if (!readWord(count)) return nullptr;
        const i32 children = static_cast<i32>(count) < 1 ? 0 : static_cast<i32>(count);
        if (static_cast<u32>(children) > left_ / kSmallestNode) return nullptr;
        auto** const array = static_cast<XMLNode**>(arena_->allocate(static_cast<u32>(children) * sizeof(XMLNode*)));
        auto* const element = place<XMLNodeNode>(parent, name);
        element->children_ = array;
        element->capacity_ = children;
        element->childrenInArena_ = true;
        return element;
      }
    }
    return nullptr;
  }

  template <class Node, class... Arguments>
  Node* place(Arguments... arguments) {
    void* const where = arena_->allocate(sizeof(Node));
    arena_->nodeMade();
    return ::new (where) Node(*arena_, arguments...);
  }

  void advance(u32 bytes) noexcept {
    at_ += bytes;
    left_ -= bytes;
  }

  // The builder keeps the arena like a node of its.
  struct Hold {
    Hold() : arena(new XmlArena) { arena->nodeMade(); }
    ~Hold() { arena->nodeGone(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    XmlArena* operator->() const noexcept { return arena; }
    XmlArena& operator*() const noexcept { return *arena; }
    XmlArena* const arena;
  };

  Hold arena_;
  const unsigned char* at_;
  u32 left_;
  std::vector<XMLNode::Text, HeapAllocator<XMLNode::Text>> strings_;
};

XMLNode* readXmlbin(const void* block, u32 sizeBytes) noexcept {
  if (!block || sizeBytes < kHeaderSize + kSmallestNode) return nullptr;
  const auto* const bytes = static_cast<const unsigned char*>(block);
  u32 version = 0;
  std::memcpy(&version, bytes + sizeof kMagic, sizeof version);
  if (std::memcmp(bytes, kMagic, sizeof kMagic) != 0 || version != kVersion) return nullptr;
  try {
    return XmlTreeBuilder(bytes + kHeaderSize, sizeBytes - kHeaderSize).build().detach();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace corvix
