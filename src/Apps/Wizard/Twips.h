// The wizard's unit of length on a screen.
#pragma once

#include <QWidget>
#include <cmath>

namespace vorlent::wizard {

inline constexpr double kTwipsPerInch = 1440;

inline int ToPixels(int twips, const QWidget& widget) {
  return static_cast<int>(std::lround(twips * widget.logicalDpiX() / kTwipsPerInch));
}

inline int ToTwips(int pixels, const QWidget& widget) {
  return static_cast<int>(std::lround(pixels * kTwipsPerInch / widget.logicalDpiX()));
}

}  // namespace vorlent::wizard
