/// What every instrument test stands in: the dataset, the search of a record, the report's lines, the loop over live
/// traces, the values for the dialog. A test brings its settings, its words and its measure.
///
///     int runSomeTest() {
///       return runTest(kWords, settings.limit, [](TestRun& run) { ... run.end(); });
///     }
///
/// Whatever leaves the body, the dataset is closed and all memory is free.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quarlo/common/reportdialog.h"
#include "quarlo/common/reportinput.h"
#include "quarlo/instruments/testvalues.h"

/// What came of the open test dialog's last run.
struct TestOutcome {
  std::string status = "Ready";
  bool ended = false;  ///< the report was written to its end
  TestValues values = {};
};

/// A test's dialog has opened, or is gone (null).
void testOpened(const ReportRecord* report);
/// What the open dialog was handed.
const ReportRecord& currentReport();
TestOutcome& lastOutcome();

/// Leaves a test's body without the end of its report. The user has been told, but for the dialog's status line.
struct TestEnded {
  std::string why;
};

/// How a report marks a trace that fails, by the number of blanks before the stars.
constexpr const char* kFailedSix = "      ******* FAILED *******";
constexpr const char* kFailedFive = "     ******* FAILED *******";
constexpr const char* kFailedFour = "    ******* FAILED *******";

/// Of a measure over the counted traces; of none it is no number.
struct Average {
  double sum = 0;
  int count = 0;

  void add(double value) {
    sum += value;
    ++count;
  }
  double value() const { return sum / count; }
};

class TestRun {
 public:
  /// Opens the dataset. @throws TestEnded when there is none, or it has no samples
  TestRun(const TestWords& words, float limit);

  ReportInput& input() { return input_; }
  int samples() const { return input_.samples(); }

  // ---- the report's lines
  [[gnu::format(printf, 2, 3)]] void line(const char* format, ...);
  /// Empty lines: they hold one blank.
  void blank(int count = 1);
  /// Two empty lines, the title with the path, the banner, an empty line.
  void head();
  /// "DC will ... removed prior to test" and `end`.
  void dcLine(bool removed, const char* end = ".");
  /// The record and the first and last trace.
  void recordLines(const FieldRecord& record, int firstTrace, int lastTrace);
  /// "Field file number: ..." and "Total tested traces: ...", behind an empty line.
  void countLines(const FieldRecord& record, int count);
  /// A trace's line, with its mark when it fails, and its values for the dialog.
  void traceLine(const TestedTrace& trace, const std::string& text, std::vector<float> measures,
                 const char* mark = nullptr);
  /// The same of a trace that others are compared with.
  void referenceLine(const TestedTrace& trace, const std::string& text, std::vector<float> measures);
  /// Empty lines and "--  End of ..."
  void end(int blanks = 2);
  /// Tells something beside the report: on the console, and in the dialog's status line.
  void remark(const char* consoleLine);

  // ---- records and traces
  /// The first record with a field file number. @throws TestEnded behind the report's line when there is none
  FieldRecord find(int fieldFile);
  /// Cuts a setting back to the traces of a record, with a warning.
  void checkLastTrace(int* lastTrace);
  /// What stands before a test's own lines: head(), find() and checkLastTrace().
  FieldRecord begin(int fieldFile, int* lastTrace);
  /// Room for `count` floats of 0. @throws TestEnded after the report of NullCheck
  std::unique_ptr<float[]> buffer(int count, const char* name);
  /// The values of traces are those of two records: `record` is the second.
  void compareWith(const FieldRecord& record) { values_.compareWith(record); }
  /// Reads a trace, dead or not.
  TestedTrace readAny(const FieldRecord& record, int number, float* samples, bool* isDead = nullptr);
  /// Reads a trace. @return nothing for a dead one
  std::optional<TestedTrace> read(const FieldRecord& record, int number, float* samples);
  /// The traces from `first` to `last` that a record has.
  std::vector<int> traces(int first, int last) const;
  /// Reads traces, and hands on those that live.
  /// @param samples room for a trace @param use called with the trace; its samples are in `samples`
  template <typename Use>
  void forLive(const FieldRecord& record, const std::vector<int>& numbers, float* samples, Use use) {
    for (const int number : numbers)
      if (const auto trace = read(record, number, samples)) use(*trace);
  }
  template <typename Use>
  void forLive(const FieldRecord& record, int first, int last, float* samples, Use use) {
    forLive(record, traces(first, last), samples, use);
  }

  /// Hands over what came of the run: its last call.
  void finish(TestOutcome* outcome);

 private:
  const TestWords& words_;
  WINDOW textWindow_;
  ReportInput input_;
  TestValues values_;
  std::string remark_;
  bool ended_ = false;
};

/// Runs a test on the open dialog's dataset, under the busy cursor.
/// @param limit what fails a trace, as its values tell it; any for a test without one
/// @return 1 when the report was written to its end, else 0
int runTest(const TestWords& words, float limit, const std::function<void(TestRun& run)>& body);
