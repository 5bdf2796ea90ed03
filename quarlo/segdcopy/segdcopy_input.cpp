#include "quarlo/segdcopy/segdcopy_input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <new>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy_log.h"
#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/segdcopy/segdlist.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segdblocks.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/tapechange.h"

namespace {

// No block of a field file is passed over.
constexpr RetryWords kRetryWords = {"  ** Tape read error - retrying...", nullptr, nullptr, logMessage};
constexpr TapeChangeWords kInputWords = {"Tape finished.", "Magazine finished.", "  ", logMessage};
constexpr int kTwoBlocks = 2 * kSegdBlockBytes;

/// `text` with what a shell pattern would take as its own put behind backslashes.
std::string literalPattern(std::string_view text) {
  std::string pattern;
  for (const char letter : text) {
    if (std::string_view("*?[]\\").find(letter) != std::string_view::npos) pattern += '\\';
    pattern += letter;
  }
  return pattern;
}

int keyOf(std::span<const char> trace) {
  return getHeaderField(trace.data(), SgdParams.trcLimByte, SgdParams.trcLimType);
}

}  // namespace

// ---- disk -------------------------------------------------------------------------------------------------------

DirectoryFiles listSegdFiles(const FILE_SPEC& file) {
  const std::string_view name = fieldText(file.name);
  const std::size_t dot = name.rfind('.');
  const std::string_view extension = dot == std::string_view::npos ? "" : name.substr(dot + 1);
  return listFiles(file.dir, ("*." + literalPattern(extension)).c_str());
}

SegdDiskInput::SegdDiskInput(UnitStruct* allUnits, std::vector<std::string> names)
    : SegdInput(allUnits), files_(std::move(names)), directory_(allUnits->fs.dir) {}

int SegdDiskInput::percent() const {
  return files_.empty() ? 0 : static_cast<int>(100 * static_cast<double>(next_) / static_cast<double>(files_.size()));
}

bool SegdDiskInput::complain(double place, const char* format, ...) const {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string what = formatTextV(format, arguments);
  va_end(arguments);
  logMessagef("  *** %s, byte %.0f: %s", InputFileName.c_str(), place + 1, what.c_str());
  return false;
}

SegdItem SegdDiskInput::getFieldFile() {
  if (next_ == files_.size()) return SegdItem::End;
  InputFileName = files_[next_++];
  if (!open()) {
    logMessagef("  *** Error opening input file %s - job will abort.", InputFileName.c_str());
    return SegdItem::Failed;
  }
  if (!readHeaders()) {
    logMessagef("  *** Error reading input file %s - job will abort.", InputFileName.c_str());
    return SegdItem::Failed;
  }
  return SegdItem::Data;
}

bool SegdDiskInput::open() {
  closeFile();
  FILE_SPEC file{};
  file.dir = directory_;
  if (!copyText(file.name, InputFileName) || !openDiskUnit(units_, file, "rb")) return false;
  reader_.begin(units_->fp);
  size_ = static_cast<double>(fileSize(units_->fp).value_or(0));
  return true;
}

void SegdDiskInput::closeFile() { closeDiskUnit(units_); }

bool SegdDiskInput::skipFile(int /*fieldFile*/) {
  closeFile();
  return true;
}

bool SegdDiskInput::readHeaders() {
  HeaderRecord.clear();
  position_ = 0;
  channelsRead_ = 0;
  firstExtensions_ = oddTrace_ = 0;
  fits_.reset();
  return readGeneralHeaders() && readChannelSets() &&
         takeHeader(double{kSegdBlockBytes} * GenHdr().extendFields, "extended headers") &&
         takeHeader(double{kSegdBlockBytes} * GenHdr().externalFields, "external headers") && sampleSizeIsKnown();
}

