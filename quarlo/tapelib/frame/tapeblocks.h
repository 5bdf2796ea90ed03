/// The input tape of a reformat, block by block: retries, blocks that are passed over and tape changes as the copies
/// have them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "libkyr/process.h"
#include "quarlo/tapelib/frame/blockread.h"

/// What the user calls the counts that a tape's input announces.
constexpr const char* kMostRecordsName = "Records at most";
constexpr const char* kMostTracesName = "Traces a record at most";

/// What comes next from the tapes.
enum class TapeItem {
  Block,
  FileEnd,  ///< a filemark, or the end of the data without one
  NewTape,  ///< the next one is in its place
  Lost,     ///< a block that cannot be read was passed over
  End,      ///< of the last tape, or of the job: no further tape came
  Failed    ///< said on the console
};

class TapeBlocks {
 public:
  /// @param procRecord its unit 0 is an open tape
  explicit TapeBlocks(ProcessRecord* procRecord);

  /// Two filemarks in a row, or the end of the data, end a tape.
  TapeItem next();
  /// The block that came last, until the next one is asked for.
  std::span<const char> block() const { return block_; }
  /// Lets the block that came last come again. It is kept in memory of its own.
  void putBack();
  /// Goes on behind the next filemark. @return false after a line
  bool skipFile();
  /// Whether a block follows: another file behind the mark that was met.
  bool goesOn() const;
  /// The next that comes is the end.
  void endHere() { isOver_ = true; }

  /// Where the block stands that came last, or was passed over: "tape 1 file 2 block 7".
  std::string where() const;
  /// Tape files that were read to their end.
  int files() const { return files_; }
  /// Names the blocks that could not be read.
  void tellOfLost() const { reader_.tellOfLost(); }

 private:
  TapeItem nextTape();
  TapeItem takeMark(TapeRead::Kind kind);

  ProcessRecord* procRecord_;
  UnitStruct* units_;
  PatientReader reader_;
  TapePlace::Block at_;  // of what came last
  std::span<const char> block_;
  std::vector<char> held_;
  bool isHeld_ = false;
  int marks_ = 0;  // in a row
  int files_ = 0;
  bool hasEnded_ = false;  // the present tape
  bool isOver_ = false;
};
