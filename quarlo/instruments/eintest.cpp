#include "quarlo/instruments/eintest.h"

#include <cmath>

#include "quarlo/instruments/leveltest.h"
#include "quarlo/instruments/testdialog.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float maxRms = 1.0F;
  bool removeDC = true;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile), wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace), RealSetting{IT_LIMIT, &settings.maxRms, 4},
    FlagSetting{IT_REMOVE_DC, &settings.removeDC},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runEquivInputNoiseTest};

constexpr const char* kMeasures[] = {"Noise (uV)"};
constexpr OneLevelTest kTest = {
    .words = {.name = "EIN Test",
              .title = "E Q U I V A L E N T   I N P U T   N O I S E   T E S T",
              .end = "Equivalent Input Noise Test",
              .measures = kMeasures,
              .limit = "Limit (uV)"},
    .aboveLimit = nullptr,
    .limitLine = "   Maximum allowable Noise level:  %.6f",
    .tableHead = {"Trace number       Noise Level ", "------------  ---------------------- "},
    .averageLine = "Average Noise value:  %.4f dB"};  // of microvolts; it is read like that

}  // namespace

/// In double precision up to the difference: beside an offset a thousand times as large, the noise would be lost.
float noiseLevel(const float* samples, int count, bool removeDC) {
  double sum = 0;
  double squares = 0;
  for (int k = 0; k < count; ++k) {
    const double sample = samples[k];
    sum += sample;
    squares += sample * sample;
  }
  const double mean = removeDC ? sum / count : 0;
  const double variance = squares / count - mean * mean;
  return static_cast<float>(variance < 0 ? 0 : std::sqrt(variance) * 1e6);
}

int runEquivInputNoiseTest() {
  const bool removeDC = settings.removeDC;
  return runOneLevelTest(kTest,
                         {settings.fieldFile, settings.firstTrace, &settings.lastTrace, &removeDC, settings.maxRms},
                         [removeDC](const float* samples, int count) { return noiseLevel(samples, count, removeDC); });
}

long EINTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
