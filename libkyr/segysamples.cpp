#include "libkyr/segysamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

#include "libkyr/byteorder.h"
#include "libkyr/ibmfloat.h"
#include "libkyr/vectorized.h"

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

// ---- the way in -------------------------------------------------------------------------------------------------

using Bytes = const unsigned char*;

/// Words of `Word`'s size in either byte order, each through `toFloat`. Always a part of its caller, which may be
/// compiled for more than one processor.
template <typename Word, typename Convert>
[[gnu::always_inline]] inline void convertIn(Bytes __restrict bytes, float* __restrict out, std::size_t count,
                                             bool isBig, Convert toFloat) {
  using Bits = std::make_unsigned_t<Word>;
  if (isBig)
    for (std::size_t i = 0; i < count; ++i)
      out[i] = toFloat(static_cast<Word>(byteorder::loadBig<Bits>(bytes + i * sizeof(Bits))));
  else
    for (std::size_t i = 0; i < count; ++i)
      out[i] = toFloat(static_cast<Word>(byteorder::loadLittle<Bits>(bytes + i * sizeof(Bits))));
}

/// A number to single precision; what lies beyond it becomes infinite.
template <typename T>
float narrowed(T number) {
  constexpr T kEnd = 0x1.ffffffp127;  // from the middle between the largest float and 2^128 on it is infinite
  if (std::fabs(number) >= kEnd) return std::copysign(HUGE_VALF, static_cast<float>(std::signbit(number) ? -1 : 1));
  return static_cast<float>(number);
}

constexpr int kPlainWeight = 60;  // up to here 2^-N times an integer of 64 bits stays normal in single precision

/// An integer times 2^-N where that may leave the normal floats: 64 bits and their place are exact in long double.
struct Weighed {
  int weight;
  template <typename T>
  float operator()(T integer) const {
    return narrowed(std::ldexp(static_cast<long double>(integer), -weight));
  }
};

/// The same within kPlainWeight: rounded by the first conversion, the product is exact.
struct Scaled {
  float scale;
  template <typename T>
  float operator()(T integer) const {
    return static_cast<float>(integer) * scale;
  }
};

template <typename Word>
[[gnu::always_inline]] inline void integersIn(Bytes bytes, float* out, std::size_t count, bool isBig, int weight) {
  if (std::abs(weight) <= kPlainWeight)
    convertIn<Word>(bytes, out, count, isBig, Scaled{std::ldexp(1.0F, -weight)});
  else
    convertIn<Word>(bytes, out, count, isBig, Weighed{weight});
}

/// Words of three bytes.
template <bool isSigned>
void threeBytesIn(Bytes bytes, float* out, std::size_t count, bool isBig, int weight) {
  for (std::size_t i = 0; i < count; ++i, bytes += 3) {
    const unsigned char turned[3] = {bytes[isBig ? 0 : 2], bytes[1], bytes[isBig ? 2 : 0]};
    const std::int32_t integer = isSigned ? get3byte(turned) : get3byte(turned) & 0xFFFFFF;
    out[i] = Weighed{weight}(integer);
  }
}

// The formats of nearly all files, each a loop of its own for the compiler.

KYR_VECTORIZED void ibmIn(Bytes bytes, float* out, std::size_t count, bool isBig) {
  convertIn<std::uint32_t>(
      bytes, out, count, isBig, [](std::uint32_t word) { return ibmToIeee(word); });
}
KYR_VECTORIZED void ieeeIn(Bytes bytes, float* out, std::size_t count, bool isBig) {
  convertIn<std::uint32_t>(
      bytes, out, count, isBig, [](std::uint32_t word) { return std::bit_cast<float>(word); });
}
KYR_VECTORIZED void int32In(Bytes bytes, float* out, std::size_t count, bool isBig, int weight) {
  integersIn<std::int32_t>(bytes, out, count, isBig, weight);
}
KYR_VECTORIZED void int16In(Bytes bytes, float* out, std::size_t count, bool isBig, int weight) {
  integersIn<std::int16_t>(bytes, out, count, isBig, weight);
}

void doublesIn(Bytes bytes, float* out, std::size_t count, bool isBig) {
  convertIn<std::uint64_t>(
      bytes, out, count, isBig, [](std::uint64_t word) { return narrowed(std::bit_cast<double>(word)); });
}

KYR_VECTORIZED SampleOddities odditiesOf(const float* samples, std::size_t count) {
  constexpr std::uint32_t kInfinite = 0x7F800000U;
  SampleOddities found;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t magnitude = std::bit_cast<std::uint32_t>(samples[i]) & 0x7FFFFFFFU;
    found.infinite += magnitude == kInfinite ? 1 : 0;
    found.notNumbers += magnitude > kInfinite ? 1 : 0;
  }
  return found;
}

constexpr int kFormats = 16;
constexpr int kSampleBytes[kFormats] = {4, 4, 2, 4, 4, 8, 3, 1, 8, 4, 2, 8, 4, 4, 3, 1};

}  // namespace

bool isSegyFormat(int code) { return code >= 1 && code <= kFormats; }

int segySampleBytes(int code) { return isSegyFormat(code) ? kSampleBytes[code - 1] : 0; }

bool isReadableSegyFormat(int code) { return isSegyFormat(code) && code != 4 && code != 13 && code != 14; }

SampleOddities& SampleOddities::operator+=(const SampleOddities& more) {
  infinite += more.infinite;
  notNumbers += more.notNumbers;
  return *this;
}

SampleOddities segySamplesIn(const void* bytes, float* samples, std::size_t count, int formatCode, bool bigEndian,
                             int weight) {
  const auto* const in = static_cast<Bytes>(bytes);
  switch (formatCode) {
    case SEGY_IBM_FLOAT:
      ibmIn(in, samples, count, bigEndian);
      break;
    case SEGY_INT32:
      int32In(in, samples, count, bigEndian, weight);
      break;
    case SEGY_INT16:
      int16In(in, samples, count, bigEndian, weight);
      break;
    case SEGY_IEEE_FLOAT:
      ieeeIn(in, samples, count, bigEndian);
      break;
    case 6:
      doublesIn(in, samples, count, bigEndian);
      break;
    case 7:
      threeBytesIn<true>(in, samples, count, bigEndian, weight);
      break;
    case SEGY_INT8:
      integersIn<std::int8_t>(in, samples, count, bigEndian, weight);
      break;
    case 9:
      integersIn<std::int64_t>(in, samples, count, bigEndian, weight);
      break;
    case 10:
      integersIn<std::uint32_t>(in, samples, count, bigEndian, weight);
      break;
    case 11:
      integersIn<std::uint16_t>(in, samples, count, bigEndian, weight);
      break;
    case 12:
      integersIn<std::uint64_t>(in, samples, count, bigEndian, weight);
      break;
    case 15:
      threeBytesIn<false>(in, samples, count, bigEndian, weight);
      break;
    case 16:
      integersIn<std::uint8_t>(in, samples, count, bigEndian, weight);
      break;
    default:
      std::fill_n(samples, count, 0.0F);
      return {};
  }
  return odditiesOf(samples, count);
}

// ---- the way out ------------------------------------------------------------------------------------------------

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
