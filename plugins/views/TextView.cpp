// Text in an edit control of the system's. What the user types goes to the document as changes of it, step by step;
// what changes there by others, or by going back, comes from it.
#include "plugins/views/Views.h"

#include "plugins/windows/Look.h"
#include "plugins/windows/OwnWindow.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/documents/Document.h"
#include "shell/documents/TextSource.h"
#include "shell/gui/DocumentView.h"
#include "shell/gui/GUIManager.h"

#include <algorithm>
#include <cwchar>
#include <memory>

namespace corvix::views {

using namespace windows;

namespace {

constexpr WORD kEdit = 1;
constexpr UINT kFollowMs = 200;
constexpr int kTabWidth = 4 * 4;  // in quarters of a letter, as the system counts

IShell& shell() { return *IShell::getInstance(); }

int CALLBACK endEnumeration(const LOGFONTW*, const TEXTMETRICW*, DWORD, LPARAM) { return 0; }

// A font whose letters are all as wide, of those that are there.
const wchar_t* fixedFamily() {
  const HDC device = GetDC(nullptr);
  const wchar_t* found = L"";
  for (const wchar_t* const family : {L"DejaVu Sans Mono", L"Courier New", L"Consolas"}) {
    LOGFONTW wanted = {};
    wanted.lfCharSet = DEFAULT_CHARSET;
    std::wcscpy(wanted.lfFaceName, family);
    if (!EnumFontFamiliesExW(device, &wanted, &endEnumeration, 0, 0)) found = family;
  }
  ReleaseDC(nullptr, device);
  return found;
}

// The control ends its lines with "\r\n", documents theirs with "\n".
std::wstring forControl(std::wstring_view text) {
  std::wstring with;
  with.reserve(text.size() + text.size() / 16);
  for (const wchar_t letter : text) {
    if (letter == L'\n') with += L'\r';
    with += letter ? letter : L'\x2400';
  }
  return with;
}
std::wstring fromControl(const std::wstring& text) {
  std::wstring without = text;
  std::erase(without, L'\r');
  return without;
}

std::wstring textOfSource(const ITextSource& source) {
  std::wstring text(source.textLength(), L'\0');
  text.resize(source.copyText(0, static_cast<u32>(text.size()), text.data()));
  return text;
}

class TextView final : public BSmartObject, public IDocumentView, public ITextListener, private OwnWindow {
  CORVIX_IDENTITY(TextView, 0xAF9AB4D3, 0x1C429CD3, 0xBA739C80, 0x8BE26E74, BSmartObject, IDocumentView, ITextListener)

 public:
  IDocument* document() const noexcept override { return document_; }
  bool setDocument(IDocument* document) override {
    document_ = document;
    source_ = corvix::query<ITextSource>(document);
    editor_ = corvix::query<ITextEditor>(document);
    return source_ != nullptr;
  }

  bool attach(IFrameWindow*, void* parent) override {
    if (!open(static_cast<HWND>(parent), L"CorvixText", WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT))
      return false;
    edit_ = makeChild(window(), L"EDIT", L"",
                      WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_AUTOHSCROLL |
                          ES_AUTOVSCROLL | ES_NOHIDESEL | ES_WANTRETURN | (editor_ ? 0u : DWORD{ES_READONLY}),
                      kEdit, WS_EX_CLIENTEDGE);
    if (!edit_) return close(), false;
    SendMessageW(edit_, EM_SETLIMITTEXT, 0, 0);
    adoptLook();
    showAll();
    source_->textSender().addListener(static_cast<ITextListener*>(this));
    SetTimer(window(), 1, kFollowMs, nullptr);  // the system does not tell where the caret goes
    return true;
  }
  void detach() override {
    source_->textSender().removeListener(static_cast<ITextListener*>(this));
    edit_ = nullptr;
    close();
    if (font_) DeleteObject(font_);
    font_ = nullptr;
    shell().changeStatusText(1, L"");
  }
  void update() override { showAll(); }
  const wchar_t* contextWords() const noexcept override { return L"view.text"; }

 private:
  void adoptLook() {
    look_ = std::make_unique<Look>(window());
    const HFONT before = font_;
    font_ =
        CreateFontW(-MulDiv(10, look_->scaled(96), 72), 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                    OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, FIXED_PITCH | FF_MODERN, fixedFamily());
    setFont(edit_, font_);
    if (before) DeleteObject(before);
    SendMessageW(edit_, EM_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&kTabWidth));
    const WORD margin = static_cast<WORD>(look_->scaled(6));
    SendMessageW(edit_, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELPARAM(margin, margin));
  }

