/// What every window is: a shell with a board in it, known to the window manager, placed, shown, focused and ended.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <optional>
#include <string>

#include "xvt/motif/application.h"
#include "xvt/placement.h"
#include "xvt/runtime.h"

namespace xvt {

class ShellWindow : public Window, public std::enable_shared_from_this<ShellWindow> {
 public:
  ~ShellWindow() override = default;

  // ---- what the check floor asks ----
  void setTitle(const std::string& title) override;
  std::string title() const override { return title_; }
  void setEnabled(bool enabled) override;
  bool isEnabled() const override { return enabled_; }
  void setVisible(bool visible) override;
  bool isVisible() const override { return shown_; }
  void raise() override;
  void takeFocus() override;
  RCT clientRect() const override;
  RCT outerRect() const override;
  void move(const RCT& rectangle) override;
  void destroy() override;
  std::shared_ptr<Control> control(int) const override { return nullptr; }
  std::shared_ptr<TextField> textField(int) const override { return nullptr; }
  bool hasScrollBar(SCROLL_TYPE) const override { return false; }
  void setScrollRange(SCROLL_TYPE, COORD, COORD) override {}
  void setScrollProportion(SCROLL_TYPE, COORD) override {}
  void setScrollPosition(SCROLL_TYPE, COORD) override {}

  // ---- what the runtime asks ----
  Widget shell() const { return shell_; }
  Widget board() const { return board_; }
  bool isModal() const { return modal_; }
  bool isDying() const { return dying_; }
  /// What scripts call the window.
  virtual std::string name() const = 0;
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
  /// Called when nothing refers to the widgets any more.
  void destroyWidgets();
  /// A character of the keyboard with Alt: true when a control took it.
  virtual bool mnemonic(KeySym) { return false; }
  virtual bool returnKey() { return false; }
  /// The mouse wheel over a widget, by so many lines; false when the widget itself may have it.
  virtual bool wheel(Widget, int) { return false; }
  virtual bool escapeKey() { return false; }
  virtual bool downKey() { return false; }
  /// A standard editing command for something that is no Motif text field; false when there is nothing of the kind.
  virtual bool editStandard(int) { return false; }
  /// Shows the busy cursor or the usual one.
  virtual void showBusy(bool busy);

 protected:
  ShellWindow() = default;
  /// Creates shell and board. A modal shell keeps input from everything else while it is up.
  void createShell(const std::string& widget_name, const std::string& title, bool modal);
  /// Takes a shell that exists already.
  void adoptShell(Widget shell, const std::string& title);
  void createBoard();
  /// First showing: a place of its own. All sizes are those of the board; a user may make it as small as `smallest`.
  void open(WindowWish wish, Extent smallest, bool show = true);
  /// The largest board that stands on the screen.
  static Extent mostSize();
  static int placeStep();
  PNT dialogPlace(Extent size) const;
  static WindowWish wishFor(Extent size, PNT place);
  static void keepToUpperLeft(WindowWish* wish);
  /// Whether the window gets the keyboard when it is shown; what only shows text leaves it where it is.
  virtual bool wantsFocus() const { return true; }
  /// The board's size changed.
  virtual void arrangeContents(Extent size) = 0;
  /// The window is about to die: its parts leave the registry.
  virtual void dropParts() {}
  void resizeTo(Extent size, Extent least);
  Extent boardSize() const;

 private:
  void listen();
  void focusChanged(bool in);
  void declineFocus() const;
  void popUp();
  void popDown();
  void rememberPlace();
  RCT occupied() const;
  void hintPlace() const;
  std::shared_ptr<ShellWindow> opener() const;
  void findPlace(WindowWish wish, Extent smallest);

  Widget shell_ = nullptr;
  Widget board_ = nullptr;
  std::string title_;
  bool modal_ = false;
  bool shown_ = false;
  bool enabled_ = true;
  bool dying_ = false;
  Extent size_;
  Extent least_;
  PNT place_;
  std::optional<WindowWish> wish_later_;  ///< of a window that was made hidden and has not been shown yet
};

}  // namespace xvt
