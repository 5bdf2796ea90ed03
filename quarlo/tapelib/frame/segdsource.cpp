#include "quarlo/tapelib/frame/segdsource.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>

#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/frame/fieldchoice.h"
#include "quarlo/tapelib/modulecalls.h"

namespace fs = std::filesystem;

namespace {

constexpr int kSeismic = 1;
constexpr std::size_t kTraceLook = kSegdTraceStartBytes + kSegdBlockBytes;

// All regular files beside a file, in the order of their names.
std::vector<std::string> folderOf(const std::string& path) {
  std::error_code failed;
  std::vector<std::string> files;
  const fs::path folder = fs::path(path).parent_path();
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.empty() ? "." : folder, failed))
    if (entry.is_regular_file(failed)) files.push_back(entry.path().string());
  std::ranges::sort(files);
  return files;
}

std::string fieldFileName(const SegdRecord& headers) {
  return headers.fieldFile ? formatText("field file %d", *headers.fieldFile) : "a field file without number";
}

// Kinds of traces as SEG Y counts them, from those of channel sets.
int traceType(int setType) {
  switch (setType) {
    case kSeismic:
      return 1;
    case 2:
      return 4;  // time break
    case 3:
      return 5;  // uphole
    case 4:
      return 8;  // water break
    case 5:
      return 7;  // time counter
    default:
      return 9;  // free for optional use
  }
}

void put(TraceInfo* header, int property, std::optional<int> value) {
  const int kept = value.value_or(kNullInt);
  SetTraceProperty(property, longIntType, gUnknownUnits, &kept, header);
}

void putLocation(TraceInfo* header, int property, std::optional<int> value) {
  const float kept = value ? static_cast<float>(*value) : kNullFloat;
  SetTraceProperty(property, singleFloatType, gUnknownUnits, &kept, header);
}

}  // namespace

// ---- opening ------------------------------------------------------------------------------------------------------

SegdSource::SegdSource(ProcessRecord* procRecord, const KyrSegdInput& how)
    : procRecord_(procRecord), how_(how), fileChoice_(fieldFileChoice(how.fieldFiles)) {}

int SegdSource::open(const std::string& path) {
  for (const std::string& file : how_.wholeFolder != 0 ? folderOf(path) : std::vector{path})
    if (!walk(file)) return 1;
  leaveOutOthers();
  std::erase_if(records_, [](const Record& record) { return record.traces.empty(); });
  if (records_.empty() || samples_ == 0) {
    say("  *** There is no SEG D trace to read in " + path + ".");
    return 1;
  }
  if (samples_ > kMaxSamples) {
    say(formatText("  *** The traces of %s are too long: %u samples.", path.c_str(), samples_));
    return 1;
  }
  describe();
  tellWhatItIs();
  return 0;
}

// Finds the field files of a file. False when the run is stopped.
bool SegdSource::walk(const std::string& path) {
  files_.push_back(path);
  if (!turnTo(files_.size() - 1)) {
    isDamaged_ = true;
    say(formatText("  *** Error opening file %s: %s.", path.c_str(), std::strerror(errno)));
    return true;
  }
  if (how_.wholeFolder != 0 && isOther()) {
    say("  ** " + path + " is no SEG D file.");
    return true;
  }
  SegdWalk walk(bytes_);
  while (std::optional<SegdFieldFile> found = walk.next()) {
    if (kyrGoOn() == 0) {
      say("  *** Stopped.");
      return false;
    }
    take(files_.size() - 1, *found);
  }
  if (walk.rest() > 0)
    say(formatText("  ** The last %llu bytes of %s are not read.", static_cast<unsigned long long>(walk.rest()),
                   path.c_str()));
  if (bytes_.error() != 0) {
    isDamaged_ = true;
    say(formatText("  *** Error reading file %s: %s.", path.c_str(), std::strerror(bytes_.error())));
  }
  return true;
}

