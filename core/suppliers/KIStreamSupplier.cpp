#include "core/suppliers/KIStreamSupplier_p.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/suppliers/RegisteredStreams.h"

#include <map>
#include <string>

namespace corvix {

namespace {

struct Registered {
  SCriticalSection lock;
  std::map<std::wstring, Ref<IBStream>, std::less<>> streams;
};

Registered& registered() {
  static Registered* const all = new Registered;  // what is registered may be gone when static objects go
  return *all;
}

// "istream:name" and "istream://name" say the same.
WideString nameIn(const UrlRecord& url) {
  const std::wstring name =
      std::wstring(url.value(UrlPart::Authority).view()) + std::wstring(url.value(UrlPart::Path).view());
  return name;
}

}  // namespace

bool registerStream(const wchar_t* name, IBStream* stream) {
  if (!name || !*name || (stream && !query<BInputStream>(stream))) return false;
  Ref<IBStream> former;  // let go outside the lock
  const SCriticalSection::Lock lock(registered().lock);
  auto& streams = registered().streams;
  if (stream) {
    Ref<IBStream>& kept = streams[name];
    former = kept;
    kept = Ref<IBStream>::share(stream);
  } else if (const auto found = streams.find(std::wstring_view(name)); found != streams.end()) {
    former = found->second;
    streams.erase(found);
  }
  return true;
}

bool KIStreamSupplier::setLocation(const wchar_t* location) {
  if (!location) return false;
  url_.parse(location);
  return true;
}

IBStream* KIStreamSupplier::open(u32 flags, const wchar_t* relative, i32 start, i32 length) {
  const UrlRecord url = relative ? url_.resolve(relative) : url_;
  if (!url.isScheme(L"istream") || (flags & supply::kWrite)) return nullptr;
  if (start != supply::kWholeResource || length != supply::kWholeResource) return nullptr;
  const WideString name = nameIn(url);
  const SCriticalSection::Lock lock(registered().lock);
  const auto found = registered().streams.find(name.view());
  if (found == registered().streams.end()) return nullptr;
  auto* const random = corvix::query<BRAInputStream>(found->second.get());
  if (IBStream* const own = random ? random->clone() : nullptr) return own;
  return Ref<IBStream>(found->second).detach();
}

}  // namespace corvix
