#include "libkyr/vectors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "libkyr/polygon.h"

namespace {

using Floats = std::vector<float>;

TEST(Vectors, ElementwiseWithStrides) {
  const Floats a = {1, 9, 2, 9, 3};
  const Floats b = {10, 20, 30};
  Floats c(6, -1);
  vadd(a.data(), 2, b.data(), 1, c.data(), 2, 3);
  EXPECT_EQ(c, (Floats{11, -1, 22, -1, 33, -1}));
  vsub(a.data(), 2, b.data(), 1, c.data(), 2, 3);
  EXPECT_EQ(c, (Floats{9, -1, 18, -1, 27, -1}));
  vmul(a.data(), 2, b.data(), 1, c.data(), 2, 3);
  EXPECT_EQ(c, (Floats{10, -1, 40, -1, 90, -1}));
  vsmul(c.data(), 2, 0.5F, c.data(), 2, 3);
  vsadd(c.data(), 2, 1.0F, c.data(), 2, 3);
  EXPECT_EQ(c, (Floats{6, -1, 21, -1, 46, -1}));
  vmov(b.data() + 2, -1, c.data(), 1, 3);
  EXPECT_EQ(c, (Floats{30, 20, 10, -1, 46, -1}));
  // In a row, in place, and over what comes next: as one element after the other.
  Floats row(40, 1);
  vadd(row.data(), 1, row.data(), 1, row.data() + 1, 1, 20);
  vsub(b.data(), 1, b.data(), 1, row.data() + 22, 1, 3);
  EXPECT_EQ(row[20], 1048576.0F);
  EXPECT_EQ(row[21] + row[22] + row[25], 2.0F);
  vclr(c.data(), 3, 2);
  vfill(7, c.data() + 5, 1, 1);
  vfill(8, c.data(), 1, 0);
  EXPECT_EQ(c, (Floats{0, 20, 10, 0, 46, 7}));
}

TEST(Vectors, ConversionsAndFunctions) {
  const int integers[] = {0, -5, 16777217, -2147483647 - 1};
  Floats c(4);
  vflt32(integers, 1, c.data(), 1, 4);
  EXPECT_EQ(c, (Floats{0, -5, 16777216, -2147483648.0F}));
  vramp(0.0, 0.1, c.data(), 1, 4);
  EXPECT_EQ(c, (Floats{0.0F, 0.1F, 0.2F, static_cast<float>(3 * 0.1)}));
  vsin(c.data(), 1, c.data(), 1, 4);
  EXPECT_FLOAT_EQ(c[3], std::sin(0.3F));
  vcos(c.data(), 4, c.data(), 1, 1);
  EXPECT_EQ(c[0], 1.0F);
  Floats pairs = {3, 4, 99, -2, 0, 99};
  polar(pairs.data(), 3, pairs.data(), 3, 2);
  EXPECT_EQ(pairs[0], 5.0F);
  EXPECT_FLOAT_EQ(pairs[1], std::atan2(4.0F, 3.0F));
  EXPECT_EQ(pairs[3], 2.0F);
  EXPECT_FLOAT_EQ(pairs[4], std::acos(-1.0F));
  EXPECT_EQ(pairs[2] + pairs[5], 198.0F);
}

TEST(Vectors, Measures) {
  const Floats a = {1, 50, -4, 50, 3, 50, 3, -50};
  EXPECT_EQ(sve(a.data(), 2, 4), 3.0F);
  EXPECT_EQ(meanv(a.data(), 2, 4), 0.75F);
  EXPECT_FLOAT_EQ(rmsqv(a.data(), 2, 4), std::sqrt(35.0F / 4));
  EXPECT_EQ(minv(a.data(), 2, 4), -4.0F);
  EXPECT_EQ(maxv(a.data(), 2, 4), 3.0F);
  EXPECT_EQ(maxmgv(a.data(), 2, 4), 4.0F);
  const IndexedValue largest = maxvi(a.data(), 2, 4);
  EXPECT_EQ(largest.value, 3.0F);
  EXPECT_EQ(largest.index, 4);  // the first of equals, counted in floats
  EXPECT_TRUE(std::isnan(meanv(a.data(), 1, 0)));
  EXPECT_TRUE(std::isnan(rmsqv(a.data(), 1, 0)));
  EXPECT_EQ(maxmgv(a.data(), 1, 0), 0.0F);
  // A small offset on a large trace is not lost in the sum.
  const Floats offset(1000000, 1000.001F);
  EXPECT_EQ(meanv(offset.data(), 1, 1000000), 1000.001F);
}

TEST(Vectors, PowersOfTwo) {
  const struct {
    int n, power;
  } table[] = {{-3, 1},           {0, 1}, {1, 1}, {2, 2}, {3, 4}, {8192, 8192}, {8193, 16384}, {1 << 30, 1 << 30},
               {(1 << 30) + 1, 0}};
  for (const auto& row : table) EXPECT_EQ(power_of_two(row.n), row.power) << row.n;
}

bool inside(double x, double y, const std::vector<PolygonElement>& closed) {
  return windingPolygonPointInPoly(x, y, closed.data(), static_cast<int>(closed.size()) - 1) != 0;
}

TEST(Polygon, BothDirectionsWithEdgesAndCorners) {
  const std::vector<PolygonElement> anticlockwise = {{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}, {0, 0}};
  const std::vector<PolygonElement> clockwise(anticlockwise.rbegin(), anticlockwise.rend());
  for (const auto& polygon : {anticlockwise, clockwise}) {
    EXPECT_TRUE(inside(1, 1, polygon));
    EXPECT_TRUE(inside(1, 2, polygon));  // level with a corner
    EXPECT_TRUE(inside(3, 2, polygon));
    EXPECT_FALSE(inside(2, 3, polygon));  // in the notch
    EXPECT_FALSE(inside(-1, 0, polygon));
    EXPECT_FALSE(inside(-1, 4, polygon));
    EXPECT_FALSE(inside(5, 2, polygon));
    EXPECT_TRUE(inside(2, 0, polygon));  // on an edge
    EXPECT_TRUE(inside(3, 3, polygon));  // on a slanted one
    EXPECT_TRUE(inside(2, 2, polygon));  // a corner
    EXPECT_TRUE(inside(4, 4, polygon));
    EXPECT_FALSE(inside(std::nan(""), 1, polygon));
  }
}

TEST(Polygon, WhatIsWoundAroundTwiceIsInside) {
  const std::vector<PolygonElement> star = {{0, 10}, {6, -8}, {-9.5, 3}, {9.5, 3}, {-6, -8}, {0, 10}};
  EXPECT_TRUE(inside(0, 0, star));
  EXPECT_TRUE(inside(0, 8, star));
  EXPECT_FALSE(inside(6, 6, star));
  EXPECT_FALSE(inside(0, 0, {{1, 1}}));  // no edges at all
}

}  // namespace