/// Appends the next bytes of the file to the header record.
bool SegdDiskInput::takeHeader(double bytes, const char* what) {
  if (bytes > bytesLeft())
    return complain(position_, "%.0f bytes of %s should follow; the file holds %.0f more.", bytes, what, bytesLeft());
  const std::span<const char> piece = reader_.take(static_cast<std::size_t>(bytes));
  HeaderRecord.insert(HeaderRecord.end(), piece.begin(), piece.end());
  position_ += static_cast<double>(piece.size());
  return static_cast<double>(piece.size()) == bytes;
}

bool SegdDiskInput::readGeneralHeaders() {
  if (!takeHeader(kSegdBlockBytes, "general header")) return false;
  if (const int bad = badGeneralHeaderByte(HeaderRecord.data()); bad != 0) {
    return complain(bad - 1, "the general header cannot be true (0x%02X is no number of blocks).",
                    static_cast<unsigned char>(HeaderRecord[static_cast<std::size_t>(bad) - 1]));
  }
  headers.getGenHeader(HeaderRecord.data());
  if (!takeHeader(double{kSegdBlockBytes} * (GenHdr().genHeaders - 1), "general headers")) return false;
  if (GenHdr().genHeaders > 1) headers.getOptGenHeaders(HeaderRecord.data() + kSegdBlockBytes);
  headers.getGenHdrSamples();
  headers.getRecordSize();
  return true;
}

bool SegdDiskInput::readChannelSets() {
  const double begin = position_;
  if (!takeHeader(headers.scanHeaderBytes(), "channel sets and skew blocks")) return false;
  const std::span<const char> blocks = std::span(HeaderRecord).subspan(static_cast<std::size_t>(begin));
  for (int i = 0; i < headers.TotalChannelSets(); ++i) {
    const std::ptrdiff_t at = std::ptrdiff_t{kSegdBlockBytes} * i;
    // Behind the first scan type skew blocks may be taken for descriptors: they hold what they hold.
    if (GenHdr().skewFields > 0 && i >= GenHdr().channelSets) break;
    if (const int bad = badScanHeaderByte(blocks.data() + at); bad != 0) {
      return complain(begin + static_cast<double>(at) + bad - 1,
                      "channel set descriptor %d cannot be true (0x%02X in its number of channels).", i + 1,
                      static_cast<unsigned char>(blocks.data()[at + bad - 1]));
    }
  }
  headers.getScanHeaders(blocks);
  NumberOfChannels = headers.NumberOfChannels();
  return true;
}

/// What the lengths of traces are made of; of no matter where there are no traces.
bool SegdDiskInput::sampleSizeIsKnown() {
  if (NumberOfChannels == 0) return true;
  const segdheader& header = GenHdr();
  if (header.bPS == 0) {
    return complain(2, "SEG D format code %d is unknown, and no file came before: the size of a sample is not known.",
                    header.fmtCode);
  }
  if (!isSegdFormat(header.fmtCode)) {
    logMessagef("  ** %s: SEG D format code %d is unknown; samples are taken as %g bytes, as in the file before.",
                InputFileName.c_str(), header.fmtCode, static_cast<double>(header.bPS));
  }
  if (header.sampInt == 0) {
    logMessagef("  ** %s, byte 23: the sample interval is 0; only trace header extensions tell how long traces are.",
                InputFileName.c_str());
  }
  return true;
}

SegdItem SegdDiskInput::getSegdTrace(std::span<const char>* trace) {
  if (channelsRead_ == NumberOfChannels) return endOfTraces();
  std::size_t headerBytes = 0;
  if (measureTrace(&headerBytes)) {
    const std::size_t bytes = headerBytes + static_cast<std::size_t>(headers.TraceSize);
    try {
      *trace = reader_.take(bytes);
    } catch (const std::bad_alloc&) {
      complain(position_, "not enough memory for a trace of %zu bytes.", bytes);
      *trace = {};
    }
    if (trace->size() == bytes) {
      const auto length = static_cast<double>(bytes);
      shortestTrace_ = channelsRead_ == 0 ? length : std::min(shortestTrace_, length);
      position_ += length;
      ++channelsRead_;
      traceIsLent = true;
      if (SgdParams.zeroTraces && traceInZeroRange(keyOf(*trace))) *trace = zeroed(*trace, headerBytes);
      return SegdItem::Data;
    }
  }
  adviseLengths("***");
  logMessagef("  *** Error reading input file %s - job will abort.", InputFileName.c_str());
  return SegdItem::Failed;
}

