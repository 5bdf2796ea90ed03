/// The owner of a selection may take seconds to answer, or never do so, and the intrinsics wait for it in the name of
/// the widget that asked, whether that still lives or not. So the task window's shell asks, which outlives every
/// dialog, and the field is known by its handle.
#include "xvt/motif/paste.h"

#include <X11/Xatom.h>
#include <Xm/TextF.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include "xvt/base/utf8.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

constexpr std::size_t kMostBytes = 65536;

/// One paste under way.
struct Request {
  long field;
  Atom selection;
  Time time;
  Atom target;
};

void ask(std::unique_ptr<Request> request);

/// One line of valid UTF-8, as a field can hold it.
std::string oneLine(const Request& request, const char* bytes, std::size_t length) {
  std::string text;
  for (const char byte : std::string_view(bytes, std::min(length, kMostBytes))) {
    const auto code = static_cast<unsigned char>(byte);
    if (request.target == XA_STRING && code >= 0x80) {  // Latin-1
      text += static_cast<char>(0xC0U | (code >> 6U));
      text += static_cast<char>(0x80U | (code & 0x3FU));
    } else {
      text += code < ' ' ? ' ' : byte;
    }
  }
  while (text.ends_with(' ')) text.pop_back();
  return validUtf8(text);
}

void deliver(const Request& request, const char* bytes, std::size_t length) {
  const auto field = Registry::instance().find<EditItem>(request.field);
  if (!field || field->dialog().isDying() || app().blockerOf(field->dialog())) return;
  if (XmGetFocusWidget(field->dialog().shell()) == field->widget()) field->insert(oneLine(request, bytes, length));
}

void arrived(Widget, XtPointer closure, Atom*, Atom* type, XtPointer value, unsigned long* length, int* format) {
  std::unique_ptr<Request> request(static_cast<Request*>(closure));
  const std::unique_ptr<char, void (*)(char*)> bytes(static_cast<char*>(value), XtFree);
  guarded("paste", [&] {
    if (bytes && *format == 8 && *length > 0) return deliver(*request, bytes.get(), *length);
    if (*type == XT_CONVERT_FAIL || request->target == XA_STRING) return;  // nobody answers, or nobody has a text
    request->target = XA_STRING;
    ask(std::move(request));
  });
}

void ask(std::unique_ptr<Request> request) {
  Request& asked = *request;
  XtGetSelectionValue(app().shell(), asked.selection, asked.target, arrived, request.release(), asked.time);
}

/// XvtEdit(command), a standard command or "primary"; without one it does nothing.
void editAction(Widget widget, XEvent* event, String* arguments, Cardinal* count) {
  static const std::map<std::string, int> commands{
      {"cut", M_EDIT_CUT}, {"copy", M_EDIT_COPY}, {"paste", M_EDIT_PASTE}, {"primary", 0}};
  guarded("edit", [&] {
    const auto dialog = std::dynamic_pointer_cast<Dialog>(app().windowOf(widget));
    const auto field = dialog ? std::dynamic_pointer_cast<EditItem>(dialog->itemOf(widget)) : nullptr;
    if (!field || *count != 1) return;
    const bool button = event->type == ButtonPress;
    if (button) field->takeFocus();
    const int command = commands.at(arguments[0]);
    if (command != 0)
      field->edit(command);
    else
      paste(*field, XA_PRIMARY, button ? event->xbutton.time : event->xkey.time);
  });
}

XtTranslations editTranslations() {
  static const XtTranslations table = [] {
    static char name[] = "XvtEdit";
    static XtActionsRec actions[] = {{name, editAction}};
    XtAppAddActions(app().context(), actions, XtNumber(actions));
    // Quick copies by a second selection, which wait in the field's name too, are left out altogether.
    return XtParseTranslationTable(
        "<Btn2Down>: XvtEdit(primary)\n"
        "<Btn2Motion>: XvtEdit()\n"
        "<Btn2Up>: XvtEdit()\n"
        "a <Btn1Down>: XvtEdit()\n"
        "a <Btn1Motion>: XvtEdit()\n"
        "a <Btn1Up>: XvtEdit()\n"
        ":s <Key>osfDelete: XvtEdit(cut)\n"
        ":<Key>osfCut: XvtEdit(cut)\n"
        ":c m <Key>osfInsert: XvtEdit(primary)\n"
        ":c a <Key>osfInsert: XvtEdit(primary)\n"
        ":s <Key>osfInsert: XvtEdit(paste)\n"
        ":c <Key>osfInsert: XvtEdit(copy)\n"
        ":<Key>osfCopy: XvtEdit(copy)\n"
        ":<Key>osfPaste: XvtEdit(paste)\n"
        ":<Key>osfPrimaryPaste: XvtEdit(primary)");
  }();
  return table;
}

}  // namespace

void listenForPastes(Widget field) {
  XtOverrideTranslations(field, editTranslations());
  onCallback(field, XmNdestinationCallback, [](XtPointer data) {
    // A way of Motif's that is left (a drop, a key of the user's own resources) is refused before it asks for anything.
    XmTransferDone(static_cast<XmDestinationCallbackStruct*>(data)->transfer_id, XmTRANSFER_DONE_FAIL);
  });
}

void paste(const EditItem& field, Atom selection, Time time) {
  ask(std::make_unique<Request>(
      Request{field.handle(), selection, time, XInternAtom(app().display(), "UTF8_STRING", False)}));
}

}  // namespace xvt
