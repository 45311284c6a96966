#include "shell/LibraryObjects.h"

#include "graphics/creators/QuillCreators.h"

namespace corvix {

namespace {

constexpr FactoryRow kObjects[] = {
    {L"AGDC.Memory", create<QuillMemoryDCCreator>},
    {L"AGDC.Screen", create<QuillScreenDCCreator>},
};

}  // namespace

const FactoryRow* findLibraryObject(std::wstring_view interfaceName) noexcept {
  for (const FactoryRow& row : kObjects) {
    if (interfaceName == row.interfaceName) return &row;
  }
  return nullptr;
}

}  // namespace corvix
