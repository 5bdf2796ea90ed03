#include "quarlo/segdcopy/segdcopy_output.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

constexpr TapeChangeWords kOutputWords = {"Tape finished.", "Magazine finished.", "  ", logMessage};
constexpr std::size_t kBytesPerScanAt = 19;
constexpr char kBlocked = 16;  // what the general header of blocked traces holds there
constexpr std::size_t kPrependBlock = 1024;

/// What the names of the output files begin with: as set, else as the file does that the directory was chosen by.
std::string nameBegin(const UnitStruct& unit) {
  const std::string_view set = fieldText(SgdParams.outFile);
  const std::string_view name = set.empty() ? fieldText(unit.fs.name) : set;
  return std::string(name.substr(0, name.rfind('.')));
}

std::string nameOf(const std::string& begin, int number) {
  std::string digits = formatText("%5d", number);
  std::replace(digits.begin(), digits.end(), ' ', '0');
  return formatText("%s_%s.sgd", begin.c_str(), digits.c_str());
}

}  // namespace

SegdOutput::SegdOutput(UnitStruct* allUnits, const SegdTakenFiles& taken)
    : units_(allUnits), notToWrite_(taken), BlockTraces(isTape() && SgdParams.blockTraces) {
  if (!isTape()) copyText(SgdParams.outDir, fieldText(units_[1].fs.dir.path));
}

// ---- field files ------------------------------------------------------------------------------------------------

bool SegdOutput::beginFile(int number) {
  if (!isTape()) return openFile(joinPath(fieldText(SgdParams.outDir), nameOf(nameBegin(units_[1]), number)));
  outputName_ = "the output tape";
  return true;
}

bool SegdOutput::putHeader(std::vector<char> header) {
  if (!isTape()) return disk_.write(header, false) || writeError();
  if (BlockTraces && header.size() > kBytesPerScanAt) header[kBytesPerScanAt] = kBlocked;
  fileIsOpen_ = writeTape(header);
  gone_.headerBytes += fileIsOpen_ ? 0 : static_cast<double>(header.size());
  return fileIsOpen_;
}

bool SegdOutput::openFile(const std::string& path) {
  outputName_ = path;
  if (notToWrite_.inputs.holds(path)) {
    logMessagef("  *** Output file %s is an input of this job and is not written.", path.c_str());
    return false;
  }
  const bool again = written_.holds(path);
  if (notToWrite_.others.holds(path) || (again && !SgdParams.ffidOption)) {
    logMessagef("  *** Output file %s is used by this job already and is not written.", path.c_str());
    return false;
  }
  if (again) logMessagef("  ** Output file %s is written again: what it held of this job is replaced.", path.c_str());
  // The pieces come through a buffer of their own.
  stream_ = ::openFile(path.c_str(), "wb", 0);
  if (!stream_) {
    sayIfLocked(path);
    logMessagef("  *** Error opening output file %s - job will abort.", path.c_str());
    return false;
  }
  SgdParams.theFile = stream_.get();
  written_.add(path);
  disk_.begin(stream_.get(), path.c_str());
  fileIsOpen_ = true;
  return true;
}

/// The error that ends the job, said once.
bool SegdOutput::writeError() {
  if (!std::exchange(errorSaid_, true)) {
    logMessage(isTape() ? "  *** Error writing to output tape - job will abort."
                        : "  *** Error writing to output file - job will abort.");
  }
  return false;
}

bool SegdOutput::endFile() {
  if (!std::exchange(fileIsOpen_, false)) return true;
  if (isTape()) {
    const bool whole = flushBlock();
    return (writeMark() || writeError()) && whole;
  }
  SgdParams.theFile = nullptr;
  const bool whole = disk_.flush();
  sync_.add(stream_.get(), outputName_);
  return (closeFile(stream_) && whole) || writeError();
}

// ---- traces -----------------------------------------------------------------------------------------------------

