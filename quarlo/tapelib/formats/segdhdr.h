/// The headers of a SEG D field file (SEG D revisions 0 to 2.1, Society of Exploration Geophysicists): general header
/// blocks, channel set descriptors and trace headers, read as far as a copy needs them.
///
/// Blocks are 32 bytes, a trace header is 20. Positions in the comments count from 1; numbers are BCD digits unless
/// said binary, binary ones are big-endian.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

constexpr int kSegdBlockBytes = 32;
constexpr int kSegdTraceHeaderBytes = 20;
/// Record lengths of general header block 1 count in units of 0.1 x 1.024 s, unless the user knows better.
constexpr float kSegdRecordLengthUnit = 102.4F;

/// Data types of a key in a trace header, as the dialog of the zero list names them.
enum SEGD_KEY_TYPE : int { SEGD_KEY_INT8 = 0, SEGD_KEY_INT16 = 1, SEGD_KEY_INT24 = 2 };
constexpr int kSegdKeyTypes = 3;
extern const char* const SegdDataTypes[kSegdKeyTypes];

/// What the general header says of a field file.
struct segdheader {
  int ffilenum;        ///< field file number; 65535 where block 2 should have it and is not there
  int muxed;           ///< 1: multiplexed (codes below 8000)
  int fmtCode;         ///< SEG D format code
  int manufact;        ///< manufacturer's code
  float revision;      ///< 0 without block 2
  int format;          ///< this system's number of the format; stays for unknown codes
  float bPS;           ///< bytes per sample; stays for unknown codes, 0 before the first known one
  int bytesPerScan;    ///< of multiplexed data
  float sampInt;       ///< milliseconds
  int scansPerBlock;   ///< of multiplexed data
  int recType;         ///< record type
  int recLen;          ///< record length, milliseconds
  int scanTypes;       ///< scan types of the record
  int channelSets;     ///< channel sets of each scan type
  int chanSetBlocks;   ///< not filled
  int skewFields;      ///< skew blocks of each scan type
  int extendFields;    ///< extended header blocks
  int externalFields;  ///< external header blocks
  int year;            ///< two digits
  int julianDay;
  int hour;
  int minute;
  int second;
  int genHeaders;  ///< general header blocks
};

/// One channel set descriptor.
struct segdscan {
  int scanType;
  int chanSetNum;
  int startTime;  ///< milliseconds
  int endTime;    ///< milliseconds
  int numChan;    ///< traces of the set
  int chanType;
  int subscans;       ///< samples of a channel in one scan interval
  int gainType;       ///< gain control method
  float descaleMult;  ///< factor from recorded numbers to millivolts
};

/// The headers of the field file in hand. Kept from file to file: an unknown format code leaves the sample size of the
/// file before.
class SegdHeaders {
 public:
  segdheader GenHdr{};
  std::vector<segdscan> ScanHdr;
  double TraceSize = 0;                                  ///< sample bytes of the present trace
  double GenHdrSamples = 0;                              ///< samples of a trace by the general header
  float RecordLengthMultiplier = kSegdRecordLengthUnit;  ///< milliseconds of a record length digit
  int trailerBlocks = 0;                                 ///< blocks behind the traces, as block 2 announces them

  /// Fills GenHdr from general header block 1 (32 bytes).
  void getGenHeader(const char* genHdrAddr);
  /// Completes it from block 2 (32 bytes): what block 1 has no room for, and the revision.
  void getOptGenHeaders(const char* optHdrAddr);
  /// Computes GenHdrSamples; 0 for a sample interval of 0.
  void getGenHdrSamples();
  /// Fills ScanHdr with TotalChannelSets() descriptors. The blocks are taken one after the other: skew blocks are not
  /// stepped over. @param blocks scanHeaderBytes() bytes
  void getScanHeaders(std::span<const char> blocks);

  /// Sets TraceSize to what a trace of the whole record takes; 0 for a sample interval of 0.
  void getRecordSize();
  /// Sets TraceSize from the descriptor of this trace's scan type and channel set. Where one of them is 0 or has no
  /// descriptor, TraceSize stays. @param traceHeader 20 bytes
  void getTraceSize(const char* traceHeader);
  /// Sets TraceSize from the sample count in the first trace header extension (32 bytes) if it exceeds GenHdrSamples.
  void getExtensionSize(const char* extension);
  /// Sets TraceSize by all of these. @param trace begins with the trace header and, if it has some, its first extension
  void measureTrace(const char* trace, bool byChannelSet);

  int TotalChannelSets() const { return GenHdr.scanTypes * GenHdr.channelSets; }
  /// Bytes of all descriptors and skew blocks.
  int scanHeaderBytes() const { return (GenHdr.skewFields + GenHdr.channelSets) * GenHdr.scanTypes * kSegdBlockBytes; }
  /// Traces that the descriptors announce.
  int NumberOfChannels() const;

 private:
  void takeFormat();

  bool longRecord_ = false;  // the record length has no room in block 1
};

/// The channel set number of a trace header (20 bytes).
int getChannelSet(const char* traceHeader);
/// Trace header extensions that follow a trace header.
int traceHeaderExtensions(const char* traceHeader);
/// Bytes of a trace header with its extensions.
int traceHeaderBytes(const char* traceHeader);
/// The field of SEGD_KEY_TYPE `keyType` at the 1-based `keyByte` of a trace header; 0 for a type that is none. The
/// field must lie within the header: see keyIsInTraceHeader.
int getHeaderField(const char* traceHeader, int keyByte, int keyType);
bool keyIsInTraceHeader(int keyByte, int keyType);

/// Whether the sample size of a format code is known.
bool isSegdFormat(int fmtCode);
/// Whether the 32 bytes are general header block 1 beyond doubt: a known code, multiplexed or demultiplexed.
bool isGeneralHeader(const char* block);
/// Bytes of all headers together by the counts in general header block 1; 0 when those are no digits.
int announcedHeaderBytes(const char* block);
/// The 1-based position of the first field of general header block 1 that is made of digits and holds something else,
/// of those that say how many blocks follow; 0 when all are digits.
int badGeneralHeaderByte(const char* block);
/// The same of a channel set descriptor's count of channels.
int badScanHeaderByte(const char* block);
/// Whether 20 bytes can be a trace header: scan type and channel set are made of digits. Other numbers are not looked
/// at, for some recorders write them in binary.
bool canBeTraceHeader(const char* bytes);
