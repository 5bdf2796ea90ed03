/// The intrinsics answer TIMESTAMP and MULTIPLE themselves and send large values in increments.
#include "xvt/motif/selection.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "xvt/base/utf8.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

Atom atom(Display* display, const char* name) { return XInternAtom(display, name, False); }

/// A copy that Xt frees.
XtPointer handOver(const void* bytes, std::size_t size) {
  char* copy = XtMalloc(static_cast<Cardinal>(std::max<std::size_t>(1, size)));
  std::memcpy(copy, bytes, size);
  return copy;
}

/// Valid UTF-8 as Latin-1, a question mark for each character beyond.
std::string latin1(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(1, utf8SequenceLength(text));
    const auto first = static_cast<unsigned char>(text[0]);
    if (length == 1)
      result += text[0];
    else if (first <= 0xC3)
      result += static_cast<char>(((first & 3U) << 6) | (static_cast<unsigned char>(text[1]) & 0x3FU));
    else
      result += '?';
    text.remove_prefix(length);
  }
  return result;
}

/// Valid UTF-8 as compound text, which older programs ask for; empty when it cannot be had.
std::string compoundText(Display* display, std::string text) {
  char* list[] = {text.data()};
  XTextProperty property{};
  if (Xutf8TextListToTextProperty(display, list, 1, XCompoundTextStyle, &property) < 0) return {};
  std::string result(reinterpret_cast<const char*>(property.value), property.nitems);
  XFree(property.value);
  return result;
}

/// What was copied last, for as long as CLIPBOARD is ours.
std::string& clipboard() {
  static std::string text;
  return text;
}

Boolean convertClipboard(Widget widget, Atom*, Atom* target, Atom* type, XtPointer* value, unsigned long* length,
                         int* format) {
  Boolean done = False;
  guarded("clipboard",
          [&] { done = convertText(XtDisplay(widget), clipboard(), *target, type, value, length, format); });
  return done;
}

void lostClipboard(Widget, Atom*) { std::string().swap(clipboard()); }

}  // namespace

Boolean convertText(Display* display, const std::string& text, Atom target, Atom* type, XtPointer* value,
                    unsigned long* length, int* format) {
  const Atom utf8 = atom(display, "UTF8_STRING");
  const Atom compound = atom(display, "COMPOUND_TEXT");
  const Atom mime = atom(display, "text/plain;charset=utf-8");
  const Atom any = atom(display, "TEXT");
  if (const Atom targets = atom(display, "TARGETS"); target == targets) {
    const Atom offered[] = {targets,  atom(display, "TIMESTAMP"), atom(display, "MULTIPLE"), utf8, mime, any, compound,
                            XA_STRING};
    *type = XA_ATOM;
    *value = handOver(offered, sizeof offered);
    *length = std::size(offered);
    *format = 32;
    return True;
  }
  if (target != utf8 && target != mime && target != any && target != compound && target != XA_STRING) return False;
  std::string bytes = validUtf8(text);
  if (target == XA_STRING) bytes = latin1(bytes);
  if (target == compound) bytes = compoundText(display, std::move(bytes));
  *type = target == any ? utf8 : target;
  *value = handOver(bytes.data(), bytes.size());
  *length = bytes.size();
  *format = 8;
  return True;
}

bool putOnClipboard(Widget widget, const std::string& text, Time time) {
  while (XtParent(widget) != nullptr) widget = XtParent(widget);
  clipboard() = text;
  return XtOwnSelection(widget, atom(XtDisplay(widget), "CLIPBOARD"), time, convertClipboard, lostClipboard, nullptr);
}

}  // namespace xvt
