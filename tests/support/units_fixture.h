/// Jobs without the copy dialog: their units opened straight on files and drives.
#pragma once

#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/support/job_fixture.h"

class UnitsTest : public JobTest {
 protected:
  ~UnitsTest() override { closeUnits(); }

  FILE_SPEC specOf(const std::string& name) {
    FILE_SPEC file{};
    const std::filesystem::path path = folder.path(name);
    copyText(file.dir.path, path.parent_path().string());
    copyText(file.name, path.filename().string());
    return file;
  }
  void openInputFile(const std::string& name) { ASSERT_TRUE(openDiskUnit(&units[0], specOf(name), "rb")); }
  void openInputTape(int drive = 0) {
    getDriveList(units);
    units[0].theListItem = drive;
    tlv_tape_open(units, 0);
    ASSERT_EQ(units[0].state, 1);
  }
  void openOutputTapes(const std::vector<int>& drives) {
    getDriveList(units);
    units->theOutputList = xvt_slist_create();
    for (const int drive : drives) xvt_slist_add(units->theOutputList, nullptr, "drive", drive);
    tlv_tape_open(units, kAllOutputs);
    ASSERT_EQ(units->nOutputs, static_cast<int>(drives.size()));
  }
  void setBuffer(int kilobytes) {
    unInitIO(units);
    setenv("ST_BUFFER", std::to_string(kilobytes).c_str(), 1);
    initIO(units);
    unsetenv("ST_BUFFER");
  }
  void closeUnits() {
    closeDiskUnit(&units[0]);
    closeDiskUnit(&units[1]);
    if (units[0].type == UT_TAPE && units[0].state == 1) tlv_tape_close(units, 0);
    if (units->nOutputs > 0) tlv_tape_close(units, kAllOutputs);
    if (units->theOutputList != nullptr) {
      xvt_slist_destroy(units->theOutputList);
      units->theOutputList = nullptr;
    }
  }
};
