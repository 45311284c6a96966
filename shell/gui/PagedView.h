// IPagedView: the side of a view that shows pages, for who leads the user through them. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IPagedView : public IBTransportable {
  CORVIX_IDENTITY(IPagedView, 0x9D36506D, 0x53610661, 0x815B57CF, 0x98F2AA52, IBTransportable)

 public:
  virtual i32 currentPage() const noexcept = 0;  // from 0: that of which the most is seen
  virtual bool goToPage(i32 index) = 0;          // false outside the list

  // 1: a point of the page is 1/72 of an inch of the screen. What is set is brought into the range that the view has;
  // 0 fits the width.
  virtual double zoom() const noexcept = 0;
  virtual void setZoom(double zoom) = 0;
};

}  // namespace corvix
