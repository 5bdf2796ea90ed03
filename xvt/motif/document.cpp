#include "xvt/motif/document.h"

#include <Xm/BulletinB.h>
#include <Xm/RowColumn.h>

#include <algorithm>

#include "xvt/motif/geometry.h"
#include "xvt/motif/task_window.h"

namespace xvt {

namespace {

int widthOf(const RCT& rectangle) { return rectangle.right - rectangle.left; }
int heightOf(const RCT& rectangle) { return rectangle.bottom - rectangle.top; }

}  // namespace

TextFieldObject::TextFieldObject(Document& document, const WIN_DEF& definition) : document_(document) {
  font_ = Registry::instance().find<Font>(definition.font);
  if (!font_) font_ = runtime::createFont(true, 10, false);
  TextViewStyle style;
  const auto xft = std::dynamic_pointer_cast<XftFontObject>(font_);
  style.font = xft ? xft->xft() : app().look().font(Face::mono);
  const Palette& palette = app().look().palette();
  style.background = palette.name(color::kPaper);
  style.foreground = style.selectionForeground = palette.name(color::kInk);
  style.selectionBackground = palette.name(color::kChosen);
  style.focusRing = palette.name(color::kFocus);
  style.leading = font_ ? font_->leading() : 0;
  view_ = std::make_unique<TextView>(document.board(), "text", style);
  XtManageChild(view_->widget());
  XtVaSetValues(view_->widget(), XmNborderWidth, 0, nullptr);
  view_->setScrolledCallback([this](long line, long lines, int offset) {
    if (callback_ != nullptr && !document_.isDying()) callback_(handle(), line, lines, offset);
  });
  view_->setMenuCallback([this](XButtonEvent& event) { document_.popUpMenu(event); });
  move(definition.rct);
}

void TextFieldObject::setFont(const std::shared_ptr<Font>& font) {
  const auto xft = std::dynamic_pointer_cast<XftFontObject>(font);
  if (!xft) return;
  view_->setFont(xft->xft(), font->leading());
  font_ = font;
}

std::shared_ptr<Window> TextFieldObject::window() const { return document_.shared_from_this(); }

void TextFieldObject::move(const RCT& rectangle) {
  place_ = rectangle;
  view_->setGeometry(rectangle.left, rectangle.top, std::max(1, widthOf(rectangle)), std::max(1, heightOf(rectangle)));
}

RCT TextFieldObject::viewRect() const {
  const int left = place_.left + std::max(0, (widthOf(place_) - view_->viewWidth()) / 2);
  const int top = place_.top + std::max(0, (heightOf(place_) - view_->viewHeight()) / 2);
  return RCT{top, left, top + view_->viewHeight(), left + view_->viewWidth()};
}

void Document::build(const WIN_DEF& definition) {
  const std::string title = takeDefinition(definition);
  createShell("document", title, false);
  createBoard();
  XtVaSetValues(board(), XmNbackground, app().look().pixel(color::kTrough), nullptr);
  if ((definition.flags & WSF_HSCROLL) != 0) bars_[HSCROLL] = std::make_unique<ScrollBar>(*this, board(), HSCROLL);
  if ((definition.flags & WSF_VSCROLL) != 0) bars_[VSCROLL] = std::make_unique<ScrollBar>(*this, board(), VSCROLL);
  for (const WIN_DEF* part = &definition + 1; part->type != W_NONE; ++part)
    if (part->type == WC_TEXTEDIT) take(part->id, std::make_shared<TextFieldObject>(*this, *part));
}

void Document::openAt(const WIN_DEF& definition) {
  const Look& look = app().look();
  const Extent least{8 * look.lineHeight(), 4 * look.lineHeight()};
  WindowWish wish =
      wishFor({std::max(widthOf(definition.rct), least.width), std::max(heightOf(definition.rct), least.height)},
              PNT{look.px(definition.rct.top), look.px(definition.rct.left)});
  wish.least = {2 * least.width, least.height};
  if ((definition.flags & WSF_UPPER_LEFT) != 0) keepToUpperLeft(&wish);
  forgetClient();
  open(wish, least, (definition.flags & WSF_INVISIBLE) == 0);
}

/// The menu of the text, as part of the menu bar's lines: one table tells commands, keys and words.
void Document::popUpMenu(XButtonEvent& event) {
  auto* task = dynamic_cast<TaskWindow*>(app().task());
  if (task == nullptr || isDying() || app().blockerOf(*this)) return;
  app().setActive(shared_from_this());  // before the window manager says so: the commands are for this text
  if (menu_ == nullptr) menu_ = task->createTextMenu(board());
  XmMenuPosition(menu_, &event);
  XtManageChild(menu_);
}

void Document::paintText() {
  for (const auto& [id, field] : fields()) std::static_pointer_cast<TextFieldObject>(field)->view().paintIfDue();
}

void Document::refresh() {
  for (const auto& bar : bars_)
    if (bar && XtIsRealized(bar->widget())) bar->refresh();
}

void Document::arrangeContents(Extent size) {
  const int thick = app().look().px(12);
  const int right = bars_[VSCROLL] ? thick : 0;
  const int foot = bars_[HSCROLL] ? thick : 0;
  const Extent client{std::max(1, size.width - right), std::max(1, size.height - foot)};
  if (bars_[VSCROLL]) setPlace(bars_[VSCROLL]->widget(), RCT{0, client.width, client.height, size.width});
  if (bars_[HSCROLL]) setPlace(bars_[HSCROLL]->widget(), RCT{client.height, 0, size.height, client.width});
  setClient(client);
}

bool Document::editStandard(int command) {
  const auto field = std::static_pointer_cast<TextFieldObject>(firstText());
  if (!field) return false;
  if (command == M_EDIT_COPY) field->view().copy();
  if (command == M_EDIT_SELECT_ALL) field->view().selectAll();
  return true;
}

}  // namespace xvt
