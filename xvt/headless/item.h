/// A control that nobody sees: what it shows, as data.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "xvt/desk/item.h"

namespace xvt {

class MemoryDialog;

class MemoryItem final : public BaseItem {
 public:
  MemoryItem(BaseDialog& owner, const DLG_ITEM& line);
  ~MemoryItem() override;

  void setTitle(const std::string& title) override;
  std::string title() const override;
  void setVisible(bool visible) override;
  RCT clientRect() const override;
  RCT outerRect() const override { return place_; }
  void move(const RCT& rectangle) override { place_ = rectangle; }
  void setChecked(bool checked) override { checked_ = checked; }
  bool isChecked() const override { return checked_; }
  void setColor(XVT_COLOR color) override { color_ = color; }
  XVT_COLOR color() const { return color_; }
  void setMeter(int percent) override { meter_ = percent; }
  int meter() const override { return meter_; }
  void selectText(int characters) override;
  void clearRows() override;
  void addRow(int index, const std::string& text) override;
  int rowCount() const override { return static_cast<int>(rows_.size()); }
  std::string rowText(int row) const override { return rows_.at(static_cast<std::size_t>(row)).text; }
  bool isRowSelected(int row) const override { return rows_.at(static_cast<std::size_t>(row)).selected; }
  void setRowSelected(int row, bool selected) override;
  void clearRowSelection() override;
  void grow(COORD pixels) override { place_.bottom += pixels; }

  Key mnemonic() const override { return mnemonic_; }
  bool activate() override;
  void edit(int command) override;
  void closeList() override;
  int rowsShown() const override { return std::max(1, line().lines); }
  /// A key of the keyboard that is here.
  void ownKey(Key key);

 protected:
  void showEnabled() override;
  void enterText(const std::string& text) override;
  int markedRow() const override { return marked_; }
  void markRow(int row) override { marked_ = row; }

 private:
  struct Row {
    std::string text;
    bool selected = false;
  };
  bool showsText() const { return !isField(kind()) || kind() == IK_EDIT; }
  void openList();
  void editKey(Key key);
  /// In place of the selected text, else behind all of it.
  void insert(const std::string& text);

  std::string text_;
  Key mnemonic_ = kNoKey;
  RCT place_;
  std::vector<Row> rows_;
  int marked_ = -1;  ///< of the rows that are down
  XVT_COLOR color_;
  int meter_ = 0;
  bool checked_ = false;
  std::size_t selected_ = 0;  ///< so many bytes at the beginning of an edit field's text
};

}  // namespace xvt
