#include "libkyr/datasets.h"

#include <algorithm>
#include <memory>
#include <string>

#include "libkyr/links.h"
#include "libkyr/traceslot.h"

namespace {

constexpr std::uint64_t kLargestPart = std::uint64_t{1} << 40U;

int failedLink(Link* link, int result) {
  link->value = result;
  return result;
}

/// The dataset behind the link of an output; null with the reason when there is none.
DatasetFile* outputOf(const ProcessRecord* procRecord, Link link, int* why) {
  const OpenLink* const open = findLink(procRecord, link);
  *why = open == nullptr ? kyrBadCall : kyrTooLate;
  return open != nullptr ? open->output : nullptr;
}

int announce(ProcessRecord* procRecord, LinkSide KyrDatasets::*side, int count) {
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

/// Opens the dataset of a path.
int openDataset(ProcessRecord* procRecord, const char* path, OwnedSource* opened) {
  auto file = newInput(procRecord, path);
  const int result = file->openRead();
  if (result == kyrOk && !file->isWhole()) procRecord->datasets->warned.emplace_back(path);
  opened->source = std::move(file);
  return result;
}

/// The source that waits for an input number, or nothing.
OwnedSource takeWaiting(KyrDatasets& datasets, int number) {
  auto found = datasets.waiting.extract(number);
  return found ? std::move(found.mapped()) : OwnedSource{};
}

/// Whether one of the outputs writes what a source reads.
bool writesWhatIsRead(const LinkSide& outputs, const TraceSource& source) {
  return std::any_of(
      outputs.links.begin(), outputs.links.end(),
      [&](const OpenLink& open) { return open.output != nullptr && source.uses(open.output->path().c_str()); });
}

int openInput(Link* link, ProcessRecord* procRecord, const char* path, int number, int accepted) {
  KyrDatasets* const datasets = datasetsOf(procRecord);
  OpenLink* const place = datasets->inputs.freePlace(number);
  if (place == nullptr) return kyrBadCall;
  OwnedSource opened = takeWaiting(*datasets, number);
  if (opened.source ? writesWhatIsRead(datasets->outputs, *opened.source) : datasets->outputs.uses(path))
    return kyrInUse;
  int result = opened.source ? kyrOk : openDataset(procRecord, path, &opened);
  if (result == kyrOk) result = acceptance(accepted, opened.source->type());
  if (result == kyrOk) *link = place->open(std::move(opened));
  return result;
}

int openOutput(Link* link, ProcessRecord* procRecord, const char* path, int number, int type, int recordsPerFile,
               int tracesPerRecord) {
  KyrDatasets* const datasets = datasetsOf(procRecord);
  OpenLink* const place = datasets->outputs.freePlace(number);
  if (place == nullptr) return kyrBadCall;
  if (datasets->outputs.uses(path) || datasets->inputs.uses(path)) return kyrInUse;
  auto file = newFile(procRecord, path);
  const int result = file->announce(type, recordsPerFile, tracesPerRecord);
  if (result != kyrOk) return result;
  place->output = file.get();
  OwnedSource opened;
  opened.source = std::move(file);
  *link = place->open(std::move(opened));
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
  for (const OpenLink& open : procRecord->datasets->outputs.links) {
    const int result = open.output != nullptr ? guarded([&] { return open.output->begin(); }) : kyrOk;
    if (first == kyrOk) first = result;
  }
  return first;
}

int CloseFile(ProcessRecord* procRecord, Link link) {
  OpenLink* const open = findLink(procRecord, link);
  return open != nullptr ? open->close() : kyrBadCall;
}

int CloseUnfinished(ProcessRecord* procRecord, Link link) {
  const OpenLink* const open = findLink(procRecord, link);
  if (open != nullptr && open->output != nullptr) open->output->leaveUnfinished();
  return CloseFile(procRecord, link);
}

int CloseAllFiles(ProcessRecord* procRecord) {
  if (procRecord == nullptr || procRecord->datasets == nullptr) return kyrOk;
  const std::unique_ptr<KyrDatasets> datasets(procRecord->datasets);
  int first = kyrOk;
  for (LinkSide* side : {&datasets->inputs, &datasets->outputs})
    for (OpenLink& open : side->links) {
      const int result = open.close();
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
  const TraceSource* const source = sourceOf(procRecord, link);
  // An unknown link has no properties: an empty record refuses likewise, and leaves a zero.
  return GetDSProperty(property, type, units, value, source != nullptr ? &source->org() : nullptr);
}

int SetDatasetProperty(ProcessRecord* procRecord, Link link, int property, int type, int units, const void* value) {
  int why = kyrOk;
  DatasetFile* const output = outputOf(procRecord, link, &why);
  return output != nullptr ? output->setProperty(property, type, units, value) : why;
}

int GetInSeismicType(const ProcessRecord* procRecord, Link link) {
  const TraceSource* const source = sourceOf(procRecord, link);
  return source != nullptr ? source->type() : 0;
}

int CopyBinaryHeader(ProcessRecord* procRecord, Link from, Link to) {
  int why = kyrOk;
  const TraceSource* const source = sourceOf(procRecord, from);
  DatasetFile* const target = outputOf(procRecord, to, &why);
  if (source == nullptr) return kyrBadCall;
  return target != nullptr ? target->copyProperties(source->org()) : why;
}

bool UsesFile(const ProcessRecord* procRecord, Link link, const char* path) {
  const TraceSource* const source = sourceOf(procRecord, link);
  return source != nullptr && path != nullptr && source->uses(path);
}

int GetSourceFormat(const ProcessRecord* procRecord, Link link, SourceFormat* format) {
  const TraceSource* const source = sourceOf(procRecord, link);
  if (source == nullptr || format == nullptr) return kyrBadCall;
  return guarded([&] {
    *format = source->format();
    return kyrOk;
  });
}

int GetSeisOrg(const ProcessRecord* procRecord, Link link, GeneralSeisDataOrg* org) {
  const TraceSource* const source = sourceOf(procRecord, link);
  if (source == nullptr || org == nullptr) return kyrBadCall;
  *org = source->org();
  return kyrOk;
}

// ---- traces -------------------------------------------------------------------------------------------------------

namespace {

/// Whatever goes wrong, the header that comes back is that of a dead trace.
int readTrace(TraceSource* source, int record, int trace, float* samples, TraceInfo* header) {
  if (header == nullptr) return kyrBadCall;
  if (source != nullptr) return source->read(record, trace, samples, header);
  makeDead(0, nullptr, header, killUnreadable);
  return kyrBadCall;
}

}  // namespace

int HeaderGet(ProcessRecord* procRecord, Link link, int record, int trace, TraceInfo* header) {
  return readTrace(sourceOf(procRecord, link), record, trace, nullptr, header);
}

int TraceGet(ProcessRecord* procRecord, Link link, int record, int trace, float* samples, TraceInfo* header) {
  TraceSource* const source = sourceOf(procRecord, link);
  const bool hasRoom = samples != nullptr || source == nullptr || seisOrgCounts(source->org()).samples == 0;
  return readTrace(hasRoom ? source : nullptr, record, trace, samples, header);
}

int TracePlaceFrom(const ProcessRecord* procRecord, Link link, int record, int trace) {
  TraceSource* const source = sourceOf(procRecord, link);
  int place = trace;
  if (source == nullptr) return place;
  const int result = guarded([&] {
    place = source->placeFrom(record, trace);
    return kyrOk;
  });
  return result == kyrOk ? place : trace;
}

std::int64_t GetTracePosition(const ProcessRecord* procRecord, Link link, int record, int trace) {
  TraceSource* const source = sourceOf(procRecord, link);
  std::int64_t position = -1;
  if (source != nullptr)
    guarded([&] {
      position = source->position(record, trace);
      return kyrOk;
    });
  return position;
}

int TracePut(ProcessRecord* procRecord, Link link, int record, int trace, const float* samples,
             const TraceInfo* header) {
  int why = kyrOk;
  DatasetFile* const output = outputOf(procRecord, link, &why);
  if (output == nullptr || header == nullptr) return output == nullptr ? why : int{kyrBadCall};
  if (samples == nullptr && output->shape().samples > 0) return kyrBadCall;
  return guarded([&] { return output->write(record, trace, samples, *header); });
}

std::int64_t SettleTraces(ProcessRecord* procRecord, Link link) {
  int why = kyrOk;
  DatasetFile* const output = outputOf(procRecord, link, &why);
  return output != nullptr ? static_cast<std::int64_t>(output->settle()) : 0;
}
