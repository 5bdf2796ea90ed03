#include "xvt/placement.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace xvt {

namespace {

RCT at(PNT place, Extent size) { return RCT{place.v, place.h, place.v + size.height, place.h + size.width}; }

bool overlap(const RCT& one, const RCT& other) {
  return one.left < other.right && other.left < one.right && one.top < other.bottom && other.top < one.bottom;
}

bool isFree(const RCT& place, const std::vector<RCT>& taken) {
  return std::none_of(taken.begin(), taken.end(), [&](const RCT& one) { return overlap(place, one); });
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

PNT cascade(Extent screen, const std::vector<RCT>& taken, Extent size, PNT wish, int step) {
  PNT place = onScreen(screen, wish, size);
  const auto covers = [&](const RCT& one) { return one.left == place.h && one.top == place.v; };
  for (std::size_t tries = 0; tries <= taken.size() && std::any_of(taken.begin(), taken.end(), covers); ++tries)
    place = onScreen(screen, PNT{place.v + 3 * step, place.h + 3 * step}, size);
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
  long nearest = LONG_MAX;
  PNT best = wished;
  for (const int left : candidates(wished.h, size.width, screen.width, columns, step))
    for (const int top : candidates(wished.v, size.height, screen.height, rows, step)) {
      const long distance = std::labs(left - wished.h) + std::labs(top - wished.v);
      if (distance >= nearest || !isFree(at(PNT{top, left}, size), taken)) continue;
      nearest = distance;
      best = PNT{top, left};
    }
  return nearest != LONG_MAX ? best : cascade(screen, taken, size, wish, step);
}

PNT placeOver(Extent screen, const RCT& over, Extent size, int step) {
  const int spare_height = over.bottom - over.top - size.height;
  const int spare_width = over.right - over.left - size.width;
  PNT place{over.top + spare_height / 2, over.left + spare_width / 2};
  if (spare_height < 2 * step && spare_width < 2 * step) place = PNT{over.top + 3 * step, over.left + 3 * step};
  return onScreen(screen, place, size);
}

}  // namespace xvt
