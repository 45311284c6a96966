#include "graphics/fonts/FontSubstitutors_p.h"

#include "core/baselib/system/RegistryKey_p.h"
#include "graphics/fonts/FakeFonts_p.h"
#include "graphics/fonts/FontNames_p.h"
#include "graphics/fonts/FontSettings_p.h"
#include "graphics/fonts/SystemFont_p.h"

#include <cwchar>

namespace corvix {

namespace {

constexpr wchar_t kSubstitutesKey[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes";
constexpr std::size_t kMostRemembered = 0x4000;

// What stands in the table, without the character set that may follow behind a comma.
WideString substituteFor(const std::wstring& family) {
  const RegistryKey key = RegistryKey::open(HKEY_LOCAL_MACHINE, kSubstitutesKey, KEY_QUERY_VALUE);
  const WideString entry = key && !family.empty() ? key.text(family.c_str()) : WideString();
  return entry.view().substr(0, entry.view().find(L','));
}

WideString dialogFamily() {
  LOGFONTW dialogs{};
  GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof dialogs, &dialogs);
  return WideString(dialogs.lfFaceName);
}

struct Wanted {
  std::wstring raw;
  FontName name;
  u32 traits;

  explicit Wanted(const FontRequest& request)
      : raw(request.family ? request.family : L""), name(parseFontName(raw)), traits(request.traits) {
    if (request.weight) name.weight = request.weight;
    name.italic = name.italic || request.italic;
    if (const KnownFamily* const known = findKnownFamily(name.family)) traits |= known->traits;
  }

  SystemFont::Face face(WideString family) const { return {std::move(family), name.weight, name.italic}; }

  // Null unless the family is one, and of a fixed pitch where that is asked for.
  Ref<IFMFont> fontOf(WideString family, bool isSubstitute) const {
    if (family.empty()) return {};
    Ref<SystemFont> font = make<SystemFont>(face(std::move(family)), isSubstitute);
    const bool isWrongPitch = (traits & font_trait::kFixed) && isSubstitute && !font->metrics().isFixedPitch;
    return isWrongPitch ? Ref<IFMFont>() : Ref<IFMFont>(std::move(font));
  }
};

}  // namespace

IFMFont* SystemFontSubstitutor::createFont(const wchar_t* family) {
  FontRequest request;
  request.family = family;
  return createFontFor(request);
}

IFMFont* SystemFontSubstitutor::createFontFor(const FontRequest& request) {
  const Wanted wanted(request);
  for (const std::wstring& family : {wanted.raw, wanted.name.family}) {
    if (Ref<IFMFont> font = wanted.fontOf(installedFamily(family), false)) return font.detach();
  }
  if (Ref<IFMFont> font = wanted.fontOf(familyWritten(wanted.name.family), false)) return font.detach();
  for (const std::wstring& family : {wanted.raw, wanted.name.family}) {
    if (Ref<IFMFont> font = wanted.fontOf(installedFamily(substituteFor(family)), true)) return font.detach();
  }
  return nullptr;
}

WideString SystemFontSubstitutor::familyWritten(std::wstring_view name) {
  const SCriticalSection::Lock lock(lock_);
  if (families_.empty()) families_ = installedFamilies();
  for (const InstalledFamily& family : families_) {
    if (isSameFamily(family.name.view(), name)) return family.name;
  }
  return {};
}

i32 SystemFontSubstitutor::familyWith(u32 codePoint, bool isFixed) {
  const SCriticalSection::Lock lock(lock_);
  const u32 key = codePoint << 1 | u32{isFixed};
  const auto known = familyOf_.find(key);
  if (known != familyOf_.end()) return known->second;
  if (families_.empty()) families_ = installedFamilies();
  const auto has = [&](i32 index) {
    const SystemFont::Face face = {families_[static_cast<std::size_t>(index)].name};
    return make<SystemFont>(face, true)->glyphOf(codePoint) != 0;
  };
  const auto firstOf = [&](bool isWantedFixed) {
    for (i32 i = 0; i < static_cast<i32>(families_.size()); ++i) {
      if (families_[static_cast<std::size_t>(i)].isFixed == isWantedFixed && has(i)) return i;
    }
    return kNone;
  };
  i32& last = last_[isFixed];
  i32 found = last != kNone && has(last) ? last : firstOf(isFixed);
  if (found != kNone) last = found;
  if (found == kNone) found = firstOf(!isFixed);
  if (familyOf_.size() >= kMostRemembered) familyOf_.clear();
  familyOf_.emplace(key, found);
  return found;
}

IFMFont* SystemFontSubstitutor::fontWithGlyph(u32 codePoint, IFMFont* like) {
  auto* const source = corvix::query<IFMFontSource>(like);
  const i32 index = familyWith(codePoint, source && source->metrics().isFixedPitch);
  if (index == kNone) return nullptr;
  SystemFont::Face face;
  face.family = families_[static_cast<std::size_t>(index)].name;
  if (const auto* const system = corvix::query<SystemFont>(like)) {
    face.weight = system->face().weight;
    face.italic = system->face().italic;
  }
  return make<SystemFont>(std::move(face), true).detach();
}

IFMFont* FakeSubstitutor::createFont(const wchar_t* family) {
  FontRequest request;
  request.family = family;
  return createFontFor(request);
}

IFMFont* FakeSubstitutor::createFontFor(const FontRequest& request) {
  const Wanted wanted(request);
  const KnownFamily* known = findKnownFamily(wanted.name.family);
  if (known && (wanted.traits & ~known->traits & font_trait::kFixed)) known = nullptr;  // like none of these
  const bool isOfAKind = wanted.traits & (font_trait::kFixed | font_trait::kSerif);
  WideString family = known ? firstInstalled(known->families) : WideString();
  if (family.empty() && isOfAKind) family = firstInstalled(familiesLike(wanted.traits));
  if (family.empty() && (wanted.traits & font_trait::kFixed)) family = anyFixedFamily();
  if (family.empty()) family = installedFamily(dialogFamily());
  if (family.empty()) family = firstInstalled(familiesLike(0));
  if (family.empty()) family = dialogFamily();
  const bool isSubstitute = family.view() != wanted.raw;
  Ref<IFMFont> font = make<SystemFont>(wanted.face(std::move(family)), isSubstitute);
  if (!request.widths || !fontSettings().substitutes(request.kind)) return font.detach();
  return make<StretchedFont>(std::move(font), request).detach();
}

IFMFont* FakeSubstitutor::fontWithGlyph(u32, IFMFont*) { return make<BoxFont>().detach(); }

}  // namespace corvix
