#include "quarlo/tapelib/unitopen.h"

#include <utility>

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
