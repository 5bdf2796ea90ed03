#include "xvt/motif/marks.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numeric>

namespace xvt {

namespace {

struct Rgb {
  double red;
  double green;
  double blue;
};

struct Point {
  double x;
  double y;
};

constexpr Rgb kBorder{0xa9, 0xb2, 0xbd};
constexpr Rgb kPaper{0xff, 0xff, 0xff};
constexpr Rgb kPrimary{0x2f, 0x6f, 0xb3};
constexpr Rgb kDisabled{0xc9, 0xcf, 0xd7};
constexpr Rgb kDisabledPaper{0xf3, 0xf4, 0xf6};
constexpr Rgb kArrow{0x4a, 0x55, 0x63};

Rgb mix(const Rgb& under, const Rgb& over, double part) {
  return {under.red + (over.red - under.red) * part, under.green + (over.green - under.green) * part,
          under.blue + (over.blue - under.blue) * part};
}

/// How much of a pixel an edge at signed distance `inside` (positive: inside) covers.
double coverage(double inside) { return std::clamp(inside + 0.5, 0.0, 1.0); }

/// Distance inside a square with rounded corners around the origin.
double insideRounded(Point at, double half, double radius) {
  const double x = std::abs(at.x) - (half - radius);
  const double y = std::abs(at.y) - (half - radius);
  return radius - std::hypot(std::max(x, 0.0), std::max(y, 0.0)) - std::min(std::max(x, y), 0.0);
}

double insideCircle(Point at, double radius) { return radius - std::hypot(at.x, at.y); }

/// Distance inside a stroke of half width `half` from `a` to `b`.
double insideStroke(Point at, Point a, Point b, double half) {
  const Point along{b.x - a.x, b.y - a.y};
  const double part =
      std::clamp(((at.x - a.x) * along.x + (at.y - a.y) * along.y) / (along.x * along.x + along.y * along.y), 0.0, 1.0);
  return half - std::hypot(at.x - a.x - part * along.x, at.y - a.y - part * along.y);
}

/// `at` counts from the middle, in units of half the picture's size.
Rgb checkAt(Point at, double half, bool set, bool enabled, Rgb under) {
  const double box = half - 0.75;
  const double outer = insideRounded(at, box, half * 0.3);
  const Rgb edge = !enabled ? kDisabled : set ? kPrimary : kBorder;
  under = mix(under, edge, coverage(outer));
  if (!set) return mix(under, enabled ? kPaper : kDisabledPaper, coverage(outer - 1.2));
  const Point low{-0.12 * half, 0.42 * half};
  const double stroke = std::max(insideStroke(at, {-0.5 * half, 0.02 * half}, low, 0.13 * half),
                                 insideStroke(at, low, {0.52 * half, -0.4 * half}, 0.13 * half));
  return mix(under, kPaper, coverage(stroke));
}

Rgb radioAt(Point at, double half, bool set, bool enabled, Rgb under) {
  const double outer = insideCircle(at, half - 0.75);
  const Rgb edge = !enabled ? kDisabled : set ? kPrimary : kBorder;
  under = mix(under, edge, coverage(outer));
  if (!set) return mix(under, enabled ? kPaper : kDisabledPaper, coverage(outer - 1.2));
  return mix(under, kPaper, coverage(insideCircle(at, 0.36 * half)));
}

Rgb arrowAt(Point at, double half, bool enabled, Rgb under) {
  const Point tip{0, 0.25 * half};
  const double stroke = std::max(insideStroke(at, {-0.5 * half, -0.25 * half}, tip, 0.1 * half),
                                 insideStroke(at, tip, {0.5 * half, -0.25 * half}, 0.1 * half));
  return mix(under, enabled ? kArrow : kDisabled, coverage(stroke));
}

unsigned long channel(double value, unsigned long mask) {
  if (mask == 0) return 0;
  const unsigned long lowest = mask & (~mask + 1);
  const auto top = static_cast<double>(mask) / static_cast<double>(lowest);
  return static_cast<unsigned long>(std::lround(value / 255.0 * top)) * lowest;
}

double level(unsigned long pixel, unsigned long mask) {
  return mask == 0 ? 0 : static_cast<double>(pixel & mask) / static_cast<double>(mask) * 255.0;
}

struct ImageCloser {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

}  // namespace

Marks::~Marks() {
  for (const auto& [key, pixmap] : pictures_) XFreePixmap(display_, pixmap);
}

Pixmap Marks::picture(Mark mark, bool set, bool enabled, Pixel ground) {
  const auto key = std::make_tuple(mark, set, enabled, ground);
  const auto known = pictures_.find(key);
  if (known != pictures_.end()) return known->second;
  const int screen = DefaultScreen(display_);
  Visual* visual = DefaultVisual(display_, screen);
  const auto side = static_cast<unsigned>(size_);
  const auto depth = static_cast<unsigned>(DefaultDepth(display_, screen));
  const Pixmap pixmap = XCreatePixmap(display_, RootWindow(display_, screen), side, side, depth);
  std::unique_ptr<XImage, ImageCloser> image(XGetImage(display_, pixmap, 0, 0, side, side, AllPlanes, ZPixmap));
  const Rgb under{level(ground, visual->red_mask), level(ground, visual->green_mask), level(ground, visual->blue_mask)};
  const double half = size_ / 2.0;
  for (int y = 0; y < size_; ++y)
    for (int x = 0; x < size_; ++x) {
      const Point at{x + 0.5 - half, y + 0.5 - half};
      const Rgb color = mark == Mark::check   ? checkAt(at, half, set, enabled, under)
                        : mark == Mark::radio ? radioAt(at, half, set, enabled, under)
                                              : arrowAt(at, half, enabled, under);
      XPutPixel(image.get(), x, y,
                channel(color.red, visual->red_mask) | channel(color.green, visual->green_mask) |
                    channel(color.blue, visual->blue_mask));
    }
  GC gc = XCreateGC(display_, pixmap, 0, nullptr);
  XPutImage(display_, pixmap, gc, image.get(), 0, 0, 0, 0, side, side);
  XFreeGC(display_, gc);
  pictures_[key] = pixmap;
  return pixmap;
}

}  // namespace xvt
