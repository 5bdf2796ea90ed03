#include "libkyr/datasetfile.h"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "libkyr/files.h"
#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "libkyr/traceslot.h"

namespace {

/// Different in every dataset, so that slots and parts of two of them are never taken for one another.
std::uint64_t newId() {
  std::uint64_t id = 0;
  if (getrandom(&id, sizeof id, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof id)) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    id = static_cast<std::uint64_t>(now.tv_sec) << 30U ^ static_cast<std::uint64_t>(now.tv_nsec) ^
         static_cast<std::uint64_t>(getpid()) << 48U;
  }
  return id;
}

/// The most samples, or traces of a record, that a dataset without a trace tells: no caller reserves much room for
/// them.
constexpr int kMostOfNothing = 1 << 22;

bool isRange(int property) {
  return (property >= dsMinReceiverLocation && property <= dsMaxCmpLine) || property == dsMinFieldFile ||
         property == dsMaxFieldFile;
}

int readHeader(const PartFile& file, DatasetHeader* header) {
  DatasetHeaderBytes bytes{};
  const auto got = file.readAt(0, bytes.data(), bytes.size());
  if (!got) return kyrDiskError;
  int result = decodeDatasetHeader(bytes, header);
  // A header that was cut off can still be sound, where zeros stood at its end.
  if (result == kyrOk && *got < bytes.size()) result = kyrDiskError;
  if (result == kyrDiskError) errno = EBADMSG;
  return result;
}

const char* reasonOf(int result) {
  if (result == kyrTraceLost) return "it is damaged, or was never written to the disk";
  return std::strerror(errno);
}

}  // namespace

DatasetFile::~DatasetFile() { close(); }

// ---- opening ------------------------------------------------------------------------------------------------------

int DatasetFile::openRead() { return openExisting(Stage::Reading); }

int DatasetFile::openUpdate() {
  const int result = openExisting(Stage::Updating);
  if (result != kyrOk || whole_) return result;
  stage_ = Stage::Reading;  // nothing is brought to its end
  close();
  return kyrTraceLost;
}

int DatasetFile::openExisting(Stage stage) {
  PartFile file;
  errno = 0;
  if (!file.open(path_, stage == Stage::Updating ? PartFile::Mode::Update : PartFile::Mode::Read)) return kyrDiskError;
  if (stage == Stage::Updating && !file.claim()) return inUse();
  const int result = readHeader(file, &header_);
  if (result != kyrOk) return result;
  if (header_.part != 1) return kyrNotSeismic;
  setShape(header_.shape());  // whatever the file says of the counts that follow from others
  store_.parts().push_back(std::move(file));
  stage_ = stage;
  const int opened = openParts();
  if (opened != kyrOk) {
    stage_ = Stage::Closed;
    store_.parts().clear();
  } else {
    settleEmpty();
  }
  return opened;
}

/// Opens the parts behind the first and finds out how much of the dataset its files hold.
int DatasetFile::openParts() {
  const DatasetShape& shape = shape_;
  std::uint64_t available = 0;
  int part = 0;
  for (; part < shape.parts() && (part == 0 || openPart(part)); ++part) {
    const auto size = store_.parts().back().size();
    if (!size) return kyrDiskError;
    const std::uint64_t slots =
        (std::max<std::uint64_t>(*size, kDatasetHeaderSize) - kDatasetHeaderSize) / shape.slotSize();
    if (slots > 0) available = shape.slotsBefore(part) + std::min(slots, shape.slotsInPart(part));
    whole_ = whole_ && slots >= shape.slotsInPart(part);
  }
  const int missing = shape.parts() - part;
  if (header_.closed && whole_ && missing == 0) return kyrOk;
  whole_ = false;
  if (available == 0 && shape.slotsInPart(0) > 0) {
    errno = ENODATA;
    return kyrDiskError;
  }
  settleCounts(available, missing);
  return kyrOk;
}

bool DatasetFile::openPart(int part) {
  PartFile file;
  DatasetHeader header;
  const std::string name = datasetPartName(path_, part);
  const bool opened = file.open(name, stage_ == Stage::Updating ? PartFile::Mode::Update : PartFile::Mode::Read);
  if (!opened || readHeader(file, &header) != kyrOk || header.id != header_.id || header.part != part + 1) {
    say_(formatText("  ** Warning: %s is missing, or no part of the dataset.", name.c_str()));
    return false;
  }
  store_.parts().push_back(std::move(file));
  return true;
}

