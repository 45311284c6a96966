// The C library's functions of wide text for units of 16 bits: its own take 32. They stand in for all that anything in
// these programs calls; WithoutWideCalls.cmake holds that none is missing.
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwctype>

static_assert(sizeof(wchar_t) == 2);

extern "C" {

std::size_t wcslen(const wchar_t* text) {
  std::size_t length = 0;
  while (text[length]) ++length;
  return length;
}

wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, std::size_t count) {
  return static_cast<wchar_t*>(std::memcpy(to, from, count * sizeof *to));
}

wchar_t* wmemmove(wchar_t* to, const wchar_t* from, std::size_t count) {
  return static_cast<wchar_t*>(std::memmove(to, from, count * sizeof *to));
}

wchar_t* wmemset(wchar_t* to, wchar_t unit, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = unit;
  return to;
}

int wmemcmp(const wchar_t* a, const wchar_t* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  return 0;
}

wchar_t* wmemchr(const wchar_t* text, wchar_t unit, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (text[i] == unit) return const_cast<wchar_t*>(text + i);
  }
  return nullptr;
}

int wcscmp(const wchar_t* a, const wchar_t* b) {
  while (*a && *a == *b) ++a, ++b;
  return *a < *b ? -1 : *a > *b;
}

wchar_t* wcsstr(const wchar_t* text, const wchar_t* part) {
  const std::size_t length = wcslen(part);
  for (;; ++text) {
    std::size_t same = 0;
    while (same < length && text[same] == part[same]) ++same;
    if (same == length) return const_cast<wchar_t*>(text);
    if (!*text) return nullptr;
  }
}

int wcscasecmp(const wchar_t* a, const wchar_t* b) {
  while (*a && std::towlower(*a) == std::towlower(*b)) ++a, ++b;
  return static_cast<int>(std::towlower(*a)) - static_cast<int>(std::towlower(*b));
}

// For plain numbers, which is all that is formatted so.
int vswprintf(wchar_t* text, std::size_t size, const wchar_t* format, va_list arguments) {
  char narrowFormat[64], narrow[512];
  std::size_t length = wcslen(format);
  if (length >= sizeof narrowFormat) return -1;
  for (std::size_t i = 0; i <= length; ++i) narrowFormat[i] = static_cast<char>(format[i]);
  const int got = std::vsnprintf(narrow, sizeof narrow, narrowFormat, arguments);
  length = static_cast<std::size_t>(got);
  if (got < 0 || length >= sizeof narrow || length >= size) return -1;
  for (std::size_t i = 0; i <= length; ++i) text[i] = static_cast<wchar_t>(narrow[i]);
  return got;
}

}  // extern "C"
