#include "shell/menus/MenuTemplates_p.h"

#include "core/baselib/system/Log.h"
#include "core/baselib/text/NumberText.h"
#include "shell/menus/KeyNames_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr std::wstring_view kKept[] = {L"Name", L"Id",    L"Action", L"Text", L"Icon",
                                       L"Key",  L"Order", L"Group",  L"When"};

std::wstring widened(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

// The name of the table as it is spelt there.
template <std::size_t count>
std::optional<std::wstring> findIn(const std::string_view (&names)[count], std::wstring_view name) {
  for (const std::string_view one : names) {
    if (std::wstring wide = widened(one); equalInAnyCase(wide, name)) return wide;
  }
  return std::nullopt;
}

std::optional<std::wstring> keyAlone(std::wstring_view name) {
  const auto upper = [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c; };
  const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
  const wchar_t first = name.empty() ? L' ' : upper(name[0]);
  if (name.size() == 1 && (isDigit(first) || (first >= L'A' && first <= L'Z'))) return std::wstring(1, first);
  const std::wstring_view digits = first == L'F' ? name.substr(1) : std::wstring_view();
  if (!digits.empty() && digits.size() <= 2 && digits[0] != L'0' &&
      std::all_of(digits.begin(), digits.end(), isDigit) && text::readInteger(digits) <= kFunctionKeys)
    return L'F' + std::wstring(digits);
  return findIn(kKeyNames, name);
}

bool hasLongText(const XMLNodeNode& element) {
  for (i32 i = 0; i < element.childCount(); ++i) {
    const XMLNode* const child = element.childAt(i);
    if (child->type() == XmlNodeType::Attribute &&
        static_cast<const XMLNodeParam*>(child)->valueView().size() > MenuTemplates::kLongestText)
      return true;
  }
  return false;
}

}  // namespace

std::optional<std::wstring> normalizedKey(std::wstring_view text) {
  bool has[std::size(kModifierNames)] = {};
  for (std::size_t plus; (plus = text.find(L'+')) != text.npos; text.remove_prefix(plus + 1)) {
    const std::optional<std::wstring> modifier = findIn(kModifierNames, text.substr(0, plus));
    if (!modifier) return std::nullopt;
    for (std::size_t i = 0; i < std::size(has); ++i) has[i] = has[i] || *modifier == widened(kModifierNames[i]);
  }
  const std::optional<std::wstring> key = keyAlone(text);
  if (!key) return std::nullopt;
  std::wstring all;
  for (std::size_t i = 0; i < std::size(has); ++i) {
    if (has[i]) all += widened(kModifierNames[i]) + L'+';
  }
  return all + *key;
}

// One module's elements, each with the attributes that are known here. No deeper than the limit, however deep the tree.
class MenuTemplates::Reading {
 public:
  explicit Reading(AttributeTable& table) : builder_(table) {}

  std::vector<Element> read(const XMLNodeNode& root) {
    forEachElement(root, [this](const XMLNodeNode& menu) {
      if (menu.nameView() != L"Menu" && menu.nameView() != L"Toolbar") return;
      if (const std::size_t at = take(menu, L"Name", kNone); at != kNone) readInside(menu, at, 1);
    });
    builder_.finish();
    return std::move(elements_);
  }

  u32 leftOut() const noexcept { return leftOut_; }

 private:
  template <class Visit>
  static void forEachElement(const XMLNodeNode& parent, Visit visit) {
    for (i32 i = 0; i < parent.childCount(); ++i) {
      if (parent.childAt(i)->type() == XmlNodeType::Element) visit(static_cast<const XMLNodeNode&>(*parent.childAt(i)));
    }
  }

  void readInside(const XMLNodeNode& parent, std::size_t at, int depth) {
    forEachElement(parent, [&](const XMLNodeNode& element) {
      if (element.nameView() == L"Item") {
        take(element, L"Action", at);
      } else if (element.nameView() == L"Popup") {
        const std::size_t inside = depth <= kDeepest ? take(element, L"Id", at) : (++leftOut_, kNone);
        if (inside != kNone) readInside(element, inside, depth + 1);
      }
    });
  }

