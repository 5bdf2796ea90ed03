/// What comes and goes are client messages: Enter, Position (answered by Status), then Leave, or Drop. Behind a Drop
/// the files are asked for as a selection, and Finished tells the source that it may forget them. Motif's own drag and
/// drop speaks other messages, and neither hears of the other.
#include "xvt/motif/drop.h"

#include <X11/Xatom.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "xvt/base/urilist.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

constexpr long kVersion = 5;
constexpr const char* kFiles = "text/uri-list";

/// What is being dragged; there is one pointer.
struct Drag {
  ::Window source = 0;
  bool hasFiles = false;
  PNT where{};      ///< on the screen
  long dialog = 0;  ///< its handle, from the drop on
};
Drag drag;

using Data = std::array<long, 5>;

void send(::Window to, const char* message, ::Window from, long second, long fifth, Atom third = 0) {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.display = app().display();
  event.xclient.window = to;
  event.xclient.message_type = atom(message);
  event.xclient.format = 32;
  const Data data{static_cast<long>(from), second, static_cast<long>(third), 0, fifth};
  std::ranges::copy(data, event.xclient.data.l);
  XSendEvent(app().display(), to, False, NoEventMask, &event);
}

/// The kinds that the source has, beyond the three that stand in the message.
std::vector<Atom> listedKinds(::Window source) {
  constexpr long kMost = 1000;
  Atom type = 0;
  int format = 0;
  unsigned long count = 0;
  unsigned long left = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(app().display(), source, atom("XdndTypeList"), 0, kMost, False, XA_ATOM, &type, &format, &count,
                     &left, &data);
  const std::unique_ptr<unsigned char, int (*)(void*)> kept(data, XFree);
  if (type != XA_ATOM || format != 32 || data == nullptr) return {};
  const auto* atoms = reinterpret_cast<const Atom*>(data);
  return {atoms, atoms + count};
}

void enter(const XClientMessageEvent& message) {
  drag = {.source = static_cast<::Window>(message.data.l[0])};
  std::vector<Atom> kinds(message.data.l + 2, message.data.l + 5);
  if ((message.data.l[1] & 1) != 0) kinds = listedKinds(drag.source);
  drag.hasFiles = std::ranges::count(kinds, atom(kFiles)) > 0;
}

bool isWelcome(const Dialog& dialog) { return drag.hasFiles && dialog.isEnabled() && !dialog.fileButtons().empty(); }

void position(const Dialog& dialog, const XClientMessageEvent& message) {
  constexpr long kLow = 0xFFFF;
  constexpr int kHigh = 16;
  constexpr long kTellEachMove = 2;
  drag.where = {static_cast<COORD>(message.data.l[2] & kLow), static_cast<COORD>((message.data.l[2] >> kHigh) & kLow)};
  const bool welcome = isWelcome(dialog);
  send(drag.source, "XdndStatus", XtWindow(dialog.shell()), kTellEachMove | (welcome ? 1 : 0),
       welcome ? static_cast<long>(atom("XdndActionCopy")) : 0);
}

/// The source may forget the files: they are known here, or not wanted.
void finish(const Drag& done, bool taken) {
  const auto dialog = Registry::instance().find<Dialog>(done.dialog);
  const ::Window window = dialog ? XtWindow(dialog->shell()) : None;
  send(done.source, "XdndFinished", window, taken ? 1 : 0, 0, taken ? atom("XdndActionCopy") : 0);
  XFlush(app().display());
}

void take(const Drag& done, const std::vector<std::string>& files) {
  const auto dialog = Registry::instance().find<Dialog>(done.dialog);
  if (!dialog || files.empty()) return app().bell();
  Position left = 0;
  Position top = 0;
  XtTranslateCoords(dialog->board(), 0, 0, &left, &top);
  dialog->takeFiles(files, {done.where.v - top, done.where.h - left});
}

void filesArrived(Widget, XtPointer closure, Atom*, Atom*, XtPointer value, unsigned long* length, int* format) {
  const std::unique_ptr<Drag> done(static_cast<Drag*>(closure));
  const std::unique_ptr<char, void (*)(char*)> bytes(static_cast<char*>(value), XtFree);
  guarded("drop", [&] {
    std::vector<std::string> files;
    if (bytes && *format == 8) files = pathsOf({bytes.get(), *length});
    const auto dialog = Registry::instance().find<Dialog>(done->dialog);
    finish(*done, dialog && !files.empty());
    // Later: what the buttons do may last, and the intrinsics are in the middle of their answer.
    if (dialog) app().events().alarm(1, [where = *done, files] { take(where, files); });
  });
}

void drop(const Dialog& dialog, const XClientMessageEvent& message) {
  auto done = std::make_unique<Drag>(drag);
  done->dialog = dialog.handle();
  const bool welcome = isWelcome(dialog);
  drag = {};
  if (!welcome) return finish(*done, false);
  // In the name of a widget that outlives every dialog: the answer may take its time.
  XtGetSelectionValue(app().shell(), atom("XdndSelection"), atom(kFiles), filesArrived, done.release(),
                      static_cast<Time>(message.data.l[2]));
}

void hear(const Dialog& dialog, const XClientMessageEvent& message) {
  if (message.message_type == atom("XdndEnter")) return enter(message);
  // Whoever speaks without having entered, or after somebody else has, is not answered.
  if (drag.source == 0 || static_cast<::Window>(message.data.l[0]) != drag.source) return;
  if (message.message_type == atom("XdndPosition")) position(dialog, message);
  if (message.message_type == atom("XdndDrop")) drop(dialog, message);
  if (message.message_type == atom("XdndLeave")) drag = {};
}

void messageCame(Widget shell, XtPointer, XEvent* event, Boolean*) {
  if (event->type != ClientMessage || event->xclient.format != 32) return;
  guarded("drag", [&] {
    if (const auto dialog = std::dynamic_pointer_cast<Dialog>(app().windowOf(shell))) hear(*dialog, event->xclient);
  });
}

}  // namespace

void listenForDrops(Widget shell) {
  XtAddEventHandler(shell, NoEventMask, True, messageCame, nullptr);
  XChangeProperty(XtDisplay(shell), XtWindow(shell), atom("XdndAware"), XA_ATOM, 32, PropModeReplace,
                  reinterpret_cast<const unsigned char*>(&kVersion), 1);
}

}  // namespace xvt
