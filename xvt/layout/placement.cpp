#include "xvt/layout/placement.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace xvt {

namespace {

using Windows = std::vector<Standing>;

RCT at(PNT place, Extent size) { return RCT{place.v, place.h, place.v + size.height, place.h + size.width}; }

long hundredths(long pixels, const RCT& of) {
  const long all = std::max(1L, overlap(of, of));
  return (100 * pixels + all - 1) / all;
}

/// What a window there would hide of the others, in pixels; those of a newer window, which is the one in use, count
/// more, those of the opener more than all others together.
long hidden(const RCT& place, const Windows& standing) {
  constexpr long kOpenersWeight = 1'000'000'000;  // for each hundredth, or a few pixels would outweigh all else
  long sum = 0;
  long weight = 0;
  for (const Standing& one : standing) {
    ++weight;
    const long common = overlap(place, one.place);
    sum += one.opener ? kOpenersWeight * hundredths(common, one.place) : weight * weight * common;
  }
  return sum;
}

/// A free place always exists, if any does, at which the window touches an edge of the screen or of another window.
std::vector<int> candidates(int wish, int size, int low, int high, const std::vector<std::pair<int, int>>& edges,
                            int step) {
  std::vector<int> found{wish, low + step, high - size - step};
  for (const auto& [near, far] : edges) {
    found.push_back(far + step);
    found.push_back(near - size - step);
    found.push_back(near);
  }
  std::erase_if(found, [&](int one) { return one < low || one + size > high; });
  return found;
}

struct Edges {
  explicit Edges(const Windows& standing) {
    for (const auto& [place, opener] : standing) {
      columns.emplace_back(place.left, place.right);
      rows.emplace_back(place.top, place.bottom);
    }
  }
  std::vector<std::pair<int, int>> columns, rows;
};

struct Choice {
  RCT place;
  long hides = LONG_MAX;
};

/// Of this size, within these bounds: free before hiding little, near the wish before far from it.
Choice leastHidingApart(const RCT& bounds, const Windows& standing, Extent size, PNT wished, int step) {
  const Edges edges(standing);
  std::pair<long, long> least{LONG_MAX, LONG_MAX};
  Choice best{at(wished, size)};
  for (const int left : candidates(wished.h, size.width, bounds.left, bounds.right, edges.columns, step))
    for (const int top : candidates(wished.v, size.height, bounds.top, bounds.bottom, edges.rows, step)) {
      const RCT place = at(PNT{top, left}, size);
      const std::pair<long, long> cost{hidden(place, standing), std::labs(left - wished.h) + std::labs(top - wished.v)};
      if (cost >= least) continue;
      least = cost;
      best = {place, cost.first};
    }
  return best;
}

/// The same; windows touch each other where less is hidden then.
Choice leastHiding(const RCT& bounds, const Windows& standing, Extent size, PNT wished, int step) {
  const Choice apart = leastHidingApart(bounds, standing, size, wished, step);
  if (apart.hides == 0) return apart;
  const Choice touching = leastHidingApart(bounds, standing, size, wished, 0);
  return touching.hides < apart.hides ? touching : apart;
}

/// The best free room between the least and the wished size. Width counts twice: a line that is not there can be
/// scrolled to, a line that is cut off cannot be read.
Choice bestRoom(const RCT& bounds, const Windows& standing, const WindowWish& wish, int step) {
  std::vector<int> lefts{bounds.left + step}, tops{bounds.top + step};
  std::vector<int> rights{bounds.right - step}, bottoms{bounds.bottom - step};
  for (const auto& [place, opener] : standing) {
    lefts.push_back(place.right + step);
    tops.push_back(place.bottom + step);
    rights.push_back(place.left - step);
    bottoms.push_back(place.top - step);
  }
  Choice best;
  long most = 0;
  for (const int left : lefts)
    for (const int top : tops)
      for (const int right : rights)
        for (const int bottom : bottoms) {
          const Extent size{std::min(right - left, wish.size.width), std::min(bottom - top, wish.size.height)};
          const RCT place = at(PNT{top, left}, size);
          const long worth = long{size.width} * size.width * size.height;
          if (size.width < wish.least.width || size.height < wish.least.height || worth <= most) continue;
          if (place.left < bounds.left || place.top < bounds.top || hidden(place, standing) > 0) continue;
          most = worth;
          best = {place, 0};
        }
  return best;
}

/// Steps aside from windows that would be hidden from their very corner on.
PNT staircase(Extent screen, const Windows& standing, Extent size, PNT place, int step) {
  const auto covers = [&](const Standing& one) { return one.place.left == place.h && one.place.top == place.v; };
  for (std::size_t tries = 0; tries <= standing.size() && std::any_of(standing.begin(), standing.end(), covers);
       ++tries)
    place = PNT{(place.v + 3 * step) % std::max(1, screen.height - size.height + 1),
                (place.h + 3 * step) % std::max(1, screen.width - size.width + 1)};
  return place;
}

}  // namespace

long overlap(const RCT& one, const RCT& other) {
  const long width = std::min(one.right, other.right) - std::max(one.left, other.left);
  const long height = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
  return width > 0 && height > 0 ? width * height : 0;
}

PNT onScreen(Extent screen, PNT place, Extent size) {
  return PNT{std::max(0, std::min(place.v, screen.height - size.height)),
             std::max(0, std::min(place.h, screen.width - size.width))};
}

RCT placeWindow(Extent screen, const std::vector<Standing>& standing, const WindowWish& wish, int step) {
  const auto holds = [&](const Standing& one) {
    return one.opener && wish.size.width <= one.place.right - one.place.left &&
           wish.size.height <= one.place.bottom - one.place.top;
  };
  if (wish.is_box && std::any_of(standing.begin(), standing.end(), holds))
    return at(onScreen(screen, wish.place, wish.size), wish.size);
  const RCT whole{0, 0, screen.height, screen.width};
  WindowWish now = wish;
  Choice choice;
  for (const RCT& bounds : {wish.bounds, whole}) {
    choice = leastHiding(bounds, standing, now.size, onScreen(screen, wish.place, now.size), step);
    if (choice.hides > 0) choice = bestRoom(bounds, standing, now, step);
    if (choice.hides == 0) return choice.place;
    // Outside of its bounds it is no larger than they are.
    now.size = {std::min(now.size.width, bounds.right - bounds.left),
                std::min(now.size.height, bounds.bottom - bounds.top)};
  }
  choice = leastHiding(whole, standing, now.size, onScreen(screen, wish.place, now.size), step);
  Windows openers;
  std::copy_if(standing.begin(), standing.end(), std::back_inserter(openers),
               [](const Standing& one) { return one.opener; });
  if (hidden(choice.place, openers) > 0) {
    const Choice room = bestRoom(whole, openers, now, step);
    if (room.hides == 0) return room.place;
  }
  return at(staircase(screen, standing, now.size, PNT{choice.place.top, choice.place.left}, step), now.size);
}

RCT upperLeft(Extent screen) { return RCT{0, 0, screen.height * 3 / 8, screen.width / 2}; }

PNT belowConsole(Extent screen, Extent size, int step) {
  const PNT below{upperLeft(screen).bottom + step, step};
  if (below.v + size.height <= screen.height) return below;
  return PNT{screen.height - size.height - step, screen.width - size.width - step};
}

PNT middleOf(const RCT& opener, Extent size) {
  return PNT{(opener.top + opener.bottom - size.height) / 2, (opener.left + opener.right - size.width) / 2};
}

}  // namespace xvt
