#include "xvt/motif/dialog.h"

#include <Xm/BulletinB.h>
#include <Xm/DrawingA.h>
#include <Xm/PushB.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>

#include "xvt/motif/drop.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

bool isContainer(ITEM_KIND kind) { return kind <= IK_STACK; }

/// The heading of a card, as an item of its own.
DLG_ITEM headingLine(const char* label) {
  DLG_ITEM line = ui::label(label);
  line.flags = IF_BOLD;
  return line;
}

}  // namespace

void Dialog::build(const DLG_RES& table, bool modal) {
  setTable(table);
  createShell("dialog", table.title != nullptr ? table.title : "", modal);
  createBoard();
  createRest();
  createBody();
  root_.kind = IK_COLUMN;
  std::size_t at = 0;
  root_.children = buildCells(at, body_, IK_COLUMN);
  for (const auto& item : items()) enableLabels(*item);
  remeasure();
  place(root_.natural);
}

void Dialog::createBody() {
  scroll_ = XtVaCreateManagedWidget("scroll", xmScrolledWindowWidgetClass, board(), XmNscrollingPolicy, XmAUTOMATIC,
                                    XmNscrollBarDisplayPolicy, XmAS_NEEDED, XmNborderWidth, 0, XmNbackground,
                                    app().look().pixel(color::kGround), nullptr);
  body_ = XtVaCreateManagedWidget("body", xmBulletinBoardWidgetClass, scroll_, XmNresizePolicy, XmRESIZE_NONE, nullptr);
  Widget clip = nullptr;
  XtVaGetValues(scroll_, XmNclipWindow, &clip, nullptr);
  if (clip != nullptr) XtVaSetValues(clip, XmNbackground, app().look().pixel(color::kGround), nullptr);
  // A control that gets the keyboard comes into view.
  onCallback(scroll_, XmNtraverseObscuredCallback, [this](XtPointer callData) {
    const auto* call = static_cast<XmTraverseObscuredCallbackStruct*>(callData);
    const auto margin = static_cast<Dimension>(app().look().spacing().line);
    XmScrollVisible(scroll_, call->traversal_destination, margin, margin);
  });
}

/// The cells of one container, up to its end.
std::vector<Cell> Dialog::buildCells(std::size_t& at, Widget parent, ITEM_KIND around) {
  std::vector<Cell> cells;
  while (at < table().count && table().items[at].kind != IK_END) {
    const DLG_ITEM& line = table().items[at++];
    const bool foot = line.kind == IK_BUTTONS || line.kind == IK_STATUS;
    const Widget ground = foot ? board() : parent;
    if (!isContainer(line.kind)) {
      cells.push_back(leafFor(line, ground, around));
      continue;
    }
    Cell cell;
    cell.kind = line.kind;
    cell.columns = line.columns;
    cell.span = line.span;
    cell.wish = (line.flags & IF_GROW) != 0 ? Growth::eager : Growth::none;
    const bool card = line.kind == IK_CARD;
    std::vector<Cell> inside;
    if (card && line.label != nullptr) {
      cell.headed = true;
      inside.push_back(headingFor(line));
    }
    if (card) frames_.push_back(createFrame());
    for (Cell& child : buildCells(at, card ? frames_.back() : ground, line.kind)) inside.push_back(std::move(child));
    cell.children = std::move(inside);
    cells.push_back(std::move(cell));
    if (at < table().count) ++at;  // the container's end
  }
  return cells;
}

Cell Dialog::leafFor(const DLG_ITEM& line, Widget parent, ITEM_KIND around) {
  if (line.kind == IK_GLUE) {
    Cell glue;
    glue.kind = IK_GLUE;
    const bool upright = around == IK_COLUMN || around == IK_CARD;
    (upright ? glue.tall : glue.wide) = Growth::eager;
    leaves_.push_back(nullptr);
    return glue;
  }
  const auto item = makeItem(*this, line, parent);
  take(item);
  leaves_.push_back(item.get());
  return item->cell();
}

Cell Dialog::headingFor(const DLG_ITEM& card) {
  headings_.push_back(std::make_unique<DLG_ITEM>(headingLine(card.label)));
  return leafFor(*headings_.back(), body_, IK_COLUMN);
}

Widget Dialog::createFrame() {
  return XtVaCreateManagedWidget("card", xmBulletinBoardWidgetClass, body_, XmNbackground,
                                 app().look().pixel(color::kPaper), XmNborderWidth, app().look().line(), XmNborderColor,
                                 app().look().pixel(color::kLine), XmNresizePolicy, XmRESIZE_NONE, nullptr);
}

/// A spot that nobody sees: Motif knows no window without a widget that has the keyboard.
void Dialog::createRest() {
  rest_ = XtVaCreateManagedWidget("rest", xmDrawingAreaWidgetClass, board(), XmNwidth, 1, XmNheight, 1, XmNmarginWidth,
                                  0, XmNmarginHeight, 0, XmNtraversalOn, False, XmNnavigationType,
                                  XmEXCLUSIVE_TAB_GROUP, nullptr);
}

