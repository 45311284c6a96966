// IObjectWatch: which objects that were made by name nobody has released. For developers: it watches in programs that
// call `IShell::watchObjects` before their first `getInstance`, and costs the others nothing. Every IPluginManager
// answers to it. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

// Objects of one class, made for one interface. The texts stand until stock is taken again.
struct ObjectsLeft {
  const wchar_t* interfaceName = L"";
  const wchar_t* className = L"";
  const wchar_t* modulePath = L"";
  i32 count = 0;
};

class IObjectWatch : public IBTransportable {
  CORVIX_IDENTITY(IObjectWatch, 0x7E04D9B2, 0xA35F16C8, 0x1BC8724D, 0xE9560FA3, IBTransportable)

 public:
  virtual bool isWatching() const noexcept = 0;

  // Counts what is there now, and returns how many rows that are, those with the most objects first. Objects that
  // others held too when they were handed out, as of what there is only one, are not among them, nor are the managers
  // that the shell keeps.
  virtual i32 takeStock() = 0;

  // One of them; false outside of the rows.
  virtual bool rowAt(i32 index, ObjectsLeft& row) const noexcept = 0;
};

}  // namespace corvix