bool SegdSource::isOther() {
  const std::span<const char> start = bytes_.at(0, kSegdBlockBytes);
  return start.size() < kSegdBlockBytes || !isGeneralHeader(start.data());
}

void SegdSource::take(std::size_t file, SegdFieldFile& found) {
  for (const SegdDamage& damage : found.damage) {
    isDamaged_ = true;
    say(formatText("  *** %s, byte %llu, %s: %s.", files_[file].c_str(), static_cast<unsigned long long>(damage.byte),
                   fieldFileName(found.record).c_str(), damage.what.c_str()));
  }
  if (found.traces.empty()) return;
  if (found.record.fieldFile && skipThisFile(procRecord_, &fileChoice_, *found.record.fieldFile) != 0) return;
  std::erase_if(found.traces, [&](const SegdTracePlace& place) {
    return place.set != kNoSegdSet && !isWanted(found.record.sets[place.set]);
  });
  records_.push_back({file, std::move(found.record), std::move(found.scans), std::move(found.traces)});
}

bool SegdSource::isWanted(const SegdChannelSet& set) const {
  if (set.type != kSeismic && how_.auxiliary == 0) return false;
  const auto listed =
      std::span(how_.setList).first(static_cast<std::size_t>(std::clamp<int>(how_.sets, 0, KYR_SEGD_SETS)));
  return listed.empty() || std::ranges::count(listed, set.number) > 0;
}

// Keeps the traces of one interval, and of one length unless they are padded.
void SegdSource::leaveOutOthers() {
  std::map<std::string, std::size_t> leftOut;
  for (Record& record : records_) {
    std::erase_if(
        record.traces,
        [&](const SegdTracePlace& place) {
          if (place.set == kNoSegdSet) return false;
          const SegdChannelSet& set = record.headers.sets[place.set];
          if (samples_ == 0) {
            samples_ = place.samples;
            interval_ = set.interval;
          }
          if (place.samples > 0 && set.interval == interval_ && (place.samples == samples_ || how_.pad != 0)) {
            samples_ = std::max(samples_, place.samples);
            return false;
          }
          ++leftOut[formatText("channel set %d: %u samples, %g ms", set.number, place.samples, set.interval)];
          return true;
        });
  }
  for (const auto& [what, traces] : leftOut)
    say(formatText("  ** %zu trace%s of %s: left out, the others have %u samples, %g ms.", traces,
                   plural(static_cast<long long>(traces)), what.c_str(), samples_, interval_));
}

void SegdSource::describe() {
  std::size_t largest = 0;
  int lowest = std::numeric_limits<int>::max();
  int highest = std::numeric_limits<int>::min();
  for (const Record& record : records_) {
    largest = std::max(largest, record.traces.size());
    if (!record.headers.fieldFile) continue;
    lowest = std::min(lowest, *record.headers.fieldFile);
    highest = std::max(highest, *record.headers.fieldFile);
  }
  // More than an int holds is refused where the source is registered.
  const auto count = [](std::size_t number) {
    return number > std::size_t{std::numeric_limits<int>::max()} ? -2 : static_cast<int>(number);
  };
  setSeisOrgCounts(&org_, {count(records_.size()), count(largest), count(samples_)});
  SetDSProperty(dsSampleInterval, doubleFloatType, gMillisecondsUnits, &interval_, &org_);
  if (lowest > highest) return;
  SetDSProperty(dsMinFieldFile, longIntType, gUnknownUnits, &lowest, &org_);
  SetDSProperty(dsMaxFieldFile, longIntType, gUnknownUnits, &highest, &org_);
}

