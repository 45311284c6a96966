// Locations and relative ones, and the paths of files.
#include "core/suppliers/FileLocation.h"
#include "core/suppliers/UrlRecord.h"
#include "tests/fuzz/Fuzz.h"

namespace corvix::fuzz {

namespace {

bool isPlainAscii(std::wstring_view text) {
  for (const wchar_t c : text) {
    if (c <= L' ' || c > L'~') return false;
  }
  return true;
}

void checkRecord(const UrlRecord& record) {
  const std::wstring_view text = record.text().view();
  for (u32 i = 0; i < UrlRecord::kParts; ++i) {
    const auto part = static_cast<UrlPart>(i);
    const std::wstring_view view = record.part(part);
    require(view.empty() || (view.data() >= text.data() && view.data() + view.size() <= text.data() + text.size()),
            "a component lies in the text");
    static_cast<void>(record.value(part));
  }
  const WideString escaped = record.escapedText();
  require(isPlainAscii(escaped.view()), "an escaped location is plain ASCII");
  require(UrlRecord(escaped.view()).escapedText() == escaped, "escaping a second time changes nothing");
}

void checkChanges(const UrlRecord& record, UrlPart part, std::wstring_view plain) {
  UrlRecord changed(record.text().view());
  const bool done = changed.set(part, plain);
  require(done || changed.text() == record.text(), "what cannot be set changes nothing");
  checkRecord(changed);
  UrlRecord cut(record.text().view());
  if (cut.remove(part)) require(!cut.has(part), "what was removed is gone");
  checkRecord(cut);
}

}  // namespace

void locations(Bytes bytes) {
  const std::wstring text = textOf(bytes);
  std::wstring_view rest = text;
  const std::wstring base = takeLine(rest);
  const std::wstring reference = takeLine(rest);
  const UrlRecord record(base);
  require(record.text().view() == base, "the record keeps the text");
  checkRecord(record);
  const UrlRecord target = record.resolve(reference);
  checkRecord(target);
  checkChanges(record, static_cast<UrlPart>(rest.size() % UrlRecord::kParts), rest);

  const WideString path = pathOfLocation(record);
  if (!path.empty()) require(path.view().find(L'\0') == std::wstring_view::npos, "no path has a zero");
  const WideString location = locationOfPath(base);
  if (!location.empty()) checkRecord(UrlRecord(location.view()));
}

}  // namespace corvix::fuzz
