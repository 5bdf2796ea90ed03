#include "quarlo/blockread.h"

#include "quarlo/tapelib/cons_win.h"

BlockRead PatientReader::read(UnitStruct* units, char* buffer, int bytes, int* count) {
  *count = tlv_tape_read(units, 0, buffer, bytes);
  const bool patient = !units->inputAbort;
  for (int attempt = 0; *count < 0 && patient && attempt < RETRIES; ++attempt) {
    console_out(words.retrying);
    *count = tlv_tape_read(units, 0, buffer, bytes);
  }
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
