// The xvt_* calls answered from the records of the toolkit double.
#include "tests/support/toolkit_double.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "xvt/base/text.h"

namespace {

using Object = ToolkitDouble::Object;

ToolkitDouble& kit() { return ToolkitDouble::current(); }

bool isContainer(ITEM_KIND kind) { return kind <= IK_END; }

void report(const char* function, const char* reason) {
  kit().reports.push_back(std::string(function) + ": " + reason);
}

/// The object of a handle, or null after a report: what the check floor does.
Object* checkedObject(WINDOW handle, const char* function) {
  Object* object = kit().find(handle);
  if (object == nullptr) report(function, handle == NULL_WIN ? "no window" : "the window is dead");
  return object;
}

Object* ofKind(WINDOW handle, std::initializer_list<int> kinds, const char* function) {
  Object* object = checkedObject(handle, function);
  if (object == nullptr || object->kind == ToolkitDouble::ANY_KIND) return object;
  if (object->type == W_NONE && std::find(kinds.begin(), kinds.end(), object->kind) != kinds.end()) return object;
  report(function, "not a control of that kind");
  return nullptr;
}

Object* listOf(WINDOW handle, const char* function) { return ofKind(handle, {IK_LIST, IK_MULTI, IK_OPTION}, function); }

Object* markOf(WINDOW handle, const char* function) { return ofKind(handle, {IK_CHECK, IK_RADIO}, function); }

Object* textOf(TXEDIT handle, const char* function) {
  Object* object = checkedObject(handle, function);
  if (object == nullptr || object->type == WC_TEXTEDIT) return object;
  report(function, "not a text field");
  return nullptr;
}

bool rowInRange(const Object* list, int row, const char* function) {
  if (list == nullptr) return false;
  if (row >= 0 && static_cast<std::size_t>(row) < list->rows.size()) return true;
  report(function, "no such row");
  return false;
}

char* copyOut(const std::string& text, char* buffer, std::size_t size) {
  if (buffer != nullptr && size > 0) std::snprintf(buffer, size, "%s", text.c_str());
  return buffer;
}

std::string withoutMnemonic(const char* label) {
  std::string text = label != nullptr ? label : "";
  std::erase(text, '~');
  return text;
}

Object controlFromTable(const DLG_ITEM& item, WINDOW owner) {
  Object control;
  control.kind = item.kind;
  control.id = item.id;
  control.name = item.name != nullptr ? item.name : "";
  control.title = withoutMnemonic(item.label);
  control.owner = owner;
  control.shown = (item.flags & IF_HIDDEN) == 0;
  control.usable = (item.flags & IF_DISABLED) == 0;
  return control;
}

void addControls(WINDOW dialog, const DLG_RES& table) {
  for (std::size_t at = 0; at < table.count; ++at) {
    const DLG_ITEM& item = table.items[at];
    if (isContainer(item.kind) || item.id == 0 || belongsToField(table, item)) continue;
    const WINDOW control = kit().add(controlFromTable(item, dialog));
    kit().find(dialog)->controls[item.id] = control;
  }
}

void runModal(WINDOW dialog, int resource) {
  ToolkitDouble& k = kit();
  const std::string name = "modal dialog " + std::to_string(resource);
  auto& scripts = k.modals[resource];
  if (scripts.empty()) {
    k.fail(name + " was opened, but nobody answers it");
  } else {
    const ToolkitDouble::ModalScript script = std::move(scripts.front());
    scripts.pop_front();
    script(dialog);
    if (k.find(dialog) != nullptr && !k.ending) k.fail(name + " was left open");
  }
  if (k.find(dialog) != nullptr) k.close(dialog);
  xvt_vobj_destroy(dialog);
}

WINDOW createDialog(WIN_TYPE type, int resource, const DLG_RES* table, EVENT_HANDLER handler, void* data) {
  ToolkitDouble& k = kit();
  if (k.failing[resource] > 0) {
    k.failing[resource]--;
    return NULL_WIN;
  }
  Object dialog;
  dialog.type = type;
  dialog.id = resource;
  dialog.table = table;
  dialog.handler = handler;
  dialog.data = data;
  if (table != nullptr) {
    dialog.name = table->name;
    dialog.title = table->title != nullptr ? table->title : "";
  }
  const WINDOW handle = k.add(std::move(dialog));
  if (table != nullptr) addControls(handle, *table);
  k.opened.push_back(resource);
  EVENT create;
  create.type = E_CREATE;
  k.send(handle, create);
  if (type == WD_MODAL && k.find(handle) != nullptr) runModal(handle, resource);
  return handle;
}

FL_STATUS answerFromQueue(const char* title, const std::string& directory, const char* type, std::string* path) {
  ToolkitDouble& k = kit();
  k.fileRequests.push_back({title, directory, type});
  if (k.fileAnswers.empty()) {
    k.fail(std::string("file box \"") + title + "\" was opened, but nobody answers it");
    return FL_CANCEL;
  }
  const ToolkitDouble::FileAnswer answer = k.fileAnswers.front();
  k.fileAnswers.pop_front();
  *path = answer.path;
  return answer.status;
}

FL_STATUS answerFile(FILE_SPEC* file, const char* title) {
  std::string path;
  const FL_STATUS status = answerFromQueue(title, file->dir.path, file->type, &path);
  if (status != FL_OK) return status;
  const std::size_t slash = path.rfind('/');
  if (slash != std::string::npos) copyOut(slash == 0 ? "/" : path.substr(0, slash), file->dir.path, SZ_DIR);
  copyOut(slash == std::string::npos ? path : path.substr(slash + 1), file->name, SZ_NAME);
  return FL_OK;
}

constexpr COORD LINE_HEIGHT = 14;
constexpr COORD CHARACTER_WIDTH = 7;

T_LNUM lastOrigin(const Object& text) {
  const T_LNUM visible = std::max<T_LNUM>(1, (text.place.bottom - text.place.top) / LINE_HEIGHT);
  return std::max<T_LNUM>(0, static_cast<T_LNUM>(text.lines.size()) - visible);
}

}  // namespace

