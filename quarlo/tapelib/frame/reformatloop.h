/// The run of a reformat, as the three phases of a format module call it: the source that the module opened goes in,
/// what the user chose as output comes out.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/traceoutput.h"

/// What a module hands to its run.
struct ReformatInput {
  Link link{};          ///< the source; the run closes it
  int firstRecord = 1;  ///< of a part of the source
  int lastRecord = 0;   ///< 0 for all
  std::string told;     ///< what it is, for the output's text header, such as "SEG D field files, SEG D revision 2.1"
  int records = 0;      ///< of a source that does not know its records: at most so many are announced
  const char* recordsParameter = "";  ///< what the user calls that number
  std::function<int()> tapeFiles{};   ///< of a source on tapes: how many of their files were read
};

/// Takes what was announced of a tape.
void announceTape(const KyrTapeCounts& counts, ReformatInput* input);

/// One run. Its phases answer as a module's do: 0, or nonzero when the run has ended, failed or stopped, and everything
/// is closed.
class ReformatRun {
 public:
  /// @param outputBlock as TInitialPhase got it
  ReformatRun(ProcessRecord* procRecord, const int* outputBlock, ReformatInput input);
  ~ReformatRun();
  ReformatRun(const ReformatRun&) = delete;
  ReformatRun& operator=(const ReformatRun&) = delete;

  int begin();
  int work();
  int end();

 private:
  bool prepare();
  void copyRecords();
  bool copyRecord(int record);
  bool takeTrace(int record, int trace);
  bool cannotRead(int result);
  void refuseMore(int record);
  bool goOn();
  bool fail() {
    failed_ = true;
    return false;
  }
  bool fail(const std::string& line);
  void say(const std::string& line) { ProcessConsole(record_, line.c_str()); }
  void showProgress(int record);
  int finish();
  void summarize();

  ProcessRecord* record_;
  ReformatInput input_;
  std::unique_ptr<TraceOutput> output_;
  std::optional<JobFrame> frame_;
  const int* outputBlock_;

  TraceCounts counts_;
  bool recordsKnown_ = true;
  std::vector<float> samples_;
  TraceInfo header_{};

  std::int64_t tracesRead_ = 0;
  std::int64_t tracesWritten_ = 0;
  std::int64_t tracesLeftOut_ = 0;
  std::int64_t unreadable_ = 0;
  int shownTraces_ = 0;  // written, as the progress dialog has them
  int records_ = 0;      // that came
  int largest_ = 0;      // the highest place of a trace in them
  int percent_ = 0;
  int tapeFiles_ = 1;
  bool failed_ = false;
  bool stopped_ = false;
  bool ended_ = false;
};
