#include "xvt/motif/item.h"

#include "xvt/motif/dialog.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/item_table.h"
#include "xvt/motif/tooltip.h"

namespace xvt {

namespace {

RCT moved(const RCT& place, PNT by) {
  return RCT{place.top + by.v, place.left + by.h, place.bottom + by.v, place.right + by.h};
}

}  // namespace

std::shared_ptr<Item> makeItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) {
  switch (line.kind) {
    case IK_PUSH:
    case IK_HEAD:
      return std::make_shared<ButtonItem>(dialog, line, parent);
    case IK_CHECK:
    case IK_RADIO:
      return std::make_shared<MarkItem>(dialog, line, parent);
    case IK_EDIT:
      return std::make_shared<EditItem>(dialog, line, parent);
    case IK_LIST:
      if ((line.flags & IF_COLUMNS) != 0) return std::make_shared<TableItem>(dialog, line, parent);
      [[fallthrough]];
    case IK_MULTI:
      return std::make_shared<ListItem>(dialog, line, parent);
    case IK_OPTION:
      return std::make_shared<OptionItem>(dialog, line, parent);
    case IK_METER:
      return std::make_shared<MeterItem>(dialog, line, parent);
    case IK_SEPARATOR:
      return std::make_shared<SeparatorItem>(dialog, line, parent);
    default:
      return std::make_shared<TextItem>(dialog, line, parent);
  }
}

Item::Item(Dialog& dialog, const DLG_ITEM& line, Widget parent)
    : BaseItem(dialog, line), dialog_(dialog), parent_(parent) {}

void Item::ready() {
  // Every control is a stop of the Tab key, in the table's order.
  const bool stop = isStop();
  XtVaSetValues(widget_, XmNnavigationType, stop ? XmEXCLUSIVE_TAB_GROUP : XmNONE, XmNtraversalOn, stop ? True : False,
                nullptr);
  if ((line().flags & IF_DISABLED) != 0) setEnabled(false);
  if ((line().flags & IF_HIDDEN) != 0) setVisible(false);
  if (line().help != nullptr) setTooltip(widget_, line().help);
}

void Item::showEnabled() { XtSetSensitive(outer(), isEnabled() ? True : False); }

void Item::setVisible(bool visible) {
  BaseItem::setVisible(visible);
  XtSetMappedWhenManaged(outer(), visible ? True : False);
}

RCT Item::clientRect() const {
  const RCT outside = outerRect();
  return RCT{0, 0, outside.bottom - outside.top, outside.right - outside.left};
}

RCT Item::outerRect() const { return moved(placeOf(outer()), frameOrigin(1)); }

void Item::place(const RCT& room) { setPlace(outer(), moved(room, frameOrigin(-1))); }

PNT Item::frameOrigin(int sign) const {
  if (!inCard()) return {};
  const RCT frame = placeOf(parent_);
  const int line = app().look().line();
  return PNT{sign * (frame.top + line), sign * (frame.left + line)};
}

Cell Item::leaf(Extent size, int baseline) const {
  Cell cell;
  cell.kind = line().kind;
  cell.span = line().span;
  cell.natural = size;
  cell.baseline = baseline;
  cell.wide = growth(Growth::none);
  return cell;
}

bool Item::inCard() const { return !dialog_.isGround(parent_); }

Pixel Item::ground() const { return app().look().pixel(inCard() ? color::kPaper : color::kGround); }

Face Item::face() const {
  if ((line().flags & IF_MONO) != 0) return Face::mono;
  return (line().flags & IF_BOLD) != 0 ? Face::bold : Face::plain;
}

}  // namespace xvt