bool SegdOutput::putSegdTrace(std::span<const char> trace, int channelSet, bool lent) {
  if (!isTape()) return (lent ? disk_.writeLent({}, trace, true) : disk_.write(trace, true)) || writeError();
  if (!BlockTraces) return writeTape(trace) || loseTrace(trace.size());
  const bool fits = TraceBlock.size() + trace.size() <= blockLimit() && channelSet == LastChannelSet;
  if (!TraceBlock.empty() && !fits && !flushBlock()) return loseTrace(trace.size());
  TraceBlock.insert(TraceBlock.end(), trace.begin(), trace.end());
  ++tracesInBlock_;
  LastChannelSet = channelSet;
  return true;
}

bool SegdOutput::loseTrace(std::size_t bytes) {
  ++gone_.traces;
  gone_.bytes += static_cast<double>(bytes);
  return false;
}

/// A block that a drive does not take would end every job.
std::size_t SegdOutput::blockLimit() const {
  std::size_t limit = kTraceBlockBytes;
  for (int uNum = 1; uNum <= units_->nOutputs; ++uNum) limit = std::min<std::size_t>(limit, units_[uNum].maxBlockSize);
  return limit;
}

bool SegdOutput::flushBlock() {
  if (TraceBlock.empty()) return true;
  const bool done = writeTape(TraceBlock);
  if (!done) {
    gone_.traces += tracesInBlock_;
    gone_.bytes += static_cast<double>(TraceBlock.size());
  }
  TraceBlock.clear();
  tracesInBlock_ = 0;
  return done;
}

// ---- tapes ------------------------------------------------------------------------------------------------------

bool SegdOutput::writeBlock(std::span<const char> piece) {
  const int bytes = static_cast<int>(piece.size());
  if (tlv_tape_write(units_, kAllOutputs, piece.data(), bytes) < bytes) return false;
  BytesOut += bytes;
  return true;
}

bool SegdOutput::writeTape(std::span<const char> piece) { return writeBlock(piece) || writeError(); }

bool SegdOutput::writeMark() { return tlv_weof(units_, kAllOutputs, 1) == 0; }

bool SegdOutput::prependFile(const std::string& path) {
  logMessage(" ");
  logMessagef("Prepending disk file %s", path.c_str());
  logMessage(" ");
  const std::optional<std::uint64_t> size = fileSize(SgdParams.prepFp);
  std::size_t left = static_cast<std::size_t>(size.value_or(0));
  std::vector<char> block;
  do {
    const std::size_t bytes = left < 2 * kPrependBlock ? left : kPrependBlock;
    block.assign(std::max(bytes, kPrependBlock), ' ');
    if (!size || std::fread(block.data(), 1, bytes, SgdParams.prepFp) < bytes) {
      logMessage("  *** Error reading prepend file for output to tape.");
      return false;
    }
    left -= bytes;
    if (!writeBlock(block)) {
      logMessage("  *** Error outputting prepend file to tape.");
      return false;
    }
  } while (left > 0);
  if (writeMark()) return true;
  logMessage("  *** Error outputting prepend file to tape.");
  return false;
}

SegdOutput::Tapes SegdOutput::handleFullOutput() {
  logMessage(" ");
  logMessagef("End of output tape %d", OutputTapeNumber);
  logMessagef("%d Field Files output to this tape.", FilesPerTape);
  FilesPerTape = 0;
  logMessage(" ");
  console_out("Writing double end-of-file to output tape.");
  if (!completeOutputTapes(units_, 2)) {
    writeError();
    return Tapes::Failed;
  }
  if (nextOutputTapes(units_, kOutputWords) == 0) {
    logMessage(" ");
    logMessage("No more output. Job will end.");
    return Tapes::Declined;
  }
  logMessage(" ");
  logMessagef("Start of output tape %d", ++OutputTapeNumber);
  BytesOut = 0;
  return Tapes::Ready;
}

/// The mark of the last field file stands already, unless it failed.
bool SegdOutput::finish(JobEnd end) {
  const bool ended = endFile();
  if (!isTape())
    return sync_.wait([](const DiskSync::Failure& failure) { logMessage(diskErrorText(failure).c_str()); }) && ended;
  return closeOutputTapes(units_, end, 1, logMessage) ? ended : writeError();
}
