#include "libkyr/traceslot.h"

#include <algorithm>

#include "libkyr/byteorder.h"
#include "libkyr/wordsum.h"

namespace traceslot {

namespace {

constexpr std::uint32_t marker = 0x4352544BU;  // "KTRC"
constexpr std::size_t headerSumAt = 8;
constexpr std::size_t sampleSumAt = 16;
// So that a header's sum is not taken for that of samples with the same bytes.
constexpr std::uint64_t sampleSeed = 0xA5A5A5A5A5A5A5A5U;

std::uint64_t headerSum(std::uint64_t seed, const unsigned char* slot) {
  return wordSum(seed, slot + prefixSize, headSize - prefixSize);
}

std::uint64_t sampleSum(std::uint64_t seed, const unsigned char* slot, int count) {
  return wordSum(seed ^ sampleSeed, slot + headSize, size(count) - headSize);
}

void encodeHeader(std::uint64_t seed, const TraceInfo& header, unsigned char* slot) {
  storeLe32(slot, marker);
  storeLe32(slot + 4, 0U);
  for (std::size_t i = 0; i < traceHeaderWords; ++i) storeLe32(slot + prefixSize + 4 * i, header.words[i]);
  storeLe64(slot + headerSumAt, headerSum(seed, slot));
}

}  // namespace

void encode(std::uint64_t seed, const TraceInfo& header, const float* samples, int count, unsigned char* slot) {
  encodeHeader(seed, header, slot);
  unsigned char* const data = slot + headSize;
  const auto n = static_cast<std::size_t>(count);
  for (std::size_t i = 0; i < n; ++i) storeLeFloat(data + 4 * i, samples[i]);
  if (n % 2 != 0) storeLe32(data + 4 * n, 0U);
  storeLe64(slot + sampleSumAt, sampleSum(seed, slot, count));
}

State decodeHeader(std::uint64_t seed, const unsigned char* slot, TraceInfo* header) {
  if (loadLe32(slot) != marker) return isBlank(slot, headSize) ? State::NeverWritten : State::Damaged;
  if (loadLe32(slot + 4) != 0 || loadLe64(slot + headerSumAt) != headerSum(seed, slot)) return State::Damaged;
  for (std::size_t i = 0; i < traceHeaderWords; ++i) header->words[i] = loadLe32(slot + prefixSize + 4 * i);
  return State::Written;
}

bool isBlank(const unsigned char* slot, std::size_t size) {
  return std::all_of(
      slot, slot + size, [](unsigned char byte) { return byte == 0; });
}

bool decodeSamples(std::uint64_t seed, const unsigned char* slot, int count, float* samples) {
  if (loadLe64(slot + sampleSumAt) != sampleSum(seed, slot, count)) return false;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) samples[i] = loadLeFloat(slot + headSize + 4 * i);
  return true;
}

}  // namespace traceslot
