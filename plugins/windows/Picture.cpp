#include "plugins/windows/Picture.h"

#include "graphics/IAGDCCreator.h"
#include "plugins/windows/Windows.h"

#include <vector>

namespace corvix::windows {

namespace {

class Canvas {
 public:
  Canvas(IPluginManager& manager, int width, int height) : width_(width), height_(height) {
    const auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
    if (creator) context_ = Ref<IAGDC>::adopt(creator->create(0, 0, nullptr, width, height));
  }

  void add(HDC device, int x, int y, int width, int height) {
    if (context_) BitBlt(static_cast<HDC>(context_->deviceContext()), x, y, width, height, device, 0, 0, SRCCOPY);
  }

  bool save(const wchar_t* file) const {
    if (!context_) return false;
    const auto image = Ref<IAGImage>::adopt(context_->createImage(width_, height_, ColorModel::Rgb, 0));
    return image && image->captureFrom(*context_, 0, 0) && image->saveFile(file, ImageFile::Png);
  }

 private:
  int width_, height_;
  Ref<IAGDC> context_;
};

BOOL CALLBACK collect(HWND window, LPARAM list) {
  if (IsWindowVisible(window)) reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

}  // namespace

bool saveInside(IPluginManager& manager, HWND window, const wchar_t* pngFile) {
  const RECT area = clientOf(window);
  Canvas canvas(manager, area.right, area.bottom);
  const HDC device = GetDC(window);
  canvas.add(device, 0, 0, area.right, area.bottom);
  ReleaseDC(window, device);
  return canvas.save(pngFile);
}

bool saveWithAllOver(IPluginManager& manager, HWND window, const wchar_t* pngFile) {
  std::vector<HWND> windows;
  EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(&windows));
  RECT whole = {};
  GetWindowRect(window, &whole);
  Canvas canvas(manager, widthOf(whole), heightOf(whole));
  const auto add = [&](HWND one) {
    RECT area = {};
    GetWindowRect(one, &area);
    const HDC device = GetWindowDC(one);
    canvas.add(device, area.left - whole.left, area.top - whole.top, widthOf(area), heightOf(area));
    ReleaseDC(one, device);
  };
  add(window);
  for (auto at = windows.rbegin(); at != windows.rend(); ++at) {  // the topmost was first
    if (*at != window) add(*at);
  }
  return canvas.save(pngFile);
}

}  // namespace corvix::windows
