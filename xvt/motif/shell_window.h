/// What every window is: a shell with a board in it, known to the window manager, placed, shown, focused and ended.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <optional>
#include <string>

#include "xvt/desk/window.h"
#include "xvt/layout/placement.h"
#include "xvt/motif/application.h"
#include "xvt/runtime.h"

namespace xvt {

class ShellWindow : public virtual BaseWindow {
 public:
  void setTitle(const std::string& title) override;
  void setEnabled(bool enabled) override;
  void setVisible(bool visible) override;
  void raise() override;
  RCT clientRect() const override;
  RCT outerRect() const override;
  void move(const RCT& rectangle) override;
  void dissolve() override;

  Widget shell() const { return shell_; }
  Widget board() const { return board_; }
  /// The mouse wheel over a widget, by so many lines; false when the widget itself may have it.
  virtual bool wheel(Widget, int) { return false; }
  /// Shows the busy cursor or the usual one.
  void showBusy(bool busy);

 protected:
  /// Creates shell and board. A modal shell keeps input from everything else while it is up.
  void createShell(const std::string& widgetName, const std::string& title, bool modal);
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
  void popDown() override;
  void grabKeyboard() override;
  void resizeTo(Extent size, Extent least);
  Extent boardSize() const;

 private:
  void listen();
  void focusChanged(bool in);
  void declineFocus() const;
  void activate() const;
  void standBehind(const ShellWindow& from) const;
  void popUp();
  void rememberPlace();
  RCT occupied() const;
  void hintPlace() const;
  std::shared_ptr<ShellWindow> opener() const;
  void findPlace(WindowWish wish, Extent smallest);

  Widget shell_ = nullptr;
  Widget board_ = nullptr;
  Extent size_;
  Extent least_;
  PNT place_;
  std::optional<WindowWish> wishLater_;  ///< of a window that was made hidden and has not been shown yet
};

}  // namespace xvt
