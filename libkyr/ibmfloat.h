/// IBM System/360 single precision: a sign bit, a power of 16 biased by 64 in 7 bits, a fraction of 24 bits. The value
/// is 0.fraction x 16^(exponent - 64), whether or not the leading hexadecimal digit is zero.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

/// The value of an IBM word: double precision holds every one exactly.
constexpr double ibmToDouble(std::uint32_t word) {
  // The fraction, taken as an integer, counts units of 16^(exponent - 64) / 2^24.
  const std::uint64_t binary = 4 * std::uint64_t{word >> 24 & 0x7FU} - 280;
  const auto unit = std::bit_cast<double>((binary + 1023) << 52);
  const double magnitude = static_cast<std::int32_t>(word & 0x00FFFFFFU) * unit;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | std::uint64_t{word >> 31} << 63);
}

/// The IEEE value nearest to an IBM word (ties to even), subnormal results included. Magnitudes of 2^128 and more are
/// infinite; a zero fraction is a zero of the word's sign.
constexpr float ibmToIeee(std::uint32_t word) {
  static_assert(std::numeric_limits<float>::is_iec559);  // what is beyond becomes infinite
  return static_cast<float>(ibmToDouble(word));
}

/// The normalised IBM word nearest to `value` (ties to even). Every finite float has one; infinities and NaN become the
/// largest magnitude with their sign.
std::uint32_t ieeeToIbm(float value);

/// Converts `count` IBM words, in the host's byte order, to IEEE floats in place. `words` needs no alignment.
void Ibm2Float(void* words, std::size_t count);
/// The way back, in place.
void Float2Ibm(void* words, std::size_t count);