/// Slots that begin where their file holds data and are there to their end: no other one can be read.
std::uint64_t DatasetFile::slotsWithData() const {
  std::uint64_t count = 0;
  const auto& parts = store_.parts();
  for (std::size_t part = 0; part < parts.size(); ++part) {
    const std::uint64_t size = std::max<std::uint64_t>(parts[part].size().value_or(0), kDatasetHeaderSize);
    const std::uint64_t slots =
        std::min((size - kDatasetHeaderSize) / shape_.slotSize(), shape_.slotsInPart(static_cast<int>(part)));
    const auto beginningBefore = [&](std::uint64_t place) {
      return std::min((place - kDatasetHeaderSize + shape_.slotSize() - 1) / shape_.slotSize(), slots);
    };
    for (auto data = parts[part].dataFrom(kDatasetHeaderSize); data; data = parts[part].dataFrom(data->end))
      count += beginningBefore(data->end) - beginningBefore(data->begin);
  }
  return count;
}

/// A dataset that was cut off tells the counts that its files hold: no caller reserves room for more than that.
void DatasetFile::settleCounts(std::uint64_t available, int partsMissing) {
  DatasetShape shape = shape_;
  const int announced = shape.records;
  const auto traces = static_cast<std::uint64_t>(announced) * static_cast<std::uint64_t>(shape.tracesPerRecord);
  const std::uint64_t there = std::min(slotsWithData(), traces);
  if (shape.slotsPerRecord > 0) {
    const std::uint64_t slots = static_cast<std::uint64_t>(shape.slotsPerRecord);
    const std::uint64_t records = (available + slots - 1) / slots;
    shape.records = static_cast<int>(std::min<std::uint64_t>(records, static_cast<std::uint64_t>(announced)));
    if (shape.records == 1)
      shape.tracesPerRecord =
          static_cast<int>(std::min<std::uint64_t>(available, static_cast<std::uint64_t>(shape.tracesPerRecord)));
  }
  setShape(shape);
  const char* const what = header_.closed || partsMissing > 0 ? "is not complete" : "was not closed properly";
  say_(formatText("  ** Warning: %s %s: at most %" PRIu64 " of %" PRIu64 " trace%s can be read, in %d of %d record%s.",
                  path_.c_str(), what, there, traces, traces == 1 ? "" : "s", shape.records, announced,
                  announced == 1 ? "" : "s"));
}

/// Counts that stand for no trace at all tell next to nothing: no caller loops or reserves room by them.
void DatasetFile::settleEmpty() {
  DatasetShape shape = shape_;
  if (shape.records > 0 && shape.tracesPerRecord > 0) return;
  shape.records = 0;
  shape.tracesPerRecord = std::min(shape.tracesPerRecord, kMostOfNothing);
  shape.samples = std::min(shape.samples, kMostOfNothing);
  setShape(shape);
}

bool DatasetFile::uses(const char* path) const {
  const int parts = std::max(shape_.parts(), old_ ? old_->shape().parts() : 1);
  for (int part = 0; part < std::min(parts, kMaxDatasetParts); ++part)
    if (sameFile(datasetPartName(path_, part).c_str(), path)) return true;
  return false;
}

// ---- creating -----------------------------------------------------------------------------------------------------

int DatasetFile::announce(int type, int recordsPerFile, int tracesPerRecord) {
  if (!create(0)) return kyrDiskError;
  // One that was made a moment ago may be another's already, or gone with it.
  if (!store_.parts()[0].claim() || !fileSize(path_.c_str())) {
    made_.clear();
    store_.parts().clear();
    return inUse();
  }
  DatasetHeader old;
  if (made_.empty() && readHeader(store_.parts()[0], &old) == kyrOk) old_ = old;
  header_ = {};
  header_.type = type;
  header_.id = newId();
  header_.org = newSeisOrg();
  setShape({0, tracesPerRecord, tracesPerRecord, 0, recordsPerFile});
  stage_ = Stage::Announced;
  return kyrOk;
}

