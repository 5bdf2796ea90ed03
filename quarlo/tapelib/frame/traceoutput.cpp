#include "quarlo/tapelib/frame/traceoutput.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/files.h"
#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/formats/segywriter.h"
#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/rfmttape.h"
#include "quarlo/tapelib/frame/segytext.h"

namespace {

constexpr const char* kStandardDescription = "segy-rev1.txt";

int property(const TraceInfo& header, int code, int otherwise) {
  int value = 0;
  GetTraceProperty(code, longIntType, gUnknownUnits, &value, &header);
  return IsValueNull(value) ? otherwise : value;
}

/// Whatever is neither seismic data nor said to be dead: SEG Y's trace identification.
bool isAuxiliary(const TraceInfo& header) {
  const int type = property(header, trTraceType, 1);
  return type > 2;
}

/// The block when it is one of this kind, else null.
template <typename Block>
const Block* blockOf(const int* block, const char* signature) {
  if (block == nullptr) return nullptr;
  const auto* const known = reinterpret_cast<const Block*>(block);
  const bool fits = std::strncmp(known->head.signature, signature, sizeof known->head.signature) == 0 &&
                    known->head.size >= static_cast<int>(sizeof(Block)) && known->head.version >= 1;
  return fits ? known : nullptr;
}

// ---- a dataset --------------------------------------------------------------------------------------------------

class DatasetOutput : public TraceOutput {
 public:
  explicit DatasetOutput(ProcessRecord* procRecord) : record_(procRecord) {}
  ~DatasetOutput() override {
    if (IsLinkValid(link_)) CloseFile(record_, link_);
  }

  bool begin(const TraceCounts& counts, Link from) override;
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd end, int records, int largest) override;

 private:
  bool failed(int result, const char* what);
  int setCount(int code, int value) {
    return SetDatasetProperty(record_, link_, code, longIntType, gUnknownUnits, &value);
  }

  ProcessRecord* record_;
  Link link_{};
};

bool DatasetOutput::failed(int result, const char* what) {
  if (result == kyrOk) return false;
  ProcessConsole(record_, formatText("  *** Error %s the output dataset (%d).", what, result).c_str());
  return true;
}

bool DatasetOutput::begin(const TraceCounts& counts, Link from) {
  const UnitStruct& unit = GetDevUnit(record_)[1];
  const int type = GetInSeismicType(record_, from);
  SetNumberOfOutputs(record_, 1);
  const int opened = NewOutputSeismicFile(
      &link_, record_, pathOf(unit.fs).c_str(), 0, type != 0 ? type : int{kAnyUnknownSeismic},
      GetRecordsPerFile(counts.records, counts.tracesPerRecord, counts.samples), counts.tracesPerRecord);
  if (failed(opened, "opening") || failed(CopyBinaryHeader(record_, from, link_), "preparing")) return false;
  const auto interval = static_cast<float>(counts.interval);
  int result = setCount(dsRecords, counts.records);
  if (result == kyrOk) result = setCount(dsTracesPerRecord, counts.tracesPerRecord);
  if (result == kyrOk) result = setCount(dsSamples, counts.samples);
  if (result == kyrOk)
    result = SetDatasetProperty(record_, link_, dsSampleInterval, singleFloatType, gSecondsUnits, &interval);
  if (result == kyrOk) result = EndInit(record_);
  return !failed(result, "preparing");
}

TracePutAnswer DatasetOutput::put(int record, int trace, const float* samples, const TraceInfo& header) {
  const int result = TracePut(record_, link_, record, trace, samples, &header);
  return failed(result, "writing to") ? TracePutAnswer::Failed : TracePutAnswer::Written;
}

bool DatasetOutput::finish(JobEnd end, int records, int largest) {
  if (!IsLinkValid(link_)) return true;
  setCount(dsRecords, records);
  if (end == JobEnd::Success) setCount(dsTracesPerRecord, largest);
  const Link link = link_;
  link_ = {};
  return !failed(end == JobEnd::Success ? CloseFile(record_, link) : CloseUnfinished(record_, link), "closing");
}

