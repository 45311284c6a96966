// Images through the system's decoders; PNG and bitmaps are written, too, of any document that has pages.
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/StreamCopy.h"
#include "descriptor.h"
#include "graphics/IAGDCCreator.h"
#include "plugins/format-image/ImageDocument_p.h"
#include "shell/DeclaredRow.h"
#include "shell/Plugin.h"
#include "shell/documents/DocFormat.h"
#include "shell/services/Report.h"

#include <cmath>

namespace corvix {

namespace {

class ImageFormat : public BSmartObject, public IDocFormat {
  CORVIX_IDENTITY(ImageFormat, 0x445694E1, 0xE9445A20, 0xCCBEBEA0, 0x381964B1, BSmartObject, IDocFormat)

 public:
  ImageFormat(ImageKind kind, const wchar_t* name) noexcept : kind_(kind), name_(name) {}

  const wchar_t* name() const noexcept override { return name_; }

  i32 probe(IBStream* stream) override {
    u8 beginning[4] = {};
    BInputStream* const from = query<BInputStream>(stream);
    if (!from || readFully(*from, beginning, sizeof beginning) != sizeof beginning) return 0;
    constexpr u8 kBeginnings[][3] = {{0x89, 'P', 'N'}, {'B', 'M', 0}, {0xFF, 0xD8, 0xFF}, {'I', 'I', 42}};
    const u8* const wanted = kBeginnings[static_cast<i32>(kind_)];
    if (kind_ == ImageKind::Tiff) return beginning[0] == 'M' || beginning[0] == 'I' ? 200 : 0;
    return beginning[0] == wanted[0] && beginning[1] == wanted[1] && (!wanted[2] || beginning[2] == wanted[2]) ? 255
                                                                                                               : 0;
  }

  IBSmartObject* readDocument(IBStream* stream, IBReport* report) override {
    BInputStream* const from = query<BInputStream>(stream);
    const auto read = make<BMemoryOutputStream>(ImageDocument::kMostBytes);
    if (!from || copy(*from, *read).end != CopyEnd::Done) return fail(report, L"it is too large"), nullptr;
    const u32 count = read->size();
    auto document = make<ImageDocument>(kind_, HeapBuffer<u8>(read->detach()), count);
    const wchar_t* const why = document->read();
    if (why) fail(report, why);
    return why ? nullptr : document.detach();
  }

  bool writeDocument(IDocument* document, IBStream* stream, IBReport* report) override {
    IPagedDocument* const paged = query<IPagedDocument>(document);
    BOutputStream* const to = query<BOutputStream>(stream);
    if (!paged || paged->pageCount() < 1 || !to) return fail(report, L"the document has no pages");
    std::vector<u8, HeapAllocator<u8>> bytes;
    const ImageDocument* const own = query<ImageDocument>(document);
    if (!(own ? own->encode(kind_, bytes) : draw(*paged, bytes)))
      return fail(report, L"its first page cannot be drawn");
    if (paged->pageCount() > 1) fail(report, L"only the first page was written: such files have one");
    return to->write(bytes.data(), static_cast<u32>(bytes.size())) == bytes.size();
  }

  IBSmartObject* createDocument() override { return nullptr; }

 private:
  bool fail(IBReport* report, const wchar_t* why) const {
    report->addLine((name_ + std::wstring(L": ") + why).c_str());
    return false;
  }

  // As large as it is on a screen of 96 pixels to the inch.
  bool draw(IPagedDocument& document, std::vector<u8, HeapAllocator<u8>>& bytes) const {
    constexpr double kPixelsPerPoint = 1 / ImageDocument::kPointsPerPixel;
    double width = 0, height = 0;
    if (!document.pageSize(0, &width, &height)) return false;
    width = std::ceil(width * kPixelsPerPoint);
    height = std::ceil(height * kPixelsPerPoint);
    if (!(width >= 1 && height >= 1 && width * height <= static_cast<double>(ImageDocument::kMostPixels))) return false;
    const auto creator = createObject<IAGDCCreator>(*IShell::getInstance()->pluginManager(), L"AGDC.Memory");
    const auto page =
        Ref<IAGDC>::adopt(creator ? creator->create(0, capability::kGdiPlus, nullptr, width, height) : nullptr);
    if (!page || !page->clear() ||
        !document.drawPage(0, *page, Matrix::scaling(kPixelsPerPoint, kPixelsPerPoint), nullptr))
      return false;
    const auto image =
        Ref<IAGImage>::adopt(page->createImage(static_cast<i32>(width), static_cast<i32>(height), ColorModel::Rgb, 0));
    return image && image->captureFrom(*page, 0, 0) && encodeImage(*image, kind_, bytes);
  }

  const ImageKind kind_;
  const wchar_t* const name_;
};

#define CORVIX_IMAGE_FORMAT(Kind, name)                                               \
  class Kind##Format final : public ImageFormat {                                     \
    CORVIX_DECLARED_IDENTITY(Kind##Format, descriptor::DocFormat_##Kind, ImageFormat) \
                                                                                      \
   public:                                                                            \
    Kind##Format() noexcept : ImageFormat(ImageKind::Kind, name) {}                   \
  };
CORVIX_IMAGE_FORMAT(Png, L"PNG image")
CORVIX_IMAGE_FORMAT(Bmp, L"Bitmap")
CORVIX_IMAGE_FORMAT(Jpeg, L"JPEG image")
CORVIX_IMAGE_FORMAT(Tiff, L"TIFF image")
#undef CORVIX_IMAGE_FORMAT

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN(corvix::rowFor<descriptor::DocFormat_Png, corvix::PngFormat>(),
              corvix::rowFor<descriptor::DocFormat_Bmp, corvix::BmpFormat>(),
              corvix::rowFor<descriptor::DocFormat_Jpeg, corvix::JpegFormat>(),
              corvix::rowFor<descriptor::DocFormat_Tiff, corvix::TiffFormat>())
