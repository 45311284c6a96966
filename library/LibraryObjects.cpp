#include "shell/LibraryObjects.h"

#include "core/suppliers/KFileSupplier.h"
#include "core/suppliers/KHTTPSupplier.h"
#include "core/suppliers/KIStreamSupplier.h"

namespace corvix {

namespace {

constexpr FactoryRow kObjects[] = {
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
