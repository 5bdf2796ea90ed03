#include "quarlo/instruments/imrsptst.h"

#include <cmath>

#include "libkyr/vectors.h"
#include "quarlo/instruments/leveltest.h"
#include "quarlo/instruments/testdialog.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float maxVariation = 1.0F;
  bool removeDC = true;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile), wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace), RealSetting{IT_LIMIT, &settings.maxVariation, 4},
    FlagSetting{IT_REMOVE_DC, &settings.removeDC},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runImpulseResponseTest};

constexpr const char* kMeasures[] = {"RMS difference (%)"};
constexpr OneLevelTest kTest = {
    .words = {.name = "Impulse Resp. Test",
              .title = "I M P U L S E   R E S P O N S E   T E S T",
              .end = "Impulse Response Test",
              .measures = kMeasures,
              .limit = "Limit (%)"},
    .aboveLimit = "   Maximum allowable percent variation",
    .limitLine = " \t\t             compared to average:  %.6f",
    .tableHead = {"Trace number  RMS difference percent ", "------------  ---------------------- "},
    .averageLine = "Average RMS percent:  %.4f"};

void removeMean(float* samples, int count, bool removeDC) {
  if (removeDC) vsadd(samples, 1, -meanv(samples, 1, count), samples, 1, count);
}

/// The average of the live traces. @return how many they are
int average(TestRun* run, const FieldRecord& record, const Settings& chosen, float* trace, float* averageTrace) {
  const int n = run->samples();
  int count = 0;
  run->forLive(record, chosen.firstTrace, chosen.lastTrace, trace, [&](const TestedTrace&) {
    removeMean(trace, n, chosen.removeDC);
    vadd(averageTrace, 1, trace, 1, averageTrace, 1, n);
    ++count;
  });
  if (count > 0) vsmul(averageTrace, 1, 1.0F / static_cast<float>(count), averageTrace, 1, n);
  return count;
}

float differencePercent(const float* averageTrace, float rmsAverage, float* samples, int count) {
  vsub(averageTrace, 1, samples, 1, samples, 1, count);
  return std::fabs(rmsqv(samples, 1, count) * 100.0F / rmsAverage);
}

}  // namespace

int runImpulseResponseTest() {
  const bool removeDC = settings.removeDC;
  std::unique_ptr<float[]> averageTrace;
  float rmsAverage = 0;
  const auto prepare = [&](TestRun& run, const FieldRecord& record, float* trace) {
    averageTrace = run.buffer(run.samples(), "averageTrace");
    if (average(&run, record, settings, trace, averageTrace.get()) == 0) return false;
    rmsAverage = rmsqv(averageTrace.get(), 1, run.samples());
    run.input().forgetMissing();  // all of it is read again
    return true;
  };
  return runOneLevelTest(
      kTest, {settings.fieldFile, settings.firstTrace, &settings.lastTrace, &removeDC, settings.maxVariation},
      [&](float* samples, int count) {
        removeMean(samples, count, removeDC);
        return differencePercent(averageTrace.get(), rmsAverage, samples, count);
      },
      prepare);
}

long ImpRespTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
