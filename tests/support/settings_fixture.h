/// Dialogs of settings: opened, driven by a script of the test, closed by a button.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "resources/ids.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

class SettingsDialogTest : public testing::Test {
 protected:
  using Script = std::function<void(WINDOW)>;

  SettingsDialogTest() {
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
  }
  /// The next modal dialog of this resource does as the script says and is closed with `button`.
  void answer(int resource, int button, const Script& script) {
    toolkit.onModal(resource, [this, button, script](WINDOW dialog) {
      script(dialog);
      toolkit.press(dialog, button);
    });
  }
  /// Opens a dialog and answers it.
  void edit(int resource, EVENT_HANDLER handler, int button, const Script& script) {
    answer(resource, button, script);
    xvt_dlg_create_res(WD_MODAL, resource, handler, nullptr);
  }
  /// Presses a button and takes this file in its box.
  void choose(WINDOW dialog, int button, const std::string& path) {
    toolkit.answerFile(path);
    toolkit.press(dialog, button);
  }
  std::vector<bool> enabled(WINDOW dialog, const std::vector<int>& controls) {
    std::vector<bool> states;
    for (const int control : controls) states.push_back(toolkit.enabled(dialog, control));
    return states;
  }

  /// The path of a file that is there.
  std::string given(const std::string& name) {
    writeFile(name, "");
    return folder.path(name);
  }
  /// A path for which the settings have no room.
  std::string pathWithoutRoom() {
    const std::string deep = folder.path(std::string(200, 'd') + "/" + std::string(200, 'e'));
    std::filesystem::create_directories(deep);
    return deep + "/x";
  }

  TestFolder folder;
  TestToolkit toolkit;
};
