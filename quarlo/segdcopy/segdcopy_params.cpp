#include "quarlo/segdcopy/segdcopy_params.h"

#include <cstdlib>

#include "libkyr/text.h"

SgdCopyParams SgdParams = {};

void segdInit() {
  SgdParams = {};
  SgdParams.blockType = 0x1000001;
  SgdParams.useLog = true;
  SgdParams.recLimType = SEGD_INCLUDE;
  SgdParams.byteLimit = 10 * kBytesPerGigabyte;
  const char* const home = std::getenv("IOHOME");
  DIRECTORY here{};
  if (home != nullptr)
    copyText(SgdParams.logDir, home);
  else if (xvt_fsys_get_dir(&here))
    copyText(SgdParams.logDir, fieldText(here.path));
  copyText(SgdParams.logFile, "SegdCopy.txt");
  SgdParams.itsDecimateIntvl = 10;
  SgdParams.recLenFactor = 1.024F;
  copyText(SgdParams.prepDir, " ");
}
