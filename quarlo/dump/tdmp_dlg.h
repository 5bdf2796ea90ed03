/// The tape dump: blocks of the input drive as text, in a window and in the file "tdump.txt".
#pragma once

#include <cstdio>

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Modeless, from DLG_TAPE_DUMP. A user event tells it that the units changed.
long tapeDumpDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// 1: a drive is open, `str` is its name. 0: none is.
void set_tdmp_state(WINDOW theWindow, int newState, const char* str);

/// Lets events run. @return nonzero when the dump is to stop
int getHaltDump(WINDOW theWindow);

// The formatters show a block of `nBytes` bytes with the settings of the dialog, in the dump window and in `fp` (null:
// only the window). A block of 0 bytes or fewer produces nothing.
void do_hex(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* ioUnit);
/// @param textType DF_ASCII or DF_EBCDIC
void do_text(const char* readBuf, int nBytes, std::FILE* fp, int textType, UnitStruct* ioUnit);
void do_hword(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* ioUnit);
void do_fword(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* ioUnit);
/// @param floatType DF_IBM_FLOAT or DF_IEEE_FLOAT
void do_float(const char* readBuf, int nBytes, std::FILE* fp, int floatType, UnitStruct* ioUnit);

/// Writes text and a line end, and flushes; nothing for a null `fp`. @return false after a box when it failed
bool filePrint(const char* dumpStr, std::FILE* fp);
