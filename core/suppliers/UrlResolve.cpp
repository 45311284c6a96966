#include "core/suppliers/UrlCharacters_p.h"

namespace corvix {

namespace {

// Appends a path without its "." and ".." segments. Nothing before `to`'s present end is taken back.
void appendWithoutDots(std::wstring& to, std::wstring_view path) {
  const std::size_t floor = to.size();
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t slash = path[at] == L'/' ? 1 : 0;
    std::size_t end = path.find(L'/', at + slash);
    if (end == std::wstring_view::npos) end = path.size();
    const std::wstring_view segment = path.substr(at + slash, end - at - slash);
    const bool isUp = segment == L"..";
    if (isUp || segment == L".") {
      if (isUp && slash) {
        const std::size_t last = std::wstring_view(to).substr(floor).rfind(L'/');
        to.resize(last == std::wstring_view::npos ? floor : floor + last);
      }
      // Where the segment was the last one, its slash stays; before the first slash nothing does.
      if (slash && end == path.size()) to += L'/';
      at = slash ? end : end + 1;
    } else {
      to += path.substr(at, end - at);
      at = end;
    }
  }
}

}  // namespace

UrlRecord UrlRecord::resolve(std::wstring_view text) const {
  const UrlRecord reference(text);
  const bool isAbsolute = reference.has(UrlPart::Scheme);
  const bool isElsewhere = isAbsolute || reference.has(UrlPart::Authority);
  const std::wstring_view path = reference.part(UrlPart::Path);
  const UrlRecord& authority = isElsewhere ? reference : *this;
  const UrlRecord& query = isElsewhere || !path.empty() || reference.has(UrlPart::Query) ? reference : *this;

  std::wstring target;
  target.reserve(text_.length() + text.size() + 1);
  const UrlRecord& scheme = isAbsolute ? reference : *this;
  if (scheme.has(UrlPart::Scheme)) (target += scheme.part(UrlPart::Scheme)) += L':';
  if (authority.has(UrlPart::Authority)) (target += L"//") += authority.part(UrlPart::Authority);
  const std::size_t pathStart = target.size();

  if (isElsewhere) {
    appendWithoutDots(target, path);
  } else if (path.empty()) {
    target += part(UrlPart::Path);
  } else {
    if (has(UrlPart::Drive) && url::driveLength(path) == 0) {
      const u32 start = span(UrlPart::Path).start;
      target += text_.view().substr(start, span(UrlPart::Drive).end() - start);
    }
    if (path[0] == L'/') {
      appendWithoutDots(target, path);
    } else if (has(UrlPart::Authority) && part(UrlPart::Path).empty()) {
      appendWithoutDots(target, L"/" + std::wstring(path));
    } else {
      appendWithoutDots(target, std::wstring(part(UrlPart::Directory)).append(path));
    }
  }
  // A path that begins with two slashes would be read as an authority.
  if (!authority.has(UrlPart::Authority) && target.compare(pathStart, 2, L"//") == 0) target.insert(pathStart, L"/.");
  if (query.has(UrlPart::Query)) (target += L'?') += query.part(UrlPart::Query);
  if (reference.has(UrlPart::Fragment)) (target += L'#') += reference.part(UrlPart::Fragment);
  return UrlRecord(target);
}

}  // namespace corvix
