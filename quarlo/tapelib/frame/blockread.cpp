#include "quarlo/tapelib/frame/blockread.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

TapeRead PatientReader::readOnce() { return noted(attempt()); }

TapeRead PatientReader::read() {
  TapeRead read = attempt();
  const auto mayTryOn = [&] { return read.kind == TapeRead::Kind::Failed && !units_->inputAbort; };
  for (int retry = 0; mayTryOn() && retry < kRetries; ++retry) {
    words_.tell(words_.retrying);
    read = attempt();
  }
  const bool maySkip = mayTryOn() && words_.skipping != nullptr;
  if (maySkip && skippedInARow_ < kSkipsInARow) {
    ++skippedInARow_;
    return passOver();
  }
  if (!read.failed()) skippedInARow_ = 0;
  noted(read);
  if (maySkip) words_.tell(words_.tooMany);
  return read;
}

/// Skips what could not be read. A filemark stops the skip, and is one to the job though it could not be read.
TapeRead PatientReader::passOver() {
  words_.tell(words_.skipping);
  const bool failed = tlv_skip_blocks(units_, 0, 1) != 0;
  if (failed && tlv_stopped_by_mark(units_, 0)) {
    units_->eofMark = 1;
    return noted({TapeRead::Kind::Mark});
  }
  noteLost();
  stuck_ = failed;
  return {TapeRead::Kind::Skipped};
}

/// What a read came to, into the place and the list. With its position lost a tape has no block that could not be read,
/// and a mark is none.
TapeRead PatientReader::noted(const TapeRead& read) {
  if (read.kind == TapeRead::Kind::Block) place.passBlocks(1);
  if (read.kind == TapeRead::Kind::Mark) place.passMark();
  if (read.kind == TapeRead::Kind::Failed && !tlv_failed_at_mark(units_, 0)) noteLost();
  stuck_ = stuck_ && read.failed();
  return read;
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
