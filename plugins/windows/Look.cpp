#include "plugins/windows/Look.h"

#include "plugins/windows/Windows.h"

namespace corvix::windows {

namespace {

int systemDpi(HDC device) { return GetDeviceCaps(device, LOGPIXELSY); }

int dpiOf(HWND window, HDC device) {
  static const auto dpiForWindow = lateFunction<UINT(WINAPI*)(HWND)>(L"user32.dll", "GetDpiForWindow");
  const int dpi = window && dpiForWindow ? static_cast<int>(dpiForWindow(window)) : 0;
  return dpi > 0 ? dpi : systemDpi(device);
}

HFONT messageFont(int dpi, HDC device) {
  static const auto parametersForDpi =
      lateFunction<BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT)>(L"user32.dll", "SystemParametersInfoForDpi");
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  if (!parametersForDpi ||
      !parametersForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, static_cast<UINT>(dpi))) {
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    metrics.lfMessageFont.lfHeight = MulDiv(metrics.lfMessageFont.lfHeight, dpi, systemDpi(device));
  }
  return CreateFontIndirectW(&metrics.lfMessageFont);
}

}  // namespace

Look::Look(HWND window) {
  const HDC device = GetDC(nullptr);
  dpi_ = dpiOf(window, device);
  font_ = messageFont(dpi_, device);
  TEXTMETRICW text = {};
  const HGDIOBJ before = SelectObject(device, font_);
  GetTextMetricsW(device, &text);
  SelectObject(device, before);
  ReleaseDC(nullptr, device);
  lineHeight_ = text.tmHeight + scaled(9);
}

}  // namespace corvix::windows
