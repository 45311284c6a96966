#include "plugins/format-image/ImageDocument_p.h"

#include <algorithm>
#include <memory>

#include <windows.h>
#include <objidl.h>
#include <shlwapi.h>

namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include <gdiplus.h>
#pragma GCC diagnostic pop

namespace corvix {

namespace {

using Encoded = std::vector<u8, HeapAllocator<u8>>;

constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr CLSID kBmpEncoder = {0x557CF400, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

// GDI+, as long as it lives; what is made of it goes before.
class Session {
 public:
  Session() {
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) token_ = 0;
  }
  ~Session() {
    if (token_) Gdiplus::GdiplusShutdown(token_);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  explicit operator bool() const noexcept { return token_ != 0; }

 private:
  ULONG_PTR token_ = 0;
};

struct ReleaseStream {
  void operator()(IStream* stream) const noexcept { stream->Release(); }
};
using MemoryStream = std::unique_ptr<IStream, ReleaseStream>;

MemoryStream newStream() {
  IStream* stream = nullptr;
  return MemoryStream(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &stream)) ? stream : nullptr);
}

using Bitmap = std::unique_ptr<Gdiplus::Bitmap>;

bool isWhole(const Bitmap& bitmap) { return bitmap && bitmap->GetLastStatus() == Gdiplus::Ok; }

// By Exif's count, how an image is turned for the eye and flipped then. Of both in one step by a quarter, Wine and
// Microsoft's documentation say different things.
constexpr struct {
  Gdiplus::RotateFlipType turn, flip;
} kTurns[] = {{Gdiplus::RotateNoneFlipNone, Gdiplus::RotateNoneFlipNone},
              {Gdiplus::RotateNoneFlipNone, Gdiplus::RotateNoneFlipX},
              {Gdiplus::Rotate180FlipNone, Gdiplus::RotateNoneFlipNone},
              {Gdiplus::RotateNoneFlipNone, Gdiplus::RotateNoneFlipY},
              {Gdiplus::Rotate90FlipNone, Gdiplus::RotateNoneFlipX},
              {Gdiplus::Rotate90FlipNone, Gdiplus::RotateNoneFlipNone},
              {Gdiplus::Rotate270FlipNone, Gdiplus::RotateNoneFlipX},
              {Gdiplus::Rotate270FlipNone, Gdiplus::RotateNoneFlipNone}};
constexpr u32 kFirstOnItsSide = 5;

// Of the bytes. That of CreateStreamOnHGlobal reads wild memory under Wine when a damaged file sends decoders behind
// its end.
MemoryStream streamOf(const u8* bytes, u32 count) { return MemoryStream(SHCreateMemStream(bytes, count)); }

// The stream lives as long as the bitmap.
Bitmap bitmapOf(IStream& stream) { return Bitmap(Gdiplus::Bitmap::FromStream(&stream)); }

bool turn(Gdiplus::Bitmap& bitmap, u32 orientation) {
  const auto& [turn, flip] = kTurns[orientation - 1];
  return (turn == Gdiplus::RotateNoneFlipNone || bitmap.RotateFlip(turn) == Gdiplus::Ok) &&
         (flip == Gdiplus::RotateNoneFlipNone || bitmap.RotateFlip(flip) == Gdiplus::Ok);
}

bool save(Gdiplus::Bitmap& bitmap, ImageKind kind, Encoded& bytes) {
  const MemoryStream stream = newStream();
  STATSTG state = {};
  if (!stream ||
      bitmap.Save(stream.get(), kind == ImageKind::Png ? &kPngEncoder : &kBmpEncoder, nullptr) != Gdiplus::Ok ||
      FAILED(stream->Stat(&state, STATFLAG_NONAME)) || state.cbSize.QuadPart > ImageDocument::kMostBytes ||
      FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr)))
    return false;
  bytes.resize(static_cast<std::size_t>(state.cbSize.QuadPart));
  ULONG got = 0;
  return SUCCEEDED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &got)) && got == bytes.size();
}

}  // namespace

