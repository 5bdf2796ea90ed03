#include "quarlo/merge/mergejob.h"

#include <optional>
#include <string>
#include <vector>

#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "quarlo/merge/mergelist.h"
#include "quarlo/merge/mergeplan.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "resources/ids.h"

namespace {

/// The writing of what was planned.
class Merge {
 public:
  Merge(ProcessRecord* record, const MergePlan& plan) : record_(record), plan_(plan) {}
  int run();

 private:
  bool beginOutput();
  bool isDone(int result, const char* what);
  void copyAll();
  void copyFile(KyrFile& file);
  Link openAgain(const KyrFile& file);
  bool copyRecord(Link link, int record, int traces);
  bool copyTrace(Link link, int record, int trace);
  bool put(int trace);
  bool goOn();
  void finishOutput();
  void tellOfRest();
  bool isWhole() const { return !failed_ && !stopped_; }
  int set(int property, int value) {
    return SetDatasetProperty(record_, output_, property, longIntType, gUnknownUnits, &value);
  }

  ProcessRecord* record_;
  MergePlan plan_;
  const std::string path_ = pathOf(outFile);
  std::optional<JobFrame> frame_;
  Link output_{};

  std::vector<float> aTrace_;
  TraceInfo header_{};
  int running_ = 0;     // number of the input trace, over all inputs
  int outRecords_ = 0;  // that are through
  int percent_ = 0;
  int files_ = 0;
  int unreadable_ = 0;
  bool cannotWrite_ = false;
  bool failed_ = false;
  bool stopped_ = false;
};

int Merge::run() {
  if (!InputList.empty()) {
    frame_.emplace(JOB_MERGE, UT_DISK, &running_, &percent_, &files_);
    if (!frame_->isOpen()) return 0;
    bool begun = false;
    if (!runGuarded([&] {
          begun = beginOutput();
          if (begun) copyAll();
        }) ||
        !begun)
      failed_ = true;
    finishOutput();
  }
  if (failed_) logFailed();
  logBlank();
  console_printf("%d files merged.", files_);
  logBlank();
  frame_.reset();
  logEnded("Merge");
  return failed_ ? 0 : 1;
}

// ---- the beginning of the output --------------------------------------------------------------------------------

bool Merge::isDone(int result, const char* what) {
  if (result != kyrOk) console_printf("  *** Error %s the output dataset (%d).", what, result);
  return result == kyrOk;
}

bool Merge::beginOutput() {
  const MergePlan& plan = plan_;
  aTrace_.resize(static_cast<std::size_t>(plan.samples));
  SetNumberOfInputs(record_, 1);
  SetNumberOfOutputs(record_, 1);
  const int opened =
      NewOutputSeismicFile(&output_, record_, path_.c_str(), 0, plan.type,
                           GetRecordsPerFile(plan.records, plan.tracesPerRecord, plan.samples), plan.tracesPerRecord);
  if (!isDone(opened, "opening")) return false;
  const Link first = openAgain(*InputList.front());
  if (!IsLinkValid(first)) return false;
  CopyBinaryHeader(record_, first, output_);
  CloseFile(record_, first);
  int result = set(dsTotalTraces, plan.records * plan.tracesPerRecord);
  for (const auto& [property, count] : {std::pair(dsTracesPerRecord, plan.tracesPerRecord),
                                        {dsLargestRecord, plan.tracesPerRecord},
                                        {dsRecords, plan.records},
                                        {dsSamples, plan.samples}})
    if (result == kyrOk) result = set(property, count);
  if (result == kyrOk)
    result = SetDatasetProperty(record_, output_, dsSampleInterval, singleFloatType, gUnknownUnits, &plan.interval);
  return isDone(result, "preparing") && isDone(EndInit(record_), "creating");
}

/// An input may have changed since it was looked at: what no longer fits is not read.
Link Merge::openAgain(const KyrFile& file) {
  Link link;
  NewInputFile(&link, record_, file.fullFileName.c_str(), 0, kAnySeismicType);
  KyrFile now;
  if (IsLinkValid(link)) readFacts(record_, link, &now);
  if (!IsLinkValid(link)) {
    console_out(openingText(link.value, file.fullFileName).c_str());
  } else if (now.numberOfSamples != file.numberOfSamples || now.tracesPerRecord != file.tracesPerRecord ||
             now.numberOfRecords < file.numberOfRecords) {
    console_printf("  *** Error: %s has changed since the merge began.", file.fullFileName.c_str());
    CloseFile(record_, link);
    link = {};
  }
  return link;
}

// ---- trace by trace ---------------------------------------------------------------------------------------------

bool Merge::goOn() {
  if (frame_->goOn()) return true;
  logAborted("Merge");
  stopped_ = true;
  return false;
}

void Merge::copyAll() {
  for (const auto& file : InputList) {
    if (!goOn()) return;
    copyFile(*file);
    if (stopped_ || cannotWrite_) return;
  }
}

void Merge::copyFile(KyrFile& file) {
  const Link link = openAgain(file);
  if (!IsLinkValid(link)) {
    failed_ = true;
    return;
  }
  int record = 1;
  while (record <= file.numberOfRecords && goOn() && copyRecord(link, record, file.tracesPerRecord)) ++record;
  CloseFile(record_, link);
  file.liveRecordList.reset();
  if (record <= file.numberOfRecords) return;
  console_printf("Finished input of %s.", file.fullFileName.c_str());
  ++files_;
}

/// Between records only, a stop leaves none of them behind that is half there. A stacked output has but one.
bool Merge::copyRecord(Link link, int record, int traces) {
  for (int trace = 1; trace <= traces; ++trace)
    if ((plan_.isStacked && trace > 1 && !goOn()) || !copyTrace(link, record, trace)) return false;
  ++outRecords_;
  return true;
}

bool Merge::copyTrace(Link link, int record, int trace) {
  constexpr std::int64_t kWhole = 100;
  ++running_;
  if (TraceGet(record_, link, record, trace, aTrace_.data(), &header_) != kyrOk) {
    ++unreadable_;
    failed_ = true;
  }
  percent_ = static_cast<int>(kWhole * running_ / (std::int64_t{plan_.records} * plan_.tracesPerRecord));
  // A gap of the input, where nobody wrote a trace, stays one.
  const bool isGap = header_.words[trKillFlag] == killNeverWritten;
  return isGap || (plan_.isStacked && IsDead(header_)) || put(trace);
}

bool Merge::put(int trace) {
  SetTraceProperty(trTraceNumber, longIntType, gUnknownUnits, &running_, &header_);
  const int result = plan_.isStacked ? TracePut(record_, output_, 1, running_, aTrace_.data(), &header_)
                                     : TracePut(record_, output_, outRecords_ + 1, trace, aTrace_.data(), &header_);
  if (isDone(result, "writing to")) return true;
  failed_ = cannotWrite_ = true;
  return false;
}

// ---- the end ----------------------------------------------------------------------------------------------------

/// The counts become those of what came; after a failed write the library takes them from what the disk has.
void Merge::finishOutput() {
  if (unreadable_ > 0) console_printf("  *** %d trace%s could not be read.", unreadable_, plural(unreadable_));
  if (!IsLinkValid(output_)) return;
  if (!cannotWrite_) set(dsRecords, plan_.isStacked ? 1 : outRecords_);
  if (!cannotWrite_ && plan_.isStacked) set(dsTracesPerRecord, running_);
  const int result = isWhole() ? CloseFile(record_, output_) : CloseUnfinished(record_, output_);
  if (result != kyrOk) failed_ = cannotWrite_ = true;
  if (!isWhole()) tellOfRest();
}

void Merge::tellOfRest() {
  if (!cannotWrite_) {
    const int count = plan_.isStacked ? running_ : outRecords_;
    // Which of them have lost traces nobody counts.
    const char* const good = unreadable_ > 0 ? "" : "good ";
    console_printf("  ** %s is not complete: %d %s%s%s.", path_.c_str(), count, good,
                   plan_.isStacked ? "trace" : "record", plural(count));
    return;
  }
  // An opening says how much can be read.
  Link link;
  if (NewInputFile(&link, record_, path_.c_str(), 0, kAnySeismicType) == kyrOk) CloseFile(record_, link);
}

}  // namespace

int doKyrMerge(WINDOW theDlg) {
  const ProcessRecordPtr record(NewProcessRecord());
  if (!NullCheck(record.get(), "procRecord")) return 0;
  setConsole(record.get());
  logStarted("Merge");
  logBlank();
  std::optional<MergePlan> plan;
  const std::size_t listed = InputList.size();
  runGuarded([&] { plan = planMerge(record.get()); });
  if (InputList.size() != listed && xvt_vobj_is_valid(theDlg)) updateList(xvt_win_get_ctl(theDlg, MG_INPUTS));
  if (plan) return Merge(record.get(), *plan).run();
  logEnded("Merge");
  return 0;
}
