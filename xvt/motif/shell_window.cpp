#include "xvt/motif/shell_window.h"

#include <X11/Shell.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <Xm/BulletinB.h>
#include <Xm/MwmUtil.h>
#include <Xm/Protocols.h>

#include <algorithm>
#include <map>

#include "xvt/layout/placement.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/introduce.h"

namespace xvt {

namespace {

// What a window manager's frame usually adds, for placing windows that have none yet.
constexpr int kFrameTop = 28;
constexpr int kFrameSide = 6;

/// Where the user left windows that were closed, by name.
std::map<std::string, PNT>& leftPlaces() {
  static std::map<std::string, PNT> places;
  return places;
}

Extent screenSize() {
  Screen* screen = XtScreen(app().shell());
  return {WidthOfScreen(screen), HeightOfScreen(screen)};
}

/// What a frame adds to a window.
Extent frame() {
  if (!app().hasWindowManager()) return {2, 2};  // our own line
  return {2 * kFrameSide, kFrameTop + kFrameSide};
}

Extent framed(Extent size) { return {size.width + frame().width, size.height + frame().height}; }

Extent inside(const RCT& outer) {
  return {outer.right - outer.left - frame().width, outer.bottom - outer.top - frame().height};
}

std::shared_ptr<ShellWindow> speakingShell() { return std::dynamic_pointer_cast<ShellWindow>(app().speaker()); }

PNT corner(const RCT& rectangle) { return PNT{rectangle.top, rectangle.left}; }

}  // namespace

void ShellWindow::createShell(const std::string& widgetName, const std::string& title, bool modal) {
  setModal(modal);
  std::vector<Arg> args(4);
  // Where nothing draws frames, a line shows where one window ends and the next begins.
  XtSetArg(args[2], const_cast<char*>(XmNborderWidth), app().hasWindowManager() ? 0 : 1);
  XtSetArg(args[3], const_cast<char*>(XmNborderColor), app().look().pixel(color::kFaint));
  XtSetArg(args[0], const_cast<char*>(XmNdeleteResponse), XmDO_NOTHING);
  XtSetArg(args[1], const_cast<char*>(XmNmwmInputMode), modal ? MWM_INPUT_FULL_APPLICATION_MODAL : MWM_INPUT_MODELESS);
  Widget shell = XtCreatePopupShell(widgetName.c_str(), modal ? transientShellWidgetClass : topLevelShellWidgetClass,
                                    app().shell(), args.data(), static_cast<Cardinal>(args.size()));
  adoptShell(shell, title);
}

void ShellWindow::adoptShell(Widget shell, const std::string& title) {
  shell_ = shell;
  app().look().dress(shell_);
  setTitle(title);
  listen();
}

void ShellWindow::createBoard() {
  board_ = XtVaCreateManagedWidget("board", xmBulletinBoardWidgetClass, shell_, XmNresizePolicy, XmRESIZE_NONE,
                                   XmNdefaultPosition, False, XmNautoUnmanage, False, nullptr);
  onEvent(board_, StructureNotifyMask, [this](XEvent* event) {
    if (event->type == ConfigureNotify && !isDying()) arrangeContents(boardSize());
  });
}

void ShellWindow::listen() {
  const Atom remove = XInternAtom(XtDisplay(shell_), "WM_DELETE_WINDOW", False);
  XmAddWMProtocolCallback(
      shell_, remove,
      [](Widget, XtPointer self, XtPointer) {
        guarded(
            "close", [&] { static_cast<ShellWindow*>(self)->requestClose(); });
      },
      this);
  onEvent(shell_, FocusChangeMask, [this](XEvent* event) {
    if (event->xfocus.detail != NotifyPointer && event->xfocus.mode != NotifyGrab && event->xfocus.mode != NotifyUngrab)
      focusChanged(event->type == FocusIn);
  });
}

void ShellWindow::focusChanged(bool in) {
  if (isDying()) return;
  if (in) {
    // Whoever hands out the keyboard does not know which dialog has the word.
    if (const auto blocker = app().blockerOf(*this)) return blocker->takeFocus();
    app().setActive(shared_from_this());
  }
  EVENT event;
  event.type = E_FOCUS;
  event.focus.active = in;
  tell(event);
}

void ShellWindow::setTitle(const std::string& title) {
  BaseWindow::setTitle(title);
  XtVaSetValues(shell_, XmNtitle, title.c_str(), XmNiconName, title.c_str(), nullptr);
}

void ShellWindow::setEnabled(bool enabled) {
  BaseWindow::setEnabled(enabled);
  if (board_ != nullptr) XtSetSensitive(board_, enabled ? True : False);
}

// ---- showing ------------------------------------------------------------------------------------------------------

Extent ShellWindow::mostSize() {
  const Extent screen = screenSize();
  return {screen.width - frame().width, screen.height - frame().height};
}

int ShellWindow::placeStep() { return app().look().px(8); }

PNT ShellWindow::dialogPlace(Extent size) const {
  const auto from = opener();
  return isModal() && from ? middleOf(from->occupied(), framed(size))
                           : belowConsole(screenSize(), framed(size), placeStep());
}

WindowWish ShellWindow::wishFor(Extent size, PNT place) {
  const Extent screen = screenSize();
  return {size, size, place, RCT{0, 0, screen.height, screen.width}};
}

void ShellWindow::keepToUpperLeft(WindowWish* wish) { wish->bounds = upperLeft(screenSize()); }

/// The window that opens this one, else the newest one.
std::shared_ptr<ShellWindow> ShellWindow::opener() const {
  auto found = speakingShell();
  if (found && found.get() != this && found->isVisible()) return found;
  found = nullptr;
  for (const auto& other : app().shells())
    if (other.get() != this && other->isVisible()) found = other;
  return found;
}

/// Gives the window its place and size, which are not shown yet.
void ShellWindow::findPlace(WindowWish wish, Extent smallest) {
  wish.size = framed(wish.size);
  wish.least = framed(wish.least);
  std::vector<Standing> standing;
  const auto from = opener();
  for (const auto& other : app().shells())
    if (other.get() != this && other->isVisible()) standing.push_back({other->occupied(), other == from});
  const auto left = leftPlaces().find(name());
  if (!isModal() && left != leftPlaces().end()) {
    // Back where the user left it, whatever it covers there; but not what it is opened from.
    wish.place = left->second;
    std::erase_if(standing, [](const Standing& one) { return !one.opener; });
  }
  const RCT place = placeWindow(screenSize(), standing, wish, placeStep());
  place_ = corner(place);
  resizeTo(inside(place), smallest);
  XtVaSetValues(shell_, XmNx, static_cast<Position>(place_.h), XmNy, static_cast<Position>(place_.v), nullptr);
}

void ShellWindow::open(WindowWish wish, Extent smallest, bool show) {
  wish.size.width = std::clamp(wish.size.width, 1, mostSize().width);
  wish.size.height = std::clamp(wish.size.height, 1, mostSize().height);
  findPlace(wish, smallest);
  XtRealizeWidget(shell_);
  introduceWindow(shell_, isModal());
  hintPlace();
  arrangeContents(size_);
  if (show)
    popUp();
  else
    wishLater_ = wish;
}

void ShellWindow::hintPlace() const {
  // Window managers keep a place only if they are told that it was chosen on purpose.
  XSizeHints* hints = XAllocSizeHints();
  long supplied = 0;
  if (hints != nullptr && XGetWMNormalHints(XtDisplay(shell_), XtWindow(shell_), hints, &supplied) != 0) {
    hints->flags |= USPosition;
    hints->x = place_.h;
    hints->y = place_.v;
    XSetWMNormalHints(XtDisplay(shell_), XtWindow(shell_), hints);
  }
  if (hints != nullptr) XFree(hints);
}

void ShellWindow::resizeTo(Extent size, Extent least) {
  size_ = size;
  least_ = least;
  XtVaSetValues(shell_, XmNminWidth, std::min(least.width, size.width), XmNminHeight,
                std::min(least.height, size.height), XmNwidth, static_cast<Dimension>(size.width), XmNheight,
                static_cast<Dimension>(size.height), nullptr);
}

/// Tells the window manager to leave the keyboard where it is.
void ShellWindow::declineFocus() const {
  const long never = 0;
  XChangeProperty(XtDisplay(shell_), XtWindow(shell_), XInternAtom(XtDisplay(shell_), "_NET_WM_USER_TIME", False),
                  XA_CARDINAL, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(&never), 1);
}

/// What leaves the keyboard where it is leaves in sight, too, what it was opened from.
void ShellWindow::standBehind(const ShellWindow& from) const {
  const Extent size = framed(size_);
  if (overlap(RCT{place_.v, place_.h, place_.v + size.height, place_.h + size.width}, from.occupied()) == 0) return;
  XWindowChanges changes{};
  changes.sibling = XtWindow(from.shell());
  changes.stack_mode = Below;
  XReconfigureWMWindow(XtDisplay(shell_), XtWindow(shell_), XScreenNumberOfScreen(XtScreen(shell_)),
                       CWSibling | CWStackMode, &changes);
}

void ShellWindow::popUp() {
  if (isVisible()) return;
  app().stopChoosing(nullptr);
  setShown(true);
  if (!wantsFocus()) declineFocus();
  if (isModal()) {
    const auto parent = speakingShell();
    if (parent && parent.get() != this && XtIsRealized(parent->shell()))
      XSetTransientForHint(XtDisplay(shell_), XtWindow(shell_), XtWindow(parent->shell()));
  }
  if (shell_ == app().shell())
    XtMapWidget(shell_);
  else
    XtPopup(shell_, XtGrabNone);
  tellStarted(shell_);
  showBusy(app().isBusy());
  if (wantsFocus()) return takeFocus();
  if (const auto from = opener()) standBehind(*from);
}

void ShellWindow::popDown() {
  if (!isVisible()) return;
  app().stopChoosing(this);
  rememberPlace();
  if (isDying()) leftPlaces()[name()] = place_;
  setShown(false);
  if (shell_ == app().shell())
    XtUnmapWidget(shell_);
  else
    XtPopdown(shell_);
  const auto next = app().speaker();
  if (next && !app().hasWindowManager()) next->takeFocus();
}

void ShellWindow::rememberPlace() { place_ = corner(outerRect()); }

void ShellWindow::setVisible(bool visible) {
  if (visible == isVisible() || isDying() || !XtIsRealized(shell_)) return;
  if (!visible) return popDown();
  // A window that was made hidden stands beside what is open when it is first shown, not when it was made.
  if (wishLater_)
    findPlace(*wishLater_, least_);
  else
    XtVaSetValues(shell_, XmNx, static_cast<Position>(place_.h), XmNy, static_cast<Position>(place_.v), nullptr);
  wishLater_.reset();
  hintPlace();
  popUp();
}

void ShellWindow::raise() {
  if (isDying() || !XtIsRealized(shell_)) return;
  setVisible(true);
  XRaiseWindow(XtDisplay(shell_), XtWindow(shell_));
  if (app().hasWindowManager() && wantsFocus()) activate();
}

/// Asks the window manager for the keyboard.
void ShellWindow::activate() const {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = XtWindow(shell_);
  event.xclient.message_type = XInternAtom(XtDisplay(shell_), "_NET_ACTIVE_WINDOW", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = 1;  // a request of the application itself
  event.xclient.data.l[1] = static_cast<long>(XtLastTimestampProcessed(XtDisplay(shell_)));
  XSendEvent(XtDisplay(shell_), RootWindowOfScreen(XtScreen(shell_)), False,
             SubstructureNotifyMask | SubstructureRedirectMask, &event);
}

void ShellWindow::grabKeyboard() {
  XRaiseWindow(XtDisplay(shell_), XtWindow(shell_));
  if (app().hasWindowManager()) return activate();
  XSetInputFocus(XtDisplay(shell_), XtWindow(shell_), RevertToPointerRoot, CurrentTime);
}

void ShellWindow::showBusy(bool busy) {
  if (!XtIsRealized(shell_)) return;
  if (busy)
    XDefineCursor(XtDisplay(shell_), XtWindow(shell_), app().busyCursor());
  else
    XUndefineCursor(XtDisplay(shell_), XtWindow(shell_));
}

// ---- geometry -----------------------------------------------------------------------------------------------------

Extent ShellWindow::boardSize() const {
  Dimension width = 0;
  Dimension height = 0;
  XtVaGetValues(board_, XmNwidth, &width, XmNheight, &height, nullptr);
  return {width, height};
}

RCT ShellWindow::clientRect() const {
  const Extent size = boardSize();
  return RCT{0, 0, size.height, size.width};
}

/// The frame's corner, where move() puts it, and the window's own size.
RCT ShellWindow::outerRect() const {
  const RCT frame = occupied();
  Dimension width = 0;
  Dimension height = 0;
  XtVaGetValues(shell_, XmNwidth, &width, XmNheight, &height, nullptr);
  return RCT{frame.top, frame.left, frame.top + height, frame.left + width};
}

/// What the window covers. A window manager takes its time: until it has done its work, what it will probably be.
RCT ShellWindow::occupied() const {
  RCT frame;
  if (isVisible() && frameOf(shell_, &frame)) return frame;
  const Extent outer = framed(size_);
  return RCT{place_.v, place_.h, place_.v + outer.height, place_.h + outer.width};
}

void ShellWindow::move(const RCT& rectangle) {
  const Extent size{rectangle.right - rectangle.left, rectangle.bottom - rectangle.top};
  place_ = onScreen(screenSize(), PNT{rectangle.top, rectangle.left}, size);
  resizeTo(size, least_);
  XtVaSetValues(shell_, XmNx, static_cast<Position>(place_.h), XmNy, static_cast<Position>(place_.v), nullptr);
}

// ---- the end ------------------------------------------------------------------------------------------------------

void ShellWindow::dissolve() {
  if (shell_ != nullptr && shell_ != app().shell()) XtDestroyWidget(shell_);
  shell_ = board_ = nullptr;
}

}  // namespace xvt
