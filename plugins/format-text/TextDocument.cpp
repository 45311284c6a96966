#include "plugins/format-text/TextDocument_p.h"

#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/OutputStream.h"
#include "shell/history/State.h"
#include "shell/history/StateList.h"

#include <algorithm>

namespace corvix {

namespace {

bool writeAll(BOutputStream& to, const void* bytes, std::size_t size) {
  return !size || to.write(bytes, static_cast<u32>(size)) == size;
}

// One replacement: `other_` is what stands in the document after going the other way.
class TextStep final : public BSmartObject, public IState {
  CORVIX_IDENTITY(TextStep, 0xDA18BA0D, 0xFEE43428, 0x814881A2, 0xB9EF4FB8, BSmartObject, IState)

 public:
  // It was just done; `removed` is what was there. The document outlives its history's steps.
  TextStep(TextDocument& document, u32 from, TextPiece removed, u32 inserted)
      : document_(document), from_(from), inserted_(inserted), other_(std::move(removed)) {}

  const wchar_t* text() const noexcept override {
    return removed_() && inserted_ ? L"replacement" : inserted_ ? L"typing" : L"deletion";
  }
  bool goBack() override { return go(inserted_); }
  bool goForward() override { return go(length_); }

  bool mergeWith(IState* state) override {
    TextStep* const next = corvix::query<TextStep>(state);
    if (!next || !removed_() != !next->removed_() || !inserted_ != !next->inserted_) return false;
    if (inserted_ ? removed_() || !isTypedBehind(*next) : !isRubbedOutBeside(*next)) return false;
    if (inserted_) {
      inserted_ += next->inserted_;
      return true;
    }
    const bool isBefore = next->from_ < from_;
    TextPiece both = isBefore ? next->other_ : other_;
    const TextPiece& rest = isBefore ? other_ : next->other_;
    both.text += rest.text;
    both.ends.insert(both.ends.end(), rest.ends.begin(), rest.ends.end());
    other_ = std::move(both);
    from_ = std::min(from_, next->from_);
    return true;
  }

  u32 sizeBytes() const noexcept override {
    return static_cast<u32>(sizeof *this + other_.text.capacity() * sizeof(wchar_t) + other_.ends.capacity());
  }

  bool freeze(IBStream* stream) override {
    BOutputStream* const to = corvix::query<BOutputStream>(stream);
    const u32 sizes[] = {static_cast<u32>(other_.text.size()), static_cast<u32>(other_.ends.size())};
    if (!to || !writeAll(*to, sizes, sizeof sizes) || !writeAll(*to, other_.text.data(), sizes[0] * sizeof(wchar_t)) ||
        !writeAll(*to, other_.ends.data(), sizes[1]))
      return false;
    frozenUnits_ = sizes[0];
    other_ = {};
    return true;
  }

  bool thaw(IBStream* stream) override {
    BInputStream* const from = corvix::query<BInputStream>(stream);
    u32 sizes[2];
    if (!from || readFully(*from, sizes, sizeof sizes) != sizeof sizes || sizes[0] > TextDocument::kMostUnits ||
        sizes[1] > sizes[0])
      return false;
    TextPiece piece;
    piece.text.resize(sizes[0]);
    piece.ends.resize(sizes[1]);
    if (readFully(*from, piece.text.data(), sizes[0] * u32{sizeof(wchar_t)}) != sizes[0] * sizeof(wchar_t) ||
        readFully(*from, piece.ends.data(), sizes[1]) != sizes[1])
      return false;
    other_ = std::move(piece);
    frozenUnits_ = 0;
    return true;
  }

 private:
  // What the step took away, as long as it is done.
  u32 removed_() const noexcept { return frozenUnits_ + static_cast<u32>(isDone_ ? other_.text.size() : length_); }

  bool go(u32 there) {
    length_ = static_cast<u32>(other_.text.size());
    document_.exchange(from_, there, other_);
    isDone_ = !isDone_;
    return true;
  }

  bool isTypedBehind(const TextStep& next) const noexcept {
    if (next.inserted_ != 1 || next.from_ != from_ + inserted_) return false;
    const std::wstring_view text = document_.text();
    const wchar_t letter = text[next.from_], before = text[next.from_ - 1];
    return letter != L'\n' && before != L'\n' && (letter == L' ' || before != L' ');
  }

  bool isRubbedOutBeside(const TextStep& next) const noexcept {
    return next.other_.text.size() <= 2 && next.other_.ends.empty() && other_.ends.empty() &&
           (next.from_ + next.other_.text.size() == from_ || next.from_ == from_);
  }

