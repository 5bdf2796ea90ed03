/// The index file: its header as it stands on the disk, the entries behind it, the ranges that it keeps. Layout, and
/// what is odd about it on purpose: docs/format-idx.md.
#pragma once

#include <bit>
#include <cstddef>

#include "libkyr/byteorder.h"
#include "libkyr/properties.h"
#include "libkyr/seisorg.h"

/// A word of the file, little-endian.
struct FileInt {
  unsigned char bytes[4];

  FileInt& operator=(int value) {
    storeLe32(bytes, static_cast<std::uint32_t>(value));
    return *this;
  }
  operator int() const { return loadLeInt32(bytes); }
};

struct FileFloat {
  unsigned char bytes[4];

  FileFloat& operator=(float value) {
    storeLeFloat(bytes, value);
    return *this;
  }
  operator float() const { return loadLeFloat(bytes); }
};

/// An indexed file.
struct filelist {
  char fileDirectory[256];
  char fileName[256];
};
static_assert(sizeof(filelist) == 512);

/// What an entry can be looked up by.
struct filekeys {
  char keyName[64];
  char keyDescription[64];
  FileInt trPropertyType;  ///< the trace property; 0 for what is none
  FileInt typeOfKey;       ///< a KyrType
  FileInt extraSpace[5];
};
static_assert(sizeof(filekeys) == 156);

/// The header. Zero-filled it is one of nothing.
struct IndexFile {
  FileInt fileTypeNumber;  ///< UNIT_TYPE of the input
  FileInt indexFileVersionNumber;
  FileInt numberOfInputFiles;
  FileInt numberOfIndexFiles;
  FileInt numberOfKeys;
  FileInt keyEntries;  ///< entries behind the header
  FileInt bytesInArray[32];
  char formatFile[256];
  GeneralSeisDataOrg gSeisOrg;
  FileInt sampleFormat;
  FileInt bytesPerSample;
  FileInt byteOffsetToSegYEBCDICHeader;
  FileInt bytesInSegYEBCDICHeader;
  FileInt byteOffsetToSegYBinaryHeader;
  FileInt bytesInSegYBinaryHeader;
  FileInt byteOffsetToSegYTraceHeaders;
  FileInt numberOfSegYTraceHeader;
  FileInt bytesInEachSegYTraceHeader;
  FileInt byteOffsetToIndexArrays;
  FileInt extraSpace[10];
  filelist files[1024];
  filekeys keys[16];
};
constexpr int kIndexHeaderSize = 528132;
static_assert(sizeof(IndexFile) == kIndexHeaderSize && alignof(IndexFile) == 1);
static_assert(offsetof(IndexFile, formatFile) == 152 && offsetof(IndexFile, gSeisOrg) == 408 &&
              offsetof(IndexFile, sampleFormat) == 1268 && offsetof(IndexFile, files) == 1348 &&
              offsetof(IndexFile, keys) == 525636);

/// An entry: a live trace.
struct indexarray {
  FileInt fileIndex;
  FileInt diskBytePosition;
  FileInt recordNumber;
  FileInt traceNumber;
  FileInt cmpLine;
  FileInt cmpLoc;
  FileFloat offset;
  FileInt extraSpace[10];
};
static_assert(sizeof(indexarray) == 68);

/// What the index takes from a trace's header; null where it has no value.
struct IndexValues {
  int cmpLine;
  int cmpLoc;
  int srcLine;
  int srcLoc;
  int rcvLine;
  int rcvLoc;
  int fieldFile;
  float offset;
};
IndexValues indexValues(const TraceInfo& header);

/// Fills the table of keys: six of the seven that the header counts.
void defineKeys(IndexFile* indxFileInfo);

// The ranges of a scan: 0 until a trace has a value. Without a live trace they stay those of the scan before.
extern int minSrcLine, maxSrcLine, minSrcLoc, maxSrcLoc;
extern int minRcvLine, maxRcvLine, minRcvLoc, maxRcvLoc;
extern int minCMPLine, maxCMPLine, minCMPLoc, maxCMPLoc;
extern float minOffset, maxOffset;
extern int minFFID, maxFFID;

/// Widens the ranges by a live trace. The field file range is made of this trace's number and the range of the CMP
/// locations, whatever came before.
/// @param traceCount live traces before this one: the first begins the ranges
void setMinMax(IndexFile* indxFileInfo, int traceCount, int cmpLine, int srcLine, int rcvLine, int cmpLoc, int srcLoc,
               int rcvLoc, float offset, int fieldFile);

/// Stores the ranges in the header's organisation record.
void setHeaderMinMax(IndexFile* indxFileInfo);

/// A console line for each range that has a value, but that of the field files.
void tellRanges();
