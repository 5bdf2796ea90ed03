#include "quarlo/instruments/dynratst.h"

#include <cmath>

#include "libkyr/text.h"
#include "quarlo/instruments/leveltest.h"
#include "quarlo/instruments/testdialog.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int signalFile = 902;
  int noiseFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float minRange = 85.0F;
  bool removeDC = true;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.signalFile),  wholeSetting(IT_SECOND_FILE, &settings.noiseFile),
    wholeSetting(IT_FIRST_TRACE, &settings.firstTrace), wholeSetting(IT_LAST_TRACE, &settings.lastTrace),
    RealSetting{IT_LIMIT, &settings.minRange, 3},       FlagSetting{IT_REMOVE_DC, &settings.removeDC},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runDynamicRangeTest};

constexpr const char* kMeasures[] = {"Signal RMS (V)", "Noise RMS (V)", "Signal/noise (dB)", "Signal/ave. noise (dB)"};
constexpr TwoRecordTest kTest = {
    .words = {.name = "Dynamic Range Test",
              .title = "D Y N A M I C   R A N G E   D E T E R M I N A T I O N   T E S T",
              .end = "Dynamic Range Determination Test",
              .measures = kMeasures,
              .limit = "Limit (dB)"},
    .limitLine = "   Minimum allowable signal to noise ratio:  %.4f dB",
    .tableHead = {"Trace No.  Signal Level RMS   Noise Level RMS   Signal/Noise (dB)   Signal/Ave. Noise (dB)",
                  "---------  ----------------   ---------------   -----------------   ----------------------"}};

double decibels(double level, double reference) { return 20.0 * std::log10(level / reference); }

struct Sums {
  double signal = 0;
  double noise = 0;
  double ratio = 0;         // signal to noise, dB
  double averageRatio = 0;  // signal to average noise, dB
};

void writeTable(TestRun* run, const std::vector<LevelPair>& levels, double averageNoise, Sums* sums) {
  for (const auto& [trace, signal, noise] : levels) {
    if (!(signal >= 0 && noise >= 0)) continue;  // no number
    const double ratio = decibels(signal, noise);
    const double averageRatio = decibels(signal, averageNoise);
    const auto measured = static_cast<float>(averageRatio);
    sums->ratio += ratio;
    sums->averageRatio += averageRatio;
    run->traceLine(trace,
                   formatText("  %6d       %12.4f      %12.4f  %12.4f          %12.4f", trace.number, signal, noise,
                              ratio, averageRatio),
                   {signal, noise, static_cast<float>(ratio), measured},
                   measured < settings.minRange ? kFailedFive : nullptr);
  }
}

void writeReport(TestRun& run, const std::vector<LevelPair>& levels) {
  Sums sums;
  for (const LevelPair& level : levels) {
    sums.signal += level.signal;
    sums.noise += level.noise;
  }
  const auto count = static_cast<int>(levels.size());
  writeTable(&run, levels, sums.noise / count, &sums);
  run.blank();
  run.line("Average  Signal/Noise (dB):       %.6f", sums.ratio / count);
  run.line("Average  Signal/Ave. Noise (dB):  %.6f", sums.averageRatio / count);
  run.blank();
  run.line("SIGNAL Field file number:  %d", settings.signalFile);
  run.line("NOISE Field file number:   %d", settings.noiseFile);
  run.line("Total tested traces:  %d", count);
  run.line("Average RMS Signal level:  %.4f microvolts", sums.signal / count * 1e6);
  run.line("Average RMS Noise level:   %.4f microvolts", sums.noise / count * 1e6);
}

}  // namespace

int runDynamicRangeTest() {
  return runTwoRecordTest(kTest,
                          {settings.signalFile, settings.noiseFile, settings.firstTrace, &settings.lastTrace,
                           settings.removeDC, settings.minRange},
                          writeReport);
}

long DynRangeTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
