// SEG Y files: reel headers whose telling bytes are the input's, traces that are its rest, drawn out so that whole
// headers lie among them. Whatever the layout says must lie in the file, trace behind trace; headers, samples and
// records are read.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "quarlo/tapelib/formats/segyformat_text.h"
#include "quarlo/tapelib/formats/segytraces.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

class Memory : public BytesAt {
 public:
  explicit Memory(const std::string& bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::span<const char> at(std::uint64_t place, std::size_t count) override {
    const std::size_t start = std::min<std::uint64_t>(place, bytes_.size());
    return std::span(bytes_).subspan(start, std::min(count, bytes_.size() - start));
  }

 private:
  const std::string& bytes_;
};

/// Short text header; fields of all kinds, one of them beyond a short trace header.
constexpr const char* kDescription =
    "Quarlo SEG Y format, version 2, readable from 2\n"
    "reel-header = yes\nreel-header-bytes = 16\nbinary-header = yes\nbinary-header-bytes = 400\n"
    "trace-header = yes\ntrace-header-bytes = 480\n"
    "[binary Nt]\ntype = uint16\nbyte = 21\n[binary ExtendedNt]\ntype = uint32\nbyte = 69\nreplaces = Nt\n"
    "[binary Dt]\ntype = int16\nbyte = 17\n[binary ExtendedDt]\ntype = float64\nbyte = 73\nreplaces = Dt\n"
    "[binary SampFormat]\ntype = int16\nbyte = 25\n"
    "[trace FieldFile]\ntype = float32\nbyte = 9\ninput-property = 8\n"
    "[trace Nt]\ntype = int16\nbyte = 115\n[trace Dt]\ntype = int32\nbyte = 117\n"
    "[trace TraceType]\ntype = int8\nbyte = 30\ninput-property = 12\n"
    "[trace SourceX]\ntype = int32\nbyte = 73\nscale-field = Scalar\ninput-property = 17\n"
    "[trace Scalar]\ntype = int16\nbyte = 71\n"
    "[trace WideX]\ntype = float64\nbyte = 337\nreplaces = SourceX\n"
    "[trace WeightingFactor]\ntype = int16\nbyte = 169\n";

const SegyFormat& description() {
  static const SegyFormat format = [] {
    SegyFormat parsed;
    require(parseSegyFormat(kDescription, &parsed).empty());
    return parsed;
  }();
  return format;
}

std::string fileOf(const std::uint8_t* input, std::size_t size) {
  std::string file(416, '\0');
  std::size_t used = 0;
  const auto fill = [&](std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < count && used < size; ++i) file[15 + first + i] = static_cast<char>(input[used++]);
  };
  fill(21, 6);
  if (used < size) file[15 + 26] = static_cast<char>(input[used++] % 18);
  fill(301, 9);
  if (size % 2 == 0) fill(61, 40);
  if (size % 3 == 0) fill(310, 23);
  for (; used < size; ++used)
    if (input[used] < 0x80)
      file += static_cast<char>(input[used]);
    else
      file.append(input[used] - 0x7FU, '\0');
  return file;
}

void readAll(const std::string& bytes, const SegyLayout& layout) {
  Memory file(bytes);
  SegyTraceReader reader(description(), layout);
  std::uint64_t place = layout.firstTrace;
  for (std::uint64_t trace = 0; trace < layout.traces; ++trace) {
    const SegyPlace found = layout.placeOf(trace);
    require(found.place == place);
    const std::size_t data = std::size_t{found.samples} * layout.sampleBytes;
    place += found.headerBytes + data;
    const auto whole = file.at(found.place, found.headerBytes + data);
    require(whole.size() == found.headerBytes + data);
    TraceInfo info;
    reader.readHeader(whole.first(found.headerBytes), &info);
    std::vector<float> samples(layout.samples());
    reader.readSamples(whole.first(found.headerBytes), whole.subspan(found.headerBytes), samples);
  }
  require(place + layout.rest == layout.end && layout.end <= bytes.size());
  require(layout.firstTraces.empty() == (layout.traces == 0) && layout.largestRecord <= layout.traces);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  const std::string bytes = fileOf(input, size);
  for (const SegyChoices& choices : {SegyChoices{}, SegyChoices{{}, false, 3}, SegyChoices{{}, {}, 1}}) {
    std::string reason;
    Memory file(bytes);
    const auto layout = segyFileLayout(file, description(), choices, &reason);
    require(layout.has_value() || !reason.empty());
    if (layout) readAll(bytes, *layout);
    const auto tape =
        segyTapeLayout(std::span(bytes).first(16), std::span(bytes).subspan(16, std::min<std::size_t>(size, 400)),
                       description(), choices, &reason);
    if (tape) placeInBlock(*tape, bytes);
  }
  return 0;
}
