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

class PatientReader {
 public:
  static constexpr int RETRIES = 5;
  static constexpr int SKIPS_IN_A_ROW = 5;

  explicit PatientReader(const RetryWords& jobWords) : words(jobWords) {}

  /// Reads from unit 0. With `inputAbort` set there are no retries and no skips.
  /// @param count receives bytes, 0 at a mark or the end of data, -1
  BlockRead read(UnitStruct* units, char* buffer, int bytes, int* count);

 private:
  RetryWords words;
  int skippedInARow = 0;
};
