#include "quarlo/tapelib/formats/segylayout.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

#include "libkyr/byteorder.h"
#include "libkyr/segysamples.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/charsets.h"
#include "quarlo/tapelib/formats/segybinary.h"
#include "quarlo/tapelib/formats/segywalk.h"

namespace {

constexpr std::uint64_t kMostTextHeaders = 32767;  // what their count can say

using Bytes = std::span<const char>;

/// The binary header's fields that the standard gives one place for good, in the file's byte order.
class Structure {
 public:
  Structure(Bytes header, bool bigEndian) : header_(header), bigEndian_(bigEndian) {}

  int revisionByte(int index) const { return static_cast<unsigned char>(header_[place(kBinaryRevision) + index]); }
  int int16(HeaderKey key) const {
    const char* const at = header_.data() + place(key);
    return bigEndian_ ? loadBeInt16(at) : loadLeInt16(at);
  }
  int int32(HeaderKey key) const {
    const char* const at = header_.data() + place(key);
    return bigEndian_ ? loadBeInt32(at) : loadLeInt32(at);
  }
  std::uint64_t uint64(int byte) const {
    const char* const at = header_.data() + byte - 1;
    return bigEndian_ ? loadBe64(at) : loadLe64(at);
  }

 private:
  static std::size_t place(HeaderKey key) { return static_cast<std::size_t>(key.byte - 1); }

  Bytes header_;
  bool bigEndian_;
};

/// Whether a block of text begins so, but for blanks and case. @param start of small letters
bool beginsWith(Bytes block, std::string_view start) {
  const SegyText text = segyTextOf(block);
  std::array<int, kA2eTableSize> toEbcdic{};
  std::array<int, kE2aTableSize> toAscii{};
  initascebc(toEbcdic.data(), toAscii.data());
  std::string found;
  for (std::size_t i = 0; i < block.size() && found.size() < start.size(); ++i) {
    const auto byte = static_cast<unsigned char>(block[i]);
    const int character = text == SegyText::Ebcdic ? toAscii.at(byte) : byte;
    if (character > ' ' && character < 127) found += static_cast<char>(std::tolower(character));
  }
  return found == start;
}

/// Everything before the traces; grows a layout and its remarks.
class Headers {
 public:
  Headers(const SegyFormat& format, const SegyChoices& choices, SegyLayout* layout)
      : format_(format), choices_(choices), layout_(*layout) {}

  /// @param binary empty when there is none
  void take(Bytes text, Bytes binary, bool bigEndian);
  /// @return false with a reason when the samples cannot be read
  bool takeSampleFormat(Bytes binary, std::string* reason);
  void placeTraces(BytesAt& file, Bytes binary, std::uint64_t behindBinary);
  /// Lengths of a trace's headers that the binary header may mean, the likeliest first.
  std::vector<std::uint32_t> headerLengths(Bytes binary) const;

 private:
  bool hasStructure(Bytes binary) const { return binary.size() >= kBinaryHeaderBytes; }
  bool isExtended() const { return layout_.reading.extended; }
  std::uint64_t extendedHeaders(BytesAt& file, int count, std::uint64_t behindBinary);
  std::uint64_t trailers(BytesAt& file) const;
  void remark(std::string line) { layout_.remarks.push_back(std::move(line)); }

