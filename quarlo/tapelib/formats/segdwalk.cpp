#include "quarlo/tapelib/formats/segdwalk.h"

#include <algorithm>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"

namespace {

constexpr std::uint64_t kMostSamples = 0x7FFFFFFF;

unsigned long long shown(std::uint64_t number) { return number; }

// What is wrong with the next trace of a field file.
std::string nextTrace(const SegdFieldFile& file, const std::string& what) {
  return formatText("trace %zu of %llu: %s", file.traces.size() + 1, shown(file.record.traces()), what.c_str());
}

}  // namespace

std::span<const char> SegdWalk::at(std::uint64_t place, std::uint64_t count) const {
  if (place >= size_) return {};
  return input_.at(place, static_cast<std::size_t>(std::min(count, size_ - place)));
}

bool SegdWalk::beginsFieldFile(std::uint64_t place) const {
  const std::span<const char> bytes = at(place, kSegdStartBytes);
  return bytes.size() >= kSegdBlockBytes && std::holds_alternative<SegdSizes>(segdSizes(bytes));
}

std::optional<SegdFieldFile> SegdWalk::next() {
  if (isLost_ || place_ >= size_) return std::nullopt;
  // What follows the last field file is no field file's damage.
  const std::span<const char> start = at(place_, kSegdBlockBytes);
  if (place_ > 0 && (start.size() < kSegdBlockBytes || !isGeneralHeader(start.data()))) return std::nullopt;
  SegdFieldFile file;
  file.byte = place_;
  file.end = place_;
  if (readHeaders(file)) findTraces(file);
  isLost_ = isLost_ || file.end <= place_;
  place_ = file.end;
  return file;
}

bool SegdWalk::readHeaders(SegdFieldFile& file) {
  const auto fail = [&file](const SegdDamage& damage) {
    file.damage.push_back({file.byte + damage.byte, damage.what});
    return false;
  };
  const SegdResult<SegdSizes> result = segdSizes(at(file.byte, kSegdStartBytes));
  if (const auto* damage = std::get_if<SegdDamage>(&result)) return fail(*damage);
  const auto& sizes = std::get<SegdSizes>(result);
  const std::uint64_t there = size_ - file.byte;
  if (sizes.headerBytes() > there)
    return fail(
        {there, formatText("the headers end after %llu of %llu bytes", shown(there), shown(sizes.headerBytes()))});
  SegdResult<SegdRecord> record = readSegdRecord(at(file.byte, sizes.describingBytes()));
  if (const auto* damage = std::get_if<SegdDamage>(&record)) return fail(*damage);
  file.record = std::move(std::get<SegdRecord>(record));
  return true;
}

void SegdWalk::findTraces(SegdFieldFile& file) {
  file.end = file.byte + file.record.sizes.headerBytes();
  if (file.record.isMultiplexed()) {
    findScans(file);
  } else {
    settled_.assign(file.record.sets.size(), 0);
    const std::uint64_t announced = file.record.traces();
    while (file.traces.size() < announced)
      if (!stepOverTrace(file, file.end)) return;
  }
  skipTrailer(file);
}

void SegdWalk::skipTrailer(SegdFieldFile& file) const {
  const std::uint64_t bytes = file.record.trailerBytes;
  if (bytes == 0 || beginsFieldFile(file.end)) return;
  const std::uint64_t there = std::min(bytes, size_ - file.end);
  file.end += there;
  if (there < bytes)
    file.damage.push_back(
        {file.end, formatText("the trailer ends after %llu of %llu bytes", shown(there), shown(bytes))});
}

// ---- traces -------------------------------------------------------------------------------------------------------

bool SegdWalk::goesOnAt(const SegdFieldFile& file, std::uint64_t place, std::uint64_t before) const {
  if (file.traces.size() + 1 >= file.record.traces()) {
    const std::uint64_t end = place + file.record.trailerBytes;
    return end == size_ || beginsFieldFile(end);
  }
  const std::span<const char> found = at(place, kSegdTraceLookBytes);
  const SegdResult<SegdTrace> result = readSegdTrace(found, file.record.revision);
  const SegdTrace* trace = std::get_if<SegdTrace>(&result);
  if (trace == nullptr || file.record.findSet(trace->scanType, trace->channelSet) == nullptr) return false;
  // All traces of a field file begin with its number.
  const char number[2] = {found[0], found[1]};
  const std::span<const char> other = at(before, sizeof number);
  return std::ranges::equal(number, other);
}

