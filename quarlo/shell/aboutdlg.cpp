#include "quarlo/shell/aboutdlg.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {
constexpr int VERSION_MAJOR = 2;
constexpr int VERSION_MINOR = 3;
constexpr int VERSION_PATCH = 13;
}  // namespace

long aboutDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  switch (xdEvent->type) {
    case E_CREATE:
      setControlText(xdWindow, ABOUT_VERSION,
                     formatText("%d.%d.%d", VERSION_MAJOR, VERSION_MINOR, VERSION_PATCH).c_str());
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