  const SegyFormat& format_;
  const SegyChoices& choices_;
  SegyLayout& layout_;
};

void Headers::take(Bytes text, Bytes binary, bool bigEndian) {
  layout_.text = choices_.text.value_or(segyTextOf(text));
  layout_.reading.bigEndian = bigEndian;
  if (hasStructure(binary)) {
    const Structure structure(binary, bigEndian);
    layout_.majorRevision = structure.revisionByte(0);
    layout_.minorRevision = structure.revisionByte(1);
    layout_.reading.extended = layout_.majorRevision >= 2;
    layout_.fixedLength = structure.int16(kBinaryFixedLength) != 0;
    layout_.statedTexts = structure.int16(kBinaryExtended);
    if (isExtended()) layout_.statedTrailers = structure.int32(kBinaryTrailers);
  }
  const auto count = [&](const char* name) { return SegyValue(format_, true, name, layout_.reading).countIn(binary); };
  layout_.tracesPerRecord = std::min<std::uint64_t>(count("TracesPerRec"), kMaxCount) +
                            std::min<std::uint64_t>(count("AuxPerRec"), kMaxCount);
  layout_.headerBytes = headerLengths(binary).front();
}

bool Headers::takeSampleFormat(Bytes binary, std::string* reason) {
  const auto stated = SegyValue(format_, true, "SampFormat", layout_.reading).countIn(binary);
  layout_.sampleFormat =
      choices_.sampleFormat != 0 ? choices_.sampleFormat : static_cast<int>(std::min<std::uint64_t>(stated, kMaxCount));
  layout_.sampleBytes = static_cast<std::uint32_t>(segySampleBytes(layout_.sampleFormat));
  if (isReadableSegyFormat(layout_.sampleFormat)) return true;
  *reason = formatText("sample format code %d is none that can be read", layout_.sampleFormat);
  return false;
}

std::vector<std::uint32_t> Headers::headerLengths(Bytes binary) const {
  const auto described =
      static_cast<std::uint32_t>(format_.itHasTraceHeader != 0 ? segyHeaderBytes(format_, false) : 0);
  // A description of several blocks knows fields of additional headers; how many there are the file says.
  if (described == 0 || described % kTraceHeaderBytes != 0) return {described};
  if (!isExtended()) return {kTraceHeaderBytes};
  const Structure structure(binary, layout_.reading.bigEndian);
  std::array readings{structure.int32(kBinaryAdditional), structure.int16(kBinaryAdditional)};
  if (layout_.minorRevision > 0) std::ranges::reverse(readings);
  std::vector<std::uint32_t> lengths;
  for (const int blocks : readings)
    if (blocks >= 0 && blocks <= kMostAdditionalHeaders)
      lengths.push_back(static_cast<std::uint32_t>(kTraceHeaderBytes * (1 + blocks)));
  if (lengths.empty()) lengths.push_back(kTraceHeaderBytes);
  return lengths;
}

std::uint64_t Headers::extendedHeaders(BytesAt& file, int count, std::uint64_t behindBinary) {
  const std::uint64_t held = (std::max(behindBinary, file.size()) - behindBinary) / kEbcdicHeaderBytes;
  if (count >= 0) {
    if (static_cast<std::uint64_t>(count) <= held) return static_cast<std::uint64_t>(count);
    remark(formatText("%d extended text headers are announced, which the file cannot hold: taken for none", count));
    return 0;
  }
  for (std::uint64_t i = 0; count == -1 && i < std::min(held, kMostTextHeaders); ++i)
    if (isSegyEndStanza(file.at(behindBinary + i * kEbcdicHeaderBytes, kEbcdicHeaderBytes))) return i + 1;
  remark(
      formatText("The number of extended text headers is given as %d and no stanza ends them: taken for none", count));
  return 0;
}

/// Texts behind the traces: as many as are announced, or those at the end that begin with a stanza.
std::uint64_t Headers::trailers(BytesAt& file) const {
  const std::uint64_t room = (layout_.end - layout_.firstTrace) / kEbcdicHeaderBytes;
  const auto stated = static_cast<std::uint64_t>(std::max(0, layout_.statedTrailers));
  if (layout_.statedTrailers != -1) return stated <= room ? stated : 0;
  std::uint64_t found = 0;
  while (found < std::min(room, kMostTextHeaders) &&
         beginsSegyStanza(file.at(layout_.end - (found + 1) * kEbcdicHeaderBytes, kEbcdicHeaderBytes)))
    ++found;
  return found;
}

void Headers::placeTraces(BytesAt& file, Bytes binary, std::uint64_t behindBinary) {
  layout_.end = file.size();
  layout_.firstTrace = behindBinary;
  if (!hasStructure(binary)) return;
  const Structure structure(binary, layout_.reading.bigEndian);
  layout_.extendedHeaders = extendedHeaders(file, layout_.statedTexts, behindBinary);
  layout_.firstTrace += layout_.extendedHeaders * kEbcdicHeaderBytes;
  if (!isExtended()) return;
  const std::uint64_t stated = structure.uint64(kBinaryFirstTrace);
  if (stated != 0 && stated != layout_.firstTrace) {
    const bool isBelieved = stated > layout_.firstTrace && stated <= layout_.end;
    remark(formatText("The first trace is said to begin behind %llu bytes, the headers before it have %llu: %s",
                      static_cast<unsigned long long>(stated), static_cast<unsigned long long>(layout_.firstTrace),
                      isBelieved ? "the first is taken" : "the second is taken"));
    if (isBelieved) layout_.firstTrace = stated;
  }
  layout_.end -= trailers(file) * kEbcdicHeaderBytes;
}

/// The byte order that the headers themselves tell.
std::optional<bool> statedByteOrder(const SegyFormat& format, Bytes binary) {
  if (binary.size() >= kBinaryHeaderBytes) {
    constexpr std::uint32_t kMark = 0x01020304;
    const char* const mark = binary.data() + kBinaryByteOrder.byte - 1;
    if (loadBe32(mark) == kMark || loadLe32(mark) == kMark) return loadBe32(mark) == kMark;
  }
  const auto isCode = [&](bool big) {
    const auto code = SegyValue(format, true, "SampFormat", {big, false}).countIn(binary);
    return code <= 16 && isSegyFormat(static_cast<int>(code));
  };
  return isCode(true) == isCode(false) ? std::nullopt : std::optional(isCode(true));
}

/// @param header the first trace's; empty when there is none
void takeInterval(const SegyFormat& format, Bytes binary, Bytes header, SegyLayout* layout) {
  const auto intervalOf = [&](bool isBinary, Bytes bytes) {
    return SegyValue(format, isBinary, "Dt", layout->reading).positiveIn(bytes);
  };
  const double ofFile = intervalOf(true, binary);
  const double ofTrace = header.empty() ? 0.0 : intervalOf(false, header);
  layout->interval = ofFile > 0.0 ? ofFile : ofTrace;
  if (ofFile > 0.0 && ofTrace > 0.0 && ofFile != ofTrace)
    layout->remarks.push_back(
        formatText("The binary header gives an interval of %.9g us, the first trace %.9g us: the first is taken",
                   ofFile, ofTrace));
  if (layout->interval != std::floor(layout->interval))
    layout->remarks.push_back(
        formatText("The sample interval is no whole number of microseconds: %.9g us", layout->interval));
}

/// A file as it is when its bytes have this order.
class FileReading {
 public:
  FileReading(BytesAt& file, const SegyFormat& format, const SegyChoices& choices)
      : file_(file), format_(format), choices_(choices) {}

