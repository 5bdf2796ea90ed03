/// The application without a screen.
#pragma once

#include <memory>
#include <string>

#include "xvt/desk/desk.h"
#include "xvt/headless/events.h"

namespace xvt {

class MemoryWindow;

class Headless : public Desk {
 public:
  explicit Headless(const XVT_CONFIG& config, std::unique_ptr<EventSource> events = std::make_unique<PollEvents>());

  /// What was last cut or copied.
  const std::string& clipboard() const { return clipboard_; }
  void setClipboard(const std::string& text) { clipboard_ = text; }
  /// The keyboard comes to a window. False when it is there already.
  bool moveKeyboard(const std::shared_ptr<BaseWindow>& window);

  std::shared_ptr<Font> createFont(bool monospaced, int points, bool bold) override;
  void bell() override {}
  void sendKey(BaseWindow& window, Key key, unsigned modifiers) override;
  probe::Refusal screenshot(WINDOW, const std::string&) override { return "there is no screen"; }

 protected:
  std::shared_ptr<BaseTask> makeTask() override;
  std::shared_ptr<BaseDialog> makeDialog() override;
  std::shared_ptr<BaseDocument> makeDocument() override;

 private:
  std::string clipboard_;
  std::weak_ptr<BaseWindow> keyboard_;
};

/// The running application. Only to be called while there is one.
inline Headless& headless() { return static_cast<Headless&>(desk()); }

}  // namespace xvt
