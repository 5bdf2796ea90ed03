/// Checked calls: windows, dialogs, and what windows and controls have in common.
#include "xvt/check/check.h"

using namespace xvt;

namespace {

bool isDefinition(const WIN_DEF* definition, const char* function) {
  if (definition != nullptr && definition->type == W_DOC) return true;
  report(function, definition == nullptr ? "no definition" : "the definition does not begin with a W_DOC");
  return false;
}

bool canCreate(EVENT_HANDLER handler, const char* function) {
  if (!runtime::hasDisplay()) return false;
  if (handler != nullptr && runtime::isRunning()) return true;
  report(function, handler == nullptr ? "no handler" : "the application is not running");
  return false;
}

WINDOW createDialog(WIN_TYPE type, const DLG_RES& table, EVENT_HANDLER handler, void* data, const char* function) {
  if (!canCreate(handler, function)) return NULL_WIN;
  if (type != WD_MODAL && type != WD_MODELESS) {
    report(function, "neither WD_MODAL nor WD_MODELESS");
    return NULL_WIN;
  }
  const auto dialog = runtime::createDialog(type == WD_MODAL, table, handler, data);
  return dialog ? dialog->handle() : NULL_WIN;
}

}  // namespace

WINDOW xvt_win_create_def(const WIN_DEF* definition, WINDOW parent, EVENT_HANDLER handler, void* data) {
  if (!isDefinition(definition, __func__) || !canCreate(handler, __func__) || !needWindow(parent, __func__))
    return NULL_WIN;
  const auto window = runtime::createDocument(definition, handler, data);
  return window ? window->handle() : NULL_WIN;
}

WINDOW xvt_dlg_create_res(WIN_TYPE type, int resource, EVENT_HANDLER handler, void* data) {
  const DLG_RES* table = findDialog(resource);
  if (table != nullptr) return createDialog(type, *table, handler, data, __func__);
  report(__func__, "no dialog with number " + std::to_string(resource));
  return NULL_WIN;
}

WINDOW xvt_dlg_create_table(WIN_TYPE type, const DLG_RES* table, EVENT_HANDLER handler, void* data) {
  if (table != nullptr) return createDialog(type, *table, handler, data, __func__);
  report(__func__, "no table");
  return NULL_WIN;
}

WINDOW xvt_win_get_ctl(WINDOW window, int id) {
  const auto owner = needWindow(window, __func__);
  const auto control = owner ? owner->control(id) : nullptr;
  return control ? control->handle() : NULL_WIN;
}

long xvt_win_dispatch_event(WINDOW window, EVENT* event) {
  const auto receiver = Registry::instance().find<Window>(window);
  if (!receiver) return 0;
  if (event != nullptr) return runtime::deliver(receiver, *event);
  report(__func__, "no event");
  return 0;
}

void xvt_vobj_destroy(WINDOW window) {
  if (const auto found = Registry::instance().find<Window>(window))
    found->destroy();
  else if (Registry::instance().find(window))
    report(__func__, "not a window");
}

bool xvt_vobj_is_valid(WINDOW window) { return Registry::instance().find<VisibleObject>(window) != nullptr; }

void* xvt_vobj_get_data(WINDOW window) {
  const auto object = needVisible(window, __func__);
  return object ? object->data : nullptr;
}

void xvt_vobj_set_data(WINDOW window, void* data) {
  if (const auto object = needVisible(window, __func__)) object->data = data;
}

void xvt_vobj_set_title(WINDOW window, const char* title) {
  const auto object = drawn(needVisible(window, __func__));
  if (object && hasText(title, __func__)) object->setTitle(validUtf8(title));
}

char* xvt_vobj_get_title(WINDOW window, char* buffer, std::size_t size) {
  const auto object = needVisible(window, __func__);
  return copyOut(object ? object->title() : std::string(), buffer, size, __func__);
}

char* xvt_vobj_get_name(WINDOW window, char* buffer, std::size_t size) {
  const auto found = needWindow(window, __func__);
  return copyOut(found ? found->name() : std::string(), buffer, size, __func__);
}

void xvt_vobj_set_enabled(WINDOW window, bool enabled) {
  if (const auto object = drawn(needVisible(window, __func__))) object->setEnabled(enabled);
}

bool xvt_vobj_is_enabled(WINDOW window) {
  const auto object = needVisible(window, __func__);
  return object && object->isEnabled();
}

void xvt_vobj_set_visible(WINDOW window, bool visible) {
  if (const auto object = drawn(needVisible(window, __func__))) object->setVisible(visible);
}

bool xvt_vobj_is_visible(WINDOW window) {
  const auto object = needVisible(window, __func__);
  return object && object->isVisible();
}

void xvt_vobj_raise(WINDOW window) {
  if (const auto object = drawn(needVisible(window, __func__))) object->raise();
}

void xvt_vobj_set_focus(WINDOW window) {
  if (const auto object = drawn(needVisible(window, __func__))) object->takeFocus();
}

void xvt_vobj_get_client_rect(WINDOW window, RCT* rectangle) {
  const auto object = drawn(needVisible(window, __func__));
  if (hasText(rectangle, __func__)) *rectangle = object ? object->clientRect() : RCT{};
}

void xvt_vobj_get_outer_rect(WINDOW window, RCT* rectangle) {
  const auto object = drawn(needVisible(window, __func__));
  if (hasText(rectangle, __func__)) *rectangle = object ? object->outerRect() : RCT{};
}

void xvt_vobj_move(WINDOW window, const RCT* rectangle) {
  const auto object = drawn(needVisible(window, __func__));
  if (!object || !hasText(rectangle, __func__)) return;
  if (rectangle->bottom > rectangle->top && rectangle->right > rectangle->left)
    object->move(*rectangle);
  else
    report(__func__, "the rectangle is empty");
}
