#include "xvt/motif/tooltip.h"

#include "xvt/motif/look.h"

namespace xvt {

void setTooltip(Widget widget, const std::string& text) {
  if (text.empty()) {
    XtVaSetValues(widget, XmNtoolTipString, nullptr, nullptr);
    return;
  }
  const MotifString string(text);
  XtVaSetValues(widget, XmNtoolTipString, static_cast<XmString>(string), nullptr);
}

}  // namespace xvt
