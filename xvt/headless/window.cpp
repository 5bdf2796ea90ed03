#include "xvt/headless/window.h"

#include <algorithm>

#include "xvt/headless/headless.h"
#include "xvt/headless/item.h"
#include "xvt/headless/text.h"

namespace xvt {

namespace {

constexpr RCT kUsualPlace{0, 0, 480, 640};

Extent sizeOf(const RCT& place) { return {place.right - place.left, place.bottom - place.top}; }

}  // namespace

RCT MemoryWindow::clientRect() const { return RCT{0, 0, sizeOf(place_).height, sizeOf(place_).width}; }

void MemoryWindow::open(const RCT& place, bool show) {
  place_ = place;
  opened_ = true;
  if (show) popUp();
}

void MemoryWindow::setVisible(bool visible) {
  if (visible == isVisible() || isDying() || !opened_) return;
  visible ? popUp() : popDown();
}

void MemoryWindow::popUp() {
  headless().stopChoosing(nullptr);
  setShown(true);
  if (wantsFocus()) takeFocus();
}

void MemoryWindow::popDown() {
  headless().stopChoosing(this);
  setShown(false);
  if (const auto next = headless().speaker()) next->takeFocus();
}

void MemoryWindow::grabKeyboard() {
  if (headless().moveKeyboard(shared_from_this()) && !isDying()) keyboardCame();
}

void MemoryTask::create(EVENT_HANDLER eventHandler) {
  setTitle(desk().config().taskwin_title != nullptr ? desk().config().taskwin_title : "");
  enterTask(eventHandler);
  open(kUsualPlace);
}

// ---- dialogs ------------------------------------------------------------------------------------------------------

void MemoryDialog::build(const DLG_RES& lines, bool modal) {
  setTable(lines);
  setModal(modal);
  setTitle(lines.title != nullptr ? lines.title : "");
  for (std::size_t at = 0; at < lines.count; ++at) {
    const DLG_ITEM& line = lines.items[at];
    if (line.kind > IK_END && line.kind != IK_GLUE) take(std::make_shared<MemoryItem>(*this, line));
  }
  for (const auto& item : items()) {
    if ((item->line().flags & IF_DISABLED) != 0) item->setEnabled(false);
    if ((item->line().flags & IF_HIDDEN) != 0) item->setVisible(false);
  }
}

void MemoryDialog::openFitted() {
  focus_ = firstFocus();
  open(kUsualPlace);
}

void MemoryDialog::keyboardCame() {
  const auto on = focused();
  if (on && on->kind() == IK_EDIT && keyboardMoved()) on->begin(false);
}

/// The control with the keyboard loses it.
void MemoryDialog::leave() {
  const auto before = focused();
  focus_.reset();
  if (before && before->kind() == IK_EDIT && keyboardMoved()) before->settle();
}

void MemoryDialog::moveKeyboard(BaseItem& item) {
  if (!item.isStop() || !item.isSensitive() || !item.isVisible()) return;
  leave();
  const auto found = std::find_if(items().begin(), items().end(), [&](const auto& one) { return one.get() == &item; });
  focus_ = *found;
  if (desk().active().get() == this) keyboardCame();
}

void MemoryDialog::restKeyboard() { leave(); }

/// To the next stop of the Tab key, or to the one before.
void MemoryDialog::goOn(int direction) {
  const auto count = static_cast<long>(items().size());
  const auto now = std::find(items().begin(), items().end(), focused());
  long at = now != items().end() ? now - items().begin() : direction > 0 ? -1 : 0;
  for (long tried = 0; tried < count; ++tried) {
    at = (at + direction + count) % count;
    const auto& item = items()[static_cast<std::size_t>(at)];
    if (item->isStop() && item->isSensitive() && item->isVisible()) return item->takeFocus();
  }
}

void MemoryDialog::ownKey(Key key, unsigned modifiers) {
  if (key == kTabKey) return goOn((modifiers & kShift) != 0 ? -1 : 1);
  const auto on = std::static_pointer_cast<MemoryItem>(focused());
  if (on && (modifiers & ~kShift) == 0) on->ownKey((modifiers & kShift) != 0 ? upperKey(key) : key);
}

// ---- documents ----------------------------------------------------------------------------------------------------

void MemoryDocument::build(const WIN_DEF& definition) {
  setTitle(takeDefinition(definition));
  flags_ = definition.flags;
  for (const WIN_DEF* part = &definition + 1; part->type != W_NONE; ++part)
    if (part->type == WC_TEXTEDIT) BaseDocument::take(part->id, std::make_shared<MemoryText>(*this, *part));
}

void MemoryDocument::openAt(const WIN_DEF& definition) {
  forgetClient();
  open(definition.rct, (definition.flags & WSF_INVISIBLE) == 0);
  setClient(sizeOf(definition.rct));
}

void MemoryDocument::move(const RCT& rectangle) {
  MemoryWindow::move(rectangle);
  setClient(sizeOf(rectangle));
}

bool MemoryDocument::hasScrollBar(SCROLL_TYPE bar) const {
  return (flags_ & (bar == HSCROLL ? WSF_HSCROLL : WSF_VSCROLL)) != 0;
}

void MemoryDocument::setScrollRange(SCROLL_TYPE bar, COORD low, COORD high) {
  bars_[bar].low = low;
  bars_[bar].high = high;
}

bool MemoryDocument::editStandard(int command) {
  const auto field = std::static_pointer_cast<MemoryText>(firstText());
  if (!field) return false;
  if (command == M_EDIT_SELECT_ALL) field->selectAll();
  if (command == M_EDIT_COPY && !field->selectedText().empty()) headless().setClipboard(field->selectedText());
  return true;
}

}  // namespace xvt
