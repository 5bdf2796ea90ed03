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

std::string nameOf(const Item& item) {
  return item.line().name != nullptr ? item.line().name : std::to_string(item.line().id);
}

/// The window if the user could reach it now.
std::shared_ptr<ShellWindow> reachable(WINDOW handle, Refusal* why) {
  auto window = Registry::instance().find<ShellWindow>(handle);
  const auto blocker = window ? app().blockerOf(*window) : nullptr;
  if (!window || window->isDying())
    *why = "the window is not open";
  else if (!window->isVisible())
    *why = "the window \"" + window->name() + "\" is hidden";
  else if (blocker)
    *why = "\"" + window->name() + "\" is kept from input by \"" + blocker->name() + "\"";
  return *why ? nullptr : window;
}

/// The control if the user could use it now.
std::shared_ptr<Item> usable(WINDOW handle, Refusal* why) {
  auto item = Registry::instance().find<Item>(handle);
  if (!item)
    *why = "there is no such control";
  else if (!reachable(item->dialog().handle(), why))
    return nullptr;
  else if (!item->isVisible())
    *why = "\"" + nameOf(*item) + "\" is hidden";
  else if (XtIsSensitive(item->widget()) == False)
    *why = "\"" + nameOf(*item) + "\" is disabled";
  return *why ? nullptr : item;
}

std::shared_ptr<Item> usableList(WINDOW handle, int row, Refusal* why) {
  auto item = usable(handle, why);
  if (!item) return nullptr;
  const ITEM_KIND kind = item->kind();
  if (kind != IK_LIST && kind != IK_MULTI && kind != IK_OPTION)
    *why = "\"" + nameOf(*item) + "\" is not a list";
  else if (row < 0 || row >= item->rowCount())
    *why = "\"" + nameOf(*item) + "\" has no row " + std::to_string(row);
  return *why ? nullptr : item;
}

Refusal unless(bool done, const std::string& reason) { return done ? std::nullopt : Refusal(reason); }

/// Presses and releases a key as if it came from the keyboard.
void sendKey(Widget focus, KeySym key, unsigned modifiers) {
  Display* display = XtDisplay(focus);
  XEvent event{};
  event.xkey.type = KeyPress;
  event.xkey.send_event = True;
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

std::string nameOf(WINDOW window) {
  const auto found = Registry::instance().find<ShellWindow>(window);
  return found ? found->name() : "";
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

WINDOW inputKeeper() {
  if (appIfRunning() == nullptr) return NULL_WIN;
  const auto& windows = app().windows();
  const auto found = std::find_if(windows.rbegin(), windows.rend(), [](const auto& one) {
    return one->isModal() && one->isVisible() && !one->isDying();
  });
  return found == windows.rend() ? NULL_WIN : (*found)->handle();
}

Refusal press(WINDOW control) {
  Refusal why;
  const auto item = usable(control, &why);
  if (!item) return why;
  if (item->kind() != IK_PUSH && item->kind() != IK_CHECK && item->kind() != IK_RADIO)
    return "\"" + nameOf(*item) + "\" cannot be pressed";
  item->takeFocus();
  return unless(item->activate(), "\"" + nameOf(*item) + "\" did not take the press");
}

Refusal type(WINDOW edit, const std::string& text) {
  Refusal why;
  const auto item = usable(edit, &why);
  if (!item) return why;
  const auto field = std::dynamic_pointer_cast<EditItem>(item);
  if (!field) return "\"" + nameOf(*item) + "\" is not an edit field";
  if ((item->line().flags & IF_READONLY) != 0) return "\"" + nameOf(*item) + "\" cannot be typed into";
  field->type(validUtf8(text));
  return std::nullopt;
}

Refusal select(WINDOW list, int row, bool add) {
  Refusal why;
  const auto item = usableList(list, row, &why);
  if (!item) return why;
  item->takeFocus();
  return unless(item->choose(row, add), "the row cannot be selected");
}

Refusal doubleClick(WINDOW list, int row) {
  Refusal why;
  const auto item = usableList(list, row, &why);
  if (!item) return why;
  const auto rows = std::dynamic_pointer_cast<ListItem>(item);
  if (!rows) return "\"" + nameOf(*item) + "\" has no rows to double-click";
  rows->doubleClick(row);
  return std::nullopt;
}

Refusal menu(int command) {
  Refusal why;
  if (!reachable(TASK_WIN, &why)) return why;
  TaskWindow* bar = app().task();
  if (!bar->hasItem(command)) return "there is no menu item " + std::to_string(command);
  if (!bar->isItemEnabled(command)) return "it is disabled";
  Frame frame;
  bar->command(command);
  return std::nullopt;
}

Refusal close(WINDOW window) {
  Refusal why;
  const auto found = reachable(window, &why);
  if (!found) return why;
  Frame frame;
  found->requestClose();
  return std::nullopt;
}

Refusal key(WINDOW window, const std::string& keys) {
  Refusal why;
  const auto found = reachable(window, &why);
  if (!found) return why;
  KeySym symbol = 0;
  unsigned modifiers = 0;
  if (!parseKeys(keys.c_str(), &symbol, &modifiers)) return "there is no key \"" + keys + "\"";
  found->takeFocus();
  Widget focus = XmGetFocusWidget(found->shell());
  sendKey(focus != nullptr ? focus : found->shell(), symbol, modifiers);
  return std::nullopt;
}

Refusal endSession() {
  if (appIfRunning() == nullptr) return "the application is not running";
  app().askToQuit();
  return unless(app().isEnding(), "the program does not allow it");
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