// ---- SEG Y ------------------------------------------------------------------------------------------------------

class SegyTraceOutput : public TraceOutput {
 public:
  SegyTraceOutput(ProcessRecord* procRecord, const KyrSegyOutput& how, std::string told)
      : record_(procRecord), units_(GetDevUnit(procRecord)), how_(how), told_(std::move(told)) {}

  bool begin(const TraceCounts& counts, Link from) override;
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd end, int records, int largest) override;
  int lost() const override { return disk_.lost().traces - refused_; }
  void tellSummary() override;

 private:
  bool loadDescription();
  bool writeReelHeaders();
  void build(const float* samples, const TraceInfo& header);
  TracePutAnswer write();
  TracePutAnswer nextTapes();
  bool isTape() const { return units_[1].type == UT_TAPE; }
  void say(const std::string& line) { ProcessConsole(record_, line.c_str()); }

  ProcessRecord* record_;
  UnitStruct* units_;
  const KyrSegyOutput how_;
  std::string told_;
  SegyFormat format_;
  TraceCounts counts_;
  int sampleFormat_ = 0;
  float interval_ = 0;  // milliseconds, as the writer wants it
  std::vector<char> header_;
  std::vector<char> trace_;
  PieceWriter disk_;
  int written_ = 0;  // accepted
  int refused_ = 0;  // the trace that the disk did not take, which was not accepted
  int onTape_ = 0;   // of these, on the present tapes
  int tape_ = 1;
  bool begun_ = false;
};

bool SegyTraceOutput::loadDescription() {
  const auto tell = [this](const std::string& line) { say(line); };
  if (!loadChosenSegyFormat(fieldText(how_.description), kStandardDescription, &format_, tell)) return false;
  if (how_.byteOrder != KYR_ORDER_DESCRIBED) format_.itIsBigEndian = how_.byteOrder == KYR_ORDER_BIG ? 1 : 0;
  if (const std::string_view text = fieldText(how_.textFile); !text.empty()) {
    format_.itUsesTextFile = 1;
    format_.itsTextFileSpec = fileSpecOf(std::string(text));
  }
  sampleFormat_ = overrideOf(format_.itsBinaryFields, "SampFormat", how_.sampleFormat);
  return true;
}

bool SegyTraceOutput::begin(const TraceCounts& counts, Link /*from*/) {
  if (!loadDescription()) return false;
  counts_ = counts;
  interval_ = segyInterval(counts.interval);
  const double microseconds = counts.interval * 1e6;
  if (std::abs(microseconds - std::round(microseconds)) > 1e-6 * microseconds)
    say(formatText("  ** The sample interval of %.9g microseconds is written as %.0f.", microseconds,
                   std::round(microseconds)));
  const auto headerBytes = static_cast<std::size_t>(segyHeaderBytes(format_, false));
  header_.resize(headerBytes);
  trace_.resize(headerBytes +
                static_cast<std::size_t>(GetSegyBytes(sampleFormat_)) * static_cast<std::size_t>(counts.samples));
  if (!writeReelHeaders()) return false;
  begun_ = true;
  if (!isTape()) disk_.beginBehind(units_[1].fp, units_[1].name);
  return true;
}

bool SegyTraceOutput::writeReelHeaders() {
  constexpr int kLargest = std::numeric_limits<short>::max();
  const std::string text = segyTextLines(told_, format_, sampleFormat_, counts_, how_);
  return initSegyOut(record_, &format_, static_cast<short>(std::min(counts_.tracesPerRecord, kLargest)), 0, interval_,
                     counts_.samples, static_cast<short>(sampleFormat_), 0, 0, 0, text.c_str()) == 0;
}

