#include "core/suppliers/decoding/DecoderTable_p.h"

#include "core/suppliers/decoding/Decoders_p.h"
#include "core/suppliers/decoding/PackFlateInputStream.h"

#include <algorithm>

namespace corvix {

namespace {

template <class Decoder>
PackDecodeStream* make(Ref<BInputStream> packed, const PackParams&) {
  return new Decoder(std::move(packed));
}

PackDecodeStream* makeLzw(Ref<BInputStream> packed, const PackParams& parameters) {
  return new LzwInputStream(std::move(packed), parameters.earlyChange);
}

constexpr DecoderRow kDecoders[] = {
    {PackMethod::Flate, L"FlateDecode", L"Fl", true, make<PackFlateInputStream>},
    {PackMethod::Lzw, L"LZWDecode", L"LZW", true, makeLzw},
    {PackMethod::RunLength, L"RunLengthDecode", L"RL", false, make<RunLengthInputStream>},
    {PackMethod::AsciiHex, L"ASCIIHexDecode", L"AHx", false, make<AsciiHexInputStream>},
    {PackMethod::Ascii85, L"ASCII85Decode", L"A85", false, make<Ascii85InputStream>},
};

template <class Condition>
const DecoderRow* first(Condition condition) noexcept {
  const auto* const found = std::find_if(std::begin(kDecoders), std::end(kDecoders), condition);
  return found == std::end(kDecoders) ? nullptr : found;
}

}  // namespace

const DecoderRow* decoderOf(PackMethod method) noexcept {
  return first([method](const DecoderRow& row) { return row.method == method; });
}

const DecoderRow* decoderNamed(std::wstring_view name) noexcept {
  return first([name](const DecoderRow& row) { return row.name == name || row.shortName == name; });
}

}  // namespace corvix
