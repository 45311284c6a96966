// The system's graphics handles by name, so that public headers need not include the system's. SystemHandles.cpp checks
// them against it.
#pragma once

struct HBITMAP__;
struct HDC__;
struct HRGN__;

namespace corvix {

using DeviceHandle = ::HDC__*;
using BitmapHandle = ::HBITMAP__*;
using RegionHandle = ::HRGN__*;

}  // namespace corvix
