#include "plugins/gui/Panels.h"

#include "plugins/gui/Store.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/FrameWindow.h"
#include "shell/menus/MenuManager.h"
#include "shell/services/Report.h"

#include <algorithm>
#include <cwchar>
#include <utility>

namespace corvix::gui {

using namespace windows;

namespace {

constexpr const wchar_t* kSides[] = {L"left", L"right", L"top", L"bottom"};
constexpr int kLeast = 60, kMost = 2000, kUsual = 200;  // in 1/96 inch
constexpr int kBar = 5;
constexpr std::size_t kMostTabs = 24;
constexpr wchar_t kSize[] = L"Size", kSide[] = L"Side", kShown[] = L"Shown";

Side sideNamed(const std::wstring& name, Side otherwise) {
  for (int i = 0; i < 4; ++i) {
    if (name == kSides[i]) return static_cast<Side>(i);
  }
  return otherwise;
}

IDocumentPanel* panelIn(Place& place) {
  return place.ask([&] { return query<IDocumentPanel>(place.view()); });
}

}  // namespace

void Panels::adopt(const Look& look) {
  look_ = &look;
  for (Edge& edge : edges_) {
    if (edge.tabs) edge.tabs->adopt(look);
  }
}

Panels::Panel* Panels::find(const wchar_t* name) noexcept {
  const auto found = std::find_if(panels_.begin(), panels_.end(),
                                  [&](const auto& one) { return !wcscmp(one->declared.name(), name); });
  return found == panels_.end() ? nullptr : found->get();
}

// What came since is added; what is there stays as the user has it.
void Panels::read() {
  const i32 count = IShell::getInstance()->pluginManager()->interfaceCount();
  if (count == knownInterfaces_) return;
  knownInterfaces_ = count;
  for (Declared& declared : declaredIn(L"Panel.")) {
    if (find(declared.name())) continue;
    auto panel = std::make_unique<Panel>();
    const Store store(frameName_, declared.name());
    panel->text = declared.attribute(L"Text");
    if (panel->text.empty()) panel->text = declared.name();
    panel->when = declared.attribute(L"When");
    panel->side = sideNamed(store.text(kSide).value_or(L""), sideNamed(declared.attribute(L"Side"), Side::Left));
    panel->size =
        store.number(kSize).value_or(static_cast<int>(std::wcstol(declared.attribute(L"Size").c_str(), nullptr, 10)));
    panel->size = panel->size ? std::clamp(panel->size, kLeast, kMost) : kUsual;
    panel->isWanted = store.number(kShown).value_or(declared.attribute(L"Shown") == L"true") != 0;
    panel->keptSize = panel->size;
    panel->keptWanted = panel->isWanted;
    panel->declared = std::move(declared);
    panels_.push_back(std::move(panel));
  }
}

void Panels::update(const wchar_t* words, IDocument* document) {
  read();
  const bool isOtherDocument = document != document_;
  document_ = document;
  for (const auto& panel : panels_) {
    panel->holds = whenHolds(panel->when.c_str(), words);
    if (panel->place && isOtherDocument) {
      if (IDocumentPanel* const view = panelIn(*panel->place)) panel->place->ask([&] { view->setDocument(document); });
    }
  }
  for (Edge& edge : edges_) arrange(edge);
}

void Panels::forgetDocument() {
  if (document_) {
    document_ = nullptr;
    for (const auto& panel : panels_) {
      if (IDocumentPanel* const view = panel->place ? panelIn(*panel->place) : nullptr)
        panel->place->ask([&] { view->setDocument(nullptr); });
    }
  }
}

void Panels::close() {
  forgetDocument();
  for (const auto& panel : panels_) panel->place.reset();
}

Panels::Panel* Panels::frontOf(Edge& edge) {
  for (Panel* const panel : edge.shown) {
    if (edge.front == panel->declared.name()) return panel;
  }
  return edge.shown.empty() ? nullptr : edge.shown.front();
}

void Panels::arrange(Edge& edge) {
  const auto index = static_cast<Side>(&edge - edges_.data());
  edge.shown.clear();
  for (const auto& panel : panels_) {
    if (panel->side == index && panel->isShown()) edge.shown.push_back(panel.get());
  }
  if (!edge.tabs) {
    if (edge.shown.empty()) return;
    edge.tabs = std::make_unique<Tabs>(static_cast<ITabsOwner&>(*this));
    if (!edge.tabs->make(parent_, L"")) throw std::bad_alloc();
    edge.tabs->adopt(*look_);
  }
  Panel* const front = frontOf(edge);
  // Of more than can be looked through the first have tabs; the menu brings any of the others.
  if (edge.shown.size() > kMostTabs) {
    if (std::find(edge.shown.begin(), edge.shown.begin() + kMostTabs, front) == edge.shown.begin() + kMostTabs)
      edge.shown[kMostTabs - 1] = front;
    edge.shown.resize(kMostTabs);
  }
  std::vector<std::wstring> titles;
  int inFront = -1;
  for (Panel* const panel : edge.shown) {
    if (panel == front) inFront = static_cast<int>(titles.size());
    titles.push_back(translated(panel->text));
  }
  if (front) {
    if (edge.front != front->declared.name()) edge.size = front->size;
    edge.front = front->declared.name();
    if (!front->place) openPlace(*front, edge);
  }
  edge.tabs->show(titles, inFront);
  for (const auto& panel : panels_) {
    if (!panel->place || panel->side != index) continue;
    if (panel.get() == front) move(panel->place->window(), edge.tabs->pageArea());
    ShowWindow(panel->place->window(), panel.get() == front ? SW_SHOWNA : SW_HIDE);
  }
}

void Panels::openPlace(Panel& panel, Edge& edge) {
  std::wstring reason;
  panel.place = Place::make<IDocumentPanel>(
      *panel.declared.entry, owner_, frame_, edge.tabs->window(), [](IDocumentPanel&) { return true; }, reason);
  if (!panel.place) {
    panel.hasFailed = true;
    const wchar_t* const name = translated(panel.text);
    panel.said = reason.empty() ? sentence(L"The panel %1 cannot be shown.", {name})
                                : sentence(L"The panel %1 cannot be shown: %2.", {name, reason});
    return owner_.placeFailed();
  }
  IDocumentPanel* const view = panelIn(*panel.place);
  std::wstring title;
  panel.place->ask([&] { title = orEmpty(view->title()); });
  if (!title.empty()) panel.text = title;
  panel.place->ask([&] { view->setDocument(document_); });
}

RECT Panels::place(RECT area) {
  area_ = area;
  for (int i = 3; i >= 0; --i) {  // top and bottom have the whole width
    Edge& edge = edges_[static_cast<std::size_t>(i)];
    edge.bar = {};
    if (!edge.tabs) continue;
    const bool isShown = !edge.shown.empty();
    ShowWindow(edge.tabs->window(), isShown ? SW_SHOWNA : SW_HIDE);
    if (!isShown) continue;
    const bool isVertical = i < 2;
    const int whole = isVertical ? widthOf(area) : heightOf(area), bar = look_->scaled(kBar);
    const int size = std::clamp(look_->scaled(edge.size), 0, std::max(whole * 2 / 3 - bar, 0));
    RECT own = area;
    edge.bar = area;
    switch (static_cast<Side>(i)) {
      case Side::Left:
        own.right = edge.bar.left = area.left + size;
        area.left = edge.bar.right = own.right + bar;
        break;
      case Side::Right:
        own.left = edge.bar.right = area.right - size;
        area.right = edge.bar.left = own.left - bar;
        break;
      case Side::Top:
        own.bottom = edge.bar.top = area.top + size;
        area.top = edge.bar.bottom = own.bottom + bar;
        break;
      case Side::Bottom:
        own.top = edge.bar.bottom = area.bottom - size;
        area.bottom = edge.bar.top = own.top - bar;
        break;
    }
    move(edge.tabs->window(), own);
    if (Panel* const front = frontOf(edge); front && front->place) move(front->place->window(), edge.tabs->pageArea());
  }
  return area;
}

bool Panels::beginDrag(POINT at) {
  for (int i = 0; i < 4; ++i) {
    if (PtInRect(&edges_[static_cast<std::size_t>(i)].bar, at)) dragged_ = i;
  }
  return isDragging();
}

void Panels::drag(POINT at) {
  if (!isDragging()) return;
  Edge& edge = edges_[static_cast<std::size_t>(dragged_)];
  const RECT& now = edge.bar;
  const int delta = dragged_ == 0   ? at.x - now.left
                    : dragged_ == 1 ? now.left - at.x
                    : dragged_ == 2 ? at.y - now.top
                                    : now.top - at.y;
  edge.size = std::clamp(edge.size + MulDiv(delta, 96, look_->scaled(96)), kLeast, kMost);
  if (Panel* const front = frontOf(edge)) front->size = edge.size;
}

void Panels::endDrag() { dragged_ = -1; }

LPCWSTR Panels::cursorAt(POINT at) const {
  for (const Edge& edge : edges_) {
    if (PtInRect(&edge.bar, at)) return reinterpret_cast<LPCWSTR>(edge.isVertical() ? IDC_SIZEWE : IDC_SIZENS);
  }
  return nullptr;
}

bool Panels::show(const wchar_t* name, bool visible) {
  read();
  Panel* const panel = name ? find(name) : nullptr;
  if (!panel || (visible && panel->hasFailed)) return false;
  panel->isWanted = visible;
  Edge& edge = edges_[static_cast<std::size_t>(panel->side)];
  if (visible) edge.front = name;
  if (visible) edge.size = panel->size;
  arrange(edge);
  return !panel->hasFailed;
}

bool Panels::isShown(const wchar_t* name) const noexcept {
  const Panel* const panel = name ? const_cast<Panels*>(this)->find(name) : nullptr;
  return panel && panel->isShown();
}

std::vector<Panels::Row> Panels::rows() const {
  std::vector<Row> all;
  for (const auto& panel : panels_) {
    if (!panel->hasFailed) all.push_back({panel->declared.name(), translated(panel->text), panel->isWanted});
  }
  return all;
}

Panels::Edge& Panels::edgeOf(const Tabs& tabs) {
  return *std::find_if(edges_.begin(), edges_.end(), [&](const Edge& edge) { return edge.tabs.get() == &tabs; });
}

void Panels::tabChosen(Tabs& tabs, int index) {
  Edge& edge = edgeOf(tabs);
  if (index < 0 || static_cast<std::size_t>(index) >= edge.shown.size()) return;
  Panel& chosen = *edge.shown[static_cast<std::size_t>(index)];
  edge.front = chosen.declared.name();
  chosen.size = edge.size;  // the side stays as wide as it is
  arrange(edge);
  if (chosen.place) chosen.place->focus();
}

void Panels::tabClosed(Tabs& tabs, int index) {
  Edge& edge = edgeOf(tabs);
  if (index < 0 || static_cast<std::size_t>(index) >= edge.shown.size()) return;
  const std::wstring name = edge.shown[static_cast<std::size_t>(index)]->declared.name();
  frame_.showPanel(name.c_str(), false);
}

Place* Panels::focused() {
  for (const auto& panel : panels_) {
    if (panel->place && panel->isShown() && panel->place->hasFocus()) return panel->place.get();
  }
  return nullptr;
}

Place* Panels::after(const Place* place, bool backwards) {
  std::vector<Place*> ring;
  for (Edge& edge : edges_) {
    Panel* const front = frontOf(edge);
    if (front && front->place) ring.push_back(front->place.get());
  }
  if (backwards) std::reverse(ring.begin(), ring.end());
  if (!place) return ring.empty() ? nullptr : ring.front();
  const auto at = std::find(ring.begin(), ring.end(), place);
  return at == ring.end() || at + 1 == ring.end() ? nullptr : *(at + 1);
}

void Panels::closeFailed(IBReport& report) {
  for (const auto& panel : panels_) {
    std::wstring line = std::exchange(panel->said, {});
    if (panel->place && panel->place->hasFailed()) {
      line = sentence(L"The panel %1 was closed: %2.", {translated(panel->text), panel->place->reason()});
      panel->hasFailed = true;
      panel->place.reset();
    }
    if (line.empty()) continue;
    report.addLine(line.c_str());
    IShell::getInstance()->changeStatusText(0, line.c_str());
  }
  for (Edge& edge : edges_) arrange(edge);
}

void Panels::tellAll(UINT message, WPARAM wparam, LPARAM lparam) const {
  for (const auto& panel : panels_) {
    if (panel->place) panel->place->tellChildren(message, wparam, lparam);
  }
}

void Panels::keep() {
  for (const auto& panel : panels_) {
    if (panel->size == panel->keptSize && panel->isWanted == panel->keptWanted) continue;
    const Store store(frameName_, panel->declared.name());
    store.setText(kSide, kSides[static_cast<std::size_t>(panel->side)]);
    store.setNumber(kSize, panel->size);
    store.setNumber(kShown, panel->isWanted);
    panel->keptSize = panel->size;
    panel->keptWanted = panel->isWanted;
  }
}

}  // namespace corvix::gui
