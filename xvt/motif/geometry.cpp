#include "xvt/motif/geometry.h"

#include <X11/IntrinsicP.h>

#include <algorithm>

namespace xvt {

void setPlace(Widget widget, const RCT& place) {
  Dimension border = 0;
  XtVaGetValues(widget, XmNborderWidth, &border, nullptr);
  const int width = std::max(1, place.right - place.left - 2 * border);
  const int height = std::max(1, place.bottom - place.top - 2 * border);
  XtConfigureWidget(widget, static_cast<Position>(place.left), static_cast<Position>(place.top),
                    static_cast<Dimension>(width), static_cast<Dimension>(height), border);
}

RCT placeOf(Widget widget) {
  Position x = 0;
  Position y = 0;
  Dimension width = 0;
  Dimension height = 0;
  Dimension border = 0;
  XtVaGetValues(widget, XmNx, &x, XmNy, &y, XmNwidth, &width, XmNheight, &height, XmNborderWidth, &border, nullptr);
  return RCT{y, x, y + height + 2 * border, x + width + 2 * border};
}

bool frameOf(Widget shell, RCT* frame) {
  Display* display = XtDisplay(shell);
  ::Window outermost = XtWindow(shell);
  XWindowAttributes attributes{};
  if (outermost == 0 || XGetWindowAttributes(display, outermost, &attributes) == 0 ||
      attributes.map_state != IsViewable)
    return false;
  ::Window root = 0;
  ::Window parent = 0;
  ::Window* children = nullptr;
  unsigned count = 0;
  while (XQueryTree(display, outermost, &root, &parent, &children, &count) != 0) {
    if (children != nullptr) XFree(children);
    if (parent == root || parent == 0) break;
    outermost = parent;
  }
  if (XGetWindowAttributes(display, outermost, &attributes) == 0) return false;
  const int border = 2 * attributes.border_width;
  *frame = RCT{attributes.y, attributes.x, attributes.y + attributes.height + border,
               attributes.x + attributes.width + border};
  return true;
}

}  // namespace xvt
