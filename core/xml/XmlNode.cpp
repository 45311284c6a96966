#include "core/xml/XmlNode.h"

#include "core/xml/XmlArena_p.h"

namespace corvix {

XMLNode::XMLNode(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name)
    : type_(type), name_(own(name)), parent_(parent) {}

XMLNode::XMLNode(XmlArena& arena, XMLNodeNode* parent, XmlNodeType type, Text name) noexcept
    : type_(type), name_(name), parent_(parent), arena_(&arena) {}

XMLNode::~XMLNode() { disown(name_); }

XMLNode::Text XMLNode::own(std::wstring_view text) {
  if (text.empty()) return {};
  auto* const units = static_cast<wchar_t*>(heapAllocate(text.size() * sizeof(wchar_t)));
  std::memcpy(units, text.data(), text.size() * sizeof(wchar_t));
  return {units, static_cast<u32>(text.size())};
}

void XMLNode::disown(const Text& text) noexcept {
  if (!arena_ && text.length) _sfree(const_cast<wchar_t*>(text.units));
}

bool XMLNode::release() {
  if (refCount() > 0) return BSmartObject::release();
  notifyDestroy();
  destroyTree(this);
  return true;
}

void XMLNode::destroySelf() {
  XmlArena* const arena = arena_;
  if (!arena) {
    delete this;
    return;
  }
  this->~XMLNode();
  arena->nodeGone();
}

// Listeners are told of an element before its children, and an element's memory goes after theirs.
void XMLNode::destroyTree(XMLNode* node) {
  XMLNodeNode* open = nullptr;  // the innermost element that is being emptied
  for (;;) {
    if (node->isElement_) {
      auto* const element = static_cast<XMLNodeNode*>(node);
      element->outer_ = open;
      element->capacity_ = 0;  // from here on: the index of the next child to release
      open = element;
    } else {
      node->destroySelf();
    }
    for (node = nullptr; !node;) {
      if (!open) return;
      if (open->capacity_ == open->count_) {
        XMLNodeNode* const done = open;
        open = done->outer_;
        done->count_ = 0;
        done->destroySelf();
        continue;
      }
      XMLNode* const child = open->children_[open->capacity_++];
      if (child->refCount() > 0) {
        child->release();
      } else {
        child->notifyDestroy();
        node = child;
      }
    }
  }
}

XMLNodeParam::XMLNodeParam(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name, std::wstring_view value)
    : XMLNode(parent, type, name), value_(own(value)) {}

XMLNodeParam::~XMLNodeParam() { disown(value_); }

XMLNodeNode::XMLNodeNode(XMLNodeNode* parent, XmlNodeType type, std::wstring_view name) : XMLNode(parent, type, name) {
  isElement_ = true;
}

XMLNodeNode::XMLNodeNode(XmlArena& arena, XMLNodeNode* parent, Text name) noexcept
    : XMLNode(arena, parent, XmlNodeType::Element, name) {
  isElement_ = true;
}

// Children are left only when the element was deleted rather than released.
XMLNodeNode::~XMLNodeNode() {
  for (i32 i = 0; i < count_; ++i) children_[i]->release();
  if (!childrenInArena_) _sfree(children_);
}

XMLNode* XMLNodeNode::removeChild(i32 index) {
  if (!isInside(index)) return nullptr;
  XMLNode* const child = children_[index];
  --count_;
  std::memmove(children_ + index, children_ + index + 1, static_cast<std::size_t>(count_ - index) * sizeof *children_);
  return child;
}

void XMLNodeNode::insertAt(XMLNode* node, i32 index) {
  if (!node || index < 0 || index > count_) return;
  if (count_ == capacity_) grow();
  std::memmove(children_ + index + 1, children_ + index, static_cast<std::size_t>(count_ - index) * sizeof *children_);
  children_[index] = node;
  ++count_;
  node->addRef();
}

void XMLNodeNode::grow() {
  constexpr i32 kFirstCapacity = 8;
  const i32 capacity = capacity_ ? capacity_ * 2 : kFirstCapacity;
  auto** const grown = static_cast<XMLNode**>(heapAllocate(static_cast<std::size_t>(capacity) * sizeof *children_));
  if (count_) std::memcpy(grown, children_, static_cast<std::size_t>(count_) * sizeof *children_);
  if (!childrenInArena_) _sfree(children_);
  children_ = grown;
  capacity_ = capacity;
  childrenInArena_ = false;
}

}  // namespace corvix
