#include "quarlo/tapelib/dialogs/controls.h"

#include <algorithm>
#include <cstdlib>

#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/homefolder.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/drop.h"

namespace {

constexpr std::size_t kTextLimit = 4096;

/// Runs `use` on a control that is there.
template <typename Use>
void withControl(WINDOW dialog, int control, Use use) {
  const WINDOW found = xvt_win_get_ctl(dialog, control);
  if (found != NULL_WIN) use(found);
}

constexpr const char* kNoFileName = "Error getting file name.";

using FileBox = FL_STATUS (*)(FILE_SPEC* file, const char* title);

// From the first choice on the boxes remember their folder.
bool hasChosen = false;

/// Asks by a box that starts in `*start`; where that is empty, in the home folder.
template <typename Box>
bool choose(const Box& box, DIRECTORY* start, const char* failure) {
  if (!hasChosen && start->path[0] == '\0') copyText(start->path, homeFolder());
  const FL_STATUS status = box();
  if (status == FL_BAD) xvt_dm_post_error("%s", failure);
  hasChosen = hasChosen || status == FL_OK;
  return status == FL_OK;
}

bool chooseFile(FileBox box, FILE_SPEC* file, const char* extension, const char* title) {
  FILE_SPEC choice = *file;
  copyText(choice.type, extension);
  if (!choose([&] { return box(&choice, title); }, &choice.dir, kNoFileName)) return false;
  *file = choice;
  return true;
}

}  // namespace

void setControlText(WINDOW dialog, int control, const char* text) {
  withControl(
      dialog, control, [text](WINDOW found) { xvt_vobj_set_title(found, text); });
}

void setControlNumber(WINDOW dialog, int control, long value) {
  setControlText(dialog, control, formatText("%ld", value).c_str());
}

std::string controlText(WINDOW dialog, int control) {
  char text[kTextLimit] = "";
  withControl(dialog, control, [&text](WINDOW found) { xvt_vobj_get_title(found, text, sizeof text); });
  return text;
}

std::string windowTitle(WINDOW window) {
  char title[200];
  return xvt_vobj_get_title(window, title, sizeof title);
}

void enableControl(WINDOW dialog, int control, bool enabled) {
  withControl(
      dialog, control, [enabled](WINDOW found) { xvt_vobj_set_enabled(found, enabled); });
}

void enableControls(WINDOW dialog, std::initializer_list<int> controls, bool enabled) {
  for (const int control : controls) enableControl(dialog, control, enabled);
}

void showControl(WINDOW dialog, int control, bool visible) {
  withControl(
      dialog, control, [visible](WINDOW found) { xvt_vobj_set_visible(found, visible); });
}

void showControls(WINDOW dialog, std::initializer_list<int> controls, bool visible) {
  for (const int control : controls) showControl(dialog, control, visible);
}

void checkControl(WINDOW dialog, int control, bool checked) {
  withControl(
      dialog, control, [checked](WINDOW found) { xvt_ctl_set_checked(found, checked); });
}

bool isPress(const EVENT& event, int control) {
  return event.type == E_CONTROL && event.ctl.what == CTL_PRESS && event.ctl.id == control;
}

bool isAction(const EVENT& event) {
  return event.type == E_CONTROL && event.ctl.what != CTL_FOCUS_GAIN && event.ctl.what != CTL_FOCUS_LOSS;
}

bool runAction(std::span<const ControlAction> actions, WINDOW dialog, const EVENT& event) {
  const auto found =
      std::ranges::find_if(actions, [&event](const ControlAction& action) { return isPress(event, action.control); });
  if (found == actions.end()) return false;
  found->act(dialog);
  return true;
}

int parseNumber(const char* text, const NumberField& field) {
  long number = std::strtol(text, nullptr, 10);  // beyond long it saturates
  number = std::clamp(number, -std::numeric_limits<long>::max(), std::numeric_limits<long>::max());
  if (field.absolute) number = std::labs(number);
  return static_cast<int>(std::clamp<long>(number, field.low, field.high));
}

void showNumber(WINDOW dialog, const NumberField& field) { setControlNumber(dialog, field.control, *field.value); }

bool readNumber(WINDOW dialog, const EVENT& event, const NumberField& field) {
  if (event.type != E_CONTROL || event.ctl.what != CTL_FOCUS_LOSS || event.ctl.id != field.control) return false;
  *field.value = parseNumber(controlText(dialog, field.control).c_str(), field);
  showNumber(dialog, field);
  return true;
}

bool chooseRadio(WINDOW dialog, const EVENT& event, int first, int last, int* chosen) {
  if (event.type != E_CONTROL || event.ctl.what != CTL_PRESS || event.ctl.id < first || event.ctl.id > last)
    return false;
  *chosen = event.ctl.id - first;
  xdCheckRadioButton(dialog, event.ctl.id, first, last);
  return true;
}

void fillList(WINDOW dialog, int control, std::span<const char* const> rows, int selected) {
  withControl(
      dialog, control,
      [rows, selected](WINDOW list) {
        xvt_list_clear(list);
        for (const char* row : rows) xvt_list_add(list, -1, row);
        if (selected >= 0) xvt_list_set_selected(list, selected, true);
      });
}

bool chooseFileToOpen(FILE_SPEC* file, const char* extension, const char* title) {
  if (const char* path = xvt_drop_take_path()) {
    const FILE_SPEC dropped = fileSpecOf(path);
    if (dropped.name[0] == '\0') {
      xvt_dm_post_error("%s", kNoFileName);
      return false;
    }
    *file = dropped;
    copyText(file->type, extension);
    return true;
  }
  return chooseFile(xvt_dm_post_file_open, file, extension, title);
}

bool chooseFileToSave(FILE_SPEC* file, const char* extension, const char* title) {
  return chooseFile(xvt_dm_post_file_save, file, extension, title);
}

bool chooseFolderByFile(FILE_SPEC* file, const char* extension, const char* title) {
  return chooseFile(xvt_dm_post_file_place, file, extension, title);
}

bool chooseFolder(DIRECTORY* folder, const char* title) {
  DIRECTORY choice = *folder;
  if (!choose([&] { return xvt_dm_post_dir_sel(&choice, title); }, &choice, "Error getting folder name.")) return false;
  *folder = choice;
  return true;
}

bool runModal(int resource, EVENT_HANDLER handler, void* data) {
  if (xvt_dlg_create_res(WD_MODAL, resource, handler, data) != NULL_WIN) return true;
  xvt_dm_post_error("Error opening dialog");
  return false;
}
