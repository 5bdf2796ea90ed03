/// SEG Y copies without their dialogs: settings straight in SgyParams, units opened straight on files and drives.
#pragma once

#include "libkyr/text.h"
#include "quarlo/segycopy.h"
#include "quarlo/segysel.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/jobs/job_fixture.h"
#include "tests/support/segy_files.h"

class SegyTest : public JobTest {
 protected:
  SegyTest() { segyInit(); }
  ~SegyTest() override { closeUnits(); }

  FILE_SPEC specOf(const std::string& name) {
    FILE_SPEC file{};
    const std::filesystem::path path = folder.path(name);
    copyText(file.dir.path, path.parent_path().string());
    copyText(file.name, path.filename().string());
    return file;
  }
  void openInputFile(const std::string& name) { ASSERT_TRUE(openDiskUnit(&units[0], specOf(name), "rb")); }
  void openOutputFile(const std::string& name) { ASSERT_TRUE(openDiskUnit(&units[1], specOf(name), "w+b")); }
  void openInputTape(int drive = 0) {
    getDriveList(units);
    units[0].theListItem = drive;
    tlv_tape_open(units, 0);
    ASSERT_EQ(units[0].state, 1);
  }
  void openOutputTapes(const std::vector<int>& drives) {
    getDriveList(units);
    units->theOutputList = xvt_slist_create();
    for (const int drive : drives) {
      xvt_slist_add(units->theOutputList, nullptr, "drive", drive);
    }
    tlv_tape_open(units, ALL_OUTPUTS);
    ASSERT_EQ(units->nOutputs, static_cast<int>(drives.size()));
  }
  void closeUnits() {
    closeDiskUnit(&units[0]);
    closeDiskUnit(&units[1]);
    if (units[0].type == UT_TAPE && units[0].state == 1) {
      tlv_tape_close(units, 0);
    }
    if (units->nOutputs > 0) {
      tlv_tape_close(units, ALL_OUTPUTS);
    }
    if (units->theOutputList != nullptr) {
      xvt_slist_destroy(units->theOutputList);
      units->theOutputList = nullptr;
    }
  }
  /// Runs the job on the open units and closes them.
  int run() {
    forgetConsole();
    const int result = doSegyCopy(units);
    closeUnits();
    return result;
  }
  int copyFile(const std::string& in, const std::string& out = "out.sgy") {
    openInputFile(in);
    openOutputFile(out);
    return run();
  }
  std::string output(const std::string& name = "out.sgy") { return readFile(folder.path(name)); }
  bool exists(const std::string& name) { return std::filesystem::exists(folder.path(name)); }

  /// A list limit on the default keys, from a file with this text.
  void limitByList(const std::string& text, bool useSecondary = false) {
    writeFile(folder.path("list.txt"), text);
    SgyParams.rangeLimit = true;
    SgyParams.limitType = LT_LIST;
    SgyParams.listParams.useSec = useSecondary;
    copyText(SgyParams.listParams.dir, folder.path(""));
    copyText(SgyParams.listParams.file, "list.txt");
  }
  void limitByPolygonFile(const std::string& text) {
    writeFile(folder.path("poly.txt"), text);
    SgyParams.rangeLimit = true;
    SgyParams.limitType = LT_POLYGON;
    copyText(SgyParams.polyParams.dir, folder.path(""));
    copyText(SgyParams.polyParams.file, "poly.txt");
  }
  void sortTraces() {
    SgyParams.sort = true;
    copyText(SgyParams.sortDir, folder.path(""));
  }
};
