// A SEG D input of any bytes: the walk over its field files and traces, then every trace's samples. Answers lie in
// memory of exactly their size, so that the sanitizers see one step too far. Bytes that begin no field file are put
// behind headers that do, which they then change.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "quarlo/tapelib/formats/segdwalk.h"

namespace {

using Bytes = std::vector<char>;

void require(bool holds) {
  if (!holds) std::abort();
}

// Two field files of one channel set; the first bytes choose their format and revision and change their headers.
Bytes recording(const Bytes& input) {
  constexpr int kCodes[] = {0x15, 0x22, 0x24, 0x36, 0x38, 0x42, 0x44, 0x48, 0x58};
  const auto chosen = static_cast<unsigned char>(input.empty() ? 0 : input[0]);
  const bool isMultiplexed = (chosen & 0x80U) != 0;
  Bytes file(96);
  file[2] = isMultiplexed ? '\0' : '\x80';
  file[3] = static_cast<char>(kCodes[chosen % 9]);
  file[11] = 0x10;
  file[22] = 16;
  file[27] = file[28] = 1;
  file[32 + 10] = static_cast<char>(chosen / 9 % 4);
  const char set[] = {1, 1, 0, 0, 0, 4, 0, 0, 0, 4, 0x10};
  std::ranges::copy(set, file.begin() + 64);
  if (file[42] == 3) file.resize(160);
  for (int i = 0; i < 4 && !isMultiplexed; ++i) {
    file.insert(file.end(), {0, 0, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    file.insert(file.end(), 32, '\x01');
  }
  for (int i = 0; i < 8 && isMultiplexed; ++i) {
    file.insert(file.end(), 8, '\xFF');
    file.insert(file.end(), 16, '\x01');
  }
  file.insert(file.end(), file.begin(), file.end() - 3);
  for (std::size_t i = 1; i + 2 < std::min<std::size_t>(input.size(), 20); i += 3)
    file[(static_cast<unsigned char>(input[i]) * 256U + static_cast<unsigned char>(input[i + 1])) % file.size()] =
        input[i + 2];
  file.insert(file.end(), input.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(input.size(), 20)),
              input.end());
  return file;
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

void walk(const Bytes& input) {
  MemoryBytes memory(input);
  SegdWalk walk(memory);
  std::uint64_t end = 0;
  while (const auto file = walk.next()) {
    require(file->byte == end && file->end >= end && walk.rest() == input.size() - file->end);
    require(file->end > end || !file->damage.empty());
    end = file->end;
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
  walk(recording(input));
  return 0;
}
