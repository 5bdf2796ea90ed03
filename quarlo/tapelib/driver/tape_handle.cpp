#include "quarlo/tapelib/driver/tape_handle.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace {

bool isSpace(int operation) {
  return operation == MTFSR || operation == MTBSR || operation == MTFSF || operation == MTBSF || operation == MTEOM;
}

/// Also a tape that has not moved shows a mark before it, at the first block of a file.
bool showsMark(const mtget& status) { return status.mt_blkno == 0 && GMT_EOF(status.mt_gstat) != 0; }

bool isForward(int operation) { return operation == MTFSR || operation == MTFSF || operation == MTEOM; }

/// Errors after which there is no cartridge, or no drive, to go on with.
bool isGone(int error) { return error == ENOMEDIUM || error == ENODEV || error == ENXIO || error == EBADF; }

}  // namespace

bool TapeHandle::move(short operation, int count) {
  mtop command{};
  command.mt_op = operation;
  command.mt_count = count;
  return tapeDriver().operate(fd_, command) >= 0;
}

bool TapeHandle::ask(long& block) {
  if (tapeDriver().position(fd_, block) < 0) return false;
  answers_ = true;
  return true;
}

bool TapeHandle::standsAt(long block) {
  long now = -1;
  return ask(now) && now == block;
}

int TapeHandle::status(mtget& status) const { return tapeDriver().status(fd_, status); }

void TapeHandle::settle() {
  if (!ask(at_)) at_ = -1;
}

bool TapeHandle::takeNewsOfLoss() { return std::exchange(news_, false); }

void TapeHandle::lose() {
  if (lost_) return;
  lost_ = news_ = true;
  passed_ = false;
  at_ = -1;
  // Makes the driver forget that the last operation was a write: else it would put a filemark at the beginning of the
  // cartridge that is in the drive now.
  move(MTUNLOCK, 1);
}

// ---- reading ----------------------------------------------------------------------------------------------------

TapeAnswer TapeHandle::read(void* buffer, std::size_t size, int& bytes) {
  bytes = 0;
  unreadableMark_ = false;
  if (lost_ || passed_) {
    errno = EIO;
    return TapeAnswer::FAILED;
  }
  const ssize_t result = tapeDriver().read(fd_, buffer, size);
  if (result < 0) return afterFailedRead(errno);
  mtget now{};
  if (result == 0 && status(now) >= 0 && GMT_EOD(now.mt_gstat) != 0) return TapeAnswer::END_OF_DATA;
  if (at_ >= 0) ++at_;
  bytes = static_cast<int>(result);
  return result == 0 ? TapeAnswer::MARK : TapeAnswer::BLOCK;
}

TapeAnswer TapeHandle::afterFailedRead(int error) {
  mtget now{};
  long block = -1;
  const bool known = status(now) >= 0;
  if (known && GMT_EOD(now.mt_gstat) != 0) return TapeAnswer::END_OF_DATA;
  if (!known || isGone(error) || positionGone(now)) {
    lose();
    return TapeAnswer::FAILED;
  }
  if (!answers_ || at_ < 0) return withoutPosition(error);
  if (!ask(block) || (block != at_ && block != at_ + 1)) {
    lose();
    return TapeAnswer::FAILED;
  }
  if (block == at_) return error == EIO ? lookAhead() : TapeAnswer::FAILED;
  stepBack(1);
  return error == ENOMEM ? TapeAnswer::TOO_LONG : TapeAnswer::FAILED;
}

/// A read failed and nothing was passed. At the end of data a space forward fails too and says what it met.
TapeAnswer TapeHandle::lookAhead() {
  mtget now{};
  const bool passed = move(MTFSR, 1);
  const bool stopped = !passed && status(now) >= 0;
  if (stopped && GMT_EOD(now.mt_gstat) != 0) return TapeAnswer::END_OF_DATA;
  long block = -1;
  const bool asked = ask(block);
  if (asked && block == at_ + 1) {  // over a block, or the mark that stopped the space
    unreadableMark_ = stopped && showsMark(now);
    move(MTBSR, 1);
    if (!standsAt(at_)) lose();
  } else if (!asked || block != at_) {
    lose();
  }
  return TapeAnswer::FAILED;
}

/// As afterFailedRead and lookAhead for a drive that cannot say its position: judged by what a space forward meets.
TapeAnswer TapeHandle::withoutPosition(int error) {
  if (error == ENOMEM) {
    passed_ = !move(MTBSR, 1);
    return TapeAnswer::TOO_LONG;
  }
  if (error != EIO) return TapeAnswer::FAILED;
  mtget now{};
  if (move(MTFSR, 1)) {
    passed_ = !move(MTBSR, 2);
  } else if (status(now) < 0) {
    lose();
  } else if (GMT_EOD(now.mt_gstat) != 0) {
    return TapeAnswer::END_OF_DATA;
  } else if (GMT_EOF(now.mt_gstat) != 0) {
    move(MTBSR, 1);  // back over the mark: reported as an error, and done
    passed_ = !move(MTBSR, 1);
  }
  return TapeAnswer::FAILED;
}

