// The A/D converter test, and what every test's dialog has.
#include "tests/support/instrument_fixture.h"

namespace {

class ConvTest : public InstrumentTest {
 protected:
  /// References of 8, -8, 4, -4 and 2 volts; channel 2 is off by 0.04 volts somewhere, channel 3 was never written.
  void SetUp() override {
    std::vector<RecordedRecord> records;
    int fieldFile = 11;
    for (const float voltage : {8.0F, -8.0F, 4.0F, -4.0F, 2.0F})
      records.push_back(
          {fieldFile++,
           {{.samples = {voltage, voltage}}, {.samples = {voltage, voltage + 0.04F}, .killFlag = killOther}, {}}});
    make(records, 2);
    openReport("A/D Converter Test", DLG_AD_TEST);
  }
  Lines headLines() const {
    return head("A / D   A C C U R A C Y   T E S T") +
           Lines{" ",
                 "Constant voltages are applied to each input channel. The voltages",
                 "on each input record are the same for all channels. Voltages on odd",
                 "numbered records are the negatives of those on the even numbered records,",
                 "and pairs of records have either half or double the amplitude of the",
                 "previous pair of records. Accuracy is measured as the maximum percent ",
                 "deviation from the reference input voltage, on each channel.",
                 " "};
  }
};

TEST_F(ConvTest, RecordsAreMeasuredAgainstReferencesThatChangeSignAndHalve) {
  EXPECT_FALSE(toolkit.enabled(test, IT_SAVE));
  EXPECT_EQ(toolkit.text(test, IT_START_VOLTAGE), "8.000");
  const auto record = [](int number, const std::string& voltage, const Lines& channels) {
    return Lines{" ",
                 "--  A/D Accuracy: Record # " + std::to_string(number) + " , Field File # " +
                     std::to_string(10 + number) + " , Ref. Voltage " + voltage,
                 " "} +
           channels;
  };
  const Lines end = {" ", "--  End of A/D Accuracy Test"};
  const std::string exact = "Channel    1    Max. Deviation ";
  const std::string off = "Channel    2    Max. Deviation ";
  const std::string none = "Channel    3    Max. Deviation ";
  EXPECT_EQ(run(),
            (headLines() + record(1, "8.000000", {exact + "0.00000 %", off + "0.50000 %", none + "100.00000 %"}) +
             record(2, "-8.000000", {exact + "-0.00000 %", off + "-0.50000 %", none + "-100.00000 %"}) +
             record(3, "4.000000", {exact + "0.00000 %", off + "1.00000 %", none + "100.00000 %"}) +
             record(4, "-4.000000", {exact + "-0.00000 %", off + "-1.00000 %", none + "-100.00000 %"}) + end));
  EXPECT_EQ(status(), "12 traces tested");
  EXPECT_EQ(consoleWithoutDates(),
            Lines{"  ** Traces lost or damaged: 0, never written: 4. The first is trace 3 of record 1."});
  const std::string values = savedValues();
  EXPECT_TRUE(
      values.starts_with("Test,File,Record,Field file,Trace,Channel,Reference (V),Max. deviation (%),Limit,"
                         "Result\r\nA/D Converter Test,in.kyr,1,11,1,101,8,0,,\r\n"))
      << values;

  set(IT_START_VOLTAGE, "-4");
  toolkit.press(test, IT_DOUBLING);
  toolkit.press(test, IT_EVEN_CHANNELS);
  EXPECT_EQ(run(), (headLines() + record(1, "-4.000000", {off + "-301.00000 %"}) +
                    record(2, "4.000000", {off + "300.00000 %"}) + record(3, "-8.000000", {off + "-150.50000 %"}) +
                    record(4, "8.000000", {off + "150.00000 %"}) + end));
}

TEST_F(ConvTest, StopsBetweenRecordsAndGoesOnlyWhenItHasStopped) {
  toolkit.onPump = [this](long) {
    toolkit.press(test, IT_RUN);  // refused: a job is running
    if (toolkit.pumps == 2) toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
  };
  const Lines page = run();
  ASSERT_FALSE(page.empty());
  EXPECT_EQ(page.back(), "--  End of A/D Accuracy Test");
  EXPECT_EQ(std::ranges::count_if(page, [](const std::string& line) { return line.starts_with("--  A/D"); }), 1);
  EXPECT_TRUE(consoleHas("  *** A/D Converter Test aborted by user."));
  EXPECT_EQ(status(), "3 traces tested. A/D Converter Test aborted by user.");
  toolkit.onPump = [](long) { throw std::bad_alloc(); };
  run();
  EXPECT_TRUE(consoleHas("  *** There is not enough memory for this job."));
  EXPECT_FALSE(toolkit.enabled(dialog, FD_START_REPORT)) << "the dataset is the report's until its dialog goes";
  toolkit.onPump = [this](long) {
    toolkit.close(test);
    EXPECT_TRUE(xvt_vobj_is_valid(test));
  };
  run();
  EXPECT_FALSE(xvt_vobj_is_valid(test));
  EXPECT_TRUE(toolkit.enabled(dialog, FD_START_REPORT));
}

TEST_F(ConvTest, WhatCannotBeTestedIsSaidInTheDialog) {
  toolkit.failNextDialog(DLG_PROGRESS);
  EXPECT_EQ(run(), Lines{});
  EXPECT_EQ(status(), "The progress dialog cannot be opened");
  EXPECT_EQ(toolkit.errors, Lines{"Error opening dialog"});
  EXPECT_FALSE(toolkit.enabled(test, IT_SAVE));
  make({{1, {RecordedTrace{}}}}, 0);
  EXPECT_EQ(run(), Lines{});
  expectSaid("  *** " + folder.path("in.kyr") + ": the traces hold no samples. There is nothing to measure.");
}

}  // namespace
