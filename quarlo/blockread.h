/// Reading a tape block with patience: the retries and the row of skipped bad blocks, the same limits for every job.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"

/// A job's own words.
struct RetryWords {
  const char* retrying;
  const char* skipping;
  const char* tooMany;
};

/// What became of one read.
enum class BlockRead {
  Done,     ///< a block, a filemark or the end of data: the count says
  Skipped,  ///< the block could not be read and was passed over; read on
  Failed    ///< the job cannot go on
};

constexpr int READ_RETRIES = 5;

/// Reads from unit 0, up to READ_RETRIES times more after a failure unless `inputAbort` is set.
/// @param tell says `retrying` before each retry
/// @return bytes, 0 at a mark or the end of data, -1
int readWithRetries(UnitStruct* units, char* buffer, int bytes, void (*tell)(const char* line), const char* retrying);

class PatientReader {
 public:
  static constexpr int SKIPS_IN_A_ROW = 5;

  explicit PatientReader(const RetryWords& jobWords) : words(jobWords) {}

  /// Reads from unit 0. With `inputAbort` set there are no retries and no skips.
  /// @param count receives bytes, 0 at a mark or the end of data, -1
  BlockRead read(UnitStruct* units, char* buffer, int bytes, int* count);

 private:
  RetryWords words;
  int skippedInARow = 0;
};
