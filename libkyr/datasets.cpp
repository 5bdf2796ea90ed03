#include "libkyr/datasets.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "libkyr/datasetfile.h"
#include "libkyr/traceslot.h"

/// One side of a record: its links by number.
struct KyrSide {
  struct Entry {
    Link link{};
    std::unique_ptr<DatasetFile> file{};
  };
  std::vector<Entry> entries{};
  int announced = 0;
};

struct KyrDatasets {
  KyrSide inputs{};
  KyrSide outputs{};
  std::vector<std::string> warned{};  ///< datasets whose opening warned already
};

namespace {

constexpr std::uint64_t kLargestPart = std::uint64_t{1} << 40U;

/// Nothing is thrown through the library's calls.
template <typename Work>
int guarded(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return kyrNoMemory;
  } catch (const std::exception&) {
    return kyrBadCall;
  }
}

Link newLink() {
  static int last = 0;
  return {++last};
}

int failedLink(Link* link, int result) {
  link->value = result;
  return result;
}

KyrDatasets* datasetsOf(ProcessRecord* procRecord) {
  if (procRecord->datasets == nullptr) procRecord->datasets = new KyrDatasets;
  return procRecord->datasets;
}

KyrSide::Entry* findEntry(const ProcessRecord* procRecord, Link link) {
  if (procRecord == nullptr || procRecord->datasets == nullptr || !IsLinkValid(link)) return nullptr;
  for (KyrSide* side : {&procRecord->datasets->inputs, &procRecord->datasets->outputs})
    for (KyrSide::Entry& entry : side->entries)
      if (entry.link.value == link.value) return &entry;
  return nullptr;
}

DatasetFile* fileOf(const ProcessRecord* procRecord, Link link) {
  const KyrSide::Entry* const entry = findEntry(procRecord, link);
  return entry != nullptr ? entry->file.get() : nullptr;
}

int closeEntry(KyrSide::Entry& entry) {
  entry.link = {};
  const std::unique_ptr<DatasetFile> file = std::move(entry.file);
  return file ? guarded([&] { return file->close(); }) : kyrOk;
}

/// The entry for a number of an input or output, free for a new file; null for a number that was not announced.
KyrSide::Entry* freeEntry(KyrSide& side, int number) {
  if (number < 0 || number >= side.announced) return nullptr;
  const auto index = static_cast<std::size_t>(number);
  if (index >= side.entries.size()) side.entries.resize(index + 1);
  closeEntry(side.entries[index]);
  return &side.entries[index];
}

bool isOpenAs(const KyrSide& side, const char* path) {
  return std::any_of(
      side.entries.begin(), side.entries.end(),
      [path](const KyrSide::Entry& entry) { return entry.file && entry.file->uses(path); });
}

int announce(ProcessRecord* procRecord, KyrSide KyrDatasets::*side, int count) {
  if (procRecord == nullptr || count < 0) return kyrBadCall;
  return guarded([&] {
    (datasetsOf(procRecord)->*side).announced = count;
    return kyrOk;
  });
}

std::unique_ptr<DatasetFile> newFile(ProcessRecord* procRecord, const char* path) {
  return std::make_unique<DatasetFile>(
      path, [procRecord](const std::string& line) { ProcessConsole(procRecord, line.c_str()); });
}

/// An input whose opening is told about once, however often the job opens it.
std::unique_ptr<DatasetFile> newInput(ProcessRecord* procRecord, const char* path) {
  auto& warned = procRecord->datasets->warned;
  const bool before = std::find(warned.begin(), warned.end(), path) != warned.end();
  auto file = std::make_unique<DatasetFile>(path, [procRecord, before](const std::string& line) {
    if (!before || line.starts_with("  *** ")) ProcessConsole(procRecord, line.c_str());
  });
  return file;
}

bool isSeismic(int type) {
  return type == kStackedData || type == kAnyUnknownSeismic || type == kAnySeismicType || type == brickedTimeStack;
}