/// A trace number that the input has stays; others get the number of their place in the output.
void SegyTraceOutput::build(const float* samples, const TraceInfo& header) {
  std::ranges::fill(header_, '\0');
  constexpr int kDead = 2;
  const int type = IsDead(header) ? kDead : property(header, trTraceType, 1);
  const int number = property(header, trTraceNumber, 0);
  if (format_.itHasTraceHeader != 0) {
    fillMappedFields(&format_, header_.data(), header);
    fillTraceHeader(&format_, header_.data(), number != 0 ? number : written_ + 1, property(header, trFieldFile, 0),
                    property(header, trChannel, 0), type, counts_.samples, interval_);
  }
  BuildSegyTrace(&format_, sampleFormat_, header_.data(), samples, trace_.data(), counts_.samples);
}

TracePutAnswer SegyTraceOutput::put(int /*record*/, int /*trace*/, const float* samples, const TraceInfo& header) {
  if ((IsDead(header) && how_.deadTraces == 0) || (how_.stripAuxiliary != 0 && isAuxiliary(header)))
    return TracePutAnswer::LeftOut;
  build(samples, header);
  const TracePutAnswer answer = write();
  if (answer != TracePutAnswer::Written) return answer;
  ++written_;
  ++onTape_;
  return answer;
}

TracePutAnswer SegyTraceOutput::write() {
  if (!isTape()) {
    if (disk_.write(std::span<const char>(trace_), true)) return TracePutAnswer::Written;
    refused_ = 1;
    say(formatText("  *** Error writing trace %d to output device.", written_ + 1 - lost()));
    return TracePutAnswer::Failed;
  }
  for (;;) {
    const TapeWrite taken = writeToOutputTapes(units_, trace_);
    if (taken == TapeWrite::Written) return TracePutAnswer::Written;
    // A tape that is full before its first trace would be followed by others for ever.
    if (taken == TapeWrite::Failed || onTape_ == 0) {
      say(formatText("  *** Error writing trace %d to output device.", written_ + 1));
      return TracePutAnswer::Failed;
    }
    if (const TracePutAnswer next = nextTapes(); next != TracePutAnswer::Written) return next;
  }
}

TracePutAnswer SegyTraceOutput::nextTapes() {
  say(formatText("Output tape %d is full with %d traces.", tape_, onTape_));
  if (!completeOutputTapes(units_, 2)) {
    say("  *** Error writing double end-of-file to output tape.");
    return TracePutAnswer::Failed;
  }
  onTape_ = 0;
  if (doOutTapeContinue(record_) == 0) {
    say(formatText("  *** Trace %d and what follows it were not written.", written_ + 1));
    return TracePutAnswer::Declined;
  }
  say(formatText("Continuing output on tape %d.", ++tape_));
  if (writeReelHeaders()) return TracePutAnswer::Written;
  say("  *** Error writing to output tape.");
  return TracePutAnswer::Failed;
}

/// The marks of tapes are the business of who runs the module; a tape that ended here got its own.
bool SegyTraceOutput::finish(JobEnd /*end*/, int /*records*/, int /*largest*/) {
  if (!begun_ || isTape()) return true;
  const bool whole = disk_.flush();
  DiskSync sync;
  sync.add(units_[1].fp, pathOf(units_[1].fs));
  const bool synced = sync.wait([this](const DiskSync::Failure& failure) { say(diskErrorText(failure)); });
  return synced && whole;
}

void SegyTraceOutput::tellSummary() {
  if (isTape() && tape_ > 1) say(formatText("%d output tapes.", tape_));
}

// ---- nowhere ----------------------------------------------------------------------------------------------------

/// Says what a run would make.
class CheckOutput : public TraceOutput {
 public:
  explicit CheckOutput(ProcessRecord* procRecord) : record_(procRecord) {}

  bool begin(const TraceCounts& counts, Link /*from*/) override {
    counts_ = counts;
    return true;
  }
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd /*end*/, int records, int largest) override {
    counts_.records = records;
    counts_.tracesPerRecord = largest;
    return true;
  }
  void tellSummary() override;

 private:
  void say(const std::string& line) { ProcessConsole(record_, line.c_str()); }

  ProcessRecord* record_;
  TraceCounts counts_;
  int fewest_ = std::numeric_limits<int>::max();
  int inRecord_ = 0;
  int current_ = 0;
  int dead_ = 0;
  int auxiliary_ = 0;
  int firstFile_ = kNullInt;
  int lastFile_ = kNullInt;
  long long notNumbers_ = 0;
  float largest_ = 0;
};

