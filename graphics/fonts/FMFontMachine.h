// The library's font machine. Without further creators it asks the system's fonts, then makes do with what is
// always there.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "graphics/fonts/FontMachine.h"

#include <vector>

namespace corvix {

class FMFontMachine final : public IFMFontMachine {
  CORVIX_IDENTITY(FMFontMachine, 0x35F7C1D8, 0x4B609AE2, 0x9D482B7F, 0xE6A10C53, IFMFontMachine)

 public:
  FMFontMachine();

  IFMFont* createFont(const wchar_t* family) override;
  void addCreator(IFMFontCreator* creator) override;

 private:
  std::vector<Ref<IFMFontCreator>, HeapAllocator<Ref<IFMFontCreator>>> creators_;  // the last is asked first
};

}  // namespace corvix