/// Back in front of the block that failed. If the drive cannot, the handle remembers that it is passed already.
void TapeHandle::stepBack(int blocks) {
  move(MTBSR, blocks);
  long block = -1;
  if (!ask(block) || (block != at_ && block != at_ + 1))
    lose();
  else
    passed_ = block == at_ + 1;
}

/// A read, and another where that failed: a failure that passes is no unreadable block.
TapeAnswer TapeHandle::readAgain(void* buffer, std::size_t size) {
  int bytes = 0;
  const TapeAnswer answer = read(buffer, size, bytes);
  return answer == TapeAnswer::FAILED && !passed_ ? read(buffer, size, bytes) : answer;
}

bool TapeHandle::goesOn(void* buffer, std::size_t size) {
  TapeAnswer answer = readAgain(buffer, size);
  mtop back{};
  back.mt_op = MTBSR;
  back.mt_count = answer == TapeAnswer::BLOCK ? 1 : 0;
  if (answer == TapeAnswer::MARK) {
    answer = readAgain(buffer, size);
    back.mt_op = MTBSF;
    back.mt_count = answer == TapeAnswer::MARK ? 2 : 1;
  }
  operate(back);
  return !lost_ && answer != TapeAnswer::MARK && answer != TapeAnswer::END_OF_DATA;
}

// ---- writing ----------------------------------------------------------------------------------------------------

ssize_t TapeHandle::write(const void* buffer, std::size_t size) {
  if (lost_) {
    errno = EIO;
    return -1;
  }
  passed_ = false;
  wrote_ = true;
  const ssize_t result = tapeDriver().write(fd_, buffer, size);
  if (result < 0) {
    const int error = errno;
    afterFailedWrite(error, false);
    errno = error;
  } else if (at_ >= 0) {
    ++at_;
  }
  return result;
}

/// Nothing may be written to a cartridge that was put in meanwhile: unless the tape is known to stand where it must,
/// its position counts as lost. The end of the medium and a refusal lose nothing.
void TapeHandle::afterFailedWrite(int error, bool marks) {
  if (error == ENOSPC || error == EACCES || error == EINVAL) return;
  mtget now{};
  if (isGone(error) || status(now) < 0 || positionGone(now)) return lose();
  if (!answers_ || at_ < 0) {
    if (now.mt_blkno < 0) lose();
    return;
  }
  // At the beginning of the tape the number cannot tell one cartridge from another; the driver's own count can.
  const bool doubtful = at_ == 0 && (marks || now.mt_blkno < 0);
  if (doubtful || !standsAt(at_)) lose();
}

// ---- everything else --------------------------------------------------------------------------------------------

int TapeHandle::operate(const mtop& command) {
  const bool regains = command.mt_op == MTREW || command.mt_op == MTOFFL;
  stopped_ = false;
  if (lost_ && !regains) {
    errno = EIO;
    return -1;
  }
  const mtop request = withoutPassed(command);
  if (isSpace(request.mt_op) && request.mt_count == 0) return 0;
  const int result = tapeDriver().operate(fd_, request);
  const int error = errno;
  if (isSpace(request.mt_op)) afterSpace(request, result < 0);
  if (request.mt_op == MTWEOF) {
    wrote_ = true;
    if (result < 0)
      afterFailedWrite(error, true);
    else if (at_ >= 0)
      at_ += request.mt_count;
  }
  if (regains && result < 0) lose();
  if (regains && result >= 0) {
    lost_ = news_ = false;
    at_ = 0;
  }
  errno = error;
  return result;
}

/// A space over blocks that begins behind a failed block begins before it in the caller's eyes.
mtop TapeHandle::withoutPassed(const mtop& command) {
  mtop request = command;
  if (!std::exchange(passed_, false) || (request.mt_op != MTFSR && request.mt_op != MTBSR)) return request;
  const int wanted = (request.mt_op == MTFSR ? request.mt_count : -request.mt_count) - 1;
  request.mt_op = wanted < 0 ? MTBSR : MTFSR;
  request.mt_count = std::abs(wanted);
  if (at_ >= 0) ++at_;
  return request;
}

void TapeHandle::afterSpace(const mtop& command, bool failed) {
  mtget now{};
  long block = -1;
  const bool known = status(now) >= 0;
  const bool asked = ask(block);
  if (!asked && !answers_) {
    at_ = -1;
    if (failed && known && positionGone(now)) lose();
    return;
  }
  bool strange = !asked || !known;
  if (failed && !strange) {
    strange = positionGone(now);
    // A space that fails stops short of its goal on the way to it, and stands at the beginning only if the drive says
    // so.
    if (at_ >= 0) strange |= isForward(command.mt_op) ? block < at_ : block > at_;
    strange |= at_ > 0 && block == 0 && GMT_BOT(now.mt_gstat) == 0;
  }
  if (strange) return lose();
  stopped_ = failed && command.mt_op == MTFSR && showsMark(now) && at_ >= 0 && block > at_;
  at_ = block;
}

int TapeHandle::close() { return tapeDriver().close(std::exchange(fd_, 0)); }
