/// SEG D in the blocks of a tape: labels, and the traces of one block.
#pragma once

#include <span>
#include <vector>

#include "quarlo/tapelib/formats/segdwalk.h"

/// A storage unit label: its sequence number, then an identifier that begins with a letter. A header of the same length
/// is none, be it one by its format code or by its own counts.
bool isSegdLabel(std::span<const char> block);

/// The traces of one block of a field file, in bytes of the block; the last one of a block that cannot be understood
/// has no set.
struct SegdBlock {
  std::vector<SegdTracePlace> traces;
  std::vector<SegdDamage> damage;
};

/// Takes a block apart. A count of samples in a trace header extension holds; without one the channel set's times do,
/// where they lead to the block's end or to another trace, and else the block's end itself.
/// @param isComplete the traces that are announced have all come: what is no trace is a trailer then
SegdBlock segdTracesOf(std::span<const char> block, const SegdRecord& record, bool isComplete);
