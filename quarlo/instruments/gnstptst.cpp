#include "quarlo/instruments/gnstptst.h"

#include <cmath>

#include "libkyr/text.h"
#include "quarlo/instruments/leveltest.h"
#include "quarlo/instruments/testdialog.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int signalFile = 901;
  int noiseFile = 902;  // the second record, whatever it holds
  int firstTrace = 1;
  int lastTrace = 50;
  float maxError = 1.0F;
  bool removeDC = true;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.signalFile),  wholeSetting(IT_SECOND_FILE, &settings.noiseFile),
    wholeSetting(IT_FIRST_TRACE, &settings.firstTrace), wholeSetting(IT_LAST_TRACE, &settings.lastTrace),
    RealSetting{IT_LIMIT, &settings.maxError, 4},       FlagSetting{IT_REMOVE_DC, &settings.removeDC},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runGainStepTest};

constexpr const char* kMeasures[] = {"Level 1 (mV)", "Level 2 (mV)", "Gain step error (%)"};
constexpr TwoRecordTest kTest = {
    .words = {.name = "Gain Step Test",
              .title = "G A I N   S T E P   T E S T",
              .end = "Gain Step Test",
              .measures = kMeasures,
              .limit = "Limit (%)"},
    .limitLine = "   Minimum allowable gain step error:  %.4f %%",  // it is the largest; it is read like that
    .tableHead = {"Trace No.  Signal Level file 1    Signal Level file 2   Gain Step error",
                  "---------  -------------------    -------------------   ---------------"}};

void writeReport(TestRun& run, const std::vector<LevelPair>& levels) {
  for (const auto& [trace, one, two] : levels) {
    if (!(one >= 0 && two >= 0)) continue;  // no number
    const auto error = static_cast<float>((double{one} - two) * 100.0 / two);
    const float first = one * 1000.0F;
    const float second = two * 1000.0F;
    run.traceLine(trace, formatText("  %6d     %14.4f         %14.4f       %10.4f", trace.number, first, second, error),
                  {first, second, error}, std::fabs(error) > settings.maxError ? kFailedFive : nullptr);
  }
  run.blank();
  run.line("First Field file number:  %d", settings.signalFile);
  run.line("Second Field file number: %d", settings.noiseFile);
  run.line("Total tested traces:  %zu", levels.size());
}

}  // namespace

int runGainStepTest() {
  return runTwoRecordTest(kTest,
                          {settings.signalFile, settings.noiseFile, settings.firstTrace, &settings.lastTrace,
                           settings.removeDC, settings.maxError},
                          writeReport);
}

long GainStepTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
