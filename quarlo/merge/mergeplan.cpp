#include "quarlo/merge/mergeplan.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "quarlo/merge/mergelist.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

/// What becomes of an input, or of the merge.
enum class Fate { Taken, Omitted, Refused };

/// A record says nothing meanwhile: what is wrong with a trace is told when the trace is copied.
class Silence {
 public:
  explicit Silence(ProcessRecord* record)
      : record_(record), before_(std::exchange(record->consoleLine, [](const char*) {})) {}
  ~Silence() { record_->consoleLine = before_; }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  ProcessRecord* record_;
  void (*before_)(const char* line);
};

Fate omit() {
  console_out("              This file will be omitted from merge.");
  logBlank();
  return Fate::Omitted;
}

/// @return false for a merge that cannot be
template <typename Look>
bool sift(const Look& look) {
  for (auto file = InputList.begin(); file != InputList.end();) {
    const Fate fate = look(**file);
    if (fate == Fate::Refused) return false;
    file = fate == Fate::Taken ? file + 1 : InputList.erase(file);
  }
  return true;
}

Fate takeFacts(ProcessRecord* record, Link link, KyrFile& file) {
  readFacts(record, link, &file);
  file.liveRecordList.reset(new (std::nothrow) int[static_cast<std::size_t>(file.numberOfRecords)]);
  if (!NullCheck(file.liveRecordList.get(), "anEntry->liveRecordList")) return Fate::Refused;
  const Silence silence(record);
  BuildLookupList(record, link, &file.numberOfRecords, file.tracesPerRecord, file.liveRecordList.get());
  CloseFile(record, link);
  return Fate::Taken;
}

Fate lookAt(ProcessRecord* record, KyrFile& file, const std::string& output) {
  Link link;
  SetNumberOfInputs(record, 1);
  NewInputFile(&link, record, file.fullFileName.c_str(), 0, kAnySeismicType);
  // By its further files, too, a dataset can be the output.
  if (UsesFile(record, link, output.c_str()) || sameFile(file.fullFileName.c_str(), output.c_str())) {
    console_printf("  *** Error: the output %s is one of the inputs.", output.c_str());
    return Fate::Refused;
  }
  if (IsLinkValid(link)) return takeFacts(record, link, file);
  console_out(openingText(link.value, file.fullFileName).c_str());
  return omit();
}

/// All inputs, as they come one behind the other. The sample interval is the first one's, whatever the others have.
class Comparison {
 public:
  Fate take(const KyrFile& file) {
    if (!std::exchange(begun_, true))
      plan_ = {file.seismicFileType, 0, file.tracesPerRecord, file.numberOfSamples, file.sampleInterval};
    if (file.seismicFileType != plan_.type) plan_.type = kAnyUnknownSeismic;
    if (file.numberOfSamples != plan_.samples) {
      console_printf("  ** Warning: number of samples in file %s", file.fullFileName.c_str());
      console_out("              doesn't match first input file.");
      return omit();
    }
    records_ += file.numberOfRecords;
    plan_.tracesPerRecord = std::max(plan_.tracesPerRecord, file.tracesPerRecord);
    return Fate::Taken;
  }

  /// Every trace has a running number, an int.
  std::optional<MergePlan> settled() {
    constexpr std::int64_t kMost = std::numeric_limits<int>::max() - 1;
    const std::int64_t traces = records_ > kMost ? records_ : records_ * plan_.tracesPerRecord;
    if (traces > kMost) {
      console_printf("  *** Error: no dataset can hold %lld records of %d traces.", static_cast<long long>(records_),
                     plan_.tracesPerRecord);
      return std::nullopt;
    }
    plan_.records = static_cast<int>(records_);
    if (overrideOutputType) plan_.type = theTypes[typeIndex].type;
    plan_.isStacked = plan_.type == kStackedData;
    if (plan_.isStacked) {
      plan_.records = 1;
      plan_.tracesPerRecord = static_cast<int>(traces);
    }
    return plan_;
  }

 private:
  MergePlan plan_;
  std::int64_t records_ = 0;
  bool begun_ = false;
};

}  // namespace

std::string openingText(int code, const std::string& path) {
  const char* const name = path.c_str();
  switch (code) {
    case kyrWrongVersion:
      return formatText("  ** Warning: %s is a file version that is not supported by this release.", name);
    case kyrNotRadar:
      return formatText("  ** Warning: %s is not a GPR dataset.", name);
    case kyrNotTwoD:
      return formatText("  ** Warning: %s is not a 2-D dataset.", name);
    case kyrNotSeismic:
      return formatText("  ** Warning: %s is not a seismic dataset.", name);
    case kyrDiskError:
      return formatText("  ** Warning: disk file error occurred opening %s.", name);
    default:
      return formatText("Error opening file %s.", name);
  }
}

std::optional<MergePlan> planMerge(ProcessRecord* record) {
  const std::string output = pathOf(outFile);
  Comparison comparison;
  if (!sift([&](KyrFile& file) { return lookAt(record, file, output); })) return std::nullopt;
  if (!sift([&](const KyrFile& file) { return comparison.take(file); })) return std::nullopt;
  return comparison.settled();
}

void BuildLookupList(ProcessRecord* procRecord, Link link, int* liveRecords, int trcPerRec, int* liveRecList) {
  const auto isDead = [&](int record, int trace) {
    TraceInfo header;
    return HeaderGet(procRecord, link, record, trace, &header) == kyrOk && IsDead(header);
  };
  int found = 0;
  for (int record = 1; record <= *liveRecords; ++record) {
    int trace = 1;
    while (trace <= trcPerRec && isDead(record, trace)) ++trace;
    if (trace <= trcPerRec) liveRecList[found++] = record;
  }
  *liveRecords = found;
}
