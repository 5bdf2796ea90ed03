#include "quarlo/instruments/gnacctst.h"

#include <cmath>
#include <vector>

#include "libkyr/text.h"
#include "libkyr/vectors.h"
#include "quarlo/instruments/crossings.h"
#include "quarlo/instruments/testdialog.h"
#include "quarlo/instruments/testframe.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float gainSignal = 33.0F;  // millivolts
  float maxVariation = 1.0F;
  bool removeDC = true;
  bool compToAverage = false;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile),
    wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace),
    RealSetting{IT_SIGNAL, &settings.gainSignal, 4},
    RealSetting{IT_LIMIT, &settings.maxVariation, 4},
    FlagSetting{IT_REMOVE_DC, &settings.removeDC},
    FlagSetting{IT_COMPARE_TO_AVERAGE, &settings.compToAverage},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runGainAccuracyTest};

constexpr const char* kMeasures[] = {"RMS (mV)", "Min (mV)", "Max (mV)", "RMS variation (%)"};
constexpr TestWords kWords = {.name = "Gain Accuracy Test",
                              .title = "G A I N   A C C U R A C Y   T E S T",
                              .end = "Gain Accuracy Test",
                              .measures = kMeasures,
                              .limit = "Limit (%)"};

/// Of a trace, in millivolts.
struct Level {
  TestedTrace trace;
  float rms;
  float least;
  float greatest;
};

struct Averages {
  double rms = 0;
  double least = 0;
  double greatest = 0;
};

void writeParameters(TestRun* run, const FieldRecord& record) {
  run->dcLine(settings.removeDC);
  run->line(settings.compToAverage ? "The average input signal level from the traces will be used."
                                   : "The input signal level from the menu will be used.");
  run->blank();
  run->recordLines(record, settings.firstTrace, settings.lastTrace);
  if (!settings.compToAverage) run->line("   Test signal input level:  %.4f", settings.gainSignal);
  run->line("   Maximum allowable percent variation:  %.6f", settings.maxVariation);
  run->blank();
}

std::vector<Level> measure(TestRun* run, const FieldRecord& record) {
  const auto samples = run->buffer(run->samples(), "trace");
  std::vector<Level> levels;
  run->forLive(record, settings.firstTrace, settings.lastTrace, samples.get(), [&](const TestedTrace& trace) {
    const auto [cycles, count] = wholeCycles(samples.get(), run->samples(), settings.removeDC);
    levels.push_back(
        {trace, rmsqv(cycles, 1, count) * 1000.0F, minv(cycles, 1, count) * 1000.0F, maxv(cycles, 1, count) * 1000.0F});
  });
  return levels;
}

Averages averagesOf(const std::vector<Level>& levels) {
  Averages sums;
  for (const Level& level : levels) {
    sums.rms += level.rms;
    sums.least += level.least;
    sums.greatest += level.greatest;
  }
  const auto count = static_cast<int>(levels.size());
  return {sums.rms / count, sums.least / count, sums.greatest / count};
}

/// Each trace's variation is added to the average level, which is the reference of the traces behind it if so chosen.
void writeTable(TestRun* run, const std::vector<Level>& levels, double* averageRms) {
  run->line("Trace No.   RMS Signal Level     Min Signal Level     Max Signal Level     RMS %% Variation");
  run->line("---------   ----------------     ----------------     ----------------     ---------------");
  for (const auto& [trace, rms, least, greatest] : levels) {
    if (!(rms > 0)) continue;
    const double reference = settings.compToAverage ? *averageRms : settings.gainSignal;
    const double variation = std::fabs((rms - reference) * 100.0 / reference);
    const auto measured = static_cast<float>(variation);
    run->traceLine(trace,
                   formatText("  %6d        %12.3f        %12.3f         %12.3f      %9.3f", trace.number, rms, least,
                              greatest, variation),
                   {rms, least, greatest, measured}, measured > settings.maxVariation ? kFailedFour : nullptr);
    *averageRms += variation;
  }
}

}  // namespace

int runGainAccuracyTest() {
  return runTest(
      kWords, settings.maxVariation,
      [](TestRun& run) {
        const FieldRecord record = run.begin(settings.fieldFile, &settings.lastTrace);
        writeParameters(&run, record);
        const std::vector<Level> levels = measure(&run, record);
        Averages averages = averagesOf(levels);
        writeTable(&run, levels, &averages.rms);
        run.countLines(record, static_cast<int>(levels.size()));
        run.line("Average RMS Signal Level:  %.4f", averages.rms);
        run.line("Average Minimum Signal Level:  %.4f", averages.least);
        run.line("Average Maximum Signal Level:  %.4f", averages.greatest);
        run.line("Average RMS Signal Level Percent Variation:  %.4f", 0.0);  // nothing is summed for it
        run.end();
      });
}

long GainAccuTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
