// Limits, dead traces and quirks of the level tests. Their pages are those of docs/instrument-tests.md, their numbers
// those of tests/scripts/instruments.py.
#include <cmath>

#include "quarlo/instruments/crossings.h"
#include "quarlo/instruments/eintest.h"
#include "tests/support/instrument_fixture.h"

namespace {

/// Swings around an offset, from its lower side.
RecordedTrace swing(float amplitude, float offset = 0, int killFlag = 0) {
  RecordedTrace trace{{}, killFlag};
  for (int k = 0; k < 8; ++k) trace.samples.push_back(offset + (k % 2 != 0 ? amplitude : -amplitude));
  return trace;
}

class LevelTests : public InstrumentTest {
 protected:
  LevelTests() {
    make({{902, {swing(1), swing(1), swing(1), swing(1, 0, killProcessing), swing(0.5F)}},
          {901,
           {swing(32.0F / 1024), swing(1, 0, killOther), swing(33.0F / 1024, 1.0F / 512), swing(32.0F / 1024),
            swing(31.0F / 1024)}}},
         8);
  }
};

TEST_F(LevelTests, LimitsAreReachedAndFieldsKeepTheirForm) {
  openReport("DC Offset Test", DLG_DC_OFFSET_TEST);
  set(IT_LIMIT, "1953.125");
  set(IT_FIRST_TRACE, "-3");
  run();
  EXPECT_EQ(status(), "3 traces tested, 0 failed");  // equal to the limit
  EXPECT_EQ(toolkit.text(test, IT_FIRST_TRACE), "3");
  EXPECT_EQ(toolkit.text(test, IT_LAST_TRACE), "50");  // the setting is cut back, and needs no second warning
  EXPECT_EQ(toolkit.text(test, IT_LIMIT), "1953.1250");
  EXPECT_EQ(std::ranges::count(run(), "      Last trace has been reset to 5."), 0);
  EXPECT_EQ(
      savedValues(),
      "Test,File,Record,Field file,Trace,Channel,DC bias (uV),Limit (uV),Result\r\n"
      "DC Offset Test,in.kyr,2,901,3,103,1953.125,1953.125,passed\r\n"
      "DC Offset Test,in.kyr,2,901,4,104,0,1953.125,passed\r\nDC Offset Test,in.kyr,2,901,5,105,0,1953.125,passed\r\n");
  set(IT_FIELD_FILE, "77");
  EXPECT_EQ(run().back(), "   ***  Error: field file 77 not found in the input file.");
  EXPECT_EQ(status(), "Field file 77 not found");
  EXPECT_FALSE(toolkit.enabled(test, IT_SAVE));
}

TEST_F(LevelTests, VariationsMoveTheAverageThatTracesAreComparedWith) {
  openReport("Gain Accuracy Test", DLG_GAIN_ACCURACY_TEST);
  set(IT_LIMIT, "3.125");
  set(IT_FIRST_TRACE, "0");  // there is none: nothing is read before the first
  toolkit.press(test, IT_COMPARE_TO_AVERAGE);
  const Lines page = run();  // against 31.25, 31.25, 34.375 and 43.466 mV
  EXPECT_EQ(std::ranges::count(page, "The average input signal level from the traces will be used."), 1);
  EXPECT_EQ(status(), "4 traces tested, 2 failed: 4, 5");
  EXPECT_EQ(std::ranges::count(page,
                               "       5              30.273             -30.273               30.273         30.351   "
                               " ******* FAILED *******"),
            1);
}

TEST_F(LevelTests, WithoutALiveTraceThereIsNoImpulseTable) {
  openReport("Impulse Resp. Test", DLG_IMPULSE_TEST);
  set(IT_FIRST_TRACE, "2");
  set(IT_LAST_TRACE, "2");
  const Lines page = run();
  EXPECT_EQ(std::ranges::count(page, "Trace number  RMS difference percent "), 0);
  EXPECT_EQ(page[page.size() - 4], "Average RMS percent:  -nan");
}

TEST(EINTest, SeesNoiseBesideAnOffset) {
  std::vector<float> samples(1000, 0.002F);
  EXPECT_LT(noiseLevel(samples.data(), 1000, true), 1e-4F);
  for (std::size_t k = 0; k < samples.size(); k += 2) samples[k] += 2e-7F;
  EXPECT_NEAR(noiseLevel(samples.data(), 1000, true), 0.1F, 0.001F);
  EXPECT_NEAR(noiseLevel(samples.data(), 1000, false), 2000.1F, 0.01F);
}

TEST(Crossings, StretchesAreWholeCyclesOrTheWholeTrace) {
  struct Case {
    std::vector<float> trace;
    int first, last;
  };
  for (const auto& [trace, first, last] : std::vector<Case>{
           {{-1, 1, -1, 1, -1, 1}, 1, 4},  // up at 1, the last up behind 4
           {{0, 1, -1, 1, -1, -1}, 0, 3},  // a zero at the start ends the search; the last change down
           {{1, 2, -1, 1, 0}, 2, 3},       // the last change down stands before the zero
           {{-1, 1, 1, 0}, 1, 3},          // no second change up: the zero at the end stands for it
           {{1, 1, 1, 1}, 0, 3},
           {{1, -1, -1, -1}, 0, 3},  // one change only
           {{std::nanf(""), std::nanf("")}, 0, 1},
           {{5}, 0, 0},
       }) {
    const auto n = static_cast<int>(trace.size());
    int from = -9;
    int to = -9;
    GetCrossings(trace.data(), n, &from, &to);
    EXPECT_EQ(std::pair(from, to), std::pair(first, last)) << testing::PrintToString(trace);
  }
  const std::vector<float> wave = {9, -3, 1, -1, 3, -9};  // bias of -3 to 3, not of all
  EXPECT_EQ(GetFirstCrossing(wave.data(), 6, CROSS_UP), 2);
  EXPECT_EQ(GetLastCrossing(wave.data(), 6, CROSS_UP), 3);
  EXPECT_EQ(GetDCBias(wave.data(), 6), 0.0F);
}

}  // namespace
