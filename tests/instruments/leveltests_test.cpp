// The level tests on a recording whose levels are known on paper: all of them are binary fractions.
#include <cmath>
#include <sstream>

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
  void open(const std::string& row, int resource, const std::string& limit) {
    openReport(row, resource);
    set(IT_LIMIT, limit);
  }
  /// A page whose head is not looked at again, without the line that says that the last trace was cut back.
  static Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  const Lines cutBack = {"   ** Warning: traces per record for input data is 5.",
                         "      Last trace has been reset to 5.", " "};
  const Lines record901 = {"Testing Record # 2, Field File # 901", "   First trace in file to test:  1",
                           "   Last trace in file to test:   5"};
  const Lines records = {"   First trace in files to test:  1", "   Last trace in files to test:   5"};
  const Lines withoutDC = {"DC will be removed prior to test.", " "};
};

TEST_F(LevelTests, DCOffset) {
  open("DC Offset Test", DLG_DC_OFFSET_TEST, "1953");
  const Lines expected =
      head("D C   B I A S   T E S T") + cutBack + record901 + linesOf(R"(   Maximum allowable DC offset:  1953.000%
 
Trace number   DC bias (microvolts) 
------------   -------------------- 
       1              0.000000
       3           1953.125000      ******* FAILED *******
       4              0.000000
       5              0.000000
 
Field file number:  901
Total tested traces:  4
Average DC value:  488.281 microvolts
 
 
--  End of DC Bias Test)");
  EXPECT_EQ(run(), expected);
  EXPECT_EQ(status(), "4 traces tested, 1 failed: 3");
  EXPECT_EQ(
      savedValues(),
      "Test,File,Record,Field file,Trace,Channel,DC bias (uV),Limit (uV),Result\r\n"
      "DC Offset Test,in.kyr,2,901,1,101,0,1953,passed\r\nDC Offset Test,in.kyr,2,901,3,103,1953.125,1953,failed\r\n"
      "DC Offset Test,in.kyr,2,901,4,104,0,1953,passed\r\nDC Offset Test,in.kyr,2,901,5,105,0,1953,passed\r\n");
  EXPECT_EQ(toolkit.text(test, IT_LAST_TRACE), "50");  // the field stands, the setting is cut back
  set(IT_LIMIT, "1953.125");                           // a value equal to the limit passes
  set(IT_FIRST_TRACE, "-4");
  const Lines page = run();
  EXPECT_EQ(toolkit.text(test, IT_FIRST_TRACE), "4");
  EXPECT_EQ(std::ranges::count(page, cutBack.front()), 0);
  EXPECT_EQ(status(), "2 traces tested, 0 failed");
}

TEST_F(LevelTests, EquivalentInputNoise) {
  open("EIN Test", DLG_NOISE_TEST, "32000");
  const Lines expected = head("E Q U I V A L E N T   I N P U T   N O I S E   T E S T") + cutBack + withoutDC +
                         record901 + linesOf(R"(   Maximum allowable Noise level:  32000.000000
 
Trace number       Noise Level 
------------  ---------------------- 
       1          31250.000000
       3          32226.562500      ******* FAILED *******
       4          31250.000000
       5          30273.437500
 
Field file number:  901
Total tested traces:  4
Average Noise value:  31250.0000 dB
 
 
--  End of Equivalent Input Noise Test)");
  EXPECT_EQ(run(), expected);
  // Noise far below an offset is not lost, and rounding makes no root of a negative number.
  std::vector<float> samples(1000, 0.002F);
  EXPECT_LT(noiseLevel(samples.data(), 1000, true), 1e-4F);
  for (std::size_t k = 0; k < samples.size(); k += 2) samples[k] += 2e-7F;
  EXPECT_NEAR(noiseLevel(samples.data(), 1000, true), 0.1F, 0.001F);
  EXPECT_NEAR(noiseLevel(samples.data(), 1000, false), 2000.1F, 0.01F);
}

TEST_F(LevelTests, DynamicRange) {
  open("Dynamic Range Test", DLG_DYNAMIC_RANGE_TEST, "30.1");
  EXPECT_EQ(toolkit.text(test, IT_LIMIT), "30.100");
  const Lines expected =
      head("D Y N A M I C   R A N G E   D E T E R M I N A T I O N   T E S T") + cutBack + withoutDC +
      Lines{"Testing Record # 1, SIGNAL Field File # 902", "versus Record # 2, NOISE  Field File # 901"} + records +
      linesOf(R"(   Minimum allowable signal to noise ratio:  30.1000 dB
 
Trace No.  Signal Level RMS   Noise Level RMS   Signal/Noise (dB)   Signal/Ave. Noise (dB)
---------  ----------------   ---------------   -----------------   ----------------------
       1             1.0000            0.0312       30.1030               30.1030
       3             1.0000            0.0322       29.8357               30.1030
       5             0.5000            0.0303       24.3582               24.0824     ******* FAILED *******
 
Average  Signal/Noise (dB):       28.098962
Average  Signal/Ave. Noise (dB):  28.096133
 
SIGNAL Field file number:  902
NOISE Field file number:   901
Total tested traces:  3
Average RMS Signal level:  833333.3333 microvolts
Average RMS Noise level:   31250.0000 microvolts
 
 
--  End of Dynamic Range Determination Test)");
  EXPECT_EQ(run(), expected);
  EXPECT_TRUE(savedValues().find("Channel,Versus record,Versus field file,Signal RMS (V)") != std::string::npos);
  EXPECT_TRUE(savedValues().find("\r\nDynamic Range Test,in.kyr,1,902,5,105,2,901,0.5,0.030273438,") !=
              std::string::npos)
      << savedValues();
}

