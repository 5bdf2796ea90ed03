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

constexpr TapeChangeWords OUTPUT_WORDS = {"Tape finished.", "Magazine finished.", "  ", logMessage};
constexpr std::size_t BYTES_PER_SCAN_AT = 19;
constexpr char BLOCKED = 16;  // what the general header of blocked traces holds there
constexpr std::size_t PREPEND_BLOCK = 1024;

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
    : units(allUnits), notToWrite(taken), BlockTraces(isTape() && SgdParams.blockTraces) {
  if (!isTape()) copyText(SgdParams.outDir, fieldText(units[1].fs.dir.path));
}

// ---- field files ------------------------------------------------------------------------------------------------

bool SegdOutput::beginFile(int number) {
  if (!isTape()) return openFile(joinPath(fieldText(SgdParams.outDir), nameOf(nameBegin(units[1]), number)));
  outputName = "the output tape";
  return true;
}

bool SegdOutput::putHeader(std::vector<char> header) {
  if (!isTape()) return disk.write(header, false) || writeError();
  if (BlockTraces && header.size() > BYTES_PER_SCAN_AT) header[BYTES_PER_SCAN_AT] = BLOCKED;
  fileIsOpen = writeTape(header);
  gone.headerBytes += fileIsOpen ? 0 : static_cast<double>(header.size());
  return fileIsOpen;
}

bool SegdOutput::openFile(const std::string& path) {
  outputName = path;
  if (notToWrite.inputs.holds(path)) {
    logMessagef("  *** Output file %s is an input of this job and is not written.", path.c_str());
    return false;
  }
  const bool again = written.holds(path);
  if (notToWrite.others.holds(path) || (again && !SgdParams.ffidOption)) {
    logMessagef("  *** Output file %s is used by this job already and is not written.", path.c_str());
    return false;
  }
  if (again) logMessagef("  ** Output file %s is written again: what it held of this job is replaced.", path.c_str());
  // The pieces come through a buffer of their own.
  stream = ::openFile(path.c_str(), "wb", 0);
  if (!stream) {
    sayIfLocked(path);
    logMessagef("  *** Error opening output file %s - job will abort.", path.c_str());
    return false;
  }
  SgdParams.theFile = stream.get();
  written.add(path);
  disk.begin(stream.get(), path.c_str());
  fileIsOpen = true;
  return true;
}

/// The error that ends the job, said once.
bool SegdOutput::writeError() {
  if (!std::exchange(errorSaid, true)) {
    logMessage(isTape() ? "  *** Error writing to output tape - job will abort."
                        : "  *** Error writing to output file - job will abort.");
  }
  return false;
}

bool SegdOutput::endFile() {
  if (!std::exchange(fileIsOpen, false)) return true;
  if (isTape()) {
    const bool whole = flushBlock();
    return (writeMark() || writeError()) && whole;
  }
  SgdParams.theFile = nullptr;
  const bool whole = disk.flush();
  sync.add(stream.get(), outputName);
  return (closeFile(stream) && whole) || writeError();
}

// ---- traces -----------------------------------------------------------------------------------------------------

bool SegdOutput::putSegdTrace(std::span<const char> trace, int channelSet, bool lent) {
  if (!isTape()) return (lent ? disk.writeLent(trace, true) : disk.write(trace, true)) || writeError();
  if (!BlockTraces) return writeTape(trace) || loseTrace(trace.size());
  const bool fits = TraceBlock.size() + trace.size() <= blockLimit() && channelSet == LastChannelSet;
  if (!TraceBlock.empty() && !fits && !flushBlock()) return loseTrace(trace.size());
  TraceBlock.insert(TraceBlock.end(), trace.begin(), trace.end());
  ++tracesInBlock;
  LastChannelSet = channelSet;
  return true;
}

bool SegdOutput::loseTrace(std::size_t bytes) {
  ++gone.traces;
  gone.bytes += static_cast<double>(bytes);
  return false;
}

/// A block that a drive does not take would end every job.
std::size_t SegdOutput::blockLimit() const {
  std::size_t limit = TRACE_BLOCK_BYTES;
  for (int uNum = 1; uNum <= units->nOutputs; ++uNum) limit = std::min<std::size_t>(limit, units[uNum].maxBlockSize);
  return limit;
}

bool SegdOutput::flushBlock() {
  if (TraceBlock.empty()) return true;
  const bool done = writeTape(TraceBlock);
  if (!done) {
    gone.traces += tracesInBlock;
    gone.bytes += static_cast<double>(TraceBlock.size());
  }
  TraceBlock.clear();
  tracesInBlock = 0;
  return done;
}

// ---- tapes ------------------------------------------------------------------------------------------------------

bool SegdOutput::writeBlock(std::span<const char> piece) {
  const int bytes = static_cast<int>(piece.size());
  if (tlv_tape_write(units, ALL_OUTPUTS, piece.data(), bytes) < bytes) return false;
  BytesOut += bytes;
  return true;
}

bool SegdOutput::writeTape(std::span<const char> piece) { return writeBlock(piece) || writeError(); }

bool SegdOutput::writeMark() { return tlv_weof(units, ALL_OUTPUTS, 1) == 0; }

bool SegdOutput::prependFile(const std::string& path) {
  logMessage(" ");
  logMessagef("Prepending disk file %s", path.c_str());
  logMessage(" ");
  const std::optional<std::uint64_t> size = fileSize(SgdParams.prepFp);
  std::size_t left = static_cast<std::size_t>(size.value_or(0));
  std::vector<char> block;
  do {
    const std::size_t bytes = left < 2 * PREPEND_BLOCK ? left : PREPEND_BLOCK;
    block.assign(std::max(bytes, PREPEND_BLOCK), ' ');
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
  if (!completeOutputTapes(units, 2)) {
    writeError();
    return Tapes::Failed;
  }
  if (nextOutputTapes(units, OUTPUT_WORDS) == 0) {
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
    return sync.wait([](const DiskSync::Failure& failure) { logMessage(diskErrorText(failure).c_str()); }) && ended;
  return closeOutputTapes(units, end, 1, logMessage) ? ended : writeError();
}
