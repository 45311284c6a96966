#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Page.h"
#include "graphics/IAGDCCreator.h"

namespace host {

using namespace corvix;

namespace {

int drawToFile(IPluginManager& manager, const std::string& file) {
  PageResult results[2];
  const Ref<IAGDC> pages[2] = {makePage(manager, false, results[0]), makePage(manager, true, results[1])};
  const auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
  const auto both = Ref<IAGDC>::adopt(creator ? creator->create(0, 0, nullptr, 2 * kPageWidth, kPageHeight) : nullptr);
  if (!pages[0] || !pages[1] || !both) {
    std::fprintf(stderr, "corvix-host: no drawing context could be made (\"AGDC.Memory\").\n");
    return 1;
  }
  for (int i = 0; i < 2; ++i) {
    pages[i]->copyTo(both->deviceContext(), i * kPageWidth, 0);
    std::printf("  %-9s  %d of %d cells drawn\n", i ? "GDI+" : "Plain GDI", results[i].cells - results[i].refused,
                results[i].cells);
  }
  both->setStrokeColor(rgb(150, 156, 168));
  both->line(kPageWidth, 0, kPageWidth, kPageHeight);
  const auto image = Ref<IAGImage>::adopt(both->createImage(2 * kPageWidth, kPageHeight, ColorModel::Rgb, 0));
  if (!image || !image->captureFrom(*both, 0, 0) || !image->saveFile(wide(file).c_str(), ImageFile::Png)) {
    std::fprintf(stderr, "corvix-host: %s could not be written. Does its folder exist, and may it be written to?\n",
                 file.c_str());
    return 1;
  }
  std::printf("  %s written, %d by %d pixels\n", file.c_str(), image->width(), image->height());
  return 0;
}

}  // namespace

const Command drawCommand("draw", "Draw a test page through GDI and GDI+ into a PNG file",
                          {{"FILE.png", "The file to write"}},
                          [](Host& host, const Texts& given) { return drawToFile(host.manager(), given[0]); });

}  // namespace host
