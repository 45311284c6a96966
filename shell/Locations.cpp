#include "shell/Locations.h"

#include "core/baselib/system/KernelFile_p.h"
#include "core/suppliers/FileLocation.h"
#include "shell/DeclaredObjects_p.h"

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
  if (!location) return name;
  if (isPath(location)) return name + L"file";
  const UrlRecord url{std::wstring_view(location)};
  for (const wchar_t c : url.part(UrlPart::Scheme)) {
    name += c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c | 0x20) : c;
  }
  return name;
}

IBStream* openLocation(IPluginManager& manager, const wchar_t* location) {
  if (!location) return nullptr;
  const WideString absolute = isPath(location) ? locationOfAnyPath(location) : WideString(location);
  IBStream* stream = nullptr;
  const auto ask = [&](IBSupplier& supplier, IPluginInterface&) {
    if (supplier.setLocation(absolute.c_str())) stream = supplier.open(supply::kRead);
    return !stream;
  };
  forEachDeclared<IBSupplier>(manager, supplierNameOf(location).c_str(), ask);
  return stream;
}

}  // namespace corvix