void Dialog::refreshLeaves(Cell& cell, std::size_t& leaf) {
  if (!cell.children.empty()) {
    for (Cell& child : cell.children) refreshLeaves(child, leaf);
    return;
  }
  if (isContainer(cell.kind)) return;  // an empty one
  if (const Item* item = leaves_.at(leaf++)) cell = item->cell();
}

void Dialog::remeasure() {
  std::size_t leaf = 0;
  refreshLeaves(root_, leaf);
  measureDialog(root_, app().look().spacing());
}

void Dialog::applyPlaces(const Cell& cell, std::size_t& leaf, std::size_t& card) {
  if (!isContainer(cell.kind)) {
    if (Item* item = leaves_.at(leaf++)) item->place(cell.place);
    return;
  }
  // The frame first: its contents are placed in it.
  if (cell.kind == IK_CARD) setPlace(frames_.at(card++), cell.place);
  for (const Cell& child : cell.children) applyPlaces(child, leaf, card);
}

void Dialog::arrangeContents(Extent size) { place(size); }

/// Gives everything its place in a window of this size.
void Dialog::place(Extent size) {
  const ScrolledPart part = arrangeDialog(root_, size, app().look().spacing(), app().look().px(kScrollBarWidth));
  setPlace(scroll_, RCT{0, 0, part.view.height, part.view.width});
  XtVaSetValues(body_, XmNwidth, static_cast<Dimension>(std::max(1, part.contents.width)), XmNheight,
                static_cast<Dimension>(std::max(1, part.contents.height)), nullptr);
  std::size_t leaf = 0;
  std::size_t card = 0;
  applyPlaces(root_, leaf, card);
}

/// As large as the contents, or as the screen, with scroll bars.
Extent Dialog::wanted() const {
  const Extent most = mostSize();
  const int bar = app().look().px(kScrollBarWidth);
  const int upright = root_.least.height > most.height ? bar : 0;
  const int across = root_.least.width + upright > most.width ? bar : 0;
  return {std::min(root_.natural.width + upright, most.width), std::min(root_.natural.height + across, most.height)};
}

void Dialog::openFitted() {
  remeasure();
  stale_ = false;
  fitted_ = true;
  WindowWish wish = wishFor(wanted(), dialogPlace(wanted()));
  wish.least = {std::min(root_.least.width, wish.size.width), std::min(root_.least.height, wish.size.height)};
  wish.is_box = isModal() && table().id == 0;  // the program's own dialogs have numbers
  open(wish, root_.least);
  if (std::ranges::any_of(items(), &BaseItem::takesFile)) listenForDrops(shell());
  startKeyboard();
}

void Dialog::startKeyboard() {
  const auto start = std::dynamic_pointer_cast<Item>(firstFocus());
  setRestful(!start);
  Widget widget = start ? start->widget() : rest_;
  if (XmGetFocusWidget(shell()) != widget) XmProcessTraversal(widget, XmTRAVERSE_CURRENT);
}

void Dialog::moveKeyboard(BaseItem& item) {
  XmProcessTraversal(dynamic_cast<Item&>(item).widget(), XmTRAVERSE_CURRENT);
}

void Dialog::restKeyboard() {
  setRestful(true);
  XmProcessTraversal(rest_, XmTRAVERSE_CURRENT);
}

void Dialog::setRestful(bool restful) {
  if (restful_ == restful) return;
  restful_ = restful;
  XtVaSetValues(rest_, XmNtraversalOn, restful ? True : False, nullptr);
}

void Dialog::refresh() {
  if (isDying()) return;
  for (Item* item : leaves_)
    if (item != nullptr) item->refresh();
  // The spot is no stop of the Tab key: once the keyboard has left it, it stays away.
  if (restful_ && fitted_ && XmGetFocusWidget(shell()) != rest_) setRestful(false);
  if (!stale_ || !fitted_) return;
  stale_ = false;
  remeasure();
  const Extent now = boardSize();
  const Extent size{std::max(now.width, wanted().width), std::max(now.height, wanted().height)};
  if (size.width != now.width || size.height != now.height) resizeTo(size, root_.least);
  arrangeContents(size);
}

std::shared_ptr<Item> Dialog::itemOf(Widget widget) const {
  for (const auto& item : items())
    if (auto shown = std::dynamic_pointer_cast<Item>(item); shown->widget() == widget) return shown;
  return nullptr;
}

bool Dialog::wheel(Widget over, int lines) {
  const auto item = itemOf(over);
  const bool scrollsItself = item && (item->kind() == IK_LIST || item->kind() == IK_MULTI);
  Widget bar = nullptr;
  XtVaGetValues(scroll_, XmNverticalScrollBar, &bar, nullptr);
  if (bar == nullptr || !XtIsManaged(bar) || scrollsItself || XtIsSubclass(over, xmScrollBarWidgetClass)) return false;
  int value = 0, slider = 0, step = 0, page = 0, most = 0;
  XmScrollBarGetValues(bar, &value, &slider, &step, &page);
  XtVaGetValues(bar, XmNmaximum, &most, nullptr);
  const int wanted = std::clamp(value + lines * app().look().lineHeight(), 0, std::max(0, most - slider));
  if (wanted != value) XmScrollBarSetValues(bar, wanted, slider, step, page, True);
  return true;
}

}  // namespace xvt
