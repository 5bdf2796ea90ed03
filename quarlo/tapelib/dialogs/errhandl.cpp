#include "quarlo/tapelib/dialogs/errhandl.h"

#include <cstdint>
#include <cstring>

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

// The word spans the four option flags of the unit; its bytes are 0 or 1 as they were found, or those of 0 or 1.
std::int32_t localStopFlag = 0;
void* flagWord = nullptr;
const char* hintOfJob = nullptr;

static_assert(sizeof(bool) == 1);
static_assert(offsetof(UnitStruct, useMultipleOut) + 1 - offsetof(UnitStruct, inputAbort) == sizeof localStopFlag);

void createErrorOptions(WINDOW window) {
  flagWord = xvt_vobj_get_data(window);
  localStopFlag = 0;
  if (flagWord == nullptr)
    enableControl(window, ERR_STOP_ON_ERROR, false);
  else
    std::memcpy(&localStopFlag, flagWord, sizeof localStopFlag);
  checkControl(window, ERR_STOP_ON_ERROR, localStopFlag != 0);
  if (hintOfJob != nullptr) setControlText(window, ERR_HINT, hintOfJob);
}

void acceptErrorOptions(WINDOW window) {
  if (flagWord != nullptr) std::memcpy(flagWord, &localStopFlag, sizeof localStopFlag);
  xvt_vobj_destroy(window);
}

constexpr ControlAction kActions[] = {
    {ERR_OK, acceptErrorOptions},
    {ERR_CANCEL, xvt_vobj_destroy},
};

void handleControl(WINDOW window, const EVENT& event) {
  if (!toggleFlag(window, event, ERR_STOP_ON_ERROR, &localStopFlag)) runAction(kActions, window, event);
}

}  // namespace

long ErrorDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createErrorOptions, .control = handleControl});
}

bool editErrorOptions(UnitStruct* units, const char* hint) {
  const bool inputStays = units->inputNoRewind;
  const bool outputStays = units->outputNoRewind;
  const bool several = units->useMultipleOut;
  hintOfJob = hint;
  const bool opened = xvt_dlg_create_res(WD_MODAL, DLG_ERROR_OPTIONS, ErrorDlg_eh, &units->inputAbort) != NULL_WIN;
  hintOfJob = nullptr;
  units->inputNoRewind = inputStays;
  units->outputNoRewind = outputStays;
  units->useMultipleOut = several;
  return opened;
}
