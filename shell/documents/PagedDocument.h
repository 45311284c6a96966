// IPagedDocument: the side of a document that has pages to be drawn. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IAGDC;
struct Matrix;

// Asked while a page is drawn.
class IDrawWatch : public IBTransportable {
  CORVIX_IDENTITY(IDrawWatch, 0x46C87890, 0xD85DE9C7, 0x1995B06A, 0x8725CDB5, IBTransportable)

 public:
  // True: nobody waits for the rest of the page any more, a key was pressed.
  virtual bool shouldStop() = 0;
};

class IPagedDocument : public IBTransportable {
  CORVIX_IDENTITY(IPagedDocument, 0x12829E68, 0x26A9B20C, 0xCD597213, 0xE285060D, IBTransportable)

 public:
  virtual i32 pageCount() const noexcept = 0;

  // In points, 72 to the inch; a pixel of an image is 0.75 of them. False, and both as they were, outside the list.
  virtual bool pageSize(i32 index, double* width, double* height) const noexcept = 0;

  // `toDevice` takes points, from the page's upper left corner to the right and down, to the context's user
  // coordinates. Only the page's own area is drawn on; nothing is drawn where the page has nothing. False when the page
  // could not be drawn to its end, or `watch` (null: nobody) stopped it.
  virtual bool drawPage(i32 index, IAGDC& context, const Matrix& toDevice, IDrawWatch* watch) = 0;
};

}  // namespace corvix
