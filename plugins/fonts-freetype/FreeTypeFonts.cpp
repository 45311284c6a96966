// Fonts that documents bring along: TrueType, CFF, Type 1 and CID, each read from memory by FreeType.
#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/text/WideString.h"
#include "descriptor.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/fonts/FontKeeper.h"
#include "graphics/fonts/FontProgram.h"
#include "plugins/fonts-freetype/FreeTypeFace_p.h"
#include "shell/Plugin.h"

#include <string>
#include <unordered_map>

namespace corvix {

namespace {

constexpr u32 kMostBytes = 64u << 20;  // of a file
constexpr std::size_t kMostAdvances = 0x4000;

std::wstring fromAscii(const char* text) {
  std::wstring wide;
  for (; *text; ++text) wide += *text > 0 ? static_cast<wchar_t>(*text) : L'?';
  return wide;
}

// The whole stream; empty when it is longer than a font may be, or cannot be read from its beginning.
HeapBuffer<u8> readAll(IBStream& stream, u32& count) {
  auto* const input = query<BInputStream>(&stream);
  auto* const seekable = query<IBRAStream>(&stream);
  if (!input || !(seekable ? seekable->seek(0) : stream.getPosition() == 0)) return {};
  const u32 size = stream.size();
  const bool isKnown = size != IBStream::kUnknownSize;
  if (isKnown && size > kMostBytes) return {};
  HeapBuffer<u8> bytes;
  u32 room = isKnown ? size + 1 : 64 * 1024;  // one more shows the end
  for (count = 0;;) {
    if (!bytes.tryResize(room)) return {};
    count += readFully(*input, bytes.get() + count, room - count);
    if (count < room) return bytes;
    if (room > kMostBytes) return {};
    room *= 2;
  }
}

}  // namespace

class FreeTypeFont final : public IFMFont, public IFMFontSource, public IFMFontProgram, public IFMFontKeeper {
  CORVIX_IDENTITY(FreeTypeFont, 0x5B773B21, 0x4B486E70, 0xCF42C309, 0x3B1BC9AB, IFMFont, IFMFontSource, IFMFontProgram,
                  IFMFontKeeper)

 public:
  FreeTypeFont(std::unique_ptr<FreeTypeFace> face, const wchar_t* family)
      : face_(std::move(face)),
        family_(face_->family() ? fromAscii(face_->family())
                : family        ? family
                                : L"") {}

  const wchar_t* family() const noexcept override { return family_.c_str(); }
  bool isSubstitute() const noexcept override { return false; }

  FontMetrics metrics() override { return face_->metrics(); }
  u32 glyphOf(u32 codePoint) override { return face_->glyphOf(codePoint); }
  double advance(u32 glyph) override {
    const auto known = advances_.find(glyph);
    if (known != advances_.end()) return known->second;
    if (advances_.size() >= kMostAdvances) advances_.clear();
    return advances_.emplace(glyph, face_->advance(glyph)).first->second;
  }
  bool outline(u32 glyph, IGlyphSink& sink) override { return face_->outline(glyph, sink); }
  bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) override {
    return face_->coverage(glyph, sizePx, levels, coverage);
  }

  u32 glyphCount() override { return face_->glyphCount(); }
  u32 glyphOfCode(u32 code) override { return face_->glyphOfCode(code); }
  u32 glyphOfName(const char* name) override { return face_->glyphOfName(name); }

  IBSmartObject* kept() override { return kept_.get(); }
  void keep(IBSmartObject* object) override { kept_ = Ref<IBSmartObject>::share(object); }

 private:
  std::unique_ptr<FreeTypeFace> face_;
  WideString family_;
  std::unordered_map<u32, double> advances_;
  Ref<IBSmartObject> kept_;
};

class FreeTypeCreator final : public BSmartObject, public IFMFontCreator, public IFMFontFinder {
  CORVIX_IDENTITY(FreeTypeCreator, 0xC2316EB1, 0x6D92187D, 0x45C5FBF1, 0x9CBBA94A, BSmartObject, IFMFontCreator,
                  IFMFontFinder)

 public:
  IFMFont* createFont(const wchar_t*) override { return nullptr; }
  IFMFont* fontWithGlyph(u32, IFMFont*) override { return nullptr; }

  IFMFont* createFontFor(const FontRequest& request) override {
    if (!request.program) return nullptr;
    u32 count = 0;
    HeapBuffer<u8> bytes = readAll(*request.program, count);
    auto face = bytes ? FreeTypeFace::open(std::move(bytes), count) : nullptr;
    return face ? make<FreeTypeFont>(std::move(face), request.family).detach() : nullptr;
  }
};

}  // namespace corvix

CORVIX_PLUGIN(corvix::rowFor<descriptor::FontCreator_FreeType, corvix::FreeTypeCreator>())
