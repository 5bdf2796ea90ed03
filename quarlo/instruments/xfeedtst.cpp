#include "quarlo/instruments/xfeedtst.h"

#include <cmath>
#include <vector>

#include "libkyr/text.h"
#include "quarlo/instruments/crossings.h"
#include "quarlo/instruments/testdialog.h"
#include "quarlo/instruments/testframe.h"
#include "resources/ids.h"

namespace {

struct Settings {
  int fieldFile = 901;
  int firstTrace = 1;
  int lastTrace = 50;
  int firstSignal = 1;
  int numSignals = 1;
  int signalIncr = 2;
  float dbIsolation = 80.0F;
  bool removeDC = true;
};
Settings settings;

constexpr TestField kFields[] = {
    wholeSetting(IT_FIELD_FILE, &settings.fieldFile),   wholeSetting(IT_FIRST_TRACE, &settings.firstTrace),
    wholeSetting(IT_LAST_TRACE, &settings.lastTrace),   wholeSetting(IT_FIRST_SIGNAL, &settings.firstSignal),
    wholeSetting(IT_NUM_SIGNALS, &settings.numSignals), wholeSetting(IT_SIGNAL_INCR, &settings.signalIncr),
    RealSetting{IT_LIMIT, &settings.dbIsolation, 3},    FlagSetting{IT_REMOVE_DC, &settings.removeDC},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runXFeedTest};

constexpr const char* kMeasures[] = {"RMS level (mV)", "Below average signal (dB)"};
constexpr TestWords kWords = {.name = "Crossfeed Test",
                              .title = "C R O S S F E E D   I S O L A T I O N   T E S T",
                              .end = "Crossfeed Isolation Test",
                              .measures = kMeasures,
                              .limit = "Limit (dB)"};
constexpr const char* kDashes = "------------  ----------------------  --------------------------";
constexpr const char* kFailed = "        ******* FAILED *******";

struct Level {
  TestedTrace trace;
  float millivolts;  ///< root mean square over whole cycles
  bool isSignal;
};

void writeParameters(TestRun* run, const FieldRecord& record) {
  run->dcLine(settings.removeDC);
  run->blank();
  run->recordLines(record, settings.firstTrace, settings.lastTrace);
  run->line("   First signal trace in file:   %d", settings.firstSignal);
  run->line("   Number of adjacent signal traces in file:  %d", settings.numSignals);
  run->line("   Trace increment between signal driven channels:  %d", settings.signalIncr);
  run->line("   Minimum allowable crossfeed isolation in DB:  %.6f", settings.dbIsolation);
  run->blank();
}

std::vector<Level> measure(TestRun* run, const FieldRecord& record, Average* signal) {
  const auto samples = run->buffer(run->samples(), "trace");
  std::vector<Level> levels;
  run->forLive(record, settings.firstTrace, settings.lastTrace, samples.get(), [&](const TestedTrace& trace) {
    const float level = cycleLevel(samples.get(), run->samples(), settings.removeDC) * 1000.0F;
    levels.push_back({trace, level, IsSignalTrace(trace.number)});
    if (levels.back().isSignal) signal->add(level);
  });
  return levels;
}

std::string lineOf(const Level& level, double decibels) {
  return formatText("  %6d          %12.4f          %12.4f", level.trace.number, level.millivolts, decibels);
}

/// The traces with the signal or those without.
/// @param use is told how many dB a trace lies below the signal's average
template <typename Use>
void forTable(const std::vector<Level>& levels, bool ofSignal, double averageSignal, Use use) {
  for (const Level& level : levels)
    if (level.isSignal == ofSignal && level.millivolts >= 0)
      use(level, 20.0 * std::log10(averageSignal / level.millivolts));
}

void writeSignalTable(TestRun* run, const std::vector<Level>& levels, double averageSignal) {
  run->line("   SIGNAL DRIVEN CHANNELS");
  run->line("Trace number    RMS Signal Level-mV    DB from average signal");
  run->line("%s", kDashes);
  forTable(levels, true, averageSignal, [&](const Level& level, double decibels) {
    run->referenceLine(level.trace, lineOf(level, decibels), {level.millivolts, static_cast<float>(decibels)});
  });
}

Average writeTestedTable(TestRun* run, const std::vector<Level>& levels, double averageSignal) {
  Average isolation;
  run->blank();
  run->line("   TESTED CHANNELS");
  run->line("Trace number    RMS Signal Level-mV   Crossfeed Isolation -- DB");
  run->line("%s", kDashes);
  forTable(levels, false, averageSignal, [&](const Level& level, double decibels) {
    const auto measured = static_cast<float>(decibels);
    isolation.add(decibels);
    run->traceLine(level.trace, lineOf(level, decibels), {level.millivolts, measured},
                   measured < settings.dbIsolation ? kFailed : nullptr);
  });
  return isolation;
}

}  // namespace

/// The offsets of a group add up: the second trace of one stands 1 behind the first, the third 3, the fourth 6.
bool IsSignalTrace(int traceIndex) {
  auto x = static_cast<float>(traceIndex - settings.firstSignal);
  for (int i = 0; i < settings.numSignals; ++i) {
    x -= static_cast<float>(i);
    if (x < 0) return false;  // and all further ones are
    if (std::fmod(x, static_cast<float>(settings.signalIncr)) < 0.001) return true;
  }
  return false;
}

int runXFeedTest() {
  return runTest(
      kWords, settings.dbIsolation,
      [](TestRun& run) {
        const FieldRecord record = run.begin(settings.fieldFile, &settings.lastTrace);
        writeParameters(&run, record);
        Average signal;
        const std::vector<Level> levels = measure(&run, record, &signal);
        writeSignalTable(&run, levels, signal.value());
        const Average isolation = writeTestedTable(&run, levels, signal.value());
        run.blank();
        run.line("Field file number:  %d", record.fieldFile);
        run.line("Total signal traces:  %d", signal.count);
        run.line("Average RMS Signal level:  %.5f", signal.value());
        run.line("Total tested traces:  %d", isolation.count);
        run.line("Average dB isolation:  %.4f dB", isolation.value());
        run.end();
      });
}

long XFeedTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
