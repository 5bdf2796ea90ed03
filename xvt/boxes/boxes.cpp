/// Error, note and question boxes: the first sentence, the rest below it, the buttons.
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "xvt/base/report.h"
#include "xvt/base/text.h"
#include "xvt/base/utf8.h"
#include "xvt/resource.h"
#include "xvt/xvt.h"

namespace {

constexpr std::size_t kColumns = 70;
constexpr int kLeastColumns = 32;
constexpr std::size_t kHeadingColumns = 60;
constexpr std::size_t kMostLines = 30;  ///< more would not stand on a small screen

enum BOX_CONTROLS : int { BOX_HEADING = BOX_TEXT + 1, BOX_BODY, BOX_FIRST, BOX_SECOND, BOX_THIRD };

enum class BoxKind : int { error, note, ask, confirm };

/// One box while it is open.
struct Box {
  BoxKind kind = BoxKind::note;
  std::string heading, body, text;
  std::vector<std::string> buttons;
  int answer = 0;  ///< the button pressed, from 1
};

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (&line == lines.data() ? "" : "\n") + line;
  return text;
}

std::string fitted(const std::string& text) {
  std::vector<std::string> lines = xvt::wrapped(text, kColumns);
  if (lines.size() > kMostLines) {
    lines.resize(kMostLines);
    lines.push_back("…");
  }
  return joined(lines);
}

/// Bytes of the first sentence or line, when it is short enough for a heading; else 0.
std::size_t headingLength(const std::string& text) {
  std::size_t end = text.find('\n');
  for (const char* mark : {". ", "? ", "! "}) {
    const std::size_t found = text.find(mark);
    if (found != std::string::npos) end = std::min(end, found + 1);
  }
  end = std::min(end, text.size());
  return xvt::utf8Characters(text.substr(0, end)) <= kHeadingColumns ? end : 0;
}

Box makeBox(BoxKind kind, const std::string& raw, std::vector<std::string> buttons) {
  std::string text = xvt::validUtf8(raw);
  while (text.ends_with('\n')) text.pop_back();
  const std::size_t heading = headingLength(text);
  const std::size_t rest = std::min(text.find_first_not_of(" \n", heading), text.size());
  return {kind, text.substr(0, heading), fitted(text.substr(rest)), text, std::move(buttons)};
}

constexpr std::array<const char*, 4> kBoxNames = {"error-box", "note-box", "ask-box", "ask-box"};
constexpr std::array<const char*, 4> kBoxTitles = {"Error", "Note", "Question", "Question"};
constexpr std::array<const char*, 3> kAskNames = {"first", "second", "third"};

/// A box's table: what is not there takes no room, so each shape has one of its own.
struct BoxTable {
  std::vector<DLG_ITEM> items;
  DLG_RES resource{};
};

void addButtons(const Box& box, std::vector<DLG_ITEM>* items) {
  items->push_back(ui::buttons());
  items->push_back(ui::glue());
  for (std::size_t at = 0; at < box.buttons.size(); ++at) {
    const bool proposed = at == 0 && box.kind != BoxKind::confirm;
    const unsigned flags = (proposed ? IF_DEFAULT : 0U) | (at + 1 == box.buttons.size() ? IF_CANCEL : 0U);
    const char* name = box.kind >= BoxKind::ask ? kAskNames[at] : "ok";
    items->push_back(ui::push(BOX_FIRST + static_cast<int>(at), name, "", flags));
  }
  items->push_back(ui::endOf());
}

/// The whole text stands, hidden and in one piece, in the place of the heading and the body that the user sees: scripts
/// read it. An edit field, since its size does not follow its contents; it keeps short boxes from being slim.
std::unique_ptr<BoxTable> makeTable(const Box& box) {
  auto table = std::make_unique<BoxTable>();
  std::vector<DLG_ITEM>& items = table->items;
  items.push_back(ui::stack());
  items.push_back(ui::column());
  if (!box.heading.empty()) items.push_back(ui::label("", BOX_HEADING));
  if (!box.body.empty()) items.push_back(ui::label("", BOX_BODY));
  items.push_back(ui::endOf());
  items.push_back(ui::edit(BOX_TEXT, "text", kLeastColumns, IF_HIDDEN | IF_READONLY));
  items.push_back(ui::endOf());
  addButtons(box, &items);
  const auto kind = static_cast<std::size_t>(box.kind);
  table->resource = {0, kBoxNames[kind], kBoxTitles[kind], items.data(), items.size()};
  return table;
}