// Where no extension tells the samples, recorders take the end of the time with them or leave it out: what follows
// decides.
std::uint32_t SegdWalk::settleSamples(const SegdFieldFile& file, const SegdTrace& trace, std::uint32_t set,
                                      std::uint64_t place) {
  if (settled_[set] != 0) return settled_[set];
  const std::uint32_t described = file.record.sets[set].samples();
  for (const std::uint32_t samples : {described, described + 1}) {
    const std::uint64_t end = place + trace.headerBytes() + segdTraceBytes(file.record.formatCode, samples);
    if (samples > 0 && goesOnAt(file, end, place)) return settled_[set] = samples;
  }
  return described;
}

bool SegdWalk::stepOverTrace(SegdFieldFile& file, std::uint64_t& place) {
  const SegdResult<SegdTrace> result = readSegdTrace(at(place, kSegdTraceLookBytes), file.record.revision);
  if (const auto* damage = std::get_if<SegdDamage>(&result)) return stepOverDamage(file, place, *damage);
  const SegdTrace& trace = std::get<SegdTrace>(result);
  const SegdChannelSet* set = file.record.findSet(trace.scanType, trace.channelSet);
  if (set == nullptr)
    return stepOverDamage(
        file, place,
        {2, formatText("channel set %d of scan type %d is not described", trace.channelSet, trace.scanType)});
  const auto index = static_cast<std::uint32_t>(set - file.record.sets.data());
  const std::uint32_t samples = trace.samples != 0 ? trace.samples : settleSamples(file, trace, index, place);
  const std::uint64_t bytes = trace.headerBytes() + segdTraceBytes(file.record.formatCode, samples);
  if (bytes > size_ - place) {
    file.damage.push_back(
        {size_, nextTrace(file, formatText("it ends after %llu of %llu bytes", shown(size_ - place), shown(bytes)))});
    file.traces.push_back({place, 0, kNoSegdSet});
    place = size_;
    return false;
  }
  file.traces.push_back({place, samples, index});
  place += bytes;
  return true;
}

// A trace whose header cannot be read is as long as the one before it when that leads to the next; without that the
// rest of the field file is lost, and with it the way to the next, unless that begins here.
bool SegdWalk::stepOverDamage(SegdFieldFile& file, std::uint64_t& place, const SegdDamage& damage) {
  if (place >= size_ || beginsFieldFile(place)) {
    file.damage.push_back({place, nextTrace(file, "it is missing")});
    return false;
  }
  file.damage.push_back({place + damage.byte, nextTrace(file, damage.what)});
  if (!file.traces.empty()) {
    const std::uint64_t before = file.traces.back().byte;
    const std::uint64_t length = place - before;
    if (length <= size_ - place && goesOnAt(file, place + length, before)) {
      file.traces.push_back({place, file.traces.back().samples, kNoSegdSet});
      place += length;
      return true;
    }
  }
  isLost_ = true;
  return false;
}

// ---- scans --------------------------------------------------------------------------------------------------------

void SegdWalk::findScans(SegdFieldFile& file) {
  const SegdResult<SegdScans> described = SegdScans::describe(file.record);
  if (const auto* damage = std::get_if<SegdDamage>(&described)) {
    file.damage.push_back({file.byte + damage->byte, damage->what});
    isLost_ = true;
    return;
  }
  file.scans = std::get<SegdScans>(described);
  const std::uint64_t data = file.end;
  std::uint32_t scans = 0;
  while (file.scans.bytes() <= size_ - file.end && isSegdScanStart(at(file.end, kSegdScanStartBytes))) {
    file.end += file.scans.bytes();
    ++scans;
  }
  if (scans == 0) isLost_ = true;
  if (scans < file.scans.announced())
    file.damage.push_back({file.end, formatText("scan %u of %u: it is missing", scans + 1, file.scans.announced())});
  for (std::size_t set = 0; scans > 0 && set < file.record.sets.size(); ++set) {
    const SegdScans::Range range = file.scans.rangeOf(set, scans);
    const SegdChannelSet& its = file.record.sets[set];
    const std::uint64_t samples = std::uint64_t{range.count} * static_cast<std::uint64_t>(its.subscans);
    const SegdTracePlace place{data + std::uint64_t{range.first} * file.scans.bytes(),
                               static_cast<std::uint32_t>(std::min(samples, kMostSamples)),
                               static_cast<std::uint32_t>(set)};
    file.traces.insert(file.traces.end(), static_cast<std::size_t>(its.channels), place);
  }
}
