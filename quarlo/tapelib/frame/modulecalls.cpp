#include "quarlo/tapelib/modulecalls.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "libkyr/process.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/rfmttape.h"
#include "quarlo/tapelib/frame/tapechange.h"
#include "quarlo/tapelib/frame/taperead.h"

namespace {

/// The record's unit, or null.
UnitStruct* unitOf(const ProcessRecord* job, int unit) {
  const bool known = job != nullptr && job->deviceUnit != nullptr && (unit == KYR_INPUT || unit == KYR_OUTPUT);
  return known ? job->deviceUnit + unit : nullptr;
}

bool isTape(const ProcessRecord* job, int unit) { return kyrIsTape(job, unit) == 1; }

/// An error line with the system's reason behind it. @return -1
int failed(ProcessRecord* job, const char* what) {
  kyrSay(job, formatText("  *** Error %s: %s.", what, std::strerror(errno)).c_str());
  return -1;
}

/// The stream of an open disk unit, or null after a console line.
std::FILE* openStream(ProcessRecord* job, int unit) {
  UnitStruct* disk = unitOf(job, unit);
  if (disk != nullptr && disk->type == UT_DISK && disk->fp != nullptr) return disk->fp;
  kyrSay(job, unit == KYR_INPUT ? "  *** Error: the input is not open." : "  *** Error: the output is not open.");
  return nullptr;
}

int readTape(ProcessRecord* job, void* buffer, int bytes) {
  UnitStruct* units = job->deviceUnit;
  const TapeRead read = readUnit(units, KYR_INPUT, units->ioBuffer, bytes);
  if (read.kind == TapeRead::Kind::EndOfData) return KYR_END;
  if (read.kind == TapeRead::Kind::Mark) return KYR_MARK;
  if (read.kind != TapeRead::Kind::Block) return KYR_FAILED;
  if (read.bytes > bytes) {
    kyrSay(job, formatText("  *** Error: a block of %d bytes is longer than %d bytes.", read.bytes, bytes).c_str());
    return KYR_FAILED;
  }
  std::memcpy(buffer, units->ioBuffer, static_cast<std::size_t>(read.bytes));
  return read.bytes;
}

/// The tapes of a unit number: the input, or all outputs.
int tapesOf(int unit) { return unit == KYR_INPUT ? 0 : kAllOutputs; }

/// The progress dialog of the run. Its second counter of a tape is the number of the next file.
struct Progress {
  explicit Progress(int inputType) : frame(JOB_TRACES_OUT, inputType, &traces, &part, &part) {}

  int traces = 0;
  int part = 0;
  JobFrame frame;
};
std::unique_ptr<Progress> progress;

}  // namespace

void kyrSay(ProcessRecord* job, const char* line) { do_console_out(job, line); }

int kyrGoOn() {
  if (progress) return progress->frame.goOn() ? 1 : 0;
  xvt_app_process_pending_events();
  // A job that begins while a stop is wished for is told so: this one only asks.
  int stop = 0;
  const RunningJob question(&stop);
  return stop == 0 && !xvt_app_is_ending() ? 1 : 0;
}

int kyrProgress(ProcessRecord* job, int traces, int part) {
  const bool fromTape = isTape(job, KYR_INPUT);
  if (!progress) {
    progress = std::make_unique<Progress>(fromTape ? UT_TAPE : UT_DISK);
    if (!progress->frame.isOpen()) {
      progress.reset();
      return -1;
    }
  }
  progress->traces = traces;
  progress->part = fromTape ? part + 1 : part;
  return 0;
}

void kyrProgressEnd() { progress.reset(); }

int kyrIsTape(const ProcessRecord* job, int unit) {
  const UnitStruct* chosen = unitOf(job, unit);
  if (chosen == nullptr) return -1;
  if (chosen->type == UT_TAPE) return 1;
  return chosen->fs.name[0] != '\0' ? 0 : -1;
}

int kyrPath(const ProcessRecord* job, int unit, char* path, int size) {
  if (size > 0) path[0] = '\0';
  if (size <= 0 || kyrIsTape(job, unit) != 0) return -1;
  const std::string whole = pathOf(unitOf(job, unit)->fs);
  if (whole.size() >= static_cast<std::size_t>(size)) return -1;
  copyText(path, static_cast<std::size_t>(size), whole);
  return 0;
}

int kyrOpen(ProcessRecord* job, int unit) {
  UnitStruct* chosen = unitOf(job, unit);
  if (chosen != nullptr && chosen->state != 0 && (chosen->type == UT_TAPE || chosen->fp != nullptr)) return 0;
  if (kyrIsTape(job, unit) != 0) {
    kyrSay(job, unit == KYR_INPUT ? "  *** Error: there is no input." : "  *** Error: there is no output.");
    return -1;
  }
  const FILE_SPEC file = chosen->fs;
  if (openDiskUnit(chosen, file, unit == KYR_INPUT ? "rb" : "wb")) return 0;
  return failed(job, formatText("opening file %s", pathOf(file).c_str()).c_str());
}

int kyrBlockLimit(const ProcessRecord* job) {
  const UnitStruct* input = unitOf(job, KYR_INPUT);
  return input != nullptr ? static_cast<int>(input->ioBufLen) : 0;
}

int kyrRead(ProcessRecord* job, void* buffer, int bytes) {
  if (bytes <= 0) return 0;
  if (isTape(job, KYR_INPUT)) return readTape(job, buffer, bytes);
  std::FILE* stream = openStream(job, KYR_INPUT);
  if (stream == nullptr) return -1;
  const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(bytes), stream);
  if (std::ferror(stream) != 0) return failed(job, "reading the input disk file");
  return static_cast<int>(count);
}

int kyrWrite(ProcessRecord* job, const void* buffer, int bytes) {
  if (bytes <= 0) return 0;
  const auto count = static_cast<std::size_t>(bytes);
  if (isTape(job, KYR_OUTPUT)) {
    const TapeWrite written = writeToOutputTapes(job->deviceUnit, {static_cast<const char*>(buffer), count});
    return written == TapeWrite::Written ? bytes : written == TapeWrite::Full ? int{KYR_END} : int{KYR_FAILED};
  }
  std::FILE* stream = openStream(job, KYR_OUTPUT);
  if (stream == nullptr) return -1;
  return std::fwrite(buffer, 1, count, stream) == count ? bytes : failed(job, "writing the output disk file");
}

int kyrMark(ProcessRecord* job, int count) {
  if (count <= 0 || !isTape(job, KYR_OUTPUT)) return 0;
  return tlv_weof(job->deviceUnit, kAllOutputs, count) == 0 ? 0 : -1;
}

int kyrNextTape(ProcessRecord* job, int unit) {
  if (!isTape(job, unit)) return 0;
  if (unit == KYR_INPUT) return doTapeContinue(job);
  return closeOutputTapes(job->deviceUnit, JobEnd::Success, 1) ? doOutTapeContinue(job) : -1;
}

int kyrRewind(ProcessRecord* job, int unit) {
  if (isTape(job, unit)) return tlv_rewind(job->deviceUnit, tapesOf(unit)) == 0 ? 0 : -1;
  std::FILE* stream = openStream(job, unit);
  if (stream == nullptr) return -1;
  return fseeko(stream, 0, SEEK_SET) == 0 ? 0 : failed(job, "going back in a disk file");
}
