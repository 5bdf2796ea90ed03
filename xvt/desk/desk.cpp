#include "xvt/desk/desk.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "xvt/base/guard.h"
#include "xvt/base/report.h"
#include "xvt/desk/dialog.h"
#include "xvt/desk/document.h"
#include "xvt/desk/item.h"
#include "xvt/desk/signals.h"
#include "xvt/desk/task.h"

namespace xvt {

namespace {

Desk* current = nullptr;

bool isUsable(const std::shared_ptr<BaseWindow>& window) { return window && window->isVisible() && !window->isDying(); }

}  // namespace

Desk& desk() { return *current; }
Desk* deskIfRunning() { return current; }

std::string programName(const XVT_CONFIG& config) {
  return config.base_appl_name != nullptr && *config.base_appl_name != '\0' ? config.base_appl_name : "xvt";
}

void useSessionLocale() {
  std::setlocale(LC_ALL, "");
  if (MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
  std::setlocale(LC_NUMERIC, "C");
}

Desk::Desk(const XVT_CONFIG& config) : config_(config) {}

Desk::~Desk() {
  if (current == this) current = nullptr;
}

void Desk::useEvents(std::unique_ptr<EventSource> events) {
  events_ = std::move(events);
  pump_ = std::make_unique<Pump>(*this);
  current = this;
}

void Desk::run(EVENT_HANDLER handler) {
  EndSignals signals(events(), [this] { askToQuit(); });
  begin(handler);
  pump_->runUntil([this] { return ending_; });
  pump_->lastTick();
  finish();
}

void Desk::begin(EVENT_HANDLER handler) {
  task_ = makeTask();
  task_->create(handler);
  EVENT event;
  event.type = E_CREATE;
  task_->tell(event);
}

void Desk::finish() {
  // Newest first; a handler that opens a window now sees it ended too.
  while (!windows_.empty()) windows_.back()->destroy();
  if (lost_) return;
  pump_->reap();
  task_.reset();
  pump_->setTick(nullptr);
  Pump::setFirstTick(nullptr);
}

void Desk::loseDisplay() {
  if (!lost_) std::fputs("xvt: the connection to the display is lost\n", stderr);
  lost_ = ending_ = true;
  // The event loop would look at a closed connection for ever.
  EndSignals::wake();
}

void Desk::add(const std::shared_ptr<BaseWindow>& window) { windows_.push_back(window); }

void Desk::retire(const std::shared_ptr<BaseWindow>& window) {
  std::erase(windows_, window);
  pump_->retire(window);
}

std::shared_ptr<BaseWindow> Desk::blockerOf(const BaseWindow& window) const {
  for (auto at = windows_.rbegin(); at != windows_.rend() && at->get() != &window; ++at)
    if ((*at)->isModal() && isUsable(*at)) return *at;
  return nullptr;
}

std::shared_ptr<BaseWindow> Desk::inputKeeper() const {
  const auto found = std::find_if(windows_.rbegin(), windows_.rend(),
                                  [](const auto& window) { return window->isModal() && isUsable(window); });
  return found == windows_.rend() ? nullptr : *found;
}

std::shared_ptr<BaseWindow> Desk::active() const {
  const auto last =
      std::find_if(active_.rbegin(), active_.rend(), [](const auto& one) { return isUsable(one.lock()); });
  if (last != active_.rend()) return last->lock();
  const auto found = std::find_if(windows_.rbegin(), windows_.rend(), isUsable);
  return found == windows_.rend() ? nullptr : *found;
}

void Desk::activateNext(const BaseWindow& from, bool backward) {
  auto ring = windows_;
  if (backward) std::reverse(ring.begin(), ring.end());
  const auto here = std::find_if(ring.begin(), ring.end(), [&](const auto& window) { return window.get() == &from; });
  std::rotate(ring.begin(), here, ring.end());
  const auto takesInput = [this](const auto& window) { return isUsable(window) && !blockerOf(*window); };
  const auto next = std::find_if(ring.begin() + 1, ring.end(), takesInput);
  if (next != ring.end()) (*next)->takeFocus();
}

/// The menu bar is the task window's, its key that of every window.
void Desk::openMenu() {
  if (blockerOf(*task_)) return;
  task_->takeFocus();
  sendKey(*task_, kMenuKey, 0);
}

void Desk::setActive(const std::shared_ptr<BaseWindow>& window) {
  std::erase_if(active_, [&](const auto& one) { return one.expired() || one.lock() == window; });
  active_.push_back(window);
  if (window != task_) edited_ = window;
  if (window->firstText()) read_ = window;
  catchUp();
}

void Desk::catchUp() {
  // A copy: a handler that is told may open or end windows.
  const auto windows = windows_;
  for (const auto& window : windows) window->catchUp();
}

std::shared_ptr<BaseWindow> Desk::speaker() const {
  const auto found = std::find_if(speaking_.rbegin(), speaking_.rend(), [this](const auto& speaking) {
    const auto window = speaking.lock();
    return window != task_ && isUsable(window);
  });
  return found == speaking_.rend() ? active() : found->lock();
}

long Desk::deliver(const std::shared_ptr<Window>& window, EVENT& event) {
  const auto alive = std::dynamic_pointer_cast<BaseWindow>(window);
  speaking_.push_back(alive);
  long answer = 0;
  guarded("event handler", [&] { answer = alive->handler(alive->handle(), &event); });
  speaking_.pop_back();
  return answer;
}

std::shared_ptr<BaseWindow> Desk::editTarget() const {
  const auto edited = edited_.lock();
  return isUsable(edited) ? edited : active();
}

std::shared_ptr<BaseWindow> Desk::textTarget() const {
  const auto shows = [this](const auto& window) {
    return isUsable(window) && window->firstText() && !blockerOf(*window);
  };
  for (const auto& window : {active(), read_.lock()})
    if (shows(window)) return window;
  const auto found = std::find_if(windows_.rbegin(), windows_.rend(), shows);
  return found == windows_.rend() ? nullptr : *found;
}

namespace {

/// A window on its way to be open. What fails on it destroys the window; a handler that was not told of it is not then.
class Opening {
 public:
  Opening(BaseWindow& window, void* data) : window_(&window) {
    window.enter([](WINDOW, EVENT*) -> long { return 0; }, data);
  }
  ~Opening() {
    if (window_ != nullptr) window_->destroy();
  }
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;
  void done() { window_ = nullptr; }

 private:
  BaseWindow* window_;
};

}  // namespace

std::shared_ptr<Window> Desk::openDocument(const WIN_DEF& definition, EVENT_HANDLER handler, void* data) {
  const auto document = makeDocument();
  Opening opening(*document, data);
  document->build(definition);
  document->handler = handler;
  EVENT event;
  event.type = E_CREATE;
  document->tell(event);
  if (!document->isDying()) document->openAt(definition);
  opening.done();
  return document;
}

std::shared_ptr<Window> Desk::openDialog(bool modal, const DLG_RES& table, EVENT_HANDLER handler, void* data) {
  const auto dialog = makeDialog();
  Opening opening(*dialog, data);
  dialog->build(table, modal);
  dialog->handler = handler;
  EVENT event;
  event.type = E_CREATE;
  dialog->tell(event);
  if (!dialog->isDying()) dialog->openFitted();
  opening.done();
  if (!modal) return dialog;
  waitFor(*dialog);
  dialog->destroy();
  return dialog;
}

void Desk::waitFor(BaseDialog& dialog) {
  pump_->runUntil([&] { return dialog.isDying() || ending_; });
}

void Desk::stopChoosing(const BaseWindow* window) {
  if (choosing_ != nullptr && (window == nullptr || choosing_->owner().handle() == window->handle()))
    choosing_->closeList();
}

bool Desk::takeKey(const std::shared_ptr<BaseWindow>& window, Key key, unsigned modifiers) {
  if (choosing_ != nullptr) return choosing_->listKey(key), true;
  if (!window) return false;  // a menu or a pop-up list: its own keys
  if (blockerOf(*window)) return true;
  key = lowerKey(key);
  if (task_ && task_->shortcut(key, modifiers, *window)) return true;
  if (window->shortcutKey(key, modifiers)) return true;
  if (modifiers == kAlt && window->mnemonic(key)) return true;
  if ((modifiers & ~kShift) == 0 && window->rowKey(key)) return true;
  if (key == kMenuKey && modifiers == 0 && task_ && window != task_) return openMenu(), true;
  if (key == kNextWindowKey && (modifiers | kShift) == kShift) return activateNext(*window, modifiers != 0), true;
  if (modifiers == kControl && isReturn(key)) return window->defaultKey();
  if (modifiers != 0) return false;
  if (key == kTabKey) return window->completeKey();
  if (isReturn(key)) return window->returnKey();
  if (key == kDownKey || key == kPadDownKey) return window->downKey();
  return key == kEscapeKey && window->escapeKey();
}

void Desk::askToQuit() {
  if (ending_ || !task_) return;
  quitAllowed_ = false;
  EVENT event;
  event.type = E_QUIT;
  event.quit.query = true;
  task_->tell(event);
  if (!quitAllowed_ || ending_) return;
  event.quit.query = false;
  task_->tell(event);
  ending_ = true;
}

void Desk::setBusy(bool busy) {
  if (!busy && busy_ == 0) report("xvt_app_set_busy", "it is not busy");
  const bool was = isBusy();
  busy_ = std::max(0, busy_ + (busy ? 1 : -1));
  if (was != isBusy()) busyShown();
}

// ---- what the check floor asks ------------------------------------------------------------------------------------

namespace {

std::vector<OpenRuntime>& offers() {
  static std::vector<OpenRuntime> offered;
  return offered;
}

int (*verdict)() = nullptr;

BaseTask* taskWith(int command) {
  BaseTask* task = current != nullptr ? current->task() : nullptr;
  return task != nullptr && task->hasItem(command) ? task : nullptr;
}

}  // namespace

void probe::setVerdict(int (*ask)()) { verdict = ask; }

void offerRuntime(OpenRuntime open) { offers().push_back(open); }

namespace runtime {

int run(int argc, char** argv, EVENT_HANDLER handler, const XVT_CONFIG& config) {
  if (offers().empty()) report("xvt_app_create", "no runtime was chosen");
  std::unique_ptr<Desk> chosen;
  for (const OpenRuntime open : offers()) {
    chosen = open(argc, argv, config);
    if (chosen) break;
    if (open != offers().back()) std::fprintf(stderr, "%s: going on without a screen\n", programName(config).c_str());
  }
  if (!chosen) return 1;
  chosen->run(handler);
  if (!chosen->isLost()) return verdict != nullptr ? verdict() : 0;
  // What is left stays to the end of the process, known as the current one: its own end would speak to the display.
  static_cast<void>(chosen.release());
  return 1;
}

bool isRunning() { return current != nullptr; }
bool hasDisplay() { return current == nullptr || !current->isLost(); }
void end() { desk().end(); }
bool isEnding() { return current != nullptr && current->isEnding(); }
void allowQuit() { desk().allowQuit(); }
void processPendingEvents() { desk().processPendingEvents(); }
void setBusy(bool busy) { desk().setBusy(busy); }
void bell() { desk().bell(); }

std::shared_ptr<Window> createDocument(const WIN_DEF* definition, EVENT_HANDLER handler, void* data) {
  return desk().openDocument(*definition, handler, data);
}

std::shared_ptr<Window> createDialog(bool modal, const DLG_RES& table, EVENT_HANDLER handler, void* data) {
  return desk().openDialog(modal, table, handler, data);
}

long deliver(const std::shared_ptr<Window>& window, EVENT& event) { return desk().deliver(window, event); }

bool setItemChecked(int command, bool checked) {
  BaseTask* task = taskWith(command);
  if (task != nullptr) task->setItemChecked(command, checked);
  return task != nullptr;
}

bool setItemEnabled(int command, bool enabled) {
  BaseTask* task = taskWith(command);
  if (task != nullptr) task->setItemEnabled(command, enabled);
  return task != nullptr;
}

bool isItemChecked(int command) {
  const BaseTask* task = taskWith(command);
  return task != nullptr && task->isItemChecked(command);
}

bool isItemEnabled(int command) {
  const BaseTask* task = taskWith(command);
  return task != nullptr && task->isItemEnabled(command);
}

std::shared_ptr<Font> createFont(bool monospaced, int points, bool bold) {
  return current != nullptr ? current->createFont(monospaced, points, bold) : nullptr;
}

}  // namespace runtime

}  // namespace xvt
