// What else than its descriptor a module says of itself as data: resources of type PLUGININFO, the binary form of XML
// (docs/xmlbin-format.md), such as its menus (MENUTEMPL). [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class XMLNode;

// Every IPluginModule answers to it.
class IModuleResources : public IBTransportable {
  CORVIX_IDENTITY(IModuleResources, 0x27C8587D, 0x1EF9A333, 0x4CC96188, 0x9BED54CE, IBTransportable)

 public:
  // The root of that resource's tree, with a reference that the caller owns; null when the module has none of that
  // name, or it is damaged, which the log then says. Read anew each time, as data, with the limits of descriptors: none
  // of the module's code is loaded for it. Names are capitals, digits and "_", at most 32 of them.
  virtual XMLNode* readResource(const wchar_t* name) = 0;
};

}  // namespace corvix
