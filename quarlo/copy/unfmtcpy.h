/// The image copy: every block byte for byte, every filemark in its place, between tapes and tape-image files.
#pragma once

#include <cstdio>

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Values of TheOutFileType.
enum OUT_FILE_TYPE : int { OF_TPF = 4, OF_RAW = 5 };

/// Values of TheBlockType, the word in every header of a tape-image file. The first limits reads on M4 drives.
constexpr int kBlockType1 = 0x1000001;
constexpr int kBlockType2 = 0x2000002;

// The job's settings, edited by NoFmtParam_eh and reset by unfmtInit each time the copy dialog opens.
extern int TheOutFileType;  ///< disk output: OF_TPF or OF_RAW
extern int TheBlockType;
extern int EofCount;      ///< consecutive filemarks that end an input tape
extern bool Concatenate;  ///< the first filemark ends each input tape
extern bool OneForOne;    ///< each input tape goes to an output tape of its own
extern bool PrintFiles;   ///< a console line for every file and tape

void unfmtInit();
int getOutFileType();

/// Makes a file an empty tape-image file. @return false after a line when its header could not be written
bool beginTapeImage(std::FILE* stream, const char* name);

/// Image copy from a tape / from a tape-image file positioned behind its file header. @return JOB_RESULT
int doTapeCopy(UnitStruct* ioUnit);
int doDiskCopy(UnitStruct* ioUnit);
