/// The text reel header of a SEG Y output, from a caller's text or from a text file.
#pragma once

#include <string>

#include "libkyr/process.h"
#include "quarlo/tapelib/formats/segyformat.h"

/// The text reel header that the description asks for: itsReelBytes bytes (not negative), in EBCDIC or as they come.
/// With a text file: its first bytes, zero bytes behind them; one that cannot be read gives zero bytes after a console
/// line. Otherwise `text`, padded with blanks; a null text gives blanks.
std::string segyTextHeader(ProcessRecord* procRecord, const SegyFormat& format, const char* text);
