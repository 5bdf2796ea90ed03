#include "xvt/motif/marks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
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

/// What a mark is drawn with.
struct Inks {
  Rgb edge;
  Rgb inside;
  Rgb stroke;
};

Rgb rgbOf(const char* name) {
  const auto value = std::strtoul(name + 1, nullptr, 16);
  return {static_cast<double>(value >> 16 & 0xff), static_cast<double>(value >> 8 & 0xff),
          static_cast<double>(value & 0xff)};
}

Inks inksFor(const Palette& palette, Mark mark, bool set, bool enabled) {
  const auto inks = [&](color::Tone edge, color::Tone inside, color::Tone stroke) {
    return Inks{rgbOf(palette.name(edge)), rgbOf(palette.name(inside)), rgbOf(palette.name(stroke))};
  };
  if (!enabled) return inks(color::kFaint, color::kGround, color::kFaint);
  if (mark == Mark::arrow) return inks(color::kSection, color::kPaper, color::kSection);
  return set ? inks(color::kPrimary, color::kPrimary, color::kOnPrimary)
             : inks(color::kBorder, color::kPaper, color::kBorder);
}

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
Rgb checkAt(Point at, double half, bool set, const Inks& inks, Rgb under) {
  const double outer = insideRounded(at, half - 0.75, half * 0.3);
  under = mix(mix(under, inks.edge, coverage(outer)), inks.inside, coverage(outer - 0.15 * half));
  if (!set) return under;
  const Point low{-0.12 * half, 0.42 * half};
  const double stroke = std::max(insideStroke(at, {-0.5 * half, 0.02 * half}, low, 0.13 * half),
                                 insideStroke(at, low, {0.52 * half, -0.4 * half}, 0.13 * half));
  return mix(under, inks.stroke, coverage(stroke));
}

Rgb radioAt(Point at, double half, bool set, const Inks& inks, Rgb under) {
  const double outer = insideCircle(at, half - 0.75);
  under = mix(mix(under, inks.edge, coverage(outer)), inks.inside, coverage(outer - 0.15 * half));
  return set ? mix(under, inks.stroke, coverage(insideCircle(at, 0.36 * half))) : under;
}

Rgb arrowAt(Point at, double half, const Inks& inks, Rgb under) {
  const Point tip{0, 0.25 * half};
  const double stroke = std::max(insideStroke(at, {-0.5 * half, -0.25 * half}, tip, 0.1 * half),
                                 insideStroke(at, tip, {0.5 * half, -0.25 * half}, 0.1 * half));
  return mix(under, inks.stroke, coverage(stroke));
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
  const Inks inks = inksFor(palette_, mark, set, enabled);
  const double half = size_ / 2.0;
  for (int y = 0; y < size_; ++y)
    for (int x = 0; x < size_; ++x) {
      const Point at{x + 0.5 - half, y + 0.5 - half};
      const Rgb color = mark == Mark::check   ? checkAt(at, half, set, inks, under)
                        : mark == Mark::radio ? radioAt(at, half, set, inks, under)
                                              : arrowAt(at, half, inks, under);
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
