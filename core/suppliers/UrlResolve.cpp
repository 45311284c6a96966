#include "core/suppliers/UrlCharacters_p.h"

namespace corvix {

namespace {

// "remove_dot_segments" of RFC 3986: appends a path without its "." and ".." segments. Nothing before `to`'s present
// end is taken back.
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

// A path that is not empty, seen from a base. The base's drive stays where the path names none.
std::wstring mergedPath(const UrlRecord& base, std::wstring_view path) {
  const std::wstring_view basePath = base.part(UrlPart::Path);
  const std::wstring_view directory = base.part(UrlPart::Directory);
  const bool isRooted = path[0] == L'/';
  std::wstring merged;
  if (base.has(UrlPart::Drive) && url::driveLength(path)) {
    if (!isRooted && basePath[0] == L'/') merged = L'/';
    return merged.append(path);
  }
  if (base.has(UrlPart::Drive)) merged = basePath.substr(0, url::driveLength(basePath));
  if (!isRooted) {
    const bool needsSlash = base.has(UrlPart::Drive) || (base.has(UrlPart::Authority) && basePath.empty());
    if (directory.empty() && needsSlash) merged += L'/';
    merged.append(directory);
  }
  return merged.append(path);
}

// A path with neither scheme nor authority before it: where it did not begin with a slash, it does not afterwards, and
// a name with a colon that comes first would be read as a scheme.
void keepRelative(std::wstring& path, bool isAbsolute) {
  const bool hadAny = !path.empty();
  if (!isAbsolute) path.erase(0, path.find_first_not_of(L'/'));
  if (hadAny && path.empty()) path = L"./";
  if (UrlRecord(path).has(UrlPart::Scheme)) path.insert(0, L"./");
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

  if (!isElsewhere && path.empty()) {
    target += part(UrlPart::Path);
  } else {
    const std::wstring merged = isElsewhere ? std::wstring(path) : mergedPath(*this, path);
    // Dots never go up past a drive.
    const u32 drive = scheme.isScheme(L"file") ? url::driveLength(merged) : 0;
    target.append(merged, 0, drive);
    appendWithoutDots(target, std::wstring_view(merged).substr(drive));
  }
  // A path that begins with two slashes would be read as an authority.
  if (!authority.has(UrlPart::Authority) && target.compare(pathStart, 2, L"//") == 0) target.insert(pathStart, L"/.");
  if (pathStart == 0) {
    const std::wstring_view leading = path.empty() || path[0] != L'/' ? part(UrlPart::Path) : path;
    keepRelative(target, leading.substr(0, 1) == L"/");
  }
  if (query.has(UrlPart::Query)) (target += L'?') += query.part(UrlPart::Query);
  if (reference.has(UrlPart::Fragment)) (target += L'#') += reference.part(UrlPart::Fragment);
  return UrlRecord(target);
}

}  // namespace corvix
