#include "shell/menus/KMenuItem_p.h"

#include "core/baselib/text/NumberText.h"

#include <algorithm>

namespace corvix {

namespace {

void takeText(const wchar_t*& into, const Attributes& attributes, std::wstring_view name) noexcept {
  if (!into) into = attributes.find(name);
}

void takeNumber(i32& into, bool& isThere, const Attributes& attributes, std::wstring_view name) noexcept {
  const wchar_t* const text = isThere ? nullptr : attributes.find(name);
  if (!text) return;
  into = text::readInteger(text);
  isThere = true;
}

}  // namespace

const wchar_t* KMenuItem::text() const noexcept {
  if (text_ && *text_) return text_;
  return *id_ ? id_ : action_;
}

IMenuItem* KMenuItem::childAt(i32 index) const noexcept {
  return index >= 0 && index < childCount() ? children_[static_cast<std::size_t>(index)].get() : nullptr;
}

void KMenuItem::take(const Attributes& attributes) {
  takeText(text_, attributes, L"Text");
  takeText(icon_, attributes, L"Icon");
  takeText(when_, attributes, L"When");
  takeNumber(order_, hasOrder_, attributes, L"Order");
  takeNumber(group_, hasGroup_, attributes, L"Group");
}

// Children came module by module, in the order of their templates.
void KMenuItem::arrange() {
  for (const Ref<KMenuItem>& child : children_) child->arrange();
  std::erase_if(children_, [](const Ref<KMenuItem>& child) { return *child->id_ && child->children_.empty(); });
  std::stable_sort(children_.begin(), children_.end(), [](const Ref<KMenuItem>& a, const Ref<KMenuItem>& b) {
    return a->order_ != b->order_ ? a->order_ < b->order_ : a->group_ < b->group_;
  });
}

}  // namespace corvix