int acceptance(int accepted, int type) {
  if (accepted == kRadarData) return type == kRadarData ? kyrOk : kyrNotRadar;
  if (!isSeismic(type)) return kyrNotSeismic;
  if (accepted == kAnySeismicType || accepted == type) return kyrOk;
  return accepted == kStackedData ? kyrNotTwoD : kyrOtherType;
}

int openInput(Link* link, ProcessRecord* procRecord, const char* path, int number, int accepted) {
  KyrDatasets* const datasets = datasetsOf(procRecord);
  KyrSide::Entry* const entry = freeEntry(datasets->inputs, number);
  if (entry == nullptr) return kyrBadCall;
  if (isOpenAs(datasets->outputs, path)) return kyrInUse;
  auto file = newInput(procRecord, path);
  int result = file->openRead();
  if (result == kyrOk) result = acceptance(accepted, file->header().type);
  if (result != kyrOk) return result;
  if (!file->isWhole()) datasets->warned.emplace_back(path);
  entry->file = std::move(file);
  entry->link = newLink();
  *link = entry->link;
  return kyrOk;
}

int openOutput(Link* link, ProcessRecord* procRecord, const char* path, int number, int type, int recordsPerFile,
               int tracesPerRecord) {
  KyrDatasets* const datasets = datasetsOf(procRecord);
  KyrSide::Entry* const entry = freeEntry(datasets->outputs, number);
  if (entry == nullptr) return kyrBadCall;
  if (isOpenAs(datasets->outputs, path) || isOpenAs(datasets->inputs, path)) return kyrInUse;
  auto file = newFile(procRecord, path);
  const int result = file->announce(type, recordsPerFile, tracesPerRecord);
  if (result != kyrOk) return result;
  entry->file = std::move(file);
  entry->link = newLink();
  *link = entry->link;
  return kyrOk;
}

}  // namespace

// ---- opening and closing ------------------------------------------------------------------------------------------

int SetNumberOfInputs(ProcessRecord* procRecord, int count) {
  return announce(procRecord, &KyrDatasets::inputs, count);
}

int SetNumberOfOutputs(ProcessRecord* procRecord, int count) {
  return announce(procRecord, &KyrDatasets::outputs, count);
}

int NewInputFile(Link* link, ProcessRecord* procRecord, const char* fullName, int inputNumber, int accepted) {
  if (link == nullptr) return kyrBadCall;
  if (procRecord == nullptr || fullName == nullptr) return failedLink(link, kyrBadCall);
  const int result = guarded([&] { return openInput(link, procRecord, fullName, inputNumber, accepted); });
  return result == kyrOk ? result : failedLink(link, result);
}

int NewOutputSeismicFile(Link* link, ProcessRecord* procRecord, const char* fullName, int outputNumber, int type,
                         int recordsPerFile, int tracesPerRecord) {
  if (link == nullptr) return kyrBadCall;
  const bool sound = procRecord != nullptr && fullName != nullptr && (isSeismic(type) || type == kRadarData) &&
                     recordsPerFile >= 0 && tracesPerRecord >= 0;
  if (!sound) return failedLink(link, kyrBadCall);
  const int result = guarded(
      [&] { return openOutput(link, procRecord, fullName, outputNumber, type, recordsPerFile, tracesPerRecord); });
  return result == kyrOk ? result : failedLink(link, result);
}

int EndInit(ProcessRecord* procRecord) {
  if (procRecord == nullptr) return kyrBadCall;
  if (procRecord->datasets == nullptr) return kyrOk;
  int first = kyrOk;
  for (const KyrSide::Entry& entry : procRecord->datasets->outputs.entries) {
    const int result = entry.file ? guarded([&] { return entry.file->begin(); }) : kyrOk;
    if (first == kyrOk) first = result;
  }
  return first;
}

int CloseFile(ProcessRecord* procRecord, Link link) {
  KyrSide::Entry* const entry = findEntry(procRecord, link);
  return entry != nullptr ? closeEntry(*entry) : kyrBadCall;
}

