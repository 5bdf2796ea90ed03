/// What came of one read of a tape: one answer for all jobs, and the call that gives it.
#pragma once

#include <cstddef>
#include <span>

#include "quarlo/tapelib/tlv_fcn.h"

struct TapeRead {
  enum class Kind {
    Block,
    Mark,
    EndOfData,
    Skipped,  ///< the block could not be read and was passed over; read on
    Failed,   ///< the tape stands before what could not be read
    Lost      ///< so is the tape's position: nothing can be read until it is rewound
  };
  Kind kind = Kind::Failed;
  int bytes = 0;  ///< of a block
  int error = 0;  ///< errno of a failure; ENOMEM: the block is longer than readLimit

  bool failed() const { return kind == Kind::Failed || kind == Kind::Lost; }
  /// The block in the buffer that it was read into.
  std::span<const char> in(const char* buffer) const { return {buffer, static_cast<std::size_t>(bytes)}; }
};

/// What a job asks a unit for: all that it holds, of drives of the M4 family less.
/// @param limited false when the user wants all of those drives, too
int readSize(const UnitStruct& unit, bool limited = true);

/// Reads one block as tlv_tape_read does, which sets the unit's marks. Never `Skipped`.
TapeRead readUnit(UnitStruct* units, int uNum, char* buffer, int bytes);
