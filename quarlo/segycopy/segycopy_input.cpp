#include "quarlo/segycopy/segycopy_input.h"

#include <algorithm>
#include <utility>

#include "libkyr/byteorder.h"
#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/segycopy/segycopy_report.h"
#include "quarlo/segycopy/segysel.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/tapechange.h"

namespace {

constexpr RetryWords kRetryWords = {"  *** Error reading from input tape - retrying...",
                                    "Retries failed. Skipping trace.",
                                    "  *** Too many sequential bad blocks. Aborting."};
constexpr TapeChangeWords kInputWords = {"Tape finished.", "Magazine finished.", "  "};

constexpr int kReelHeaders = 2;  // blocks: the text and the binary header

bool assign(std::vector<char>* header, std::span<const char> bytes) {
  header->assign(bytes.begin(), bytes.end());
  return true;
}

}  // namespace

int SampleFacts::traceBytes() const { return kTraceHeaderBytes + samples * (format == 3 ? 2 : 4); }

bool SegyInput::takeBinary(std::span<const char> header) {
  assign(&BinaryHdr, header);
  if (BinarySize() < kBinaryFormatCode.end()) {
    console_printf("  *** The binary header has %d bytes, too few to say what the traces are.", BinarySize());
    return false;
  }
  facts.interval = static_cast<int>(kBinarySampleInterval.in(BinaryHdr.data()));
  // Counts above 32767 exist: the field is then meant without a sign.
  facts.samples = static_cast<std::uint16_t>(static_cast<int>(kBinarySampleCount.in(BinaryHdr.data())));
  facts.format = static_cast<int>(kBinaryFormatCode.in(BinaryHdr.data()));
  return true;
}

// ---- disk -------------------------------------------------------------------------------------------------------

DirectoryFiles listSegyFiles(const DIRECTORY& directory, const std::string& outputPath) {
  DirectoryFiles found = listFiles(directory, "*.sgy");
  std::erase_if(found.names, [&](const std::string& name) {
    return sameFile(joinPath(fieldText(directory.path), name).c_str(), outputPath.c_str());
  });
  return found;
}

SegyDiskInput::SegyDiskInput(UnitStruct* allUnits, std::vector<std::string> files)
    : SegyInput(allUnits), TheList(std::move(files)) {
  reader_.beforeRefill = [this] { letGo(); };
}

bool SegyDiskInput::open() {
  if (!TheList.empty()) return openListed();
  if (units_->fp == nullptr) {
    console_printf("***  Error opening file %s", units_->name);
    return false;
  }
  reader_.begin(units_->fp);
  size_ = static_cast<double>(fileSize(units_->fp).value_or(0));
  begun_ = 1;
  return true;
}

/// Opens the next file of the list as unit 0.
bool SegyDiskInput::openListed() {
  const std::string& name = TheList[static_cast<std::size_t>(begun_)];
  closeDiskUnit(units_);
  FILE_SPEC file = units_->fs;
  if (!copyText(file.name, name) || !openDiskUnit(units_, file, "rb")) {
    console_printf("***  Error opening file %s", name.c_str());
    return false;
  }
  ++begun_;
  console_printf("Input file %d: %s", begun_, name.c_str());
  reader_.begin(units_->fp);
  size_ = static_cast<double>(fileSize(units_->fp).value_or(0));
  return true;
}

bool SegyDiskInput::readEbcdic() {
  const auto header = reader_.take(kEbcdicHeaderBytes);
  if (header.size() < kEbcdicHeaderBytes) {
    console_out("  *** Error reading EBCDIC header from input file.");
    return false;
  }
  return assign(&EbcdicHdr, header);
}

bool SegyDiskInput::readBinary() {
  const auto header = reader_.take(kBinaryHeaderBytes);
  if (header.size() < kBinaryHeaderBytes) {
    console_out("  *** Error reading binary header from input file.");
    return false;
  }
  if (!takeBinary(header)) return false;
  warnOfUnusualFile(BinaryHdr);
  // Joined inputs are all read with the first one's trace length.
  if (begun_ > 1 && SgyParams.concatInputs) return true;
  traceBytes_ = static_cast<std::size_t>(facts.traceBytes());
  return traceLengthIsSound();
}

bool SegyDiskInput::traceLengthIsSound() {
  const double data = size_ - kEbcdicHeaderBytes - kBinaryHeaderBytes;
  if (facts.samples == 0) {
    console_printf("  *** The binary header of \"%s\" announces traces of 0 samples.", units_->name);
    return false;
  }
  if (data > 0 && data < static_cast<double>(traceBytes_)) {
    console_printf(
        "  *** The binary header of \"%s\" announces %d samples a trace (%zu bytes); the file holds %.0f bytes of "
        "data.",
        units_->name, facts.samples, traceBytes_, data);
    return false;
  }
  return true;
}

