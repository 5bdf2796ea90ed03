/// What every window is: a name, a handler that is told what happens, a beginning and an end.
#pragma once

#include <memory>
#include <string>

#include "xvt/desk/keys.h"
#include "xvt/runtime.h"

namespace xvt {

class BaseWindow : public Window, public std::enable_shared_from_this<BaseWindow> {
 public:
  // ---- what the check floor asks ----
  void setTitle(const std::string& title) override { title_ = title; }
  std::string title() const override { return title_; }
  void setEnabled(bool enabled) override;
  bool isEnabled() const override { return enabled_; }
  bool isVisible() const override { return shown_; }
  /// The keyboard goes to this window, or to the dialog that keeps input from it.
  void takeFocus() override;
  void destroy() final;
  std::shared_ptr<Control> control(int) const override { return nullptr; }
  std::shared_ptr<TextField> textField(int) const override { return nullptr; }
  bool hasScrollBar(SCROLL_TYPE) const override { return false; }
  void setScrollRange(SCROLL_TYPE, COORD, COORD) override {}
  void setScrollProportion(SCROLL_TYPE, COORD) override {}
  void setScrollPosition(SCROLL_TYPE, COORD) override {}

  bool isModal() const { return modal_; }
  bool isDying() const { return dying_; }
  /// The first text field, or null.
  virtual std::shared_ptr<TextField> firstText() const { return nullptr; }
  /// Becomes one of the open windows.
  void enter(EVENT_HANDLER eventHandler, void* eventData);
  /// Brings what has changed up to date; called before events are waited for.
  virtual void refresh() {}
  /// The field that is being edited loses the keyboard, as far as its handler is told.
  virtual void settle() {}
  /// Tells the handler of fields that the keyboard has left or come to while it could not be told.
  virtual void catchUp() {}
  /// The window manager's close box.
  void requestClose();
  /// Tells the handler of a control, a command ... of this window. Nothing when it is dying.
  void tell(EVENT event);
  /// Called when nothing refers to what it is made of any more.
  virtual void dissolve() {}

  // ---- keys: true when one has done its work ----
  /// A character of the keyboard with Alt.
  virtual bool mnemonic(Key) { return false; }
  virtual bool returnKey() { return false; }
  /// Return with Ctrl.
  virtual bool defaultKey() { return false; }
  virtual bool escapeKey() { return false; }
  virtual bool downKey() { return false; }
  /// A key that a control has for its own (DLG_ITEM::keys).
  virtual bool shortcutKey(Key, unsigned) { return false; }
  /// Tab where the text before the cursor can be completed.
  virtual bool completeKey() { return false; }
  /// A key of a list with columns that has the keyboard.
  virtual bool rowKey(Key) { return false; }
  /// A standard editing command on what has the keyboard; false when there is nothing of the kind.
  virtual bool editStandard(int) { return false; }

 protected:
  BaseWindow() = default;
  void setModal(bool modal) { modal_ = modal; }
  void setShown(bool shown) { shown_ = shown; }
  /// Off the screen.
  virtual void popDown() = 0;
  /// Makes the keyboard's coming real.
  virtual void grabKeyboard() = 0;
  /// The window is about to die: its parts leave the registry.
  virtual void dropParts() {}

 private:
  std::string title_;
  bool modal_ = false;
  bool shown_ = false;
  bool enabled_ = true;
  bool dying_ = false;
};

}  // namespace xvt
