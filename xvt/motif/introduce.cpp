#include "xvt/motif/introduce.h"

#include <X11/Shell.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "xvt/motif/application.h"

namespace xvt {

namespace {

constexpr const char* kStartVariable = "DESKTOP_STARTUP_ID";

void setProperty(Widget shell, const char* name, Atom type, const std::vector<unsigned long>& values) {
  XChangeProperty(XtDisplay(shell), XtWindow(shell), atom(name), type, 32, PropModeReplace,
                  reinterpret_cast<const unsigned char*>(values.data()), static_cast<int>(values.size()));
}

// ---- the icon -----------------------------------------------------------------------------------------------------

/// The mean colour of one pixel of `side`, looked at in several places.
unsigned long iconPixel(int x, int y, int side) {
  constexpr int kLooks = 4;
  constexpr unsigned kByte = 0xFF;
  unsigned alpha = 0;
  unsigned sums[3] = {};
  const auto at = [side](int pixel, int look) { return (pixel + (look + 0.5) / kLooks) / side; };
  for (int look = 0; look < kLooks * kLooks; ++look) {
    const unsigned color = resources().icon(at(x, look % kLooks), at(y, look / kLooks));
    const unsigned covers = color >> 24;
    alpha += covers;
    for (unsigned channel = 0; channel < 3; ++channel) sums[channel] += (color >> (8 * channel) & kByte) * covers;
  }
  unsigned long pixel = static_cast<unsigned long>(alpha / (kLooks * kLooks)) << 24;
  for (unsigned channel = 0; channel < 3 && alpha > 0; ++channel)
    pixel |= static_cast<unsigned long>(sums[channel] / alpha) << (8 * channel);
  return pixel;
}

/// All sizes one behind another, each headed by its width and height.
const std::vector<unsigned long>& icon() {
  static const std::vector<unsigned long> pixels = [] {
    std::vector<unsigned long> all;
    for (const int side : {16, 24, 32, 48, 64}) {
      all.insert(all.end(), 2, static_cast<unsigned long>(side));
      for (int at = 0; at < side * side; ++at) all.push_back(iconPixel(at % side, at / side, side));
    }
    return all;
  }();
  return pixels;
}

/// Windows of one program stand together in a task bar by their class, its first part too.
void setClass(Widget shell) {
  String name = nullptr;
  String className = nullptr;
  XtGetApplicationNameAndClass(XtDisplay(shell), &name, &className);
  XClassHint hint{name, className};
  XSetClassHint(XtDisplay(shell), XtWindow(shell), &hint);
}

/// A message to all who watch for starting programs: a text, 20 bytes at a time, its zero byte too.
void broadcast(Widget shell, const std::string& text) {
  const ::Window root = RootWindowOfScreen(XtScreen(shell));
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.display = XtDisplay(shell);
  event.xclient.window = XtWindow(shell);
  event.xclient.format = 8;
  event.xclient.message_type = atom("_NET_STARTUP_INFO_BEGIN");
  for (std::size_t at = 0; at <= text.size(); at += sizeof event.xclient.data.b) {
    std::memset(event.xclient.data.b, 0, sizeof event.xclient.data.b);
    text.copy(event.xclient.data.b, sizeof event.xclient.data.b, at);
    XSendEvent(XtDisplay(shell), root, False, PropertyChangeMask, &event);
    event.xclient.message_type = atom("_NET_STARTUP_INFO");
  }
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') result += '\\';
    result += byte;
  }
  return result + '"';
}

}  // namespace

void introduceWindow(Widget shell, bool modal) {
  XtVaSetValues(shell, XmNwindowGroup, XtWindow(app().shell()), nullptr);
  setClass(shell);
  setProperty(shell, "_NET_WM_PID", XA_CARDINAL, {static_cast<unsigned long>(getpid())});
  setProperty(shell, "_NET_WM_WINDOW_TYPE", XA_ATOM,
              {atom(modal ? "_NET_WM_WINDOW_TYPE_DIALOG" : "_NET_WM_WINDOW_TYPE_NORMAL")});
  if (resources().icon != nullptr) setProperty(shell, "_NET_WM_ICON", XA_CARDINAL, icon());
}

void tellStarted(Widget shell) {
  const char* id = std::getenv(kStartVariable);
  if (id == nullptr) return;
  if (id[0] != '\0') broadcast(shell, "remove: ID=" + quoted(id));
  // Programs that this one starts were not started so.
  unsetenv(kStartVariable);
}

}  // namespace xvt
