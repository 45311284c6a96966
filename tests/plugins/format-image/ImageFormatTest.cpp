// The plug-in format-image, as programs see it.
#include "graphics/IAGDCCreator.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/services/Report.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnPlugin.h"
#include "tests/support/Soak.h"

#include <gtest/gtest.h>

#include <random>

namespace corvix {
namespace {

using namespace testing_support;

// 16 by 8 pixels in red.
constexpr std::string_view kJpeg =
    "FFD8FFE000104A46494600010100000100010000FFDB004300080101010101010101010101010101010101010101010101010101"
    "01010101010101010101010101010101010101010101010101010101010101010101010101FFC000110800080010030111000211"
    "00031100FFC400160001010100000000000000000000000000000607FFC40014100100000000000000000000000000000000FFDA"
    "000C03010002000300003F008B4A37F01FFFD9";

// 16 by 24 pixels: corners of the greys 20, 60, A0, E0, between them 40.
constexpr std::string_view kCorners =
    "FFD8FFDB0043000801010101010101010101010101010101010101010101010101010101010101010101010101010101010101010101010101"
    "01"
    "01010101010101010101010101FFC0000B080018001001011100FFC4001C00000000090000000000000000000000000001020304050607"
    "08FFC40014100100000000000000000000000000000000FFDA0008010100003F0073E78067C07C0780FFD9";

std::string fromHex(std::string_view digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  return bytes;
}

void put(std::string& bytes, u32 value, int count) {
  for (; count; --count, value >>= 8) bytes += static_cast<char>(value & 0xFF);
}

// The same with a segment of Exif that says which way up it is: a tag, its type, how many, its value.
std::string withExif(std::string jpeg, std::string_view entry, bool isBig = false) {
  std::string exif = fromHex(isBig ? "4D4D002A00000008" : "49492A0008000000");
  exif += fromHex(isBig ? "0002" : "0200") + fromHex("010001000100000000000000") + fromHex(entry) + std::string(4, 0);
  const std::string segment = std::string("Exif\0\0", 6) + exif;
  return jpeg.insert(2, "\xFF\xE1" + std::string(1, 0) + static_cast<char>(segment.size() + 2) + segment);
}

// 3 by 2, the lower left pixel green, all others blue.
std::string bmp(u32 width = 3, u32 height = 2) {
  std::string bytes = "BM";
  for (const u32 value : {78u, 0u, 54u, 40u, width, height}) put(bytes, value, 4);
  put(bytes, 1, 2);
  put(bytes, 24, 2);
  for (int i = 0; i < 6; ++i) put(bytes, i == 1 ? 24 : 0, 4);
  for (int pixel = 0; pixel < 6; ++pixel) {
    put(bytes, pixel == 0 ? 0x00FF00 : 0x0000FF, 3);
    if (pixel % 3 == 2) put(bytes, 0, 3);
  }
  return bytes;
}

// Two grey pages of one pixel and of 5 by 1, the second white.
std::string tiff() {
  std::string bytes("II*\0\x08\0\0\0", 8);
  for (const u32 width : {1u, 5u}) {
    const auto start = static_cast<u32>(bytes.size());
    const u32 tags[][3] = {{256, 3, width},       {257, 3, 1}, {258, 3, 8}, {259, 3, 1},    {262, 3, 1},
                           {273, 4, start + 114}, {277, 3, 1}, {278, 3, 1}, {279, 4, width}};
    put(bytes, 9, 2);
    for (const auto& [tag, type, value] : tags) {
      put(bytes, tag, 2);
      put(bytes, type, 2);
      put(bytes, 1, 4);
      put(bytes, value, 4);
    }
    put(bytes, width == 1 ? start + 122 : 0, 4);
    bytes += std::string(width == 1 ? 8 : 5, width == 1 ? '\x40' : '\xFF');
  }
  return bytes;
}

class ImageFormatTest : public testing::Test {
 protected:
  void TearDown() override { closeAll(); }
  void closeAll() {
    while (manager.documentCount()) ASSERT_TRUE(manager.closeDocument(manager.documentAt(0)));
  }
  IDocument* open(const wchar_t* name, const std::string& bytes) {
    std::ofstream(folder.file(name), std::ios::binary) << bytes;
    return manager.openDocument(folder.file(name).c_str());
  }
  std::string report() { return narrow(reportText(*manager.report()).view()); }