void SegdSource::tellWhatItIs() const {
  const SegdRecord& first = records_.front().headers;
  const SeisCounts counts = seisOrgCounts(org_);
  say(formatText("%s, format %04d: %d field file%s, at most %d trace%s of %d samples, %g ms.",
                 format().description.c_str(), first.formatCode, counts.records, plural(counts.records),
                 counts.tracesPerRecord, plural(counts.tracesPerRecord), counts.samples, interval_));
  const auto has = [this](auto what) {
    return std::ranges::any_of(
        records_, [what](const Record& record) { return what(record.headers); });
  };
  if (has([](const SegdRecord& headers) { return headers.revision == 3; }))
    say("  ** Revision 3 of SEG D is read as its headers say. No recorder's file has tried that yet.");
  const auto hasUnit = [](const SegdChannelSet& set) { return set.physicalUnit != 0; };
  if (how_.raw == 0 && has([&](const SegdRecord& headers) { return std::ranges::any_of(headers.sets, hasUnit); }))
    say("  ** Not all channel sets are recorded in millivolts: read them as recorded, not in volts.");
}

// ---- what it is ---------------------------------------------------------------------------------------------------

SourceFormat SegdSource::format() const {
  const SegdRecord& first = records_.at(0).headers;
  return {.description = formatText("SEG D revision %d.%d", first.revision, first.minorRevision),
          .sampleFormat = first.formatCode,
          .bytesPerSample = (segdSampleBits(first.formatCode) + 7) / 8,
          .interval = interval_ / 1000.0};
}

std::int64_t SegdSource::position(int record, int trace) {
  const Record& from = records_.at(static_cast<std::size_t>(record) - 1);
  const auto index = static_cast<std::size_t>(trace) - 1;
  return index < from.traces.size() ? static_cast<std::int64_t>(from.traces[index].byte) : -1;
}

bool SegdSource::uses(const char* path) const {
  return std::ranges::any_of(
      files_, [path](const std::string& file) { return sameFile(file.c_str(), path); });
}

// ---- traces -------------------------------------------------------------------------------------------------------

bool SegdSource::turnTo(std::size_t file) {
  if (open_ == file) return true;
  open_.reset();
  if (!bytes_.open(files_[file])) return false;
  open_ = file;
  return true;
}

int SegdSource::lost(const Record& record, std::uint64_t byte, const std::string& why) {
  say(formatText("  *** %s, byte %llu, %s: a trace %s. It is dead.", files_[record.file].c_str(),
                 static_cast<unsigned long long>(byte), fieldFileName(record.headers).c_str(), why.c_str()));
  return kyrTraceLost;
}

int SegdSource::fetch(int record, int trace, float* samples, TraceInfo* header) {
  const Record& from = records_.at(static_cast<std::size_t>(record) - 1);
  const auto index = static_cast<std::size_t>(trace) - 1;
  if (index >= from.traces.size()) {
    makeDead(static_cast<int>(samples_), samples, header, killNeverWritten);
    return kyrOk;
  }
  const SegdTracePlace& place = from.traces[index];
  if (!turnTo(from.file)) return lost(from, place.byte, formatText("cannot be read (%s)", std::strerror(errno)));
  if (place.set == kNoSegdSet) return lost(from, place.byte, "is damaged");
  *header = {};
  put(header, trTraceNumber, runningNumber(record, trace));
  fill(from, from.headers.sets[place.set], header);
  return from.headers.isMultiplexed() ? fetchScans(from, index, samples, header)
                                      : fetchTrace(from, place, samples, header);
}

// Null where an int does not hold it.
std::optional<int> SegdSource::runningNumber(int record, int trace) const {
  const std::int64_t number = std::int64_t{record - 1} * seisOrgCounts(org_).tracesPerRecord + trace;
  return number <= std::numeric_limits<int>::max() ? std::optional(static_cast<int>(number)) : std::nullopt;
}

