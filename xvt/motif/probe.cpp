/// Finding and driving the real windows by name.
#include "xvt/probe.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <Xm/PushB.h>
#include <Xm/ToggleB.h>

#include <algorithm>

#include "xvt/base/utf8.h"
#include "xvt/motif/application.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/document.h"
#include "xvt/motif/keys.h"
#include "xvt/motif/task_window.h"

namespace xvt::probe {

namespace {

bool refuse(std::string* why, const std::string& reason) {
  if (why != nullptr) *why = reason;
  return false;
}

std::string nameOf(const Item& item) {
  return item.line().name != nullptr ? item.line().name : std::to_string(item.line().id);
}

/// The window if the user could reach it now.
std::shared_ptr<ShellWindow> reachable(WINDOW handle, std::string* why) {
  auto window = Registry::instance().find<ShellWindow>(handle);
  if (!window || window->isDying()) {
    refuse(why, "the window is not open");
    return nullptr;
  }
  if (!window->isVisible()) {
    refuse(why, "the window \"" + window->name() + "\" is hidden");
    return nullptr;
  }
  const auto blocker = app().blockerOf(*window);
  if (!blocker) return window;
  refuse(why, "\"" + window->name() + "\" is kept from input by \"" + blocker->name() + "\"");
  return nullptr;
}

/// The control if the user could use it now.
std::shared_ptr<Item> usable(WINDOW handle, std::string* why) {
  auto item = Registry::instance().find<Item>(handle);
  if (!item) {
    refuse(why, "there is no such control");
    return nullptr;
  }
  if (!reachable(item->dialog().handle(), why)) return nullptr;
  if (!item->isVisible()) {
    refuse(why, "\"" + nameOf(*item) + "\" is hidden");
    return nullptr;
  }
  if (XtIsSensitive(item->widget()) != False) return item;
  refuse(why, "\"" + nameOf(*item) + "\" is disabled");
  return nullptr;
}

std::shared_ptr<Item> usableList(WINDOW handle, int row, std::string* why) {
  auto item = usable(handle, why);
  if (!item) return nullptr;
  const ITEM_KIND kind = item->kind();
  if (kind != IK_LIST && kind != IK_MULTI && kind != IK_OPTION) {
    refuse(why, "\"" + nameOf(*item) + "\" is not a list");
    return nullptr;
  }
  if (row >= 0 && row < item->rowCount()) return item;
  refuse(why, "\"" + nameOf(*item) + "\" has no row " + std::to_string(row));
  return nullptr;
}

/// Presses and releases a key as if it came from the keyboard.
void sendKey(Widget focus, KeySym key, unsigned modifiers) {
  Display* display = XtDisplay(focus);
  XEvent event{};
  event.xkey.type = KeyPress;
  event.xkey.display = display;
  event.xkey.window = XtWindow(focus);
  event.xkey.root = RootWindowOfScreen(XtScreen(focus));
  event.xkey.same_screen = True;
  event.xkey.time = XtLastTimestampProcessed(display);
  event.xkey.state = modifiers;
  event.xkey.keycode = XKeysymToKeycode(display, key);
  if (XkbKeycodeToKeysym(display, static_cast<KeyCode>(event.xkey.keycode), 0, 0) != key) event.xkey.state |= ShiftMask;
  Frame frame;
  XtDispatchEvent(&event);
  event.xkey.type = KeyRelease;
  if (XtWindow(focus) != 0) XtDispatchEvent(&event);
}

}  // namespace

void setTick(void (*tick)()) {
  Pump::setFirstTick(tick);
  if (appIfRunning() != nullptr) app().pump().setTick(tick);
}

WINDOW window(const std::string& name) {
  if (appIfRunning() == nullptr) return NULL_WIN;
  const auto& windows = app().windows();
  const auto found = std::find_if(windows.rbegin(), windows.rend(),
                                  [&](const auto& one) { return !one->isDying() && one->name() == name; });
  return found == windows.rend() ? NULL_WIN : (*found)->handle();
}

std::vector<std::string> openWindows() {
  std::vector<std::string> names;
  if (appIfRunning() == nullptr) return names;
  for (const auto& one : app().windows())
    if (one->isVisible() && !one->isDying()) names.push_back(one->name());
  return names;
}

WINDOW control(WINDOW window, const std::string& name) {
  const auto dialog = Registry::instance().find<Dialog>(window);
  if (!dialog) return NULL_WIN;
  for (const auto& item : dialog->items())
    if (item->handle() != 0 && item->line().name != nullptr && item->line().name == name) return item->handle();
  return NULL_WIN;
}

std::vector<std::string> controls(WINDOW window) {
  std::vector<std::string> names;
  const auto dialog = Registry::instance().find<Dialog>(window);
  if (!dialog) return names;
  for (const auto& item : dialog->items())
    if (item->line().name != nullptr) names.emplace_back(item->line().name);
  return names;
}

int kind(WINDOW control) {
  const auto item = Registry::instance().find<Item>(control);
  return item ? item->kind() : -1;
}

TXEDIT textField(WINDOW window) {
  const auto document = Registry::instance().find<Document>(window);
  const TextFieldObject* field = document ? document->text() : nullptr;
  return field != nullptr ? field->handle() : NULL_TXEDIT;
}

int menuCommand(const std::string& name) {
  if (appIfRunning() == nullptr || app().task() == nullptr) return 0;
  const MENU_RES* table = app().task()->menuTable();
  for (std::size_t at = 0; table != nullptr && at < table->count; ++at)
    if (table->items[at].name != nullptr && table->items[at].name == name) return table->items[at].command;
  return 0;
}

bool press(WINDOW control, std::string* why) {
  const auto item = usable(control, why);
  if (!item) return false;
  if (item->kind() != IK_PUSH && item->kind() != IK_CHECK && item->kind() != IK_RADIO)
    return refuse(why, "\"" + nameOf(*item) + "\" cannot be pressed");
  item->takeFocus();
  return item->activate() || refuse(why, "\"" + nameOf(*item) + "\" did not take the press");
}

bool type(WINDOW edit, const std::string& text, std::string* why) {
  const auto item = usable(edit, why);
  if (!item) return false;
  const auto field = std::dynamic_pointer_cast<EditItem>(item);
  if (!field) return refuse(why, "\"" + nameOf(*item) + "\" is not an edit field");
  if ((item->line().flags & IF_READONLY) != 0) return refuse(why, "\"" + nameOf(*item) + "\" cannot be typed into");
  field->type(validUtf8(text));
  return true;
}

bool select(WINDOW list, int row, bool add, std::string* why) {
  const auto item = usableList(list, row, why);
  if (!item) return false;
  item->takeFocus();
  return item->choose(row, add) || refuse(why, "the row cannot be selected");
}

bool doubleClick(WINDOW list, int row, std::string* why) {
  const auto item = usableList(list, row, why);
  const auto rows = std::dynamic_pointer_cast<ListItem>(item);
  if (!rows) return item ? refuse(why, "\"" + nameOf(*item) + "\" has no rows to double-click") : false;
  rows->doubleClick(row);
  return true;
}

bool menu(int command, std::string* why) {
  const auto task = reachable(TASK_WIN, why);
  if (!task) return false;
  TaskWindow* bar = app().task();
  if (!bar->hasItem(command)) return refuse(why, "there is no menu item " + std::to_string(command));
  if (!bar->isItemEnabled(command)) return refuse(why, "menu item " + std::to_string(command) + " is disabled");
  Frame frame;
  bar->command(command);
  return true;
}

bool close(WINDOW window, std::string* why) {
  const auto found = reachable(window, why);
  if (!found) return false;
  Frame frame;
  found->requestClose();
  return true;
}

bool key(WINDOW window, const std::string& keys, std::string* why) {
  const auto found = reachable(window, why);
  if (!found) return false;
  KeySym symbol = 0;
  unsigned modifiers = 0;
  if (!parseKeys(keys.c_str(), &symbol, &modifiers)) return refuse(why, "there is no key \"" + keys + "\"");
  found->takeFocus();
  Widget focus = XmGetFocusWidget(found->shell());
  sendKey(focus != nullptr ? focus : found->shell(), symbol, modifiers);
  return true;
}

std::vector<std::string> textLines(WINDOW window, std::size_t last) {
  std::vector<std::string> lines;
  const auto document = Registry::instance().find<Document>(window);
  const TextFieldObject* field = document ? document->text() : nullptr;
  if (field == nullptr) return lines;
  const long count = field->count();
  const long wanted = std::min<long>(count, static_cast<long>(std::min<std::size_t>(last, 1'000'000'000)));
  for (long at = count - wanted; at < count; ++at) lines.emplace_back(field->paragraph(at));
  return lines;
}

}  // namespace xvt::probe
