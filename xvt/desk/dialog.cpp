#include "xvt/desk/dialog.h"

#include <algorithm>
#include <utility>

#include "xvt/desk/desk.h"

namespace xvt {

void BaseDialog::take(const std::shared_ptr<BaseItem>& item) {
  items_.push_back(item);
  const DLG_ITEM& line = item->line();
  if (line.id == 0 || belongsToField(*table_, line)) return;
  Registry::instance().enter(item);
  byId_[line.id] = item;
}

std::shared_ptr<Control> BaseDialog::control(int id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : found->second;
}

void BaseDialog::dropParts() {
  for (const auto& [id, item] : byId_) Registry::instance().leave(item->handle());
  edited_ = nullptr;
}

/// Labels look like their field, or like the choice that they name.
void BaseDialog::enableLabels(const BaseItem& field) {
  if (!isField(field.kind()) && field.kind() != IK_RADIO) return;
  BaseItem* before = nullptr;
  for (const auto& item : items_) {
    const DLG_ITEM& line = item->line();
    if (line.kind == IK_LABEL && line.id != 0 && line.id == field.line().id) item->setEnabled(field.isEnabled());
    if (item.get() == &field && before != nullptr && before->kind() == IK_LABEL && before->line().id == 0 &&
        (before->mnemonic() != kNoKey || before->title().ends_with(':')))
      before->setEnabled(field.isEnabled());
    before = item.get();
  }
}

// ---- the keyboard -------------------------------------------------------------------------------------------------

std::shared_ptr<BaseItem> BaseDialog::firstFocus() const {
  const auto first = std::find_if(items_.begin(), items_.end(), [&](const auto& item) {
    if (firstFocus_ != nullptr) return item.get() == firstFocus_;
    return item->kind() == IK_EDIT && item->isEnabled() && item->isVisible() && (item->line().flags & IF_READONLY) == 0;
  });
  const auto start = first != items_.end() ? *first : flagged(IF_DEFAULT);
  return start && start->isSensitive() ? start : nullptr;
}

void BaseDialog::settle() {
  if (edited_ != nullptr) edited_->settle();
}

bool BaseDialog::keyboardMoved() {
  moved_ = desk().isPressed() || desk().blockerOf(*this);
  return !moved_;
}

void BaseDialog::catchUp() {
  if (isDying() || desk().isPressed() || desk().blockerOf(*this)) return;
  if (desk().active().get() != this) return settle();
  if (!std::exchange(moved_, false)) return;
  const auto on = focused();
  const auto now = on && on->kind() == IK_EDIT ? on : nullptr;
  if (edited_ == now.get()) return;
  settle();
  if (now && !isDying() && focused() == now) now->begin(false);
}

std::shared_ptr<BaseItem> BaseDialog::flagged(unsigned flag) const {
  const auto found = std::find_if(items_.begin(), items_.end(), [&](const auto& item) {
    return item->kind() == IK_PUSH && (item->line().flags & flag) != 0;
  });
  return found == items_.end() ? nullptr : *found;
}

bool BaseDialog::mnemonic(Key key) {
  for (std::size_t at = 0; at < items_.size(); ++at) {
    if (lowerKey(items_[at]->mnemonic()) != key) continue;
    // A label's mnemonic leads to the field behind it.
    std::size_t target = at;
    while (target < items_.size() && items_[target]->kind() <= IK_STATUS) ++target;
    if (target == items_.size() || !items_[target]->isEnabled() || !items_[target]->isVisible()) continue;
    const auto item = items_[target];
    item->takeFocus();
    if (target == at) item->activate();
    return true;
  }
  return false;
}

bool BaseDialog::returnKey() {
  const auto on = focused();
  if (on && (on->kind() == IK_PUSH || on->kind() == IK_HEAD || on->kind() == IK_OPTION)) return on->activate();
  if (on && on->kind() == IK_LIST && (on->line().flags & IF_ENTER) != 0)
    for (int row = 0; row < on->rowCount(); ++row)
      if (on->isRowSelected(row)) return on->doubleClick(row), true;
  if (const auto own = on ? buttonOfField(*on) : nullptr) return own->activate(), true;
  return defaultKey();
}

/// The default button, wherever the keyboard is.
bool BaseDialog::defaultKey() {
  const auto button = flagged(IF_DEFAULT);
  if (button) button->activate();
  return button != nullptr;
}

/// The button behind an edit field that takes what is typed there.
std::shared_ptr<BaseItem> BaseDialog::buttonOfField(const BaseItem& field) const {
  for (std::size_t at = 0; at + 1 < items_.size(); ++at)
    if (items_[at].get() == &field && (items_[at + 1]->line().flags & IF_ENTER) != 0) return items_[at + 1];
  return nullptr;
}

bool BaseDialog::escapeKey() {
  if (const auto button = flagged(isModal() ? IF_CANCEL | IF_ESCAPE : IF_ESCAPE))
    button->activate();
  else if (isModal())
    requestClose();
  return true;
}

bool BaseDialog::downKey() {
  const auto list = focused();
  if (!list || (list->kind() != IK_LIST && list->kind() != IK_MULTI) || list->rowCount() == 0) return false;
  for (int row = 0; row < list->rowCount(); ++row)
    if (list->isRowSelected(row)) return false;
  return list->choose(0, false);
}

bool BaseDialog::shortcutKey(Key key, unsigned modifiers) {
  const auto on = focused();
  if (on && on->kind() == IK_EDIT && (modifiers & ~kShift) == 0) return false;
  const auto found = std::find_if(items_.begin(), items_.end(), [&](const auto& item) {
    return item->line().keys != nullptr && isOneOf(item->line().keys, key, modifiers);
  });
  return found != items_.end() && (*found)->isVisible() && (*found)->isSensitive() && (*found)->activate();
}

bool BaseDialog::completeKey() {
  const auto field = focused();
  return field && field->complete();
}

bool BaseDialog::rowKey(Key key) {
  const auto list = focused();
  if (!list || (list->line().flags & IF_COLUMNS) == 0) return false;
  const std::optional<int> row = rowKeys_.rowFor(key, *list);
  if (row) list->choose(*row, false);
  return row.has_value();
}

bool BaseDialog::editStandard(int command) {
  const auto field = focused();
  if (!field || field->kind() != IK_EDIT) return false;
  field->edit(command);
  return true;
}

}  // namespace xvt