  void showAll() {
    isOurs_ = true;
    known_ = textOfSource(*source_);
    SetWindowTextW(edit_, forControl(known_).c_str());
    SendMessageW(edit_, EM_EMPTYUNDOBUFFER, 0, 0);
    isOurs_ = false;
  }

  // What is other now than it was goes to the document as one change.
  void typed() {
    if (isOurs_ || !editor_) return;
    const std::wstring shown = textOf(edit_), now = fromControl(shown);
    // Of several places where the same letters may have come or gone, it is the one before the caret.
    const std::size_t behind = now.size() - fromControl(shown.substr(0, caret())).size();
    const std::size_t most = std::min(now.size(), known_.size());
    std::size_t tail = 0, same = 0;
    while (tail < std::min(most, behind) && now[now.size() - 1 - tail] == known_[known_.size() - 1 - tail]) ++tail;
    while (same < most - tail && now[same] == known_[same]) ++same;
    const std::size_t removed = known_.size() - same - tail, added = now.size() - same - tail;
    if (removed == 0 && added == 0) return;
    isOurs_ = true;
    const bool isTaken = editor_->replaceText(static_cast<u32>(same), static_cast<u32>(removed), now.data() + same,
                                              static_cast<u32>(added));
    isOurs_ = false;
    if (isTaken && source_->textLength() == now.size()) {
      known_ = now;
      SendMessageW(edit_, EM_EMPTYUNDOBUFFER, 0, 0);  // the document's history knows better
    } else {
      showAll();
      MessageBeep(MB_ICONWARNING);
    }
    if (IGUIManager* const manager = shell().guiManager()) manager->refreshActions();
  }

  int onTextChanged(ITextSource& text, u32 from, u32 removed, u32 inserted) override {
    if (isOurs_ || !edit_) return notify::kGoOn;
    if (std::size_t{from} + removed > known_.size()) return showAll(), notify::kGoOn;
    std::wstring added(inserted, L'\0');
    added.resize(text.copyText(from, inserted, added.data()));
    const auto breaks = [&](std::size_t begin, std::size_t count) {
      const auto at = known_.begin() + static_cast<std::ptrdiff_t>(begin);
      return static_cast<std::size_t>(std::count(at, at + static_cast<std::ptrdiff_t>(count), L'\n'));
    };
    const std::size_t begin = from + breaks(0, from), end = begin + removed + breaks(from, removed);
    isOurs_ = true;
    SendMessageW(edit_, EM_SETSEL, begin, static_cast<LPARAM>(end));
    SendMessageW(edit_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(forControl(added).c_str()));
    SendMessageW(edit_, EM_SCROLLCARET, 0, 0);
    isOurs_ = false;
    known_.replace(from, removed, added);
    tellPlace();
    return notify::kGoOn;
  }

  std::size_t caret() const {
    DWORD from = 0, to = 0;
    SendMessageW(edit_, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    return to;
  }

  void tellPlace() {
    if (!IsWindowVisible(window())) return place_.clear();
    const std::size_t to = caret();
    const auto line = SendMessageW(edit_, EM_LINEFROMCHAR, to, 0);
    const auto column = static_cast<LRESULT>(to) - SendMessageW(edit_, EM_LINEINDEX, static_cast<WPARAM>(line), 0);
    const std::wstring place =
        sentence(L"Line %1, column %2", {std::to_wstring(line + 1), std::to_wstring(column + 1)});
    if (place == place_) return;
    place_ = place;
    shell().changeStatusText(1, place.c_str());
    shell().changeStatusText(2, L"");  // what another view has there
  }

  bool handle(UINT message, WPARAM wparam, LPARAM, LRESULT&) override {
    if (!edit_) return false;
    switch (message) {
      case WM_SIZE:
        move(edit_, clientOf(window()));
        return true;
      case WM_SETFOCUS:
        SetFocus(edit_);
        return true;
      case WM_COMMAND:
        if (HIWORD(wparam) == EN_CHANGE) typed();
        return true;
      case WM_TIMER:
        tellPlace();
        return true;
      case WM_SETTINGCHANGE:
      case WM_DPICHANGED_AFTERPARENT:
        adoptLook();
        return true;
      default:
        return false;
    }
  }

  IDocument* document_ = nullptr;
  ITextSource* source_ = nullptr;
  ITextEditor* editor_ = nullptr;
  HWND edit_ = nullptr;
  HFONT font_ = nullptr;
  std::unique_ptr<Look> look_;
  std::wstring known_, place_;
  bool isOurs_ = false;
};

}  // namespace

IBSmartObject* makeTextView() { return new TextView; }

}  // namespace corvix::views
