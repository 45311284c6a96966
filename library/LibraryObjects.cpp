#include "shell/LibraryObjects.h"

#include "graphics/creators/QuillCreators.h"
#include "graphics/quality/QualityListener.h"
#include "shell/Shell.h"

namespace corvix {

namespace {

// From the first creator on, drawing follows the user's settings.
template <class Creator>
IBSmartObject* createForDrawing() {
  watchQuality(*IShell::getInstance()->settings());
  return new Creator;
}

constexpr FactoryRow kObjects[] = {
    {L"AGDC.Memory", createForDrawing<QuillMemoryDCCreator>},
    {L"AGDC.Screen", createForDrawing<QuillScreenDCCreator>},
};

}  // namespace

const FactoryRow* findLibraryObject(std::wstring_view interfaceName) noexcept {
  for (const FactoryRow& row : kObjects) {
    if (interfaceName == row.interfaceName) return &row;
  }
  return nullptr;
}

}  // namespace corvix
