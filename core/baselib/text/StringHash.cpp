#include "core/baselib/text/StringHash.h"

namespace corvix {

const u32 StringMixNumber[16] = {
    text::kMixNumbers[0],  text::kMixNumbers[1],  text::kMixNumbers[2],  text::kMixNumbers[3],
    text::kMixNumbers[4],  text::kMixNumbers[5],  text::kMixNumbers[6],  text::kMixNumbers[7],
    text::kMixNumbers[8],  text::kMixNumbers[9],  text::kMixNumbers[10], text::kMixNumbers[11],
    text::kMixNumbers[12], text::kMixNumbers[13], text::kMixNumbers[14], text::kMixNumbers[15],
};

}  // namespace corvix
