#include "shell/modules/ProgramIni_p.h"

#include "core/baselib/system/Log.h"

#include <algorithm>
#include <cwchar>
#include <new>

#include <windows.h>

namespace corvix {

namespace {

bool isSame(std::wstring_view a, std::wstring_view b) noexcept {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
         CSTR_EQUAL;
}

std::wstring_view trimmed(std::wstring_view text) noexcept {
  constexpr std::wstring_view kBlanks = L" \t";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

template <class Visit>
void forEachPart(std::wstring_view text, wchar_t separator, Visit visit) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (const std::wstring_view part = trimmed(text.substr(0, end)); !part.empty()) visit(part);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// The lines "name=value" of a section.
template <class Visit>
void forEachLine(const std::wstring& path, const wchar_t* section, Visit visit) {
  std::wstring lines(ProgramIni::kLargestFile, 0);
  lines.resize(GetPrivateProfileSectionW(section, lines.data(), static_cast<DWORD>(lines.size()), path.c_str()));
  forEachPart(lines, L'\0', [&](std::wstring_view line) {
    const std::size_t equals = line.find(L'=');
    if (equals != line.npos && equals > 0) visit(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
  });
}

// 0 when there is none.
ULONGLONG sizeOf(const std::wstring& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return 0;
  return ULONGLONG{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

}  // namespace

ProgramIni ProgramIni::read(const std::wstring& path) try {
  ProgramIni ini;
  const ULONGLONG size = sizeOf(path);
  if (size > kLargestFile) sWriteLog(L"%s is larger than %u bytes and left out.\n", path.c_str(), kLargestFile);
  if (size == 0 || size > kLargestFile) return ini;
  forEachLine(path, L"Plugins", [&](std::wstring_view name, std::wstring_view value) {
    if (isSame(name, L"Folder")) ini.pluginFolder_ = value;
    if (isSame(name, L"SafeMode")) ini.isSafeMode_ = value == L"1" || isSame(value, L"true") || isSame(value, L"yes");
    if (isSame(name, L"Disabled"))
      forEachPart(value, L';', [&](std::wstring_view file) { ini.disabled_.emplace_back(file); });
  });
  forEachLine(path, L"Options", [&](std::wstring_view name, std::wstring_view value) {
    ini.options_.push_back({std::wstring(name), std::wstring(value)});
  });
  return ini;
} catch (const std::bad_alloc&) {
  sWriteLog("The program's INI file is left out: memory is short.\n");
  return {};
}

bool ProgramIni::disables(std::wstring_view path) const noexcept {
  if (disabled_.empty()) return false;
  const std::wstring_view name = path.substr(path.find_last_of(L"\\/") + 1);
  return std::any_of(disabled_.begin(), disabled_.end(), [&](const auto& one) { return isSame(one, name); });
}

const wchar_t* ProgramIni::option(const wchar_t* group, const wchar_t* item) const noexcept {
  if (!group || !item) return nullptr;
  const auto found = std::find_if(options_.begin(), options_.end(), [&](const Option& one) {
    const std::wstring_view name = one.name;
    const std::size_t dot = std::wcslen(group);
    return dot < name.size() && name[dot] == L'.' && isSame(name.substr(0, dot), group) &&
           isSame(name.substr(dot + 1), item);
  });
  return found == options_.end() ? nullptr : found->value.c_str();
}

}  // namespace corvix
