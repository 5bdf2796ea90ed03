// Harmonic distortion and crossfeed: dead and strange traces, what is kept of the last one. Their pages are those of
// docs/instrument-tests.md, their numbers those of tests/scripts/instruments.py.
#include "quarlo/instruments/harmonics.h"
#include "quarlo/instruments/xfeedtst.h"
#include "tests/support/instrument_fixture.h"

namespace {

class DistortionTest : public InstrumentTest {
 protected:
  /// A sine of 1 V with harmonics of -60 and -80 dB, together 0.1005 %, on 1, 2 and 5; 3 is dead, 4 holds no wave.
  void SetUp() override {
    record(R"(
traces 5
samples 4096
interval 0.002
record 901
1,2,5 sine 1 31.25 phase 20 harmonics -60 -80
3 dead
4 dc 1)");
    openReport("THD Test", DLG_DISTORTION_TEST);
    set(IT_NUM_HARMONICS, "2");
  }
  /// The lines of a page from its table on.
  Lines table() {
    const Lines page = run();
    const auto limit = std::ranges::find(page, "   Maximum allowable Total Harmonic Distortion:  1.000%");
    return limit == page.end() ? Lines{} : Lines(limit + 2, page.end());
  }
  static Lines end(const std::string& count, const std::string& average) {
    return {" ",
            "Field file number:  901",
            "Total tested traces:  " + count,
            "Average Total Harmonic Distortion:  " + average + "%",
            " ",
            " ",
            "--  End of Harmonic Distortion Test"};
  }
  const std::string tableHead = "Chan     Freq          DC        Ampl   HD  1%   HD  2%    THD % ";
  const std::string noWave = "   ** Warning: trace 4 holds no sine wave. It is not measured.";
};

TEST_F(DistortionTest, ByCorrelationTracesWithoutAWaveAreLeftOut) {
  Lines page = table();
  ASSERT_EQ(page.size(), 5 + end("", "").size());
  EXPECT_EQ(page[0], tableHead);
  for (const std::size_t row : {1, 2, 4}) {
    double frequency = 0;
    double thd = 0;
    ASSERT_EQ(std::sscanf(page[row].c_str(), "%*d %lf %*f %*f %*f %*f %lf", &frequency, &thd), 2);
    EXPECT_NEAR(frequency, 31.25, 0.04);
    EXPECT_NEAR(thd, 0.1005, 0.15);
  }
  EXPECT_EQ(page[3], noWave);
  EXPECT_EQ(page[7], "Total tested traces:  3");

  // Without harmonics wished for there is neither head nor frequency; with many a line has what there are.
  set(IT_FIRST_TRACE, "4");
  set(IT_NUM_HARMONICS, "-1");
  page = table();
  ASSERT_EQ(page.size(), 9U);
  EXPECT_EQ(page[0], noWave);
  EXPECT_EQ(page[1].size(), 9U);
  set(IT_FIRST_TRACE, "5");
  set(IT_NUM_HARMONICS, "2000000000");
  page = table();
  EXPECT_EQ(std::ranges::count(page[1], '.'), 3 + 7 + 1);
  set(IT_FIRST_TRACE, "4");
  set(IT_LAST_TRACE, "4");
  EXPECT_EQ(table(), (Lines{noWave} + end("0", "-nan")));
}

TEST_F(DistortionTest, ByTransformTheBufferIsClearedOrTold) {
  toolkit.press(test, IT_USE_FFT);
  set(IT_LAST_TRACE, "3");
  Lines page = table();
  EXPECT_EQ(page[0], tableHead);
  EXPECT_TRUE(page[1].starts_with("   1   31.250 ") && page[1].ends_with("    0.100    0.010    0.100 ")) << page[1];
  EXPECT_FALSE(page[2].ends_with("    0.100    0.010    0.100 ")) << page[2];
  const std::string remark =
      "Traces after the first are measured with the rest of the transform before. Tick \"Clear the buffer for every "
      "trace\" for independent measures.";
  EXPECT_TRUE(consoleHas("  ** " + remark));
  EXPECT_TRUE(status().ends_with(remark)) << status();
  toolkit.press(test, IT_CLEAR_BUFFER);
  page = table();
  EXPECT_EQ(page[1].substr(5), page[2].substr(5));
  EXPECT_EQ(Lines(page.begin() + 3, page.end()), end("2", "0.100"));
  EXPECT_EQ(status(), "2 traces tested, 0 failed");
  set(IT_FIRST_TRACE, "3");
  EXPECT_EQ(table(), end("0", "-nan"));
}

TEST(Harmonics, CrossingsAreGuardedAndNotSymmetric) {
  const auto wave = [](std::vector<float> trace) {
    int first = 0;
    int last = 0;
    return FindFirstLastCrossings(trace.data(), static_cast<int>(trace.size()), &first, &last)
               ? std::to_string(first) + "-" + std::to_string(last)
               : "none";
  };
  EXPECT_EQ(wave({}) + wave({1}) + wave({1, 1, 1}) + wave({1, -1, -1}), "nonenonenonenone");
  EXPECT_EQ(wave({-1, 0, 1, -1}), "none");
  const std::vector<float> twice = {-1, 0, 1, -1, 0, 1};
  EXPECT_EQ(wave(twice), "1-4");
  float dc = 1;
  EXPECT_EQ(GetFundamental(twice.data(), 6, 0.5F, &dc), 1.0);
  EXPECT_EQ(dc, 0);
  const std::vector<float> flat = {-1, 0, 0, 1};
  EXPECT_EQ(GetFundamental(flat.data(), 4, 0.5F, &dc), 0);
}

class CrossfeedTest : public InstrumentTest {
 protected:
  /// Levels of 1 V on odd traces and of 1/1024 V (60.206 dB below) on even ones; 3 is dead, 6 silent, 8 too loud.
  void SetUp() override {
    record(R"(
traces 9
samples 10
interval 0.002
record 901
1-5/2,9 square 1 250
7 square 0.5 250
2,4 square 0.0009765625 250
8 square 0.0078125 250
3 dead)");
    openReport("Crossfeed Test", DLG_CROSSFEED_TEST);
    set(IT_LIMIT, "60.2");
  }
};

TEST_F(CrossfeedTest, QuietTracesAreComparedWithTheAverageSignal) {
  const Lines page = run();
  for (const std::string row : {"       7              500.0000                4.8608",
                                "       2                0.9766               59.0462        ******* FAILED *******",
                                "       6                0.0000                   inf", "Total signal traces:  4",
                                "Average RMS Signal level:  875.00000", "Average dB isolation:  inf dB"})
    EXPECT_EQ(std::ranges::count(page, row), 1) << row;
  EXPECT_EQ(status(), "4 traces tested, 3 failed: 2, 4, 8");
  const std::string values = savedValues();
  EXPECT_TRUE(values.find("\r\nCrossfeed Test,in.kyr,1,901,7,7,500,4.860761,,\r\n") != std::string::npos) << values;
  EXPECT_TRUE(values.find(",8,8,7.8125,40.98436,60.2,failed\r\n") != std::string::npos) << values;
}

TEST_F(CrossfeedTest, OffsetsOfAdjacentSignalsAddUp) {
  const auto signals = [](int last) {
    std::string found;
    for (int trace = 0; trace <= last; ++trace) found += IsSignalTrace(trace) ? std::to_string(trace) + " " : "";
    return found;
  };
  set(IT_NUM_SIGNALS, "3");
  set(IT_SIGNAL_INCR, "-10");
  EXPECT_EQ(signals(25), "1 2 4 11 12 14 21 22 24 ");
  set(IT_NUM_SIGNALS, "2000000000");
  set(IT_FIRST_SIGNAL, "3");
  EXPECT_EQ(signals(10), "3 4 6 9 ");
  set(IT_SIGNAL_INCR, "0");
  EXPECT_EQ(signals(25), "");
  const Lines page = run();
  EXPECT_EQ(std::ranges::count(page, "Average RMS Signal level:  -nan"), 1);
  EXPECT_EQ(status(), "8 traces tested, 0 failed");
}

}  // namespace
