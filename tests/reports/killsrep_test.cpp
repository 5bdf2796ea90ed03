// The trace kills report.
#include "tests/support/instrument_fixture.h"

namespace {

class KillsTest : public InstrumentTest {
 protected:
  /// Four records of which the third has no kills; the slot of the last trace is not in the file any more.
  void SetUp() override {
    record(R"(
traces 4
samples 2
interval 0.002
record 901
all set source-line=3 source-location=12.25 receiver-line=7 receiver-location=101.26
1-3 dead processing
2 set kill-flag=48 receiver-location=null
4 set kill-flag=66 receiver-line=-7
record 902
all set source-location=null
3,4 dead geometry
record 903
record 904)");
    std::filesystem::resize_file("in.kyr", std::filesystem::file_size("in.kyr") - 832);
    openReport("Trace Kills Report", DLG_KILLS_REPORT);
  }
  Lines title() const { return {"Trace Kills Report for Kyr dataset - " + folder.path("in.kyr"), " "}; }
  static Lines list(const std::string& kind, const Lines& traces) {
    return Lines{"   " + kind + " -", "      Channel        Receiver Line       Receiver Location   "} + traces +
           Lines{" "};
  }
  const std::string shot = "Field File: 901     Shot Line: 3     Shot Location: 12.2";
  const std::string first = "      1              7                   101.3               ";
  const std::string third = "      3              7                   101.3               ";
};

TEST_F(KillsTest, DeadTracesAreListedByRecordAndKind) {
  EXPECT_EQ(run(), (title() + Lines{shot} +
                    list("Geometry Kills", {"      2              7                   0.0                 "}) +
                    list("Processing Kills", {first, third}) +
                    list("Other Kills", {"      4              -7                  101.3               "}) +
                    Lines{"Field File: 902"} +
                    list("Geometry Kills", {"      3              0                   0.0                 ",
                                            "      4              0                   0.0                 "}) +
                    Lines{"Field File: 904"} +
                    list("Other Kills", {"      0              0                   0.0                 "})));
  EXPECT_EQ(status(), "7 dead traces listed");
  EXPECT_EQ(consoleWithoutDates().back(),
            "  ** Traces lost or damaged: 1, never written: 0. The first is trace 4 of record 4.");
  EXPECT_TRUE(toolkit.enabled(dialog, FD_SHOW_WINDOW));

  toolkit.press(test, KR_GEOMETRY);
  toolkit.press(test, KR_OTHER);
  EXPECT_EQ(run(), (title() + Lines{shot} + list("Processing Kills", {first, third})));
  toolkit.press(test, KR_PROCESSING);
  EXPECT_EQ(run(), title());
}

TEST_F(KillsTest, AnAbortIsToldAndWhatWasNotFoundToo) {
  toolkit.onPump = [this](long) {
    EXPECT_EQ(toolkit.title(toolkit.dialog(DLG_PROGRESS)), "Report Progress");
    toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
  };
  toolkit.press(test, KR_PROCESSING);
  EXPECT_EQ(run(), (title() + Lines{"No dead traces of type \"Geometry Kills\" in this file.",
                                    "No dead traces of type \"Other Kills\" in this file."}));
  EXPECT_TRUE(consoleHas("  *** Trace Kills Report aborted by user."));
  EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
  EXPECT_FALSE(toolkit.hasTimers());
}

TEST_F(KillsTest, AMissingProgressDialogIsSaid) {
  toolkit.failNextDialog(DLG_PROGRESS);
  EXPECT_EQ(run(), title());
  EXPECT_EQ(status(), "The progress dialog cannot be opened");
  EXPECT_EQ(toolkit.errors, Lines{"Error opening dialog"});
}

}  // namespace
