#include "xvt/motif/application.h"

#include <X11/Shell.h>
#include <X11/cursorfont.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/keys.h"
#include "xvt/motif/scrollbars.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/signals.h"
#include "xvt/motif/task_window.h"
#include "xvt/motif/textview.h"
#include "xvt/script_status.h"

namespace xvt {

namespace {

Application* current = nullptr;

/// Texts are UTF-8 whatever the session says, and numbers keep their points.
String chooseLocale(Display*, String, XtPointer) {
  std::setlocale(LC_ALL, "");
  if (MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
  std::setlocale(LC_NUMERIC, "C");
  return std::setlocale(LC_ALL, nullptr);
}

/// A request that came too late (for a window that is gone or not shown any more) is no reason to end.
int onXError(Display* display, XErrorEvent* error) {
  if (error->error_code == BadWindow || error->error_code == BadMatch || error->error_code == BadDrawable) return 0;
  char text[256] = "";
  XGetErrorText(display, error->error_code, text, sizeof text);
  std::fprintf(stderr, "xvt: X error: %s (request %d)\n", text, error->request_code);
  return 0;
}

void onXtWarning(String message) { std::fprintf(stderr, "xvt: %s\n", message); }

std::string className(const char* base) {
  std::string name = base != nullptr && *base != '\0' ? base : "xvt";
  if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

}  // namespace

Application& app() { return *current; }
Application* appIfRunning() { return current; }

bool Application::open(int argc, char** argv) {
  static const bool initialized = [] {
    XtSetLanguageProc(nullptr, chooseLocale, nullptr);
    XtToolkitInitialize();
    return true;
  }();
  static_cast<void>(initialized);
  context_ = XtCreateApplicationContext();
  XtAppSetWarningHandler(context_, onXtWarning);
  std::vector<char*> arguments(argv, argv + argc);
  arguments.push_back(nullptr);
  const std::string name = config_.base_appl_name != nullptr ? config_.base_appl_name : "xvt";
  display_ = XtOpenDisplay(context_, nullptr, name.c_str(), className(name.c_str()).c_str(), nullptr, 0, &argc,
                           arguments.data());
  if (display_ == nullptr) {
    const char* wanted = std::getenv("DISPLAY");
    std::fprintf(stderr, "%s: cannot open the display \"%s\"\n", name.c_str(), wanted != nullptr ? wanted : "");
    return false;
  }
  XSetErrorHandler(onXError);
  XSetIOErrorHandler([](Display*) { return 0; });
  XSetIOErrorExitHandler(display_, onLoss, this);
  Look::installResources(display_);
  std::vector<Arg> args(2);
  XtSetArg(args[0], const_cast<char*>(XmNdeleteResponse), XmDO_NOTHING);
  XtSetArg(args[1], const_cast<char*>(XmNmappedWhenManaged), False);
  shell_ = XtAppCreateShell(name.c_str(), className(name.c_str()).c_str(), applicationShellWidgetClass, display_,
                            args.data(), static_cast<Cardinal>(args.size()));
  look_ = std::make_unique<Look>(shell_);
  marks_ = std::make_unique<Marks>(display_, look_->px(16));
  pump_ = std::make_unique<Pump>(context_);
  busy_cursor_ = XCreateFontCursor(display_, XC_watch);
  installKeys(display_);
  current = this;
  return true;
}

Application::~Application() {
  pump_.reset();
  if (display_ != nullptr) {
    marks_.reset();
    look_.reset();
    XFreeCursor(display_, busy_cursor_);
    XSync(display_, False);
  }
  // Context and connection are left to the end of the process: Xt and Motif keep things by display that they would lose
  // track of, but never give back.
  if (current == this) current = nullptr;
}

void Application::run(EVENT_HANDLER handler) {
  EndSignals signals(context_, [this] { askToQuit(); });
  task_ = std::make_shared<TaskWindow>();
  task_->create(handler);
  EVENT event;
  event.type = E_CREATE;
  task_->tell(event);
  pump_->runUntil([this] { return ending_; });
  // Newest first; a handler that opens a window now sees it ended too.
  while (!windows_.empty()) windows_.back()->destroy();
  if (lost_) return;
  pump_->reap();
  task_.reset();
  pump_->setTick(nullptr);
  Pump::setFirstTick(nullptr);
  XtDestroyWidget(shell_);
}

void Application::onLoss(Display*, void* application) {
  auto* self = static_cast<Application*>(application);
  if (!self->lost_) std::fputs("xvt: the connection to the display is lost\n", stderr);
  self->lost_ = self->ending_ = true;
  // The event loop would look at a closed connection for ever.
  EndSignals::wake();
}

void Application::retire(const std::shared_ptr<ShellWindow>& window) {
  std::erase(windows_, window);
  pump_->retire(window);
}

std::shared_ptr<ShellWindow> Application::windowOf(Widget widget) const {
  while (widget != nullptr && !XtIsShell(widget)) widget = XtParent(widget);
  const auto found = std::find_if(windows_.begin(), windows_.end(),
                                  [&](const auto& window) { return window->shell() == widget && widget != nullptr; });
  return found == windows_.end() ? nullptr : *found;
}

std::shared_ptr<ShellWindow> Application::blockerOf(const ShellWindow& window) const {
  for (auto at = windows_.rbegin(); at != windows_.rend() && at->get() != &window; ++at)
    if ((*at)->isModal() && (*at)->isVisible() && !(*at)->isDying()) return *at;
  return nullptr;
}

std::shared_ptr<ShellWindow> Application::active() const {
  const auto usable = [](const std::shared_ptr<ShellWindow>& window) {
    return window && window->isVisible() && !window->isDying();
  };
  auto last = active_.lock();
  if (usable(last)) return last;
  const auto found = std::find_if(windows_.rbegin(), windows_.rend(), usable);
  return found == windows_.rend() ? nullptr : *found;
}

void Application::setActive(const std::shared_ptr<ShellWindow>& window) {
  active_ = window;
  if (window != task_) edited_ = window;
  catchUp();
}

void Application::catchUp() {
  // A copy: a handler that is told may open or end windows.
  const auto windows = windows_;
  for (const auto& window : windows) window->catchUp();
}

std::shared_ptr<ShellWindow> Application::speaker() const {
  const auto found = std::find_if(speaking_.rbegin(), speaking_.rend(), [this](const auto& speaking) {
    const auto window = speaking.lock();
    return window && window != task_ && window->isVisible() && !window->isDying();
  });
  return found == speaking_.rend() ? active() : found->lock();
}

long Application::deliver(const std::shared_ptr<Window>& window, EVENT& event) {
  const auto alive = std::dynamic_pointer_cast<ShellWindow>(window);
  speaking_.push_back(alive);
  long answer = 0;
  guarded("event handler", [&] { answer = alive->handler(alive->handle(), &event); });
  speaking_.pop_back();
  return answer;
}

std::shared_ptr<ShellWindow> Application::editTarget() const {
  const auto edited = edited_.lock();
  return edited && edited->isVisible() && !edited->isDying() ? edited : active();
}

void Application::stopChoosing(const ShellWindow* window) {
  if (choosing_ != nullptr && (window == nullptr || &choosing_->dialog() == window)) choosing_->closeList();
}

bool Application::hasWindowManager() const {
  if (XGetSelectionOwner(display_, XInternAtom(display_, "WM_S0", False)) != 0) return true;
  Atom type = 0;
  int format = 0;
  unsigned long count = 0;
  unsigned long left = 0;
  unsigned char* data = nullptr;
  for (const char* name : {"_NET_SUPPORTING_WM_CHECK", "_MOTIF_WM_INFO"}) {
    const Atom property = XInternAtom(display_, name, False);
    XGetWindowProperty(display_, DefaultRootWindow(display_), property, 0, 1, False, AnyPropertyType, &type, &format,
                       &count, &left, &data);
    if (data != nullptr) XFree(data);
    if (type != 0) return true;
  }
  return false;
}

void Application::askToQuit() {
  if (ending_ || !task_) return;
  quit_allowed_ = false;
  EVENT event;
  event.type = E_QUIT;
  event.quit.query = true;
  task_->tell(event);
  if (!quit_allowed_ || ending_) return;
  event.quit.query = false;
  task_->tell(event);
  ending_ = true;
}

void Application::setBusy(bool busy) {
  const bool was = busy_ > 0;
  busy_ = std::max(0, busy_ + (busy ? 1 : -1));
  if (was == (busy_ > 0)) return;
  for (const auto& window : windows_) window->showBusy(busy_ > 0);
  // What follows is usually a call that blocks: what the user should see meanwhile must be on the screen now.
  TextView::paintAllPending();
  XFlush(display_);
}

namespace runtime {

int run(int argc, char** argv, EVENT_HANDLER handler, const XVT_CONFIG& config) {
  auto application = std::make_unique<Application>(config);
  if (!application->open(argc, argv)) return 1;
  application->run(handler);
  if (!application->isLost()) return xvt_script_status();
  // What is left stays to the end of the process, known as the current one: its own end would speak to the display.
  static_cast<void>(application.release());
  return 1;
}

bool isRunning() { return current != nullptr; }
bool hasDisplay() { return current == nullptr || !current->isLost(); }
void end() { app().end(); }
bool isEnding() { return current != nullptr && current->isEnding(); }
void allowQuit() { app().allowQuit(); }
void processPendingEvents() { app().pump().serveIfDue(); }
void setBusy(bool busy) { app().setBusy(busy); }
void bell() { XBell(app().display(), 0); }

long deliver(const std::shared_ptr<Window>& window, EVENT& event) { return app().deliver(window, event); }

}  // namespace runtime

}  // namespace xvt
