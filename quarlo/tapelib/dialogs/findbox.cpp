#include "quarlo/tapelib/dialogs/findbox.h"

#include <cstring>
#include <optional>
#include <string>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {

WINDOW box = NULL_WIN;
WINDOW searched = NULL_WIN;  // the window that the box is about
std::string words;
bool matchCase = false;

// ---- the search -------------------------------------------------------------------------------------------------

struct Place {
  T_LNUM line = 0;
  std::size_t byte = 0;
};

/// The first place of the words in a line from a byte on; case means the letters A to Z.
std::optional<std::size_t> firstIn(const char* line, std::size_t from) {
  const char* found = matchCase ? std::strstr(line + from, words.c_str()) : strcasestr(line + from, words.c_str());
  return found != nullptr ? std::optional(static_cast<std::size_t>(found - line)) : std::nullopt;
}

/// The last place that begins before a byte.
std::optional<std::size_t> lastIn(const char* line, std::size_t before) {
  std::optional<std::size_t> last;
  for (auto next = firstIn(line, 0); next && *next < before; next = firstIn(line, *next + 1)) last = next;
  return last;
}

/// Once through the text and round its end; the line of the start comes twice, for its two parts.
std::optional<Place> search(TXEDIT text, Place from, FindDirection direction) {
  const bool forward = direction == FindDirection::forward;
  const T_LNUM count = xvt_tx_get_num_pars(text);
  for (T_LNUM step = 0; count != 0 && step <= count; ++step) {
    const T_LNUM line = (from.line + (forward ? step : count - step)) % count;
    std::size_t length = 0;
    const char* bytes = xvt_tx_get_par(text, line, &length);
    const auto found =
        forward ? firstIn(bytes, step == 0 ? from.byte : 0) : lastIn(bytes, step == 0 ? from.byte : length);
    if (found) return Place{line, *found};
  }
  return std::nullopt;
}

bool wentRound(Place from, Place found, FindDirection direction) {
  const bool before = found.line != from.line ? found.line < from.line : found.byte < from.byte;
  return before == (direction == FindDirection::forward);
}

// ---- the box ----------------------------------------------------------------------------------------------------

void say(const std::string& text) { setControlText(box, FIND_HINT, text.c_str()); }

/// Tells a window to search: it knows its text.
void step(int command) {
  if (!xvt_vobj_is_valid(searched) || !xvt_vobj_is_visible(searched)) return xvt_vobj_destroy(box);
  EVENT event;
  event.type = E_COMMAND;
  event.cmd.tag = command;
  xvt_win_dispatch_event(searched, &event);
}

void control(WINDOW dialog, const EVENT& event) {
  toggleFlag(dialog, event, FIND_CASE, &matchCase);
  if (isPress(event, FIND_NEXT)) step(CMD_TEXT_FIND_NEXT);
  if (isPress(event, FIND_PREVIOUS)) step(CMD_TEXT_FIND_PREVIOUS);
  if (isPress(event, FIND_CLOSE)) xvt_vobj_destroy(dialog);
}

/// The keyboard goes back to the text, where what was found can be copied.
void gone(WINDOW /*dialog*/) {
  words = controlText(box, FIND_TEXT);
  box = NULL_WIN;
  if (xvt_vobj_is_valid(searched) && xvt_vobj_is_visible(searched)) xvt_vobj_set_focus(searched);
}

long findBoxEvent(WINDOW window, EVENT* event) {
  const auto created = [](WINDOW dialog) {
    box = dialog;
    checkControl(dialog, FIND_CASE, matchCase);
  };
  return dialogEvents(window, *event, {.create = created, .control = control, .destroy = gone});
}

bool showBox() {
  if (box == NULL_WIN) return xvt_dlg_create_res(WD_MODELESS, DLG_FIND, findBoxEvent, nullptr) != NULL_WIN;
  xvt_vobj_raise(box);
  xvt_vobj_set_focus(box);
  return true;
}

void aimAt(const DocView& view) {
  searched = view.window;
  xvt_vobj_set_title(box, ("Find in " + windowTitle(view.window)).c_str());
}

std::string selectedWords(const DocView& view) {
  constexpr std::size_t kMost = 100;  // more than that is not selected to be looked for
  std::size_t begin = 0;
  std::size_t end = 0;
  const T_LNUM line = xvt_tx_get_selection(view.text, &begin, &end);
  if (begin == end || end - begin > kMost) return "";
  return {xvt_tx_get_par(view.text, line, nullptr) + begin, end - begin};
}

/// The box with the words that are looked for, ready for others.
void offerWords(const DocView& view) {
  if (!showBox()) return;
  aimAt(view);
  setControlText(box, FIND_TEXT, words.c_str());
  say("");
  const WINDOW field = xvt_win_get_ctl(box, FIND_TEXT);
  xvt_vobj_set_focus(field);
  xvt_ctl_select_text(field);
}

}  // namespace

void openFindBox(const DocView& view) {
  if (const std::string selected = selectedWords(view); !selected.empty()) words = selected;
  offerWords(view);
}

void findAgain(const DocView& view, FindDirection direction) {
  if (box != NULL_WIN) words = controlText(box, FIND_TEXT);
  if (words.empty()) return openFindBox(view);
  std::size_t begin = 0;
  std::size_t end = 0;
  Place from{xvt_tx_get_selection(view.text, &begin, &end), 0};
  from.byte = direction == FindDirection::forward ? end : begin;
  const auto found = search(view.text, from, direction);
  const bool round = found && wentRound(from, *found, direction);
  if (box == NULL_WIN && (!found || round)) offerWords(view);
  if (found) docSelect(view, found->line, found->byte, found->byte + words.size());
  if (box == NULL_WIN) return;
  aimAt(view);
  if (!found) return say("Not found: " + words);
  const char* way = !round                                ? "."
                    : direction == FindDirection::forward ? ", from the beginning again."
                                                          : ", from the end again.";
  say(formatText("Line %ld of %ld%s", found->line + 1, xvt_tx_get_num_pars(view.text), way));
}

void closeFindBox(WINDOW text) {
  if (box != NULL_WIN && searched == text) xvt_vobj_destroy(box);
}
