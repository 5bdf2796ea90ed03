/// The end-of-tape protocol: how a job gets its next tape, and what it leaves at the end of its output tapes. It stands
/// here once; each job brings its own words.
#pragma once

#include <span>

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// What a job says when tapes are changed in automatic mode; null for no line.
struct TapeChangeWords {
  const char* finished;          ///< a tape ended
  const char* magazineFinished;  ///< no further tape came
  const char* afterMagazine;
  void (*tell)(const char* line) = console_out;  ///< where it says so
};

/// Unloads (if so set) or autoloads the input and asks for the next tape where none came by itself.
/// @return 1 when another input tape follows, 0 when not or when the job was stopped meanwhile
int nextInputTape(UnitStruct* units, const TapeChangeWords& words);

/// Changes the tapes of all outputs, moving each drive on by one. When the user declines one, the outputs behind it
/// are unloaded (if so set).
/// @return 1 when every output has its next tape, 0 when the user declined or stopped the job
int nextOutputTapes(UnitStruct* units, const TapeChangeWords& words);

/// What came of a block for the output tapes.
enum class TapeWrite {
  Written,
  Full,   ///< one of them is at its end: none has the block, and their next tapes can take it
  Failed  ///< after a console line
};

/// Writes one block to every output tape.
TapeWrite writeToOutputTapes(UnitStruct* units, std::span<const char> block);

/// How a job ends for its output tapes.
enum class JobEnd {
  Success,  ///< every tape is closed, also one that took nothing
  CutShort  ///< failed, stopped, or a further tape declined: a tape that took nothing of this job stays as it is
};

/// Ends the present output tapes with `marks` filemarks each, before others come: what is on them is complete.
/// @return false when they could not be written
bool completeOutputTapes(UnitStruct* units, int marks);

/// Writes the closing filemarks at the end of a job on every open output tape that takes them, and says
/// "Wrote double end-of-file." when that succeeded. A tape whose position is lost takes none.
/// @param marks how many; a tape whose last item is a block takes two in any case
/// @return false after a console line when a mark could not be written
bool closeOutputTapes(UnitStruct* units, JobEnd end, int marks, void (*tell)(const char* line) = console_out);