int SegdSource::fetchTrace(const Record& record, const SegdTracePlace& place, float* samples, TraceInfo* header) {
  const SegdRecord& headers = record.headers;
  const SegdResult<SegdTrace> result = readSegdTrace(bytes_.at(place.byte, kTraceLook), headers.revision);
  if (const auto* damage = std::get_if<SegdDamage>(&result))
    return lost(record, place.byte, "is lost, " + damage->what);
  const auto& trace = std::get<SegdTrace>(result);
  put(header, trChannel, trace.channel);
  put(header, trKillFlag, trace.isKilled() ? killOther : 0);
  if (trace.receiverLine) put(header, trReceiverLine, whole(*trace.receiverLine, "receiver line"));
  if (trace.receiverPoint) putLocation(header, trReceiverLocation, whole(*trace.receiverPoint, "receiver point"));
  if (samples == nullptr) return kyrOk;
  const std::size_t bytes = segdTraceBytes(headers.formatCode, place.samples);
  const std::span<const char> data = bytes_.at(place.byte + trace.headerBytes(), bytes);
  if (data.size() < bytes)
    return lost(record, place.byte, formatText("ends after %zu of %zu sample bytes", data.size(), bytes));
  const double scale = how_.raw != 0 ? kSegdRaw : segdVolts(headers.sets[place.set].toMillivolts);
  decodeSegdTrace(headers.formatCode, data, scale, {samples, place.samples});
  std::fill(samples + place.samples, samples + samples_, 0.0F);
  return kyrOk;
}

int SegdSource::fetchScans(const Record& record, std::size_t trace, float* samples, TraceInfo* header) {
  const SegdTracePlace& place = record.traces[trace];
  const SegdChannelSet& set = record.headers.sets[place.set];
  const auto first = std::ranges::find(record.traces, place.set, &SegdTracePlace::set) - record.traces.begin();
  const std::size_t channel = trace - static_cast<std::size_t>(first);
  put(header, trChannel, static_cast<int>(channel) + 1);
  if (samples == nullptr) return kyrOk;
  const std::size_t scans = place.samples / static_cast<std::size_t>(set.subscans);
  const std::span<const char> data = bytes_.at(place.byte, scans * record.scans.bytes());
  const double scale = how_.raw != 0 ? kSegdRaw : segdVolts(set.toMillivolts);
  const std::size_t decoded = decodeSegdScans(record.headers.formatCode, data, record.scans.placeOf(place.set, channel),
                                              scale, {samples, place.samples});
  if (decoded < place.samples) return lost(record, place.byte, "ends too early");
  std::fill(samples + place.samples, samples + samples_, 0.0F);
  return kyrOk;
}

// Lines and points between whole numbers are brought to the nearest.
int SegdSource::whole(double value, const char* name) {
  const auto rounded = static_cast<int>(std::lround(value));
  if (rounded != value && !roundingTold_) {
    roundingTold_ = true;
    say(formatText("  ** Lines and points are rounded to whole numbers, first %s %g.", name, value));
  }
  return rounded;
}

void SegdSource::fill(const Record& record, const SegdChannelSet& set, TraceInfo* header) {
  const SegdRecord& headers = record.headers;
  put(header, trFieldFile, headers.fieldFile);
  put(header, trTraceType, traceType(set.type));
  put(header, trSegdChannelSet, set.number);
  put(header, trSegdScanType, set.scanType);
  put(header, trReceiverLine, std::nullopt);
  putLocation(header, trReceiverLocation, std::nullopt);
  put(header, trSourceLine,
      headers.sourceLine ? std::optional(whole(*headers.sourceLine, "source line")) : std::nullopt);
  putLocation(header, trSourceLocation,
              headers.sourcePoint ? std::optional(whole(*headers.sourcePoint, "source point")) : std::nullopt);
  const auto putTime = [&](int property, int SegdTime::*part) {
    put(header, property, headers.time ? std::optional((*headers.time).*part) : std::nullopt);
  };
  putTime(trSegdYear, &SegdTime::year);
  putTime(trSegdDay, &SegdTime::day);
  putTime(trSegdHour, &SegdTime::hour);
  putTime(trSegdMinute, &SegdTime::minute);
  putTime(trSegdSecond, &SegdTime::second);
}
