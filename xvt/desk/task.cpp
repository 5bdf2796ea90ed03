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
    if (line.shortcut != nullptr) parseKeys(line.shortcut, &item.key, &item.modifiers);
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

bool BaseTask::shortcut(Key key, unsigned modifiers, BaseWindow& window) {
  for (const auto& [number, item] : items_) {
    if (item.key != key || item.modifiers != modifiers || key == kNoKey) continue;
    if (!item.enabled || desk().blockerOf(*this)) {
      // A standard command works in a modal dialog's fields too.
      if (!item.enabled || !isStandardCommand(number)) return false;
    }
    const auto alive = window.shared_from_this();
    if (!isStandardCommand(number)) window.settle();
    command(number);
    return true;
  }
  const int standard = standardCommandFor(key, modifiers);
  return standard != 0 && window.editStandard(standard);
}

void BaseTask::command(int number) {
  if (isDying()) return;
  settle();
  if (isStandardCommand(number)) {
    if (const auto target = desk().editTarget()) target->editStandard(number);
    return;
  }
  EVENT event;
  event.type = E_COMMAND;
  event.cmd.tag = number;
  tell(event);
}

}  // namespace xvt
