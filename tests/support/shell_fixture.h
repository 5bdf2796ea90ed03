/// The whole shell without a display: the task window has been created, the console and the main dialog are up.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quarlo/common/windows.h"
#include "quarlo/shell/ctrl_dlg.h"
#include "quarlo/shell/task_win.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

class ShellTest : public testing::Test {
 protected:
  ~ShellTest() override {
    if (!xvt_app_is_ending() && xvt_vobj_is_valid(TASK_WIN)) toolkit.close(TASK_WIN);
    if (units->ioBuffer != nullptr) unInitIO(units);
    toolkit.endWindows();
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
  TestToolkit toolkit;
  UnitStruct* units = getDevPtr();

 private:
  std::size_t marked = 0;
};
