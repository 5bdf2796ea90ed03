#include "quarlo/tapelib/unitopen.h"

#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"

int closeUnit(UnitStruct* units, int uNum) {
  if (units[uNum].state == 0) return 0;
  return units[uNum].type == UT_DISK ? closeDiskUnit(&units[uNum]) : tlv_tape_close(units, uNum);
}

bool openChosenDrive(UnitStruct* units, int uNum, bool readOnly) {
  UnitStruct& unit = units[uNum];
  if (unit.theListItem < 0) return false;
  const bool automatic = std::exchange(unit.autoMode, false);
  tlv_tape_open(units, uNum, readOnly);
  unit.autoMode = automatic;
  if (unit.state == 1 && unit.hasAutoLoader) tlvInitLoader(units, uNum);
  return unit.state == 1;
}

void openChosenOutputs(UnitStruct* units) {
  const bool automatic = std::exchange(units[1].autoMode, false);
  tlv_tape_open(units, kAllOutputs);
  units[1].autoMode = automatic;
  if (automatic && units[1].hasAutoLoader) tlvInitLoader(units, kAllOutputs);
}

int closeOutputs(UnitStruct* units) {
  return units[1].type == UT_DISK ? closeDiskUnit(&units[1]) : tlv_tape_close(units, kAllOutputs);
}

int rewindOutputs(UnitStruct* units) {
  int result = 0;
  for (int uNum = 1; uNum <= units->nOutputs; ++uNum)
    if (units[uNum].state == 1 && tlv_rewind(units, uNum) != 0) result = -1;
  return result;
}

std::string outputTapesName(const UnitStruct* units) {
  return units->nOutputs > 1 ? formatText("%d Tape Drives", units->nOutputs) : units[1].name;
}
