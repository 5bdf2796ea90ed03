/// Handing a text view's selection to other programs: PRIMARY as it stands, CLIPBOARD as it was when it was copied.
#include <X11/Xatom.h>

#include "xvt/motif/selection.h"
#include "xvt/motif/textview/textview_impl.h"

namespace xvt {

namespace {

Boolean convertFor(Widget widget, Atom*, Atom* target, Atom* type, XtPointer* value, unsigned long* length,
                   int* format) {
  Boolean done = False;
  guarded("text view", [&] {
    if (TextViewImpl* view = TextViewImpl::of(widget))
      done =
          convertText(XtDisplay(widget), textOf(view->store, view->selection()), *target, type, value, length, format);
  });
  return done;
}

void lostFor(Widget widget, Atom*) {
  if (TextViewImpl* view = TextViewImpl::of(widget)) view->lost();
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
  return putOnClipboard(widget, textOf(store, selection()), time);
}

void TextViewImpl::lost() { ownsPrimary_ = false; }

}  // namespace xvt
