#include "quarlo/help/helpwindow.h"

#include <optional>
#include <utility>
#include <vector>

#include "libkyr/text.h"
#include "quarlo/help/helppage.h"
#include "quarlo/help/helptopics.h"
#include "quarlo/help/messagehelp.h"
#include "quarlo/help/plaintext.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/docscroll.h"
#include "resources/ids.h"

namespace {

constexpr int kTextField = 1;
constexpr PNT kWishedPlace{60, 420};
constexpr int kColumns = 86;
constexpr int kLines = 34;

WINDOW helpWindow = NULL_WIN;
TXEDIT helpText = NULL_TXEDIT;
XVT_FNTID helpFont = NULL_FNTID;
DOC helpDoc;
short counter = 0;

/// A page that is or was in the window.
struct Reading {
  HelpPage page;
  long line;        ///< the one on top
  long marked = 0;  ///< of which the whole is selected; 0 for none
};
std::vector<Reading> readings;  ///< the last is in the window

DocView helpView() { return {helpWindow, helpText, &helpFont, &helpDoc}; }

void gone(WINDOW /*window*/) {
  helpWindow = NULL_WIN;
  helpText = NULL_TXEDIT;
  xvt_menu_set_item_enabled(TASK_WIN, CMD_HELP_BACK, false);
  xvt_font_destroy(helpFont);
  helpFont = NULL_FNTID;
}

long helpWindowEvent(WINDOW window, EVENT* event) {
  if (event->type == E_CREATE) {
    helpWindow = window;
    helpText = xvt_tx_get(window, kTextField);
    xvt_tx_set_scroll_callback(helpText,
                               [](TXEDIT, T_LNUM line, T_LNUM, T_CPOS offset) { docFollow(helpView(), line, offset); });
  }
  if (window != helpWindow) return 0;
  return docEvents(helpView(), event, {.destroy = gone});
}

/// As large as the last one was left.
RCT wishedArea() {
  if (helpWindow == NULL_WIN) return docRectangle(helpFont, kWishedPlace, kColumns, kLines);
  RCT area;
  xvt_vobj_get_client_rect(helpWindow, &area);
  return {kWishedPlace.v, kWishedPlace.h, kWishedPlace.v + area.bottom, kWishedPlace.h + area.right};
}

/// A window that is made anew is one that a dialog which keeps input to itself does not keep from it: it can be read
/// beside that.
bool openWindow() {
  const bool first = helpWindow == NULL_WIN;
  if (first) helpFont = docFont();
  const RCT area = wishedArea();
  if (!first) {
    xvt_vobj_destroy(helpWindow);
    helpFont = docFont();
  }
  WIN_DEF parts[3] = {};
  parts[0] = {W_DOC, area, "Help", 0, NULL_FNTID, WSF_SIZE | WSF_CLOSE | WSF_HSCROLL | WSF_VSCROLL};
  const RCT field{0, 0, area.bottom - area.top, area.right - area.left};
  parts[1] = {WC_TEXTEDIT, field, nullptr, kTextField, helpFont, 0};
  counter = 0;
  if (xvt_win_create_def(parts, TASK_WIN, helpWindowEvent, nullptr) != NULL_WIN) return true;
  xvt_font_destroy(helpFont);
  helpFont = NULL_FNTID;
  xvt_dm_post_error("Error opening help window");
  return false;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  if (!text.empty()) text.pop_back();
  return text;
}

void scrollToTop(T_LNUM line) {
  T_CPOS offset = 0;
  xvt_tx_scroll_vert(helpText, line - xvt_tx_get_origin(helpText, &offset));
  docFollow(helpView(), xvt_tx_get_origin(helpText, &offset), offset);
}

void showReading() {
  if (!openWindow()) return;
  const auto& [page, line, marked] = readings.back();
  xvt_vobj_set_title(helpWindow, ("Help: " + page.title()).c_str());
  docAppend(helpView(), &counter, joined(page.lines));
  scrollToTop(line);
  docSelect(helpView(), marked, 0, marked == 0 ? 0 : page.lines[static_cast<std::size_t>(marked)].size());
  xvt_menu_set_item_enabled(TASK_WIN, CMD_HELP_BACK, readings.size() > 1);
  xvt_vobj_raise(helpWindow);
  xvt_vobj_set_focus(helpWindow);
}

/// What is in the window will be shown as it is left. One that was closed begins anew.
void keepReading() {
  if (helpWindow == NULL_WIN) return readings.clear();
  T_CPOS offset = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
  readings.back().line = xvt_tx_get_origin(helpText, &offset);
  readings.back().marked = xvt_tx_get_selection(helpText, &begin, &end);
}

/// Shows a page with a line of it on top; a line but the first is marked, for who looks for it near the end.
void show(HelpPage page, long line) {
  keepReading();
  readings.push_back({std::move(page), line, line});
  showReading();
}

std::string selectedLine(TXEDIT text) {
  if (xvt_tx_get_num_pars(text) == 0) return "";
  std::size_t begin = 0;
  std::size_t end = 0;
  const T_LNUM line = xvt_tx_get_selection(text, &begin, &end);
  std::size_t length = 0;
  const char* bytes = xvt_tx_get_par(text, line, &length);
  return {bytes, length};
}

std::string nameOf(WINDOW window) {
  char name[100];
  return xvt_vobj_get_name(window, name, sizeof name);
}

/// The message that a window is about at this moment. What dumps and reports show are no messages.
std::string messageOf(WINDOW window, const std::string& name) {
  if (name.ends_with("-box")) return controlText(window, BOX_TEXT);
  return name == "console" ? selectedLine(xvt_tx_get(window, kTextField)) : "";
}

void followReference() {
  const std::string reference = referenceIn(selectedLine(helpText));
  if (reference.empty()) return showHelpContents();
  showHelp(reference);
}

}  // namespace

void showHelp(std::string_view place) {
  const HelpPlace where = placeOf(place);
  const auto page = findPage(where.page);
  if (!page) return show(missingPage(where.page), 0);
  show(*page, page->lineOf(where.section).value_or(0));
}

void showLastHelp() {
  if (helpWindow == NULL_WIN || readings.size() < 2) return;
  readings.pop_back();
  showReading();
}

void showHelpContents() { show(contentsPage(), 0); }

bool explainMessage(std::string_view message) {
  const auto page = findPage(kMessagesPage);
  const HelpHeading* heading = page ? explanationOf(*page, message) : nullptr;
  if (heading != nullptr) show(*page, heading->line);
  return heading != nullptr;
}

void helpOn(WINDOW window) {
  if (!xvt_vobj_is_valid(window)) return showHelpContents();
  if (window == helpWindow) return followReference();
  const std::string name = nameOf(window);
  if (explainMessage(messageOf(window, name))) return;
  showHelp(helpPlaceOf(name, windowTitle(window)));
}