/// Finds out how long the next trace is. @param headerBytes receives its header's length with the extensions
bool SegdDiskInput::measureTrace(std::size_t* headerBytes) {
  if (bytesLeft() < kSegdTraceHeaderBytes) {
    return complain(position_, "trace %d of %d should follow; the file holds %.0f more byte%s%s.", channelsRead_ + 1,
                    NumberOfChannels, bytesLeft(), bytesLeft() == 1 ? "" : "s", extensionsText().c_str());
  }
  std::span<const char> begin = reader_.peek(kSegdTraceHeaderBytes);
  if (begin.size() < kSegdTraceHeaderBytes || !isTraceHeader(begin.data())) return false;
  *headerBytes = static_cast<std::size_t>(traceHeaderBytes(begin.data()));
  const double left = bytesLeft() - static_cast<double>(*headerBytes);
  if (left < 0) {
    const int extensions = traceHeaderExtensions(begin.data());
    return complain(position_,
                    "the header of trace %d of %d announces %d extensions (%d bytes); the file holds %.0f more.",
                    channelsRead_ + 1, NumberOfChannels, extensions, extensions * kSegdBlockBytes,
                    bytesLeft() - kSegdTraceHeaderBytes);
  }
  begin = reader_.peek(*headerBytes);
  if (begin.size() < *headerBytes) return false;
  noteExtensions(traceHeaderExtensions(begin.data()));
  headers.measureTrace(begin.data(), SgdParams.useScanHdr);
  if (headers.TraceSize < 0)
    return complain(position_, "the channel set of trace %d ends before it begins.", channelsRead_ + 1);
  if (GenHdr().sampInt == 0 && headers.TraceSize == 0)
    return complain(position_, "the length of trace %d is not known (the sample interval is 0).", channelsRead_ + 1);
  if (headers.TraceSize > std::min<double>(left, INT_MAX)) {
    return complain(position_, "trace %d should have %.0f bytes of samples; the file holds %.0f more%s.",
                    channelsRead_ + 1, headers.TraceSize, left, extensionsText().c_str());
  }
  return true;
}

void SegdDiskInput::noteExtensions(int count) {
  if (channelsRead_ == 0) {
    firstExtensions_ = count;
  } else if (oddTrace_ == 0 && count != firstExtensions_) {
    oddExtensions_ = count;
    oddTrace_ = channelsRead_ + 1;
  }
}

/// What may be wrong where lengths are: a header whose extensions are not there. Headers that agree are above
/// suspicion.
std::string SegdDiskInput::extensionsText() const {
  if (oddTrace_ == 0 && (firstExtensions_ == 0 || channelsRead_ > 1)) return "";
  const int count = oddTrace_ == 0 ? firstExtensions_ : oddExtensions_;
  return formatText("; the header of trace %d announces %d extension%s (%d bytes)%s", std::max(oddTrace_, 1), count,
                    plural(count), count * kSegdBlockBytes,
                    oddTrace_ == 0 ? "" : formatText(", that of trace 1 %d", firstExtensions_).c_str());
}

/// A trace whose length was taken wrongly leaves the reading in the middle of samples. Where the lengths of all traces
/// fit the file it is a header all the same, whatever its recorder writes there.
bool SegdDiskInput::isTraceHeader(const char* header) {
  if (canBeTraceHeader(header)) return true;
  const bool isFirst = !fits_;
  if (isFirst) fits_ = lengthsFit(SgdParams.useScanHdr, false);
  if (!*fits_) {
    return complain(position_, "the header of trace %d cannot be true; %s%s.", channelsRead_ + 1,
                    channelsRead_ == 0
                        ? "there may be headers that no count announces"
                        : "traces may have other lengths than the record (see the channel sets' lengths)",
                    extensionsText().c_str());
  }
  if (isFirst) {
    logMessagef(
        "  ** %s, byte %.0f: the scan type (0x%02X) or channel set (0x%02X) of trace %d is no number; the trace "
        "lengths "
        "fit the file, and it is copied.",
        InputFileName.c_str(), position_ + 1, static_cast<unsigned char>(header[2]),
        static_cast<unsigned char>(header[3]), channelsRead_ + 1);
  }
  return true;
}