// ---- application ------------------------------------------------------------------------------------------------

int xvt_app_create(int, char**, unsigned long, EVENT_HANDLER handler, const XVT_CONFIG*) {
  kit().ending = false;
  kit().openTaskWindow(handler);
  if (kit().onMainLoop) kit().onMainLoop();
  kit().ending = true;
  for (const auto& [handle, object] : std::map<WINDOW, Object>(kit().objects))
    if (handle != TASK_WIN && object.type != W_NONE && object.type != WC_TEXTEDIT) xvt_vobj_destroy(handle);
  xvt_vobj_destroy(TASK_WIN);
  return 0;
}

void xvt_app_destroy() { kit().ending = true; }

void xvt_app_allow_quit() { kit().quitAllowed = true; }

bool xvt_app_is_ending() { return kit().ending; }

void xvt_app_process_pending_events() {
  ToolkitDouble& k = kit();
  ++k.pumps;
  if (k.onPump) k.onPump(k.pumps);
  if (k.millisecondsPerPump > 0) k.advance(k.millisecondsPerPump);
}

void xvt_app_set_busy(bool busy) {
  kit().busy += busy ? 1 : -1;
  if (kit().busy < 0) kit().fail("xvt_app_set_busy(false) without a matching true");
}

void xvt_scr_beep() { ++kit().beeps; }

// ---- windows and dialogs ----------------------------------------------------------------------------------------

WINDOW xvt_win_create_def(const WIN_DEF* definition, WINDOW, EVENT_HANDLER handler, void* data) {
  if (definition == nullptr || definition->type != W_DOC) {
    report("xvt_win_create_def", "no document window in the definition");
    return NULL_WIN;
  }
  Object window;
  window.type = W_DOC;
  window.title = definition->title != nullptr ? definition->title : "";
  window.handler = handler;
  window.data = data;
  window.place = definition->rct;
  window.shown = (definition->flags & WSF_INVISIBLE) == 0;
  const WINDOW handle = kit().add(std::move(window));
  for (const WIN_DEF* field = definition + 1; field->type == WC_TEXTEDIT; ++field) {
    Object text;
    text.type = WC_TEXTEDIT;
    text.id = field->id;
    text.owner = handle;
    text.place = field->rct;
    const TXEDIT made = kit().add(std::move(text));
    kit().find(handle)->controls[field->id] = made;
  }
  EVENT create;
  create.type = E_CREATE;
  kit().send(handle, create);
  return handle;
}

