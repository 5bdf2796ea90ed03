// Any bytes as a dataset: the header decoder, the opening and every kind of read end without a crash, and a trace that
// is answered as good is whole. With the first byte odd the rest is taken for counts and put under a sound header, so
// that what lies behind the sum is reached as well.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "libkyr/byteorder.h"
#include "libkyr/datasetfile.h"
#include "libkyr/datasets.h"

namespace {

/// The bytes as a file that takes no room on a disk.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) : descriptor_(memfd_create("kyr", MFD_CLOEXEC)) {
    if (descriptor_ < 0 || write(descriptor_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
      std::abort();
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

std::string withSoundHeader(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t fields = 24;
  std::string input(reinterpret_cast<const char*>(data), size);
  input.resize(std::max(size, fields));
  const auto count = [&](std::size_t place) { return loadLeInt32(input.data() + place); };
  DatasetHeader header;
  header.closed = (input[0] & 2) != 0;
  header.type = 11;
  header.org = newSeisOrg();
  header.setShape({count(4), count(8), count(12), count(16) & 0xFFFF, count(20)});
  const DatasetHeaderBytes bytes = encodeDatasetHeader(header);
  return std::string(bytes.begin(), bytes.end()) + input.substr(fields);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool sound = (data[0] & 1) != 0;
  const MemoryFile memory(sound ? withSoundHeader(data, size) : std::string(data, data + size));
  DatasetFile file(memory.path(), [](const std::string& /*line*/) {});
  if (file.openRead() != kyrOk) return 0;
  const DatasetShape& shape = file.shape();
  if (!shape.isSound() || shape.samples > kMaxSamples) std::abort();
  // What is told is no more than what is there, so that a caller may take memory by it.
  const std::uint64_t there = (size + kDatasetHeaderSize) / shape.slotSize();
  if (shape.slotsInPart(0) > there + static_cast<std::uint64_t>(shape.slotsPerRecord)) std::abort();
  std::vector<float> samples(static_cast<std::size_t>(shape.samples));
  for (int record = 0; record <= std::min(shape.records, 3) + 1; ++record)
    for (int trace = 0; trace <= std::min(shape.tracesPerRecord, 3) + 1; ++trace) {
      TraceInfo header{};
      const int result = file.read(record, trace, samples.data(), &header);
      if (result != kyrOk && (!IsDead(header) || std::count(samples.begin(), samples.end(), 0.0F) != shape.samples))
        std::abort();
      if (file.read(record, trace, nullptr, &header) != kyrOk && result == kyrOk) std::abort();
    }
  return 0;
}
