// The creators behind "AGDC.Screen" and "AGDC.Memory".
#pragma once

#include "graphics/AGDCCreator.h"

#include <vector>

namespace corvix {

class AGDCCreator : public IAGDCCreator, public IDestroyListener {
  CORVIX_IDENTITY(AGDCCreator, 0x6B48D3F2, 0x4E17A95C, 0x8D2CB60F, 0xF09357E1, IAGDCCreator, IDestroyListener)

 public:
  ~AGDCCreator() override;

  int onDestroy(IBRTTISupport* sender) override;

  // Contexts that were made here and are still held by somebody.
  std::size_t livingCount() const noexcept { return living_.size(); }

 protected:
  // The first kind whose mask has every bit asked for; without the optional ones when there is none. A context that
  // cannot draw though it should is not handed out.
  IAGDC* createFirst(u32 required, u32 optional, DeviceHandle device, double width, double height);

 private:
  struct Made {
    IBRTTISupport* identity;
    IAGDC* context;
  };
  std::vector<Made> living_;
};

class QuillScreenDCCreator final : public AGDCCreator {
  CORVIX_IDENTITY(QuillScreenDCCreator, 0xE4710B9D, 0x49C5F832, 0xA53D16E7, 0x0C8F62BA, AGDCCreator)

 public:
  IAGDC* create(u32 required, u32 optional, DeviceHandle device, double width, double height) override;
};

class QuillMemoryDCCreator final : public AGDCCreator {
  CORVIX_IDENTITY(QuillMemoryDCCreator, 0x17A3E6C8, 0x4D082F5B, 0x9CF4713A, 0xB65ED094, AGDCCreator)

 public:
  IAGDC* create(u32 required, u32 optional, DeviceHandle device, double width, double height) override;
};

}  // namespace corvix
