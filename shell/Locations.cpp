#include "shell/Locations.h"

#include "core/baselib/system/KernelFile.h"
#include "core/suppliers/FileLocation.h"

namespace corvix {

namespace {

WideString locationOfAnyPath(const wchar_t* path) {
  const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
  std::wstring absolute(size, 0);
  const DWORD length = size ? GetFullPathNameW(path, size, absolute.data(), nullptr) : 0;
  absolute.resize(length < size ? length : 0);
  return locationOfPath(absolute);
}

}  // namespace

WideString supplierNameOf(const wchar_t* location) {
  std::wstring name = L"Supplier.";
  if (isPath(location)) return name + L"file";
  const UrlRecord url{std::wstring_view(location)};
  for (const wchar_t c : url.part(UrlPart::Scheme)) {
    name += c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c | 0x20) : c;
  }
  return name;
}

IBStream* openLocation(IPluginManager& manager, const wchar_t* location) {
  const auto entries = Ref<IBCollection>::adopt(manager.findByName(supplierNameOf(location).c_str()));
  if (!entries) return nullptr;
  const WideString absolute = isPath(location) ? locationOfAnyPath(location) : WideString(location);
  for (i32 i = 0; i < entries->count(); ++i) {
    const auto supplier =
        Ref<IBSmartObject>::adopt(query<IPluginInterface>(entries->item(i))->createObject()).as<IBSupplier>();
    if (!supplier || !supplier->setLocation(absolute.c_str())) continue;
    if (IBStream* const stream = supplier->open(supply::kRead)) return stream;
  }
  return nullptr;
}

}  // namespace corvix
