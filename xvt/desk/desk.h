/// What exists once while the application runs, whatever its windows are made of: the windows that are open, who keeps
/// input from whom, who has the keyboard, what is being told to handlers, the end. A runtime derives from it and makes
/// the windows real.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xvt/desk/events.h"
#include "xvt/desk/keys.h"
#include "xvt/desk/pump.h"
#include "xvt/probe.h"
#include "xvt/runtime.h"

namespace xvt {

class BaseDialog;
class BaseDocument;
class BaseItem;
class BaseTask;
class BaseWindow;

class Desk {
 public:
  explicit Desk(const XVT_CONFIG& config);
  virtual ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  /// Creates the task window, runs the event loop, ends every window.
  void run(EVENT_HANDLER handler);
  /// What run() does before and behind its event loop.
  void begin(EVENT_HANDLER handler);
  void finish();

  const XVT_CONFIG& config() const { return config_; }
  EventSource& events() { return *events_; }
  Pump& pump() { return *pump_; }
  /// Null before it exists and after its end.
  BaseTask* task() const { return task_.get(); }

  // ---- the windows that are alive, oldest first ----
  const std::vector<std::shared_ptr<BaseWindow>>& windows() const { return windows_; }
  void add(const std::shared_ptr<BaseWindow>& window);
  /// Out of the list; freed when no frame is running that may still touch it.
  void retire(const std::shared_ptr<BaseWindow>& window);
  /// The modal dialog that keeps input from `window`, or null.
  std::shared_ptr<BaseWindow> blockerOf(const BaseWindow& window) const;
  /// The newest modal dialog, or null.
  std::shared_ptr<BaseWindow> inputKeeper() const;
  /// The window with the keyboard, else the last that had it and is still shown.
  std::shared_ptr<BaseWindow> active() const;
  void setActive(const std::shared_ptr<BaseWindow>& window);
  /// Gives the keyboard to the next window after this one that takes input, or to the one before it.
  void activateNext(const BaseWindow& from, bool backward);
  /// The window that a box belongs to that opens or closes now: the one whose handler is running, else the active one.
  std::shared_ptr<BaseWindow> speaker() const;
  /// Calls a window's handler; what it opens meanwhile is that window's.
  long deliver(const std::shared_ptr<Window>& window, EVENT& event);
  /// Where the standard editing commands go: the active window, or the one before it when that is the task window.
  std::shared_ptr<BaseWindow> editTarget() const;
  /// The window with text that is in use: the one with the keyboard, else the last that had it, else the newest; null
  /// when none is shown that gets input.
  std::shared_ptr<BaseWindow> textTarget() const;
  std::shared_ptr<Window> openDocument(const WIN_DEF& definition, EVENT_HANDLER handler, void* data);
  virtual std::shared_ptr<Window> openDialog(bool modal, const DLG_RES& table, EVENT_HANDLER handler, void* data);

  /// Lets events run, while a job does.
  virtual void processPendingEvents() { pump_->serveIfDue(); }

  /// The option list that is down, or null: the keyboard is its own.
  BaseItem* choosing() const { return choosing_; }
  void setChoosing(BaseItem* list) { choosing_ = list; }
  /// Takes away the option list that is down, if it is `window`'s; with null, any.
  void stopChoosing(const BaseWindow* window);
  /// A key of the whole window or of the menu: true when it has done its work. `window` is null where the keyboard is a
  /// menu's.
  bool takeKey(const std::shared_ptr<BaseWindow>& window, Key key, unsigned modifiers);

  /// A mouse button is down in one of the windows.
  bool isPressed() const { return pressed_; }
  void setPressed(bool pressed) { pressed_ = pressed; }
  /// Handlers are told which fields were left and entered meanwhile.
  void catchUp();

  void end() { ending_ = true; }
  bool isEnding() const { return ending_; }
  /// The connection to the display is gone: the application ends by its ordinary way, without a word to the display.
  bool isLost() const { return lost_; }
  void allowQuit() { quitAllowed_ = true; }
  /// The session wants the program to end: asks the task window, and ends if it agrees.
  void askToQuit();
  void setBusy(bool busy);
  bool isBusy() const { return busy_ > 0; }

  // ---- what a runtime makes real ----
  virtual std::shared_ptr<Font> createFont(bool monospaced, int points, bool bold) = 0;
  virtual void bell() = 0;
  /// A key of the keyboard where it is in `window`.
  virtual void sendKey(BaseWindow& window, Key key, unsigned modifiers) = 0;
  virtual probe::Refusal screenshot(WINDOW window, const std::string& path) = 0;

 protected:
  /// To be called once, before windows are made.
  void useEvents(std::unique_ptr<EventSource> events);
  void loseDisplay();
  /// The loop of a modal dialog, until that is destroyed.
  virtual void waitFor(BaseDialog& dialog);
  /// The busy cursor is on every window, or off.
  virtual void busyShown() {}
  virtual std::shared_ptr<BaseTask> makeTask() = 0;
  virtual std::shared_ptr<BaseDialog> makeDialog() = 0;
  virtual std::shared_ptr<BaseDocument> makeDocument() = 0;

 private:
  void openMenu();

  XVT_CONFIG config_;
  std::unique_ptr<EventSource> events_;
  std::unique_ptr<Pump> pump_;
  std::shared_ptr<BaseTask> task_;
  std::vector<std::shared_ptr<BaseWindow>> windows_;
  std::vector<std::weak_ptr<BaseWindow>> active_;  ///< in the order in which they last had the keyboard
  std::weak_ptr<BaseWindow> edited_;
  std::weak_ptr<BaseWindow> read_;  ///< the last window with text that had the keyboard
  BaseItem* choosing_ = nullptr;
  std::vector<std::weak_ptr<BaseWindow>> speaking_;  ///< whose handlers are running, the innermost last
  int busy_ = 0;
  bool pressed_ = false;
  bool ending_ = false;
  bool lost_ = false;
  bool quitAllowed_ = false;
};

/// The running application. Only to be called while there is one.
Desk& desk();
/// The same, or null.
Desk* deskIfRunning();

/// What the program is called in lines of its own.
std::string programName(const XVT_CONFIG& config);

/// Texts are UTF-8 whatever the session says, and numbers keep their points.
void useSessionLocale();

/// Opens a runtime; null after a line on standard error when it cannot be had here.
using OpenRuntime = std::unique_ptr<Desk> (*)(int argc, char** argv, const XVT_CONFIG& config);
/// Hands a runtime to xvt_app_create, which takes the first that opens, in the order of these calls.
void offerRuntime(OpenRuntime open);

}  // namespace xvt
