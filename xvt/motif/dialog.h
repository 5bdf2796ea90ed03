/// A dialog made from a table.
#pragma once

#include <memory>
#include <vector>

#include "xvt/desk/dialog.h"
#include "xvt/layout/layout.h"
#include "xvt/motif/item.h"
#include "xvt/motif/shell_window.h"

namespace xvt {

class Dialog final : public ShellWindow, public BaseDialog {
 public:
  void build(const DLG_RES& table, bool modal) override;
  void openFitted() override;
  void refresh() override;
  bool wheel(Widget over, int lines) override;
  std::shared_ptr<BaseItem> focused() const override { return itemOf(XmGetFocusWidget(shell())); }
  void moveKeyboard(BaseItem& item) override;
  void restKeyboard() override;

  /// What a control stands on that is in no card.
  bool isGround(Widget parent) const { return parent == board() || parent == body_; }
  std::shared_ptr<Item> itemOf(Widget widget) const;
  /// Contents changed their size: laid out anew before events are waited for; the window grows if it must.
  void wantLayout() { stale_ = true; }

 protected:
  void arrangeContents(Extent size) override;

 private:
  std::vector<Cell> buildCells(std::size_t& at, Widget parent, ITEM_KIND around);
  Cell leafFor(const DLG_ITEM& line, Widget parent, ITEM_KIND around);
  Cell headingFor(const DLG_ITEM& card);
  void remeasure();
  void refreshLeaves(Cell& cell, std::size_t& leaf);
  void applyPlaces(const Cell& cell, std::size_t& leaf, std::size_t& card);
  Widget createFrame();
  void createRest();
  void startKeyboard();
  void setRestful(bool restful);
  void createBody();
  Extent wanted() const;
  void place(Extent size);

  Widget scroll_ = nullptr;  ///< shows as much of the body as there is room for
  Widget body_ = nullptr;    ///< everything above the buttons and the status line
  Cell root_;
  std::vector<Item*> leaves_;                        ///< in the order of the tree's leaves; null for glue
  Widget rest_ = nullptr;                            ///< has the keyboard where no control has
  std::vector<Widget> frames_;                       ///< of the cards, in the order of the tree
  std::vector<std::unique_ptr<DLG_ITEM>> headings_;  ///< lines for the cards' headings
  bool restful_ = false;                             ///< the keyboard may come to rest_
  bool stale_ = false;
  bool fitted_ = false;
};

}  // namespace xvt
