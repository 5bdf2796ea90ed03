#include "libkyr/polygon.h"

#include <algorithm>

namespace {

// Above 0 when the point lies left of the way from a to b, below 0 when right of it, 0 on its line.
double side(double x, double y, const PolygonElement& a, const PolygonElement& b) {
  return (b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y);
}

bool onEdge(double x, double y, const PolygonElement& a, const PolygonElement& b) {
  const auto [left, right] = std::minmax(a.x, b.x);
  const auto [low, high] = std::minmax(a.y, b.y);
  return x >= left && x <= right && y >= low && y <= high && side(x, y, a, b) == 0.0;
}

// 1 when the edge passes the ray to the right of the point upward, -1 downward. Half-open, so that a corner on the ray
// counts once.
int crossing(double x, double y, const PolygonElement& a, const PolygonElement& b) {
  if (a.y <= y && b.y > y) return side(x, y, a, b) > 0.0 ? 1 : 0;
  if (a.y > y && b.y <= y) return side(x, y, a, b) < 0.0 ? -1 : 0;
  return 0;
}

}  // namespace

int windingPolygonPointInPoly(double x, double y, const PolygonElement* polygon, int points) {
  int winding = 0;
  for (int i = 0; i < points; ++i) {
    if (onEdge(x, y, polygon[i], polygon[i + 1])) return 1;
    winding += crossing(x, y, polygon[i], polygon[i + 1]);
  }
  return winding != 0 ? 1 : 0;
}
