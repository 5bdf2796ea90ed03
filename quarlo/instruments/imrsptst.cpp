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

/// Takes the average of the live traces, and leaves their numbers.
void average(TestRun* run, const FieldRecord& record, float* trace, float* averageTrace, std::vector<int>* numbers) {
  const int n = run->samples();
  std::vector<int> live;
  run->forLive(record, *numbers, trace, [&](const TestedTrace& one) {
    removeMean(trace, n, settings.removeDC);
    vadd(averageTrace, 1, trace, 1, averageTrace, 1, n);
    live.push_back(one.number);
  });
  if (!live.empty()) vsmul(averageTrace, 1, 1.0F / static_cast<float>(live.size()), averageTrace, 1, n);
  *numbers = std::move(live);
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
  const auto prepare = [&](TestRun& run, const FieldRecord& record, float* trace, std::vector<int>* numbers) {
    averageTrace = run.buffer(run.samples(), "averageTrace");
    average(&run, record, trace, averageTrace.get(), numbers);
    rmsAverage = rmsqv(averageTrace.get(), 1, run.samples());
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
