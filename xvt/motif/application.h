/// What exists once while the application runs on a display.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <string>
#include <vector>

#include "xvt/desk/desk.h"
#include "xvt/motif/look.h"
#include "xvt/motif/marks.h"

namespace xvt {

class ShellWindow;

class Application final : public Desk {
 public:
  using Desk::Desk;
  ~Application() override;

  /// False after a line on standard error when there is no display.
  bool open(int argc, char** argv);

  Display* display() const { return display_; }
  XtAppContext context() const { return context_; }
  /// The task window's shell, the parent of all others.
  Widget shell() const { return shell_; }
  Look& look() { return *look_; }
  Marks& marks() { return *marks_; }

  std::vector<std::shared_ptr<ShellWindow>> shells() const;
  std::shared_ptr<ShellWindow> windowOf(Widget widget) const;
  /// True when something manages windows on this screen.
  bool hasWindowManager() const;

  /// A whole window is just losing the keyboard.
  bool isLeavingWindow() const { return leaving_; }
  void setLeavingWindow(bool leaving) { leaving_ = leaving; }
  Cursor busyCursor() const { return busyCursor_; }

  std::shared_ptr<Font> createFont(bool monospaced, int points, bool bold) override;
  void bell() override { XBell(display_, 0); }
  void sendKey(BaseWindow& window, Key key, unsigned modifiers) override;
  probe::Refusal screenshot(WINDOW window, const std::string& path) override;

 protected:
  void busyShown() override;
  std::shared_ptr<BaseTask> makeTask() override;
  std::shared_ptr<BaseDialog> makeDialog() override;
  std::shared_ptr<BaseDocument> makeDocument() override;

 private:
  /// Called from the middle of any call to Xlib, which then returns with nothing done.
  static void onLoss(Display* display, void* application);

  XtAppContext context_ = nullptr;
  Display* display_ = nullptr;
  Widget shell_ = nullptr;
  std::unique_ptr<Look> look_;
  std::unique_ptr<Marks> marks_;
  Cursor busyCursor_ = 0;
  bool leaving_ = false;
};

/// The running application. Only to be called while there is one.
Application& app();
/// The same, or null.
Application* appIfRunning();
/// The name that the server knows it by.
Atom atom(const char* name);

}  // namespace xvt