int DatasetFile::inUse() const {
  say_(formatText("  *** Error: %s is being written by another job or program.", path_.c_str()));
  return kyrInUse;
}

int DatasetFile::begin() {
  if (stage_ != Stage::Announced) return failed_ ? kyrDiskError : kyrOk;
  if (!shape_.isSound()) {
    say_(formatText(
        "  *** Error creating %s: no dataset can hold %d records of %d traces of %d samples, %d records a file.",
        path_.c_str(), shape_.records, shape_.tracesPerRecord, shape_.samples, shape_.recordsPerFile));
    return kyrBadCall;
  }
  if (const std::string name = strangerAmong(shape_.parts()); !name.empty()) {
    say_(formatText("  *** Error creating %s: %s is there already, and no part of it.", path_.c_str(), name.c_str()));
    failed_ = true;
    return kyrDiskError;
  }
  stage_ = Stage::Writing;
  return createParts() ? kyrOk : fail("creating");
}

/// The first file with the name of a further part that is none of the dataset to be overwritten; empty without one.
std::string DatasetFile::strangerAmong(int parts) const {
  for (int part = 1; part < parts; ++part) {
    std::error_code ignored;
    std::string name = datasetPartName(path_, part);
    const auto type = std::filesystem::symlink_status(name, ignored).type();
    if (type != std::filesystem::file_type::not_found && !isOldPart(part)) return name;
  }
  return {};
}

bool DatasetFile::isOldPart(int part) const {
  PartFile file;
  DatasetHeader header;
  return old_ && file.open(datasetPartName(path_, part), PartFile::Mode::Read) && readHeader(file, &header) == kyrOk &&
         header.id == old_->id && header.part == part + 1;
}

/// Opens the file of a part, and keeps in mind whether it was made.
bool DatasetFile::create(int part) {
  PartFile file;
  const std::string name = datasetPartName(path_, part);
  if (file.open(name, PartFile::Mode::New))
    made_.push_back(name);
  else if (errno != EEXIST || !file.open(name, PartFile::Mode::Create))
    return false;
  store_.parts().push_back(std::move(file));
  return true;
}

bool DatasetFile::createParts() {
  auto& parts = store_.parts();
  const int count = shape_.parts();
  while (static_cast<int>(parts.size()) < count)
    if (!create(static_cast<int>(parts.size()))) return false;
  return std::all_of(parts.begin(), parts.end(), [](const PartFile& file) { return file.cutTo(0); }) &&
         writeHeaders(count) && removeOldParts();
}

/// Parts that the overwritten dataset had more than this one.
bool DatasetFile::removeOldParts() {
  const int parts = old_ ? old_->shape().parts() : 0;
  for (int part = shape_.parts(); part < parts; ++part)
    if (isOldPart(part) && unlink(datasetPartName(path_, part).c_str()) != 0) return false;
  return true;
}

/// The first part's header comes last: its closed mark speaks for all of them.
bool DatasetFile::writeHeaders(int parts) {
  for (int part = parts - 1; part >= 0; --part) {
    header_.part = part + 1;
    const DatasetHeaderBytes bytes = encodeDatasetHeader(header_);
    if (store_.parts()[static_cast<std::size_t>(part)].writeAt(0, bytes.data(), bytes.size()) < bytes.size())
      return false;
  }
  return true;
}

// ---- closing ------------------------------------------------------------------------------------------------------

int DatasetFile::close() {
  const Stage stage = std::exchange(stage_, Stage::Closed);
  if (stage == Stage::Writing || stage == Stage::Updating)
    if (!failed_ && !finishParts(stage == Stage::Writing)) fail("writing to");
  if (stage == Stage::Announced) removeMade();
  for (PartFile& file : store_.parts())
    if (!file.close() && !failed_ && stage != Stage::Reading) fail("writing to");
  store_.parts().clear();
  if (const std::string line = lostReads_.rest(path_); !line.empty()) say_(line);
  return failed_ ? kyrDiskError : kyrOk;
}

void DatasetFile::discard() {
  failed_ = true;
  close();
  removeMade();
}

