#include "quarlo/tapelib/frame/fieldchoice.h"

#include <algorithm>

MoreParams fieldFileChoice(const KyrFieldFiles& files) {
  MoreParams choice{};
  choice.itHasMinMaxOn = static_cast<short>(files.hasLimits != 0);
  choice.itsFFMin = files.above;
  choice.itsFFMax = files.below;
  // An entry of the list that is not used repeats the first.
  const int listed = std::clamp(files.leftOutCount, 0, std::min(int{KYR_FIELD_FILES}, kFieldFileListSize));
  choice.itHasListOn = static_cast<short>(listed > 0);
  for (int i = 0; i < kFieldFileListSize; ++i) choice.itsFFList[i] = files.leftOut[i < listed ? i : 0];
  return choice;
}
