#include "xvt/motif/application.h"

#include <X11/Shell.h>
#include <X11/cursorfont.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "xvt/motif/dialog.h"
#include "xvt/motif/document.h"
#include "xvt/motif/events.h"
#include "xvt/motif/keys.h"
#include "xvt/motif/shell_window.h"
#include "xvt/motif/task_window.h"
#include "xvt/motif/textview/textview.h"
#include "xvt/offer.h"

namespace xvt {

namespace {

String chooseLocale(Display*, String, XtPointer) {
  useSessionLocale();
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

std::string className(std::string name) {
  if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

}  // namespace

Application& app() { return static_cast<Application&>(desk()); }
Application* appIfRunning() { return static_cast<Application*>(deskIfRunning()); }
Atom atom(const char* name) { return XInternAtom(app().display(), name, False); }

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
  const std::string name = programName(config());
  display_ =
      XtOpenDisplay(context_, nullptr, name.c_str(), className(name).c_str(), nullptr, 0, &argc, arguments.data());
  if (display_ == nullptr) {
    const char* wanted = std::getenv("DISPLAY");
    std::fprintf(stderr, "%s: cannot open the display \"%s\"\n", name.c_str(), wanted != nullptr ? wanted : "");
    return false;
  }
  XSetErrorHandler(onXError);
  XSetIOErrorHandler([](Display*) { return 0; });
  XSetIOErrorExitHandler(display_, onLoss, this);
  Look::installResources(display_, LookWishes::of(display_, name, className(name)));
  std::vector<Arg> args(2);
  XtSetArg(args[0], const_cast<char*>(XmNdeleteResponse), XmDO_NOTHING);
  XtSetArg(args[1], const_cast<char*>(XmNmappedWhenManaged), False);
  shell_ = XtAppCreateShell(name.c_str(), className(name).c_str(), applicationShellWidgetClass, display_, args.data(),
                            static_cast<Cardinal>(args.size()));
  look_ = std::make_unique<Look>(shell_);
  marks_ = std::make_unique<Marks>(display_, look_->px(16), look_->palette());
  useEvents(std::make_unique<XtEvents>(context_));
  busyCursor_ = XCreateFontCursor(display_, XC_watch);
  installKeys(display_);
  return true;
}

Application::~Application() {
  // Context and connection are left to the end of the process: Xt and Motif keep things by display that they would lose
  // track of, but never give back.
  if (display_ == nullptr) return;
  XtDestroyWidget(shell_);
  marks_.reset();
  look_.reset();
  XFreeCursor(display_, busyCursor_);
  XSync(display_, False);
}

void Application::onLoss(Display*, void* application) { static_cast<Application*>(application)->loseDisplay(); }

std::vector<std::shared_ptr<ShellWindow>> Application::shells() const {
  std::vector<std::shared_ptr<ShellWindow>> found;
  for (const auto& window : windows()) found.push_back(std::dynamic_pointer_cast<ShellWindow>(window));
  return found;
}

std::shared_ptr<ShellWindow> Application::windowOf(Widget widget) const {
  while (widget != nullptr && !XtIsShell(widget)) widget = XtParent(widget);
  const auto all = shells();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const auto& window) { return window->shell() == widget && widget != nullptr; });
  return found == all.end() ? nullptr : *found;
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

void Application::busyShown() {
  for (const auto& window : shells()) window->showBusy(isBusy());
  // What follows is usually a call that blocks: what the user should see meanwhile must be on the screen now.
  TextView::paintAllPending();
  XFlush(display_);
}

std::shared_ptr<BaseTask> Application::makeTask() { return std::make_shared<TaskWindow>(); }
std::shared_ptr<BaseDialog> Application::makeDialog() { return std::make_shared<Dialog>(); }
std::shared_ptr<BaseDocument> Application::makeDocument() { return std::make_shared<Document>(); }

}  // namespace xvt

void xvt_app_offer_screen() {
  xvt::offerRuntime([](int argc, char** argv, const XVT_CONFIG& config) -> std::unique_ptr<xvt::Desk> {
    auto application = std::make_unique<xvt::Application>(config);
    if (!application->open(argc, argv)) return nullptr;
    return application;
  });
}
