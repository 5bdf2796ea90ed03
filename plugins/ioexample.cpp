/// The example of docs/format-modules.md: reads traces from a text file and writes them as a dataset.
///
/// A line of the text is a trace, its samples separated by blanks or tabs; all lines have equally many. Lines that are
/// empty or begin with "#" are passed over, but "# interval 0.004" gives the sample interval in seconds. The traces
/// make one record.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"

namespace {

constexpr std::string_view kIntervalMark = "# interval ";

// Between two phases the module stays loaded: what they share may lie in variables.
struct Job {
  std::string inputPath;
  int samples = 0;
  int traces = 0;
  float interval = 0.002F;
  Link output;
};
Job job;

/// Says an error on the console. @return 1, the failure of a phase
int failed(ProcessRecord* record, const std::string& what) {
  kyrSay(record, ("  *** " + what).c_str());
  return 1;
}

/// The numbers of a line; empty when something else stands in it.
std::vector<float> numbersOf(const std::string& line) {
  std::vector<float> numbers;
  const char* rest = line.c_str();
  while (*(rest += std::strspn(rest, " \t\r")) != '\0') {
    char* end = nullptr;
    numbers.push_back(std::strtof(rest, &end));
    if (end == rest) return {};
    rest = end;
  }
  return numbers;
}

/// Calls `use` with every trace of the text. @return 0, or 1 after a console line or the user's stop
template <typename Use>
int forEachTrace(ProcessRecord* record, Use use) {
  std::ifstream text(job.inputPath);
  if (!text) return failed(record, "Error opening file " + job.inputPath + ": " + std::strerror(errno) + ".");
  std::string line;
  for (int number = 1; std::getline(text, line); ++number) {
    if (kyrGoOn() == 0) return failed(record, "Stopped.");
    if (line.starts_with(kIntervalMark)) job.interval = std::strtof(line.c_str() + kIntervalMark.size(), nullptr);
    if (trimText(line).empty() || line[0] == '#') continue;
    const std::vector<float> samples = numbersOf(line);
    if (samples.empty()) return failed(record, formatText("Line %d holds something else than numbers.", number));
    if (job.samples == 0) job.samples = static_cast<int>(samples.size());
    if (samples.size() != static_cast<std::size_t>(job.samples))
      return failed(record, formatText("Line %d has %zu samples and not %d as the first trace.", number, samples.size(),
                                       job.samples));
    if (const int result = use(samples); result != 0) return result;
  }
  return text.bad() ? failed(record, "Error reading file " + job.inputPath + ".") : 0;
}

template <typename T>
void setProperty(ProcessRecord* record, int property, KyrType type, const T& value) {
  SetDatasetProperty(record, job.output, property, type, gUnknownUnits, &value);
}

/// Announces the dataset and creates its file. The library itself says on the console what is wrong with it.
int openOutput(ProcessRecord* record) {
  char path[4096];
  if (kyrPath(record, KYR_OUTPUT, path, sizeof path) != 0) return failed(record, "There is no output file.");
  const int one = 1;
  SetNumberOfOutputs(record, one);
  if (NewOutputSeismicFile(&job.output, record, path, 0, kAnySeismicType, 0, job.traces) != 0)
    return failed(record, formatText("Error %d opening file %s.", job.output.value, path));
  setProperty(record, dsRecords, longIntType, one);
  setProperty(record, dsTracesPerRecord, longIntType, job.traces);
  setProperty(record, dsSamples, longIntType, job.samples);
  setProperty(record, dsSampleInterval, singleFloatType, job.interval);
  return EndInit(record);
}

int writeTrace(ProcessRecord* record, int number, const std::vector<float>& samples) {
  TraceInfo header{};
  SetTraceProperty(trTraceNumber, longIntType, gUnknownUnits, &number, &header);
  SetTraceProperty(trChannel, longIntType, gUnknownUnits, &number, &header);
  return TracePut(record, job.output, 1, number, samples.data(), &header);
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, "Text (one trace per line)");
  *uniqueId = 1001;
}

void GetInputDefaultParameters(int* /*params*/, int* paramDlg, int* disk, int* tape) {
  *paramDlg = 0;
  *disk = 1;
  *tape = 0;
}

int TInitialPhase(ProcessRecord* record, int* /*inputParams*/, int* /*outputParams*/) {
  job = Job{};
  if (record->diskFileOutputType != KYR_ID_DATASET)
    return failed(record, "Text can be written as a dataset (\"" KYR_NAME_DATASET "\") only.");
  char path[4096];
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) return failed(record, "There is no input file.");
  job.inputPath = path;
  const int result = forEachTrace(record, [](const std::vector<float>& /*samples*/) {
    ++job.traces;
    return 0;
  });
  if (result != 0) return result;
  return job.traces > 0 ? openOutput(record) : failed(record, "There is no trace in the input file.");
}

int TMainPhase(ProcessRecord* record) {
  int number = 0;
  const int result =
      forEachTrace(record, [&](const std::vector<float>& samples) { return writeTrace(record, ++number, samples); });
  // After a failed phase there is no further one.
  if (result != 0) CloseFile(record, job.output);
  return result;
}

int TFinalPhase(ProcessRecord* record) {
  const int result = CloseFile(record, job.output);
  if (result == 0) kyrSay(record, formatText("%d traces of %d samples written.", job.traces, job.samples).c_str());
  return result;
}