  /// Reads the reel headers. @return false with a reason
  bool readReel(std::string* reason);
  std::optional<bool> statedOrder() const { return statedByteOrder(format_, binary_); }
  std::optional<SegyLayout> in(bool bigEndian, std::string* reason);

 private:
  static std::uint64_t lengthOf(short isThere, int bytes) {
    return isThere != 0 ? static_cast<std::uint64_t>(std::max(0, bytes)) : 0;
  }
  BytesAt& file_;
  const SegyFormat& format_;
  const SegyChoices& choices_;
  std::uint64_t label_ = 0;  // bytes
  std::string text_;
  std::string binary_;
};

bool FileReading::readReel(std::string* reason) {
  const std::uint64_t textBytes = lengthOf(format_.itHasReelHeader, format_.itsReelBytes);
  const std::uint64_t binaryBytes = lengthOf(format_.itHasBinaryHeader, format_.itsBinaryBytes);
  const auto copied = [this](std::uint64_t place, std::uint64_t count) {
    const Bytes bytes = file_.at(place, static_cast<std::size_t>(count));
    return std::string(bytes.begin(), bytes.end());
  };
  label_ = isSegyLabel(file_.at(0, kSegyLabelBytes)) ? kSegyLabelBytes : 0;
  text_ = copied(label_, textBytes);
  binary_ = copied(label_ + textBytes, binaryBytes);
  if (text_.size() == textBytes && binary_.size() == binaryBytes) return true;
  const std::uint64_t needed = label_ + textBytes + binaryBytes;
  *reason = formatText("the file has %llu bytes, its reel headers need %llu",
                       static_cast<unsigned long long>(file_.size()), static_cast<unsigned long long>(needed));
  return false;
}

std::optional<SegyLayout> FileReading::in(bool bigEndian, std::string* reason) {
  SegyLayout layout;
  Headers headers(format_, choices_, &layout);
  headers.take(text_, binary_, bigEndian);
  if (!headers.takeSampleFormat(binary_, reason)) return std::nullopt;
  headers.placeTraces(file_, binary_, label_ + text_.size() + binary_.size());
  const auto binarySamples = SegyValue(format_, true, "Nt", layout.reading).countIn(binary_);
  fitTraces(file_, format_, choices_.records, headers.headerLengths(binary_), binarySamples, &layout);
  const bool hasTrace = layout.traces > 0;
  takeInterval(format_, binary_, hasTrace ? file_.at(layout.firstTrace, layout.runs.front().headerBytes) : Bytes(),
               &layout);
  return layout;
}

/// The two byte orders tried: big-endian unless only the other can be read, or leaves fewer bytes over.
std::optional<SegyLayout> betterFit(FileReading& reading, std::string* reason) {
  auto big = reading.in(true, reason);
  std::string ignored;
  auto little = reading.in(false, &ignored);
  if (!little || (big && big->rest <= little->rest)) return big;
  return little;
}

}  // namespace

