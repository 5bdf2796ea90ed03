#include "xvt/desk/task.h"

#include "xvt/desk/desk.h"

namespace xvt {

void BaseTask::enterTask(EVENT_HANDLER eventHandler) {
  table_ = findMenu(desk().config().menu_bar_ID);
  for (std::size_t at = 0; table_ != nullptr && at < table_->count; ++at) {
    const MENU_ITEM& line = table_->items[at];
    if (line.kind != MK_COMMAND && line.kind != MK_CHECK) continue;
    MenuItem& item = items_[line.command];
    item.enabled = line.enabled;
    item.shortcuts = line.shortcut != nullptr ? line.shortcut : "";
  }
  Registry::instance().enterAs(shared_from_this(), TASK_WIN);
  enter(eventHandler, nullptr);
}

void BaseTask::setItemChecked(int command, bool checked) {
  items_.at(command).checked = checked;
  showItem(command);
}

void BaseTask::setItemEnabled(int command, bool enabled) {
  MenuItem& item = items_.at(command);
  if (item.enabled == enabled) return;
  item.enabled = enabled;
  showItem(command);
}

bool BaseTask::reaches(int number) const {
  if (isStandardCommand(number)) return true;  // in a modal dialog's fields too
  return isTextCommand(number) ? desk().textTarget() != nullptr : desk().blockerOf(*this) == nullptr;
}

bool BaseTask::shortcut(Key key, unsigned modifiers, BaseWindow& window) {
  for (const auto& [number, item] : items_) {
    if (!isOneOf(item.shortcuts, key, modifiers)) continue;
    if (!item.enabled || !reaches(number)) return false;
    const auto alive = window.shared_from_this();
    if (!isStandardCommand(number) && !isTextCommand(number)) window.settle();
    command(number);
    return true;
  }
  const int standard = standardCommandFor(key, modifiers);
  return standard != 0 && window.editStandard(standard);
}

void BaseTask::command(int number) {
  if (isDying()) return;
  settle();
  const auto edited = desk().editTarget();
  EVENT event;
  if (number == M_HELP) {
    event.type = E_HELP;
    event.help.window = edited ? edited->handle() : NULL_WIN;
    return tell(event);
  }
  if (isStandardCommand(number)) {
    if (edited) edited->editStandard(number);
    return;
  }
  event.type = E_COMMAND;
  event.cmd.tag = number;
  if (!isTextCommand(number)) return tell(event);
  if (const auto text = desk().textTarget()) text->tell(event);
}

}  // namespace xvt
