#include "quarlo/blockread.h"

#include "quarlo/tapelib/cons_win.h"

int readWithRetries(UnitStruct* units, char* buffer, int bytes, void (*tell)(const char* line), const char* retrying) {
  int count = tlv_tape_read(units, 0, buffer, bytes);
  for (int attempt = 0; count < 0 && !units->inputAbort && attempt < READ_RETRIES; ++attempt) {
    tell(retrying);
    count = tlv_tape_read(units, 0, buffer, bytes);
  }
  return count;
}

BlockRead PatientReader::read(UnitStruct* units, char* buffer, int bytes, int* count) {
  const bool patient = !units->inputAbort;
  *count = readWithRetries(units, buffer, bytes, console_out, words.retrying);
  if (*count >= 0) {
    skippedInARow = 0;
    return BlockRead::Done;
  }
  if (!patient) {
    return BlockRead::Failed;
  }
  if (skippedInARow < SKIPS_IN_A_ROW) {
    console_out(words.skipping);
    tlv_skip_blocks(units, 0, 1);
    ++skippedInARow;
    return BlockRead::Skipped;
  }
  console_out(words.tooMany);
  return BlockRead::Failed;
}
