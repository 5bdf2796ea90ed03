/// Checked calls: the application, its resources, menus and timers.
#include "xvt/check/check.h"

namespace xvt {

namespace {

RESOURCES& tables() {
  static RESOURCES given{};
  return given;
}

template <typename Table>
const Table* findTable(const Table* first, std::size_t count, int id) {
  for (std::size_t at = 0; at < count; ++at)
    if (first[at].id == id) return &first[at];
  return nullptr;
}

bool isRunning(const char* function) {
  if (runtime::isRunning()) return true;
  report(function, "the application is not running");
  return false;
}

bool noSuchItem(const char* function, int command) {
  report(function, "no menu item with command " + std::to_string(command));
  return false;
}

}  // namespace

const RESOURCES& resources() { return tables(); }
const DLG_RES* findDialog(int resource) { return findTable(tables().dialogs, tables().dialog_count, resource); }
const MENU_RES* findMenu(int resource) { return findTable(tables().menus, tables().menu_count, resource); }

}  // namespace xvt

using namespace xvt;

void xvt_res_use(const RESOURCES* given) {
  if (given == nullptr) return report("xvt_res_use", "no tables");
  tables() = *given;
}

int xvt_app_create(int argc, char** argv, unsigned long, EVENT_HANDLER handler, const XVT_CONFIG* config) {
  if (handler == nullptr || config == nullptr || argv == nullptr) {
    report("xvt_app_create", "no handler, configuration or arguments");
    return 2;
  }
  if (runtime::isRunning()) {
    report("xvt_app_create", "the application is running already");
    return 2;
  }
  return runtime::run(argc, argv, handler, *config);
}

void xvt_app_destroy() {
  if (isRunning("xvt_app_destroy")) runtime::end();
}

void xvt_app_allow_quit() {
  if (isRunning("xvt_app_allow_quit")) runtime::allowQuit();
}

void xvt_app_process_pending_events() {
  if (isRunning("xvt_app_process_pending_events")) runtime::processPendingEvents();
}

bool xvt_app_is_ending() { return runtime::isEnding(); }

void xvt_app_set_busy(bool busy) {
  if (isRunning("xvt_app_set_busy") && runtime::hasDisplay()) runtime::setBusy(busy);
}

void xvt_scr_beep() {
  if (isRunning("xvt_scr_beep") && runtime::hasDisplay()) runtime::bell();
}

void xvt_menu_set_item_checked(WINDOW window, int command, bool checked) {
  if (drawn(needWindow(window, __func__)) && !runtime::setItemChecked(command, checked)) noSuchItem(__func__, command);
}

bool xvt_menu_is_item_checked(WINDOW window, int command) {
  return needWindow(window, __func__) && runtime::isItemChecked(command);
}

void xvt_menu_set_item_enabled(WINDOW window, int command, bool enabled) {
  if (drawn(needWindow(window, __func__)) && !runtime::setItemEnabled(command, enabled)) noSuchItem(__func__, command);
}

bool xvt_menu_is_item_enabled(WINDOW window, int command) {
  return needWindow(window, __func__) && runtime::isItemEnabled(command);
}

long xvt_timer_create(WINDOW window, long milliseconds) {
  const auto owner = needWindow(window, __func__);
  if (!owner) return 0;
  if (milliseconds > 0) return runtime::createTimer(owner, milliseconds);
  report(__func__, "the period is not above 0");
  return 0;
}

void xvt_timer_destroy(long timer) {
  // A timer dies with its window; destroying it afterwards is what an orderly job does.
  if (timer != 0) runtime::destroyTimer(timer);
}
