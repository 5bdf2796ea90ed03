#include "quarlo/tapelib/formats/segdrecord.h"

#include <algorithm>
#include <cmath>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdfields.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/formats/segdsamples.h"

using namespace segdfields;

namespace {

constexpr std::uint32_t kBlock = kSegdBlockBytes;
constexpr double kLengthDigit = 102.4;   // milliseconds of a record length digit
constexpr double kHeaderIntervals = 16;  // base scan intervals count in 1/16 ms

// Blocks one behind the other, and the first thing that is wrong in them. Fields have their block's place and 1-based
// positions within it.
class Blocks {
 public:
  explicit Blocks(std::span<const char> bytes) : bytes_(bytes) {}

  /// Tells damage unless the first `bytes` are there: what ends, and that it does.
  bool holds(std::uint64_t bytes, const char* name) {
    if (bytes_.size() >= bytes) return true;
    fail(bytes_.size(),
         formatText("%s after %zu of %llu bytes", name, bytes_.size(), static_cast<unsigned long long>(bytes)));
    return false;
  }
  const char* at(std::uint64_t place) const { return bytes_.data() + place; }

  /// BCD digits that fill whole bytes; 0, and damage, where they are none.
  int count(std::uint64_t place, int position, int bytes, const char* name) {
    const char* block = at(place);
    if (areDigits(block, position, bytes)) return digits(block, position, 2 * bytes);
    std::string shown;
    for (int i = 0; i < bytes; ++i) shown += formatText("%02X", static_cast<unsigned>(byteAt(block, position + i)));
    fail(place + static_cast<std::uint64_t>(position - 1), formatText("the %s is no number (%s)", name, shown.c_str()));
    return 0;
  }

  void fail(std::uint64_t byte, std::string what) {
    if (!damage_) damage_ = SegdDamage{byte, std::move(what)};
  }
  const std::optional<SegdDamage>& damage() const { return damage_; }