/// What is left behind the last trace may be a trailer. Whole traces there mean that lengths were taken wrongly.
SegdItem SegdDiskInput::endOfTraces() {
  const double least = channelsRead_ > 0 ? shortestTrace_ : kSegdTraceHeaderBytes + headers.TraceSize;
  if (restIsTrailer(position_, least)) {
    if (bytesLeft() > 0 && !lengthsFit(SgdParams.useScanHdr, true)) adviseLengths("**");
    return SegdItem::End;
  }
  complain(position_, "the trace lengths do not fit the file: %.0f bytes follow behind the last of %d trace%s%s.",
           bytesLeft(), NumberOfChannels, plural(NumberOfChannels), extensionsText().c_str());
  adviseLengths("***");
  logMessagef("  *** Error reading input file %s - job will abort.", InputFileName.c_str());
  return SegdItem::Failed;
}

bool SegdDiskInput::restIsTrailer(double begin, double least) const {
  const double left = size_ - begin;
  if (left < 0) return false;
  if (left < least || left == double{kSegdBlockBytes} * headers.trailerBlocks) return true;
  std::vector<char> piece(kStreamBufferSize);
  const auto end = static_cast<std::uint64_t>(size_);
  for (auto at = static_cast<std::uint64_t>(begin); at < end; at += piece.size()) {
    const auto got = readAt(fileno(units_->fp), piece.data(), piece.size(), at);
    if (!got || std::any_of(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(*got),
                            [](char byte) { return byte != '\0'; }))
      return false;
  }
  return true;
}

/// Whether the traces, measured one after another in one of the two ways, end with the file or at its trailer;
/// `exactly` takes none for a trailer that is not announced.
bool SegdDiskInput::lengthsFit(bool byChannelSets, bool exactly) const {
  SegdHeaders walk = headers;
  double least = size_;
  walk.getRecordSize();
  auto at = static_cast<double>(HeaderRecord.size());
  for (int trace = 0; trace < NumberOfChannels; ++trace) {
    std::array<char, kSegdTraceHeaderBytes + kSegdBlockBytes> begin{};
    const auto got = readAt(fileno(units_->fp), begin.data(), begin.size(), static_cast<std::uint64_t>(at));
    if (got.value_or(0) < kSegdTraceHeaderBytes) return false;
    walk.measureTrace(begin.data(), byChannelSets);
    if (walk.TraceSize < 0) return false;
    const double length = traceHeaderBytes(begin.data()) + walk.TraceSize;
    least = std::min(least, length);
    at += length;
  }
  return at == size_ || at + double{kSegdBlockBytes} * headers.trailerBlocks == size_ ||
         (!exactly && restIsTrailer(at, least));
}

/// Names the option that takes lengths the other way, if these fit. @param mark of the line
void SegdDiskInput::adviseLengths(const char* mark) const {
  const bool other = !SgdParams.useScanHdr;
  if (units_->fp != nullptr && NumberOfChannels > 0 && lengthsFit(other, true)) {
    logMessagef(
        "  %s The lengths %s would fit %s exactly: turn \"Take trace lengths from the channel set headers\" %s.", mark,
        other ? "in the channel set headers" : "of the record", InputFileName.c_str(), other ? "on" : "off");
  }
}

/// The trace with its samples zero.
std::span<const char> SegdDiskInput::zeroed(std::span<const char> trace, std::size_t headerBytes) {
  traceIsLent = false;
  zeroes_.assign(trace.begin(), trace.end());
  std::fill(zeroes_.begin() + static_cast<std::ptrdiff_t>(headerBytes), zeroes_.end(), '\0');
  return zeroes_;
}