void xvt_res_use(const RESOURCES* resources) { kit().resources = resources; }

WINDOW xvt_dlg_create_table(WIN_TYPE type, const DLG_RES* table, EVENT_HANDLER handler, void* data) {
  return createDialog(type, table->id, table, handler, data);
}

WINDOW xvt_dlg_create_res(WIN_TYPE type, int resource, EVENT_HANDLER handler, void* data) {
  const RESOURCES* all = kit().resources;
  if (all == nullptr) return createDialog(type, resource, nullptr, handler, data);
  const DLG_RES* end = all->dialogs + all->dialog_count;
  const DLG_RES* table =
      std::find_if(all->dialogs, end, [resource](const DLG_RES& each) { return each.id == resource; });
  if (table != end) return createDialog(type, resource, table, handler, data);
  report("xvt_dlg_create_res", "no dialog has this resource number");
  return NULL_WIN;
}

WINDOW xvt_win_get_ctl(WINDOW window, int id) {
  return checkedObject(window, "xvt_win_get_ctl") != nullptr ? kit().control(window, id) : NULL_WIN;
}

long xvt_win_dispatch_event(WINDOW window, EVENT* event) { return event != nullptr ? kit().send(window, *event) : 0; }

void xvt_vobj_destroy(WINDOW window) {
  ToolkitDouble& k = kit();
  Object* object = k.find(window);
  if (object == nullptr || std::exchange(object->dying, true)) return;
  object->shown = false;
  EVENT destroy;
  destroy.type = E_DESTROY;
  k.send(window, destroy);
  std::erase_if(k.timers, [window](const auto& timer) { return timer.second.window == window; });
  std::erase_if(k.objects, [window](const auto& each) { return each.first == window || each.second.owner == window; });
}

bool xvt_vobj_is_valid(WINDOW window) { return kit().find(window) != nullptr; }

void* xvt_vobj_get_data(WINDOW window) {
  const Object* object = checkedObject(window, "xvt_vobj_get_data");
  return object != nullptr ? object->data : nullptr;
}

void xvt_vobj_set_data(WINDOW window, void* data) {
  if (Object* object = checkedObject(window, "xvt_vobj_set_data")) object->data = data;
}

void xvt_vobj_set_title(WINDOW window, const char* title) {
  if (title == nullptr) return report("xvt_vobj_set_title", "no text");
  if (Object* object = checkedObject(window, "xvt_vobj_set_title")) object->title = title;
}

char* xvt_vobj_get_title(WINDOW window, char* buffer, std::size_t size) {
  const Object* object = checkedObject(window, "xvt_vobj_get_title");
  return copyOut(object != nullptr ? object->title : "", buffer, size);
}

void xvt_vobj_set_enabled(WINDOW window, bool enabled) {
  if (Object* object = checkedObject(window, "xvt_vobj_set_enabled")) object->usable = enabled;
}

bool xvt_vobj_is_enabled(WINDOW window) {
  const Object* object = checkedObject(window, "xvt_vobj_is_enabled");
  return object != nullptr && object->usable;
}

void xvt_vobj_set_visible(WINDOW window, bool visible) {
  if (Object* object = checkedObject(window, "xvt_vobj_set_visible")) object->shown = visible;
}

bool xvt_vobj_is_visible(WINDOW window) {
  const Object* object = checkedObject(window, "xvt_vobj_is_visible");
  return object != nullptr && object->shown;
}

void xvt_vobj_raise(WINDOW window) { checkedObject(window, "xvt_vobj_raise"); }

void xvt_vobj_set_focus(WINDOW window) {
  if (checkedObject(window, "xvt_vobj_set_focus") != nullptr) kit().focus = window;
}