const wchar_t* ImageDocument::read() {
  ImageHead head;
  if (!readImageHead(kind_, bytes_.get(), count_, head)) return L"its head is damaged";
  orientation_ = head.orientation;
  if (u64{head.size.width} * head.size.height > kMostPixels) return L"it has more than 64 million pixels";
  const Session session;
  const MemoryStream stream = streamOf(bytes_.get(), count_);
  const Bitmap bitmap = session && stream ? bitmapOf(*stream) : nullptr;
  if (!isWhole(bitmap)) return L"it is damaged, or of a kind that the system cannot decode";
  const UINT frames = kind_ == ImageKind::Tiff ? bitmap->GetFrameCount(&Gdiplus::FrameDimensionPage) : 1;
  for (UINT i = 0; i < std::max(frames, 1u); ++i) {
    if (i && bitmap->SelectActiveFrame(&Gdiplus::FrameDimensionPage, i) != Gdiplus::Ok)
      return L"one of its pages is damaged";
    pages_.push_back({bitmap->GetWidth(), bitmap->GetHeight()});
    if (u64{pages_.back().width} * pages_.back().height > kMostPixels) return L"it has more than 64 million pixels";
    if (orientation_ >= kFirstOnItsSide) std::swap(pages_.back().width, pages_.back().height);
  }
  return pages_[0].width && pages_[0].height ? nullptr : L"there are no pixels in it";
}

bool ImageDocument::pageSize(i32 index, double* width, double* height) const noexcept {
  if (index < 0 || index >= pageCount()) return false;
  const ImageSize& page = pages_[static_cast<std::size_t>(index)];
  if (width) *width = page.width * kPointsPerPixel;
  if (height) *height = page.height * kPointsPerPixel;
  return true;
}

Ref<IAGImage> ImageDocument::decode(i32 index, IAGDC& context) const {
  const Session session;
  const MemoryStream stream = streamOf(bytes_.get(), count_);
  const Bitmap bitmap = session && stream ? bitmapOf(*stream) : nullptr;
  if (!isWhole(bitmap) ||
      (index && bitmap->SelectActiveFrame(&Gdiplus::FrameDimensionPage, static_cast<UINT>(index)) != Gdiplus::Ok) ||
      !turn(*bitmap, orientation_))
    return {};
  const ImageSize& page = pages_[static_cast<std::size_t>(index)];
  const bool hasAlpha = Gdiplus::IsAlphaPixelFormat(bitmap->GetPixelFormat());
  auto image = Ref<IAGImage>::adopt(context.createImage(static_cast<i32>(page.width), static_cast<i32>(page.height),
                                                        hasAlpha ? ColorModel::Argb : ColorModel::Rgb, 0));
  if (!image) return {};
  const Gdiplus::Rect whole(0, 0, image->width(), image->height());
  Gdiplus::BitmapData data = {};
  data.Width = page.width;
  data.Height = page.height;
  data.Stride = image->strideBytes();
  data.PixelFormat = hasAlpha ? PixelFormat32bppARGB : PixelFormat24bppRGB;
  data.Scan0 = image->row(0);
  constexpr UINT kIntoMine = Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf;
  if (bitmap->LockBits(&whole, kIntoMine, data.PixelFormat, &data) != Gdiplus::Ok) return {};
  bitmap->UnlockBits(&data);
  return image;
}

bool ImageDocument::drawPage(i32 index, IAGDC& context, const Matrix& toDevice, IDrawWatch*) {
  if (index < 0 || index >= pageCount()) return false;
  if (index != drawnIndex_) {
    drawn_ = decode(index, context);
    drawnIndex_ = drawn_ ? index : -1;
  }
  if (!drawn_) return false;
  double width = 0, height = 0;
  pageSize(index, &width, &height);
  if (toDevice.b == 0 && toDevice.c == 0 && toDevice.a > 0 && toDevice.d > 0)
    return context.drawImage(drawn_.get(), toDevice.e, toDevice.f, toDevice.a * width, toDevice.d * height);
  return context.drawImageTransformed(drawn_.get(), Matrix::scaling(width, height).then(toDevice));
}

bool ImageDocument::encode(ImageKind kind, Encoded& bytes) const {
  if (kind == kind_) {
    bytes.assign(bytes_.get(), bytes_.get() + count_);
    return true;
  }
  const Session session;
  const MemoryStream stream = streamOf(bytes_.get(), count_);
  const Bitmap bitmap = session && stream ? bitmapOf(*stream) : nullptr;
  return isWhole(bitmap) && turn(*bitmap, orientation_) && save(*bitmap, kind, bytes);
}

bool encodeImage(IAGImage& image, ImageKind kind, Encoded& bytes) {
  const Session session;
  if (!session) return false;
  const bool hasAlpha = image.colorModel() == ColorModel::Argb;
  const Bitmap bitmap(new Gdiplus::Bitmap(image.width(), image.height(), image.strideBytes(),
                                          hasAlpha ? PixelFormat32bppARGB : PixelFormat24bppRGB, image.row(0)));
  return isWhole(bitmap) && save(*bitmap, kind, bytes);
}

}  // namespace corvix
