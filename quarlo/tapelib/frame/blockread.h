/// Reading tape blocks with patience: the retries and the row of skipped bad blocks, the same limits for every job, and
/// the list of what could not be read.
#pragma once

#include <vector>

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/taperead.h"

/// A job's own words.
struct RetryWords {
  const char* retrying;
  const char* skipping;  ///< null: a bad block is not passed over, it ends the job
  const char* tooMany;
  void (*tell)(const char* line) = console_out;  ///< where it says so
};

/// Where a job stands on its input tapes. Numbers count from 1 since the job began with the tape; marks in a row end
/// one file.
class TapePlace {
 public:
  struct Block {
    int tape = 1;
    int file = 1;
    long long block = 0;
  };

  void passBlocks(int count) {
    at_.block += count;
    marks_ = 0;
  }
  void passMark() {
    if (marks_++ > 0) return;
    ++at_.file;
    at_.block = 0;
  }
  void nextTape() {
    at_ = {at_.tape + 1, 1, 0};
    marks_ = 0;
  }
  /// The block passed last.
  const Block& block() const { return at_; }

 private:
  Block at_;
  int marks_ = 0;  // in a row
};

/// Unit 0 read by a copy job into the tape buffer, block by block.
class PatientReader {
 public:
  static constexpr int kRetries = 5;
  static constexpr int kSkipsInARow = 5;

  /// @param limited as of readSize
  PatientReader(UnitStruct* allUnits, const RetryWords& jobWords, bool limited = true)
      : units_(allUnits), words_(jobWords), size_(readSize(*allUnits, limited)) {}

  /// Reads with retries and skips; without them when `inputAbort` is set or the tape's position is lost.
  TapeRead read();
  /// Reads once.
  TapeRead readOnce();
  /// Most bytes that a block may have.
  unsigned limit() const { return readLimit(*units_, size_); }

  /// What the job passes over by other means belongs to the place.
  TapePlace place;

  /// The line that names the blocks that could not be read, if there are any: behind the summary, where people look in
  /// the morning.
  void tellOfLost() const;

 private:
  static constexpr int kNamed = 10;

  TapeRead attempt() { return readUnit(units_, 0, units_->ioBuffer, size_); }
  TapeRead passOver();
  TapeRead noted(const TapeRead& read);
  void noteLost();

  UnitStruct* units_;
  RetryWords words_;
  int size_;  // that a read asks for
  int skippedInARow_ = 0;
  bool stuck_ =
      false;  // the tape still stands before the block that was to be skipped: what fails there is in the list
  std::vector<TapePlace::Block> firstLost_;
  long long lost_ = 0;
};
