#include "quarlo/merge/mergedlg.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/common/unitdialog.h"
#include "quarlo/merge/mergejob.h"
#include "quarlo/merge/mergelist.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "resources/ids.h"

namespace {

bool overwriteIsAllowed = false;  // the user was asked when the output was chosen

bool isReady() { return !InputList.empty() && outFile.name[0] != '\0'; }

/// The list tells names: where the selected input lies stands below.
void showPath(WINDOW dialog) {
  const WINDOW list = xvt_win_get_ctl(dialog, MG_INPUTS);
  const int rows = std::min(xvt_list_count(list), static_cast<int>(InputList.size()));
  std::string path;
  int selected = 0;
  for (int row = 0; row < rows; ++row)
    if (xvt_list_is_selected(list, row) && ++selected == 1)
      path = InputList[static_cast<std::size_t>(row)]->fullFileName;
  setControlText(dialog, MG_PATH, selected > 1 ? formatText("%d selected", selected).c_str() : path.c_str());
}

void showState(WINDOW dialog, COPY_STATE state) {
  const bool idle = state != COPY_RUNNING;
  enableControls(dialog, {MG_ADD_FOLDER, MG_ADD_FILE, MG_OUTPUT, MG_FORCE_TYPE, MG_CLOSE, MG_INPUTS}, idle);
  enableControls(dialog, {MG_REMOVE, MG_CLEAR}, idle && !InputList.empty());
  enableControl(dialog, MG_TYPE, idle && overrideOutputType);
  enableControl(dialog, MG_MERGE, state == COPY_READY);
  showPath(dialog);
  setControlText(dialog, MG_OUTPUT_NAME, outFile.name[0] != '\0' ? pathOf(outFile).c_str() : "No output chosen");
}

UnitDialog theDialog(
    {.status = MG_STATUS, .closeButton = MG_CLOSE, .ready = isReady, .showState = showState, .endUnits = [] {
       return 0;
     }});

// ---- inputs -----------------------------------------------------------------------------------------------------

void showInputs(WINDOW dialog) {
  if (!xvt_vobj_is_valid(dialog)) return;
  updateList(xvt_win_get_ctl(dialog, MG_INPUTS));
  theDialog.showChange(dialog);
}

/// Of a folder's thousands each is known by what it is: comparing it with every other one takes too long.
void addAll(const DIRECTORY& folder, const std::vector<std::string>& names) {
  FileSet used;
  used.add(pathOf(outFile));
  for (const auto& listed : InputList) used.add(listed->fullFileName);
  FILE_SPEC file{};
  file.dir = folder;
  for (const std::string& name : names) {
    copyText(file.name, name);
    if (used.holds(pathOf(file))) continue;
    used.add(pathOf(file));
    InputList.push_back(newKyrFile(file));
  }
}

void addFolder(WINDOW dialog) {
  DIRECTORY folder{};
  if (!chooseFolder(&folder, "Folder with Input Files")) return;
  const DirectoryFiles files = listFiles(folder, "*.kyr");
  if (files.names.empty()) xvt_dm_post_error("No Kyr files found in the folder.");
  addAll(folder, files.names);
  showInputs(dialog);
}

void addFile(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFileToOpen(&file, "kyr", "Open Input File")) return;
  if (isSameFile(file, outFile)) return xvt_dm_post_error("This file is already being used for output.");
  auto entry = newKyrFile(file);
  if (!isDuplicate(entry.get())) InputList.push_back(std::move(entry));
  showInputs(dialog);
}

void removeSelected(WINDOW dialog) {
  const WINDOW list = xvt_win_get_ctl(dialog, MG_INPUTS);
  for (auto row = static_cast<int>(InputList.size()) - 1; row >= 0; --row)
    if (xvt_list_is_selected(list, row)) InputList.erase(InputList.begin() + row);
  showInputs(dialog);
}

void clearInputs(WINDOW dialog) {
  InputList.clear();
  showInputs(dialog);
}

// ---- the output -------------------------------------------------------------------------------------------------

void chooseOutput(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFileToSave(&file, "kyr", "Open Output File")) return;
  std::swap(outFile, file);
  if (isDuplicate(nullptr)) {
    outFile = file;
    return xvt_dm_post_error("This file is already being used for input. Choose another file name.");
  }
  overwriteIsAllowed = true;
  theDialog.showChange(dialog);
}

void forceType(WINDOW dialog) {
  overrideOutputType = !overrideOutputType;
  checkControl(dialog, MG_FORCE_TYPE, overrideOutputType);
  enableControl(dialog, MG_TYPE, overrideOutputType);
}

void chooseType(WINDOW dialog) {
  const WINDOW list = xvt_win_get_ctl(dialog, MG_TYPE);
  if (theDialog.refuses(dialog))
    xvt_list_set_selected(list, typeIndex, true);
  else
    typeIndex = std::max(xvt_list_get_selected(list), 0);
}

// ---- the run ----------------------------------------------------------------------------------------------------

/// What is there and was not asked about when the output was chosen: the last merge's, or somebody else's.
bool outputIsFree() {
  const std::string path = pathOf(outFile);
  return overwriteIsAllowed || xvt_fsys_get_file_size(path.c_str()) < 0 ||
         xvt_dm_post_confirm("Overwrite", "Cancel", "This file is there already. Overwrite it?\n%s", path.c_str()) ==
             RESP_DEFAULT;
}

void merge(WINDOW dialog) {
  if (isReady() && !outputIsFree()) return;
  theDialog.start(dialog, [dialog](const int& /*stopped*/) -> int {
    overwriteIsAllowed = false;
    return doKyrMerge(dialog) == 1 ? JOB_OK : JOB_FAILED;
  });
  if (!xvt_vobj_is_valid(dialog)) InputList.clear();
}

// ---- events -----------------------------------------------------------------------------------------------------

constexpr ControlAction kActions[] = {
    {MG_MERGE, merge},       {MG_ADD_FOLDER, addFolder}, {MG_ADD_FILE, addFile},     {MG_REMOVE, removeSelected},
    {MG_CLEAR, clearInputs}, {MG_OUTPUT, chooseOutput},  {MG_FORCE_TYPE, forceType},
};

void create(WINDOW dialog) {
  std::array<const char*, std::size(theTypes)> names{};
  std::ranges::transform(theTypes, names.begin(), &MergeType::name);
  fillList(dialog, MG_TYPE, names, typeIndex);
  checkControl(dialog, MG_FORCE_TYPE, overrideOutputType);
  overwriteIsAllowed = false;
  theDialog.open(dialog);
}

void control(WINDOW dialog, const EVENT& event) {
  if (event.ctl.what == CTL_SELECT && event.ctl.id == MG_TYPE)
    chooseType(dialog);
  else if (event.ctl.what == CTL_SELECT && event.ctl.id == MG_INPUTS)
    showPath(dialog);
  else if (theDialog.admits(dialog, event))
    runAction(kActions, dialog, event);
}

/// A job that still has the list in hand is followed by its end.
void destroy(WINDOW /*dialog*/) {
  if (!theDialog.isRunning()) InputList.clear();
}

}  // namespace

long FileMergeDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent, {.create = create, .control = control, .destroy = destroy});
}