int CloseAllFiles(ProcessRecord* procRecord) {
  if (procRecord == nullptr || procRecord->datasets == nullptr) return kyrOk;
  const std::unique_ptr<KyrDatasets> datasets(procRecord->datasets);
  int first = kyrOk;
  for (KyrSide* side : {&datasets->inputs, &datasets->outputs})
    for (KyrSide::Entry& entry : side->entries) {
      const int result = closeEntry(entry);
      if (first == kyrOk) first = result;
    }
  procRecord->datasets = nullptr;
  return first;
}

int GetRecordsPerFile(int records, int tracesPerRecord, int samples) {
  if (records < 1 || tracesPerRecord < 1 || samples < 0 || samples > kMaxSamples) return 1;
  const std::uint64_t traces = kLargestPart / traceslot::size(samples);
  const std::uint64_t fitting = traces / static_cast<std::uint64_t>(tracesPerRecord);
  return static_cast<int>(std::clamp<std::uint64_t>(fitting, 1, static_cast<std::uint64_t>(records)));
}

// ---- a dataset's properties ---------------------------------------------------------------------------------------

int GetDatasetProperty(const ProcessRecord* procRecord, Link link, int property, int type, int units, void* value) {
  const DatasetFile* const file = fileOf(procRecord, link);
  // An unknown link has no properties: an empty record refuses likewise, and leaves a zero.
  if (file == nullptr) return GetDSProperty(property, type, units, value, nullptr);
  return file->getProperty(property, type, units, value);
}

int SetDatasetProperty(ProcessRecord* procRecord, Link link, int property, int type, int units, const void* value) {
  DatasetFile* const file = fileOf(procRecord, link);
  return file != nullptr ? file->setProperty(property, type, units, value) : kyrBadCall;
}

int GetInSeismicType(const ProcessRecord* procRecord, Link link) {
  const DatasetFile* const file = fileOf(procRecord, link);
  return file != nullptr ? file->header().type : 0;
}

int CopyBinaryHeader(ProcessRecord* procRecord, Link from, Link to) {
  const DatasetFile* const source = fileOf(procRecord, from);
  DatasetFile* const target = fileOf(procRecord, to);
  return source != nullptr && target != nullptr ? target->copyProperties(*source) : kyrBadCall;
}

int GetSeisOrg(const ProcessRecord* procRecord, Link link, GeneralSeisDataOrg* org) {
  const DatasetFile* const file = fileOf(procRecord, link);
  if (file == nullptr || org == nullptr) return kyrBadCall;
  *org = file->header().org;
  return kyrOk;
}

// ---- traces -------------------------------------------------------------------------------------------------------

namespace {

/// Whatever goes wrong, the header that comes back is that of a dead trace.
int readTrace(ProcessRecord* procRecord, Link link, int record, int trace, float* samples, TraceInfo* header) {
  DatasetFile* const file = fileOf(procRecord, link);
  if (header == nullptr) return kyrBadCall;
  const int result =
      file != nullptr ? guarded([&] { return file->read(record, trace, samples, header); }) : int{kyrBadCall};
  if (result != kyrOk) {
    *header = {};
    header->words[trKillFlag] = killUnreadable;
  }
  return result;
}

}  // namespace

int HeaderGet(ProcessRecord* procRecord, Link link, int record, int trace, TraceInfo* header) {
  return readTrace(procRecord, link, record, trace, nullptr, header);
}

int TraceGet(ProcessRecord* procRecord, Link link, int record, int trace, float* samples, TraceInfo* header) {
  const DatasetFile* const file = fileOf(procRecord, link);
  const bool hasRoom = samples != nullptr || file == nullptr || file->shape().samples == 0;
  return readTrace(procRecord, hasRoom ? link : Link{}, record, trace, samples, header);
}

int TracePut(ProcessRecord* procRecord, Link link, int record, int trace, const float* samples,
             const TraceInfo* header) {
  DatasetFile* const file = fileOf(procRecord, link);
  if (file == nullptr || header == nullptr || (samples == nullptr && file->shape().samples > 0)) return kyrBadCall;
  return guarded([&] { return file->write(record, trace, samples, *header); });
}
