#include "quarlo/tapelib/formats/segdsamples.h"

#include <algorithm>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/ibmfloat.h"
#include "libkyr/vectorized.h"

namespace {

// So infinity is the neighbour of the largest float, and a conversion of what lies beyond is defined.
static_assert(std::numeric_limits<float>::is_iec559);

constexpr std::size_t kGroupSamples = 4;
constexpr std::size_t kGroupBytes = 10;

// The formulas below are those of the standard's data block formats: revision 0 has 15 to 24 and 42 to 48, revision 1
// adds 36, 38 and 58, revision 2.1 has all of them. S is the sign bit, one for negative numbers; Q the fraction with
// its point on the left of the highest bit; C the exponent.

// Signs are as good as random: they are computed with, not branched on.

// All ones for a negative number, whose sign bit is the lowest of `sign`.
constexpr unsigned negativeMask(unsigned sign) { return 0U - sign; }

// One's complement: the fraction of a negative number is inverted. Negative zero is zero.
double onesComplement(unsigned sign, unsigned fraction, unsigned all) {
  return static_cast<int>(fraction) - static_cast<int>(all & negativeMask(sign));
}

double signAndMagnitude(unsigned sign, unsigned fraction) {
  return static_cast<int>((fraction ^ negativeMask(sign)) + sign);
}

double powerOfTwo(unsigned exponent) { return static_cast<int>(1U << exponent); }

// 8015, 20-bit binary: S.Q x 2^C, Q one's complement of 15 bits, C of 4 bits. A group is a word of four exponents, the
// first sample's in its high nibble, and four words of sign and fraction.
double binary20(const char* group, std::size_t place) {
  const unsigned exponents = loadBe16(group);
  const unsigned word = loadBe16(group + 2 * (1 + place));
  return onesComplement(word >> 15, word & 0x7FFFU, 0x7FFFU) / 0x1p15 *
         powerOfTwo((exponents >> (4 * (3 - place))) & 15U);
}

// 8022, 8-bit quaternary: S.Q x 4^C, Q one's complement of 4 bits, C of 3 bits.
double quaternary8(const char* byte) {
  const unsigned word = static_cast<unsigned char>(*byte);
  return onesComplement(word >> 7, word & 0xFU, 0xFU) / 0x1p4 * powerOfTwo(2 * ((word >> 4) & 7U));
}

// 8024, 16-bit quaternary: the same with a fraction of 12 bits.
double quaternary16(const char* bytes) {
  const unsigned word = loadBe16(bytes);
  return onesComplement(word >> 15, word & 0xFFFU, 0xFFFU) / 0x1p12 * powerOfTwo(2 * ((word >> 12) & 7U));
}

// 8036 and 8038, integers of 24 and 32 bits: two's complement, the highest byte first.
double integer24(const char* bytes) { return get3byte(bytes); }
double integer32(const char* bytes) { return loadBeInt32(bytes); }

// 8042, 8-bit hexadecimal: S.Q x 16^C, sign and magnitude, Q of 5 bits, C of 2 bits.
double hexadecimal8(const char* byte) {
  const unsigned word = static_cast<unsigned char>(*byte);
  return signAndMagnitude(word >> 7, word & 0x1FU) / 0x1p5 * powerOfTwo(4 * ((word >> 5) & 3U));
}

// 8044, 16-bit hexadecimal: the same with a fraction of 13 bits.
double hexadecimal16(const char* bytes) {
  const unsigned word = loadBe16(bytes);
  return signAndMagnitude(word >> 15, word & 0x1FFFU) / 0x1p13 * powerOfTwo(4 * ((word >> 13) & 3U));
}

// 8048, 32-bit hexadecimal: S.Q x 16^(C - 64), sign and magnitude, Q of 24 bits, C of 7 bits.
double hexadecimal32(const char* bytes) { return ibmToDouble(loadBe32(bytes)); }

// 8058, IEEE 754 single precision, the highest byte first.
double ieee32(const char* bytes) { return loadBeFloat(bytes); }

template <std::size_t Bytes, auto Decode>
struct Sample {
  static constexpr std::size_t kBytes = Bytes;
  double operator()(const char* bytes) const { return Decode(bytes); }
};

// Calls `use` with the sample that a code has, 20 bits aside; false for a code without one. A part of its caller, which
// may be compiled for more than one processor, as decodeEach is.
template <typename Use>
[[gnu::always_inline]] inline bool withSample(int formatCode, Use use) {
  switch (segdSampleBits(formatCode) == 0 ? -1 : formatCode % 100) {
    case 22:
      return use(Sample<1, quaternary8>{}), true;
    case 24:
      return use(Sample<2, quaternary16>{}), true;
    case 36:
      return use(Sample<3, integer24>{}), true;
    case 38:
      return use(Sample<4, integer32>{}), true;
    case 42:
      return use(Sample<1, hexadecimal8>{}), true;
    case 44:
      return use(Sample<2, hexadecimal16>{}), true;
    case 48:
      return use(Sample<4, hexadecimal32>{}), true;
    case 58:
      return use(Sample<4, ieee32>{}), true;
    default:
      return false;
  }
}

bool isGrouped(int formatCode) { return segdSampleBits(formatCode) == 20; }

template <typename Value>
[[gnu::always_inline]] inline void decodeEach(std::span<float> samples, double scale, Value value) {
  float* const out = samples.data();
  const std::size_t count = samples.size();
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<float>(value(i) * scale);
}

}  // namespace

