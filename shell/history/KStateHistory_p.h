#pragma once

#include "shell/documents/Document.h"
#include "shell/history/KStateList_p.h"
#include "shell/history/StateHistory.h"

namespace corvix {

class KStateHistory final : public BSmartObject, public IStateHistory, public IDestroyListener {
  CORVIX_IDENTITY(KStateHistory, 0xBA7FB703, 0x1DCF5206, 0x99884419, 0xCB9A70F4, BSmartObject, IStateHistory,
                  IDestroyListener)

 public:
  ~KStateHistory() override;

  bool canGoBack() const noexcept override { return active_ && active_->canGoBack(); }
  bool canGoForward() const noexcept override { return active_ && active_->canGoForward(); }
  bool goBack() override;
  bool goForward() override;
  IStateList* listOf(IDocument* document) override;
  void setActive(IDocument* document) override;
  void forget(IDocument* document) override;

  int onDestroy(IBRTTISupport* sender) override;

 private:
  struct Row {
    IDocument* document;
    IBRemoteRemovable* life;  // the document as who tells of its end; null when nobody does
    Ref<KStateList> list;
  };
  template <class Is>
  void forgetIf(Is is);

  std::vector<Row> rows_;
  Ref<KStateList> active_;
};

}  // namespace corvix
