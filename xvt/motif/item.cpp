#include "xvt/motif/item.h"

#include "xvt/motif/dialog.h"
#include "xvt/motif/geometry.h"
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
      return std::make_shared<ButtonItem>(dialog, line, parent);
    case IK_CHECK:
    case IK_RADIO:
      return std::make_shared<MarkItem>(dialog, line, parent);
    case IK_EDIT:
      return std::make_shared<EditItem>(dialog, line, parent);
    case IK_LIST:
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

Item::Item(Dialog& dialog, const DLG_ITEM& line, Widget parent) : dialog_(dialog), line_(line), parent_(parent) {}

void Item::ready() {
  // Every control is a stop of the Tab key, in the table's order.
  const bool stop = line_.kind >= IK_EDIT && line_.kind <= IK_OPTION;
  XtVaSetValues(widget_, XmNnavigationType, stop ? XmEXCLUSIVE_TAB_GROUP : XmNONE, XmNtraversalOn, stop ? True : False,
                nullptr);
  if ((line_.flags & IF_DISABLED) != 0) setEnabled(false);
  if ((line_.flags & IF_HIDDEN) != 0) setVisible(false);
  if (line_.help != nullptr) setTooltip(widget_, line_.help);
}

void Item::setEnabled(bool enabled) {
  enabled_ = enabled;
  // Motif would lead the keyboard on to the next control, and keys that are on their way would act there.
  if (!enabled && dialog_.isVisible() && XmGetFocusWidget(dialog_.shell()) == widget_) dialog_.restKeyboard();
  XtSetSensitive(outer(), enabled ? True : False);
  dialog_.enableLabels(*this);
}

void Item::setVisible(bool visible) {
  visible_ = visible;
  XtSetMappedWhenManaged(outer(), visible ? True : False);
}

void Item::raise() { dialog_.raise(); }

void Item::takeFocus() {
  if (!dialog_.isVisible()) return dialog_.setFirstFocus(this);
  if (line_.kind == IK_EDIT && dialog_.edited() != this) dialog_.settle();
  // Going where it is already would be told as leaving and coming back when the pointer is in the window.
  if (XmGetFocusWidget(dialog_.shell()) != widget_) XmProcessTraversal(widget_, XmTRAVERSE_CURRENT);
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
  return PNT{sign * (frame.top + 1), sign * (frame.left + 1)};
}

void Item::tell(CTL_ACTION what) {
  EVENT event;
  event.type = E_CONTROL;
  event.ctl.id = line_.id;
  event.ctl.what = what;
  dialog_.tell(event);
}

Cell Item::leaf(Extent size, int baseline) const {
  Cell cell;
  cell.kind = line_.kind;
  cell.span = line_.span;
  cell.natural = size;
  cell.baseline = baseline;
  cell.wide = growth(Growth::none);
  return cell;
}

bool Item::inCard() const { return !dialog_.isGround(parent_); }

Pixel Item::ground() const { return app().look().pixel(inCard() ? color::paper : color::ground); }

Face Item::face() const {
  if ((line_.flags & IF_MONO) != 0) return Face::mono;
  return (line_.flags & IF_BOLD) != 0 ? Face::bold : Face::plain;
}

}  // namespace xvt
