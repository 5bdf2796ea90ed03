// The dialogs of the SEG D copy: what they show, enable, accept and store.

#include "libkyr/text.h"
#include "quarlo/segdcopy/segd_dlgs.h"
#include "tests/support/job_fixture.h"
#include "tests/support/settings_fixture.h"

namespace {

class SegdDialogsTest : public SettingsDialogTest {
 protected:
  SegdDialogsTest() { segdInit(); }
  void options(const Script& script, int button = SD_OK) { edit(DLG_SEGD, SegdCpy_eh, button, script); }
  void zeroList(const Script& script, int button = ZT_OK) { edit(DLG_SEGD_ZERO, SegdListDlg_eh, button, script); }
};

const struct Option {
  int checkBox;
  bool SgdCopyParams::*flag;
  std::vector<int> controls;
} OPTIONS[] = {
    {SD_LIMIT, &SgdCopyParams::limit, {SD_LIMIT_LIST, SD_LIMIT_PATH}},
    {SD_ZERO_TRACES, &SgdCopyParams::zeroTraces, {SD_ZERO_LIST, SD_ZERO_PATH}},
    {SD_LENGTH_OVERRIDE, &SgdCopyParams::recLenOR, {SD_LENGTH_UNIT}},
    {SD_USE_CHANNEL_SETS, &SgdCopyParams::useScanHdr, {}},
    {SD_NUMBER_BY_FILE, &SgdCopyParams::ffidOption, {}},
    {SD_BLOCK_TRACES, &SgdCopyParams::blockTraces, {}},
    {SD_LIMIT_BYTES, &SgdCopyParams::limitBytes, {SD_BYTE_LIMIT}},
    {SD_PREPEND, &SgdCopyParams::prepend, {SD_PREPEND_FILE, SD_PREPEND_PATH}},
    {SD_USE_LOG, &SgdCopyParams::useLog, {SD_LOG_FILE, SD_LOG_PATH}},
    {SD_DECIMATE, &SgdCopyParams::itDecimates, {SD_DECIMATE_INTERVAL}},
};

TEST_F(SegdDialogsTest, EachCheckBoxSetsItsOptionAndEnablesWhatBelongsToIt) {
  for (const Option& option : OPTIONS) {
    SCOPED_TRACE(option.checkBox);
    segdInit();
    const bool before = SgdParams.*option.flag;
    options([&](WINDOW dialog) {
      for (const Option& each : OPTIONS)
        EXPECT_EQ(enabled(dialog, each.controls), std::vector<bool>(each.controls.size(), SgdParams.*each.flag));
      toolkit.press(dialog, option.checkBox);
      EXPECT_EQ(enabled(dialog, option.controls), std::vector<bool>(option.controls.size(), !before));
      EXPECT_EQ(SgdParams.*option.flag, before) << "stored before OK";
    });
    for (const Option& each : OPTIONS) {
      EXPECT_EQ(SgdParams.*each.flag,
                each.checkBox == SD_USE_LOG ? option.checkBox != SD_USE_LOG : each.checkBox == option.checkBox)
          << each.checkBox;
    }
    options([&](WINDOW dialog) {
      EXPECT_EQ(toolkit.checked(dialog, option.checkBox), !before);
      EXPECT_EQ(enabled(dialog, option.controls), std::vector<bool>(option.controls.size(), !before));
    });
  }
}

TEST_F(SegdDialogsTest, OptionsTakeNumbersAndNonsense) {
  options([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, SD_BYTE_LIMIT), "10.000");
    EXPECT_EQ(toolkit.text(dialog, SD_LENGTH_UNIT), "1.0240");
    EXPECT_EQ(toolkit.text(dialog, SD_DECIMATE_INTERVAL), "10");
    for (const int checkBox : {SD_LIMIT_BYTES, SD_LENGTH_OVERRIDE, SD_DECIMATE}) toolkit.press(dialog, checkBox);
    for (const char* text : {"nan", "-2", "0", "", "much", "1e300", "1e999", "0.0000001"}) {
      EXPECT_EQ(toolkit.typed(dialog, SD_BYTE_LIMIT, text), "10.000") << text;
      EXPECT_EQ(toolkit.typed(dialog, SD_LENGTH_UNIT, text), "1.0240") << text;
    }
    EXPECT_EQ(toolkit.typed(dialog, SD_BYTE_LIMIT, " 1.5 GB "), "1.500");
    EXPECT_EQ(toolkit.typed(dialog, SD_LENGTH_UNIT, ".5"), "0.5000");
    toolkit.expectTyped(dialog, SD_DECIMATE_INTERVAL,
                        {{"0", "1"}, {"-7", "1"}, {"often", "1"}, {"99999999999", "2147483647"}, {"25 files", "25"}});
  });
  EXPECT_EQ(SgdParams.byteLimit, 1610612736.0);
  EXPECT_EQ(SgdParams.recLenFactor, 0.5F);
  EXPECT_EQ(SgdParams.itsDecimateIntvl, 25);
}