TracePutAnswer CheckOutput::put(int record, int /*trace*/, const float* samples, const TraceInfo& header) {
  if (record != current_ && current_ != 0) fewest_ = std::min(fewest_, inRecord_);
  inRecord_ = record == current_ ? inRecord_ + 1 : 1;
  current_ = record;
  dead_ += IsDead(header) ? 1 : 0;
  auxiliary_ += isAuxiliary(header) ? 1 : 0;
  // What could not be read has no numbers.
  const bool isRead = (property(header, trKillFlag, 0) & killUnreadable) == 0;
  if (isRead) lastFile_ = property(header, trFieldFile, kNullInt);
  if (firstFile_ == kNullInt) firstFile_ = lastFile_;
  for (int i = 0; i < counts_.samples; ++i)
    if (std::isnan(samples[i]))
      ++notNumbers_;
    else
      largest_ = std::max(largest_, std::abs(samples[i]));
  return TracePutAnswer::Written;
}

void CheckOutput::tellSummary() {
  say(formatText("A run would make %d record%s of at most %d trace%s, %d sample%s at %.9g ms.", counts_.records,
                 plural(counts_.records), counts_.tracesPerRecord, plural(counts_.tracesPerRecord), counts_.samples,
                 plural(counts_.samples), counts_.interval * 1e3));
  fewest_ = std::min(fewest_, inRecord_);
  if (counts_.records > 0 && fewest_ < counts_.tracesPerRecord)
    say(formatText("The smallest record has %d trace%s; places that nobody wrote fill the others up.", fewest_,
                   plural(fewest_)));
  if (firstFile_ != kNullInt) say(formatText("Field files from %d to %d.", firstFile_, lastFile_));
  if (dead_ > 0) say(formatText("%d dead trace%s.", dead_, plural(dead_)));
  if (auxiliary_ > 0) say(formatText("%d auxiliary trace%s.", auxiliary_, plural(auxiliary_)));
  say(formatText("Largest magnitude %g.", static_cast<double>(largest_)));
  if (notNumbers_ > 0)
    say(formatText("  ** %lld sample%s no number (NaN).", notNumbers_, notNumbers_ == 1 ? " is" : "s are"));
}

}  // namespace

std::unique_ptr<TraceOutput> makeTraceOutput(ProcessRecord* procRecord, const int* block, std::string told) {
  const auto refuse = [&](const char* line) {
    ProcessConsole(procRecord, line);
    return nullptr;
  };
  if (procRecord->diskFileOutputType == OUTPUT_CHECK) return std::make_unique<CheckOutput>(procRecord);
  const UnitStruct* const units = GetDevUnit(procRecord);
  if (units == nullptr || (units[1].type != UT_DISK && units[1].type != UT_TAPE))
    return refuse("  *** Error: there is no output.");
  if (procRecord->diskFileOutputType == OUTPUT_SEGY) {
    const auto* const how = blockOf<KyrSegyOutput>(block, KYR_SEGY_OUTPUT);
    if (how == nullptr)
      return refuse("  *** The parameters of the SEG Y output are not those of this program's module.");
    return std::make_unique<SegyTraceOutput>(procRecord, *how, std::move(told));
  }
  if (procRecord->diskFileOutputType != OUTPUT_DATASET) return refuse("  *** This output format cannot be written.");
  if (blockOf<KyrDatasetOutput>(block, KYR_DATASET_OUTPUT) == nullptr)
    return refuse("  *** The parameters of the dataset output are not those of this program's module.");
  if (units[1].type != UT_DISK) return refuse("  *** A dataset cannot be written to tape.");
  return std::make_unique<DatasetOutput>(procRecord);
}
