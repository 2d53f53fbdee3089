// The wizard's unit of length on the screen of a window, and in the measures of OLE.
#pragma once

#include <cmath>

#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

inline constexpr int kTwipsPerInch = 1440;
inline constexpr int kHimetricPerInch = 2540;

// Dots to the inch where the window is; systems before Windows 10 have one number for all windows.
inline int DpiOf(HWND window) {
  using Function = UINT(WINAPI*)(HWND);
  static const auto getDpi = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const UINT known = getDpi == nullptr ? 0 : getDpi(window);
  if (known != 0) return static_cast<int>(known);
  const HDC screen = GetDC(window);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(window, screen);
  return dpi;
}

inline int ToPixels(int twips, int dpi) {
  return static_cast<int>(std::lround(static_cast<double>(twips) * dpi / kTwipsPerInch));
}
inline int ToTwips(int pixels, int dpi) {
  return static_cast<int>(std::lround(static_cast<double>(pixels) * kTwipsPerInch / dpi));
}
inline LONG ToHimetric(int twips) {
  return static_cast<LONG>(std::lround(static_cast<double>(twips) * kHimetricPerInch / kTwipsPerInch));
}

}  // namespace vorlent::com
