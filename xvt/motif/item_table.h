/// Lists with columns.
#pragma once

#include <X11/Xft/Xft.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xvt/motif/item.h"

namespace xvt {

/// A list with cells in its rows, each column below its head. Rows are texts and nothing more: those that are seen are
/// painted, into a pixmap that is then copied to the window, however many there are.
class TableItem final : public RowsItem {
 public:
  TableItem(Dialog& dialog, const DLG_ITEM& line, Widget parent);
  ~TableItem() override;
  Widget outer() const override { return frame_; }
  void setEnabled(bool enabled) override;
  void clearRows() override;
  void addRow(int index, const std::string& text) override;
  bool isRowSelected(int row) const override { return row == selected_; }
  void setRowSelected(int row, bool selected) override;
  void clearRowSelection() override;
  int rowsShown() const override;
  Cell cell() const override;
  void place(const RCT& room) override;
  void refresh() override;

 private:
  void listen();
  void pressedAt(const XButtonEvent& event);
  void released();
  void scrollTo(int row);
  void paint();
  void fitPixmap();
  void fitBar();
  void paintRow(int row, int y);
  void paintCell(const Item& head, std::string_view text, int y, color::Tone tone);
  int rowHeight() const;
  int mostTop() const { return std::max(0, rowCount() - rowsShown()); }
  const XftColor& ink(color::Tone tone);

  std::vector<const Item*> heads_;
  Widget frame_ = nullptr;
  Widget bar_ = nullptr;
  Pixmap pixmap_ = 0;
  XftDraw* draw_ = nullptr;
  Extent drawn_;  ///< size of the pixmap
  std::map<color::Tone, XftColor> inks_;
  int selected_ = -1;
  int top_ = 0;                ///< the first row that is seen
  int pressed_ = -1;           ///< the row that the mouse button is down on
  bool twice_ = false;         ///< it is the second press of a double click
  std::pair<int, Time> last_;  ///< the row that was clicked last, -1 for none
  bool stale_ = false;         ///< painted before events are waited for
};

}  // namespace xvt
