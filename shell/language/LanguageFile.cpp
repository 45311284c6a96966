#include "shell/language/LanguageFile_p.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/Log.h"
#include "core/xml/XmlbinReader.h"
#include "shell/modules/ModuleFile_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr wchar_t kResource[] = L"LANGUAGE";

std::wstring_view valueOf(const XMLNodeNode& element, std::wstring_view name) {
  for (i32 i = 0; i < element.childCount(); ++i) {
    const XMLNode* const child = element.childAt(i);
    if (child->type() == XmlNodeType::Attribute && child->nameView() == name)
      return static_cast<const XMLNodeParam*>(child)->valueView();
  }
  return {};
}

template <class Visit>
void forEachElement(const XMLNodeNode& parent, std::wstring_view name, Visit visit) {
  for (i32 i = 0; i < parent.childCount(); ++i) {
    const XMLNode* const child = parent.childAt(i);
    if (child->type() == XmlNodeType::Element && child->nameView() == name)
      visit(static_cast<const XMLNodeNode&>(*child));
  }
}

}  // namespace

std::wstring LanguageFile::keyOf(std::wstring_view context, std::wstring_view source) {
  std::wstring key;
  key.reserve(context.size() + source.size() + 1);
  return key.append(context).append(1, L'\4').append(source);
}

bool LanguageFile::read(const std::wstring& path) {
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
  const DescriptorBytes found = readTemplateResource(path, nullptr, kResource);
  const auto root = Ref<XMLNode>::adopt(readXmlbin(found.bytes.data(), static_cast<u32>(found.bytes.size())));
  if (root) return take(root.get(), path);
  const wchar_t* why = found.bytes.empty() ? found.reason.c_str() : L"Its texts are malformed.";
  sWriteLog(L"Language file %s is left out: %s\n", path.c_str(), *why ? why : L"It has no texts.");
  return false;
}

bool LanguageFile::take(const XMLNode* root, const std::wstring& path) {
  std::size_t leftOut = 0;
  if (root && root->type() == XmlNodeType::Element) {
    forEachElement(static_cast<const XMLNodeNode&>(*root), L"Language", [&](const XMLNodeNode& language) {
      if (code_.empty()) code_ = valueOf(language, L"Code");
      if (name_.empty()) name_ = valueOf(language, L"Name").substr(0, kLongestText);
      forEachElement(language, L"Text", [&](const XMLNodeNode& text) {
        const std::wstring_view in = valueOf(text, L"In"), from = valueOf(text, L"From"), to = valueOf(text, L"To");
        const bool isTaken = !from.empty() && !to.empty() && to.find(L'\0') == to.npos &&
                             std::max({in.size(), from.size(), to.size()}) <= kLongestText &&
                             texts_.size() < kMostTexts;
        if (isTaken) {
          texts_.try_emplace(keyOf(in, from), to);
        } else {
          ++leftOut;
        }
      });
    });
  }
  if (leftOut) {
    sWriteLog(L"Texts left out of %s: %u (each needs From and To, of at most %u letters; at most %u of them)\n",
              path.c_str(), static_cast<unsigned>(leftOut), static_cast<unsigned>(kLongestText),
              static_cast<unsigned>(kMostTexts));
  }
  if (texts_.empty()) sWriteLog(L"Language file %s is left out: It has no texts.\n", path.c_str());
  return !texts_.empty();
}

const wchar_t* LanguageFile::find(std::wstring_view context, std::wstring_view source) const {
  if (texts_.empty()) return nullptr;
  const auto found = texts_.find(keyOf(context, source));
  return found == texts_.end() ? nullptr : found->second.c_str();
}

}  // namespace corvix