// ---- tape -------------------------------------------------------------------------------------------------------

SegdTapeInput::SegdTapeInput(UnitStruct* allUnits) : SegdInput(allUnits), reader_(allUnits, kRetryWords) {}

/// One block, or the end of a file or of the data (Eof tells which).
SegdItem SegdTapeInput::getTapeBlock(std::span<const char>* block) {
  const TapeRead read = reader_.read();
  if (read.failed()) {
    if (read.error == ENOMEM)
      logMessagef("  *** A block on the input tape is longer than the limit of %u bytes%s", reader_.limit(),
                  limitAdvice(*units_, reader_.limit()));
    logMessage("  *** Error reading input tape - job will abort.");
    return SegdItem::Failed;
  }
  *block = read.in(units_->ioBuffer);
  if (read.kind == TapeRead::Kind::Block) return SegdItem::Data;
  Eof = read.kind == TapeRead::Kind::EndOfData ? 2 : Eof + 1;
  return SegdItem::End;
}

SegdItem SegdTapeInput::getFieldFile() {
  while (true) {
    std::span<const char> block;
    // Behind the end of the recorded data there is nothing to read.
    const SegdItem item = Eof < 2 ? getTapeBlock(&block) : SegdItem::End;
    if (item == SegdItem::Failed) return item;
    if (item == SegdItem::End) {
      // The skip went over the mark behind the skipped file.
      if (Eof >= (SkippedLastFile ? 1 : 2) && !handleInputEOT()) return SegdItem::End;
      continue;
    }
    Eof = 0;
    SkippedLastFile = false;
    if (!isSegdLabel(block)) {
      takeHeader(block);
      return SegdItem::Data;
    }
  }
}

void SegdTapeInput::takeHeader(std::span<const char> block) {
  HeaderRecord.assign(block.begin(), block.end());
  std::vector<char> blocks = HeaderRecord;
  blocks.resize(kTwoBlocks);
  const int bytes = static_cast<int>(block.size());
  if (bytes < kSegdBlockBytes) {
    logMessagef(
        "  ** The field file begins with a block of %d byte%s, which is no SEG D header; it is copied as it is.", bytes,
        plural(bytes));
  }
  const bool isFirst = GenHdr().genHeaders == 0;
  headers.getGenHeader(blocks.data());
  if (GenHdr().genHeaders > 1 && bytes >= kTwoBlocks) headers.getOptGenHeaders(blocks.data() + kSegdBlockBytes);
  if (isFirst && !isSegdFormat(GenHdr().fmtCode))
    logMessagef("  ** SEG D format code %d is unknown; blocks are copied as they are.", GenHdr().fmtCode);
}

SegdItem SegdTapeInput::getSegdTrace(std::span<const char>* trace) { return getTapeBlock(trace); }

bool SegdTapeInput::skipFile(int fieldFile) {
  SkippedLastFile = true;
  if (tlv_skip_files(units_, 0, 1) == 0) {
    reader_.place.passMark();
    return true;
  }
  // A tape may end without a mark behind its last file.
  if (!tlv_position_lost(units_, 0) &&
      readUnit(units_, 0, units_->ioBuffer, readSize(*units_)).kind == TapeRead::Kind::EndOfData) {
    Eof = 2;
    return true;
  }
  logMessagef("  *** Error skipping field file %d on input tape - job will abort.", fieldFile);
  return false;
}

bool SegdTapeInput::handleInputEOT() {
  logMessage(" ");
  logMessagef("End of input tape %d", TapesCopied++);
  if (nextInputTape(units_, kInputWords) == 0) return false;
  tape = TapesCopied;
  reader_.place.nextTape();
  logMessage(" ");
  logMessagef("Start of input tape %d", tape);
  Eof = 0;
  units_->eofMark = 0;
  SkippedLastFile = false;
  return true;
}
