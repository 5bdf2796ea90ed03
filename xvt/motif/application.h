/// What exists once while the application runs.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <string>
#include <vector>

#include "xvt/motif/look.h"
#include "xvt/motif/marks.h"
#include "xvt/motif/pump.h"
#include "xvt/runtime.h"

namespace xvt {

class OptionItem;
class ShellWindow;
class TaskWindow;

class Application {
 public:
  explicit Application(const XVT_CONFIG& config) : config_(config) {}
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// False after a line on standard error when there is no display.
  bool open(int argc, char** argv);
  /// Creates the task window, runs the event loop, ends every window.
  void run(EVENT_HANDLER handler);

  const XVT_CONFIG& config() const { return config_; }
  Display* display() const { return display_; }
  XtAppContext context() const { return context_; }
  /// The task window's shell, the parent of all others.
  Widget shell() const { return shell_; }
  Look& look() { return *look_; }
  Marks& marks() { return *marks_; }
  Pump& pump() { return *pump_; }
  /// Null before it exists and after its end.
  TaskWindow* task() const { return task_.get(); }

  // ---- the windows that are alive, oldest first ----
  const std::vector<std::shared_ptr<ShellWindow>>& windows() const { return windows_; }
  void add(const std::shared_ptr<ShellWindow>& window) { windows_.push_back(window); }
  /// Out of the list; freed when no frame of Xt is running that may still touch its widgets.
  void retire(const std::shared_ptr<ShellWindow>& window);
  std::shared_ptr<ShellWindow> windowOf(Widget widget) const;
  /// The modal dialog that keeps input from `window`, or null.
  std::shared_ptr<ShellWindow> blockerOf(const ShellWindow& window) const;
  /// The window with the keyboard, else the last that had it and is still shown.
  std::shared_ptr<ShellWindow> active() const;
  void setActive(const std::shared_ptr<ShellWindow>& window);
  /// The window that a box belongs to that opens or closes now: the one whose handler is running, else the active one.
  std::shared_ptr<ShellWindow> speaker() const;
  /// Calls a window's handler; what it opens meanwhile is that window's.
  long deliver(const std::shared_ptr<Window>& window, EVENT& event);
  /// Where the standard editing commands go: the active window, or the one before it when that is the task window.
  std::shared_ptr<ShellWindow> editTarget() const;
  /// True when something manages windows on this screen.
  bool hasWindowManager() const;

  /// The option list that is down, or null: the keyboard is its own.
  OptionItem* choosing() const { return choosing_; }
  void setChoosing(OptionItem* list) { choosing_ = list; }
  /// Takes away the option list that is down, if it is `window`'s; with null, any.
  void stopChoosing(const ShellWindow* window);

  /// A mouse button is down in one of the windows.
  bool isPressed() const { return pressed_; }
  void setPressed(bool pressed) { pressed_ = pressed; }
  /// A whole window is just losing the keyboard.
  bool isLeavingWindow() const { return leaving_; }
  void setLeavingWindow(bool leaving) { leaving_ = leaving; }
  /// Handlers are told which fields were left and entered meanwhile.
  void catchUp();

  void end() { ending_ = true; }
  /// The connection to the display is gone: the application ends by its ordinary way, without a word to the display.
  bool isLost() const { return lost_; }
  bool isEnding() const { return ending_; }
  void allowQuit() { quit_allowed_ = true; }
  /// The session wants the program to end: asks the task window, and ends if it agrees.
  void askToQuit();
  void setBusy(bool busy);
  bool isBusy() const { return busy_ > 0; }
  Cursor busyCursor() const { return busy_cursor_; }

 private:
  /// Called from the middle of any call to Xlib, which then returns with nothing done.
  static void onLoss(Display* display, void* application);

  XVT_CONFIG config_;
  XtAppContext context_ = nullptr;
  Display* display_ = nullptr;
  Widget shell_ = nullptr;
  std::unique_ptr<Look> look_;
  std::unique_ptr<Marks> marks_;
  std::unique_ptr<Pump> pump_;
  std::shared_ptr<TaskWindow> task_;
  std::vector<std::shared_ptr<ShellWindow>> windows_;
  std::weak_ptr<ShellWindow> active_;
  std::weak_ptr<ShellWindow> edited_;
  OptionItem* choosing_ = nullptr;
  Cursor busy_cursor_ = 0;
  std::vector<std::weak_ptr<ShellWindow>> speaking_;  ///< whose handlers are running, the innermost last
  int busy_ = 0;
  bool pressed_ = false;
  bool leaving_ = false;
  bool ending_ = false;
  bool lost_ = false;
  bool quit_allowed_ = false;
};

/// The running application. Only to be called while there is one.
Application& app();
/// The same, or null.
Application* appIfRunning();

}  // namespace xvt
