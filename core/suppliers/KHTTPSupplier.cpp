#include "core/suppliers/KHTTPSupplier_p.h"

#include "core/suppliers/InternetInputStream_p.h"

namespace corvix {

bool KHTTPSupplier::setLocation(const wchar_t* location) {
  if (!location) return false;
  url_.parse(location);
  return true;
}

IBStream* KHTTPSupplier::open(u32 flags, const wchar_t* relative, i32 start, i32 length) {
  const UrlRecord url = relative ? url_.resolve(relative) : url_;
  if (!url.isScheme(L"http") || (flags & supply::kWrite)) return nullptr;
  if (start != supply::kWholeResource || length != supply::kWholeResource) return nullptr;
  return new InternetInputStream(url);
}

}  // namespace corvix
