/// Lines of help that appear while the pointer rests.
#pragma once

#include <Xm/Xm.h>

#include <string>

namespace xvt {

/// An empty text takes the line away.
void setTooltip(Widget widget, const std::string& text);

}  // namespace xvt
