// IHWNDView: a view with a window of the system, an HWND, which stays the view's. [shell thread]
#pragma once

#include "shell/gui/View.h"

namespace corvix {

class IHWNDView : public IView {
  CORVIX_IDENTITY(IHWNDView, 0x19440E72, 0x1A6A71DD, 0xA486A522, 0xB84F41DC, IView)

 public:
  virtual void* windowHandle() const noexcept = 0;
};

}  // namespace corvix
