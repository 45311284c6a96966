#include "shell/services/KReport_p.h"

namespace corvix {

void KReport::addLine(const wchar_t* text) {
  if (lines_.size() < kMostLines) lines_.emplace_back(std::wstring_view(text ? text : L"").substr(0, kMostUnits));
}

void KReport::addLines(const KReport& from, i32 first) {
  for (; first < from.lineCount(); ++first) addLine(from.lineAt(first));
}

const wchar_t* KReport::lineAt(i32 index) const noexcept {
  return index >= 0 && index < lineCount() ? lines_[static_cast<std::size_t>(index)].c_str() : nullptr;
}

IBSmartObject* createReport() { return new KReport; }

WideString reportText(const IBReport& report) {
  std::wstring text;
  for (i32 i = 0; i < report.lineCount(); ++i) {
    if (i) text += L'\n';
    text += report.lineAt(i);
  }
  return text;
}

}  // namespace corvix
