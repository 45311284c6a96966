// The heads of image files: a byte that chooses the kind, and the file.
#include "plugins/format-image/ImageHeader_p.h"
#include "tests/fuzz/Fuzz.h"

namespace corvix::fuzz {

void images(Bytes bytes) {
  const auto kind = static_cast<ImageKind>(take(bytes) % 4);
  ImageHead head;
  if (!readImageHead(kind, bytes.data(), static_cast<u32>(bytes.size()), head)) return;
  require(head.orientation >= 1 && head.orientation <= 8, "there are eight ways up");
  require(head.pages >= 1 && head.pages <= 4096, "there are so many pages");
  require(kind == ImageKind::Tiff || head.pages == 1, "one file is one image");
  ImageHead longer;
  const std::basic_string<u8> more = std::basic_string<u8>(bytes) + u8{0xFF};
  require(readImageHead(kind, more.data(), static_cast<u32>(more.size()), longer) &&
              longer.size.width == head.size.width && longer.size.height == head.size.height &&
              longer.orientation == head.orientation,
          "what stands behind the head does not count");
}

}  // namespace corvix::fuzz
