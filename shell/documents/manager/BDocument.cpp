#include "shell/documents/BDocument.h"

#include "shell/Shell.h"
#include "shell/history/StateHistory.h"
#include "shell/history/StateList.h"

namespace corvix {

BDocument::BDocument() noexcept = default;
BDocument::~BDocument() = default;

bool BDocument::isModified() const noexcept {
  const IStateList* const list = corvix::query<IStateList>(history_.get());
  return isModified_ || (list && !list->isAtSaved());
}

// The list is kept, so that it can be asked after it was forgotten.
IStateList* BDocument::history() {
  if (!history_) {
    IShell* const shell = IShell::getInstance();
    IStateHistory* const histories = shell ? shell->stateHistory() : nullptr;
    history_ = Ref<IBSmartObject>::share(corvix::query<IBSmartObject>(histories ? histories->listOf(this) : nullptr));
  }
  return corvix::query<IStateList>(history_.get());
}

void BDocument::setPlace(const wchar_t* location, const wchar_t* title, const wchar_t* formatName, bool isReadOnly) {
  WideString newLocation(location), newTitle(title), newFormat(formatName);
  location_.swap(newLocation);
  title_.swap(newTitle);
  formatName_.swap(newFormat);
  isReadOnly_ = isReadOnly;
  isModified_ = false;
  if (IStateList* const list = corvix::query<IStateList>(history_.get())) list->markSaved();
}

}  // namespace corvix
