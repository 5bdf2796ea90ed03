#include "quarlo/tapelib/formats/segdhdr.h"

#include <algorithm>
#include <cmath>

#include "quarlo/tapelib/formats/segdfields.h"

const char* const SegdDataTypes[kSegdKeyTypes] = {"1 byte integer", "2 byte integer", "3 byte integer"};

namespace {

using namespace segdfields;

constexpr int kDemultiplexed = 8000;  ///< format codes from here on

struct FormatRow {
  int code;  // modulo 100
  int format;
  float bytesPerSample;
};
constexpr FormatRow kFormats[] = {
    {15, 1, 2.5F}, {22, 2, 1.0F}, {24, 3, 2.0F}, {36, 10, 3.0F}, {38, 9, 4.0F},
    {42, 4, 1.0F}, {44, 5, 2.0F}, {48, 6, 4.0F}, {58, 7, 4.0F},
};

const FormatRow* formatOf(int code) {
  const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                 [code](const FormatRow& known) { return known.code == code % 100; });
  return row == std::end(kFormats) ? nullptr : row;
}

float descaleMultOf(const char* block, float revision) {
  // Byte 8 is the high byte of the longer form.
  const bool oneByte = revision <= 0;
  const int word = oneByte ? byteAt(block, 8) << 8 : byteAt(block, 8) << 8 | byteAt(block, 7);
  const int magnitude = oneByte ? (word & 0x7F00) >> 8 : word & 0x7FFF;
  const float exponent = static_cast<float>(magnitude) / (oneByte ? 4.0F : 1024.0F);
  return std::exp2((word & 0x8000) != 0 ? -exponent : exponent);
}

segdscan scanHeader(const char* block, const segdheader& general) {
  segdscan scan{};
  scan.scanType = digits(block, 1, 2);
  scan.chanSetNum = byteAt(block, 2) == kExtended ? binary16(block, 27) : digits(block, 2, 2);
  scan.startTime = binary16(block, 3) * 2;
  scan.endTime = binary16(block, 5) * 2;
  if (scan.endTime == 0) scan.endTime = general.recLen;
  scan.numChan = digits(block, 9, 4);
  scan.chanType = highNibble(block, 11);
  scan.subscans = 1 << highNibble(block, 12);
  scan.gainType = lowNibble(block, 12);
  scan.descaleMult = descaleMultOf(block, general.revision);
  return scan;
}

/// Bytes of the samples between two times; 0 for a sample interval of 0, below 0 for times that are the wrong way
/// round.
double sampleBytes(double milliseconds, int subscans, const segdheader& general) {
  if (general.sampInt <= 0) return 0;
  return std::trunc(milliseconds / static_cast<double>(general.sampInt) * subscans * static_cast<double>(general.bPS));
}

}  // namespace

// ---- general header ---------------------------------------------------------------------------------------------

void SegdHeaders::getGenHeader(const char* genHdrAddr) {
  const char* const block = genHdrAddr;
  segdheader& header = GenHdr;
  header.ffilenum = binary16(block, 1) == kExtended16 ? kExtended16 : digits(block, 1, 4);
  header.fmtCode = digits(block, 3, 4);
  header.muxed = header.fmtCode < kDemultiplexed ? 1 : 0;
  takeFormat();
  header.year = digits(block, 11, 2);
  header.genHeaders = 1 + highNibble(block, 12);
  header.julianDay = unbcd(block, 11, 2, 3);
  header.hour = digits(block, 14, 2);
  header.minute = digits(block, 15, 2);
  header.second = digits(block, 16, 2);
  header.manufact = digits(block, 17, 2);
  header.revision = 0;
  trailerBlocks = 0;
  header.bytesPerScan = digits(block, 20, 6);
  header.sampInt = static_cast<float>(byteAt(block, 23)) / 16;
  header.scansPerBlock = byteAt(block, 25) << lowNibble(block, 24);
  header.recType = highNibble(block, 26);
  longRecord_ = lowNibble(block, 26) == 15 && byteAt(block, 27) == kExtended;
  const float length = static_cast<float>(unbcd(block, 25, 2, 3)) * RecordLengthMultiplier;
  header.recLen = longRecord_ ? 4095 : static_cast<int>(std::min(static_cast<double>(length) + 0.05, 1e9));
  header.scanTypes = digits(block, 28, 2);
  header.channelSets = digits(block, 29, 2);
  header.skewFields = digits(block, 30, 2);
  header.extendFields = byteAt(block, 31) == kExtended ? kExtended : digits(block, 31, 2);
  header.externalFields = byteAt(block, 32) == kExtended ? kExtended : digits(block, 32, 2);
}

void SegdHeaders::takeFormat() {
  if (const FormatRow* row = formatOf(GenHdr.fmtCode)) {
    GenHdr.format = row->format;
    GenHdr.bPS = row->bytesPerSample;
  }
}