int segdSampleBits(int formatCode) {
  if (formatCode < 0 || (formatCode >= 100 && formatCode / 100 != 80)) return 0;
  constexpr struct {
    int code, bits;
  } kBits[] = {{15, 20}, {22, 8}, {24, 16}, {36, 24}, {38, 32}, {42, 8}, {44, 16}, {48, 32}, {58, 32}};
  for (const auto& row : kBits)
    if (row.code == formatCode % 100) return row.bits;
  return 0;
}

std::size_t segdTraceBytes(int formatCode, std::size_t samples) {
  if (isGrouped(formatCode)) return (samples + kGroupSamples - 1) / kGroupSamples * kGroupBytes;
  return samples * static_cast<std::size_t>(segdSampleBits(formatCode)) / 8;
}

KYR_VECTORIZED std::size_t decodeSegdTrace(int formatCode, std::span<const char> bytes, double scale,
                                           std::span<float> samples) {
  if (isGrouped(formatCode)) {
    samples = samples.first(std::min(samples.size(), bytes.size() / kGroupBytes * kGroupSamples));
    decodeEach(samples, scale, [data = bytes.data()](std::size_t i) {
      return binary20(data + i / kGroupSamples * kGroupBytes, i % kGroupSamples);
    });
    return samples.size();
  }
  const bool known = withSample(formatCode, [&](auto sample) {
    samples = samples.first(std::min(samples.size(), bytes.size() / sample.kBytes));
    decodeEach(samples, scale,
               [data = bytes.data(), sample](std::size_t i) { return sample(data + i * sample.kBytes); });
  });
  return known ? samples.size() : 0;
}

std::size_t decodeSegdScans(int formatCode, std::span<const char> scans, const SegdScanPlace& place, double scale,
                            std::span<float> samples) {
  const std::size_t each = isGrouped(formatCode) ? kGroupBytes : segdTraceBytes(formatCode, 1);
  if (each == 0 || place.subscans < 1 || place.place < 0 || place.place >= static_cast<int>(kGroupSamples)) return 0;
  const auto subscans = static_cast<std::size_t>(place.subscans);
  // Divided, not multiplied: the sizes come from a tape.
  if (place.scanBytes < each || place.first > place.scanBytes - each) return 0;
  if (subscans > 1 && place.subscanBytes > (place.scanBytes - each - place.first) / (subscans - 1)) return 0;
  samples = samples.first(std::min(samples.size(), scans.size() / place.scanBytes * subscans));
  const auto sampleAt = [&](std::size_t i) {
    return scans.data() + i / subscans * place.scanBytes + place.first + i % subscans * place.subscanBytes;
  };
  if (isGrouped(formatCode))
    decodeEach(samples, scale,
               [&](std::size_t i) { return binary20(sampleAt(i), static_cast<std::size_t>(place.place)); });
  else
    withSample(formatCode,
               [&](auto sample) { decodeEach(samples, scale, [&](std::size_t i) { return sample(sampleAt(i)); }); });
  return samples.size();
}
