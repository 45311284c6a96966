// GDI+ objects, each in a small block of GDI+'s own heap with the native object and the status of the last call on it
// that failed. Nothing is thrown: a wrapper that could not be had is null, and who needs it does nothing.
#pragma once

#include "core/baselib/system/OwningHandle_p.h"
#include "graphics/gdiplus/GdiPlusTable_p.h"

#include <new>

namespace corvix::gdiplus {

template <class Native>
struct Wrapper {
  Native* native = nullptr;
  GpStatus lastStatus = Gdiplus::Ok;

  bool keep(GpStatus status) noexcept {
    if (status != Gdiplus::Ok) lastStatus = status;
    return status == Gdiplus::Ok;
  }

  // `create` gets the place for the native object and returns a status. A native object that could not be made leaves
  // a wrapper without one. `Kind` may keep more beside them.
  template <class Kind = Wrapper, class Create>
  static Kind* make(Create create) noexcept {
    void* const block = flat().GdipAlloc(sizeof(Kind));
    if (!block) return nullptr;
    auto* const wrapper = new (block) Kind;
    if (!wrapper->keep(create(&wrapper->native))) wrapper->native = nullptr;
    return wrapper;
  }
};

inline void destroy(Gdiplus::GpGraphics* native) noexcept { flat().GdipDeleteGraphics(native); }
inline void destroy(Gdiplus::GpMatrix* native) noexcept { flat().GdipDeleteMatrix(native); }
inline void destroy(Gdiplus::GpPen* native) noexcept { flat().GdipDeletePen(native); }
inline void destroy(Gdiplus::GpSolidFill* native) noexcept { flat().GdipDeleteBrush(native); }
inline void destroy(Gdiplus::GpPath* native) noexcept { flat().GdipDeletePath(native); }
inline void destroy(Gdiplus::GpRegion* native) noexcept { flat().GdipDeleteRegion(native); }
inline void destroy(Gdiplus::GpBitmap* native) noexcept { flat().GdipDisposeImage(native); }
inline void destroy(Gdiplus::GpImageAttributes* native) noexcept { flat().GdipDisposeImageAttributes(native); }

template <class Native>
void discard(Wrapper<Native>* wrapper) noexcept {
  if (!wrapper) return;
  if (wrapper->native) destroy(wrapper->native);
  flat().GdipFree(wrapper);
}

template <class Native>
struct DiscardWrapper : NullIsNone<Wrapper<Native>*> {
  static void close(Wrapper<Native>* handle) noexcept { discard(handle); }
};

using Graphics = Wrapper<Gdiplus::GpGraphics>;
using Region = Wrapper<Gdiplus::GpRegion>;
using OwnedGraphics = OwningHandle<DiscardWrapper<Gdiplus::GpGraphics>>;
using OwnedMatrix = OwningHandle<DiscardWrapper<Gdiplus::GpMatrix>>;
using OwnedPen = OwningHandle<DiscardWrapper<Gdiplus::GpPen>>;
using OwnedBrush = OwningHandle<DiscardWrapper<Gdiplus::GpSolidFill>>;
using OwnedPath = OwningHandle<DiscardWrapper<Gdiplus::GpPath>>;
using OwnedRegion = OwningHandle<DiscardWrapper<Gdiplus::GpRegion>>;
using OwnedBitmap = OwningHandle<DiscardWrapper<Gdiplus::GpBitmap>>;
using OwnedAttributes = OwningHandle<DiscardWrapper<Gdiplus::GpImageAttributes>>;

// A wrapper of the owner's kind; empty unless both the block and the native object could be had.
template <class Owned, class Create>
Owned makeWhole(Create create) noexcept {
  Owned owned(std::remove_pointer_t<typename Owned::Handle>::make(create));
  if (owned && !owned.get()->native) owned.reset();
  return owned;
}

}  // namespace corvix::gdiplus
