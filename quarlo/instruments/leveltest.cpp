#include "quarlo/instruments/leveltest.h"

#include <cmath>

#include "libkyr/text.h"
#include "quarlo/instruments/crossings.h"

namespace {

Average writeTable(TestRun* run, const OneLevelTest& test, float limit, const FieldRecord& record,
                   const std::vector<int>& numbers, float* samples, const std::function<float(float*, int)>& measure) {
  Average average;
  for (const char* line : test.tableHead) run->line("%s", line);
  run->forLive(record, numbers, samples, [&](const TestedTrace& trace) {
    const float value = measure(samples, run->samples());
    average.add(value);
    run->traceLine(trace, formatText("  %6d          %12.6f", trace.number, value), {value},
                   std::fabs(value) > limit ? kFailedSix : nullptr);
  });
  return average;
}

void writeTwoRecordLines(TestRun* run, const TwoRecordTest& test, const TwoRecordSettings& settings,
                         const FieldRecord& signal, const FieldRecord& noise) {
  run->dcLine(settings.removeDC);
  run->blank();
  run->line("Testing Record # %d, SIGNAL Field File # %d", signal.number, signal.fieldFile);
  run->line("versus Record # %d, NOISE  Field File # %d", noise.number, noise.fieldFile);
  run->line("   First trace in files to test:  %d", settings.firstTrace);
  run->line("   Last trace in files to test:   %d", *settings.lastTrace);
  run->line(test.limitLine, settings.limit);
  run->blank();
}

std::vector<LevelPair> measurePairs(TestRun* run, const TwoRecordSettings& settings, const FieldRecord& signal,
                                    const FieldRecord& noise) {
  const auto trace = run->buffer(run->samples(), "trace");
  const auto noiseTrace = run->buffer(run->samples(), "noiseTrace");
  std::vector<LevelPair> levels;
  for (const int number : run->traces(settings.firstTrace, *settings.lastTrace)) {
    const auto live = run->read(signal, number, trace.get());
    if (!run->read(noise, number, noiseTrace.get()) || !live) continue;
    levels.push_back({*live, cycleLevel(trace.get(), run->samples(), settings.removeDC),
                      cycleLevel(noiseTrace.get(), run->samples(), settings.removeDC)});
  }
  return levels;
}

}  // namespace

int runOneLevelTest(const OneLevelTest& test, const OneLevelSettings& settings,
                    const std::function<float(float* samples, int count)>& measure, const Preparation& prepare) {
  return runTest(
      test.words, settings.limit,
      [&](TestRun& run) {
        const FieldRecord record = run.begin(settings.fieldFile, settings.lastTrace);
        if (settings.removeDC != nullptr) {
          run.dcLine(*settings.removeDC);
          run.blank();
        }
        run.recordLines(record, settings.firstTrace, *settings.lastTrace);
        if (test.aboveLimit != nullptr) run.line("%s", test.aboveLimit);
        run.line(test.limitLine, settings.limit);
        run.blank();
        const auto trace = run.buffer(run.samples(), "trace");
        std::vector<int> numbers = run.traces(settings.firstTrace, *settings.lastTrace);
        if (prepare) prepare(run, record, trace.get(), &numbers);
        Average average;
        if (!prepare || !numbers.empty())
          average = writeTable(&run, test, settings.limit, record, numbers, trace.get(), measure);
        run.countLines(record, average.count);
        run.line(test.averageLine, average.value());
        run.end();
      });
}

int runTwoRecordTest(const TwoRecordTest& test, const TwoRecordSettings& settings,
                     const std::function<void(TestRun& run, const std::vector<LevelPair>& levels)>& report) {
  return runTest(
      test.words, settings.limit,
      [&](TestRun& run) {
        run.head();
        const FieldRecord signal = run.find(settings.signalFile);
        const FieldRecord noise = run.find(settings.noiseFile);
        run.compareWith(noise);
        run.checkLastTrace(settings.lastTrace);
        writeTwoRecordLines(&run, test, settings, signal, noise);
        const std::vector<LevelPair> levels = measurePairs(&run, settings, signal, noise);
        for (const char* line : test.tableHead) run.line("%s", line);
        report(run, levels);
        run.end();
      });
}
