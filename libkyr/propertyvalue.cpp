#include "libkyr/propertyvalue.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "libkyr/link.h"
#include "libkyr/nullvalue.h"

namespace {

/// Values pass through a double, which holds every int and float exactly; null is the float's null there.
constexpr double kNull = kNullFloat;

template <typename T>
T fetch(const void* value) {
  T typed;
  std::memcpy(&typed, value, sizeof typed);
  return typed;
}

template <typename T>
void put(T typed, void* value) {
  std::memcpy(value, &typed, sizeof typed);
}

/// The null of an int is the bottom of its range: numbers stop one above it.
template <typename T>
constexpr T kLowestNumber = std::numeric_limits<T>::min() + (std::is_same_v<T, std::int32_t> ? 1 : 0);

template <typename T>
T nearestInteger(double number) {
  if (IsValueNull(number) || std::isnan(number)) return std::numeric_limits<T>::min();
  const double rounded = std::round(number);
  if (rounded <= kLowestNumber<T>) return kLowestNumber<T>;
  if (rounded >= std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
  return static_cast<T>(rounded);
}

/// A finite number beyond the range of floats becomes the largest there is short of null, not an infinity.
float nearestFloat(double number) {
  if (!std::isfinite(number) || IsValueNull(number)) return static_cast<float>(number);
  const double largest = std::numeric_limits<float>::max();
  if (number >= largest) return std::numeric_limits<float>::max();
  if (number <= kNull) return std::nextafter(kNullFloat, 0.0F);
  return static_cast<float>(number);
}

std::optional<double> numberOf(int type, const void* value) {
  if (value == nullptr) return std::nullopt;
  switch (type) {
    case byteType:
      return fetch<std::int8_t>(value);
    case shortIntType:
      return fetch<std::int16_t>(value);
    case longIntType: {
      const auto number = fetch<std::int32_t>(value);
      return IsValueNull(number) ? kNull : number;
    }
    case singleFloatType:
      return fetch<float>(value);
    case doubleFloatType:
      return fetch<double>(value);
    default:
      return std::nullopt;
  }
}

bool putNumber(int type, double number, void* value) {
  if (value == nullptr) return false;
  switch (type) {
    case byteType:
      put(nearestInteger<std::int8_t>(number), value);
      return true;
    case shortIntType:
      put(nearestInteger<std::int16_t>(number), value);
      return true;
    case longIntType:
      put(nearestInteger<std::int32_t>(number), value);
      return true;
    case singleFloatType:
      put(nearestFloat(number), value);
      return true;
    case doubleFloatType:
      put(number, value);
      return true;
    default:
      return false;
  }
}

/// How many of a unit make one of the kept values; nothing where the unit does not fit the property.
std::optional<double> unitsPerKept(const PropertyEntry& entry, int units) {
  if (units == gUnknownUnits) return 1.0;
  if (!entry.isTime) return std::nullopt;
  switch (units) {
    case gSecondsUnits:
      return 1.0;
    case gMillisecondsUnits:
      return 1e3;
    case gMicrosecondsUnits:
      return 1e6;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::uint32_t nullWord(const PropertyEntry& entry) {
  return entry.isFloat ? std::bit_cast<std::uint32_t>(kNullFloat) : std::bit_cast<std::uint32_t>(kNullInt);
}

std::optional<std::uint32_t> wordFromValue(const PropertyEntry& entry, int type, int units, const void* value) {
  const auto number = numberOf(type, value);
  const auto scale = unitsPerKept(entry, units);
  if (!number || !scale) return std::nullopt;
  const double kept = IsValueNull(*number) ? *number : *number / *scale;
  if (entry.isFloat) return std::bit_cast<std::uint32_t>(nearestFloat(kept));
  return std::bit_cast<std::uint32_t>(nearestInteger<std::int32_t>(kept));
}

int valueFromWord(const PropertyEntry& entry, std::uint32_t word, int type, int units, void* value) {
  const auto scale = unitsPerKept(entry, units);
  if (!scale) return failedValue(type, value);
  const auto asInteger = std::bit_cast<std::int32_t>(word);
  double number = entry.isFloat ? double{std::bit_cast<float>(word)} : static_cast<double>(asInteger);
  if (!entry.isFloat && IsValueNull(asInteger)) number = kNull;
  if (!IsValueNull(number)) number *= *scale;
  return putNumber(type, number, value) ? kyrOk : kyrBadCall;
}

int failedValue(int type, void* value) {
  putNumber(type, 0.0, value);
  return kyrBadCall;
}
