#include "shell/history/KStateHistory_p.h"

#include <algorithm>

namespace corvix {

KStateHistory::~KStateHistory() {
  forgetIf([](const Row&) { return true; });
}

bool KStateHistory::goBack() {
  const Ref<KStateList> list = active_;  // the document may go meanwhile
  return list && list->goBack();
}

bool KStateHistory::goForward() {
  const Ref<KStateList> list = active_;
  return list && list->goForward();
}

IStateList* KStateHistory::listOf(IDocument* document) {
  if (!document) return nullptr;
  const auto found = std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.document == document; });
  if (found != rows_.end()) return found->list.get();
  rows_.push_back({document, corvix::query<IBRemoteRemovable>(document), KStateList::create()});
  try {
    if (rows_.back().life) rows_.back().life->addListener(static_cast<IDestroyListener*>(this));
  } catch (...) {
    rows_.pop_back();
    throw;
  }
  return rows_.back().list.get();
}

void KStateHistory::setActive(IDocument* document) {
  listOf(document);
  const auto found = std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.document == document; });
  active_ = found == rows_.end() ? nullptr : found->list;
}

void KStateHistory::forget(IDocument* document) {
  forgetIf([&](const Row& row) { return row.document == document; });
}

int KStateHistory::onDestroy(IBRTTISupport* sender) {
  forgetIf([&](const Row& row) { return row.life && static_cast<IBRTTISupport*>(row.life) == sender; });
  return notify::kGoOn;
}

// The lists go when the table is whole again: their states are foreign code.
template <class Is>
void KStateHistory::forgetIf(Is is) {
  for (;;) {
    const auto found = std::find_if(rows_.begin(), rows_.end(), is);
    if (found == rows_.end()) return;
    if (found->life) found->life->removeListener(static_cast<IDestroyListener*>(this));
    const Ref<KStateList> list = std::move(found->list);
    rows_.erase(found);
    if (active_ == list) active_.reset();
  }
}

}  // namespace corvix
