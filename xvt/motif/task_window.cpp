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

#include "xvt/desk/label_text.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

constexpr const char* kIdleLine = "F10 opens the menu.";

const MENU_ITEM* linesOf(const MENU_RES* table, std::size_t* count) {
  *count = table != nullptr ? table->count : 0;
  return table != nullptr ? table->items : nullptr;
}

}  // namespace

void TaskWindow::create(EVENT_HANDLER eventHandler) {
  adoptShell(app().shell(), app().config().taskwin_title != nullptr ? app().config().taskwin_title : "");
  createBoard();
  enterTask(eventHandler);
  createMenus();
  createLine();
  const Look& look = app().look();
  Dimension barWidth = 0;
  Dimension barHeight = 0;
  XtVaGetValues(bar_, XmNwidth, &barWidth, XmNheight, &barHeight, nullptr);
  XtWidgetGeometry wish{};
  XtQueryGeometry(bar_, nullptr, &wish);
  lineHeight_ = look.lineHeight() + 2 * look.px(6);
  const Extent size{std::max<int>(wish.width + look.px(24), look.columns(Face::plain, 52)),
                    wish.height + 1 + lineHeight_};
  open(wishFor(size, PNT{placeStep(), placeStep()}), size);
}

void TaskWindow::createMenus() {
  bar_ = XmCreateMenuBar(board(), const_cast<char*>("menuBar"), nullptr, 0);
  std::size_t count = 0;
  const MENU_ITEM* lines = linesOf(menuTable(), &count);
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
  if (Widget item = makeItem(pulldown, line)) items_[line.command] = item;
}

Widget TaskWindow::createTextMenu(Widget parent) {
  Widget popup = XmCreatePopupMenu(parent, const_cast<char*>("textMenu"), nullptr, 0);
  std::size_t count = 0;
  const MENU_ITEM* lines = linesOf(menuTable(), &count);
  for (std::size_t at = 0; at < count; ++at) {
    const int command = lines[at].command;
    if (isTextCommand(command) || command == M_EDIT_COPY || command == M_EDIT_SELECT_ALL || command == M_HELP)
      XtSetSensitive(makeItem(popup, lines[at]), isItemEnabled(command) ? True : False);
  }
  return popup;
}

Widget TaskWindow::makeItem(Widget pulldown, const MENU_ITEM& line) {
  if (line.kind == MK_SEPARATOR) {
    XtVaCreateManagedWidget("separator", xmSeparatorWidgetClass, pulldown, nullptr);
    return nullptr;
  }
  const LabelText text(line.label);
  const MotifString label(text.plain);
  const MotifString shortcut(shownShortcut(line.shortcut));
  const bool check = line.kind == MK_CHECK;
  Widget item = XtVaCreateManagedWidget(
      line.name != nullptr ? line.name : "item", check ? xmToggleButtonWidgetClass : xmPushButtonWidgetClass, pulldown,
      XmNlabelString, static_cast<XmString>(label), XmNmnemonic, text.mnemonic, XmNsensitive,
      line.enabled ? True : False, XmNacceleratorText, static_cast<XmString>(shortcut), nullptr);
  if (check) XtVaSetValues(item, XmNvisibleWhenOff, True, nullptr);
  const int number = line.command;
  onCallback(item, check ? XmNvalueChangedCallback : XmNactivateCallback, [this, number](XtPointer) {
    showItem(number);  // the mark is the handler's to set
    command(number);
  });
  watchHelp(item, line.help);
  return item;
}

void TaskWindow::watchHelp(Widget widget, const char* help) {
  if (help == nullptr) return;
  const std::string text = help;
  const auto show = [this](const std::string& shown) {
    const MotifString string(shown);
    XtVaSetValues(line_, XmNlabelString, static_cast<XmString>(string), nullptr);
  };
  onEvent(
      widget, EnterWindowMask, [show, text](XEvent*) { show(text); });
  onEvent(widget, LeaveWindowMask, [show](XEvent*) { show(kIdleLine); });
}

void TaskWindow::createLine() {
  const Look& look = app().look();
  const MotifString text(kIdleLine);
  line_ = XtVaCreateManagedWidget("status", xmLabelWidgetClass, board(), XmNlabelString, static_cast<XmString>(text),
                                  XmNbackground, look.pixel(color::kStrip), XmNforeground, look.pixel(color::kSection),
                                  XmNmarginWidth, look.px(16), XmNrecomputeSize, False, nullptr);
}

void TaskWindow::arrangeContents(Extent size) {
  XtWidgetGeometry wish{};
  XtQueryGeometry(bar_, nullptr, &wish);
  const int strip = std::max(1, size.height - wish.height - 1);
  setPlace(bar_, RCT{0, 0, wish.height, size.width});
  setPlace(line_, RCT{size.height - strip, 0, size.height, size.width});
}

void TaskWindow::showItem(int command) {
  Widget item = items_.at(command);
  if (XmIsToggleButton(item)) XmToggleButtonSetState(item, isItemChecked(command) ? True : False, False);
  XtSetSensitive(item, isItemEnabled(command) ? True : False);
}

}  // namespace xvt