TEST_F(LevelTests, GainAccuracy) {
  open("Gain Accuracy Test", DLG_GAIN_ACCURACY_TEST, "3.125");
  set(IT_SIGNAL, "31.25");
  const Lines table = linesOf(R"( 
Trace No.   RMS Signal Level     Min Signal Level     Max Signal Level     RMS % Variation
---------   ----------------     ----------------     ----------------     ---------------
       1              31.250             -31.250               31.250          0.000
       3              32.227             -32.227               32.227          3.125
       4              31.250             -31.250               31.250          0.000
       5              30.273             -30.273               30.273          3.125
 
Field file number:  901
Total tested traces:  4
Average RMS Signal Level:  37.5000
Average Minimum Signal Level:  -31.2500
Average Maximum Signal Level:  31.2500
Average RMS Signal Level Percent Variation:  0.0000
 
 
--  End of Gain Accuracy Test)");
  EXPECT_EQ(
      run(),
      head("G A I N   A C C U R A C Y   T E S T") + cutBack +
          Lines({"DC will be removed prior to test.", "The input signal level from the menu will be used.", " "}) +
          record901 +
          Lines({"   Test signal input level:  31.2500", "   Maximum allowable percent variation:  3.125000"}) + table);
  EXPECT_EQ(status(), "4 traces tested, 0 failed");
  // Against the average each variation moves the reference of the traces behind it: 31.25, 31.25, 34.375, 43.466 mV.
  toolkit.press(test, IT_COMPARE_TO_AVERAGE);
  const Lines page = run();
  EXPECT_EQ(std::ranges::count(page, "The average input signal level from the traces will be used."), 1);
  EXPECT_EQ(status(), "4 traces tested, 2 failed: 4, 5");
  EXPECT_EQ(
      page[18],
      "       5              30.273             -30.273               30.273         30.351    ******* FAILED *******");
}

TEST_F(LevelTests, GainStep) {
  open("Gain Step Test", DLG_GAIN_STEP_TEST, "96.8");
  const Lines expected =
      head("G A I N   S T E P   T E S T") + cutBack + withoutDC +
      Lines{"Testing Record # 2, SIGNAL Field File # 901", "versus Record # 1, NOISE  Field File # 902"} + records +
      linesOf(R"(   Minimum allowable gain step error:  96.8000 %
 
Trace No.  Signal Level file 1    Signal Level file 2   Gain Step error
---------  -------------------    -------------------   ---------------
       1            31.2500              1000.0000         -96.8750     ******* FAILED *******
       3            32.2266              1000.0000         -96.7773
       5            30.2734               500.0000         -93.9453
 
First Field file number:  901
Second Field file number: 902
Total tested traces:  3
 
 
--  End of Gain Step Test)");
  EXPECT_EQ(run(), expected);
}

TEST_F(LevelTests, ImpulseResponse) {
  open("Impulse Resp. Test", DLG_IMPULSE_TEST, "3");
  const Lines expected =
      head("I M P U L S E   R E S P O N S E   T E S T") + cutBack + withoutDC + record901 +
      linesOf(
          "   Maximum allowable percent variation\n \t\t             compared to average:  3.000000\n"
          R"( 
Trace number  RMS difference percent 
------------  ---------------------- 
       1              0.000000
       3              3.125000      ******* FAILED *******
       4              0.000000
       5              3.125000      ******* FAILED *******
 
Field file number:  901
Total tested traces:  4
Average RMS percent:  1.5625
 
 
--  End of Impulse Response Test)");
  EXPECT_EQ(run(), expected);
  // No live trace: no table, and averages of nothing.
  set(IT_FIRST_TRACE, "2");
  set(IT_LAST_TRACE, "2");
  const Lines page = run();
  EXPECT_EQ(std::ranges::count(page, "Trace number  RMS difference percent "), 0);
  EXPECT_EQ(page[page.size() - 4], "Average RMS percent:  -nan");
}

TEST_F(LevelTests, AFieldFileThatIsNotThereEndsTheTest) {
  open("Gain Step Test", DLG_GAIN_STEP_TEST, "1");
  set(IT_SECOND_FILE, "77");
  EXPECT_EQ(run(),
            head("G A I N   S T E P   T E S T") + Lines{"   ***  Error: field file 77 not found in the input file."});
  EXPECT_EQ(status(), "Field file 77 not found");
  EXPECT_FALSE(toolkit.enabled(test, IT_SAVE));
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
