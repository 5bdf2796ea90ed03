/// Finding and driving the real windows by name.
#include "xvt/probe.h"

#include <algorithm>

#include "xvt/base/utf8.h"
#include "xvt/desk/desk.h"
#include "xvt/desk/dialog.h"
#include "xvt/desk/task.h"

namespace xvt::probe {

namespace {

std::string quotedName(const BaseItem& item) { return "\"" + item.name() + "\""; }

/// The window if the user could reach it now.
std::shared_ptr<BaseWindow> reachable(WINDOW handle, Refusal* why) {
  auto window = Registry::instance().find<BaseWindow>(handle);
  const auto blocker = window ? desk().blockerOf(*window) : nullptr;
  if (!window || window->isDying())
    *why = "the window is not open";
  else if (!window->isVisible())
    *why = "the window \"" + window->name() + "\" is hidden";
  else if (blocker)
    *why = "\"" + window->name() + "\" is kept from input by \"" + blocker->name() + "\"";
  return *why ? nullptr : window;
}

/// The control if the user could use it now.
std::shared_ptr<BaseItem> usable(WINDOW handle, Refusal* why) {
  auto item = Registry::instance().find<BaseItem>(handle);
  if (!item)
    *why = "there is no such control";
  else if (!reachable(item->owner().handle(), why))
    return nullptr;
  else if (!item->isVisible())
    *why = quotedName(*item) + " is hidden";
  else if (!item->isSensitive())
    *why = quotedName(*item) + " is disabled";
  return *why ? nullptr : item;
}

std::shared_ptr<BaseItem> usableList(WINDOW handle, int row, Refusal* why) {
  auto item = usable(handle, why);
  if (!item) return nullptr;
  const ITEM_KIND kind = item->kind();
  if (kind != IK_LIST && kind != IK_MULTI && kind != IK_OPTION)
    *why = quotedName(*item) + " is not a list";
  else if (row < 0 || row >= item->rowCount())
    *why = quotedName(*item) + " has no row " + std::to_string(row);
  return *why ? nullptr : item;
}

Refusal unless(bool done, const std::string& reason) { return done ? std::nullopt : Refusal(reason); }

}  // namespace

void setTick(void (*tick)()) {
  Pump::setFirstTick(tick);
  if (deskIfRunning() != nullptr) desk().pump().setTick(tick);
}

WINDOW window(const std::string& name) {
  if (deskIfRunning() == nullptr) return NULL_WIN;
  const auto& windows = desk().windows();
  const auto found = std::find_if(windows.rbegin(), windows.rend(),
                                  [&](const auto& one) { return !one->isDying() && one->name() == name; });
  return found == windows.rend() ? NULL_WIN : (*found)->handle();
}

std::string nameOf(WINDOW window) {
  const auto found = Registry::instance().find<BaseWindow>(window);
  return found ? found->name() : "";
}

std::vector<std::string> openWindows() {
  std::vector<std::string> names;
  if (deskIfRunning() == nullptr) return names;
  for (const auto& one : desk().windows())
    if (one->isVisible() && !one->isDying()) names.push_back(one->name());
  return names;
}

WINDOW control(WINDOW window, const std::string& name) {
  const auto dialog = Registry::instance().find<BaseDialog>(window);
  if (!dialog) return NULL_WIN;
  for (const auto& item : dialog->items())
    if (item->handle() != 0 && item->line().name != nullptr && item->line().name == name) return item->handle();
  return NULL_WIN;
}

std::vector<std::string> controls(WINDOW window) {
  std::vector<std::string> names;
  const auto dialog = Registry::instance().find<BaseDialog>(window);
  if (!dialog) return names;
  for (const auto& item : dialog->items())
    if (item->line().name != nullptr) names.emplace_back(item->line().name);
  return names;
}

int kind(WINDOW control) {
  const auto item = Registry::instance().find<BaseItem>(control);
  return item ? item->kind() : -1;
}

TXEDIT textField(WINDOW window) {
  const auto owner = Registry::instance().find<BaseWindow>(window);
  const auto field = owner ? owner->firstText() : nullptr;
  return field ? field->handle() : NULL_TXEDIT;
}

int menuCommand(const std::string& name) {
  if (deskIfRunning() == nullptr || desk().task() == nullptr) return 0;
  const MENU_RES* table = desk().task()->menuTable();
  for (std::size_t at = 0; table != nullptr && at < table->count; ++at)
    if (table->items[at].name != nullptr && table->items[at].name == name) return table->items[at].command;
  return 0;
}

WINDOW inputKeeper() {
  if (deskIfRunning() == nullptr) return NULL_WIN;
  const auto keeper = desk().inputKeeper();
  return keeper ? keeper->handle() : NULL_WIN;
}

Refusal press(WINDOW control) {
  Refusal why;
  const auto item = usable(control, &why);
  if (!item) return why;
  if (item->kind() < IK_CHECK || item->kind() > IK_HEAD) return quotedName(*item) + " cannot be pressed";
  item->takeFocus();
  return unless(item->activate(), quotedName(*item) + " did not take the press");
}

Refusal type(WINDOW edit, const std::string& text) {
  Refusal why;
  const auto item = usable(edit, &why);
  if (!item) return why;
  if (item->kind() != IK_EDIT) return quotedName(*item) + " is not an edit field";
  if ((item->line().flags & IF_READONLY) != 0) return quotedName(*item) + " cannot be typed into";
  item->type(validUtf8(text));
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
  if (item->kind() == IK_OPTION) return quotedName(*item) + " has no rows to double-click";
  item->takeFocus();
  item->doubleClick(row);
  return std::nullopt;
}

Refusal menu(int command) {
  Refusal why;
  if (!reachable(TASK_WIN, &why)) return why;
  BaseTask* bar = desk().task();
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
  Key symbol = kNoKey;
  unsigned modifiers = 0;
  if (!parseKeys(keys, &symbol, &modifiers)) return "there is no key \"" + keys + "\"";
  found->takeFocus();
  Frame frame;
  desk().sendKey(*found, symbol, modifiers);
  return std::nullopt;
}

Refusal endSession() {
  if (deskIfRunning() == nullptr) return "the application is not running";
  desk().askToQuit();
  return unless(desk().isEnding(), "the program does not allow it");
}

Refusal screenshot(WINDOW window, const std::string& path) {
  return deskIfRunning() != nullptr ? desk().screenshot(window, path) : "the application is not running";
}

std::vector<std::string> textLines(WINDOW window, std::size_t last) {
  std::vector<std::string> lines;
  const auto owner = Registry::instance().find<BaseWindow>(window);
  const auto field = owner ? owner->firstText() : nullptr;
  if (!field) return lines;
  const long count = field->count();
  const long wanted = std::min<long>(count, static_cast<long>(std::min<std::size_t>(last, 1'000'000'000)));
  for (long at = count - wanted; at < count; ++at) lines.emplace_back(field->paragraph(at));
  return lines;
}

}  // namespace xvt::probe
