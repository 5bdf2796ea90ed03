#include <algorithm>
#include <cmath>
#include <limits>

#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/outputkinds.h"

namespace {

/// Says what a run would make.
class CheckOutput : public TraceOutput {
 public:
  explicit CheckOutput(ProcessRecord* procRecord) : record_(procRecord) {}

  bool begin(const TraceCounts& counts, Link /*from*/) override {
    counts_ = counts;
    return true;
  }
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd /*end*/, int records, int largest) override {
    counts_.records = records;
    counts_.tracesPerRecord = largest;
    return true;
  }
  void tellSummary() override;

 private:
  void say(const std::string& line) { ProcessConsole(record_, line.c_str()); }

  ProcessRecord* record_;
  TraceCounts counts_;
  int fewest_ = std::numeric_limits<int>::max();
  int inRecord_ = 0;
  int current_ = 0;
  std::int64_t dead_ = 0;
  std::int64_t auxiliary_ = 0;
  int firstFile_ = kNullInt;
  int lastFile_ = kNullInt;
  long long notNumbers_ = 0;
  float largest_ = 0;
};

TracePutAnswer CheckOutput::put(int record, int /*trace*/, const float* samples, const TraceInfo& header) {
  if (record != current_ && current_ != 0) fewest_ = std::min(fewest_, inRecord_);
  inRecord_ = record == current_ ? inRecord_ + 1 : 1;
  current_ = record;
  dead_ += IsDead(header) ? 1 : 0;
  auxiliary_ += isAuxiliaryTrace(header) ? 1 : 0;
  // What could not be read has no numbers.
  const bool isRead = (tracePropertyOr(header, trKillFlag, 0) & killUnreadable) == 0;
  if (isRead) lastFile_ = tracePropertyOr(header, trFieldFile, kNullInt);
  if (firstFile_ == kNullInt) firstFile_ = lastFile_;
  for (int i = 0; i < counts_.samples; ++i)
    if (std::isnan(samples[i]))
      ++notNumbers_;
    else
      largest_ = std::max(largest_, std::abs(samples[i]));
  return TracePutAnswer::Written;
}

void CheckOutput::tellSummary() {
  say(formatText("A run would make %s of at most %s, %s at %.9g ms.", counted(counts_.records, "record").c_str(),
                 counted(counts_.tracesPerRecord, "trace").c_str(), counted(counts_.samples, "sample").c_str(),
                 counts_.interval * 1e3));
  fewest_ = std::min(fewest_, inRecord_);
  if (counts_.records > 0 && fewest_ < counts_.tracesPerRecord)
    say(formatText("The smallest record has %s; places that nobody wrote fill the others up.",
                   counted(fewest_, "trace").c_str()));
  if (firstFile_ != kNullInt) say(formatText("Field files from %d to %d.", firstFile_, lastFile_));
  if (dead_ > 0) say(counted(dead_, "dead trace") + ".");
  if (auxiliary_ > 0) say(counted(auxiliary_, "auxiliary trace") + ".");
  say(formatText("Largest magnitude %g.", static_cast<double>(largest_)));
  if (notNumbers_ > 0)
    say(formatText("  ** %lld sample%s no number (NaN).", notNumbers_, notNumbers_ == 1 ? " is" : "s are"));
}

}  // namespace

std::unique_ptr<TraceOutput> makeCheckOutput(ProcessRecord* procRecord) {
  return std::make_unique<CheckOutput>(procRecord);
}
