/// Handing texts to other programs and to other windows of this one.
#pragma once

#include <Xm/Xm.h>

#include <string>

namespace xvt {

/// Answers a request for a text in one of the forms that programs ask for; what is no valid UTF-8 is made so.
Boolean convertText(Display* display, const std::string& text, Atom target, Atom* type, XtPointer* value,
                    unsigned long* length, int* format);
/// The text is on CLIPBOARD from now on, also when the window that `widget` is in has gone. False when it was refused.
bool putOnClipboard(Widget widget, const std::string& text, Time time);

}  // namespace xvt
