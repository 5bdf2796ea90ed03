#include "tests/support/toolkit_double.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

ToolkitDouble* standing = nullptr;

}  // namespace

ToolkitDouble& ToolkitDouble::current() {
  if (standing == nullptr) new ToolkitDouble;  // stays, reached through `standing`
  return *standing;
}

ToolkitDouble::ToolkitDouble() : previous_(std::exchange(standing, this)) {}

ToolkitDouble::~ToolkitDouble() {
  for (const std::string& line : failures) ADD_FAILURE() << line;
  standing = previous_;
}

ToolkitDouble::Object* ToolkitDouble::find(WINDOW handle) {
  const auto found = objects.find(handle);
  return found != objects.end() ? &found->second : nullptr;
}

WINDOW ToolkitDouble::add(Object object) {
  const WINDOW handle = nextHandle++;
  objects.emplace(handle, std::move(object));
  return handle;
}

WINDOW ToolkitDouble::control(WINDOW window, int id) {
  Object* object = find(window);
  if (object == nullptr) return NULL_WIN;
  const auto known = object->controls.find(id);
  if (known != object->controls.end()) return known->second;
  if (object->table != nullptr || object->type == W_DOC) return NULL_WIN;
  Object made;
  made.id = id;
  made.owner = window;
  const WINDOW handle = add(std::move(made));
  find(window)->controls[id] = handle;
  return handle;
}

long ToolkitDouble::send(WINDOW window, EVENT event) {
  const Object* object = find(window);
  return object != nullptr && object->handler != nullptr ? object->handler(window, &event) : 0;
}

void ToolkitDouble::sendControl(WINDOW control, CTL_ACTION what) {
  const Object* object = find(control);
  if (object == nullptr) return;
  EVENT event;
  event.type = E_CONTROL;
  event.ctl.id = object->id;
  event.ctl.what = what;
  send(object->owner, event);
}

ToolkitDouble::Object* ToolkitDouble::usable(WINDOW window, int id, const char* action) {
  Object* object = find(control(window, id));
  const char* reason = find(window) == nullptr ? "the window is not open"
                       : object == nullptr     ? "there is no such control"
                       : !object->usable       ? "it is disabled"
                       : !object->shown        ? "it is hidden"
                                               : nullptr;
  if (reason == nullptr) return object;
  fail(std::string("cannot ") + action + " control " + std::to_string(id) + ": " + reason);
  return nullptr;
}

void ToolkitDouble::onModal(int resource, ModalScript script) { modals[resource].push_back(std::move(script)); }

void ToolkitDouble::openTaskWindow(EVENT_HANDLER handler) {
  Object task;
  task.type = W_DOC;
  task.name = "task";
  task.handler = handler;
  objects[TASK_WIN] = std::move(task);
  EVENT create;
  create.type = E_CREATE;
  send(TASK_WIN, create);
}

void ToolkitDouble::advance(long milliseconds) {
  now += milliseconds;
  std::vector<long> ids;
  for (const auto& [id, timer] : timers) ids.push_back(id);
  for (const long id : ids) {
    const auto found = timers.find(id);
    if (found == timers.end() || found->second.due > now) continue;
    found->second.due = now + found->second.period;
    EVENT event;
    event.type = E_TIMER;
    event.timer.id = id;
    send(found->second.window, event);
  }
}

// ---- what the user does -----------------------------------------------------------------------------------------

void ToolkitDouble::press(WINDOW window, int id) {
  if (usable(window, id, "press")) sendControl(control(window, id), CTL_PRESS);
}

void ToolkitDouble::typeInto(WINDOW window, int id, const std::string& typed) {
  Object* edit = usable(window, id, "type into");
  if (edit == nullptr) return;
  const WINDOW handle = control(window, id);
  sendControl(handle, CTL_FOCUS_GAIN);
  if (find(handle) != nullptr) find(handle)->title = typed;
  sendControl(handle, CTL_EDITED);
  sendControl(handle, CTL_FOCUS_LOSS);
}

