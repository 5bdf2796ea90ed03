#include "libkyr/datasetheader.h"

#include <algorithm>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/link.h"
#include "libkyr/text.h"
#include "libkyr/traceslot.h"
#include "libkyr/wordsum.h"

namespace {

// A byte above 127 and both line ends: a transfer that treats the file as text damages it here already.
constexpr std::array<unsigned char, 8> kSignature{0x8B, 'K', 'Y', 'R', '\r', '\n', 0x1A, '\n'};
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kOldestVersion = 1;
constexpr std::uint32_t kStateWriting = 1;
constexpr std::uint32_t kStateClosed = 2;

namespace at {
constexpr std::size_t kVersion = 8;
constexpr std::size_t kOldest = 12;
constexpr std::size_t kState = 16;
constexpr std::size_t kLayout = 20;
constexpr std::size_t kType = 24;
constexpr std::size_t kSlotsPerRecord = 28;
constexpr std::size_t recordsPerFile = 32;
constexpr std::size_t kPart = 36;
constexpr std::size_t kId = 40;
constexpr std::size_t kOrg = 48;
constexpr std::size_t kSum = kDatasetHeaderSize - 8;
}  // namespace at

int loadInt(const DatasetHeaderBytes& bytes, std::size_t place) { return loadLeInt32(bytes.data() + place); }

void storeInt(DatasetHeaderBytes& bytes, std::size_t place, int value) {
  storeLe32(bytes.data() + place, static_cast<std::uint32_t>(value));
}

std::uint64_t headerSum(const DatasetHeaderBytes& bytes) { return wordSum(0, bytes.data(), at::kSum); }

std::uint64_t wide(int value) { return static_cast<std::uint64_t>(value); }

}  // namespace

// ---- counts and places ----------------------------------------------------------------------------------------------

bool DatasetShape::isSound() const {
  constexpr int kEndless = std::numeric_limits<int>::max();  // a loop up to it never ends
  if (records == kEndless || tracesPerRecord == kEndless) return false;
  if (records < 0 || tracesPerRecord < 0 || tracesPerRecord > slotsPerRecord || samples < 0 || samples > kMaxSamples ||
      recordsPerFile < 0 || parts() > kMaxDatasetParts)
    return false;
  // Two counts of 31 bits never pass 64; the bytes might.
  const std::uint64_t slots = wide(records) * wide(slotsPerRecord);
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return slots <= (kMost - kDatasetHeaderSize) / slotSize();
}

std::uint64_t DatasetShape::slotSize() const { return traceslot::size(samples); }

int DatasetShape::parts() const { return recordsPerFile == 0 || records == 0 ? 1 : (records - 1) / recordsPerFile + 1; }

int DatasetShape::recordsInPart(int part) const {
  return recordsPerFile == 0 ? records : std::min(recordsPerFile, records - part * recordsPerFile);
}

std::uint64_t DatasetShape::slotsInPart(int part) const {
  const int in = recordsInPart(part);
  return in <= 0 || tracesPerRecord == 0 ? 0 : wide(in - 1) * wide(slotsPerRecord) + wide(tracesPerRecord);
}

std::uint64_t DatasetShape::slotsBefore(int part) const {
  return wide(part) * wide(recordsPerFile) * wide(slotsPerRecord);
}

std::uint64_t DatasetShape::sizeOfPart(int part) const { return kDatasetHeaderSize + slotsInPart(part) * slotSize(); }

std::uint64_t DatasetShape::slotNumber(int record, int trace) const {
  return wide(record - 1) * wide(slotsPerRecord) + wide(trace - 1);
}

int DatasetShape::partOf(int record) const { return recordsPerFile == 0 ? 0 : (record - 1) / recordsPerFile; }

std::uint64_t DatasetShape::offsetOf(int record, int trace) const {
  return kDatasetHeaderSize + (slotNumber(record, trace) - slotsBefore(partOf(record))) * slotSize();
}

// ---- the header -------------------------------------------------------------------------------------------------

DatasetShape DatasetHeader::shape() const {
  const SeisCounts counts = seisOrgCounts(org);
  return {counts.records, counts.tracesPerRecord, slotsPerRecord, counts.samples, recordsPerFile};
}

void DatasetHeader::setShape(const DatasetShape& shape) {
  slotsPerRecord = shape.slotsPerRecord;
  recordsPerFile = shape.recordsPerFile;
  setSeisOrgCounts(&org, {shape.records, shape.tracesPerRecord, shape.samples});
}

DatasetHeaderBytes encodeDatasetHeader(const DatasetHeader& header) {
  DatasetHeaderBytes bytes{};
  std::copy(kSignature.begin(), kSignature.end(), bytes.begin());
  storeLe32(bytes.data() + at::kVersion, kVersion);
  storeLe32(bytes.data() + at::kOldest, kOldestVersion);
  storeLe32(bytes.data() + at::kState, header.closed ? kStateClosed : kStateWriting);
  storeInt(bytes, at::kLayout, header.layout);
  storeInt(bytes, at::kType, header.type);
  storeInt(bytes, at::kSlotsPerRecord, header.slotsPerRecord);
  storeInt(bytes, at::recordsPerFile, header.recordsPerFile);
  storeInt(bytes, at::kPart, header.part);
  storeLe64(bytes.data() + at::kId, header.id);
  std::copy_n(header.org.bytes, kSeisOrgSize, bytes.data() + at::kOrg);
  storeLe64(bytes.data() + at::kSum, headerSum(bytes));
  return bytes;
}

int decodeDatasetHeader(const DatasetHeaderBytes& bytes, DatasetHeader* header) {
  if (!std::equal(kSignature.begin(), kSignature.end(), bytes.begin())) return kyrNotSeismic;
  // Before the sum: a later version may have another one.
  if (loadLe32(bytes.data() + at::kOldest) > kVersion) return kyrWrongVersion;
  if (loadLe64(bytes.data() + at::kSum) != headerSum(bytes)) return kyrDiskError;
  const std::uint32_t state = loadLe32(bytes.data() + at::kState);
  if (state != kStateWriting && state != kStateClosed) return kyrDiskError;
  header->closed = state == kStateClosed;
  header->layout = loadInt(bytes, at::kLayout);
  if (header->layout != 1) return kyrNotTwoD;
  header->type = loadInt(bytes, at::kType);
  header->slotsPerRecord = loadInt(bytes, at::kSlotsPerRecord);
  header->recordsPerFile = loadInt(bytes, at::recordsPerFile);
  header->part = loadInt(bytes, at::kPart);
  header->id = loadLe64(bytes.data() + at::kId);
  std::copy_n(bytes.data() + at::kOrg, kSeisOrgSize, header->org.bytes);
  return header->shape().isSound() && header->part >= 1 && header->part <= kMaxDatasetParts ? kyrOk : kyrDiskError;
}

std::string datasetPartName(const std::string& path, int part) {
  return part == 0 ? path : formatText("%s.%03d", path.c_str(), part + 1);
}
