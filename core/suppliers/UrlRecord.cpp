#include "core/suppliers/UrlRecord.h"

#include "core/suppliers/UrlCharacters_p.h"

namespace corvix {

namespace {

constexpr bool isLetter(wchar_t c) noexcept { return (c | 0x20) >= L'a' && (c | 0x20) <= L'z'; }

// Where a component that is not there would come, and what it then brings along.
struct Place {
  UrlPart part;
  UrlPart neighbour;  // must be there
  bool isBehind;      // behind the neighbour, else before it
  const wchar_t* before;
  const wchar_t* after;
};

constexpr Place kPlaces[] = {
    {UrlPart::Authority, UrlPart::Path, false, L"//", L""},   {UrlPart::UserInfo, UrlPart::Host, false, L"", L"@"},
    {UrlPart::User, UrlPart::Host, false, L"", L"@"},         {UrlPart::Password, UrlPart::UserInfo, true, L":", L""},
    {UrlPart::Host, UrlPart::Path, false, L"//", L""},        {UrlPart::Port, UrlPart::Host, true, L":", L""},
    {UrlPart::Extension, UrlPart::FileName, true, L".", L""}, {UrlPart::Parameters, UrlPart::Path, true, L";", L""},
    {UrlPart::Query, UrlPart::Path, true, L"?", L""},
};

const Place* placeOf(UrlPart part) noexcept {
  for (const Place& place : kPlaces) {
    if (place.part == part) return &place;
  }
  return nullptr;
}

// What a component is a part of; itself where it is a part of the location.
constexpr UrlPart wholeOf(UrlPart part) noexcept {
  switch (part) {
    case UrlPart::UserInfo:
    case UrlPart::Host:
    case UrlPart::Port:
      return UrlPart::Authority;
    case UrlPart::User:
    case UrlPart::Password:
      return UrlPart::UserInfo;
    case UrlPart::Drive:
    case UrlPart::Directory:
    case UrlPart::FileName:
    case UrlPart::Parameters:
      return UrlPart::Path;
    case UrlPart::BaseName:
    case UrlPart::Extension:
      return UrlPart::FileName;
    default:
      return part;
  }
}

constexpr bool isWithin(UrlPart part, UrlPart whole) noexcept {
  while (part != whole && wholeOf(part) != part) part = wholeOf(part);
  return part == whole;
}

}  // namespace

void UrlRecord::parse(std::wstring_view text) {
  text_.assign(text);
  for (Span& each : spans_) each = Span();
  const wchar_t* const units = text_.c_str();  // a zero stands behind the last
  u32 at = 0;
  if (isLetter(units[0])) {
    u32 end = 1;
    while (url::mayStand(units[end], UrlPart::Scheme)) ++end;
    if (units[end] == L':') {
      place(UrlPart::Scheme, 0, end);
      at = end + 1;
    }
  }
  const u32 length = text_.length();
  if (units[at] == L'/' && units[at + 1] == L'/') {
    const u32 start = at += 2;
    while (at < length && units[at] != L'/' && units[at] != L'?' && units[at] != L'#') ++at;
    splitAuthority(start, at);
  }
  at = splitPath(at);
  if (units[at] == L'?' && at < length) {
    const u32 start = ++at;
    while (at < length && units[at] != L'#') ++at;
    place(UrlPart::Query, start, at);
  }
  if (at < length) place(UrlPart::Fragment, at + 1, length);
}

// The last "@" ends the user's part, whose first ":" begins the password; the last ":" behind an address's "]" begins
// the port.
void UrlRecord::splitAuthority(u32 start, u32 end) noexcept {
  place(UrlPart::Authority, start, end);
  const std::wstring_view authority = text_.view().substr(start, end - start);
  u32 host = start;
  if (const std::size_t at = authority.rfind(L'@'); at != std::wstring_view::npos) {
    host = start + static_cast<u32>(at) + 1;
    const std::size_t colon = authority.substr(0, at).find(L':');
    const u32 userEnd = colon == std::wstring_view::npos ? host - 1 : start + static_cast<u32>(colon);
    place(UrlPart::UserInfo, start, host - 1);
    place(UrlPart::User, start, userEnd);
    if (userEnd < host - 1) place(UrlPart::Password, userEnd + 1, host - 1);
  }
  const std::size_t last = text_.view().substr(host, end - host).find_last_of(L":]");
  const u32 hostEnd = last == std::wstring_view::npos ? end : host + static_cast<u32>(last);
  const bool hasPort = hostEnd < end && text_.c_str()[hostEnd] == L':';
  place(UrlPart::Host, host, hasPort ? hostEnd : end);
  if (hasPort) place(UrlPart::Port, hostEnd + 1, end);
}

// Returns where the path ends.
u32 UrlRecord::splitPath(u32 start) noexcept {
  const wchar_t* const units = text_.c_str();
  const u32 length = text_.length();
  const bool isFile = isScheme(L"file");
  u32 name = start;
  u32 dot = kAbsent;
  u32 semicolon = kAbsent;
  u32 at = start;
  for (; at < length; ++at) {
    const wchar_t c = units[at];
    if (c == L'/') {
      name = at + 1;
      dot = semicolon = kAbsent;
    } else if (c == L'.') {
      if (semicolon == kAbsent) dot = at;
    } else if (c == L';') {
      if (semicolon == kAbsent && !isFile) semicolon = at;
    } else if (c == L'?' || c == L'#') {
      break;
    }
  }
  place(UrlPart::Path, start, at);
  u32 directory = start;
  if (const u32 drive = isFile ? url::driveLength({units + start, at - start}) : 0) {
    directory = start + drive;
    if (name < directory) name = directory;
    place(UrlPart::Drive, directory - 2, directory);
  }
  const u32 nameEnd = semicolon == kAbsent ? at : semicolon;
  const bool hasExtension = dot != kAbsent && dot > name;
  place(UrlPart::Directory, directory, name);
  place(UrlPart::FileName, name, nameEnd);
  place(UrlPart::BaseName, name, hasExtension ? dot : nameEnd);
  if (hasExtension) place(UrlPart::Extension, dot + 1, nameEnd);
  if (semicolon != kAbsent) place(UrlPart::Parameters, semicolon + 1, at);
  return at;
}

bool UrlRecord::isScheme(std::wstring_view scheme) const noexcept {
  return url::equalsAnyCase(part(UrlPart::Scheme), scheme);
}

bool UrlRecord::set(UrlPart wanted, std::wstring_view plain) {
  const WideString value = escape(wanted, plain);
  std::wstring changed(text_.view());
  if (has(wanted)) {
    changed.replace(span(wanted).start, span(wanted).length, value.view());
  } else if (wanted == UrlPart::Scheme) {
    changed.insert(0, std::wstring(value.view()) + L':');
  } else if (wanted == UrlPart::Fragment) {
    changed.append(L"#").append(value.view());
  } else {
    const Place* const place = placeOf(wanted);
    if (!place || !has(place->neighbour)) return false;
    const Span& neighbour = span(place->neighbour);
    changed.insert(place->isBehind ? neighbour.end() : neighbour.start,
                   place->before + std::wstring(value.view()) + place->after);
  }
  UrlRecord record{std::wstring_view(changed)};
  if (!record.has(wanted) || record.part(wanted) != value.view() || !record.keepsOthers(*this, wanted)) return false;
  *this = std::move(record);
  return true;
}

// Whether all but one component, with those that it lies in and those that lie in it, are what they were.
bool UrlRecord::keepsOthers(const UrlRecord& before, UrlPart changed) const noexcept {
  for (u32 i = 0; i < kParts; ++i) {
    const auto each = static_cast<UrlPart>(i);
    if (isWithin(each, changed) || isWithin(changed, each)) continue;
    if (has(each) != before.has(each) || part(each) != before.part(each)) return false;
  }
  return true;
}

bool UrlRecord::remove(UrlPart wanted) {
  static constexpr Place kEnds[] = {{UrlPart::Scheme, UrlPart::Scheme, false, L"", L":"},
                                    {UrlPart::Fragment, UrlPart::Fragment, false, L"#", L""}};
  const Place* place = placeOf(wanted);
  if (wanted == UrlPart::Scheme) place = &kEnds[0];
  if (wanted == UrlPart::Fragment) place = &kEnds[1];
  if (!place || !has(wanted)) return false;
  if (wanted == UrlPart::Host) return remove(UrlPart::Authority);
  if (wanted == UrlPart::User) return remove(UrlPart::UserInfo);
  std::wstring changed(text_.view());
  const auto before = static_cast<u32>(std::wstring_view(place->before).size());
  const auto after = static_cast<u32>(std::wstring_view(place->after).size());
  changed.erase(span(wanted).start - before, before + span(wanted).length + after);
  UrlRecord record{std::wstring_view(changed)};
  if (record.has(wanted) || !record.keepsOthers(*this, wanted)) return false;
  *this = std::move(record);
  return true;
}

}  // namespace corvix
