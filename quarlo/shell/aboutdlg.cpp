#include "quarlo/shell/aboutdlg.h"

#include <string>

#include "libkyr/text.h"
#include "quarlo/help/helppage.h"
#include "quarlo/help/helptopics.h"
#include "quarlo/help/helpwindow.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

constexpr int kVersionMajor = 2;
constexpr int kVersionMinor = 3;
constexpr int kVersionPatch = 13;

void showVersion(WINDOW dialog) {
  setControlText(dialog, ABOUT_VERSION, formatText("%d.%d.%d", kVersionMajor, kVersionMinor, kVersionPatch).c_str());
  const std::string guide = pagePath(kGuide);
  setControlText(dialog, ABOUT_PAGES, guide.empty() ? "not found" : guide.substr(0, guide.rfind('/')).c_str());
}

void openContents(WINDOW /*dialog*/) { showHelpContents(); }

constexpr ControlAction kActions[] = {{ABOUT_OK, xvt_vobj_destroy}, {ABOUT_HELP, openContents}};

}  // namespace

long aboutDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = showVersion, .control = actionsOf(kActions)});
}
