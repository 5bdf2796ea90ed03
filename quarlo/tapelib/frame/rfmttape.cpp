#include "quarlo/tapelib/frame/rfmttape.h"

#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/tapechange.h"

namespace {

constexpr TapeChangeWords kReformatWords = {"Tape finished.", "Magazine finished.", "  "};

void closeInput(UnitStruct* units) {
  if (units->type == UT_TAPE && units->state == 1 && !units->inputNoRewind) tlv_rewind(units, 0);
  closeDiskUnit(units);
}

}  // namespace

int doTapeContinue(ProcessRecord* procRecord) {
  UnitStruct* const units = GetDevUnit(procRecord);
  return units != nullptr ? nextInputTape(units, kReformatWords) : 0;
}

int doOutTapeContinue(ProcessRecord* procRecord) {
  UnitStruct* const units = GetDevUnit(procRecord);
  return units != nullptr ? nextOutputTapes(units, kReformatWords) : 0;
}

void bail(ProcessRecord* procRecord, Link theLink, WINDOW progressWindow, long progressTimer) {
  UnitStruct* const units = GetDevUnit(procRecord);
  if (units != nullptr) closeInput(units);
  if (IsLinkValid(theLink)) CloseFile(procRecord, theLink);
  // The unit of a dataset output has no stream of its own: its names go with the dialog's next choice.
  if (units != nullptr && units[1].fp != nullptr) closeDiskUnit(&units[1]);
  if (progressTimer != 0) xvt_timer_destroy(progressTimer);
  if (progressWindow != NULL_WIN) xvt_vobj_destroy(progressWindow);
  xvt_dm_post_error("Error occurred during reformat. Check console for more information.");
}
