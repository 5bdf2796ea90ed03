#include "quarlo/shell/skipdlg.h"

#include "quarlo/common/windows.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

int skipCount = 1;
constexpr NumberField kCountField = {.control = SKIP_COUNT, .value = &skipCount};

void create(WINDOW window) {
  skipCount = 1;
  showNumber(window, kCountField);
}

void accept(WINDOW window, SkipOperation skip) {
  skip(getDevPtr(), 0, skipCount);
  tellControlDialog();
  xvt_vobj_destroy(window);
}

void handleControl(WINDOW window, const EVENT& event, SkipOperation skip) {
  if (readNumber(window, event, kCountField)) return;
  if (isPress(event, SKIP_OK)) return accept(window, skip);
  if (isPress(event, SKIP_CANCEL)) xvt_vobj_destroy(window);
}

}  // namespace

long skipDialogEvent(WINDOW window, const EVENT& event, SkipOperation skip) {
  return dialogEvents(window, event,
                      {.create = create,
                       .control = [skip](WINDOW dialog, const EVENT& change) { handleControl(dialog, change, skip); }});
}