void SegdHeaders::getOptGenHeaders(const char* optHdrAddr) {
  const char* const block = optHdrAddr;
  if (GenHdr.ffilenum == kExtended16) GenHdr.ffilenum = binary24(block, 1);
  if (GenHdr.extendFields == kExtended) GenHdr.extendFields = binary16(block, 6);
  if (GenHdr.externalFields == kExtended) GenHdr.externalFields = binary16(block, 8);
  trailerBlocks = binary16(block, 13);
  // One byte behind where the standard has it; it only chooses how the scale factors are read.
  GenHdr.revision = static_cast<float>(signedByteAt(block, 12)) + static_cast<float>(signedByteAt(block, 13)) / 100;
  if (longRecord_) GenHdr.recLen = binary24(block, 15);
}

void SegdHeaders::getGenHdrSamples() {
  GenHdrSamples = GenHdr.sampInt > 0 ? std::trunc((GenHdr.recLen + 0.05) / static_cast<double>(GenHdr.sampInt)) : 0;
}

// ---- channel sets -----------------------------------------------------------------------------------------------

void SegdHeaders::getScanHeaders(std::span<const char> blocks) {
  ScanHdr.clear();
  for (int i = 0; i < TotalChannelSets(); ++i)
    ScanHdr.push_back(scanHeader(blocks.data() + std::ptrdiff_t{kSegdBlockBytes} * i, GenHdr));
}

int SegdHeaders::NumberOfChannels() const {
  int traces = 0;
  for (const segdscan& scan : ScanHdr) traces += scan.numChan;
  return traces;
}

// ---- traces -----------------------------------------------------------------------------------------------------

void SegdHeaders::getRecordSize() { TraceSize = sampleBytes(GenHdr.recLen, 1, GenHdr); }

void SegdHeaders::getTraceSize(const char* traceHeader) {
  const int scanType = digits(traceHeader, 3, 2);
  const int channelSet = digits(traceHeader, 4, 2);
  if (scanType == 0 || channelSet == 0) return;
  const auto scan = std::find_if(ScanHdr.begin(), ScanHdr.end(), [&](const segdscan& each) {
    return each.scanType == scanType && each.chanSetNum == channelSet;
  });
  if (scan != ScanHdr.end()) TraceSize = sampleBytes(scan->endTime - scan->startTime, scan->subscans, GenHdr);
}

void SegdHeaders::getExtensionSize(const char* extension) {
  const int samples = binary24(extension, 8);
  if (samples > GenHdrSamples) TraceSize = std::trunc(samples * static_cast<double>(GenHdr.bPS));
}

void SegdHeaders::measureTrace(const char* trace, bool byChannelSet) {
  if (byChannelSet)
    getTraceSize(trace);
  else
    getRecordSize();
  if (traceHeaderExtensions(trace) > 0) getExtensionSize(trace + kSegdTraceHeaderBytes);
}

int getChannelSet(const char* traceHeader) {
  return byteAt(traceHeader, 3) == kExtended ? binary16(traceHeader, 16) : digits(traceHeader, 4, 2);
}

int traceHeaderExtensions(const char* traceHeader) { return byteAt(traceHeader, 10); }

int traceHeaderBytes(const char* traceHeader) {
  return kSegdTraceHeaderBytes + kSegdBlockBytes * traceHeaderExtensions(traceHeader);
}

int getHeaderField(const char* traceHeader, int keyByte, int keyType) {
  switch (keyType) {
    case SEGD_KEY_INT8:
      return signedByteAt(traceHeader, keyByte);
    case SEGD_KEY_INT16:
      return binary16(traceHeader, keyByte);
    case SEGD_KEY_INT24:
      return binary24(traceHeader, keyByte);
    default:
      return 0;
  }
}

bool keyIsInTraceHeader(int keyByte, int keyType) {
  return keyType >= SEGD_KEY_INT8 && keyType <= SEGD_KEY_INT24 && keyByte >= 1 &&
         keyByte <= kSegdTraceHeaderBytes - keyType;
}

// ---- what can be true -------------------------------------------------------------------------------------------

bool isSegdFormat(int fmtCode) { return formatOf(fmtCode) != nullptr; }

bool isGeneralHeader(const char* block) {
  return (byteAt(block, 3) == 0 || byteAt(block, 3) == 0x80) && areDigits(block, 4, 1) &&
         isSegdFormat(digits(block, 3, 4));
}

int badGeneralHeaderByte(const char* block) {
  for (int position = 28; position <= 32; ++position) {
    const bool mayBeExtended = position >= 31 && byteAt(block, position) == kExtended;
    if (!mayBeExtended && !areDigits(block, position, 1)) return position;
  }
  return 0;
}

int announcedHeaderBytes(const char* block) {
  if (badGeneralHeaderByte(block) != 0) return 0;
  SegdHeaders headers;
  headers.getGenHeader(block);
  const segdheader& counts = headers.GenHdr;
  return headers.scanHeaderBytes() +
         (counts.genHeaders + counts.extendFields + counts.externalFields) * kSegdBlockBytes;
}

int badScanHeaderByte(const char* block) { return areDigits(block, 9, 1) ? areDigits(block, 10, 1) ? 0 : 10 : 9; }

bool canBeTraceHeader(const char* bytes) {
  const auto code = [bytes](int position) {
    return byteAt(bytes, position) == kExtended || areDigits(bytes, position, 1);
  };
  return code(3) && code(4);
}
