// IBReport: the lines of a report on work that is done, for the user. [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/WideString.h"

namespace corvix {

class IBReport : public IBTransportable {
  CORVIX_IDENTITY(IBReport, 0xD71094B5, 0xEE8736F9, 0x9C39E9A6, 0x97C86C7D, IBTransportable)

 public:
  // A sentence. Of more than a few thousand lines, and of a line of more than a few thousand units, the rest is left
  // out.
  virtual void addLine(const wchar_t* text) = 0;
  virtual i32 lineCount() const noexcept = 0;
  virtual const wchar_t* lineAt(i32 index) const noexcept = 0;  // null outside the list
  virtual void clear() noexcept = 0;
};

// A new one, empty, which offers IBReport; the caller owns it.
CORVIX_API IBSmartObject* createReport();

// Its lines with "\n" between.
CORVIX_API WideString reportText(const IBReport& report);

}  // namespace corvix
