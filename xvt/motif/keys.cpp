#include "xvt/motif/keys.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>
#include <Xm/GrabShell.h>

#include <cstring>
#include <map>
#include <utility>

#include "xvt/motif/application.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/task_window.h"

namespace xvt {

namespace {

constexpr unsigned kModifiers = ControlMask | Mod1Mask | ShiftMask;
static_assert(kControl == ControlMask && kAlt == Mod1Mask && kShift == ShiftMask);

std::map<int, XtEventDispatchProc>& nextDispatchers() {
  static std::map<int, XtEventDispatchProc> next;
  return next;
}

/// The key that is down, and the window or the option list in which it was pressed; none for a menu.
struct HeldKey {
  unsigned code = 0;
  WINDOW place = NULL_WIN;
};

HeldKey& heldKey() {
  static HeldKey held;
  return held;
}

/// A key that is held repeats in the window that it opened, where nobody has pressed it. Once it has been kept from
/// one window it does nothing until it is let go.
bool isHeldFromElsewhere(const XKeyEvent& event, WINDOW place) {
  if (event.send_event != False) return false;  // never held
  HeldKey& held = heldKey();
  if (held.code != event.keycode) held = {event.keycode, place};
  if (place != NULL_WIN && held.place != place) held.place = NULL_WIN;
  return place != NULL_WIN && held.place == NULL_WIN;
}

/// The key may have been let go where nobody told us.
void checkHeldKey(Display* display) {
  char down[32];
  XQueryKeymap(display, down);
  const unsigned code = heldKey().code;
  if ((down[code / 8 % sizeof down] & (1 << code % 8)) == 0) heldKey() = {};
}

/// True when the key has done its work and Xt need not see it.
bool takeKey(XKeyEvent* event) {
  Widget widget = XtWindowToWidget(event->display, event->window);
  const auto window = app().windowOf(widget);
  const BaseItem* list = app().choosing();
  if (isHeldFromElsewhere(*event, list != nullptr ? list->handle() : window ? window->handle() : NULL_WIN)) return true;
  return app().takeKey(window, XLookupKeysym(event, 0), event->state & kModifiers);
}

/// Without a window manager nobody else brings a clicked window to the front and gives it the keyboard.
void takeClick(const XButtonEvent* event) {
  const auto window = app().windowOf(XtWindowToWidget(event->display, event->window));
  if (!window || event->button > 3 || app().hasWindowManager() || app().active() == window) return;
  window->takeFocus();
}

/// A key that is let go in another window than the one that it was pressed in has done its work: the release of the key
/// that opened the menu would close it.
bool takeRelease(const XKeyEvent& event) {
  if (event.send_event != False || event.keycode != heldKey().code) return false;
  const WINDOW place = std::exchange(heldKey(), {}).place;
  const auto window = app().windowOf(XtWindowToWidget(event.display, event.window));
  return place != NULL_WIN && window && window->handle() != place;
}

/// A click beside a list that is down closes it and does nothing else.
bool closesList(const XButtonEvent& event) {
  if (app().choosing() == nullptr || event.button > 3) return false;
  for (Widget at = XtWindowToWidget(event.display, event.window); at != nullptr; at = XtParent(at))
    if (XtIsSubclass(at, xmGrabShellWidgetClass)) return false;
  app().stopChoosing(nullptr);
  return true;
}

bool isOfShell(const XFocusChangeEvent& event) {
  Widget widget = XtWindowToWidget(event.display, event.window);
  return widget != nullptr && XtIsShell(widget) && event.send_event == False;
}

/// The server also tells the window under the pointer that its shell has the keyboard, which is for none of the
/// widgets.
bool isStrayFocus(const XFocusChangeEvent& event) {
  return event.detail == NotifyPointer && event.send_event == False && !isOfShell(event);
}

/// Menus open by Alt and a letter when the letter is let go while Alt is down: so it is, whichever goes first.
void keepAlt(XKeyEvent* event) {
  static unsigned letter = 0;
  if (event->type == KeyPress)
    letter = (event->state & kModifiers) == Mod1Mask ? event->keycode : 0;
  else if (event->keycode == letter)
    event->state |= Mod1Mask;
}

bool takeWheel(const XButtonEvent* event) {
  if (event->button != Button4 && event->button != Button5) return false;
  Widget widget = XtWindowToWidget(event->display, event->window);
  const auto window = app().windowOf(widget);
  constexpr int kLines = 3;
  return window && !app().blockerOf(*window) && window->wheel(widget, event->button == Button4 ? -kLines : kLines);
}

/// Before Xt sees the event. True when it need not.
bool takeFirst(XEvent* event) {
  constexpr unsigned kButtons = Button1Mask | Button2Mask | Button3Mask;
  switch (event->type) {
    case KeyRelease:
      keepAlt(&event->xkey);
      return takeRelease(event->xkey);
    case KeyPress:
      keepAlt(&event->xkey);
      // The release went elsewhere.
      if (app().isPressed() && (event->xkey.state & kButtons) == 0) {
        app().setPressed(false);
        app().catchUp();
      }
      return takeKey(&event->xkey);
    case ButtonPress:
      if (closesList(event->xbutton)) return true;
      takeClick(&event->xbutton);
      app().setPressed(event->xbutton.button <= 3);
      return takeWheel(&event->xbutton);
    case ButtonRelease:
      app().setPressed(false);
      return false;
    default:
      if (event->type == FocusIn && isOfShell(event->xfocus)) checkHeldKey(event->xfocus.display);
      app().setLeavingWindow(event->type == FocusOut && isOfShell(event->xfocus));
      return isStrayFocus(event->xfocus);
  }
}

Boolean dispatch(XEvent* event) {
  bool taken = false;
  guarded("key", [&] { taken = appIfRunning() != nullptr && takeFirst(event); });
  const Boolean answer = taken ? True : nextDispatchers()[event->type](event);
  if (appIfRunning() == nullptr) return answer;
  app().setLeavingWindow(false);
  if (event->type == ButtonRelease) guarded("release", [] { app().catchUp(); });
  return answer;
}

}  // namespace

void installKeys(Display* display) {
  XkbSetDetectableAutoRepeat(display, True, nullptr);  // a key that repeats is not let go in between
  for (const int type : {KeyPress, KeyRelease, ButtonPress, ButtonRelease, FocusIn, FocusOut}) {
    XtEventDispatchProc next = XtSetEventDispatcher(display, type, dispatch);
    if (next != dispatch) nextDispatchers()[type] = next;
  }
}

void Application::sendKey(BaseWindow& window, Key key, unsigned modifiers) {
  Widget shell = dynamic_cast<ShellWindow&>(window).shell();
  Widget focus = XmGetFocusWidget(shell);
  if (focus == nullptr) focus = shell;
  XEvent event{};
  event.xkey.type = KeyPress;
  event.xkey.send_event = True;
  event.xkey.display = display_;
  event.xkey.window = XtWindow(focus);
  event.xkey.root = RootWindowOfScreen(XtScreen(focus));
  event.xkey.same_screen = True;
  event.xkey.time = XtLastTimestampProcessed(display_);
  event.xkey.state = modifiers;
  event.xkey.keycode = XKeysymToKeycode(display_, key);
  if (XkbKeycodeToKeysym(display_, static_cast<KeyCode>(event.xkey.keycode), 0, 0) != key)
    event.xkey.state |= ShiftMask;
  XtDispatchEvent(&event);
  event.xkey.type = KeyRelease;
  if (XtWindow(focus) != 0) XtDispatchEvent(&event);
}

}  // namespace xvt
