/// Checked calls: controls and lists.
#include <algorithm>
#include <initializer_list>

#include "xvt/check/check.h"

using namespace xvt;

namespace {

std::shared_ptr<Control> needKind(WINDOW handle, std::initializer_list<ITEM_KIND> kinds, const char* function,
                                  const char* wrongKind) {
  auto control = needControl(handle, function);
  if (!control || std::find(kinds.begin(), kinds.end(), control->kind()) != kinds.end()) return control;
  report(function, wrongKind);
  return nullptr;
}

std::shared_ptr<Control> needMark(WINDOW handle, const char* function) {
  return needKind(handle, {IK_CHECK, IK_RADIO}, function, "not a check box or a radio button");
}

std::shared_ptr<Control> needList(WINDOW handle, const char* function) {
  return needKind(handle, {IK_LIST, IK_MULTI, IK_OPTION}, function, "not a list");
}

/// The list if it has a row `index`.
std::shared_ptr<Control> needRow(WINDOW handle, int index, const char* function) {
  auto list = needList(handle, function);
  if (!list || (index >= 0 && index < list->rowCount())) return list;
  report(function, "no row " + std::to_string(index));
  return nullptr;
}

}  // namespace

void xvt_ctl_set_checked(WINDOW control, bool checked) {
  if (const auto mark = drawn(needMark(control, __func__))) mark->setChecked(checked);
}

bool xvt_ctl_is_checked(WINDOW control) {
  const auto mark = needMark(control, __func__);
  return mark && mark->isChecked();
}

void xvt_ctl_check_radio_button(WINDOW control, const WINDOW* group, int count) {
  const auto chosen = drawn(needMark(control, __func__));
  if (!chosen) return;
  if (group == nullptr && count > 0) return report(__func__, "no group");
  for (int at = 0; at < count; ++at)
    if (group[at] != control)
      if (const auto other = needMark(group[at], __func__)) other->setChecked(false);
  chosen->setChecked(true);
}

void xvt_ctl_set_color(WINDOW control, XVT_COLOR color) {
  if (const auto found = drawn(needControl(control, __func__))) found->setColor(color);
}

void xvt_ctl_set_meter(WINDOW control, int percent) {
  if (const auto meter = drawn(needKind(control, {IK_METER}, __func__, "not a meter")))
    meter->setMeter(std::clamp(percent, 0, 100));
}

int xvt_ctl_get_meter(WINDOW control) {
  const auto meter = needKind(control, {IK_METER}, __func__, "not a meter");
  return meter ? meter->meter() : 0;
}

void xvt_ctl_select_text(WINDOW control, int characters) {
  if (const auto edit = drawn(needKind(control, {IK_EDIT}, __func__, "not an edit field")))
    edit->selectText(characters);
}

void xvt_list_clear(WINDOW list) {
  if (const auto found = drawn(needList(list, __func__))) found->clearRows();
}

bool xvt_list_add(WINDOW list, int index, const char* text) {
  const auto found = drawn(needList(list, __func__));
  if (!found || !hasText(text, __func__)) return false;
  const int count = found->rowCount();
  if (index < -1 || index > count) {
    report(__func__, "no row " + std::to_string(index));
    return false;
  }
  found->addRow(index == -1 ? count : index, validUtf8(text));
  return true;
}

int xvt_list_count(WINDOW list) {
  const auto found = needList(list, __func__);
  return found ? found->rowCount() : 0;
}

char* xvt_list_get_text(WINDOW list, int index, char* buffer, std::size_t size) {
  const auto found = needRow(list, index, __func__);
  return copyOut(found ? found->rowText(index) : std::string(), buffer, size, __func__);
}

bool xvt_list_is_selected(WINDOW list, int index) {
  const auto found = needRow(list, index, __func__);
  return found && found->isRowSelected(index);
}

void xvt_list_set_selected(WINDOW list, int index, bool selected) {
  if (const auto found = drawn(needRow(list, index, __func__))) found->setRowSelected(index, selected);
}

void xvt_list_clear_selection(WINDOW list) {
  if (const auto found = drawn(needList(list, __func__))) found->clearRowSelection();
}

int xvt_list_get_selected(WINDOW list) {
  const auto found = needList(list, __func__);
  for (int row = 0; found && row < found->rowCount(); ++row)
    if (found->isRowSelected(row)) return row;
  return -1;
}

void xvt_list_grow(WINDOW list, COORD pixels) {
  if (const auto found = drawn(needKind(list, {IK_LIST, IK_MULTI}, __func__, "not a list"))) found->grow(pixels);
}

SLIST xvt_list_get_selection(WINDOW list) {
  SLIST selection = xvt_slist_create();
  const auto found = needList(list, __func__);
  for (int row = 0; selection != nullptr && found && row < found->rowCount(); ++row)
    if (found->isRowSelected(row) && !xvt_slist_add(selection, nullptr, found->rowText(row).c_str(), row)) break;
  return selection;
}
