#include "core/xml/XmlNode.h"

#include "core/xml/XmlArena_p.h"

#include <algorithm>

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
  freeChildren();
}

namespace {

constexpr i32 kFirstCapacity = 8;

void move(XMLNode** to, XMLNode* const* from, i32 count) noexcept {
  if (count > 0) std::memmove(to, from, static_cast<std::size_t>(count) * sizeof *to);
}

}  // namespace

// The shorter side moves; the place that becomes free at the front is used again.
XMLNode* XMLNodeNode::removeChild(i32 index) {
  if (!isInside(index)) return nullptr;
  XMLNode* const child = children_[index];
  --count_;
  if (index < count_ - index) {
    move(children_ + 1, children_, index);
    shiftFront(1);
  } else {
    move(children_ + index, children_ + index + 1, count_ - index);
  }
  return child;
}

void XMLNodeNode::insertAt(XMLNode* node, i32 index) {
  if (!node || index < 0 || index > count_) return;
  if (before_ > 0 && index < count_ - index) {
    shiftFront(-1);
    move(children_, children_ + 1, index);
  } else {
    if (count_ == capacity_) makeRoom();
    move(children_ + index + 1, children_ + index, count_ - index);
  }
  children_[index] = node;
  ++count_;
  node->addRef();
}

void XMLNodeNode::shiftFront(i32 places) noexcept {
  children_ += places;
  before_ += places;
  capacity_ -= places;
}

// At the end: where half of it is free at the front, the children go there.
void XMLNodeNode::makeRoom() {
  if (before_ > count_ / 2) {
    XMLNode** const from = children_;
    shiftFront(-before_);
    move(children_, from, count_);
    return;
  }
  const i32 capacity = std::max(kFirstCapacity, count_ * 2);
  auto** const grown = static_cast<XMLNode**>(heapAllocate(static_cast<std::size_t>(capacity) * sizeof *children_));
  move(grown, children_, count_);
  freeChildren();
  children_ = grown;
  capacity_ = capacity;
  before_ = 0;
  childrenInArena_ = false;
}

void XMLNodeNode::freeChildren() noexcept {
  if (!childrenInArena_ && children_) _sfree(children_ - before_);
}

}  // namespace corvix
