/// The end-of-tape protocol: how a job gets its next tape. It stands here once; each job brings its own words.
#pragma once

#include "quarlo/tapelib/cons_win.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// What a job says when tapes are changed in automatic mode; null for no line.
struct TapeChangeWords {
  const char* finished;          ///< a tape ended
  const char* magazineFinished;  ///< no further tape came
  const char* afterMagazine;
  void (*tell)(const char* line) = console_out;  ///< where it says so
};

/// Unloads (if so set) or autoloads the input and asks for the next tape where none came by itself.
/// @return 1 when another input tape follows, 0 when not
int nextInputTape(UnitStruct* units, const TapeChangeWords& words);

/// Changes the tapes of all outputs, moving each drive on by one. When the user declines one, the outputs behind it
/// are unloaded (if so set).
/// @return 1 when every output has its next tape, 0 when the user declined
int nextOutputTapes(UnitStruct* units, const TapeChangeWords& words);