  TextDocument& document_;
  u32 from_;
  u32 inserted_;
  u32 length_ = 0;  // of what the step took away, once it was taken back
  u32 frozenUnits_ = 0;
  bool isDone_ = true;
  TextPiece other_;
};

}  // namespace

TextDocument::TextDocument() { countLines(); }

TextDocument::TextDocument(TextPiece content, i32 encoding)
    : text_(std::move(content.text)), ends_(std::move(content.ends)), encoding_(encoding) {
  u32 counts[3] = {};
  for (const u8 end : ends_) ++counts[end];
  usualEnd_ = static_cast<u8>(std::max_element(counts, counts + 3) - counts);
  countLines();
}

void TextDocument::countLines() {
  starts_.reserve(ends_.size() + 1);
  starts_.push_back(0);
  for (std::size_t at = 0; (at = text_.find(L'\n', at)) != text_.npos;) starts_.push_back(static_cast<u32>(++at));
}

u32 TextDocument::copyText(u32 from, u32 count, wchar_t* to) const noexcept {
  if (!to || from >= textLength()) return 0;
  return static_cast<u32>(std::wstring_view(text_).copy(to, count, from));
}

u32 TextDocument::lineOf(u32 position) const noexcept {
  return static_cast<u32>(std::upper_bound(starts_.begin(), starts_.end(), position) - starts_.begin()) - 1;
}

bool TextDocument::isInsideCharacter(u32 position) const noexcept {
  return position > 0 && position < textLength() && text_[position] >= 0xDC00 && text_[position] <= 0xDFFF &&
         text_[position - 1] >= 0xD800 && text_[position - 1] <= 0xDBFF;
}

void TextDocument::exchange(u32 from, u32 count, TextPiece& piece) {
  const u32 first = lineOf(from), last = lineOf(from + count);
  const auto firstAt = static_cast<std::ptrdiff_t>(first), lastAt = static_cast<std::ptrdiff_t>(last);
  const auto inserted = static_cast<u32>(piece.text.size());
  const auto moreLines = static_cast<std::ptrdiff_t>(piece.ends.size()) - static_cast<std::ptrdiff_t>(last - first);
  TextPiece was;
  was.text = text_.substr(from, count);
  was.ends.assign(ends_.data() + first, ends_.data() + last);
  decltype(starts_) starts;
  starts.reserve(piece.ends.size());
  for (std::size_t at = 0; (at = piece.text.find(L'\n', at)) != piece.text.npos;)
    starts.push_back(from + static_cast<u32>(++at));
  text_.reserve(text_.size() - count + inserted);
  if (moreLines > 0) {
    ends_.reserve(ends_.size() + static_cast<std::size_t>(moreLines));
    starts_.reserve(starts_.size() + static_cast<std::size_t>(moreLines));
  }
  // Nothing is asked for from here on.
  text_.replace(from, count, piece.text);
  ends_.insert(ends_.erase(ends_.begin() + firstAt, ends_.begin() + lastAt), piece.ends.begin(), piece.ends.end());
  auto rest = starts_.erase(starts_.begin() + firstAt + 1, starts_.begin() + lastAt + 1);
  rest = starts_.insert(rest, starts.begin(), starts.end()) + static_cast<std::ptrdiff_t>(starts.size());
  for (; rest != starts_.end(); ++rest) *rest += inserted - count;
  piece = std::move(was);
  onChanged();
  broadcastTo<ITextListener>(
      textSender_, [&](ITextListener& listener) { return listener.onTextChanged(*this, from, count, inserted); });
}

bool TextDocument::replaceText(u32 from, u32 count, const wchar_t* text, u32 length) {
  u32 end = from + std::min(count, textLength() - std::min(from, textLength()));
  from = std::min(from, textLength());
  end = std::min(end, textLength());
  if (isInsideCharacter(from)) ++from;
  if (end > from && isInsideCharacter(end)) --end;
  count = end > from ? end - from : 0;
  const std::wstring_view raw(text ? text : L"", text ? length : 0);
  if (raw.size() > kMostUnits - (textLength() - count)) return false;
  if (!count && raw.empty()) return true;
  TextPiece piece;
  appendLines(raw, piece.text, piece.ends);
  std::fill(piece.ends.begin(), piece.ends.end(), usualEnd_);
  const auto inserted = static_cast<u32>(piece.text.size());
  exchange(from, count, piece);
  IStateList* const list = history();
  if (!list || !list->add(make<TextStep>(*this, from, std::move(piece), inserted).get())) setModified();
  return true;
}

bool TextDocument::setEncoding(i32 encoding) {
  if (encoding < kUtf8 || encoding > kAnsi) return false;
  if (encoding != encoding_) setModified();
  encoding_ = encoding;
  return true;
}

i32 TextDocument::lineEnd() const noexcept {
  const bool isMixed = std::any_of(ends_.begin(), ends_.end(), [&](u8 end) { return end != ends_[0]; });
  return isMixed ? i32{kMixed} : ends_.empty() ? usualEnd_ : ends_[0];
}

bool TextDocument::setLineEnd(i32 lineEnd) {
  if (lineEnd < kLf || lineEnd > kCr) return false;
  if (lineEnd != this->lineEnd()) setModified();
  usualEnd_ = static_cast<u8>(lineEnd);
  std::fill(ends_.begin(), ends_.end(), usualEnd_);
  return true;
}

}  // namespace corvix
