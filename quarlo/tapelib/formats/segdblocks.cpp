#include "quarlo/tapelib/formats/segdblocks.h"

#include <algorithm>
#include <cctype>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/formats/segdsamples.h"

namespace {

constexpr std::size_t kLabelBytes = 128;

using Bytes = std::span<const char>;

class Block {
 public:
  Block(Bytes bytes, const SegdRecord& record) : bytes_(bytes), record_(record) {}

  SegdBlock traces(bool isComplete);

 private:
  Bytes from(std::size_t place) const { return bytes_.subspan(std::min(place, bytes_.size())); }
  SegdResult<SegdTrace> header(std::size_t place) const {
    const Bytes rest = from(place);
    return readSegdTrace(rest.first(std::min(rest.size(), kSegdTraceLookBytes)), record_.revision);
  }
  bool isTraceAt(std::size_t place) const;
  std::uint32_t samplesUpTo(std::size_t bytes) const;
  std::uint32_t samplesOf(const SegdTrace& trace, const SegdChannelSet& set, std::size_t place) const;
  bool step(std::size_t* place);

  Bytes bytes_;
  const SegdRecord& record_;
  SegdBlock found_;
};

/// All traces of a field file begin with its number.
bool Block::isTraceAt(std::size_t place) const {
  const SegdResult<SegdTrace> result = header(place);
  const auto* const trace = std::get_if<SegdTrace>(&result);
  return trace != nullptr && record_.findSet(trace->scanType, trace->channelSet) != nullptr &&
         std::ranges::equal(from(place).first(2), bytes_.first(2));
}

std::uint32_t Block::samplesUpTo(std::size_t bytes) const {
  const auto bits = static_cast<std::size_t>(std::max(1, segdSampleBits(record_.formatCode)));
  std::size_t samples = bytes * 8 / bits;
  while (samples > 0 && segdTraceBytes(record_.formatCode, samples) > bytes) --samples;
  return static_cast<std::uint32_t>(samples);
}

std::uint32_t Block::samplesOf(const SegdTrace& trace, const SegdChannelSet& set, std::size_t place) const {
  if (trace.samples != 0) return trace.samples;
  const std::size_t room = from(place).size() - std::min(from(place).size(), trace.headerBytes());
  const auto bytesOf = [this](std::uint32_t samples) { return segdTraceBytes(record_.formatCode, samples); };
  const std::uint32_t described[] = {set.samples(), set.samples() + 1};
  for (const std::uint32_t samples : described)
    if (samples > 0 && bytesOf(samples) == room) return samples;
  for (const std::uint32_t samples : described)
    if (samples > 0 && bytesOf(samples) < room && isTraceAt(place + trace.headerBytes() + bytesOf(samples)))
      return samples;
  return samplesUpTo(room);
}

/// Takes the trace at a place, and goes on behind it. @return false behind the last one
bool Block::step(std::size_t* place) {
  const auto lost = [&](const SegdDamage& damage) {
    found_.damage.push_back({*place + damage.byte, damage.what});
    found_.traces.push_back({*place, 0, kNoSegdSet});
    return false;
  };
  const SegdResult<SegdTrace> result = header(*place);
  if (const auto* damage = std::get_if<SegdDamage>(&result)) return lost(*damage);
  const auto& trace = std::get<SegdTrace>(result);
  const SegdChannelSet* const set = record_.findSet(trace.scanType, trace.channelSet);
  if (set == nullptr)
    return lost({2, formatText("channel set %d of scan type %d is not described", trace.channelSet, trace.scanType)});
  const std::uint32_t samples = samplesOf(trace, *set, *place);
  const std::size_t bytes = trace.headerBytes() + segdTraceBytes(record_.formatCode, samples);
  const std::size_t room = from(*place).size();
  if (bytes > room) return lost({room, formatText("it ends after %zu of %zu bytes", room, bytes)});
  found_.traces.push_back({*place, samples, static_cast<std::uint32_t>(set - record_.sets.data())});
  *place += bytes;
  // What is left of a block may fill it up.
  return *place < bytes_.size() && isTraceAt(*place);
}

SegdBlock Block::traces(bool isComplete) {
  std::size_t place = 0;
  if (isComplete && (bytes_.size() < 2 || !isTraceAt(0))) return {};
  while (step(&place)) continue;
  return std::move(found_);
}

}  // namespace

bool isSegdLabel(std::span<const char> block) {
  return block.size() == kLabelBytes && block[3] != '\0' && block[3] != 'P' &&
         std::isalpha(static_cast<unsigned char>(block[4])) != 0 && !isGeneralHeader(block.data()) &&
         announcedHeaderBytes(block.data()) != kLabelBytes;
}

SegdBlock segdTracesOf(std::span<const char> block, const SegdRecord& record, bool isComplete) {
  return Block(block, record).traces(isComplete);
}