 private:
  std::span<const char> bytes_;
  std::optional<SegdDamage> damage_;
};

std::uint32_t binary32(const char* block, int position) { return loadBe32(block + position - 1); }

struct Revision {
  int whole = 0;
  int part = 0;
};

// Before revision 1 the second general header is its recorder's own: what is no known revision counts as revision 0.
Revision revisionOf(const char* second) {
  const Revision said{byteAt(second, 11), byteAt(second, 12)};
  return said.whole >= 1 && said.whole <= 3 ? said : Revision{};
}

// ---- general headers ----------------------------------------------------------------------------------------------

// A count of general header 1 whose FF points to general header 2.
std::uint32_t extendedCount(Blocks& blocks, int position, std::uint32_t instead, bool hasSecond, const char* name) {
  if (byteAt(blocks.at(0), position) != kExtended)
    return static_cast<std::uint32_t>(blocks.count(0, position, 1, name));
  if (!hasSecond)
    blocks.fail(static_cast<std::uint64_t>(position - 1),
                formatText("the %s stands in general header 2, which is missing", name));
  return instead;
}

// External header blocks by general header 2; revision 3 has more room for them.
std::uint32_t externalBlocks(const char* second, int revision) {
  const int said = binary16(second, 8);
  return static_cast<std::uint32_t>(revision == 3 && said == kExtended16 ? binary24(second, 27) : said);
}

SegdSizes sizesOf(Blocks& blocks) {
  SegdSizes sizes;
  const char* first = blocks.at(0);
  sizes.generalBlocks = 1U + static_cast<std::uint32_t>(highNibble(first, 12));
  const bool hasSecond = sizes.generalBlocks > 1;
  const char none[kBlock] = {};
  const char* second = hasSecond ? blocks.at(kBlock) : none;
  const int revision = revisionOf(second).whole;
  if (revision == 3) {
    sizes.descriptorBytes = 3 * kBlock;
    if (sizes.generalBlocks == 16) sizes.generalBlocks = 1U + static_cast<std::uint32_t>(binary16(second, 22));
  }
  const auto binary = [second](int position) { return static_cast<std::uint32_t>(binary16(second, position)); };
  sizes.scanTypes = static_cast<std::uint32_t>(blocks.count(0, 28, 1, "number of scan types"));
  sizes.channelSets = extendedCount(blocks, 29, binary(4), hasSecond, "number of channel sets");
  sizes.skewBlocks = static_cast<std::uint32_t>(blocks.count(0, 30, 1, "number of sample skew blocks"));
  sizes.extendedBlocks = extendedCount(blocks, 31, binary(6), hasSecond, "number of extended header blocks");
  sizes.externalBlocks =
      extendedCount(blocks, 32, externalBlocks(second, revision), hasSecond, "number of external header blocks");
  return sizes;
}

std::optional<SegdTime> timeOf(const char* first) {
  if (!areDigits(first, 11, 1) || lowNibble(first, 12) > 9 || !areDigits(first, 13, 4)) return std::nullopt;
  const int year = digits(first, 11, 2);
  return SegdTime{.year = year + (year < 70 ? 2000 : 1900),
                  .day = unbcd(first, 11, 2, 3),
                  .hour = digits(first, 14, 2),
                  .minute = digits(first, 15, 2),
                  .second = digits(first, 16, 2)};
}

bool hasLongRecord(const char* first) { return lowNibble(first, 26) == 15 && byteAt(first, 27) == kExtended; }

void takeFirst(const char* first, SegdRecord& record) {
  record.formatCode = digits(first, 3, 4);
  if (areDigits(first, 1, 2)) record.fieldFile = digits(first, 1, 4);
  record.time = timeOf(first);
  record.manufacturer = digits(first, 17, 2);
  record.bytesPerScan = digits(first, 20, 6);
  record.interval = byteAt(first, 23) / kHeaderIntervals;
  record.recordType = highNibble(first, 26);
  if (!hasLongRecord(first)) record.length = unbcd(first, 25, 2, 3) * kLengthDigit;
}

void takeSecond(const char* first, const char* second, SegdRecord& record) {
  const Revision revision = revisionOf(second);
  record.revision = revision.whole;
  record.minorRevision = revision.part;
  if (binary16(first, 1) == kExtended16) record.fieldFile = binary24(second, 1);
  const bool isThird = revision.whole == 3;
  if (hasLongRecord(first)) record.length = isThird ? binary32(second, 17) / 1000.0 : binary24(second, 15);
  if (isThird && byteAt(first, 23) == kExtended) record.interval = binary24(second, 24) / 1000.0;
  const std::uint32_t trailer = isThird ? binary32(second, 13) : static_cast<std::uint32_t>(binary16(second, 13));
  if (record.revision > 0) record.trailerBytes = std::uint64_t{trailer} * kBlock;
}

// ---- lines and points ---------------------------------------------------------------------------------------------

constexpr int kNoPlace = -1;  // FFFFFF

// Three bytes before the point, two behind it; FFFFFF says that there is none.
std::optional<double> placeWithFraction(const char* block, int position) {
  const int whole = get3byte(block + position - 1);
  if (whole == kNoPlace) return std::nullopt;
  return whole + binary16(block, position + 3) / 0x1p16;
}

// Until revision 3 the third general header describes the first source; there its blocks are marked.
bool describesSource(const char* block, std::uint32_t index, int revision) {
  if (revision == 3) return byteAt(block, 32) >= 0x15 && byteAt(block, 32) <= 0x1F;
  return revision > 0 && index == 2;
}

void takeSource(const Blocks& blocks, SegdRecord& record) {
  for (std::uint32_t index = 2; index < record.sizes.generalBlocks; ++index) {
    const char* block = blocks.at(std::uint64_t{index} * kBlock);
    if (!describesSource(block, index, record.revision)) continue;
    record.sourceLine = placeWithFraction(block, 4);
    record.sourcePoint = placeWithFraction(block, 9);
    return;
  }
}

// ---- channel sets -------------------------------------------------------------------------------------------------

// Sign and magnitude: quarters in byte 8, from revision 1 on 1/1024 with the low byte before it. 0, as recorders write
// that have no factor, is a factor of 1.
double factorOf(const char* block, int revision) {
  const int word = byteAt(block, 8) << 8 | (revision > 0 ? byteAt(block, 7) : 0);
  const double exponent = (word & 0x7FFF) / 1024.0;
  return std::exp2((word & 0x8000) != 0 ? -exponent : exponent);
}

SegdChannelSet describedSet(Blocks& blocks, std::uint64_t place, const SegdRecord& record) {
  const char* block = blocks.at(place);
  SegdChannelSet set;
  set.channels = blocks.count(place, 9, 2, "number of channels");
  if (set.channels == 0) return set;
  set.scanType = blocks.count(place, 1, 1, "scan type");
  set.number = byteAt(block, 2) == kExtended ? binary16(block, 27) : blocks.count(place, 2, 1, "channel set number");
  set.type = highNibble(block, 11);
  set.start = binary16(block, 3) * 2.0;
  set.end = binary16(block, 5) * 2.0;
  set.subscans = 1 << highNibble(block, 12);
  set.interval = record.interval / set.subscans;
  set.toMillivolts = factorOf(block, record.revision);
  set.extensions = lowNibble(block, 29);
  return set;
}

SegdChannelSet describedSet3(Blocks& blocks, std::uint64_t place) {
  const char* block = blocks.at(place);
  SegdChannelSet set;
  set.channels = binary24(block, 21);
  if (set.channels == 0) return set;
  set.scanType = blocks.count(place, 1, 1, "scan type");
  set.number = binary16(block, 2);
  set.type = highNibble(block, 4);
  set.start = loadBeInt32(block + 4) / 1000.0;
  set.end = loadBeInt32(block + 8) / 1000.0;
  set.interval = binary24(block, 24) / 1000.0;
  const double factor = loadBeFloat(block + 16);
  set.toMillivolts = std::isfinite(factor) && factor != 0 ? factor : 1.0;
  set.physicalUnit = byteAt(block, 62);
  set.extensions = byteAt(block, 28);
  return set;
}

void takeSet(Blocks& blocks, std::uint64_t place, SegdRecord& record) {
  SegdChannelSet set = record.revision == 3 ? describedSet3(blocks, place) : describedSet(blocks, place, record);
  if (set.channels == 0) {
    ++record.emptySets;
    return;
  }
  if (set.end == 0) set.end = record.length;
  record.sets.push_back(set);
}

void takeSets(Blocks& blocks, SegdRecord& record) {
  const SegdSizes& sizes = record.sizes;
  std::uint64_t place = std::uint64_t{sizes.generalBlocks} * kBlock;
  for (std::uint32_t type = 0; type < sizes.scanTypes; ++type) {
    for (std::uint32_t i = 0; i < sizes.channelSets && !blocks.damage(); ++i, place += sizes.descriptorBytes)
      takeSet(blocks, place, record);
    place += std::uint64_t{sizes.skewBlocks} * kBlock;
  }
}

void checkFormat(Blocks& blocks) {
  const char* first = blocks.at(0);
  if (!isGeneralHeader(first))
    blocks.fail(2, formatText("%02X%02X is no format code of SEG D", static_cast<unsigned>(byteAt(first, 3)),
                              static_cast<unsigned>(byteAt(first, 4))));
}

// The general headers that tell the sizes are there, and a field file begins with them.
bool beginsFieldFile(Blocks& blocks) {
  if (!blocks.holds(kBlock, "the general headers end")) return false;
  checkFormat(blocks);
  return !blocks.damage() &&
         (highNibble(blocks.at(0), 12) == 0 || blocks.holds(kSegdStartBytes, "the general headers end"));
}

}  // namespace