void DatasetFile::removeMade() {
  for (const std::string& name : made_) unlink(name.c_str());
  made_.clear();
}

/// Brings everything to the disk, and only then says so in the header: also after a power failure the mark is true.
/// The mark itself may come late: a dataset without it is doubted, not lost.
bool DatasetFile::finishParts(bool cut) {
  auto& parts = store_.parts();
  if (!store_.flush()) return false;
  const int count = shape_.parts();
  for (int part = 0; part < count; ++part) {
    const PartFile& file = parts[static_cast<std::size_t>(part)];
    if ((cut && !file.cutTo(shape_.sizeOfPart(part))) || !file.sync()) return false;
  }
  if (!removeParts(count, static_cast<int>(parts.size()))) return false;
  header_.closed = finished_;
  return writeHeaders(count);
}

/// Parts of an output that came out with fewer records than were announced.
bool DatasetFile::removeParts(int first, int count) {
  for (int part = first; part < count; ++part)
    if (unlink(datasetPartName(path_, part).c_str()) != 0) return false;
  store_.parts().resize(static_cast<std::size_t>(first));
  return true;
}

/// A write failed: says so once, with errno's reason. @return kyrDiskError
int DatasetFile::fail(const char* what) {
  if (!failed_) say_(formatText("  *** Error %s %s: %s.", what, path_.c_str(), std::strerror(errno)));
  failed_ = true;
  return kyrDiskError;
}

void DatasetFile::setShape(const DatasetShape& shape) {
  shape_ = shape;
  header_.setShape(shape);
}

// ---- properties ---------------------------------------------------------------------------------------------------

SourceFormat DatasetFile::format() const {
  constexpr int kIeeeFloat = 5;  // as SEG Y counts sample formats
  double interval = 0;
  getProperty(dsSampleInterval, doubleFloatType, gSecondsUnits, &interval);
  return {"", kIeeeFloat, static_cast<int>(sizeof(float)), IsValueNull(interval) ? 0 : interval, false};
}

int DatasetFile::getProperty(int property, int type, int units, void* value) const {
  return GetDSProperty(property, type, units, value, &header_.org);
}

int DatasetFile::setProperty(int property, int type, int units, const void* value) {
  if (stage_ == Stage::Reading || stage_ == Stage::Closed) return kyrTooLate;
  return isCountProperty(property) ? setCount(property, type, units, value)
                                   : SetDSProperty(property, type, units, value, &header_.org);
}

int DatasetFile::setCount(int property, int type, int units, const void* value) {
  GeneralSeisDataOrg wanted = header_.org;
  int now = 0;
  int count = 0;
  GetDSProperty(property, longIntType, gUnknownUnits, &now, &wanted);
  const int result = SetDSProperty(property, type, units, value, &wanted);
  if (result != kyrOk) return result;
  GetDSProperty(property, longIntType, gUnknownUnits, &count, &wanted);
  if (count < 0) return kyrBadCall;
  if (property == dsTotalTraces || property == dsLargestRecord) return kyrOk;
  const bool mayShrink = stage_ == Stage::Writing && property != dsSamples;
  if (stage_ != Stage::Announced && count != now && !(mayShrink && count < now)) return kyrTooLate;
  if (cutsWritten(property, count)) return kyrTooLate;
  header_.org = wanted;
  DatasetShape shape = header_.shape();
  if (stage_ == Stage::Announced) shape.slotsPerRecord = shape.tracesPerRecord;
  setShape(shape);
  return kyrOk;
}

/// Whether a count is too small for what was written; says so.
bool DatasetFile::cutsWritten(int property, int count) const {
  const bool ofRecords = property == dsRecords;
  const int written = ofRecords ? writtenRecords_ : writtenTraces_;
  if ((!ofRecords && property != dsTracesPerRecord) || count >= written) return false;
  say_(formatText("  *** Error: %s cannot be cut to %d %s: number %d was written.", path_.c_str(), count,
                  ofRecords ? "records" : "traces per record", written));
  return true;
}

