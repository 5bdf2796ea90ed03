/// A program without windows: the units, the console, the copy dialog and its files, driven as a user would.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "quarlo/copy/copy_dlg.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"
#include "tests/support/tap_images.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

/// The line with DATE in place of each date.
std::string withoutDates(const std::string& line);

class JobTest : public testing::Test {
 protected:
  JobTest() {
    std::filesystem::create_directory("drives");
    setenv("QUARLO_VIRTUAL_DRIVES", folder.path("drives").c_str(), 1);
    setTapeDriver(nullptr);
    for (int number = 0; number < DRIVES; ++number) load(number, "");
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
    for (int unit = 0; unit < kMaxUnits; ++unit)
      units[unit] = UnitStruct{};  // options outlive a dialog and a job, but not a test
    initIO(units);
    consInit();
  }
  ~JobTest() override {
    if (xvt_vobj_is_valid(dialog)) xvt_vobj_destroy(dialog);
    unInitIO(units);
    killConsole();
    setTapeDriver(nullptr);
    unsetenv("QUARLO_VIRTUAL_DRIVES");
  }

  static constexpr int DRIVES = 3;
  std::string cartridge(const std::string& name) const { return folder.path("drives/" + name); }
  /// Puts a cartridge ("" for none) into a drive, by hand; `more` are further lines of the drive's file.
  void load(int drive, const std::string& name, const std::string& more = "") {
    const std::string file = folder.path("drives/drive" + std::to_string(drive) + ".drive");
    writeFile(file + ".new", "id = " + std::to_string(drive + 1) + "\ncartridge = " + name + "\n" + more);
    std::filesystem::rename(file + ".new", file);
  }
  void makeCartridge(const std::string& name, const Tape& tape, const std::vector<std::size_t>& badBlocks = {}) {
    writeFile(cartridge(name), tapImage(tape, badBlocks));
  }
  void putIn(int drive, const std::string& name, const Tape& tape = {},
             const std::vector<std::size_t>& badBlocks = {}) {
    makeCartridge(name, tape, badBlocks);
    load(drive, name);
  }
  Tape tapeIn(const std::string& name) const { return tapeOf(readFile(cartridge(name))); }

  /// Chooses a drive in the selection dialog that a button opens; `options` presses what else there is before OK.
  void chooseDrive(int button, int row, const std::function<void(WINDOW)>& options = nullptr) {
    toolkit.onModal(DLG_INPUT_DRIVE, [this, row, options](WINDOW drives) {
      toolkit.select(drives, DRV_LIST, row);
      if (options) options(drives);
      toolkit.press(drives, DRV_OK);
    });
    toolkit.press(dialog, button);
  }
  void chooseInputTape(int row, const std::function<void(WINDOW)>& options = nullptr) {
    chooseDrive(CP_INPUT_TAPE, row, options);
  }
  void chooseOutputTapes(const std::vector<int>& rows, const std::function<void(WINDOW)>& options = nullptr) {
    toolkit.onModal(DLG_OUTPUT_DRIVE, [this, rows, options](WINDOW drives) {
      const bool several = rows.size() > 1;
      if (toolkit.checked(drives, DRV_MULTIPLE) != several) toolkit.press(drives, DRV_MULTIPLE);
      for (const int row : rows)
        several ? toolkit.selectAlso(drives, DRV_MULTIPLE_LIST, row) : toolkit.select(drives, DRV_LIST, row);
      if (options) options(drives);
      toolkit.press(drives, DRV_OK);
    });
    toolkit.press(dialog, CP_OUTPUT_TAPE);
  }
  /// Answers the question for a further input tape.
  void noFurtherTape() {
    toolkit.onModal(DLG_IN_CONTINUE, [this](WINDOW question) { toolkit.press(question, IC_STOP); });
  }
  void nextInputIs(const std::string& name) {
    toolkit.onModal(DLG_IN_CONTINUE, [this, name](WINDOW question) {
      toolkit.press(question, IC_UNLOAD);
      load(0, name);
      toolkit.press(question, IC_OPEN);
      toolkit.press(question, IC_CONTINUE);
    });
  }

  /// Answers the question for a further output tape: with one of this name, or with none.
  void nextOutputIs(const std::string& name, int drive = 1, const Tape& held = {}) {
    makeCartridge(name, held);
    toolkit.onModal(DLG_OUT_CONTINUE, [this, name, drive](WINDOW question) {
      if (toolkit.enabled(question, OC_UNLOAD)) toolkit.press(question, OC_UNLOAD);
      load(drive, name);
      toolkit.press(question, OC_OPEN);
      toolkit.press(question, OC_CONTINUE);
    });
  }
  void noFurtherOutput() {
    toolkit.onModal(DLG_OUT_CONTINUE, [this](WINDOW question) { toolkit.press(question, OC_STOP); });
  }

  void open(int resource, EVENT_HANDLER handler) {
    dialog = xvt_dlg_create_res(WD_MODELESS, resource, handler, nullptr);
    ASSERT_NE(dialog, NULL_WIN);
  }
  void openCopyDialog() { open(DLG_COPY, CopyDialog_eh); }
  void closeCopyDialog() { toolkit.close(dialog); }
  void chooseFile(int button, const std::string& path) {
    toolkit.answerFile(path);
    toolkit.press(dialog, button);
  }
  void chooseInputFile(const std::string& path) { chooseFile(CP_INPUT_DISK, path); }
  void chooseOutputFile(const std::string& path) { chooseFile(CP_OUTPUT_DISK, path); }
  /// Changes parameters in their dialog and accepts them.
  void setParameters(const std::function<void(WINDOW)>& change) {
    toolkit.onModal(DLG_UNFORMATTED, [this, change](WINDOW parameters) {
      change(parameters);
      toolkit.press(parameters, UF_OK);
    });
    toolkit.press(dialog, CP_PARAMETERS);
  }
  void start() {
    forgetConsole();
    toolkit.press(dialog, CP_START);
  }
  std::string status() { return toolkit.text(dialog, CP_STATUS); }

  /// Lines of the console since the last forgetConsole, dates replaced by DATE.
  std::vector<std::string> consoleWithoutDates() {
    std::vector<std::string> lines = toolkit.lines(toolkit.windowTitled("Console"));
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(std::min(forgotten, lines.size())));
    for (std::string& line : lines) line = withoutDates(line);
    return lines;
  }
  std::string consoleText() {
    std::string text;
    for (const std::string& line : consoleWithoutDates()) text += line + "\n";
    return text;
  }
  void forgetConsole() { forgotten = toolkit.lines(toolkit.windowTitled("Console")).size(); }
  long count(const std::string& line) {
    const auto lines = consoleWithoutDates();
    return std::count(lines.begin(), lines.end(), line);
  }
  void expectCounts(std::initializer_list<std::pair<std::string, long>> lines) {
    for (const auto& [line, times] : lines) EXPECT_EQ(count(line), times) << line;
  }
  bool consoleHas(const std::string& line) { return count(line) > 0; }
  void expectSaid(const std::string& line) { expectSaid(std::initializer_list<std::string>{line}); }
  /// Each a line, or several in a row.
  void expectSaid(std::initializer_list<std::string> texts) {
    const std::string said = "\n" + consoleText();
    for (const std::string& text : texts) EXPECT_NE(said.find("\n" + text + "\n"), said.npos) << text << " in:" << said;
  }

  TestFolder folder;
  TestToolkit toolkit;
  UnitStruct* units = getDevPtr();
  WINDOW dialog = NULL_WIN;
  long pumpsOfJob = 0;

 private:
  std::size_t forgotten = 0;
};