std::uint32_t SegdChannelSet::samples() const {
  if (interval <= 0 || !(end > start)) return 0;
  // Up to 2^32 microseconds of at least one: what is beyond the count was never recorded.
  return static_cast<std::uint32_t>(std::min(std::floor((end - start) / interval + 1e-6), 0x1p31));
}

std::uint64_t SegdSizes::describingBytes() const {
  const std::uint64_t scanType = std::uint64_t{channelSets} * descriptorBytes + std::uint64_t{skewBlocks} * kBlock;
  return std::uint64_t{generalBlocks} * kBlock + scanType * scanTypes;
}

std::uint64_t SegdSizes::headerBytes() const {
  return describingBytes() + (std::uint64_t{extendedBlocks} + externalBlocks) * kBlock;
}

std::uint64_t SegdRecord::traces() const {
  std::uint64_t traces = 0;
  for (const SegdChannelSet& set : sets) traces += static_cast<std::uint64_t>(set.channels);
  return traces;
}

const SegdChannelSet* SegdRecord::findSet(int scanType, int number) const {
  const auto found = std::ranges::find_if(
      sets, [=](const SegdChannelSet& set) { return set.scanType == scanType && set.number == number; });
  return found == sets.end() ? nullptr : &*found;
}

SegdResult<SegdSizes> segdSizes(std::span<const char> start) {
  Blocks blocks(start);
  if (!beginsFieldFile(blocks)) return *blocks.damage();
  const SegdSizes sizes = sizesOf(blocks);
  if (blocks.damage()) return *blocks.damage();
  return sizes;
}

