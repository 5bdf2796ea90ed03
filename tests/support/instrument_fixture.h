/// Reports on datasets under the hands of a test: recordings made of numbers, and the way through the file dump to a
/// report's dialog and its page.
#pragma once

#include "libkyr/datasets.h"
#include "quarlo/dump/fdmp_dlg.h"
#include "tests/support/job_fixture.h"
#include "tools/recordings.h"

/// A trace of a recording; its channel is 100 and its number.
struct RecordedTrace {
  std::vector<float> samples;  ///< none: nobody writes this trace
  int killFlag = 0;
};

struct RecordedRecord {
  int fieldFile;
  std::vector<RecordedTrace> traces;
};

class InstrumentTest : public JobTest {
 protected:
  using Lines = std::vector<std::string>;

  /// @param samples of each trace; what a trace has no number for is 0
  void make(const std::vector<RecordedRecord>& records, int samples, const std::string& name = "in.kyr") const {
    const auto numRec = static_cast<int>(records.size());
    const auto numChan = static_cast<int>(records.front().traces.size());
    const ProcessRecordPtr process(NewProcessRecord());
    Link link;
    const float interval = 0.002F;
    SetNumberOfOutputs(process.get(), 1);
    NewOutputSeismicFile(&link, process.get(), folder.path(name).c_str(), 0, kAnySeismicType, 0, numChan);
    SetDatasetProperty(process.get(), link, dsRecords, longIntType, gUnknownUnits, &numRec);
    SetDatasetProperty(process.get(), link, dsSamples, longIntType, gUnknownUnits, &samples);
    SetDatasetProperty(process.get(), link, dsSampleInterval, singleFloatType, gSecondsUnits, &interval);
    ASSERT_EQ(EndInit(process.get()), kyrOk);
    for (int record = 1; record <= numRec; ++record) {
      const auto& [fieldFile, traces] = records[static_cast<std::size_t>(record - 1)];
      for (int number = 1; number <= numChan; ++number) {
        RecordedTrace trace = traces[static_cast<std::size_t>(number - 1)];
        if (trace.samples.empty() && samples > 0) continue;
        trace.samples.resize(static_cast<std::size_t>(samples));
        TraceInfo header{};
        const int channel = 100 + number;
        SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &fieldFile, &header);
        SetTraceProperty(trChannel, longIntType, gUnknownUnits, &channel, &header);
        SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &trace.killFlag, &header);
        ASSERT_EQ(TracePut(process.get(), link, record, number, trace.samples.data(), &header), kyrOk);
      }
    }
    ASSERT_EQ(CloseFile(process.get(), link), kyrOk);
  }

  /// Makes what `kyrtool record` makes of a text.
  void record(const std::string& text, const std::string& name = "in.kyr") const {
    std::istringstream in(text);
    ASSERT_EQ(recordings::make(in, "text", folder.path(name), [](const std::string&) {}), "");
  }

  /// Opens a report by its row of the file dump's list.
  void openReport(const std::string& row, int resource, const std::string& name = "in.kyr") {
    if (!xvt_vobj_is_valid(dialog)) JobTest::open(DLG_FILE_DUMP, FileDumpDlg_eh);
    if (toolkit.text(dialog, FD_FILE) != folder.path(name)) chooseFile(FD_OPEN, folder.path(name));
    toolkit.select(dialog, FD_REPORTS, row);
    toolkit.press(dialog, FD_START_REPORT);
    test = toolkit.dialog(resource);
    ASSERT_NE(test, NULL_WIN);
    forgetConsole();
  }
  void set(int control, const std::string& text) { toolkit.typeInto(test, control, text); }
  /// Runs it. @return the page
  Lines run() {
    toolkit.press(test, IT_RUN);
    return toolkit.lines(toolkit.windowTitled("File Dump Window"));
  }
  std::string status() { return toolkit.text(test, IT_STATUS); }
  std::string savedValues() {
    toolkit.answerFile(folder.path("values.csv"));
    toolkit.press(test, IT_SAVE);
    return readFile("values.csv");
  }
  /// The lines that every level test's report begins with.
  Lines head(const std::string& title, const std::string& name = "in.kyr") const {
    return {" ", " ", title + "   for file    " + folder.path(name) + ".", "Kyr Instrument Test Suite. Tolvane Corp.",
            " "};
  }

  WINDOW test = NULL_WIN;
};

inline std::vector<std::string> operator+(std::vector<std::string> one, const std::vector<std::string>& other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}
