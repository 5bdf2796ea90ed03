#include "quarlo/shell/aboutdlg.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

constexpr int kVersionMajor = 2;
constexpr int kVersionMinor = 3;
constexpr int kVersionPatch = 13;

void showVersion(WINDOW dialog) {
  setControlText(dialog, ABOUT_VERSION, formatText("%d.%d.%d", kVersionMajor, kVersionMinor, kVersionPatch).c_str());
}

constexpr ControlAction kActions[] = {{ABOUT_OK, xvt_vobj_destroy}};

}  // namespace

long aboutDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = showVersion, .control = actionsOf(kActions)});
}
