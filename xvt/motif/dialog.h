/// A dialog made from a table.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "xvt/layout.h"
#include "xvt/motif/item.h"
#include "xvt/motif/shell_window.h"

namespace xvt {

class Dialog final : public ShellWindow {
 public:
  /// Builds the controls; nothing is shown yet.
  void build(const DLG_RES& table, bool modal);
  /// Shows it, as large as what the handler has put into it needs.
  void openFitted();

  std::string name() const override { return table_->name != nullptr ? table_->name : table_->title; }
  std::shared_ptr<Control> control(int id) const override;
  void refresh() override;
  void settle() override;
  bool mnemonic(KeySym key) override;
  bool returnKey() override;
  bool wheel(Widget over, int lines) override;
  bool escapeKey() override;
  bool downKey() override;

  const std::vector<std::shared_ptr<Item>>& items() const { return items_; }
  /// What a control stands on that is in no card.
  bool isGround(Widget parent) const { return parent == board() || parent == body_; }
  std::shared_ptr<Item> itemOf(Widget widget) const;
  /// Contents changed their size: laid out anew before events are waited for; the window grows if it must.
  void wantLayout() { stale_ = true; }
  void enableLabels(const Item& field);
  /// Takes the keyboard from the control that has it; no other control gets it.
  void restKeyboard();
  /// Where the keyboard goes when the dialog is shown, if the program has a wish.
  void setFirstFocus(const Item* item) { first_focus_ = item; }
  /// The field being edited, told by the field itself.
  void setEdited(EditItem* field) { edited_ = field; }
  EditItem* edited() const { return edited_; }
  /// The keyboard came to a field or left one. True when the handler may be told at once: else it is when the mouse
  /// button that did it is up again, so that a box that the handler opens does not take the click; and not while a box
  /// keeps input from the dialog, for then the user has left nothing.
  bool keyboardMoved();
  void catchUp() override;

 protected:
  void arrangeContents(Extent size) override;
  void dropParts() override;

 private:
  std::vector<Cell> buildCells(std::size_t& at, Widget parent, ITEM_KIND around);
  Cell leafFor(const DLG_ITEM& line, Widget parent, ITEM_KIND around);
  Cell headingFor(const DLG_ITEM& card);
  void remeasure();
  void refreshLeaves(Cell& cell, std::size_t& leaf);
  void applyPlaces(const Cell& cell, std::size_t& leaf, std::size_t& card);
  Widget createFrame();
  void createRest();
  std::shared_ptr<Item> flagged(unsigned flag) const;
  std::shared_ptr<Item> buttonOfField(const Item& field) const;
  void startKeyboard();
  void createBody();
  Extent wanted() const;
  void place(Extent size);

  Widget scroll_ = nullptr;  ///< shows as much of the body as there is room for
  Widget body_ = nullptr;    ///< everything above the buttons and the status line
  const DLG_RES* table_ = nullptr;
  Cell root_;
  std::vector<std::shared_ptr<Item>> items_;         ///< in table order, card headings too
  std::vector<Item*> leaves_;                        ///< in the order of the tree's leaves; null for glue
  Widget rest_ = nullptr;                            ///< has the keyboard where no control has
  std::vector<Widget> frames_;                       ///< of the cards, in the order of the tree
  std::vector<std::unique_ptr<DLG_ITEM>> headings_;  ///< lines for the cards' headings
  std::map<int, std::shared_ptr<Item>> by_id_;
  EditItem* edited_ = nullptr;
  const Item* first_focus_ = nullptr;
  bool stale_ = false;
  bool moved_ = false;  ///< the keyboard has, and the handler does not know
  bool fitted_ = false;
};

}  // namespace xvt
