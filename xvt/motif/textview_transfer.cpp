/// Handing a text view's selection to other programs: PRIMARY as it stands, CLIPBOARD as it was when it was copied.
/// The intrinsics answer TIMESTAMP and MULTIPLE themselves and send large values in increments.
#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstring>

#include "xvt/base/utf8.h"
#include "xvt/motif/textview_impl.h"

namespace xvt {

namespace {

Atom atom(Display* display, const char* name) { return XInternAtom(display, name, False); }

Boolean convertFor(Widget widget, Atom* selection, Atom* target, Atom* type, XtPointer* value, unsigned long* length,
                   int* format) {
  Boolean done = False;
  guarded("text view", [&] {
    if (TextViewImpl* view = TextViewImpl::of(widget))
      done = view->convert(*selection, *target, type, value, length, format);
  });
  return done;
}

void lostFor(Widget widget, Atom* selection) {
  if (TextViewImpl* view = TextViewImpl::of(widget)) view->lost(*selection);
}

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

}  // namespace

void TextViewImpl::offerPrimary(Time time) {
  if (widget == nullptr || !XtIsRealized(widget)) return;
  if (!selection().empty())
    ownsPrimary_ = XtOwnSelection(widget, XA_PRIMARY, time, convertFor, lostFor, nullptr);
  else if (ownsPrimary_)
    XtDisownSelection(widget, XA_PRIMARY, time);
}

bool TextViewImpl::copyToClipboard(Time time) {
  if (widget == nullptr || !XtIsRealized(widget) || selection().empty()) return false;
  clipboard_ = textOf(store, selection());
  return XtOwnSelection(widget, atom(display_, "CLIPBOARD"), time, convertFor, lostFor, nullptr);
}

void TextViewImpl::lost(Atom selection) {
  if (selection == XA_PRIMARY)
    ownsPrimary_ = false;
  else
    std::string().swap(clipboard_);
}

Boolean TextViewImpl::convert(Atom which, Atom target, Atom* type, XtPointer* value, unsigned long* length,
                              int* format) {
  const Atom utf8 = atom(display_, "UTF8_STRING");
  const Atom compound = atom(display_, "COMPOUND_TEXT");
  const Atom mime = atom(display_, "text/plain;charset=utf-8");
  const Atom text = atom(display_, "TEXT");
  if (const Atom targets = atom(display_, "TARGETS"); target == targets) {
    const Atom offered[] = {
        targets, atom(display_, "TIMESTAMP"), atom(display_, "MULTIPLE"), utf8, mime, text, compound, XA_STRING};
    *type = XA_ATOM;
    *value = handOver(offered, sizeof offered);
    *length = std::size(offered);
    *format = 32;
    return True;
  }
  if (target != utf8 && target != mime && target != text && target != compound && target != XA_STRING) return False;
  std::string bytes = validUtf8(which == XA_PRIMARY ? textOf(store, selection()) : clipboard_);
  if (target == XA_STRING) bytes = latin1(bytes);
  if (target == compound) bytes = compoundText(display_, std::move(bytes));
  *type = target == text ? utf8 : target;
  *value = handOver(bytes.data(), bytes.size());
  *length = bytes.size();
  *format = 8;
  return True;
}

}  // namespace xvt
