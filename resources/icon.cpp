// The program's icon, as packaging/org.quarlo.Quarlo.svg has it for menus: a cartridge with its reel, a trace on its
// label.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "resources/dialogs.h"

namespace {

constexpr double kSide = 128;
constexpr unsigned kRim = 0xFF24578D;
constexpr unsigned kGround = 0xFF2F6FB3;
constexpr unsigned kPaper = 0xFFF3F4F6;
constexpr unsigned kReel = 0xFF1F2933;

struct Place {
  double x;
  double y;
};

constexpr Place kTrace[] = {{34, 88}, {46, 88}, {50, 83}, {55, 93}, {61, 79}, {67, 93}, {72, 83}, {76, 88}, {94, 88}};
constexpr double kStroke = 3.5;

bool inCircle(Place at, Place middle, double radius) { return std::hypot(at.x - middle.x, at.y - middle.y) <= radius; }

/// Inside a rectangle with rounded corners that stands in the middle from left to right.
bool inCard(Place at, double top, double width, double height, double corner) {
  const double x = std::abs(at.x - kSide / 2) - (width / 2 - corner);
  const double y = std::abs(at.y - top - height / 2) - (height / 2 - corner);
  return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) <= corner && std::max(x, y) <= corner;
}

bool onLine(Place at, Place from, Place to) {
  const Place along{to.x - from.x, to.y - from.y};
  const double part = std::clamp(
      ((at.x - from.x) * along.x + (at.y - from.y) * along.y) / (along.x * along.x + along.y * along.y), 0.0, 1.0);
  return inCircle(at, {from.x + part * along.x, from.y + part * along.y}, kStroke / 2);
}

bool onTrace(Place at) {
  for (std::size_t corner = 1; corner < std::size(kTrace); ++corner)
    if (onLine(at, kTrace[corner - 1], kTrace[corner])) return true;
  return false;
}

}  // namespace

unsigned quarloIcon(double across, double down) {
  const Place at{across * kSide, down * kSide};
  constexpr Place kHub{64, 60};
  if (onTrace(at)) return kGround;
  if (inCircle(at, kHub, 7)) return kPaper;
  if (inCircle(at, kHub, 20)) return kReel;
  if (inCard(at, 30, 76, 68, 8)) return kPaper;
  if (inCard(at, 16, 96, 96, 14)) return kGround;
  return inCard(at, 8, 112, 112, 20) ? kRim : 0;
}
