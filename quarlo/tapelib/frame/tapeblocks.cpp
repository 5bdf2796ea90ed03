#include "quarlo/tapelib/frame/tapeblocks.h"

#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/frame/rfmttape.h"

namespace {

constexpr RetryWords kRetryWords = {"  *** Error reading from input tape - retrying...",
                                    "Retries failed. Skipping trace.",
                                    "  *** Too many sequential bad blocks. Aborting."};

}  // namespace

TapeBlocks::TapeBlocks(ProcessRecord* procRecord)
    : procRecord_(procRecord), units_(GetDevUnit(procRecord)), reader_(units_, kRetryWords) {}

TapeItem TapeBlocks::next() {
  if (std::exchange(isHeld_, false)) return TapeItem::Block;
  if (isOver_) return TapeItem::End;
  if (hasEnded_) return nextTape();
  const TapeRead read = reader_.read();
  const bool isEnd = read.kind == TapeRead::Kind::Mark || read.kind == TapeRead::Kind::EndOfData;
  if (!isEnd) at_ = reader_.place.block();
  switch (read.kind) {
    case TapeRead::Kind::Block:
      marks_ = 0;
      block_ = read.in(units_->ioBuffer);
      return TapeItem::Block;
    case TapeRead::Kind::Skipped:
      marks_ = 0;
      return TapeItem::Lost;
    case TapeRead::Kind::Mark:
    case TapeRead::Kind::EndOfData:
      return takeMark(read.kind);
    default:
      break;
  }
  isOver_ = true;
  ProcessConsole(procRecord_, formatText("  *** The input ends at %s.", where().c_str()).c_str());
  return TapeItem::Failed;
}

TapeItem TapeBlocks::takeMark(TapeRead::Kind kind) {
  hasEnded_ = kind == TapeRead::Kind::EndOfData || marks_ > 0;
  if (marks_++ > 0) return nextTape();
  ++files_;
  return TapeItem::FileEnd;
}

TapeItem TapeBlocks::nextTape() {
  isOver_ = doTapeContinue(procRecord_) == 0;
  if (isOver_) return TapeItem::End;
  reader_.place.nextTape();
  hasEnded_ = false;
  marks_ = 0;
  return TapeItem::NewTape;
}

void TapeBlocks::putBack() {
  if (block_.data() != held_.data()) held_.assign(block_.begin(), block_.end());
  block_ = held_;
  isHeld_ = true;
}

bool TapeBlocks::skipFile() {
  if (tlv_skip_files(units_, 0, 1) == 0) {
    reader_.place.passMark();
    marks_ = 1;
    ++files_;
    return true;
  }
  // A tape may end without a mark behind its last file.
  if (!tlv_position_lost(units_, 0) && reader_.readOnce().kind == TapeRead::Kind::EndOfData) {
    hasEnded_ = true;
    return true;
  }
  isOver_ = true;
  return false;
}

bool TapeBlocks::goesOn() const { return !hasEnded_ && tlv_goes_on(units_, 0, units_->ioBuffer); }

std::string TapeBlocks::where() const {
  return formatText("tape %d file %d block %lld", at_.tape, at_.file, at_.block);
}
