#include "libkyr/traceslot.h"

#include <algorithm>

#include "libkyr/byteorder.h"
#include "libkyr/wordsum.h"

namespace traceslot {

namespace {

constexpr std::uint32_t kMarker = 0x4352544BU;  // "KTRC"
constexpr std::size_t kHeaderSumAt = 8;
constexpr std::size_t kSampleSumAt = 16;
// So that a header's sum is not taken for that of samples with the same bytes.
constexpr std::uint64_t kSampleSeed = 0xA5A5A5A5A5A5A5A5U;

std::uint64_t headerSum(std::uint64_t seed, const unsigned char* slot) {
  return wordSum(seed, slot + kPrefixSize, kHeadSize - kPrefixSize);
}

std::uint64_t sampleSum(std::uint64_t seed, const unsigned char* slot, int count) {
  return wordSum(seed ^ kSampleSeed, slot + kHeadSize, size(count) - kHeadSize);
}

void encodeHeader(std::uint64_t seed, const TraceInfo& header, unsigned char* slot) {
  storeLe32(slot, kMarker);
  storeLe32(slot + 4, 0U);
  for (std::size_t i = 0; i < kTraceHeaderWords; ++i) storeLe32(slot + kPrefixSize + 4 * i, header.words[i]);
  storeLe64(slot + kHeaderSumAt, headerSum(seed, slot));
}

}  // namespace

void encode(std::uint64_t seed, const TraceInfo& header, const float* samples, int count, unsigned char* slot) {
  encodeHeader(seed, header, slot);
  unsigned char* const data = slot + kHeadSize;
  const auto n = static_cast<std::size_t>(count);
  storeLeFloats(data, samples, n);
  if (n % 2 != 0) storeLe32(data + 4 * n, 0U);
  storeLe64(slot + kSampleSumAt, sampleSum(seed, slot, count));
}

State decodeHeader(std::uint64_t seed, const unsigned char* slot, TraceInfo* header) {
  if (loadLe32(slot) != kMarker) return isBlank(slot, kHeadSize) ? State::NeverWritten : State::Damaged;
  if (loadLe32(slot + 4) != 0 || loadLe64(slot + kHeaderSumAt) != headerSum(seed, slot)) return State::Damaged;
  for (std::size_t i = 0; i < kTraceHeaderWords; ++i) header->words[i] = loadLe32(slot + kPrefixSize + 4 * i);
  return State::Written;
}

bool isBlank(const unsigned char* slot, std::size_t size) {
  return std::all_of(
      slot, slot + size, [](unsigned char byte) { return byte == 0; });
}

bool decodeSamples(std::uint64_t seed, const unsigned char* slot, int count, float* samples) {
  if (loadLe64(slot + kSampleSumAt) != sampleSum(seed, slot, count)) return false;
  loadLeFloats(slot + kHeadSize, samples, static_cast<std::size_t>(count));
  return true;
}

}  // namespace traceslot
