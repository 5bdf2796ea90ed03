#include "xvt/placement.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <utility>

namespace xvt {

namespace {

RCT at(PNT place, Extent size) { return RCT{place.v, place.h, place.v + size.height, place.h + size.width}; }

long overlap(const RCT& one, const RCT& other) {
  const long width = std::min(one.right, other.right) - std::max(one.left, other.left);
  const long height = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
  return width > 0 && height > 0 ? width * height : 0;
}

/// What a window there would hide of the others, in pixels; those of a newer window, which is the one in use, count
/// more.
long hidden(const RCT& place, const std::vector<RCT>& taken) {
  long sum = 0;
  long weight = 0;
  for (const RCT& one : taken) {
    ++weight;
    sum += weight * weight * overlap(place, one);
  }
  return sum;
}

/// A free place always exists, if any does, at which the window touches an edge of the screen or of another window.
std::vector<int> candidates(int wish, int size, int limit, const std::vector<std::pair<int, int>>& edges, int step) {
  std::vector<int> found{wish, step, limit - size - step};
  for (const auto& [low, high] : edges) {
    found.push_back(high + step);
    found.push_back(low - size - step);
    found.push_back(low);
  }
  std::erase_if(found, [&](int one) { return one < 0 || one + size > limit; });
  return found;
}

/// Steps aside from windows that would be hidden from their very corner on.
PNT staircase(Extent screen, const std::vector<RCT>& taken, Extent size, PNT place, int step) {
  const auto covers = [&](const RCT& one) { return one.left == place.h && one.top == place.v; };
  for (std::size_t tries = 0; tries <= taken.size() && std::any_of(taken.begin(), taken.end(), covers); ++tries)
    place = PNT{(place.v + 3 * step) % std::max(1, screen.height - size.height + 1),
                (place.h + 3 * step) % std::max(1, screen.width - size.width + 1)};
  return place;
}

}  // namespace

PNT onScreen(Extent screen, PNT place, Extent size) {
  return PNT{std::max(0, std::min(place.v, screen.height - size.height)),
             std::max(0, std::min(place.h, screen.width - size.width))};
}

PNT placeBeside(Extent screen, const std::vector<RCT>& taken, Extent size, PNT wish, int step) {
  std::vector<std::pair<int, int>> columns;
  std::vector<std::pair<int, int>> rows;
  for (const RCT& one : taken) {
    columns.emplace_back(one.left, one.right);
    rows.emplace_back(one.top, one.bottom);
  }
  const PNT wished = onScreen(screen, wish, size);
  // A free place before one that hides little, a near one before a far one.
  std::pair<long, long> least{LONG_MAX, LONG_MAX};
  PNT best = wished;
  for (const int left : candidates(wished.h, size.width, screen.width, columns, step))
    for (const int top : candidates(wished.v, size.height, screen.height, rows, step)) {
      const std::pair<long, long> cost{hidden(at(PNT{top, left}, size), taken),
                                       std::labs(left - wished.h) + std::labs(top - wished.v)};
      if (cost >= least) continue;
      least = cost;
      best = PNT{top, left};
    }
  return staircase(screen, taken, size, best, step);
}

PNT placeOver(Extent screen, const RCT& over, Extent size, int step) {
  const int spare_height = over.bottom - over.top - size.height;
  const int spare_width = over.right - over.left - size.width;
  PNT place{over.top + spare_height / 2, over.left + spare_width / 2};
  if (spare_height < 2 * step && spare_width < 2 * step) place = PNT{over.top + 3 * step, over.left + 3 * step};
  return onScreen(screen, place, size);
}

}  // namespace xvt
