// The node tree of a descriptor. An element owns one reference on each child; a node knows its parent but does
// not keep it alive. Nodes are counted objects and belong to one thread at a time. Releasing a tree of any
// depth takes no more stack than releasing a leaf.
#pragma once

#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/text/WideString.h"

namespace corvix {

class XMLNodeNode;
class XmlArena;

enum class XmlNodeType : u32 { Text = 0, Comment = 1, Element = 2, Attribute = 3 };

class CORVIX_API XMLNode : public BSmartObject {
  CORVIX_IDENTITY(XMLNode, 0xB16F30D5, 0x4E7A8C21, 0x83D592B0, 0x74CA01EE, BSmartObject)

 public:
  // Copies the name; `parent` may be null and is only remembered.
  XMLNode(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name);
  ~XMLNode() override;

  XmlNodeType type() const noexcept { return type_; }
  XMLNodeNode* parent() const noexcept { return parent_; }

  // An element's or attribute's name; a text's or comment's text.
  WideString name() const { return nameView(); }

  // The same without a copy; good as long as the node lives.
  std::wstring_view nameView() const noexcept { return name_.view(); }

  bool release() override;

 protected:
  friend class XmlTreeBuilder;
  friend class XMLNodeNode;

  // Units that the node owns, or that lie in the arena of its tree.
  struct Text {
    const wchar_t* units = L"";
    u32 length = 0;
    std::wstring_view view() const noexcept { return {units, length}; }
  };
  Text own(std::wstring_view text);
  void disown(const Text& text) noexcept;

  // A node inside an arena: nothing is copied.
  XMLNode(XmlArena& arena, XMLNodeNode* parent, XmlNodeType type, Text name) noexcept;

  XmlArena* arena() const noexcept { return arena_; }

 private:
  void destroySelf();
  static void destroyTree(XMLNode* node);

  XmlNodeType type_;
  Text name_;
  XMLNodeNode* parent_;
  XmlArena* arena_ = nullptr;  // null: the node was made with `new`
  bool isElement_ = false;
};

class CORVIX_API XMLNodeText : public XMLNode {
  CORVIX_IDENTITY(XMLNodeText, 0x27E5B948, 0x4D13A6F0, 0xB98C44E1, 0x0F6723AC, XMLNode)

 public:
  using XMLNode::XMLNode;
};

class CORVIX_API XMLNodeComment : public XMLNode {
  CORVIX_IDENTITY(XMLNodeComment, 0xCC8172F4, 0x41B95D0E, 0x97A62E13, 0xDB40F586, XMLNode)

 public:
  using XMLNode::XMLNode;
};

class CORVIX_API XMLNodeParam : public XMLNode {
  CORVIX_IDENTITY(XMLNodeParam, 0x5A3E8D17, 0x48F2C69B, 0xA40D71E5, 0x36B9F02C, XMLNode)

 public:
  XMLNodeParam(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name, std::wstring_view value = {});
  ~XMLNodeParam() override;

  WideString value() const { return valueView(); }
  std::wstring_view valueView() const noexcept { return value_.view(); }

 private:
  friend class XmlTreeBuilder;
  XMLNodeParam(XmlArena& arena, XMLNodeNode* parent, Text name, Text value) noexcept
      : XMLNode(arena, parent, XmlNodeType::Attribute, name), value_(value) {}

  Text value_;
};

class CORVIX_API XMLNodeNode : public XMLNode {
  CORVIX_IDENTITY(XMLNodeNode, 0xE409C3B6, 0x4C5F1782, 0x8B3AD960, 0x1285F7ED, XMLNode)

 public:
  XMLNodeNode(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name);
  ~XMLNodeNode() override;

  // Attributes, elements, texts and comments alike, in document order.
  virtual i32 childCount() const noexcept { return count_; }

  // `index` is from 0; null outside the list. Adds no reference.
  virtual XMLNode* childAt(i32 index) const noexcept { return isInside(index) ? children_[index] : nullptr; }

  // Both add a reference. `index` is from 0 to the count; nothing happens for any other, nor for a null node.
  virtual void appendChild(XMLNode* node) { insertAt(node, count_); }
  virtual void insertChild(XMLNode* node, i32 index) { insertAt(node, index); }

  // Takes the child out and gives its reference to the caller; its parent stays what it was. Null outside the list.
  virtual XMLNode* removeChild(i32 index);

 private:
  friend class XMLNode;
  friend class XmlTreeBuilder;
  XMLNodeNode(XmlArena& arena, XMLNodeNode* parent, Text name) noexcept;

  bool isInside(i32 index) const noexcept { return index >= 0 && index < count_; }
  void insertAt(XMLNode* node, i32 index);
  void shiftFront(i32 places) noexcept;
  void makeRoom();
  void freeChildren() noexcept;

  XMLNode** children_ = nullptr;
  i32 count_ = 0;
  i32 capacity_ = 0;
  i32 before_ = 0;  // free places before the first child
  bool childrenInArena_ = false;
  XMLNodeNode* outer_ = nullptr;  // while the tree is being released: the element to go on with
};

}  // namespace corvix
