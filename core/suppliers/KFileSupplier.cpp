#include "core/suppliers/KFileSupplier_p.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/FileInputStream.h"
#include "core/suppliers/FileLocation.h"

#include <algorithm>

namespace corvix {

namespace {

std::wstring withSlashes(const wchar_t* text) {
  std::wstring result(text);
  std::replace(result.begin(), result.end(), L'\\', L'/');
  return result;
}

}  // namespace

bool KFileSupplier::setLocation(const wchar_t* location) {
  if (!location) return false;
  // Dots are resolved here as in what is relative.
  url_ = UrlRecord().resolve(withSlashes(location));
  return true;
}

IBStream* KFileSupplier::open(u32 flags, const wchar_t* relative, i32 start, i32 length) {
  const WideString path = pathOfLocation(relative ? url_.resolve(withSlashes(relative)) : url_);
  if (path.empty() || (flags & supply::kWrite) || start < supply::kWholeResource || length < supply::kWholeResource)
    return nullptr;
  auto stream = make<BFileInputStream>();
  const u32 from = start == supply::kWholeResource ? 0 : static_cast<u32>(start);
  const u32 most = length == supply::kWholeResource ? IBStream::kUnknownSize : static_cast<u32>(length);
  return stream->open(path.c_str(), from, most) ? stream.detach() : nullptr;
}

}  // namespace corvix
