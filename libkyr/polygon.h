/// Point-in-polygon test.
#pragma once

/// A corner of a polygon.
struct PolygonElement {
  double x;
  double y;
};

/// Tests a point against a closed polygon of `points` corners; `polygon` has `points` + 1 entries, the last a copy of
/// the first. The polygon may cross itself: whatever it winds around, however often, is inside.
/// @return nonzero when the point is inside, or on an edge or a corner
int windingPolygonPointInPoly(double x, double y, const PolygonElement* polygon, int points);
