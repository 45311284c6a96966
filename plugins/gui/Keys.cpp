#include "plugins/gui/Keys.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace corvix::gui {

namespace {

constexpr struct {
  std::wstring_view name;
  WORD key;
} kNames[] = {
    {L"Backspace", VK_BACK}, {L"Comma", VK_OEM_COMMA}, {L"Del", VK_DELETE},        {L"Down", VK_DOWN},
    {L"End", VK_END},        {L"Enter", VK_RETURN},    {L"Esc", VK_ESCAPE},        {L"Home", VK_HOME},
    {L"Ins", VK_INSERT},     {L"Left", VK_LEFT},       {L"Minus", VK_OEM_MINUS},   {L"PgDn", VK_NEXT},
    {L"PgUp", VK_PRIOR},     {L"Plus", VK_OEM_PLUS},   {L"Period", VK_OEM_PERIOD}, {L"Right", VK_RIGHT},
    {L"Slash", VK_OEM_2},    {L"Space", VK_SPACE},     {L"Tab", VK_TAB},           {L"Up", VK_UP},
};

constexpr struct {
  std::wstring_view name;
  Stroke bit;
  int key;
} kModifiers[] = {{L"Ctrl+", kControl, VK_CONTROL}, {L"Alt+", kAlt, VK_MENU}, {L"Shift+", kShift, VK_SHIFT}};

constexpr struct {
  WORD pad, key;
} kPad[] = {{VK_ADD, VK_OEM_PLUS}, {VK_SUBTRACT, VK_OEM_MINUS}, {VK_DIVIDE, VK_OEM_2}, {VK_DECIMAL, VK_OEM_PERIOD}};

WORD keyNamed(std::wstring_view name) {
  for (const auto& row : kNames) {
    if (row.name == name) return row.key;
  }
  if (name.size() == 1) return name[0];  // letters and digits are their own codes
  if (name.size() < 2 || name[0] != L'F') return 0;
  const long number = std::wcstol(name.data() + 1, nullptr, 10);
  return number >= 1 && number <= 24 ? static_cast<WORD>(VK_F1 + number - 1) : WORD{0};
}

}  // namespace

Stroke strokeNamed(const wchar_t* key) {
  std::wstring_view rest = key;
  Stroke modifiers = 0;
  for (const auto& one : kModifiers) {
    if (rest.substr(0, one.name.size()) != one.name) continue;
    modifiers |= one.bit;
    rest.remove_prefix(one.name.size());
  }
  const WORD code = keyNamed(rest);
  return code ? modifiers | code : 0;
}

std::wstring shownKey(const windows::Translation& texts, const wchar_t* key) {
  std::wstring shown;
  for (std::wstring_view rest = key; !rest.empty();) {
    const std::size_t end = std::min(rest.find(L'+'), rest.size());
    shown += texts.of(std::wstring(rest.substr(0, end)).c_str(), L"Key");
    if (end < rest.size()) shown += L'+';
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return shown;
}

bool isReserved(Stroke stroke, HWND focus) {
  const UINT key = stroke & 0xFFFF;
  if (stroke & kAlt) return key == VK_F4 || key == VK_SPACE;
  const bool writes = !(stroke & kControl) && key != VK_ESCAPE && MapVirtualKeyW(key, MAPVK_VK_TO_CHAR) != 0;
  return writes && focus && (SendMessageW(focus, WM_GETDLGCODE, 0, 0) & DLGC_WANTCHARS);
}

Stroke strokePressed(WPARAM key) {
  Stroke stroke = static_cast<Stroke>(key & 0xFF);
  if (key >= VK_NUMPAD0 && key <= VK_NUMPAD9) stroke = static_cast<Stroke>(key - VK_NUMPAD0 + '0');
  for (const auto& one : kPad) {
    if (one.pad == key) stroke = one.key;
  }
  for (const auto& one : kModifiers) {
    if (GetKeyState(one.key) < 0) stroke |= one.bit;
  }
  return stroke;
}

}  // namespace corvix::gui
