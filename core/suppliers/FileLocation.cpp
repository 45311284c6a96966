#include "core/suppliers/FileLocation.h"

#include "core/suppliers/UrlCharacters_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr std::size_t kLongestPath = 32767;     // of the system
constexpr std::size_t kLongestPlainPath = 247;  // longer ones need a mark

constexpr std::wstring_view kDevices[] = {L"con", L"prn", L"aux", L"nul", L"conin$", L"conout$", L"clock$"};

// Devices are devices in every folder and with every extension.
bool isDevice(std::wstring_view name) noexcept {
  name = name.substr(0, name.find(L'.'));
  name = name.substr(0, name.find_last_not_of(L' ') + 1);
  if (name.size() == 4 &&
      (url::equalsAnyCase(name.substr(0, 3), L"com") || url::equalsAnyCase(name.substr(0, 3), L"lpt"))) {
    return std::wstring_view(L"0123456789\u00B9\u00B2\u00B3").find(name[3]) != std::wstring_view::npos;
  }
  return std::any_of(std::begin(kDevices), std::end(kDevices),
                     [name](std::wstring_view device) { return url::equalsAnyCase(name, device); });
}

// A name that the system takes as it stands: it would drop dots and blanks at the end.
bool isFileName(std::wstring_view name) noexcept {
  if (name.empty() || name.back() == L'.' || name.back() == L' ' || isDevice(name)) return false;
  return std::none_of(name.begin(), name.end(), [](wchar_t c) {
    return c < 32 || std::wstring_view(L"<>:\"/\\|?*").find(c) != std::wstring_view::npos;
  });
}

bool isServerName(std::wstring_view name) noexcept {
  return !name.empty() && name.front() != L'.' && std::all_of(name.begin(), name.end(), [](wchar_t c) {
    return c > 127 || url::mayStand(c, UrlPart::BaseName);
  }) && isFileName(name);
}

// Appends the names of a path, each behind a separator; false if one is none.
bool appendNames(std::wstring& path, std::wstring_view escaped) {
  while (!escaped.empty()) {
    const std::size_t end = std::min(escaped.find(L'/'), escaped.size());
    const WideString name = UrlRecord::unescape(escaped.substr(0, end));
    if (!isFileName(name)) return false;
    if (!path.empty() && path.back() != L'\\') path += L'\\';
    path += name.view();
    escaped.remove_prefix(std::min(end + 1, escaped.size()));
  }
  return path.size() <= kLongestPath;
}

// The server's name at the start of a path in the spellings "file:////server" and "file://///server"; taken off the
// path then. Empty for any other.
WideString takeServer(std::wstring_view& path) {
  const std::size_t slashes = std::min(path.find_first_not_of(L'/'), path.size());
  if (slashes != 2 && slashes != 3) return {};
  const std::size_t end = std::min(path.find(L'/', slashes), path.size());
  WideString server = UrlRecord::unescape(path.substr(slashes, end - slashes));
  path.remove_prefix(end);
  return server;
}

constexpr std::wstring_view kMark = L"//?/";  // of paths that the system takes as they stand; slashes are turned

// The plain spelling of a path with the mark; empty if there is none.
std::wstring withoutMark(std::wstring_view text) {
  if (url::equalsAnyCase(text.substr(0, 8), L"//?/unc/")) return L"//" + std::wstring(text.substr(8));
  text.remove_prefix(kMark.size());
  return url::driveLength(text) == 2 ? std::wstring(text) : std::wstring();
}

// Behind the two slashes of a share's path: a server and a share, but no device.
bool isShare(std::wstring_view names) noexcept {
  const std::size_t slash = names.find(L'/');
  if (slash == 0 || slash == std::wstring_view::npos || slash + 1 == names.size()) return false;
  if (names[slash + 1] == L'/' || names[0] == L'.' || names[0] == L'?') return false;
  // The rest would be read as a user or a port.
  return names.substr(0, slash).find_first_of(L"@:") == std::wstring_view::npos;
}

bool namesDevice(std::wstring_view path) noexcept {
  for (std::size_t end = 0; end < path.size(); path.remove_prefix(std::min(end + 1, path.size()))) {
    end = std::min(path.find(L'/'), path.size());
    if (isDevice(path.substr(0, end))) return true;
  }
  return false;
}

}  // namespace

WideString pathOfLocation(const UrlRecord& location) {
  if (!location.isScheme(L"file") || location.has(UrlPart::UserInfo) || location.has(UrlPart::Port)) return {};
  std::wstring_view rest = location.part(UrlPart::Path);
  WideString server = location.value(UrlPart::Host);
  if (server.empty() && location.has(UrlPart::Authority)) server = takeServer(rest);
  const bool isHere = server.empty() || url::equalsAnyCase(server, L"localhost");
  std::wstring path;
  const wchar_t* longMark = L"\\\\?\\";
  if (!isHere) {
    if (!isServerName(server) || rest.size() < 2) return {};
    const WideString share = UrlRecord::unescape(rest.substr(1, rest.find(L'/', 1) - 1));
    if (url::equalsAnyCase(share, L"pipe") || url::equalsAnyCase(share, L"mailslot")) return {};
    path = L"\\\\" + std::wstring(server.view());
    rest.remove_prefix(1);
    longMark = L"\\\\?\\UNC";
  } else if (location.has(UrlPart::Drive)) {
    path = {location.part(UrlPart::Drive)[0], L':', L'\\'};
    rest.remove_prefix(url::driveLength(rest));
    rest.remove_prefix(rest.empty() ? 0 : 1);
  } else {
    longMark = nullptr;
    if (!rest.empty() && rest[0] == L'/') {
      path = L'\\';
      rest.remove_prefix(1);
    }
    if (rest.empty()) return {};
  }
  if (!appendNames(path, rest)) return {};
  if (longMark && path.size() > kLongestPlainPath) path = longMark + path.substr(isHere ? 0 : 1);
  return path;
}

WideString locationOfPath(std::wstring_view path) {
  std::wstring text(path);
  std::replace(text.begin(), text.end(), L'\\', L'/');
  const bool isMarked = text.compare(0, kMark.size(), kMark) == 0;
  // Behind the mark a slash is no separator.
  if (isMarked && path.find(L'/') != std::wstring_view::npos) return {};
  if (isMarked) text = withoutMark(text);
  std::wstring location = L"file:";
  if (url::driveLength(text) == 2 && text.size() > 2) {
    location.append(L"///").append(text, 0, 2);
    text.erase(0, 2);
  } else if (text.compare(0, 2, L"//") != 0 || !isShare(std::wstring_view(text).substr(2))) {
    return {};
  }
  url::appendEscaped(location, text, UrlPart::Directory, url::Escapes::Escape);
  if (namesDevice(text)) return {};
  // Behind the mark are names that have no location: the system would take them for others without it.
  if (isMarked && pathOfLocation(UrlRecord(location)).empty()) return {};
  return location;
}

bool isPath(std::wstring_view text) noexcept {
  std::size_t end = 0;
  while (end < text.size() && url::mayStand(text[end], UrlPart::Scheme)) ++end;
  return end < 2 || end == text.size() || text[end] != L':';
}

}  // namespace corvix
