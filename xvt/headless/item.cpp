#include "xvt/headless/item.h"

#include <algorithm>
#include <string_view>

#include "xvt/base/utf8.h"
#include "xvt/desk/label_text.h"
#include "xvt/headless/headless.h"
#include "xvt/headless/window.h"

namespace xvt {

namespace {

constexpr int kColumn = 8;
constexpr int kLine = 16;

/// Text as a field can hold it.
std::string oneLine(std::string text) {
  for (char& byte : text)
    if (static_cast<unsigned char>(byte) < ' ') byte = ' ';
  while (text.ends_with(' ')) text.pop_back();
  return validUtf8(text);
}

}  // namespace

MemoryItem::MemoryItem(BaseDialog& owner, const DLG_ITEM& line) : BaseItem(owner, line) {
  const LabelText label(line.label);
  text_ = label.plain;
  if (line.kind == IK_LABEL || line.kind >= IK_CHECK) mnemonic_ = label.mnemonic;
  place_ = RCT{0, 0, std::max(1, line.lines) * kLine, std::max(1, line.columns) * kColumn};
}

MemoryItem::~MemoryItem() {
  if (deskIfRunning() != nullptr) closeList();
}

void MemoryItem::setTitle(const std::string& title) {
  if (!showsText() || title == text_) return;
  text_ = title;
  selected_ = 0;
}

std::string MemoryItem::title() const {
  if (kind() != IK_OPTION) return text_;
  const auto chosen = std::find_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.selected; });
  return chosen != rows_.end() ? chosen->text : "";
}

void MemoryItem::setVisible(bool visible) {
  if (!visible) closeList();
  BaseItem::setVisible(visible);
}

void MemoryItem::showEnabled() {
  if (!isEnabled()) closeList();
}

RCT MemoryItem::clientRect() const { return RCT{0, 0, place_.bottom - place_.top, place_.right - place_.left}; }

bool MemoryItem::activate() {
  if (!isVisible() || !isSensitive()) return false;
  if (kind() == IK_OPTION)
    openList();
  else if (kind() >= IK_CHECK && kind() <= IK_HEAD)
    pressed();
  else
    return false;
  return true;
}

// ---- rows ---------------------------------------------------------------------------------------------------------

void MemoryItem::clearRows() {
  closeList();
  rows_.clear();
}

void MemoryItem::addRow(int index, const std::string& text) { rows_.insert(rows_.begin() + index, {text, false}); }

void MemoryItem::setRowSelected(int row, bool selected) {
  if (selected && kind() != IK_MULTI) clearRowSelection();
  rows_.at(static_cast<std::size_t>(row)).selected = selected;
}

void MemoryItem::clearRowSelection() {
  for (Row& row : rows_) row.selected = false;
}

void MemoryItem::openList() {
  if (desk().choosing() != nullptr) return;
  owner().settle();
  // The handler may have answered that with anything.
  if (rows_.empty() || owner().isDying() || desk().blockerOf(owner()) || !isSensitive()) return;
  const auto chosen = std::find_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.selected; });
  marked_ = chosen != rows_.end() ? static_cast<int>(chosen - rows_.begin()) : -1;
  desk().setChoosing(this);
}

void MemoryItem::closeList() {
  if (desk().choosing() == this) desk().setChoosing(nullptr);
}

// ---- text ---------------------------------------------------------------------------------------------------------

void MemoryItem::enterText(const std::string& text) {
  text_ = text;
  selected_ = 0;
  begin(true);
  tell(CTL_EDITED);
}

void MemoryItem::insert(const std::string& text) {
  if (isEditable()) enterText(selected_ > 0 ? text + text_.substr(selected_) : text_ + text);
}

void MemoryItem::selectText(int characters) {
  selected_ = 0;
  for (int left = characters; left != 0 && selected_ < text_.size(); --left)
    selected_ += std::max<std::size_t>(1, utf8SequenceLength(std::string_view(text_).substr(selected_)));
}

void MemoryItem::edit(int command) {
  if (command == M_EDIT_SELECT_ALL) return selectText(-1);
  if (command == M_EDIT_PASTE) return insert(oneLine(headless().clipboard()));
  if (selected_ == 0) return;
  headless().setClipboard(text_.substr(0, selected_));
  if (command == M_EDIT_CUT) insert("");
}

void MemoryItem::editKey(Key key) {
  if (key == kBackSpaceKey && isEditable()) {
    if (selected_ > 0) return insert("");
    std::string shorter = text_;
    while (!shorter.empty() && (static_cast<unsigned char>(shorter.back()) & 0xC0U) == 0x80U) shorter.pop_back();
    if (!shorter.empty()) shorter.pop_back();
    enterText(shorter);
  } else if (key >= ' ' && key <= '~') {
    insert(std::string(1, static_cast<char>(key)));
  }
}

void MemoryItem::ownKey(Key key) {
  if (kind() == IK_EDIT)
    editKey(key);
  else if (key == ' ')
    activate();
  else if (rowCount() > 0 && (key == kUpKey || key == kDownKey))
    step(key == kUpKey ? -1 : 1);
}

}  // namespace xvt
