#include "quarlo/instruments/dcofstst.h"

#include "libkyr/vectors.h"
#include "quarlo/instruments/leveltest.h"
#include "quarlo/instruments/testdialog.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  float maxDC = 2.0F;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile),
    wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace),
    RealSetting{IT_LIMIT, &settings.maxDC, 4},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runDCOffsetTest};

constexpr const char* kMeasures[] = {"DC bias (uV)"};
constexpr OneLevelTest kTest = {
    .words = {.name = "DC Offset Test",
              .title = "D C   B I A S   T E S T",
              .end = "DC Bias Test",
              .measures = kMeasures,
              .limit = "Limit (uV)"},
    .aboveLimit = nullptr,
    .limitLine = "   Maximum allowable DC offset:  %.3f%%",  // a percent sign for microvolts: it is read like that
    .tableHead = {"Trace number   DC bias (microvolts) ", "------------   -------------------- "},
    .averageLine = "Average DC value:  %.3f microvolts"};

}  // namespace

int runDCOffsetTest() {
  return runOneLevelTest(
      kTest, {settings.fieldFile, settings.firstTrace, &settings.lastTrace, nullptr, settings.maxDC},
      [](const float* samples, int count) { return meanv(samples, 1, count) * 1e6F; });
}

long DCOffsetTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