const DLG_RES* tableFor(const Box& box) {
  using Shape = std::tuple<BoxKind, std::size_t, bool, bool>;
  static std::map<Shape, std::unique_ptr<BoxTable>> tables;
  auto& table = tables[{box.kind, box.buttons.size(), box.heading.empty(), box.body.empty()}];
  if (!table) table = makeTable(box);
  return &table->resource;
}

void setText(WINDOW window, int id, const std::string& text) {
  const WINDOW control = xvt_win_get_ctl(window, id);
  if (control != NULL_WIN) xvt_vobj_set_title(control, text.c_str());
}

void fillBox(WINDOW window, const Box& box) {
  setText(window, BOX_TEXT, box.text);
  setText(window, BOX_HEADING, box.heading);
  setText(window, BOX_BODY, box.body);
  for (std::size_t at = 0; at < box.buttons.size(); ++at)
    setText(window, BOX_FIRST + static_cast<int>(at), box.buttons[at]);
}

long boxHandler(WINDOW window, EVENT* event) {
  auto* box = static_cast<Box*>(xvt_vobj_get_data(window));
  switch (event->type) {
    case E_CREATE:
      fillBox(window, *box);
      break;
    case E_CONTROL:
      if (event->ctl.id < BOX_FIRST || event->ctl.what != CTL_PRESS) break;
      box->answer = event->ctl.id - BOX_FIRST + 1;
      xvt_vobj_destroy(window);
      break;
    case E_CLOSE:
      xvt_vobj_destroy(window);
      break;
    default:
      break;
  }
  return 0;
}

/// Shows a box and waits for the answer: the button from 1, the last one when the box was closed. Where no box can be
/// shown, the text goes to standard error.
int showBox(BoxKind kind, const std::string& text, std::vector<std::string> buttons) {
  Box box = makeBox(kind, text, std::move(buttons));
  const bool shown = xvt_vobj_is_valid(TASK_WIN) && !xvt_app_is_ending() &&
                     xvt_dlg_create_table(WD_MODAL, tableFor(box), boxHandler, &box) != NULL_WIN;
  if (!shown) std::fprintf(stderr, "%s\n", text.c_str());
  return box.answer > 0 ? box.answer : static_cast<int>(box.buttons.size());
}

bool given(const char* text, const char* function) {
  if (text == nullptr) xvt::report(function, "no text");
  return text != nullptr;
}

}  // namespace

void xvt_dm_post_error(const char* format, ...) {
  if (!given(format, "xvt_dm_post_error")) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = xvt::formatted(format, arguments);
  va_end(arguments);
  if (xvt_vobj_is_valid(TASK_WIN)) xvt_scr_beep();
  showBox(BoxKind::error, text, {"OK"});
}

void xvt_dm_post_note(const char* format, ...) {
  if (!given(format, "xvt_dm_post_note")) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = xvt::formatted(format, arguments);
  va_end(arguments);
  showBox(BoxKind::note, text, {"OK"});
}

ASK_RESPONSE xvt_dm_post_ask(const char* first, const char* second, const char* third, const char* format, ...) {
  std::vector<std::string> buttons;
  for (const char* label : {first, second, third})
    if (label != nullptr) buttons.emplace_back(label);
  if (buttons.empty()) buttons.emplace_back("OK");
  if (!given(format, "xvt_dm_post_ask")) return static_cast<ASK_RESPONSE>(buttons.size());
  va_list arguments;
  va_start(arguments, format);
  const std::string text = xvt::formatted(format, arguments);
  va_end(arguments);
  return static_cast<ASK_RESPONSE>(showBox(BoxKind::ask, text, std::move(buttons)));
}

ASK_RESPONSE xvt_dm_post_confirm(const char* first, const char* second, const char* format, ...) {
  if (!given(format, __func__) || !given(first, __func__) || !given(second, __func__)) return RESP_2;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = xvt::formatted(format, arguments);
  va_end(arguments);
  return static_cast<ASK_RESPONSE>(showBox(BoxKind::confirm, text, {first, second}));
}
