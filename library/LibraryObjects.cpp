#include "shell/LibraryObjects.h"

#include "core/suppliers/KFileSupplier.h"
#include "core/suppliers/KHTTPSupplier.h"
#include "core/suppliers/KIStreamSupplier.h"
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
    {L"Supplier.file", create<KFileSupplier>},
    {L"Supplier.ftp", create<KHTTPSupplier>},
    {L"Supplier.http", create<KHTTPSupplier>},
    {L"Supplier.istream", create<KIStreamSupplier>},
};

}  // namespace

const FactoryRow* findLibraryObject(std::wstring_view interfaceName) noexcept {
  for (const FactoryRow& row : kObjects) {
    if (interfaceName == row.interfaceName) return &row;
  }
  return nullptr;
}

}  // namespace corvix
