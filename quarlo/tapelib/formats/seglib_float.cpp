// Recorded floats: hexadecimal and quaternary, built bit by bit as IEEE words.
#include <bit>
#include <cstddef>
#include <cstring>

#include "libkyr/byteorder.h"
#include "quarlo/tapelib/formats/seglib.h"

namespace {

constexpr unsigned kIeeeBias = 127;
constexpr unsigned kIeeeMantissaBits = 23;
constexpr unsigned kQuaternarySign = 0x80U;

// Decodes one sample every `step` bytes.
template <typename Decode>
void decodeAll(float* out, int outInc, const char* data, int step, int samples, Decode decode) {
  for (std::ptrdiff_t i = 0; i < samples; ++i) out[i * outInc] = decode(data + i * step);
}

unsigned byteAt(const char* data) { return static_cast<unsigned char>(*data); }

unsigned hostWordAt(const char* data) {
  std::uint16_t word = 0;
  std::memcpy(&word, data, sizeof word);
  return word;
}

// Hexadecimal samples below 2 are read as 1 plus half their value, as recorders' readers have always done: they take
// the power of two for one that is biased, and shift such mantissas as if they were subnormal. All results are exact.
float hexadecimal(bool negative, float value) {
  if (value == 0.0F) return 0.0F;
  const float read = value < 2.0F ? 1.0F + value / 2.0F : value;
  return negative ? -read : read;
}

// A quaternary sample of a `width`-bit mantissa. The mantissa is moved left until its top bit falls off, one step at
// least; the biased exponent pays for the steps.
IEEEFloat quaternary(unsigned exponent, unsigned mantissa, unsigned width) {
  const unsigned biased = 2U * exponent + kIeeeBias;
  if (mantissa == 0) return {.mantissa = 0, .exponent = biased & 0xFFU, .sign = 0};
  const auto used = static_cast<unsigned>(std::bit_width(mantissa));
  // The carry of the sign bit made the mantissa one bit too wide: it is shifted until the exponent is used up, and
  // away.
  if (used > width) return {};
  const unsigned steps = width - used + 1U;
  const unsigned shifted = mantissa << (steps + kIeeeMantissaBits - width);
  return {.mantissa = shifted & 0x7FFFFFU, .exponent = (biased - steps) & 0xFFU, .sign = 0};
}

float hex8(const char* data) {
  const auto sample = std::bit_cast<IBM8Hex>(std::uint32_t{byteAt(data)});
  return hexadecimal(sample.sign != 0, static_cast<float>(sample.mantissa << (4U * sample.exponent)) / 16.0F);
}

float hex16(const char* data) {
  const auto sample = std::bit_cast<IBM16Hex>(std::uint32_t{hostWordAt(data)});
  return hexadecimal(sample.sign != 0, static_cast<float>(sample.mantissa << (4U * sample.exponent)) / 4096.0F);
}

// The sign counts into the mantissa, and for words into the result's lowest exponent bit: the settled readings.
float quat8(const char* data) {
  const unsigned byte = byteAt(data);
  if (byte == 0) return 0.0F;
  const unsigned carry = (byte & kQuaternarySign) >> 7;
  return std::bit_cast<float>(quaternary((byte >> 4) & 7U, (byte & 0xFU) + carry, 4));
}

float quat16(const char* data) {
  const unsigned word = hostWordAt(data);
  if (word == 0) return 0.0F;
  const unsigned carry = (word & kQuaternarySign) >> 7;
  IEEEFloat result = quaternary((word >> 12) & 7U, (word & 0xFFFU) + carry, 12);
  if (carry != 0) result.exponent |= 1U;
  return std::bit_cast<float>(result);
}

float quat16Signed(const char* data) {
  const unsigned word = loadBe16(data);
  const unsigned mantissa = word & 0xFFFU;
  const bool negative = (word & 0x8000U) != 0;
  const int value = negative ? -static_cast<int>(~mantissa & 0xFFFU) : static_cast<int>(mantissa);
  const int power = 1 << (2U * ((word >> 12) & 7U));
  return static_cast<float>(value) / 4096.0F * static_cast<float>(power);
}

}  // namespace

void decodeHex8(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples) {
  decodeAll(xOutTrace, outInc, dataAddr, scanBytes, samples, hex8);
}

void decodeHex16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples) {
  decodeAll(xOutTrace, outInc, dataAddr, scanBytes, samples, hex16);
}

void decodeQuat8(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples) {
  decodeAll(xOutTrace, outInc, dataAddr, scanBytes, samples, quat8);
}

void decodeQuat16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples) {
  decodeAll(xOutTrace, outInc, dataAddr, scanBytes, samples, quat16);
}

void decodeHex8de(float* xOutTrace, int outInc, const char* dataAddr, int samples) {
  decodeHex8(xOutTrace, outInc, dataAddr, 1, samples);
}

void decodeHex16de(float* xOutTrace, int outInc, const char* dataAddr, int samples) {
  decodeHex16(xOutTrace, outInc, dataAddr, 2, samples);
}

void decodeQuat8de(float* xOutTrace, int outInc, const char* dataAddr, int samples) {
  decodeQuat8(xOutTrace, outInc, dataAddr, 1, samples);
}

void decodeQuat16de(float* xOutTrace, int outInc, const char* dataAddr, int samples) {
  decodeAll(xOutTrace, outInc, dataAddr, 2, samples, quat16Signed);
}
