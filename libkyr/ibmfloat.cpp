#include "libkyr/ibmfloat.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace {

constexpr std::uint32_t kSignBit = 0x80000000U;
constexpr std::uint32_t kFractionMask = 0x00FFFFFFU;
constexpr std::uint32_t kLargestMagnitude = 0x7FFFFFFFU;
constexpr int kExponentBias = 64;

// Drops `bits` (0 to 3) low bits, to the nearest, ties to even.
std::uint32_t roundOff(std::uint32_t value, int bits) {
  const std::uint32_t unit = 1U << bits;
  const std::uint32_t rest = value & (unit - 1U);
  const std::uint32_t kept = value >> bits;
  const bool up = 2U * rest > unit || (2U * rest == unit && (kept & 1U) != 0U);
  return kept + (up ? 1U : 0U);
}

template <typename Convert>
void convertWords(void* words, std::size_t count, Convert convert) {
  auto* bytes = static_cast<unsigned char*>(words);
  for (std::size_t i = 0; i < count; ++i, bytes += sizeof(std::uint32_t)) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    word = convert(word);
    std::memcpy(bytes, &word, sizeof word);
  }
}

}  // namespace

std::uint32_t ieeeToIbm(float value) {
  const std::uint32_t sign = std::bit_cast<std::uint32_t>(value) & kSignBit;
  if (!std::isfinite(value)) return sign | kLargestMagnitude;
  if (value == 0.0F) return sign;
  int binary = 0;
  const auto mantissa = static_cast<std::uint32_t>(std::ldexp(std::fabs(std::frexp(value, &binary)), 24));
  // The power of 16 is the power of two rounded up to a multiple of four; the fraction pays for the difference.
  int hexadecimal = (binary + 4 * kExponentBias + 3) / 4;
  std::uint32_t fraction = roundOff(mantissa, 4 * (hexadecimal - kExponentBias) - binary);
  if (fraction > kFractionMask) {
    fraction >>= 4;
    ++hexadecimal;
  }
  return sign | (static_cast<std::uint32_t>(hexadecimal) << 24) | fraction;
}

void Ibm2Float(void* words, std::size_t count) {
  convertWords(
      words, count, [](std::uint32_t word) { return std::bit_cast<std::uint32_t>(ibmToIeee(word)); });
}

void Float2Ibm(void* words, std::size_t count) {
  convertWords(
      words, count, [](std::uint32_t word) { return ieeeToIbm(std::bit_cast<float>(word)); });
}
