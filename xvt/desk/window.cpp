#include "xvt/desk/window.h"

#include "xvt/desk/desk.h"
#include "xvt/desk/timers.h"

namespace xvt {

void BaseWindow::enter(EVENT_HANDLER eventHandler, void* eventData) {
  handler = eventHandler;
  data = eventData;
  desk().add(shared_from_this());
  if (handle() == 0) Registry::instance().enter(shared_from_this());
}

void BaseWindow::setEnabled(bool enabled) {
  enabled_ = enabled;
  if (!enabled) desk().stopChoosing(this);
}

void BaseWindow::takeFocus() {
  if (dying_ || !shown_) return;
  if (const auto blocker = desk().blockerOf(*this)) return blocker->takeFocus();
  desk().setActive(shared_from_this());
  grabKeyboard();
}

void BaseWindow::requestClose() {
  if (dying_ || desk().blockerOf(*this)) return;
  const auto alive = shared_from_this();
  settle();
  EVENT event;
  event.type = E_CLOSE;
  tell(event);
}

void BaseWindow::tell(EVENT event) {
  if (!dying_) desk().deliver(shared_from_this(), event);
}

void BaseWindow::destroy() {
  if (dying_) return;
  const auto alive = shared_from_this();
  dying_ = true;
  if (desk().isLost()) shown_ = false;
  if (shown_) popDown();
  EVENT event;
  event.type = E_DESTROY;
  desk().deliver(alive, event);
  desk().retire(alive);
  dropTimers(*this);
  dropParts();
  Registry::instance().leave(handle());
}

}  // namespace xvt