void ToolkitDouble::select(WINDOW window, int id, int row) {
  Object* list = usable(window, id, "select in");
  if (list == nullptr) return;
  if (row < 0 || static_cast<std::size_t>(row) >= list->rows.size())
    return fail("cannot select row " + std::to_string(row) + " of control " + std::to_string(id) + ": no such row");
  for (Row& each : list->rows) each.selected = false;
  selectAlso(window, id, row);
}

void ToolkitDouble::select(WINDOW window, int id, const std::string& rowText) {
  const std::vector<std::string> all = rows(window, id);
  const auto found = std::find(all.begin(), all.end(), rowText);
  if (found == all.end()) return fail("no row \"" + rowText + "\" in control " + std::to_string(id));
  select(window, id, static_cast<int>(found - all.begin()));
}

void ToolkitDouble::selectAlso(WINDOW window, int id, int row) {
  Object* list = usable(window, id, "select in");
  if (list == nullptr || static_cast<std::size_t>(row) >= list->rows.size()) return;
  list->rows[static_cast<std::size_t>(row)].selected = true;
  sendControl(control(window, id), CTL_SELECT);
}

void ToolkitDouble::doubleClick(WINDOW window, int id, int row) {
  select(window, id, row);
  sendControl(control(window, id), CTL_DOUBLE);
}

void ToolkitDouble::chooseMenu(int command) {
  if (!menus[command].usable) return fail("menu command " + std::to_string(command) + " is disabled");
  EVENT event;
  event.type = E_COMMAND;
  event.cmd.tag = command;
  send(TASK_WIN, event);
}

void ToolkitDouble::close(WINDOW window) {
  EVENT event;
  event.type = E_CLOSE;
  send(window, event);
}

// ---- what there is to see ---------------------------------------------------------------------------------------

std::string ToolkitDouble::text(WINDOW window, int id) {
  const Object* object = find(control(window, id));
  return object != nullptr ? object->title : "";
}

bool ToolkitDouble::checked(WINDOW window, int id) {
  const Object* object = find(control(window, id));
  return object != nullptr && object->marked;
}

bool ToolkitDouble::enabled(WINDOW window, int id) {
  const Object* object = find(control(window, id));
  return object != nullptr && object->usable;
}

bool ToolkitDouble::visible(WINDOW window, int id) {
  const Object* object = find(control(window, id));
  return object != nullptr && object->shown;
}

std::vector<std::string> ToolkitDouble::rows(WINDOW window, int id) {
  std::vector<std::string> texts;
  if (const Object* object = find(control(window, id)))
    for (const Row& row : object->rows) texts.push_back(row.text);
  return texts;
}

std::vector<std::string> ToolkitDouble::selected(WINDOW window, int id) {
  std::vector<std::string> texts;
  if (const Object* object = find(control(window, id)))
    for (const Row& row : object->rows)
      if (row.selected) texts.push_back(row.text);
  return texts;
}

std::vector<std::string> ToolkitDouble::lines(WINDOW window) {
  for (const auto& [handle, object] : objects)
    if (object.type == WC_TEXTEDIT && object.owner == window) return object.lines;
  return {};
}

std::string ToolkitDouble::title(WINDOW window) {
  const Object* object = find(window);
  return object != nullptr ? object->title : "";
}

WINDOW ToolkitDouble::dialog(int resource) {
  WINDOW newest = NULL_WIN;
  for (const auto& [handle, object] : objects)
    if ((object.type == WD_MODAL || object.type == WD_MODELESS) && object.id == resource) newest = handle;
  return newest;
}

WINDOW ToolkitDouble::windowTitled(const std::string& wanted) {
  WINDOW newest = NULL_WIN;
  for (const auto& [handle, object] : objects)
    if (object.type != W_NONE && object.type != WC_TEXTEDIT && object.title == wanted) newest = handle;
  return newest;
}
