#include "quarlo/instruments/thdtest.h"

#include <algorithm>
#include <utility>

#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "libkyr/vectors.h"
#include "quarlo/instruments/harmonics.h"
#include "quarlo/instruments/testdialog.h"
#include "quarlo/instruments/testframe.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float maxThd = 1.0F;  // percent
  int numHarmonics = 5;
  bool removeDC = true;  // tells in the report what is wished; both methods have their own ways with DC
  bool useFFT = false;
  bool clearBuffer = false;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile),
    wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace),
    RealSetting{IT_LIMIT, &settings.maxThd, 4},
    NumberField{.control = IT_NUM_HARMONICS, .value = &settings.numHarmonics},
    FlagSetting{IT_REMOVE_DC, &settings.removeDC},
    FlagSetting{IT_USE_FFT, &settings.useFFT},
    FlagSetting{IT_CLEAR_BUFFER, &settings.clearBuffer},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runTHDTest};

constexpr const char* kMeasures[] = {"Frequency (Hz)", "DC (sum)", "Amplitude (unscaled)", "THD (%)"};
constexpr TestWords kWords = {.name = "THD Test",
                              .title = "H A R M O N I C   D I S T O R T I O N   T E S T",
                              .end = "Harmonic Distortion Test",
                              .measures = kMeasures,
                              .limit = "Limit (%)",
                              .further = [](int number) { return formatText("HD %d (%%)", number); }};
constexpr const char* kMixed =
    "  ** Traces after the first are measured with the rest of the transform before. Tick \"Clear the buffer for every "
    "trace\" for independent measures.";

/// What the traces are measured in. The transform is twice as long as a trace at least; where the buffer is not
/// cleared, what one transform leaves behind the next trace's samples takes part in that.
class Bench {
 public:
  explicit Bench(TestRun* run)
      : samples_(run->samples()),
        length_(power_of_two(std::min(samples_, kMostSamples + 1) * 2)),
        interval_(run->input().sampleInterval()),
        trace_(bufferOf(run)),
        sines_(run->buffer(samples_, "sines")),
        cosines_(run->buffer(samples_, "cosines")) {}

  float* trace() const { return trace_.get(); }
  void clear() const { std::fill_n(trace_.get(), length_ + kSpare, 0.0F); }

  /// @return nothing for a trace without a wave
  std::optional<Distortion> measure(double* dc) const {
    return !(interval_ > 0) ? std::nullopt : settings.useFFT ? byTransform(dc) : byCorrelation(dc);
  }
  /// No trace has more harmonics.
  int mostHarmonics() const { return length_ / 2; }

 private:
  static constexpr int kMostSamples = 1 << 29;
  static constexpr int kSpare = 2;

  std::unique_ptr<float[]> bufferOf(TestRun* run) const {
    if (length_ > 0) return run->buffer(length_ + kSpare, "trace");
    NullCheck(nullptr, "trace");
    throw TestEnded{"There is not enough memory for this test"};
  }

  std::optional<Distortion> byTransform(double* dc) const {
    const auto found = transform(trace_.get(), samples_, length_);
    if (!found) throw TestEnded{"There is not enough memory for this test"};
    *dc = *found->pairs;
    return distortionOf(found->fundamental / (length_ * double{interval_}), interval_, settings.numHarmonics,
                        [&](int number) { return found->harmonic(number); });
  }

  std::optional<Distortion> byCorrelation(double* dc) const {
    float mean = 0;
    const double fundamental = GetFundamental(trace_.get(), samples_, interval_, &mean);
    if (fundamental == 0) return std::nullopt;
    return distortionOf(fundamental, interval_, settings.numHarmonics, [&](int number) {
      double sum = 0;
      const double amplitude = AmplitudeAt(trace_.get(), samples_, interval_, fundamental, number * fundamental,
                                           sines_.get(), cosines_.get(), &sum);
      if (number == 1) *dc = sum;  // later ones find it taken off
      return amplitude;
    });
  }

  int samples_;
  int length_;
  float interval_;
  std::unique_ptr<float[]> trace_;
  std::unique_ptr<float[]> sines_;
  std::unique_ptr<float[]> cosines_;
};

void writeParameters(TestRun* run, const FieldRecord& record) {
  run->dcLine(settings.removeDC, "");
  run->line("Number of harmonics to output %d", settings.numHarmonics);
  run->line("%s method will be used to calculate harmonic amplitudes for test",
            settings.useFFT ? "FFT" : "Crosscorrelation");
  run->blank();
  run->recordLines(record, settings.firstTrace, settings.lastTrace);
  run->line("   Maximum allowable Total Harmonic Distortion:  %.3f%%", settings.maxThd);
  run->blank();
}

void writeTableHead(TestRun* run, int most) {
  std::string text = "Chan     Freq          DC        Ampl ";
  for (int number = 1; number <= std::min(settings.numHarmonics, most); ++number)
    text += formatText("  HD %2d%% ", number);
  run->line("%s%8s ", text.c_str(), "THD %");
}

/// The line of a trace: frequency, DC and amplitude, so many harmonics as are wished, all of them together.
std::string lineOf(const TestedTrace& trace, const Distortion& found, double dc) {
  std::string text;
  if (settings.numHarmonics >= 0)
    text = formatText("%4d %8.3f %11.3e %11.3e ", trace.number, found.fundamental, dc, found.fundAmp);
  for (const double harmonic : found.harmonics) text += formatText("%8.3f ", harmonic);
  return text + formatText("%8.3f ", found.thd);
}

void testTrace(TestRun* run, const Bench& bench, const TestedTrace& trace, Average* average) {
  double dc = 0;
  const auto found = bench.measure(&dc);
  if (!found) return run->line("   ** Warning: trace %d holds no sine wave. It is not measured.", trace.number);
  if (trace.number == settings.firstTrace && settings.numHarmonics >= 0) writeTableHead(run, bench.mostHarmonics());
  average->add(found->thd);
  std::vector<float> measures{static_cast<float>(found->fundamental), static_cast<float>(dc),
                              static_cast<float>(found->fundAmp), found->thd};
  for (const double harmonic : found->harmonics) measures.push_back(static_cast<float>(harmonic));
  run->traceLine(trace, lineOf(trace, *found, dc), std::move(measures),
                 found->thd > settings.maxThd ? " **** FAILED ****" : nullptr);
}

void testTraces(TestRun* run, const FieldRecord& record, Average* average) {
  const Bench bench(run);
  int live = 0;
  for (const int number : run->traces(settings.firstTrace, settings.lastTrace)) {
    if (settings.clearBuffer) bench.clear();
    const auto trace = run->read(record, number, bench.trace());
    if (!trace) continue;
    ++live;
    testTrace(run, bench, *trace, average);
  }
  if (settings.useFFT && !settings.clearBuffer && live > 1) run->remark(kMixed);
}

}  // namespace

int runTHDTest() {
  return runTest(
      kWords, settings.maxThd,
      [](TestRun& run) {
        const FieldRecord record = run.begin(settings.fieldFile, &settings.lastTrace);
        writeParameters(&run, record);
        Average average;
        testTraces(&run, record, &average);
        run.countLines(record, average.count);
        run.line("Average Total Harmonic Distortion:  %.3f%%", average.value());
        run.end();
      });
}

long HarmDistTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