  // Where it stands then; kNone when it is left out.
  std::size_t take(const XMLNodeNode& element, std::wstring_view needed, std::size_t parent) {
    bool hasNeeded = false;
    if (elements_.size() >= kMostElements || hasLongText(element)) return ++leftOut_, kNone;
    for (i32 i = 0; i < element.childCount(); ++i) {
      if (element.childAt(i)->type() != XmlNodeType::Attribute) continue;
      const auto& attribute = static_cast<const XMLNodeParam&>(*element.childAt(i));
      const std::wstring_view name = attribute.nameView(), value = attribute.valueView();
      if (std::find(std::begin(kKept), std::end(kKept), name) == std::end(kKept)) continue;
      if (name == needed) hasNeeded = !value.empty() && value[0] != 0;
      builder_.add(name, value);
    }
    const Attributes attributes = builder_.endElement();
    if (!hasNeeded) return ++leftOut_, kNone;
    elements_.push_back({parent, attributes});
    return elements_.size() - 1;
  }

  AttributeTable::Builder builder_;
  std::vector<Element> elements_;
  u32 leftOut_ = 0;
};

void MenuTemplates::add(const XMLNode* root, IPluginModule* module) {
  if (!root || root->type() != XmlNodeType::Element) return;
  Reading reading(texts_->emplace_front());
  const std::vector<Element> elements = reading.read(static_cast<const XMLNodeNode&>(*root));
  std::vector<KMenuItem*> entered;
  entered.reserve(elements.size());
  for (const Element& element : elements)
    entered.push_back(enter(element, element.parent == kNone ? nullptr : entered[element.parent], module));
  if (reading.leftOut()) {
    sWriteLog(
        L"Rows of menus left out of %s: %u (an Item needs an Action, a Popup an Id; sub-menus are at most %d deep, a "
        L"module has at most %u rows, a text at most %u letters)\n",
        module->path(), reading.leftOut(), kDeepest, static_cast<unsigned>(kMostElements),
        static_cast<unsigned>(kLongestText));
  }
}

KMenuItem* MenuTemplates::enter(const Element& element, KMenuItem* parent, IPluginModule* module) {
  const Attributes& attributes = element.attributes;
  const wchar_t* const action = parent ? attributes.find(L"Action") : nullptr;
  KMenuItem* item = nullptr;
  if (action) {
    item = &parent->add(make<KMenuItem>(texts_, L"", action, module));
  } else {
    item = subMenu(attributes.find(parent ? L"Id" : L"Name"), parent, module);
  }
  item->take(attributes);
  if (const wchar_t* const key = action ? attributes.find(L"Key") : nullptr) claim(key, *item);
  return item;
}

// The one of that name, wherever it came from.
KMenuItem* MenuTemplates::subMenu(const wchar_t* id, KMenuItem* parent, IPluginModule* module) {
  KMenuItem*& known = known_[{parent, id}];
  if (known) return known;
  auto made = make<KMenuItem>(texts_, id, L"", module);
  known = parent ? &parent->add(std::move(made)) : menus_.emplace_back(std::move(made)).get();
  return known;
}

void MenuTemplates::claim(const wchar_t* key, KMenuItem& item) {
  const std::optional<std::wstring> wanted = normalizedKey(key);
  if (!wanted) {
    if (++clashes_ <= kMostClashesSaid)
      sWriteLog(L"Menus: %s of %s has no key, as there is none %s\n", item.actionName(), item.module()->path(), key);
    return;
  }
  const KMenuItem& owner = *keys_.try_emplace(*wanted, &item).first->second;
  if (std::wstring_view(owner.actionName()) == item.actionName()) return item.setKey(*wanted);
  if (++clashes_ <= kMostClashesSaid) {
    sWriteLog(L"Menus: the key %s belongs to %s of %s, so %s of %s has none\n", wanted->c_str(), owner.actionName(),
              owner.module()->path(), item.actionName(), item.module()->path());
  }
}

Menus MenuTemplates::finish() {
  if (clashes_ > kMostClashesSaid) sWriteLog(L"Menus: %d more rows have no key\n", clashes_ - kMostClashesSaid);
  for (const Ref<KMenuItem>& menu : menus_) menu->arrange();
  return std::move(menus_);
}

}  // namespace corvix
