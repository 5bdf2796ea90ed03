/// The whole shell without a display: the task window has been created, the console and the main dialog are up.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quarlo/common/windows.h"
#include "quarlo/shell/ctrl_dlg.h"
#include "quarlo/shell/task_win.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/dialogs.h"
#include "resources/ids.h"
#include "tests/support/test_files.h"
#include "tests/support/toolkit_double.h"

class ShellTest : public testing::Test {
 protected:
  ShellTest() { xvt_res_use(quarloResources()); }
  ~ShellTest() override {
    if (!xvt_app_is_ending() && xvt_vobj_is_valid(TASK_WIN)) toolkit.close(TASK_WIN);
    if (units->ioBuffer != nullptr) unInitIO(units);
    const auto objects = toolkit.objects;
    for (const auto& [handle, object] : objects)
      if (object.owner == NULL_WIN) xvt_vobj_destroy(handle);
  }

  void startUp() { toolkit.openTaskWindow(task_eh); }

  /// Sends the word that the units changed, as any code does that changed them.
  static void tellUnitsChanged() {
    EVENT event;
    appUpdate(&event);
  }

  std::vector<std::string> console() { return toolkit.lines(toolkit.windowTitled("Console")); }
  /// The console's lines since the last call of `mark`.
  std::vector<std::string> newLines() {
    const std::vector<std::string> all = console();
    return {all.begin() + static_cast<std::ptrdiff_t>(marked), all.end()};
  }
  void mark() { marked = console().size(); }

  TestFolder folder;
  ToolkitDouble toolkit;
  UnitStruct* units = getDevPtr();

 private:
  std::size_t marked = 0;
};
