/// A dialog made from a table: its controls, the field that is being edited, the keys that belong to all of it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "xvt/desk/item.h"
#include "xvt/desk/rowkeys.h"
#include "xvt/desk/window.h"

namespace xvt {

class BaseDialog : public virtual BaseWindow {
 public:
  /// Makes the controls; nothing is shown yet.
  virtual void build(const DLG_RES& table, bool modal) = 0;
  /// Shows it, as large as what the handler has put into it needs.
  virtual void openFitted() = 0;

  std::string name() const override { return table_->name != nullptr ? table_->name : table_->title; }
  std::shared_ptr<Control> control(int id) const override;
  void settle() override;
  void catchUp() override;
  bool mnemonic(Key key) override;
  bool returnKey() override;
  bool defaultKey() override;
  bool escapeKey() override;
  bool downKey() override;
  bool shortcutKey(Key key, unsigned modifiers) override;
  bool completeKey() override;
  bool rowKey(Key key) override;
  bool editStandard(int command) override;

  const DLG_RES& table() const { return *table_; }
  /// In table order, what the table does not name too.
  const std::vector<std::shared_ptr<BaseItem>>& items() const { return items_; }
  /// The control that has the keyboard, or would have it in the active window; or null.
  virtual std::shared_ptr<BaseItem> focused() const = 0;
  /// The keyboard goes to a control, if that can have it.
  virtual void moveKeyboard(BaseItem& item) = 0;
  /// Takes the keyboard from the control that has it; no other control gets it.
  virtual void restKeyboard() = 0;
  void enableLabels(const BaseItem& field);
  /// The buttons that a dropped file could press now.
  std::vector<std::shared_ptr<BaseItem>> fileButtons() const;
  /// Files were dropped: a single one presses the button that is next to the place in the dialog, several press one
  /// button each, in the table's order; what is left over presses the last one if that takes any number, else rings.
  void takeFiles(const std::vector<std::string>& files, PNT where);
  /// Where the keyboard goes when the dialog is shown, if the program has a wish.
  void setFirstFocus(const BaseItem* item) { firstFocus_ = item; }
  /// The field being edited, told by the field itself.
  void setEdited(BaseItem* field) { edited_ = field; }
  BaseItem* edited() const { return edited_; }
  /// The keyboard came to a field or left one. True when the handler may be told at once: else it is when the mouse
  /// button that did it is up again, so that a box that the handler opens does not take the click; and not while a box
  /// keeps input from the dialog, for then the user has left nothing.
  bool keyboardMoved();

 protected:
  void setTable(const DLG_RES& table) { table_ = &table; }
  /// One more control of the table.
  void take(const std::shared_ptr<BaseItem>& item);
  void dropParts() override;
  std::shared_ptr<BaseItem> flagged(unsigned flag) const;
  /// Where the keyboard starts: where the program wishes, else in the first field, else on the default button; null
  /// when that cannot be used. Any other button is for those who go to it: a key that was meant for the window before
  /// does nothing.
  std::shared_ptr<BaseItem> firstFocus() const;

 private:
  std::shared_ptr<BaseItem> buttonOfField(const BaseItem& field) const;

  const DLG_RES* table_ = nullptr;
  std::vector<std::shared_ptr<BaseItem>> items_;
  std::map<int, std::shared_ptr<BaseItem>> byId_;
  BaseItem* edited_ = nullptr;
  RowKeys rowKeys_;
  const BaseItem* firstFocus_ = nullptr;
  bool moved_ = false;  ///< the keyboard has, and the handler does not know
};

}  // namespace xvt
