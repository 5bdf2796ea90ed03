/// The suite's "no value": what a header field or property holds that was never given one.
#pragma once

#include <cstdint>
#include <limits>

/// The null of integer fields, the one integer without a negative.
constexpr std::int32_t kNullInt = std::numeric_limits<std::int32_t>::min();
/// The null of float fields, the most negative finite float.
constexpr float kNullFloat = std::numeric_limits<float>::lowest();

constexpr bool IsValueNull(std::int32_t value) { return value == kNullInt; }
constexpr bool IsValueNull(float value) { return value == kNullFloat; }
/// A double holds the float's null, so that a value keeps being null when it is widened.
constexpr bool IsValueNull(double value) { return value == double{kNullFloat}; }