  static Ref<IAGDC> canvas() {
    const auto creator = createObject<IAGDCCreator>(*shell().pluginManager(), L"AGDC.Memory");
    auto context = Ref<IAGDC>::adopt(creator->create(0, 0, nullptr, 200, 100));
    context->clear();
    return context;
  }

  // Of a page that is drawn ten times as large.
  static Color colorAt(IDocument* document, i32 page, double x, double y) {
    const auto context = canvas();
    const double scale = 10 / 0.75;
    Color color{};
    EXPECT_TRUE(query<IPagedDocument>(document)->drawPage(page, *context, Matrix::scaling(scale, scale), nullptr));
    EXPECT_TRUE(context->getPixel(static_cast<i32>(x * 10), static_cast<i32>(y * 10), &color));
    return color;
  }

  OwnFolder folder;
  IDocManager& manager = *shell().docManager();
};

TEST_F(ImageFormatTest, ShowsPagesOfEachKind) {
  ASSERT_TRUE(open(L"made.bmp", bmp())) << report();
  ASSERT_TRUE(manager.saveDocumentAs(manager.activeDocument(), folder.file(L"made.png").c_str(), nullptr)) << report();
  const std::string png = bytesOf(folder.file(L"made.png"));
  closeAll();
  const struct {
    const wchar_t* format;
    std::string bytes;
    i32 page, pages;
    double width, height, x, y;  // in pixels; where it is looked at
    u32 color;
  } rows[] = {
      {L"DocFormat.Bmp", bmp(), 0, 1, 3, 2, 0.5, 1.5, 0x00FF00},
      {L"DocFormat.Bmp", bmp(), 0, 1, 3, 2, 1.5, 1.5, 0x0000FF},
      {L"DocFormat.Png", png, 0, 1, 3, 2, 0.5, 1.5, 0x00FF00},
      {L"DocFormat.Png", png, 0, 1, 3, 2, 0.5, 0.5, 0x0000FF},
      {L"DocFormat.Png", png, 0, 1, 3, 2, 4, 0.5, 0xFFFFFF},
      {L"DocFormat.Jpeg", fromHex(kJpeg), 0, 1, 16, 8, 8, 4, 0xFE0000},
      {L"DocFormat.Tiff", tiff(), 0, 2, 1, 1, 0.5, 0.5, 0x404040},
      {L"DocFormat.Tiff", tiff(), 1, 2, 5, 1, 4.5, 0.5, 0xFFFFFF},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(narrow(row.format) + " page " + std::to_string(row.page));
    IDocument* const document = open(L"x.other", row.bytes);  // its beginning tells
    ASSERT_TRUE(document) << report();
    EXPECT_STREQ(document->formatName(), row.format);
    IPagedDocument& paged = *query<IPagedDocument>(document);
    double width = 0, height = 0;
    EXPECT_EQ(paged.pageCount(), row.pages);
    EXPECT_TRUE(paged.pageSize(row.page, &width, &height) && !paged.pageSize(row.pages, &width, &height));
    EXPECT_TRUE(width == row.width * 0.75 && height == row.height * 0.75);
    const Color color = colorAt(document, row.page, row.x, row.y);
    for (const int shift : {0, 8, 16})
      EXPECT_NEAR(int(color >> shift & 255), int(row.color >> shift & 255), 3) << shift;
    if (!document->isReadOnly()) {
      EXPECT_TRUE(manager.saveDocument(document) && bytesOf(document->location()) == row.bytes) << "as it was read";
    }
    closeAll();
  }
}

TEST_F(ImageFormatTest, TurnsPhotographsAsTheySay) {
  const struct {
    const char* entry;
    const char* corners;  // of what is shown: upper left, upper right, lower left, lower right
    bool isBig = false;
  } rows[] = {{"120103000100000001000000", "26AE"},
              {"120103000100000002000000", "62EA"},
              {"120103000100000003000000", "EA62"},
              {"120103000100000004000000", "AE26"},
              {"120103000100000005000000", "2A6E lying"},
              {"120103000100000006000000", "A2E6 lying"},
              {"120103000100000007000000", "E6A2 lying"},
              {"120103000100000008000000", "6E2A lying"},
              {"011200030000000100080000", "6E2A lying", true},
              {"120103000100000000000000", "26AE"},
              {"120103000100000009000000", "26AE"},
              {"120104000100000006000000", "26AE"},
              {"130103000100000006000000", "26AE"}};
  const auto shown = [&](IDocument* document) {
    double width = 0, height = 0;
    query<IPagedDocument>(document)->pageSize(0, &width, &height);
    const auto context = canvas();
    EXPECT_TRUE(query<IPagedDocument>(document)->drawPage(0, *context, Matrix::scaling(4, 4), nullptr));
    std::string corners;
    for (const double y : {1.0, height - 1}) {
      for (const double x : {1.0, width - 1}) {
        Color color{};
        EXPECT_TRUE(context->getPixel(static_cast<i32>(x * 4), static_cast<i32>(y * 4), &color));
        corners += "0123456789ABCDEF"[((color & 255) + 8) >> 4 & 15];
      }
    }
    return corners + (width > height ? " lying" : "");
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.entry);
    ASSERT_TRUE(open(L"x.jpg", withExif(fromHex(kCorners), row.entry, row.isBig))) << report();
    EXPECT_EQ(shown(manager.activeDocument()), row.corners);
    ASSERT_TRUE(manager.saveDocumentAs(manager.activeDocument(), folder.file(L"x.png").c_str(), L"DocFormat.Png"));
    EXPECT_EQ(shown(manager.openDocument(folder.file(L"x.png").c_str())), row.corners) << "saved as it is seen";
    closeAll();
  }
}

TEST_F(ImageFormatTest, WritesTheFirstPageAndSaysSo) {
  ASSERT_TRUE(open(L"x.tif", tiff())) << report();
  EXPECT_TRUE(manager.activeDocument()->isReadOnly());
  EXPECT_TRUE(manager.saveDocumentAs(manager.activeDocument(), folder.file(L"x.png").c_str(), nullptr));
  EXPECT_NE(report().find("only the first page"), std::string::npos);
  EXPECT_FALSE(manager.newDocument(L"DocFormat.Png"));
}

TEST_F(ImageFormatTest, RefusesWhatIsTooLarge) {
  std::string circle = tiff();
  circle.replace(8 + 2 + 9 * 12, 4, std::string("\x08\0\0\0", 4));
  const std::pair<std::string, const char*> rows[] = {
      {bmp(30000, 30000), "more than 64 million pixels"},
      {bmp(3, 0x80000000), "more than 64 million pixels"},
      {fromHex("89504E470D0A1A0A0000000D4948445200010000000100000806000000"), "more than 64 million pixels"},
      {fromHex("89504E470D0A1A0A"), "its head is damaged"},
      {fromHex("FFD8FFE00010"), "its head is damaged"},
      {circle, "its head is damaged"},
  };
  for (const auto& [bytes, why] : rows) {
    const IDocument* const document = open(L"x.q", bytes);
    EXPECT_FALSE(document) << narrow(document->formatName()) << testing::PrintToString(bytes);
    EXPECT_NE(report().find(why), std::string::npos) << report();
  }
}

TEST_F(ImageFormatTest, TakesDamagedFilesOfEachKind) {
  std::string beyond = bmp();
  beyond[13] = 8;  // its pixels lie behind the end of the file
  EXPECT_FALSE(open(L"x.q", beyond));
  EXPECT_NE(report().find("it is damaged"), std::string::npos) << report();
  closeAll();
  std::mt19937 random(7);
  for (const std::string& whole : {bmp(), tiff(), fromHex(kJpeg)}) {
    for (int i = 0; i < soak(60, 5000); ++i) {
      std::string bytes = whole.substr(0, i % 2 ? whole.size() : random() % whole.size());
      for (unsigned n = random() % 4; n && bytes.size() > 4; --n)
        bytes[4 + random() % (bytes.size() - 4)] = static_cast<char>(random());
      IDocument* const document = open(L"x.q", bytes);
      EXPECT_TRUE(document || !report().empty());
      IPagedDocument* const paged = query<IPagedDocument>(document);
      double width = 0, height = 0;
      if (paged && paged->pageSize(0, &width, &height) && width <= 200 && height <= 100) {
        const auto context = canvas();
        for (i32 page = -1; page <= paged->pageCount(); ++page) paged->drawPage(page, *context, Matrix(), nullptr);
      }
      closeAll();
    }
  }
}

}  // namespace
}  // namespace corvix