void xvt_vobj_get_client_rect(WINDOW window, RCT* rectangle) {
  const Object* object = checkedObject(window, "xvt_vobj_get_client_rect");
  const RCT place = object != nullptr ? object->place : RCT{};
  *rectangle = {0, 0, place.bottom - place.top, place.right - place.left};
}

void xvt_vobj_get_outer_rect(WINDOW window, RCT* rectangle) {
  const Object* object = checkedObject(window, "xvt_vobj_get_outer_rect");
  *rectangle = object != nullptr ? object->place : RCT{};
}

void xvt_vobj_move(WINDOW window, const RCT* rectangle) {
  if (Object* object = checkedObject(window, "xvt_vobj_move")) object->place = *rectangle;
}

// ---- controls ---------------------------------------------------------------------------------------------------

void xvt_ctl_set_checked(WINDOW control, bool checked) {
  if (Object* object = markOf(control, "xvt_ctl_set_checked")) object->marked = checked;
}

bool xvt_ctl_is_checked(WINDOW control) {
  const Object* object = markOf(control, "xvt_ctl_is_checked");
  return object != nullptr && object->marked;
}

void xvt_ctl_check_radio_button(WINDOW control, const WINDOW* group, int count) {
  for (int at = 0; at < count; ++at) xvt_ctl_set_checked(group[at], group[at] == control);
  xvt_ctl_set_checked(control, true);
}

void xvt_ctl_set_color(WINDOW control, XVT_COLOR color) {
  if (Object* object = checkedObject(control, "xvt_ctl_set_color")) object->color = color;
}

void xvt_ctl_set_meter(WINDOW control, int percent) {
  if (Object* object = ofKind(control, {IK_METER}, "xvt_ctl_set_meter")) object->meter = std::clamp(percent, 0, 100);
}

int xvt_ctl_get_meter(WINDOW control) {
  const Object* object = ofKind(control, {IK_METER}, "xvt_ctl_get_meter");
  return object != nullptr ? object->meter : 0;
}

void xvt_ctl_select_text(WINDOW control) { ofKind(control, {IK_EDIT}, "xvt_ctl_select_text"); }

void xvt_list_clear(WINDOW list) {
  if (Object* object = listOf(list, "xvt_list_clear")) object->rows.clear();
}

bool xvt_list_add(WINDOW list, int index, const char* text) {
  Object* object = listOf(list, "xvt_list_add");
  if (object == nullptr || text == nullptr) return false;
  const auto count = static_cast<int>(object->rows.size());
  if (index < -1 || index > count) {
    report("xvt_list_add", "no such row");
    return false;
  }
  object->rows.insert(object->rows.begin() + (index < 0 ? count : index), {text, false});
  return true;
}

int xvt_list_count(WINDOW list) {
  const Object* object = listOf(list, "xvt_list_count");
  return object != nullptr ? static_cast<int>(object->rows.size()) : 0;
}

char* xvt_list_get_text(WINDOW list, int index, char* buffer, std::size_t size) {
  const Object* object = listOf(list, "xvt_list_get_text");
  const bool there = rowInRange(object, index, "xvt_list_get_text");
  return copyOut(there ? object->rows[static_cast<std::size_t>(index)].text : "", buffer, size);
}

bool xvt_list_is_selected(WINDOW list, int index) {
  const Object* object = listOf(list, "xvt_list_is_selected");
  return rowInRange(object, index, "xvt_list_is_selected") && object->rows[static_cast<std::size_t>(index)].selected;
}

void xvt_list_set_selected(WINDOW list, int index, bool selected) {
  Object* object = listOf(list, "xvt_list_set_selected");
  if (!rowInRange(object, index, "xvt_list_set_selected")) return;
  if (selected && (object->kind == IK_LIST || object->kind == IK_OPTION)) xvt_list_clear_selection(list);
  object->rows[static_cast<std::size_t>(index)].selected = selected;
}

void xvt_list_clear_selection(WINDOW list) {
  if (Object* object = listOf(list, "xvt_list_clear_selection"))
    for (ToolkitDouble::Row& row : object->rows) row.selected = false;
}

