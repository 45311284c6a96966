// The table of the decoders: a row for each method, with its names in documents and what unpacks it. A new decoder is
// its class, a number in PackMethod and a row here.
#pragma once

#include "core/suppliers/decoding/PackDecodeStream.h"

namespace corvix {

struct DecoderRow {
  PackMethod method;
  std::wstring_view name;
  std::wstring_view shortName;
  bool hasPredictor;  // image data packed with it may have had one
  PackDecodeStream* (*make)(Ref<BInputStream> packed, const PackParams& parameters);
};

// Null when there is none: nothing is unpacked, or nobody knows the name.
const DecoderRow* decoderOf(PackMethod method) noexcept;
const DecoderRow* decoderNamed(std::wstring_view name) noexcept;

}  // namespace corvix
