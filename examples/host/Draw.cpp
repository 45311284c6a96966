#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Page.h"

namespace host {

using namespace corvix;

namespace {

int drawToFile(IPluginManager& manager, const std::string& file) {
  constexpr int kWidth = kPageCount * kPageWidth;
  const auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
  const auto all = Ref<IAGDC>::adopt(creator ? creator->create(0, 0, nullptr, kWidth, kPageHeight) : nullptr);
  if (!all) {
    std::fprintf(stderr, "corvix-host: no drawing context could be made (\"AGDC.Memory\").\n");
    return 1;
  }
  all->setStrokeColor(rgb(150, 156, 168));
  int x = 0;
  for (const PageKind& kind : kPageKinds) {
    PageResult result;
    const Ref<IAGDC> page = makePage(manager, kind, result);
    if (page) {
      page->copyTo(all->deviceContext(), x, 0);
      std::printf("  %-9ls  %d of %d cells drawn\n", kind.title, result.cells - result.refused, result.cells);
    } else {
      std::printf("  %-9ls  not there: no plug-in offers \"%ls\"\n", kind.title, kind.creator);
    }
    x += kPageWidth;
    if (x < kWidth) all->line(x, 0, x, kPageHeight);
  }
  const auto image = Ref<IAGImage>::adopt(all->createImage(kWidth, kPageHeight, ColorModel::Rgb, 0));
  if (!image || !image->captureFrom(*all, 0, 0) || !image->saveFile(wide(file).c_str(), ImageFile::Png)) {
    std::fprintf(stderr, "corvix-host: %s could not be written. Does its folder exist, and may it be written to?\n",
                 file.c_str());
    return 1;
  }
  std::printf("  %s written, %d by %d pixels\n", file.c_str(), image->width(), image->height());
  return 0;
}

}  // namespace

const Command drawCommand("draw", "Draw a test page on every kind of context into a PNG file",
                          {{"FILE.png", "The file to write"}},
                          [](Host& host, const Texts& given) { return drawToFile(host.manager(), given[0]); });

}  // namespace host
