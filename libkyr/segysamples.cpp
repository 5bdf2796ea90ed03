#include "libkyr/segysamples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

#include "libkyr/ibmfloat.h"

namespace {

using Samples = std::span<const float>;

// The ends of an integer sample's range. All of them, and all products below, are exact in double precision.
struct Range {
  double low;
  double high;
};

template <typename T>
constexpr Range rangeOf() {
  return {double{std::numeric_limits<T>::min()}, double{std::numeric_limits<T>::max()}};
}

bool fitsUnscaled(Samples samples, Range range) {
  return std::ranges::all_of(
      samples,
      [range](float sample) {
        return !std::isfinite(sample) || (std::trunc(sample) == sample && sample >= range.low && sample <= range.high);
      });
}

float largestMagnitude(Samples samples) {
  float largest = 0.0F;
  for (const float sample : samples)
    if (std::isfinite(sample)) largest = std::max(largest, std::fabs(sample));
  return largest;
}

int weightingFactor(Samples samples, Range range) {
  if (fitsUnscaled(samples, range)) return 0;
  const double largest = largestMagnitude(samples);
  // As many binary digits before the point as the type has; one less where rounding would carry over its end.
  const int weight = std::ilogb(range.high) - std::ilogb(largest);
  return std::nearbyint(std::ldexp(largest, weight)) > range.high ? weight - 1 : weight;
}

// Each sample is read before its word is written, which is never the longer of the two: in place is safe.
template <typename Word, typename Convert>
void convert(Samples samples, void* out, Convert toWord) {
  auto* bytes = static_cast<unsigned char*>(out);
  for (std::size_t i = 0; i < samples.size(); ++i, bytes += sizeof(Word)) {
    const Word word = toWord(samples[i]);
    std::memcpy(bytes, &word, sizeof word);
  }
}

// Integers of type `Value`, each in a word of type `Word`.
template <typename Value, typename Word = Value>
short toIntegers(Samples samples, void* out) {
  constexpr Range kRange = rangeOf<Value>();
  const int weight = weightingFactor(samples, kRange);
  const double scale = std::ldexp(1.0, weight);
  convert<Word>(samples, out, [kRange, scale](float sample) {
    if (std::isnan(sample)) return Word{0};
    return static_cast<Word>(std::nearbyint(std::clamp(sample * scale, kRange.low, kRange.high)));
  });
  return static_cast<short>(weight);
}

}  // namespace

short sgyIbmOut(const float* samples, void* out, int count, int formatCode) {
  if (samples == nullptr || out == nullptr || count <= 0) return 0;
  const Samples trace(samples, static_cast<std::size_t>(count));
  switch (formatCode) {
    case SEGY_INT32:
      return toIntegers<std::int32_t>(trace, out);
    case SEGY_INT16:
      return toIntegers<std::int16_t>(trace, out);
    case SEGY_INT8:
      return toIntegers<std::int8_t, std::int16_t>(trace, out);
    case SEGY_IEEE_FLOAT:
      std::memmove(out, samples, trace.size_bytes());
      return 0;
    default:
      convert<std::uint32_t>(trace, out, [](float sample) { return std::isnan(sample) ? 0U : ieeeToIbm(sample); });
      return 0;
  }
}
