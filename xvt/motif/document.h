/// A document window: text fields and scroll bars.
#pragma once

#include <memory>

#include "xvt/desk/document.h"
#include "xvt/motif/font.h"
#include "xvt/motif/scrollbars.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/textview/textview.h"

namespace xvt {

class Document;

/// A text field: a text view and what the program knows of it.
class TextFieldObject final : public TextField {
 public:
  TextFieldObject(Document& document, const WIN_DEF& definition);
  std::shared_ptr<Window> window() const override;
  void setScrollCallback(TX_SCROLL_CALLBACK callback) override { callback_ = callback; }
  void insert(long where, const char* line) override { view_->insert(where, line); }
  void clear() override { view_->clear(); }
  long count() const override { return view_->count(); }
  std::string_view paragraph(long number) const override { return view_->line(number); }
  void scroll(long lines, int pixels) override {
    view_->scrollTo(view_->originLine() + lines, view_->offset() + pixels);
  }
  long originLine() const override { return view_->originLine(); }
  int originOffset() const override { return view_->offset(); }
  void select(long line, std::size_t begin, std::size_t end) override { view_->select(line, begin, end); }
  long selection(std::size_t* begin, std::size_t* end) const override { return view_->selection(begin, end); }
  void setFont(const std::shared_ptr<Font>& font) override;
  int widest() const override { return view_->widestLine(); }
  void move(const RCT& rectangle) override;
  RCT viewRect() const override;

  TextView& view() { return *view_; }

 private:
  Document& document_;
  std::shared_ptr<Font> font_;  ///< kept while the view draws with it
  std::unique_ptr<TextView> view_;
  TX_SCROLL_CALLBACK callback_ = nullptr;
  RCT place_;
};

class Document final : public ShellWindow, public BaseDocument {
 public:
  void build(const WIN_DEF& definition) override;
  void openAt(const WIN_DEF& definition) override;
  /// Shows the menu of the text where the mouse button was pressed.
  void popUpMenu(XButtonEvent& event);

  RCT clientRect() const override { return BaseDocument::clientRect(); }
  void paintText() override;
  bool hasScrollBar(SCROLL_TYPE bar) const override { return bars_[bar] != nullptr; }
  void setScrollRange(SCROLL_TYPE bar, COORD low, COORD high) override { bars_[bar]->setRange(low, high); }
  void setScrollProportion(SCROLL_TYPE bar, COORD size) override { bars_[bar]->setProportion(size); }
  void setScrollPosition(SCROLL_TYPE bar, COORD position) override { bars_[bar]->setPosition(position); }
  void refresh() override;
  bool editStandard(int command) override;

 protected:
  void arrangeContents(Extent size) override;
  bool wantsFocus() const override { return false; }

 private:
  std::unique_ptr<ScrollBar> bars_[2];
  Widget menu_ = nullptr;  ///< once it was wanted; goes with the window
};

}  // namespace xvt