TEST_F(SegdDialogsTest, TheOutputNameIsANameWithoutDirectoryAndExtension) {
  options([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, SD_OUTPUT_NAME), "");
    toolkit.expectTyped(
        dialog, SD_OUTPUT_NAME,
        {{" /data/line 12.5.sgd ", "line 12.5"}, {"line-12.5", "line-12.5"}, {std::string(300, 'n'), "line-12.5"}});
  });
  EXPECT_STREQ(SgdParams.outFile, "line-12.5.sgd");
  options([this](WINDOW dialog) { EXPECT_EQ(toolkit.typed(dialog, SD_OUTPUT_NAME, "/data/"), ""); });
  EXPECT_STREQ(SgdParams.outFile, "");
}

TEST_F(SegdDialogsTest, LogAndPrependFileAreChosen) {
  copyText(SgdParams.logDir, "/var/log");
  options([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, SD_LOG_PATH), "/var/log/SegdCopy.txt");
    choose(dialog, SD_LOG_FILE, "/tmp/night.txt");
    EXPECT_EQ(toolkit.text(dialog, SD_LOG_PATH), "/tmp/night.txt");
    toolkit.answerBadFile();
    toolkit.press(dialog, SD_LOG_FILE);
    choose(dialog, SD_LOG_FILE, pathWithoutRoom());
    toolkit.press(dialog, SD_PREPEND);
    EXPECT_EQ(toolkit.text(dialog, SD_PREPEND_PATH), "No file chosen");
    choose(dialog, SD_PREPEND_FILE, given("label.txt"));
    toolkit.answerCancel();
    toolkit.press(dialog, SD_PREPEND_FILE);
    EXPECT_EQ(toolkit.text(dialog, SD_PREPEND_PATH), folder.path("label.txt"));
  });
  EXPECT_EQ(toolkit.errors, std::vector<std::string>(2, "Error getting file name."));
  for (const auto& request : toolkit.fileRequests) EXPECT_EQ(request.title, "Select File");
  EXPECT_EQ(toolkit.fileRequests[0].type, "txt");
  EXPECT_EQ(toolkit.fileRequests[0].directory, "/var/log");
  EXPECT_EQ(toolkit.fileRequests[3].type, "");
  EXPECT_STREQ(SgdParams.logDir, "/tmp");
  EXPECT_STREQ(SgdParams.logFile, "night.txt");
  EXPECT_EQ(SgdParams.prepDir, std::filesystem::current_path().string());
  EXPECT_STREQ(SgdParams.prepFile, "label.txt");
}

