#include "quarlo/instruments/testframe.h"

#include <algorithm>
#include <cstdarg>
#include <new>
#include <numeric>
#include <utility>

#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "quarlo/common/dump_win.h"
#include "quarlo/tapelib/busycursor.h"
#include "quarlo/tapelib/console.h"

namespace {

const ReportRecord* handedOver = nullptr;  // there is one dataset to report on, and so one test

}  // namespace

void testOpened(const ReportRecord* report) {
  handedOver = report;
  lastOutcome() = {};
}

const ReportRecord& currentReport() { return *handedOver; }

TestOutcome& lastOutcome() {
  static TestOutcome outcome;
  return outcome;
}

TestRun::TestRun(const TestWords& words, float limit)
    : words_(words),
      textWindow_(currentReport().textWindow),
      input_(currentReport().inputFile),
      values_(words, currentReport().inputFile.name, limit) {
  if (!input_.isOpen()) throw TestEnded{"The dataset cannot be opened"};
  if (samples() > 0) return;
  console_printf("  *** %s: the traces hold no samples. There is nothing to measure.", input_.path().c_str());
  throw TestEnded{"The traces hold no samples"};
}

// ---- the report's lines -------------------------------------------------------------------------------------------

void TestRun::line(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = formatTextV(format, arguments);
  va_end(arguments);
  dumpOut(text.c_str(), textWindow_);
}

void TestRun::blank(int count) {
  for (int one = 0; one < count; ++one) dumpOut(" ", textWindow_);
}

void TestRun::head() {
  blank(2);
  line("%s   for file    %s.", words_.title, input_.path().c_str());
  line("Kyr Instrument Test Suite. Tolvane Corp.");
  blank();
}

void TestRun::dcLine(bool removed, const char* end) {
  line("DC will %s removed prior to test%s", removed ? "be" : "NOT be", end);
}

void TestRun::recordLines(const FieldRecord& record, int firstTrace, int lastTrace) {
  line("Testing Record # %d, Field File # %d", record.number, record.fieldFile);
  line("   First trace in file to test:  %d", firstTrace);
  line("   Last trace in file to test:   %d", lastTrace);
}

void TestRun::countLines(const FieldRecord& record, int count) {
  blank();
  line("Field file number:  %d", record.fieldFile);
  line("Total tested traces:  %d", count);
}

void TestRun::traceLine(const TestedTrace& trace, const std::string& text, std::vector<float> measures,
                        const char* mark) {
  values_.add(trace, std::move(measures), mark != nullptr);
  line("%s%s", text.c_str(), mark != nullptr ? mark : "");
}

void TestRun::referenceLine(const TestedTrace& trace, const std::string& text, std::vector<float> measures) {
  values_.addReference(trace, std::move(measures));
  line("%s", text.c_str());
}

void TestRun::end(int blanks) {
  blank(blanks);
  line("--  End of %s", words_.end);
  ended_ = true;
}

void TestRun::remark(const char* consoleLine) {
  console_out(consoleLine);
  remark_ = std::string(". ") + (consoleLine + std::string_view(consoleLine).find_first_not_of(" *"));
}

// ---- records and traces -------------------------------------------------------------------------------------------

FieldRecord TestRun::find(int fieldFile) {
  TraceInfo header;
  int unread = 0;
  for (int number = 1; number <= input_.records(); ++number)
    if (!input_.header(number, 1, &header))
      ++unread;
    else if (wholeProperty(trFieldFile, header) == fieldFile)
      return {number, fieldFile};
  line("   ***  Error: field file %d not found in the input file.", fieldFile);
  std::string why = formatText("Field file %d not found", fieldFile);
  if (unread > 0) why += formatText(". Records that cannot be read: %d", unread);
  throw TestEnded{why};
}

void TestRun::checkLastTrace(int* lastTrace) {
  if (*lastTrace <= input_.traces()) return;
  *lastTrace = input_.traces();
  line("   ** Warning: traces per record for input data is %d.", input_.traces());
  line("      Last trace has been reset to %d.", *lastTrace);
  blank();
}

FieldRecord TestRun::begin(int fieldFile, int* lastTrace) {
  head();
  const FieldRecord record = find(fieldFile);
  checkLastTrace(lastTrace);
  return record;
}

std::unique_ptr<float[]> TestRun::buffer(int count, const char* name) {
  std::unique_ptr<float[]> room(new (std::nothrow) float[static_cast<std::size_t>(count)]());
  if (!NullCheck(room.get(), name)) throw TestEnded{"There is not enough memory for this test"};
  return room;
}

TestedTrace TestRun::readAny(const FieldRecord& record, int number, float* samples, bool* isDead) {
  TraceInfo header;
  input_.traceCounted(record.number, number, samples, &header);
  if (isDead != nullptr) *isDead = IsDead(header);
  return {record, number, wholeProperty(trChannel, header)};
}

std::optional<TestedTrace> TestRun::read(const FieldRecord& record, int number, float* samples) {
  bool isDead = false;
  const TestedTrace trace = readAny(record, number, samples, &isDead);
  return isDead ? std::nullopt : std::optional(trace);
}

std::vector<int> TestRun::traces(int first, int last) const {
  const int from = std::max(first, 1);
  std::vector<int> numbers(static_cast<std::size_t>(std::max(0, std::min(last, input_.traces()) - from + 1)));
  std::iota(numbers.begin(), numbers.end(), from);
  return numbers;
}

void TestRun::finish(TestOutcome* outcome) {
  input_.tellMissing();
  outcome->ended = ended_;
  outcome->status = values_.summary() + remark_;
  outcome->values = std::move(values_);
}

int runTest(const TestWords& words, float limit, const std::function<void(TestRun& run)>& body) {
  const BusyCursor busy;
  TestOutcome& outcome = lastOutcome();
  outcome = {.status = "The test broke off. The console says why."};  // unless it comes to an end
  try {
    TestRun run(words, limit);
    body(run);
    run.finish(&outcome);
  } catch (const TestEnded& ended) {
    outcome.status = ended.why;
  }
  return outcome.ended ? 1 : 0;
}
