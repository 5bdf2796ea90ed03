#include "xvt/motif/keys.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>

#include <cstring>
#include <map>
#include <string>

#include "xvt/motif/application.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/task_window.h"

namespace xvt {

namespace {

constexpr unsigned kModifiers = ControlMask | Mod1Mask | ShiftMask;

std::map<int, XtEventDispatchProc>& nextDispatchers() {
  static std::map<int, XtEventDispatchProc> next;
  return next;
}

KeySym lower(KeySym key) { return key >= XK_A && key <= XK_Z ? key - XK_A + XK_a : key; }

bool isReturn(KeySym key) { return key == XK_Return || key == XK_KP_Enter; }

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
  OptionItem* list = app().choosing();
  if (isHeldFromElsewhere(*event, list != nullptr ? list->handle() : window ? window->handle() : NULL_WIN)) return true;
  if (list != nullptr) return list->listKey(XLookupKeysym(event, 0)), true;
  if (!window) return false;  // a menu or a pop-up list: its own keys
  if (app().blockerOf(*window)) return true;
  const KeySym key = lower(XLookupKeysym(event, 0));
  const unsigned modifiers = event->state & kModifiers;
  if (app().task() != nullptr && app().task()->shortcut(key, modifiers, *window)) return true;
  if (modifiers == Mod1Mask && window->mnemonic(key)) return true;
  if (modifiers != 0) return false;
  if (isReturn(key)) return window->returnKey();
  if (key == XK_Down || key == XK_KP_Down) return window->downKey();
  return key == XK_Escape && window->escapeKey();
}

/// Without a window manager nobody else brings a clicked window to the front and gives it the keyboard.
void takeClick(const XButtonEvent* event) {
  const auto window = app().windowOf(XtWindowToWidget(event->display, event->window));
  if (!window || event->button > 3 || app().hasWindowManager() || app().active() == window) return;
  window->takeFocus();
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
  constexpr int lines = 3;
  return window && !app().blockerOf(*window) && window->wheel(widget, event->button == Button4 ? -lines : lines);
}

/// Before Xt sees the event. True when it need not.
bool takeFirst(XEvent* event) {
  constexpr unsigned buttons = Button1Mask | Button2Mask | Button3Mask;
  switch (event->type) {
    case KeyRelease:
      keepAlt(&event->xkey);
      if (event->xkey.keycode == heldKey().code) heldKey() = {};
      return false;
    case KeyPress:
      keepAlt(&event->xkey);
      // The release went elsewhere.
      if (app().isPressed() && (event->xkey.state & buttons) == 0) {
        app().setPressed(false);
        app().catchUp();
      }
      return takeKey(&event->xkey);
    case ButtonPress:
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

bool parseKeys(const char* text, KeySym* key, unsigned* modifiers) {
  static const std::map<std::string, unsigned> names{{"Ctrl", ControlMask}, {"Alt", Mod1Mask}, {"Shift", ShiftMask}};
  *modifiers = 0;
  std::string rest = text;
  for (std::size_t plus = rest.find('+'); plus != std::string::npos && plus > 0; plus = rest.find('+')) {
    const auto modifier = names.find(rest.substr(0, plus));
    if (modifier == names.end()) return false;
    *modifiers |= modifier->second;
    rest.erase(0, plus + 1);
  }
  if (rest == "Esc") rest = "Escape";
  *key = lower(XStringToKeysym(rest.c_str()));
  if (*key == NoSymbol && rest.size() == 1) *key = static_cast<unsigned char>(rest[0]);
  return *key != NoSymbol;
}

}  // namespace xvt
