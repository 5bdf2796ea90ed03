// A SEG D input of any bytes: the walk over its field files and traces, its traces as a block of a tape, then every
// trace's samples. Answers lie in
// memory of exactly their size, so that the sanitizers see one step too far. Bytes that begin no field file are put
// behind headers that do, which they then change.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz/segd_recording.h"
#include "quarlo/tapelib/formats/segdblocks.h"
#include "quarlo/tapelib/formats/segdwalk.h"

namespace {

using Bytes = std::vector<char>;

void require(bool holds) {
  if (!holds) std::abort();
}

void decode(const Bytes& input, const SegdFieldFile& file, std::size_t index, std::size_t inSet) {
  const SegdTracePlace& place = file.traces[index];
  require(place.byte >= file.byte && place.byte <= file.end && file.end <= input.size());
  if (place.set == kNoSegdSet) return;
  const SegdChannelSet& set = file.record.sets.at(place.set);
  std::vector<float> samples(std::min<std::size_t>(place.samples, input.size() * 2));
  const Bytes data(input.begin() + static_cast<std::ptrdiff_t>(place.byte), input.end());
  const double volts = segdVolts(set.toMillivolts);
  if (file.record.isMultiplexed()) {
    require(decodeSegdScans(file.record.formatCode, data, file.scans.placeOf(place.set, inSet), volts, samples) ==
            place.samples);
    return;
  }
  const auto trace = std::get<SegdTrace>(readSegdTrace(data, file.record.revision));
  const std::size_t header = std::min(trace.headerBytes(), data.size());
  const Bytes recorded(data.begin() + static_cast<std::ptrdiff_t>(header), data.end());
  decodeSegdTrace(file.record.formatCode, recorded, volts, samples);
}

class MemoryBytes : public BytesAt {
 public:
  explicit MemoryBytes(const Bytes& input) : input_(input) {}
  std::uint64_t size() const override { return input_.size(); }
  std::span<const char> at(std::uint64_t place, std::size_t count) override {
    require(place <= input_.size() && count <= input_.size() - place);
    const auto from = input_.begin() + static_cast<std::ptrdiff_t>(place);
    answer_ = Bytes(from, from + static_cast<std::ptrdiff_t>(count));
    return answer_;
  }

 private:
  const Bytes& input_;
  Bytes answer_;
};

/// All behind the headers as one block of a tape.
void takeApart(const Bytes& input, const SegdFieldFile& file) {
  const std::uint64_t begin = std::min<std::uint64_t>(file.byte + file.record.sizes.headerBytes(), input.size());
  const Bytes block(input.begin() + static_cast<std::ptrdiff_t>(begin), input.end());
  if (file.record.sets.empty() || file.record.isMultiplexed()) return;
  std::uint64_t end = 0;
  for (const SegdTracePlace& place : segdTracesOf(block, file.record, false).traces) {
    require(place.byte >= end && place.byte <= block.size());
    if (place.set == kNoSegdSet) continue;
    end = place.byte + segdTraceBytes(file.record.formatCode, place.samples);
    require(end <= block.size());
  }
}

void walk(const Bytes& input) {
  MemoryBytes memory(input);
  SegdWalk walk(memory);
  std::uint64_t end = 0;
  while (const auto file = walk.next()) {
    require(file->byte == end && file->end >= end && walk.rest() == input.size() - file->end);
    require(file->end > end || !file->damage.empty());
    end = file->end;
    takeApart(input, *file);
    std::size_t inSet = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(file->traces.size(), 64); ++i) {
      inSet = i > 0 && file->traces[i].set == file->traces[i - 1].set ? inSet + 1 : 0;
      decode(input, *file, i, inSet);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Bytes input(bytes, bytes + size);
  walk(input);
  walk(segdRecording(input));
  return 0;
}
