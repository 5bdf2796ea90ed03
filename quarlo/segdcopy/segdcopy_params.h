/// The settings of a SEG D copy.
#pragma once

#include <cstdio>

#include "quarlo/tapelib/dialogs/path_field.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "xvt/xvt.h"

/// What the field file list means.
enum SEGD_LIMIT_SENSE : int { SEGD_INCLUDE = 1, SEGD_EXCLUDE = 2 };

constexpr double kBytesPerGigabyte = 1073741824.0;

/// Set by segdInit and edited by the SEG D dialogs; the streams belong to a running job.
struct SgdCopyParams {
  int blockType;    ///< block type word of tape-image output
  bool useLog;      ///< messages go to the log file, too
  bool limit;       ///< keep or drop field files by the field file list
  bool zeroTraces;  ///< zero the samples of the traces in the zero list (disk input)
  int recLimType;   ///< SEGD_LIMIT_SENSE; whatever is not SEGD_INCLUDE excludes
  int trcLimByte;   ///< zero list key: 1-based byte in the trace header
  int trcLimType;   ///< SEGD_KEY_TYPE
  bool limitBytes;  ///< limit the bytes of one output tape
  double byteLimit;
  PathField logDir;
  PathField logFile;
  PathField recLimDir;  ///< field file list
  PathField recLimFile;
  PathField trcLimDir;  ///< zero list
  PathField trcLimFile;
  FILE* logFp;
  PathField outDir;
  PathField outFile;
  FILE* theFile;
  bool itDecimates;  ///< the console shows every itsDecimateIntvl-th field file only
  int itsDecimateIntvl;
  bool blockTraces;    ///< pack the traces of a channel set into blocks (tape output)
  bool ffidOption;     ///< output files are numbered by field file, not in sequence
  bool recLenOR;       ///< recLenFactor replaces the unit of record lengths
  float recLenFactor;  ///< seconds
  bool useScanHdr;     ///< trace lengths come from the channel set descriptors
  bool prepend;        ///< a disk file becomes the first file of the output tape
  PathField prepDir;
  PathField prepFile;
  FILE* prepFp;
};

extern SgdCopyParams SgdParams;

/// Sets every setting to its default; the log's directory is the one that IOHOME names, else the current one.
void segdInit();
