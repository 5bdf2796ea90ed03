/// The example of docs/format-modules.md: reads traces from a text file and writes them as a dataset.
///
/// A line of the text is a trace, its samples separated by blanks or tabs; all lines have equally many. Lines that are
/// empty or begin with "#" are passed over, but "# interval 0.004" gives the sample interval in seconds; where a text
/// has no such line, the interval is a parameter. The traces make one record.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "libkyr/datasets.h"
#include "libkyr/source.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "quarlo/tapelib/dialogs/blockdialog.h"

namespace {

// ---- its parameters and their dialog ------------------------------------------------------------------------------

/// The input block. The program keeps it, fills it with zeros before the defaults, and hands it to every entry.
struct Parameters {
  double interval;  ///< of the samples in seconds, for a text that does not tell it
};

enum ControlNumber : int { kOk = 1, kCancel = 2, kInterval = 3 };

constexpr DLG_ITEM kItems[] = {
    ui::row(),
    ui::label("~Sample interval in milliseconds, where the text has none:", kInterval),
    ui::edit(kInterval, "interval", 8),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(kOk, "ok", "OK", IF_DEFAULT),
    ui::push(kCancel, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};
constexpr DLG_RES kDialog = {1001, "text-parameters", "Text parameters", kItems, std::size(kItems)};
constexpr RealField kIntervalField = {.control = kInterval, .decimals = 3, .low = 0.001, .high = 100000, .unit = 0.001};

// ---- the text as a source -----------------------------------------------------------------------------------------

constexpr std::string_view kIntervalMark = "# interval ";

/// Says an error on the console. @return 1, the failure of an entry
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

/// The text as a source of traces.
class TextSource : public TraceSource {
 public:
  TextSource(ProcessRecord* record, const Parameters& how) : record_(record), interval_(how.interval) {}

  /// Opens the input that the user chose and reads it once, to check it and to find its traces. @return 0, or 1 after a
  /// console line
  int open() {
    char path[4096];
    if (kyrPath(record_, KYR_INPUT, path, sizeof path) != 0) return failed(record_, "There is no input file.");
    path_ = path;
    text_.open(path_);
    if (!text_) return failed(record_, "Error opening file " + path_ + ": " + std::strerror(errno) + ".");
    if (const int result = findTraces(); result != 0) return result;
    if (begins_.empty()) return failed(record_, "There is no trace in the input file.");
    setSeisOrgCounts(&org_, {1, static_cast<int>(begins_.size()), samples_});
    return 0;
  }

  const GeneralSeisDataOrg& org() const override { return org_; }
  SourceFormat format() const override { return {"text", 0, 0, interval_, false}; }
  std::int64_t position(int /*record*/, int trace) override { return begins_.at(static_cast<std::size_t>(trace - 1)); }

 private:
  int findTraces() {
    std::string line;
    std::int64_t begin = 0;
    for (int number = 1; std::getline(text_, line); ++number, begin = text_.tellg()) {
      if (kyrGoOn() == 0) return failed(record_, "Stopped.");
      if (line.starts_with(kIntervalMark)) interval_ = std::strtod(line.c_str() + kIntervalMark.size(), nullptr);
      if (trimText(line).empty() || line[0] == '#') continue;
      if (const int result = checkTrace(line, number); result != 0) return result;
      begins_.push_back(begin);
    }
    SetDSProperty(dsSampleInterval, doubleFloatType, gSecondsUnits, &interval_, &org_);
    return text_.bad() ? failed(record_, "Error reading file " + path_ + ".") : 0;
  }

  int checkTrace(const std::string& line, int number) {
    const std::vector<float> samples = numbersOf(line);
    if (samples.empty()) return failed(record_, formatText("Line %d holds something else than numbers.", number));
    if (samples_ == 0) samples_ = static_cast<int>(samples.size());
    if (samples.size() == static_cast<std::size_t>(samples_)) return 0;
    return failed(record_, formatText("Line %d has %zu samples and not %d as the first trace.", number, samples.size(),
                                      samples_));
  }

  /// Only asked for traces that are there. What is wrong with one now (the file may have been changed) is a lost trace.
  int fetch(int record, int trace, float* samples, TraceInfo* header) override {
    text_.clear();
    text_.seekg(position(record, trace));
    std::string line;
    std::getline(text_, line);
    const std::vector<float> numbers = numbersOf(line);
    if (numbers.size() != static_cast<std::size_t>(samples_)) {
      failed(record_, formatText("Trace %d of %s has changed.", trace, path_.c_str()));
      return kyrTraceLost;
    }
    *header = {};
    SetTraceProperty(trTraceNumber, longIntType, gUnknownUnits, &trace, header);
    SetTraceProperty(trChannel, longIntType, gUnknownUnits, &trace, header);
    if (samples != nullptr) std::copy(numbers.begin(), numbers.end(), samples);
    return kyrOk;
  }

  ProcessRecord* record_;
  std::string path_;
  std::ifstream text_;
  std::vector<std::int64_t> begins_;  // of the lines of the traces
  GeneralSeisDataOrg org_ = newSeisOrg();
  double interval_;
  int samples_ = 0;
};

// ---- a run --------------------------------------------------------------------------------------------------------

// Between two phases the module stays loaded: what they share may lie in variables.
struct Job {
  Link input;
  Link output;
  int traces = 0;
  int samples = 0;
};
Job job;

/// The source as an input of the record.
int openInput(ProcessRecord* record, int* inputParams) {
  if (const int result = TOpenSource(record, inputParams); result != 0) return result;
  SetNumberOfInputs(record, 1);
  const int result = NewInputFile(&job.input, record, "", 0, kAnySeismicType);
  GetDatasetProperty(record, job.input, dsTracesPerRecord, longIntType, gUnknownUnits, &job.traces);
  GetDatasetProperty(record, job.input, dsSamples, longIntType, gUnknownUnits, &job.samples);
  return result;
}

int setCount(ProcessRecord* record, int property, int count) {
  return SetDatasetProperty(record, job.output, property, longIntType, gUnknownUnits, &count);
}

/// Announces the dataset and creates its file. The library itself says on the console what is wrong with it.
int openOutput(ProcessRecord* record) {
  char path[4096];
  if (kyrPath(record, KYR_OUTPUT, path, sizeof path) != 0) return failed(record, "There is no output file.");
  SetNumberOfOutputs(record, 1);
  if (NewOutputSeismicFile(&job.output, record, path, 0, kAnySeismicType, 0, job.traces) != 0)
    return failed(record, formatText("Error %d opening file %s.", job.output.value, path));
  CopyBinaryHeader(record, job.input, job.output);  // the sample interval
  setCount(record, dsRecords, 1);
  setCount(record, dsSamples, job.samples);
  return EndInit(record);
}

int copyTraces(ProcessRecord* record) {
  std::vector<float> samples(static_cast<std::size_t>(job.samples));
  TraceInfo header;
  for (int trace = 1; trace <= job.traces; ++trace) {
    if (kyrGoOn() == 0) return failed(record, "Stopped.");
    if (const int result = TraceGet(record, job.input, 1, trace, samples.data(), &header); result != 0) return result;
    if (const int result = TracePut(record, job.output, 1, trace, samples.data(), &header); result != 0) return result;
  }
  return 0;
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, "Text (one trace per line)");
  *uniqueId = 1001;
}

void AllocInputMemory(int* size) { *size = sizeof(Parameters); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  reinterpret_cast<Parameters*>(params)->interval = 0.002;
  *paramDlg = 1;
  *disk = 1;
  *tape = 0;
}

void PostInputDialog(int* params) {
  auto* const block = reinterpret_cast<Parameters*>(params);
  Parameters edited = *block;
  BlockDialog dialog(kDialog, kOk, kCancel);
  dialog.real(kIntervalField, &edited.interval);
  if (dialog.run()) *block = edited;
}

int TOpenSource(ProcessRecord* record, int* inputParams) {
  auto source = std::make_unique<TextSource>(record, *reinterpret_cast<const Parameters*>(inputParams));
  const int result = source->open();
  return result == 0 ? RegisterSource(record, 0, std::move(source)) : result;
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* /*outputParams*/) {
  job = Job{};
  if (record->diskFileOutputType != KYR_ID_DATASET)
    return failed(record, "Text can be written as a dataset (\"" KYR_NAME_DATASET "\") only.");
  const int result = openInput(record, inputParams);
  return result == 0 ? openOutput(record) : result;
}

int TMainPhase(ProcessRecord* record) {
  const int result = copyTraces(record);
  // After a failed phase there is no further one.
  if (result != 0) CloseAllFiles(record);
  return result;
}

int TFinalPhase(ProcessRecord* record) {
  const int result = CloseAllFiles(record);
  if (result != 0) return result;
  kyrSay(record, formatText("%d trace%s of %d samples written.", job.traces, plural(job.traces), job.samples).c_str());
  return result;
}
