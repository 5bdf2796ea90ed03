#include "quarlo/tapelib/frame/segdsource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>

#include "libkyr/folder.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/frame/fieldchoice.h"
#include "quarlo/tapelib/modulecalls.h"

namespace fs = std::filesystem;

namespace {

// All regular files beside a file, in the order of their names.
std::vector<std::string> folderOf(const std::string& path) {
  std::error_code failed;
  std::vector<std::string> files;
  const fs::path folder = fs::path(path).parent_path();
  for (const fs::path& each : pathsIn(folder.empty() ? "." : folder))
    if (fs::is_regular_file(each, failed)) files.push_back(each.string());
  std::ranges::sort(files);
  return files;
}

}  // namespace

// ---- opening ------------------------------------------------------------------------------------------------------

SegdSource::SegdSource(ProcessRecord* procRecord, const KyrSegdInput& how)
    : procRecord_(procRecord),
      how_(how),
      choice_(how),
      reader_(how.raw != 0, [this](const std::string& line) { say(line); }),
      fileChoice_(fieldFileChoice(how.fieldFiles)) {}

int SegdSource::open(const std::string& path) {
  for (const std::string& file : how_.wholeFolder != 0 ? folderOf(path) : std::vector{path})
    if (!walk(file)) return 1;
  leaveOutOthers();
  std::erase_if(records_, [](const Record& record) { return record.file.traces.empty(); });
  if (records_.empty() || choice_.samples() == 0) {
    say("  *** There is no SEG D trace to read in " + path + ".");
    return 1;
  }
  if (choice_.samples() > kMaxSamples) {
    say(formatText("  *** The traces of %s are too long: %u samples.", path.c_str(), choice_.samples()));
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
                   segdFieldFileName(found.record).c_str(), damage.what.c_str()));
  }
  if (found.traces.empty()) return;
  if (found.record.fieldFile && skipThisFile(procRecord_, &fileChoice_, *found.record.fieldFile) != 0) return;
  std::erase_if(found.traces, [&](const SegdTracePlace& place) {
    return place.set != kNoSegdSet && !choice_.wants(found.record.sets[place.set]);
  });
  records_.push_back({file, std::move(found)});
}

// Keeps the traces of one interval, and of one length unless they are padded.
void SegdSource::leaveOutOthers() {
  for (Record& record : records_)
    std::erase_if(
        record.file.traces,
        [&](const SegdTracePlace& place) {
          return place.set != kNoSegdSet && !choice_.fits(record.file.record.sets[place.set], place.samples);
        });
  choice_.tellLeftOut([this](const std::string& line) { say(line); });
}

void SegdSource::describe() {
  std::size_t largest = 0;
  int lowest = std::numeric_limits<int>::max();
  int highest = std::numeric_limits<int>::min();
  for (const Record& record : records_) {
    largest = std::max(largest, record.file.traces.size());
    if (!record.file.record.fieldFile) continue;
    lowest = std::min(lowest, *record.file.record.fieldFile);
    highest = std::max(highest, *record.file.record.fieldFile);
  }
  // More than an int holds is refused where the source is registered.
  const auto count = [](std::size_t number) {
    return number > std::size_t{std::numeric_limits<int>::max()} ? -2 : static_cast<int>(number);
  };
  setSeisOrgCounts(&org_, {count(records_.size()), count(largest), count(choice_.samples())});
  const double interval = choice_.interval();
  SetDSProperty(dsSampleInterval, doubleFloatType, gMillisecondsUnits, &interval, &org_);
  if (lowest > highest) return;
  SetDSProperty(dsMinFieldFile, longIntType, gUnknownUnits, &lowest, &org_);
  SetDSProperty(dsMaxFieldFile, longIntType, gUnknownUnits, &highest, &org_);
}

void SegdSource::tellWhatItIs() {
  const SegdRecord& first = records_.front().file.record;
  const SeisCounts counts = seisOrgCounts(org_);
  say(formatText("%s, format %04d: %d field file%s, at most %d trace%s of %d samples, %g ms.",
                 format().description.c_str(), first.formatCode, counts.records, plural(counts.records),
                 counts.tracesPerRecord, plural(counts.tracesPerRecord), counts.samples, choice_.interval()));
  for (const Record& record : records_) reader_.tellOdd(record.file.record);
}

// ---- what it is ---------------------------------------------------------------------------------------------------

SourceFormat SegdSource::format() const {
  const SegdRecord& first = records_.at(0).file.record;
  return {.description = formatText("SEG D revision %d.%d", first.revision, first.minorRevision),
          .sampleFormat = first.formatCode,
          .bytesPerSample = (segdSampleBits(first.formatCode) + 7) / 8,
          .interval = choice_.interval() / 1000.0};
}

std::int64_t SegdSource::position(int record, int trace) {
  const Record& from = records_.at(static_cast<std::size_t>(record) - 1);
  const auto index = static_cast<std::size_t>(trace) - 1;
  return index < from.file.traces.size() ? static_cast<std::int64_t>(from.file.traces[index].byte) : -1;
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
  if (lostReads_.add())
    say(formatText("  *** %s, byte %llu, %s: a trace %s. It is dead.", files_[record.number].c_str(),
                   static_cast<unsigned long long>(byte), segdFieldFileName(record.file.record).c_str(), why.c_str()));
  return kyrTraceLost;
}

int SegdSource::close() {
  const std::string files = files_.size() == 1 ? files_.front() : formatText("%zu files", files_.size());
  if (const std::string line = lostReads_.rest(files); !line.empty()) say(line);
  return isDamaged_ ? kyrTraceLost : kyrOk;
}

int SegdSource::fetch(int record, int trace, float* samples, TraceInfo* header) {
  const Record& from = records_.at(static_cast<std::size_t>(record) - 1);
  const auto index = static_cast<std::size_t>(trace) - 1;
  if (index >= from.file.traces.size()) {
    makeDead(static_cast<int>(choice_.samples()), samples, header, killNeverWritten);
    return kyrOk;
  }
  const SegdTracePlace& place = from.file.traces[index];
  if (!turnTo(from.number)) return lost(from, place.byte, formatText("cannot be read (%s)", std::strerror(errno)));
  if (place.set == kNoSegdSet) return lost(from, place.byte, "is damaged");
  *header = {};
  putSegdNumber(record, trace, seisOrgCounts(org_).tracesPerRecord, header);
  const std::span<float> room(samples, samples != nullptr ? choice_.samples() : 0);
  const SegdTraceReader::Lost why = from.file.record.isMultiplexed()
                                        ? reader_.readScans(from.file, index, bytes_, room, header)
                                        : reader_.readTrace(from.file.record, place, bytes_, room, header);
  return why ? lost(from, place.byte, *why) : int{kyrOk};
}