SegyPlace SegyLayout::placeOf(std::uint64_t trace) const {
  const auto behind = std::ranges::upper_bound(runs, trace, {}, &SegyRun::firstTrace);
  if (behind == runs.begin()) return {};
  const SegyRun& run = *std::prev(behind);
  const std::uint64_t length = run.headerBytes + std::uint64_t{run.samples} * sampleBytes;
  return {run.place + (trace - run.firstTrace) * length, run.headerBytes, run.samples};
}

SegyText segyTextOf(std::span<const char> header) {
  // A blank is what a text has most of; letters and digits of EBCDIC lie above 128, where ASCII has nothing.
  std::size_t ebcdic = 0;
  std::size_t ascii = 0;
  bool isEmpty = true;
  for (const char character : header) {
    const auto byte = static_cast<unsigned char>(character);
    isEmpty = isEmpty && byte == 0;
    if (byte == 0x40 || byte > 0x80)
      ++ebcdic;
    else if (byte >= 0x20 && byte < 0x7F)
      ++ascii;
  }
  if (isEmpty) return SegyText::Zeros;
  return ascii > ebcdic ? SegyText::Ascii : SegyText::Ebcdic;
}

bool beginsSegyStanza(std::span<const char> block) { return beginsWith(block, "(("); }

bool isSegyEndStanza(std::span<const char> block) { return beginsWith(block, "((seg:endtext))"); }

bool isSegyLabel(std::span<const char> bytes) {
  constexpr std::size_t kNumberBytes = 4;
  if (bytes.size() != kSegyLabelBytes || !beginsWith(bytes.subspan(kNumberBytes), "sy")) return false;
  return std::isdigit(static_cast<unsigned char>(bytes[kNumberBytes + 2])) != 0;
}

std::optional<SegyLayout> segyFileLayout(BytesAt& file, const SegyFormat& format, const SegyChoices& choices,
                                         std::string* reason) {
  FileReading reading(file, format, choices);
  if (!reading.readReel(reason)) return std::nullopt;
  const auto order = choices.bigEndian ? choices.bigEndian : reading.statedOrder();
  return order ? reading.in(*order, reason) : betterFit(reading, reason);
}

std::optional<SegyLayout> segyTapeLayout(std::span<const char> text, std::span<const char> binary,
                                         const SegyFormat& format, const SegyChoices& choices, std::string* reason) {
  SegyLayout layout;
  Headers headers(format, choices, &layout);
  const auto order = choices.bigEndian ? choices.bigEndian : statedByteOrder(format, binary);
  headers.take(text, binary, order.value_or(true));
  if (!headers.takeSampleFormat(binary, reason)) return std::nullopt;
  layout.interval = SegyValue(format, true, "Dt", layout.reading).positiveIn(binary);
  return layout;
}

bool takeFirstTrace(std::span<const char> block, std::span<const char> binary, const SegyFormat& format,
                    SegyLayout* layout) {
  const auto place = placeInBlock(*layout, block);
  if (!place || place->samples == 0) return false;
  layout->runs = {{0, 0, place->headerBytes, place->samples}};
  takeInterval(format, binary, block.first(place->headerBytes), layout);
  const auto stated = SegyValue(format, true, "Nt", layout->reading).countIn(binary);
  if (stated != 0 && stated != place->samples)
    layout->remarks.push_back(formatText("The binary header gives %llu samples per trace, the traces have %u",
                                         static_cast<unsigned long long>(stated), place->samples));
  return true;
}

std::optional<SegyPlace> placeInBlock(const SegyLayout& layout, std::span<const char> block) {
  if (layout.sampleBytes == 0) return std::nullopt;
  const auto most = std::min<std::size_t>(block.size(), layout.headerBytes);
  const std::uint32_t headerBytes = segyTraceHeaderBytes(layout, block.first(most));
  // The traces of a description without trace headers have none; all others begin with a whole one.
  if (block.size() < headerBytes || (most < layout.headerBytes && headerBytes == most)) return std::nullopt;
  const std::size_t samples = (block.size() - headerBytes) / layout.sampleBytes;
  if (samples > kMaxCount) return std::nullopt;
  return SegyPlace{0, headerBytes, static_cast<std::uint32_t>(samples)};
}

std::uint32_t segyTraceHeaderBytes(const SegyLayout& layout, std::span<const char> header) {
  const auto most = static_cast<std::uint32_t>(header.size());
  if (!layout.reading.extended || most < static_cast<std::uint32_t>(kTraceHeaderBlocks.end())) return most;
  const char* const place = header.data() + kTraceHeaderBlocks.byte - 1;
  const int blocks = layout.reading.bigEndian ? loadBeInt16(place) : loadLeInt16(place);
  return blocks > 0 ? std::min(most, static_cast<std::uint32_t>(kTraceHeaderBytes * (1 + blocks))) : most;
}
