#include "quarlo/tapelib/formats/segdscan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "libkyr/text.h"

namespace {

// 1-based byte of general header 1 that announces the bytes per scan, from 0.
constexpr std::uint64_t kBytesPerScanAt = 19;
// No recorder's scan comes near; its channels are counted in memory before they are believed.
constexpr std::uint64_t kLargestScan = std::uint64_t{1} << 24;

std::uint32_t scansUntil(double milliseconds, double interval) {
  if (interval <= 0 || !(milliseconds > 0)) return 0;
  return static_cast<std::uint32_t>(std::min(std::floor(milliseconds / interval + 1e-6), 0x1p30));
}

std::string disagreement(int announced, std::uint64_t taken) {
  return formatText("a scan of %d bytes is announced, its channel sets take %llu", announced,
                    static_cast<unsigned long long>(taken));
}

}  // namespace

void SegdScans::add(const SegdChannelSet& set, const SegdRecord& record, std::uint64_t& end) {
  const auto subscanBytes = segdTraceBytes(record.formatCode, static_cast<std::size_t>(set.channels));
  const Range range{scansUntil(set.start, record.interval), scansUntil(set.end - set.start, record.interval)};
  sets_.push_back({static_cast<std::size_t>(end), subscanBytes, set.subscans, range});
  announced_ = std::max(announced_, range.first + range.count);
  end += subscanBytes * static_cast<std::uint64_t>(set.subscans);
}

SegdResult<SegdScans> SegdScans::describe(const SegdRecord& record) {
  SegdScans scans;
  if (segdSampleBits(record.formatCode) != 20) scans.sampleBytes_ = segdTraceBytes(record.formatCode, 1);
  std::vector<std::uint64_t> lengths;  // of each scan type
  int scanType = -1;
  for (const SegdChannelSet& set : record.sets) {
    if (set.scanType != scanType) lengths.push_back(kSegdScanStartBytes);
    scanType = set.scanType;
    scans.add(set, record, lengths.back());
    if (lengths.back() > kLargestScan)
      return SegdDamage{kBytesPerScanAt, disagreement(record.bytesPerScan, lengths.back())};
  }
  if (lengths.empty()) return SegdDamage{kBytesPerScanAt, "no channel set describes its scans"};
  if (std::ranges::adjacent_find(lengths, std::ranges::not_equal_to()) != lengths.end())
    return SegdDamage{kBytesPerScanAt, "its scan types differ in length"};
  scans.hasOneType_ = lengths.size() == 1;
  scans.bytes_ = static_cast<std::size_t>(lengths.front());
  // Recorders count the start of a scan in or leave it out, or announce nothing.
  const auto announced = static_cast<std::size_t>(record.bytesPerScan);
  if (announced != 0 && announced != scans.bytes_ && announced + kSegdScanStartBytes != scans.bytes_)
    return SegdDamage{kBytesPerScanAt, disagreement(record.bytesPerScan, scans.bytes_)};
  return scans;
}

SegdScans::Range SegdScans::rangeOf(std::size_t set, std::uint32_t scans) const {
  if (hasOneType_) return {0, scans};
  const Range& said = sets_[set].scans;
  const std::uint32_t first = std::min(said.first, scans);
  return {first, std::min(said.count, scans - first)};
}

SegdScanPlace SegdScans::placeOf(std::size_t set, std::size_t channel) const {
  const Set& its = sets_[set];
  const bool isGrouped = sampleBytes_ == 0;
  return {.scanBytes = bytes_,
          .subscanBytes = its.subscanBytes,
          .first = its.first + (isGrouped ? channel / 4 * 10 : channel * sampleBytes_),
          .place = isGrouped ? static_cast<int>(channel % 4) : 0,
          .subscans = its.subscans};
}

bool isSegdScanStart(std::span<const char> bytes) {
  return bytes.size() >= 3 && std::ranges::all_of(
                                  bytes.first(3), [](char byte) { return byte == '\xFF'; });
}