SegdResult<SegdRecord> readSegdRecord(std::span<const char> headers) {
  const SegdResult<SegdSizes> sizes = segdSizes(headers);
  if (const auto* damage = std::get_if<SegdDamage>(&sizes)) return *damage;
  SegdRecord record;
  record.sizes = std::get<SegdSizes>(sizes);
  Blocks blocks(headers);
  if (!blocks.holds(record.sizes.describingBytes(), "the headers end")) return *blocks.damage();
  takeFirst(blocks.at(0), record);
  if (record.sizes.generalBlocks > 1) takeSecond(blocks.at(0), blocks.at(kBlock), record);
  takeSource(blocks, record);
  takeSets(blocks, record);
  if (blocks.damage()) return *blocks.damage();
  return record;
}

// ---- traces -------------------------------------------------------------------------------------------------------

namespace {

std::optional<double> receiverPlace(const char* extension, int position, int extended) {
  const int whole = get3byte(extension + position - 1);
  return whole == kNoPlace ? placeWithFraction(extension, extended) : whole;
}

void takeExtension(const char* extension, int revision, SegdTrace& trace) {
  trace.receiverLine = receiverPlace(extension, 1, 11);
  trace.receiverPoint = receiverPlace(extension, 4, 16);
  trace.pointIndex = byteAt(extension, 7);
  trace.samples = static_cast<std::uint32_t>(binary24(extension, 8));
  trace.sensor = byteAt(extension, 21);
  if (revision != 3) return;
  if (trace.samples == 0xFFFFFF) trace.samples = binary32(extension, 25);
  if (!trace.channel) trace.channel = binary24(extension, 22);
}

}  // namespace

std::size_t SegdTrace::headerBytes() const {
  return kSegdTraceStartBytes + static_cast<std::size_t>(extensions) * kBlock;
}

SegdResult<SegdTrace> readSegdTrace(std::span<const char> bytes, int revision) {
  Blocks blocks(bytes);
  if (!blocks.holds(kSegdTraceStartBytes, "its header ends")) return *blocks.damage();
  const char* header = blocks.at(0);
  SegdTrace trace;
  trace.extensions = traceHeaderExtensions(header);
  if (trace.extensions > 0 && !blocks.holds(kSegdTraceStartBytes + kBlock, "its header ends")) return *blocks.damage();
  if (binary16(header, 1) == kExtended16)
    trace.fieldFile = binary24(header, 18);
  else if (areDigits(header, 1, 2))
    trace.fieldFile = digits(header, 1, 4);
  trace.scanType = blocks.count(0, 3, 1, "scan type of its header");
  trace.channelSet =
      byteAt(header, 4) == kExtended ? binary16(header, 16) : blocks.count(0, 4, 1, "channel set of its header");
  if (blocks.damage()) return *blocks.damage();
  if (areDigits(header, 5, 2)) trace.channel = digits(header, 5, 4);
  trace.edit = byteAt(header, 12);
  if (trace.extensions > 0) takeExtension(header + kSegdTraceStartBytes, revision, trace);
  return trace;
}