TEST_F(SegdDialogsTest, WhatTheListsDialogsStoreGoesWithTheOptions) {
  const Script chooseLists = [this](WINDOW dialog) {
    toolkit.press(dialog, SD_LIMIT);
    toolkit.press(dialog, SD_ZERO_TRACES);
    answer(DLG_SEGD_FILES, SF_OK, [this](WINDOW files) {
      EXPECT_TRUE(toolkit.checked(files, SF_INCLUSION));
      toolkit.press(files, SF_EXCLUSION);
      choose(files, SF_CHOOSE_FILE, given("files.txt"));
      EXPECT_EQ(toolkit.text(files, SF_PATH), folder.path("files.txt"));
    });
    toolkit.press(dialog, SD_LIMIT_LIST);
    EXPECT_EQ(toolkit.text(dialog, SD_LIMIT_PATH), folder.path("files.txt"));
    answer(DLG_SEGD_FILES, SF_CANCEL, [this](WINDOW files) {
      EXPECT_TRUE(toolkit.checked(files, SF_EXCLUSION));
      toolkit.press(files, SF_INCLUSION);
    });
    toolkit.press(dialog, SD_LIMIT_LIST);
    answer(DLG_SEGD_ZERO, ZT_OK, [this](WINDOW zero) { choose(zero, ZT_CHOOSE_FILE, given("dead.txt")); });
    toolkit.press(dialog, SD_ZERO_LIST);
    EXPECT_EQ(toolkit.text(dialog, SD_ZERO_PATH), folder.path("dead.txt"));
  };
  options(chooseLists, SD_CANCEL);
  EXPECT_STREQ(SgdParams.recLimFile, "");
  EXPECT_EQ(SgdParams.recLimType, SEGD_INCLUDE);
  EXPECT_FALSE(SgdParams.limit);
  options(chooseLists);
  EXPECT_EQ(SgdParams.recLimDir, std::filesystem::current_path().string());
  EXPECT_STREQ(SgdParams.recLimFile, "files.txt");
  EXPECT_EQ(SgdParams.recLimType, SEGD_EXCLUDE);
  EXPECT_STREQ(SgdParams.trcLimFile, "dead.txt");
  options([this](WINDOW dialog) {
    toolkit.failNextDialog(DLG_SEGD_FILES);
    toolkit.press(dialog, SD_LIMIT_LIST);
    toolkit.failNextDialog(DLG_SEGD_ZERO);
    toolkit.press(dialog, SD_ZERO_LIST);
  });
  EXPECT_EQ(toolkit.errors, std::vector<std::string>(2, "Can't open dialog"));
}

TEST_F(SegdDialogsTest, TheZeroKeyStaysWithinTheTraceHeader) {
  zeroList([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.rows(dialog, ZT_TYPE), std::vector<std::string>(SegdDataTypes, SegdDataTypes + kSegdKeyTypes));
    EXPECT_EQ(toolkit.text(dialog, ZT_BYTE), "1");  // no key is set at first
    for (const char* text : {"0", "-4", "nonsense", ""}) EXPECT_EQ(toolkit.typed(dialog, ZT_BYTE, text), "1") << text;
    EXPECT_EQ(toolkit.typed(dialog, ZT_BYTE, "21"), "20");
    toolkit.select(dialog, ZT_TYPE, SEGD_KEY_INT24);
    EXPECT_EQ(toolkit.text(dialog, ZT_BYTE), "18");
    toolkit.select(dialog, ZT_TYPE, SEGD_KEY_INT16);
    toolkit.expectTyped(dialog, ZT_BYTE, {{"99999999999", "19"}, {"5", "5"}});
  });
  EXPECT_EQ(SgdParams.trcLimByte, 5);
  EXPECT_EQ(SgdParams.trcLimType, SEGD_KEY_INT16);
  SgdParams.trcLimByte = 4000;
  SgdParams.trcLimType = 77;
  zeroList([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, ZT_BYTE), "18");
    EXPECT_EQ(toolkit.selected(dialog, ZT_TYPE), std::vector<std::string>{SegdDataTypes[SEGD_KEY_INT24]});
  });
  EXPECT_EQ(SgdParams.trcLimByte, 18);
  zeroList([this](WINDOW dialog) { toolkit.typeInto(dialog, ZT_BYTE, "3"); }, ZT_CANCEL);
  EXPECT_EQ(SgdParams.trcLimByte, 18);
}

class SegdFromCopyDialogTest : public JobTest {};

TEST_F(SegdFromCopyDialogTest, ParametersOpenForSegdAndStartFromTheDefaults) {
  SgdParams.ffidOption = true;
  openCopyDialog();
  EXPECT_FALSE(SgdParams.ffidOption);
  toolkit.select(dialog, CP_FORMAT, "SEG D");
  toolkit.onModal(DLG_SEGD, [this](WINDOW parameters) {
    toolkit.press(parameters, SD_NUMBER_BY_FILE);
    toolkit.press(parameters, SD_OK);
  });
  toolkit.press(dialog, CP_PARAMETERS);
  EXPECT_TRUE(SgdParams.ffidOption);
}

}  // namespace
