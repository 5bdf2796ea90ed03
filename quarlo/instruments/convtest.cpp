#include "quarlo/instruments/convtest.h"

#include "libkyr/text.h"
#include "libkyr/vectors.h"
#include "quarlo/instruments/testdialog.h"
#include "quarlo/instruments/testframe.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "resources/ids.h"

namespace {

enum VOLTAGE_TYPE : int { DOUBLING = 1, HALVING = 2 };
enum CHANNEL_SET : int { ALL_CHANNELS = 1, EVEN_CHANNELS = 2, ODD_CHANNELS = 3 };

struct Settings {
  float startVoltage = 8.0F;
  int voltageType = HALVING;
  int channelSet = ALL_CHANNELS;
};
Settings settings;

constexpr TestField kFields[] = {
    RealSetting{IT_START_VOLTAGE, &settings.startVoltage, 3},
    RadioSetting{IT_DOUBLING, IT_HALVING, &settings.voltageType},
    RadioSetting{IT_ALL_CHANNELS, IT_ODD_CHANNELS, &settings.channelSet},
};
constexpr TestDialog kDialog = {kFields, [] { settings = {}; }, runADConverterTest};

constexpr const char* kMeasures[] = {"Reference (V)", "Max. deviation (%)"};
constexpr TestWords kWords = {.name = "A/D Converter Test",
                              .title = "A / D   A C C U R A C Y   T E S T",
                              .end = "A/D Accuracy Test",
                              .measures = kMeasures};

void writeHead(TestRun* run) {
  run->head();
  run->blank();
  run->line("Constant voltages are applied to each input channel. The voltages");
  run->line("on each input record are the same for all channels. Voltages on odd");
  run->line("numbered records are the negatives of those on the even numbered records,");
  run->line("and pairs of records have either half or double the amplitude of the");
  run->line("previous pair of records. Accuracy is measured as the maximum percent ");
  run->line("deviation from the reference input voltage, on each channel.");
  run->blank();
}

void testRecord(TestRun* run, int number, float voltage, int channelSet, float* trace) {
  TraceInfo header;
  run->input().header(number, 1, &header);
  const FieldRecord record = {number, wholeProperty(trFieldFile, header)};
  run->blank();
  run->line("--  A/D Accuracy: Record # %d , Field File # %d , Ref. Voltage %f", number, record.fieldFile, voltage);
  run->blank();
  const int step = channelSet == ALL_CHANNELS ? 1 : 2;
  for (int channel = channelSet == EVEN_CHANNELS ? 2 : 1; channel <= run->input().traces(); channel += step) {
    const TestedTrace tested = run->readAny(record, channel, trace);
    const float thisErr = deviationFrom(voltage, trace, run->samples());
    run->traceLine(tested, formatText("Channel %4d    Max. Deviation %.5f %%", channel, thisErr), {voltage, thisErr});
  }
}

/// The reference behind a record's.
float nextVoltage(float voltage, int record, int voltageType) {
  if (record % 2 != 0) return -voltage;
  return voltageType == HALVING ? voltage / -2.0F : voltage * -2.0F;
}

void testRecords(TestRun* run, JobFrame* frame, int* recIndex, int* percentOfJob) {
  const Settings chosen = settings;  // the dialog is alive meanwhile
  const auto trace = run->buffer(run->samples(), "trace");
  const int numRec = run->input().records();
  for (float voltage = chosen.startVoltage; frame->goOn(); ++*recIndex) {
    if (*recIndex >= numRec) return;  // the last record is never tested
    testRecord(run, *recIndex, voltage, chosen.channelSet, trace.get());
    voltage = nextVoltage(voltage, *recIndex, chosen.voltageType);
    *percentOfJob = static_cast<int>((*recIndex + 1.0) / numRec * 100.0);
  }
  run->remark("  *** A/D Converter Test aborted by user.");
}

}  // namespace

float deviationFrom(float voltage, float* samples, int count) {
  vsadd(samples, 1, -voltage, samples, 1, count);
  return maxmgv(samples, 1, count) / voltage * 100.0F;
}

int runADConverterTest() {
  return runTest(
      kWords, 0,
      [](TestRun& run) {
        int recIndex = 1;
        int percentOfJob = 0;
        JobFrame frame(JOB_REPORT, 1, &recIndex, &percentOfJob, &recIndex, 50);
        if (!frame.isOpen()) throw TestEnded{"The progress dialog cannot be opened"};
        writeHead(&run);
        testRecords(&run, &frame, &recIndex, &percentOfJob);
        frame.close();
        run.blank();
        run.end(0);
      });
}

long ConvTest_eh(WINDOW xdWindow, EVENT* xdEvent) { return testEvents(xdWindow, *xdEvent, kDialog); }
