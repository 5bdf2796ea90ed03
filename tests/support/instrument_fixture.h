/// Reports on datasets under the hands of a test: recordings made of numbers, and the way through the file dump to a
/// report's dialog and its page.
#pragma once

#include "quarlo/dump/fdmp_dlg.h"
#include "tests/support/dataset_maker.h"
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
  /// @param samples of each trace; what a trace has no number for is 0
  void make(const std::vector<RecordedRecord>& records, int samples, const std::string& name = "in.kyr") const {
    const auto ofRecord = [&](int record) -> const RecordedRecord& {
      return records[static_cast<std::size_t>(record - 1)];
    };
    makeDataset(folder.path(name), static_cast<int>(records.size()), static_cast<int>(records[0].traces.size()),
                {.samples = samples}, [&](int record, int number, TraceInfo* header, float* values) {
                  const RecordedTrace& trace = ofRecord(record).traces[static_cast<std::size_t>(number - 1)];
                  header->words[trFieldFile] = static_cast<std::uint32_t>(ofRecord(record).fieldFile);
                  header->words[trChannel] = static_cast<std::uint32_t>(100 + number);
                  header->words[trKillFlag] = static_cast<std::uint32_t>(trace.killFlag);
                  std::fill_n(values, samples, 0.0F);
                  std::ranges::copy(trace.samples, values);
                  return !trace.samples.empty() || samples == 0;
                });
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
