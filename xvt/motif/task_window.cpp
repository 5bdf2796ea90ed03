#include "xvt/motif/task_window.h"

#include <X11/Xutil.h>
#include <Xm/CascadeB.h>
#include <Xm/Label.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/Separator.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <cstring>

#include "xvt/motif/clipboard.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/keys.h"
#include "xvt/motif/label_text.h"

namespace xvt {

namespace {

constexpr const char* kIdleLine = "F10 opens the menu.";

const MENU_ITEM* linesOf(const MENU_RES* table, std::size_t* count) {
  *count = table != nullptr ? table->count : 0;
  return table != nullptr ? table->items : nullptr;
}

}  // namespace

void TaskWindow::create(EVENT_HANDLER event_handler) {
  handler = event_handler;
  adoptShell(app().shell(), app().config().taskwin_title != nullptr ? app().config().taskwin_title : "");
  createBoard();
  table_ = findMenu(app().config().menu_bar_ID);
  createMenus();
  createLine();
  Registry::instance().enterAs(shared_from_this(), TASK_WIN);
  app().add(shared_from_this());
  const Look& look = app().look();
  Dimension bar_width = 0;
  Dimension bar_height = 0;
  XtVaGetValues(bar_, XmNwidth, &bar_width, XmNheight, &bar_height, nullptr);
  XtWidgetGeometry wish{};
  XtQueryGeometry(bar_, nullptr, &wish);
  line_height_ = look.lineHeight() + 2 * look.px(6);
  const Extent size{std::max<int>(wish.width + look.px(24), look.columns(Face::plain, 52)),
                    wish.height + 1 + line_height_};
  open(wishFor(size, PNT{placeStep(), placeStep()}), size);
}

void TaskWindow::createMenus() {
  bar_ = XmCreateMenuBar(board(), const_cast<char*>("menuBar"), nullptr, 0);
  std::size_t count = 0;
  const MENU_ITEM* lines = linesOf(table_, &count);
  Widget pulldown = nullptr;
  for (std::size_t at = 0; at < count; ++at) {
    if (lines[at].kind != MK_MENU) {
      if (pulldown != nullptr) createItem(pulldown, lines[at]);
      continue;
    }
    pulldown = XmCreatePulldownMenu(bar_, const_cast<char*>("pulldown"), nullptr, 0);
    const LabelText text(lines[at].label);
    const MotifString label(text.plain);
    Widget cascade =
        XtVaCreateManagedWidget("menu", xmCascadeButtonWidgetClass, bar_, XmNlabelString, static_cast<XmString>(label),
                                XmNmnemonic, text.mnemonic, XmNsubMenuId, pulldown, nullptr);
    if (text.plain == "Help") XtVaSetValues(bar_, XmNmenuHelpWidget, cascade, nullptr);
  }
  XtManageChild(bar_);
}

void TaskWindow::createItem(Widget pulldown, const MENU_ITEM& line) {
  if (line.kind == MK_SEPARATOR) {
    XtVaCreateManagedWidget("separator", xmSeparatorWidgetClass, pulldown, nullptr);
    return;
  }
  const LabelText text(line.label);
  const MotifString label(text.plain);
  const MotifString shortcut(line.shortcut != nullptr ? line.shortcut : "");
  Item item;
  item.check = line.kind == MK_CHECK;
  item.enabled = line.enabled;
  if (line.shortcut != nullptr) parseKeys(line.shortcut, &item.key, &item.modifiers);
  item.widget = XtVaCreateManagedWidget(
      line.name != nullptr ? line.name : "item", item.check ? xmToggleButtonWidgetClass : xmPushButtonWidgetClass,
      pulldown, XmNlabelString, static_cast<XmString>(label), XmNmnemonic, text.mnemonic, XmNsensitive,
      line.enabled ? True : False, XmNacceleratorText, static_cast<XmString>(shortcut), nullptr);
  if (item.check) XtVaSetValues(item.widget, XmNvisibleWhenOff, True, nullptr);
  const int number = line.command;
  onCallback(item.widget, item.check ? XmNvalueChangedCallback : XmNactivateCallback, [this, number](XtPointer) {
    // The mark is the handler's to set.
    const Item& used = items_.at(number);
    if (used.check) XmToggleButtonSetState(used.widget, used.checked ? True : False, False);
    command(number);
  });
  watchHelp(item.widget, line.help);
  items_[number] = item;
}

void TaskWindow::watchHelp(Widget widget, const char* help) {
  if (help == nullptr) return;
  const std::string text = help;
  const auto show = [this](const std::string& shown) {
    const MotifString string(shown);
    XtVaSetValues(line_, XmNlabelString, static_cast<XmString>(string), nullptr);
  };
  onEvent(widget, EnterWindowMask, [show, text](XEvent*) { show(text); });
  onEvent(widget, LeaveWindowMask, [show](XEvent*) { show(kIdleLine); });
}

void TaskWindow::createLine() {
  const Look& look = app().look();
  const MotifString text(kIdleLine);
  line_ = XtVaCreateManagedWidget("status", xmLabelWidgetClass, board(), XmNlabelString, static_cast<XmString>(text),
                                  XmNbackground, look.pixel(color::strip), XmNforeground, look.pixel(color::section),
                                  XmNmarginWidth, look.px(16), XmNrecomputeSize, False, nullptr);
}

void TaskWindow::arrangeContents(Extent size) {
  XtWidgetGeometry wish{};
  XtQueryGeometry(bar_, nullptr, &wish);
  const int strip = std::max(1, size.height - wish.height - 1);
  setPlace(bar_, RCT{0, 0, wish.height, size.width});
  setPlace(line_, RCT{size.height - strip, 0, size.height, size.width});
}

void TaskWindow::showBusy(bool busy) { ShellWindow::showBusy(busy); }

void TaskWindow::setItemChecked(int command, bool checked) {
  Item& item = items_.at(command);
  item.checked = checked;
  if (item.check) XmToggleButtonSetState(item.widget, checked ? True : False, False);
}

void TaskWindow::setItemEnabled(int command, bool enabled) {
  Item& item = items_.at(command);
  if (item.enabled == enabled) return;
  item.enabled = enabled;
  XtSetSensitive(item.widget, enabled ? True : False);
}

bool TaskWindow::isItemChecked(int command) const { return items_.at(command).checked; }
bool TaskWindow::isItemEnabled(int command) const { return items_.at(command).enabled; }

bool TaskWindow::shortcut(KeySym key, unsigned modifiers, ShellWindow& window) {
  for (const auto& [number, item] : items_) {
    if (item.key != key || item.modifiers != modifiers || key == 0) continue;
    if (!item.enabled || app().blockerOf(*this)) {
      // A standard command works in a modal dialog's fields too.
      if (!item.enabled || !isStandardCommand(number)) return false;
    }
    const auto alive = window.shared_from_this();
    if (!isStandardCommand(number)) window.settle();
    command(number);
    return true;
  }
  const int standard = standardCommandFor(key, modifiers);
  return standard != 0 && carryOut(standard, window);
}

void TaskWindow::command(int number) {
  if (isDying()) return;
  settle();
  if (isStandardCommand(number)) {
    if (const auto target = app().editTarget()) carryOut(number, *target);
    return;
  }
  EVENT event;
  event.type = E_COMMAND;
  event.cmd.tag = number;
  tell(event);
}

namespace runtime {

namespace {

TaskWindow* taskWith(int command) {
  TaskWindow* task = appIfRunning() != nullptr ? app().task() : nullptr;
  return task != nullptr && task->hasItem(command) ? task : nullptr;
}

}  // namespace

bool setItemChecked(int command, bool checked) {
  TaskWindow* task = taskWith(command);
  if (task != nullptr) task->setItemChecked(command, checked);
  return task != nullptr;
}

bool setItemEnabled(int command, bool enabled) {
  TaskWindow* task = taskWith(command);
  if (task != nullptr) task->setItemEnabled(command, enabled);
  return task != nullptr;
}

bool isItemChecked(int command) {
  const TaskWindow* task = taskWith(command);
  return task != nullptr && task->isItemChecked(command);
}

bool isItemEnabled(int command) {
  const TaskWindow* task = taskWith(command);
  return task != nullptr && task->isItemEnabled(command);
}

}  // namespace runtime

}  // namespace xvt
