#include "graphics/SystemHandles.h"

#include <type_traits>

#include <windows.h>

static_assert(std::is_same_v<corvix::DeviceHandle, HDC>);
static_assert(std::is_same_v<corvix::BitmapHandle, HBITMAP>);
static_assert(std::is_same_v<corvix::RegionHandle, HRGN>);
