#include "xvt/headless/headless.h"

#include <utility>

#include "xvt/headless/text.h"
#include "xvt/headless/window.h"
#include "xvt/offer.h"

namespace xvt {

namespace {

void tellFocus(BaseWindow& window, bool active) {
  EVENT event;
  event.type = E_FOCUS;
  event.focus.active = active;
  window.tell(event);
}

}  // namespace

Headless::Headless(const XVT_CONFIG& config, std::unique_ptr<EventSource> events) : Desk(config) {
  useSessionLocale();
  useEvents(std::move(events));
}

bool Headless::moveKeyboard(const std::shared_ptr<BaseWindow>& window) {
  const auto before = keyboard_.lock();
  if (before == window) return false;
  keyboard_ = window;
  if (before) tellFocus(*before, false);
  tellFocus(*window, true);
  return true;
}

std::shared_ptr<Font> Headless::createFont(bool, int points, bool) { return std::make_shared<MemoryFont>(points); }

void Headless::sendKey(BaseWindow& window, Key key, unsigned modifiers) {
  const auto alive = window.shared_from_this();
  if (!takeKey(alive, key, modifiers)) dynamic_cast<MemoryWindow&>(window).ownKey(key, modifiers);
}

std::shared_ptr<BaseTask> Headless::makeTask() { return std::make_shared<MemoryTask>(); }
std::shared_ptr<BaseDialog> Headless::makeDialog() { return std::make_shared<MemoryDialog>(); }
std::shared_ptr<BaseDocument> Headless::makeDocument() { return std::make_shared<MemoryDocument>(); }

}  // namespace xvt

void xvt_app_offer_headless() {
  xvt::offerRuntime([](int, char**, const XVT_CONFIG& config) -> std::unique_ptr<xvt::Desk> {
    return std::make_unique<xvt::Headless>(config);
  });
}