int xvt_list_get_selected(WINDOW list) {
  const Object* object = listOf(list, "xvt_list_get_selected");
  if (object == nullptr) return -1;
  const auto row =
      std::find_if(object->rows.begin(), object->rows.end(), [](const auto& each) { return each.selected; });
  return row != object->rows.end() ? static_cast<int>(row - object->rows.begin()) : -1;
}

void xvt_list_grow(WINDOW list, COORD) { listOf(list, "xvt_list_grow"); }

SLIST xvt_list_get_selection(WINDOW list) {
  SLIST selection = xvt_slist_create();
  if (const Object* object = listOf(list, "xvt_list_get_selection"))
    for (std::size_t at = 0; at < object->rows.size(); ++at)
      if (object->rows[at].selected)
        xvt_slist_add(selection, nullptr, object->rows[at].text.c_str(), static_cast<long>(at));
  return selection;
}

// ---- menus and timers -------------------------------------------------------------------------------------------

void xvt_menu_set_item_checked(WINDOW, int command, bool checked) { kit().menus[command].marked = checked; }
bool xvt_menu_is_item_checked(WINDOW, int command) { return kit().menus[command].marked; }
void xvt_menu_set_item_enabled(WINDOW, int command, bool enabled) { kit().menus[command].usable = enabled; }
bool xvt_menu_is_item_enabled(WINDOW, int command) { return kit().menus[command].usable; }

long xvt_timer_create(WINDOW window, long milliseconds) {
  if (checkedObject(window, "xvt_timer_create") == nullptr || milliseconds <= 0) return 0;
  kit().allocateIn("xvt_timer_create");
  const long id = kit().nextHandle++;
  kit().timers[id] = {window, milliseconds, kit().now + milliseconds};
  return id;
}

void xvt_timer_destroy(long timer) { kit().timers.erase(timer); }

// ---- boxes ------------------------------------------------------------------------------------------------------

void xvt_dm_post_error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  kit().errors.push_back(xvt::formatted(format, arguments));
  va_end(arguments);
}

void xvt_dm_post_note(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  kit().notes.push_back(xvt::formatted(format, arguments));
  va_end(arguments);
}

namespace {

ASK_RESPONSE answerTo(const std::string& question, ASK_RESPONSE otherwise) {
  ToolkitDouble& k = kit();
  k.asks.push_back(question);
  if (k.askAnswers.empty()) {
    k.fail("asked \"" + question + "\", but nobody answers it");
    return otherwise;
  }
  const ASK_RESPONSE answer = k.askAnswers.front();
  k.askAnswers.pop_front();
  return answer;
}

}  // namespace

ASK_RESPONSE xvt_dm_post_ask(const char*, const char*, const char* third, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string question = xvt::formatted(format, arguments);
  va_end(arguments);
  return answerTo(question, third != nullptr ? RESP_3 : RESP_2);
}

ASK_RESPONSE xvt_dm_post_confirm(const char*, const char*, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string question = xvt::formatted(format, arguments);
  va_end(arguments);
  return answerTo(question, RESP_2);
}

FL_STATUS xvt_dm_post_file_open(FILE_SPEC* file, const char* title) { return answerFile(file, title); }

FL_STATUS xvt_dm_post_file_save(FILE_SPEC* file, const char* title) { return answerFile(file, title); }
FL_STATUS xvt_dm_post_file_place(FILE_SPEC* file, const char* title) { return answerFile(file, title); }

FL_STATUS xvt_dm_post_dir_sel(DIRECTORY* directory, const char* title) {
  std::string path;
  const FL_STATUS status = answerFromQueue(title, directory->path, "", &path);
  if (status == FL_OK) copyOut(path, directory->path, SZ_DIR);
  return status;
}

// ---- fonts and scroll bars --------------------------------------------------------------------------------------

XVT_FNTID xvt_font_create(const char*, int, FONT_STYLE) { return kit().nextHandle++; }

void xvt_font_destroy(XVT_FNTID) {}

void xvt_font_get_metrics(XVT_FNTID, int* leading, int* ascent, int* descent) {
  if (leading != nullptr) *leading = 1;
  if (ascent != nullptr) *ascent = LINE_HEIGHT - 4;
  if (descent != nullptr) *descent = 3;
}

