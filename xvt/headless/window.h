/// Windows that nobody sees: what they hold and where they would stand.
#pragma once

#include <memory>

#include "xvt/desk/dialog.h"
#include "xvt/desk/document.h"
#include "xvt/desk/task.h"

namespace xvt {

class MemoryWindow : public virtual BaseWindow {
 public:
  void setVisible(bool visible) override;
  void raise() override { setVisible(true); }
  RCT clientRect() const override;
  RCT outerRect() const override { return place_; }
  void move(const RCT& rectangle) override { place_ = rectangle; }
  /// A key that no shortcut and no mnemonic has taken.
  virtual void ownKey(Key, unsigned) {}

 protected:
  /// The first showing.
  void open(const RCT& place, bool show = true);
  /// Whether the window gets the keyboard when it is shown; what only shows text leaves it where it is.
  virtual bool wantsFocus() const { return true; }
  /// The keyboard has come to the window.
  virtual void keyboardCame() {}
  void popDown() override;
  void grabKeyboard() override;

 private:
  void popUp();

  RCT place_;
  bool opened_ = false;
};

class MemoryTask final : public MemoryWindow, public BaseTask {
 public:
  void create(EVENT_HANDLER eventHandler) override;
};

class MemoryDialog final : public MemoryWindow, public BaseDialog {
 public:
  void build(const DLG_RES& table, bool modal) override;
  void openFitted() override;
  std::shared_ptr<BaseItem> focused() const override { return focus_.lock(); }
  void moveKeyboard(BaseItem& item) override;
  void restKeyboard() override;
  void ownKey(Key key, unsigned modifiers) override;

 protected:
  void keyboardCame() override;

 private:
  void leave();
  void goOn(int direction);

  std::weak_ptr<BaseItem> focus_;
};

class MemoryDocument final : public MemoryWindow, public BaseDocument {
 public:
  void build(const WIN_DEF& definition) override;
  void openAt(const WIN_DEF& definition) override;
  RCT clientRect() const override { return BaseDocument::clientRect(); }
  void move(const RCT& rectangle) override;
  bool hasScrollBar(SCROLL_TYPE bar) const override;
  void setScrollRange(SCROLL_TYPE bar, COORD low, COORD high) override;
  void setScrollPosition(SCROLL_TYPE bar, COORD position) override { bars_[bar].position = position; }
  /// What a scroll bar would show.
  struct Bar {
    COORD low = 0, high = 0, position = 0;
  };
  const Bar& bar(SCROLL_TYPE type) const { return bars_[type]; }
  bool editStandard(int command) override;

 protected:
  bool wantsFocus() const override { return false; }

 private:
  Bar bars_[2];
  unsigned flags_ = 0;
};

}  // namespace xvt
