/// A control of a dialog: what the user's hands do to it, and what the handler is told.
#pragma once

#include <string>

#include "xvt/desk/keys.h"
#include "xvt/runtime.h"

namespace xvt {

class BaseDialog;

class BaseItem : public Control {
 public:
  BaseItem(BaseDialog& owner, const DLG_ITEM& line) : owner_(owner), line_(line) {}

  // ---- what the check floor asks ----
  ITEM_KIND kind() const override { return line_.kind; }
  void setTitle(const std::string&) override {}
  std::string title() const override { return {}; }
  void setEnabled(bool enabled) override;
  bool isEnabled() const override { return enabled_; }
  void setVisible(bool visible) override;
  bool isVisible() const override { return visible_; }
  void raise() override;
  void takeFocus() override;

  const DLG_ITEM& line() const { return line_; }
  BaseDialog& owner() const { return owner_; }
  /// What scripts call it: its symbolic name, or its number.
  std::string name() const;
  /// It and its dialog are enabled.
  bool isSensitive() const;
  /// Whether the Tab key stops here.
  bool isStop() const { return line_.kind >= IK_EDIT && line_.kind <= IK_OPTION; }
  /// A button that a dropped file presses.
  bool takesFile() const { return (line_.flags & (IF_FILE | IF_FILES)) != 0; }
  virtual Key mnemonic() const { return kNoKey; }

  // ---- the user's hands ----
  /// Does what a click (or Return, or the mnemonic) does; false if it cannot be clicked.
  virtual bool activate() { return false; }
  /// Row `row` of a list as the user selects it, beside the others when `add`; tells the handler.
  virtual bool choose(int row, bool add);
  void doubleClick(int row);
  /// Replaces the text of an edit field as a user would, who stands in it.
  void type(const std::string& text);
  /// Carries out a standard editing command.
  virtual void edit(int) {}
  /// The keyboard leaves an edit field, as far as the handler is told; once for each time it came.
  void settle();
  /// The keyboard has come to an edit field.
  /// @param resumed it never left, but its leaving was told for a button's sake
  void begin(bool resumed);
  /// Tab in an edit field that the program completes: true when it has set a longer text.
  bool complete();
  /// Rows of a list that are seen at once.
  virtual int rowsShown() const { return 1; }
  /// Of an option list: the choice so many rows on.
  void step(int rows);
  /// A key while the rows of an option list are down.
  void listKey(Key key);
  virtual void closeList() {}

 protected:
  /// A button or a mark was pressed.
  void pressed();
  void tell(CTL_ACTION what);
  bool isEditable() const { return line_.kind == IK_EDIT && isEnabled() && (line_.flags & IF_READONLY) == 0; }
  /// Enabled or not, as isEnabled() says.
  virtual void showEnabled() {}
  /// The text that the user types; tells the handler.
  virtual void enterText(const std::string&) {}
  /// Of the rows that are down: where the keyboard is, -1 for nowhere.
  virtual int markedRow() const { return -1; }
  virtual void markRow(int) {}

 private:
  BaseDialog& owner_;
  const DLG_ITEM& line_;
  bool enabled_ = true;
  bool visible_ = true;
  bool editing_ = false;

  void dropKeyboard();
};

}  // namespace xvt