int DatasetFile::copyProperties(const GeneralSeisDataOrg& from) {
  if (stage_ != Stage::Announced && stage_ != Stage::Writing) return kyrTooLate;
  const GeneralSeisDataOrg ours = header_.org;
  header_.org = from;
  for (int property = 0; property < kDatasetPropertyCount; ++property)
    if (isRange(property))
      std::copy_n(ours.bytes + seisOrgOffset(property), 4, header_.org.bytes + seisOrgOffset(property));
  setShape(shape_);
  return kyrOk;
}

// ---- traces -------------------------------------------------------------------------------------------------------

bool DatasetFile::has(int record, int trace) const {
  return record >= 1 && record <= shape_.records && trace >= 1 && trace <= shape_.tracesPerRecord;
}

SlotStore::Place DatasetFile::placeOf(int record, int trace) const {
  return {shape_.partOf(record), shape_.offsetOf(record, trace), static_cast<std::size_t>(shape_.slotSize())};
}

std::int64_t DatasetFile::position(int record, int trace) {
  return has(record, trace) ? static_cast<std::int64_t>(shape_.offsetOf(record, trace)) : -1;
}

std::uint64_t DatasetFile::seedOf(int record, int trace) const { return header_.id ^ shape_.slotNumber(record, trace); }

int DatasetFile::fetch(int record, int trace, float* samples, TraceInfo* info) {
  if (stage_ == Stage::Closed || stage_ == Stage::Announced) return kyrBadCall;
  const int result = readSlot(record, trace, samples, info);
  return result == kyrOk ? result : lost(record, trace, result);
}

int DatasetFile::readSlot(int record, int trace, float* samples, TraceInfo* info) {
  if (!store_.flush()) return fail("writing to");
  const SlotStore::Place place = placeOf(record, trace);
  const std::uint64_t seed = seedOf(record, trace);
  std::array<unsigned char, traceslot::kHeadSize> head{};
  const unsigned char* slot = head.data();
  std::size_t got = 0;
  if (samples != nullptr)
    slot = store_.read(place, &got);
  else if (!store_.readHead(place, head.data(), head.size(), &got))
    slot = nullptr;
  if (slot == nullptr) return kyrDiskError;
  const bool complete = got >= (samples != nullptr ? place.size : head.size());
  const bool writing = stage_ == Stage::Writing && !failed_;
  if (!complete && !writing) return kyrTraceLost;
  const auto state = complete ? traceslot::decodeHeader(seed, slot, info) : traceslot::State::NeverWritten;
  const int count = shape_.samples;
  switch (state) {
    case traceslot::State::Written:
      return samples == nullptr || traceslot::decodeSamples(seed, slot, count, samples) ? kyrOk : kyrTraceLost;
    case traceslot::State::NeverWritten:
      // In a dataset that was cut off nobody knows whether a trace was written and did not reach the disk.
      if (failed_ || (!writing && !whole_)) return kyrTraceLost;
      if (samples == nullptr) slot = store_.read(place, &got);
      if (slot == nullptr) return kyrDiskError;
      if (!traceslot::isBlank(slot, got)) return kyrTraceLost;
      makeDead(count, samples, info, killNeverWritten);
      return kyrOk;
    case traceslot::State::Damaged:
      break;
  }
  return kyrTraceLost;
}

int DatasetFile::lost(int record, int trace, int result) {
  if (lostReads_.add())
    say_(formatText("  *** Trace %d of record %d of %s cannot be read: %s.", trace, record, path_.c_str(),
                    reasonOf(result)));
  return result;
}

std::uint64_t DatasetFile::settle() {
  if (stage_ == Stage::Writing && !failed_ && !store_.flush()) fail("writing to");
  return store_.lost();
}

int DatasetFile::write(int record, int trace, const float* samples, const TraceInfo& info) {
  if (stage_ == Stage::Reading) return kyrTooLate;
  if (stage_ != Stage::Writing && stage_ != Stage::Updating) return kyrBadCall;
  if (failed_) return kyrDiskError;
  if (!has(record, trace)) return kyrNoSuchTrace;
  unsigned char* const slot = store_.write(placeOf(record, trace));
  if (slot == nullptr) return fail("writing to");
  traceslot::encode(seedOf(record, trace), info, samples, shape_.samples, slot);
  writtenRecords_ = std::max(writtenRecords_, record);
  writtenTraces_ = std::max(writtenTraces_, trace);
  return kyrOk;
}
