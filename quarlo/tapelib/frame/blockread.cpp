#include "quarlo/tapelib/frame/blockread.h"

#include <cerrno>

#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

int PatientReader::readOnce(UnitStruct* units, char* buffer, int bytes) {
  const int count = tlv_tape_read(units, 0, buffer, bytes);
  note(units, count);
  return count;
}

BlockRead PatientReader::read(UnitStruct* units, char* buffer, int bytes, int* count) {
  const bool patient = !units->inputAbort;
  const auto mayTryOn = [&] { return *count < 0 && patient && !tlv_position_lost(units, 0); };
  *count = tlv_tape_read(units, 0, buffer, bytes);
  for (int attempt = 0; mayTryOn() && attempt < kRetries; ++attempt) {
    words_.tell(words_.retrying);
    *count = tlv_tape_read(units, 0, buffer, bytes);
  }
  const bool maySkip = mayTryOn() && words_.skipping != nullptr;
  if (maySkip && skippedInARow_ < kSkipsInARow) {
    ++skippedInARow_;
    return passOver(units, count);
  }
  note(units, *count);
  if (*count >= 0) {
    skippedInARow_ = 0;
    return BlockRead::Done;
  }
  if (maySkip) words_.tell(words_.tooMany);
  return BlockRead::Failed;
}

/// Skips what could not be read. A filemark stops the skip, and is one to the job though it could not be read.
BlockRead PatientReader::passOver(UnitStruct* units, int* count) {
  words_.tell(words_.skipping);
  const bool failed = tlv_skip_blocks(units, 0, 1) != 0;
  if (failed && tlv_stopped_by_mark(units, 0)) {
    units->eofMark = 1;
    *count = 0;
    note(units, *count);
    return BlockRead::Done;
  }
  noteLost();
  stuck_ = failed;
  return BlockRead::Skipped;
}

/// What a read came to, into the place and the list. With its position lost a tape has no block that could not be read,
/// and a mark is none.
void PatientReader::note(const UnitStruct* units, int count) {
  const int reason = errno;
  if (count > 0)
    place.passBlocks(1);
  else if (count == 0 && units->eofMark != 0)
    place.passMark();
  else if (count < 0 && !tlv_position_lost(units, 0) && !tlv_failed_at_mark(units, 0))
    noteLost();
  stuck_ = stuck_ && count < 0;
  errno = reason;
}

/// The block that the tape stands before could not be read. It counts once.
void PatientReader::noteLost() {
  if (stuck_) return;
  place.passBlocks(1);
  if (++lost_ <= kNamed) firstLost_.push_back(place.block());
}

void PatientReader::tellOfLost() const {
  if (lost_ == 0) return;
  std::string line = formatText("  ** %lld block%s could not be read:", lost_, plural(lost_));
  const char* between = " ";
  for (const TapePlace::Block& block : firstLost_) {
    line += formatText("%stape %d file %d block %lld", between, block.tape, block.file, block.block);
    between = ", ";
  }
  if (lost_ > kNamed) line += formatText(" and %lld more", lost_ - kNamed);
  words_.tell((line + ".").c_str());
}