COORD xvt_font_get_text_width(XVT_FNTID, const char* text, int length) {
  return CHARACTER_WIDTH * static_cast<COORD>(length < 0 ? std::strlen(text) : static_cast<std::size_t>(length));
}

void xvt_sbar_set_range(WINDOW window, SCROLL_TYPE bar, COORD, COORD high) {
  if (Object* object = checkedObject(window, "xvt_sbar_set_range")) object->sbarLimit[bar] = high;
}

void xvt_sbar_set_proportion(WINDOW window, SCROLL_TYPE, COORD) { checkedObject(window, "xvt_sbar_set_proportion"); }

void xvt_sbar_set_pos(WINDOW window, SCROLL_TYPE bar, COORD position) {
  if (Object* object = checkedObject(window, "xvt_sbar_set_pos")) object->sbarPosition[bar] = position;
}

// ---- text fields ------------------------------------------------------------------------------------------------

TXEDIT xvt_tx_get(WINDOW window, int id) {
  return checkedObject(window, "xvt_tx_get") != nullptr ? kit().control(window, id) : NULL_TXEDIT;
}

WINDOW xvt_tx_get_window(TXEDIT text) {
  const Object* object = textOf(text, "xvt_tx_get_window");
  return object != nullptr ? object->owner : NULL_WIN;
}

void xvt_tx_set_scroll_callback(TXEDIT text, TX_SCROLL_CALLBACK callback) {
  if (Object* object = textOf(text, "xvt_tx_set_scroll_callback")) object->scrolled = callback;
}

bool xvt_tx_add_par(TXEDIT text, T_PNUM where, const char* line) {
  Object* object = textOf(text, "xvt_tx_add_par");
  kit().allocateIn("xvt_tx_add_par");
  if (object == nullptr || line == nullptr) return false;
  const auto count = static_cast<T_PNUM>(object->lines.size());
  object->lines.insert(object->lines.begin() + (where < 0 || where > count ? count : where), line);
  return true;
}

void xvt_tx_clear(TXEDIT text) {
  if (Object* object = textOf(text, "xvt_tx_clear")) {
    object->lines.clear();
    object->origin = 0;
    object->offset = 0;
  }
}

T_LNUM xvt_tx_get_num_pars(TXEDIT text) {
  const Object* object = textOf(text, "xvt_tx_get_num_pars");
  return object != nullptr ? static_cast<T_LNUM>(object->lines.size()) : 0;
}

const char* xvt_tx_get_par(TXEDIT text, T_LNUM number, std::size_t* length) {
  const Object* object = textOf(text, "xvt_tx_get_par");
  const bool there = object != nullptr && number >= 0 && static_cast<std::size_t>(number) < object->lines.size();
  if (length != nullptr) *length = there ? object->lines[static_cast<std::size_t>(number)].size() : 0;
  return there ? object->lines[static_cast<std::size_t>(number)].c_str() : "";
}

void xvt_tx_scroll_vert(TXEDIT text, T_LNUM lines) {
  if (Object* object = textOf(text, "xvt_tx_scroll_vert"))
    object->origin = std::clamp<T_LNUM>(object->origin + lines, 0, lastOrigin(*object));
}

void xvt_tx_scroll_hor(TXEDIT text, COORD pixels) {
  if (Object* object = textOf(text, "xvt_tx_scroll_hor")) object->offset = std::max(0, object->offset + pixels);
}

T_LNUM xvt_tx_get_origin(TXEDIT text, T_CPOS* offset) {
  const Object* object = textOf(text, "xvt_tx_get_origin");
  if (offset != nullptr) *offset = object != nullptr ? object->offset : 0;
  return object != nullptr ? object->origin : 0;
}

void xvt_tx_move(TXEDIT text, const RCT* rectangle) {
  if (Object* object = textOf(text, "xvt_tx_move")) object->place = *rectangle;
}

void xvt_tx_get_view_rect(TXEDIT text, RCT* rectangle) {
  const Object* object = textOf(text, "xvt_tx_get_view_rect");
  *rectangle = object != nullptr ? object->place : RCT{};
}

void xvt_tx_process_event(WINDOW, EVENT*) {}
