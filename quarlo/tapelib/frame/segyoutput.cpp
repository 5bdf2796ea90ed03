#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/formats/segywriter.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/outputkinds.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/rfmttape.h"
#include "quarlo/tapelib/frame/segytext.h"

namespace {

constexpr const char* kStandardDescription = "segy-rev1.txt";

/// What a header's 32 bits hold of a count.
int intOf(std::int64_t count) {
  return static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max()));
}

long long longOf(std::int64_t count) { return count; }

class SegyTraceOutput : public TraceOutput {
 public:
  SegyTraceOutput(ProcessRecord* procRecord, const KyrSegyOutput& how, std::string told)
      : record_(procRecord), units_(GetDevUnit(procRecord)), how_(how), told_(std::move(told)) {}

  bool begin(const TraceCounts& counts, Link from) override;
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd end, int records, int largest) override;
  std::int64_t lost() const override { return disk_.lost().traces - refused_; }
  void tellSummary() override;

 private:
  bool loadDescription();
  void tellInterval(double microseconds);
  bool writeReelHeaders();
  static short headerCount(int traces);
  void amendCount(int largest);
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
  std::int64_t written_ = 0;  // accepted
  int refused_ = 0;           // the trace that the disk did not take, which was not accepted
  std::int64_t onTape_ = 0;   // of these, on the present tapes
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
  tellInterval(counts.interval * 1e6);
  const auto headerBytes = static_cast<std::size_t>(segyHeaderBytes(format_, false));
  header_.resize(headerBytes);
  trace_.resize(headerBytes +
                static_cast<std::size_t>(GetSegyBytes(sampleFormat_)) * static_cast<std::size_t>(counts.samples));
  if (!writeReelHeaders()) return false;
  begun_ = true;
  if (!isTape()) disk_.beginBehind(units_[1].fp, units_[1].name);
  return true;
}

void SegyTraceOutput::tellInterval(double microseconds) {
  format_.itsExactInterval = microseconds;
  const SegyField* const wider = getReplacement(format_.itsBinaryFields, "Dt");
  const bool isKept = wider != nullptr && wider->itsType == doubleFloatType;
  if (!isKept && std::abs(microseconds - std::round(microseconds)) > 1e-6 * microseconds)
    say(formatText("  ** The sample interval of %.9g microseconds is written as %.0f.", microseconds,
                   std::round(microseconds)));
}

short SegyTraceOutput::headerCount(int traces) {
  return static_cast<short>(std::min<int>(traces, std::numeric_limits<short>::max()));
}

/// What was announced may have been more than came.
void SegyTraceOutput::amendCount(int largest) {
  if (headerCount(largest) == headerCount(counts_.tracesPerRecord)) return;
  const std::string path = pathOf(units_[1].fs);
  if (!amendTracesPerRecord(path, &format_, headerCount(largest)))
    say(formatText("  ** The binary header of %s keeps the announced count of traces a record: %s.", path.c_str(),
                   std::strerror(errno)));
}

bool SegyTraceOutput::writeReelHeaders() {
  const std::string text = segyTextLines(told_, format_, sampleFormat_, counts_, how_);
  return initSegyOut(record_, &format_, headerCount(counts_.tracesPerRecord), 0, interval_, counts_.samples,
                     static_cast<short>(sampleFormat_), 0, 0, 0, text.c_str()) == 0;
}

/// A trace number that the input has stays; others get the number of their place in the output.
void SegyTraceOutput::build(const float* samples, const TraceInfo& header) {
  std::ranges::fill(header_, '\0');
  constexpr int kDead = 2;
  const int type = IsDead(header) ? kDead : tracePropertyOr(header, trTraceType, 1);
  const int number = tracePropertyOr(header, trTraceNumber, 0);
  if (format_.itHasTraceHeader != 0) {
    fillMappedFields(&format_, header_.data(), header);
    fillTraceHeader(&format_, header_.data(), number != 0 ? number : intOf(written_ + 1),
                    tracePropertyOr(header, trFieldFile, 0), tracePropertyOr(header, trChannel, 0), type,
                    counts_.samples, interval_);
  }
  BuildSegyTrace(&format_, sampleFormat_, header_.data(), samples, trace_.data(), counts_.samples);
}

TracePutAnswer SegyTraceOutput::put(int /*record*/, int /*trace*/, const float* samples, const TraceInfo& header) {
  if ((IsDead(header) && how_.deadTraces == 0) || (how_.stripAuxiliary != 0 && isAuxiliaryTrace(header)))
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
    say(formatText("  *** Error writing trace %lld to output device.", longOf(written_ + 1 - lost())));
    return TracePutAnswer::Failed;
  }
  for (;;) {
    const TapeWrite taken = writeToOutputTapes(units_, trace_);
    if (taken == TapeWrite::Written) return TracePutAnswer::Written;
    // A tape that is full before its first trace would be followed by others for ever.
    if (taken == TapeWrite::Failed || onTape_ == 0) {
      say(formatText("  *** Error writing trace %lld to output device.", longOf(written_ + 1)));
      return TracePutAnswer::Failed;
    }
    if (const TracePutAnswer next = nextTapes(); next != TracePutAnswer::Written) return next;
  }
}

TracePutAnswer SegyTraceOutput::nextTapes() {
  say(formatText("Output tape %d is full with %s.", tape_, counted(onTape_, "trace").c_str()));
  if (!completeOutputTapes(units_, 2)) {
    say("  *** Error writing double end-of-file to output tape.");
    return TracePutAnswer::Failed;
  }
  onTape_ = 0;
  if (doOutTapeContinue(record_) == 0) {
    say(formatText("  *** Trace %lld and what follows it were not written.", longOf(written_ + 1)));
    return TracePutAnswer::Declined;
  }
  say(formatText("Continuing output on tape %d.", ++tape_));
  if (writeReelHeaders()) return TracePutAnswer::Written;
  say("  *** Error writing to output tape.");
  return TracePutAnswer::Failed;
}

/// The marks of tapes are the business of who runs the module; a tape that ended here got its own.
bool SegyTraceOutput::finish(JobEnd /*end*/, int /*records*/, int largest) {
  if (!begun_ || isTape()) return true;
  const bool whole = disk_.flush();
  amendCount(largest);
  DiskSync sync;
  sync.add(units_[1].fp, pathOf(units_[1].fs));
  const bool synced = sync.wait([this](const DiskSync::Failure& failure) { say(diskErrorText(failure)); });
  return synced && whole;
}

void SegyTraceOutput::tellSummary() {
  if (isTape() && tape_ > 1) say(formatText("%d output tapes.", tape_));
}

}  // namespace

std::unique_ptr<TraceOutput> makeSegyOutput(ProcessRecord* procRecord, const KyrSegyOutput& how, std::string told) {
  return std::make_unique<SegyTraceOutput>(procRecord, how, std::move(told));
}
