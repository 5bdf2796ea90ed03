#include "quarlo/shell/aboutdlg.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {
constexpr int kVersionMajor = 2;
constexpr int kVersionMinor = 3;
constexpr int kVersionPatch = 13;
}  // namespace

long aboutDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  switch (xdEvent->type) {
    case E_CREATE:
      setControlText(xdWindow, ABOUT_VERSION,
                     formatText("%d.%d.%d", kVersionMajor, kVersionMinor, kVersionPatch).c_str());
      break;
    case E_CONTROL:
      if (!isPress(*xdEvent, ABOUT_OK)) break;
      xvt_vobj_destroy(xdWindow);
      return 1;
    case E_CLOSE:
      xvt_vobj_destroy(xdWindow);
      break;
    default:
      break;
  }
  return 0;
}
