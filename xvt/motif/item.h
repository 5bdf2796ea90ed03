/// The controls of a dialog, one class for each way of behaving.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "xvt/desk/item.h"
#include "xvt/desk/label_text.h"
#include "xvt/motif/look.h"
#include "xvt/runtime.h"

namespace xvt {

class Dialog;

class Item : public BaseItem {
 public:
  Item(Dialog& dialog, const DLG_ITEM& line, Widget parent);

  void setVisible(bool visible) override;
  RCT clientRect() const override;
  RCT outerRect() const override;
  void move(const RCT& rectangle) override { place(rectangle); }

  Dialog& dialog() const { return dialog_; }
  /// The widget that the user acts on.
  Widget widget() const { return widget_; }
  /// What the layout places: the widget, or the scrolled window around it.
  virtual Widget outer() const { return widget_; }
  /// Size and behaviour in the layout.
  virtual Cell cell() const = 0;
  /// Gives the item its place, its border included.
  virtual void place(const RCT& room);
  /// Shows what was put off until the program has said all of it; called before events are waited for.
  virtual void refresh() {}

 protected:
  /// To be called by constructors when the widget is there: first state, help line.
  void ready();
  void showEnabled() override;
  /// Size and baseline of one line of text in a frame of this many pixels.
  Cell leaf(Extent size, int baseline) const;
  Growth growth(Growth otherwise) const { return (line().flags & IF_GROW) != 0 ? Growth::eager : otherwise; }
  bool inCard() const;
  /// The corner of the card's inside, in the dialog, times `sign`.
  PNT frameOrigin(int sign) const;
  Pixel ground() const;
  Face face() const;

  Dialog& dialog_;
  Widget parent_;
  Widget widget_ = nullptr;
};

/// Makes the item that a line of a table asks for (no container, no glue). `parent` is the dialog's board or the frame
/// of the card that the item is in.
std::shared_ptr<Item> makeItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);

/// Labels, headings, values, hints, the status line.
class TextItem final : public Item {
 public:
  TextItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  void setTitle(const std::string& title) override;
  std::string title() const override { return text_; }
  void setColor(XVT_COLOR color) override;
  Cell cell() const override;
  void place(const RCT& room) override;
  Key mnemonic() const override { return mnemonic_; }

 private:
  std::string inLines(int width) const;
  void show(int width);
  Extent padding() const;
  void offerCopy(XButtonEvent& event);
  std::string text_;
  std::string shown_;
  Key mnemonic_ = kNoKey;
  Widget menu_ = nullptr;  ///< once it was wanted; goes with the dialog
};

class ButtonItem final : public Item {
 public:
  ButtonItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  void setTitle(const std::string& title) override;
  std::string title() const override { return text_; }
  void setEnabled(bool enabled) override;
  Cell cell() const override;
  Key mnemonic() const override { return mnemonic_; }
  bool activate() override;

 private:
  void dressPrimary();
  void dressHead();
  std::string text_;
  Key mnemonic_ = kNoKey;
};

/// Check boxes and radio buttons.
class MarkItem final : public Item {
 public:
  MarkItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  void setTitle(const std::string& title) override;
  std::string title() const override { return text_; }
  void setChecked(bool checked) override;
  bool isChecked() const override { return checked_; }
  Cell cell() const override;
  Key mnemonic() const override { return mnemonic_; }
  bool activate() override;

 private:
  std::string text_;
  Key mnemonic_ = kNoKey;
  bool checked_ = false;
};

class EditItem final : public Item {
 public:
  EditItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  void setTitle(const std::string& title) override;
  std::string title() const override;
  void setEnabled(bool enabled) override;
  void selectText(int characters) override;
  void refresh() override;
  Cell cell() const override;
  /// Puts a text where the cursor stands, in place of a selection around it; tells the handler.
  void insert(const std::string& text);
  void edit(int command) override;

 protected:
  void enterText(const std::string& text) override;

 private:
  bool quiet_ = false;
  std::optional<int> toSelect_;  ///< wished before there was a window to select in
};

/// Adds rows behind those that a list widget has, all at once.
void appendRows(Widget list, std::span<const std::string> rows);

/// What has rows of text.
class RowsItem : public Item {
 public:
  using Item::Item;
  int rowCount() const override { return static_cast<int>(rows_.size()); }
  std::string rowText(int row) const override { return rows_.at(static_cast<std::size_t>(row)); }

 protected:
  std::vector<std::string> rows_;
};

/// Lists of which one or several rows can be selected.
class ListItem final : public RowsItem {
 public:
  ListItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  Widget outer() const override;
  void setEnabled(bool enabled) override;
  void setColor(XVT_COLOR color) override;
  void clearRows() override;
  void addRow(int index, const std::string& text) override;
  bool isRowSelected(int row) const override;
  void setRowSelected(int row, bool selected) override;
  void clearRowSelection() override;
  void grow(COORD pixels) override;
  Cell cell() const override;
  void refresh() override;
  bool choose(int row, bool add) override;

 private:
  void listen();
  bool several() const { return line().kind == IK_MULTI; }
  void showGround();
  std::size_t shown_ = 0;            // so many of them the widget has
  std::optional<XVT_COLOR> ground_;  // given by the program, shown while enabled
  int grown_ = 0;
};

/// A choice out of rows that pop up.
class OptionItem final : public RowsItem {
 public:
  OptionItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  ~OptionItem() override;
  void setTitle(const std::string& title) override { static_cast<void>(title); }
  std::string title() const override;
  void setEnabled(bool enabled) override;
  void setVisible(bool visible) override;
  void clearRows() override;
  void addRow(int index, const std::string& text) override;
  bool isRowSelected(int row) const override { return row == selected_; }
  void setRowSelected(int row, bool selected) override;
  void clearRowSelection() override;
  Cell cell() const override;
  void place(const RCT& room) override;
  bool activate() override;
  /// Takes the rows away, if they are down.
  void closeList() override;

 protected:
  int markedRow() const override;
  void markRow(int row) override;

 private:
  void drawArrow();
  void show();
  void createList();
  void openList();
  void forgetList();
  void fillList();
  int selected_ = -1;
  Widget popup_ = nullptr;
  Widget list_ = nullptr;
};

class MeterItem final : public Item {
 public:
  MeterItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  void setColor(XVT_COLOR color) override;
  void setMeter(int percent) override;
  int meter() const override { return percent_; }
  Cell cell() const override;

 private:
  void draw();
  int percent_ = 0;
  Pixel bar_;
};

class SeparatorItem final : public Item {
 public:
  SeparatorItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  Cell cell() const override;
};

}  // namespace xvt