SegyItem SegyDiskInput::next(std::span<const char>* trace) {
  *trace = reader_.take(traceBytes_);
  if (trace->size() == traceBytes_) return SegyItem::Trace;
  if (reader_.failed()) {
    console_out("  *** Error reading trace from input file.");
    return SegyItem::Failed;
  }
  return endOfFile(trace->size());
}

SegyItem SegyDiskInput::endOfFile(std::size_t left) {
  if (left > 0)
    console_printf("  ** The last %zu bytes of \"%s\" are no whole trace and are not copied.", left, units_->name);
  if (TheList.empty()) return SegyItem::End;
  if (static_cast<std::size_t>(begun_) == TheList.size()) {
    console_out("");
    return SegyItem::End;
  }
  return openListed() && readEbcdic() && readBinary() ? SegyItem::NewInput : SegyItem::Failed;
}

int SegyDiskInput::percent(double bytesRead) const {
  const double share = TheList.empty() ? (size_ > 0 ? bytesRead / size_ : 0)
                                       : static_cast<double>(begun_ - 1) / static_cast<double>(TheList.size());
  return static_cast<int>(std::min(100.0, share * 100));
}

// ---- tape -------------------------------------------------------------------------------------------------------

SegyTapeInput::SegyTapeInput(UnitStruct* allUnits) : SegyInput(allUnits), reader_(allUnits, kRetryWords) {}

bool SegyTapeInput::readHeader(const char* name, std::vector<char>* header) {
  letGo();
  const TapeRead read = reader_.readOnce();
  if (read.kind == TapeRead::Kind::Block) return assign(header, read.in(units_->ioBuffer));
  console_printf(read.failed() ? "  *** Error reading %s header from input tape."
                               : "  *** EOF encountered while reading %s header from input tape.",
                 name);
  return false;
}

bool SegyTapeInput::readEbcdic() {
  begun_ = std::max(begun_, 1);
  return readHeader("EBCDIC", &EbcdicHdr);
}

bool SegyTapeInput::readBinary() {
  std::vector<char> header;
  if (!readHeader("binary", &header) || !takeBinary(header)) return false;
  warnOfUnusualFile(BinaryHdr);
  return true;
}

SegyItem SegyTapeInput::next(std::span<const char>* trace) {
  letGo();
  const TapeRead read = reader_.read();
  switch (read.kind) {
    case TapeRead::Kind::Block:
      *trace = read.in(units_->ioBuffer);
      return SegyItem::Trace;
    case TapeRead::Kind::Mark:
    case TapeRead::Kind::EndOfData:
      return takeMark(read);
    case TapeRead::Kind::Skipped:
      return SegyItem::Nothing;
    default:
      break;
  }
  console_out("  *** Error reading trace from input tape.");
  if (SgyParams.rangeLimit) console_printf("    Previous trace primary header value   = %.4lf.", Primary);
  if (SgyParams.rangeLimit && !limitsByPolygon(SgyParams) && SgyParams.listParams.useSec)
    console_printf("    Previous trace secondary header value = %.4lf.", Secondary);
  return SegyItem::Failed;
}

/// The block behind a mark is the next file's textual header. Behind the end of the recorded data there is nothing to
/// read.
SegyItem SegyTapeInput::takeMark(TapeRead met) {
  if (!SgyParams.multipleIn) return nextTape();
  if (met.kind == TapeRead::Kind::Mark) met = reader_.readOnce();
  EbcdicHdr.clear();
  if (met.failed()) {
    console_out("  *** Error reading EBCDIC header from input tape.");
    return SegyItem::Failed;
  }
  if (met.kind != TapeRead::Kind::Block) return nextTape();
  assign(&EbcdicHdr, met.in(units_->ioBuffer));
  return beginInput();
}

/// Joined inputs count as one.
SegyItem SegyTapeInput::beginInput() {
  if (!SgyParams.concatInputs) ++begun_;
  return readBinary() ? SegyItem::NewInput : SegyItem::Failed;
}

SegyItem SegyTapeInput::nextTape() {
  if (nextInputTape(units_, kInputWords) == 0) return SegyItem::End;
  reader_.place.nextTape();
  if (!SgyParams.multipleIn) {
    if (tlv_skip_blocks(units_, 0, kReelHeaders) != 0) {
      console_out("  *** The two header blocks of this tape could not be skipped.");
      return SegyItem::Failed;
    }
    reader_.place.passBlocks(kReelHeaders);
    return SegyItem::Nothing;
  }
  return readEbcdic() ? beginInput() : SegyItem::Failed;
}
