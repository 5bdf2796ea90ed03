// The dialogs of the SEG Y copy: what they show, enable, accept and store.

#include "libkyr/text.h"
#include "quarlo/segycopy/segy_dlgs.h"
#include "tests/support/settings_fixture.h"

namespace {

class SegyDialogsTest : public SettingsDialogTest {
 protected:
  SegyDialogsTest() { segyInit(); }
  void options(const Script& script, int button = SY_OK) { edit(DLG_SEGY, SegyCpy_eh, button, script); }
  void polygon(const Script& script, int button = PG_OK) { edit(DLG_SEGY_POLYGON, PolyDlg_eh, button, script); }
  void list(const Script& script, int button = LL_OK) { edit(DLG_SEGY_LIST, ListDlg_eh, button, script); }
};

const std::vector<int> SORT_CONTROLS = {SY_PRIMARY_BYTE, SY_SECONDARY_TYPE, SY_TERTIARY,
                                        SY_SORT_FILE,    SY_KEEP_SORT_FILE, SY_REVERSE};
const std::vector<int> SPLIT_CONTROLS = {SY_PART_SIZE, SY_RECORD_BYTE, SY_RECORD_TYPE};

TEST_F(SegyDialogsTest, OptionsEnableWhatBelongsToTheFlagsThatAreSet) {
  options([this](WINDOW dialog) {
    EXPECT_EQ(enabled(dialog, SORT_CONTROLS), std::vector<bool>(6, false));
    EXPECT_EQ(enabled(dialog, SPLIT_CONTROLS), std::vector<bool>(3, false));
    EXPECT_FALSE(toolkit.enabled(dialog, SY_CONCATENATE));
    EXPECT_FALSE(toolkit.enabled(dialog, SY_LIMIT));
    toolkit.press(dialog, SY_SORT);
    EXPECT_EQ(enabled(dialog, SORT_CONTROLS), std::vector<bool>(6, true));
    EXPECT_FALSE(toolkit.enabled(dialog, SY_TERTIARY_BYTE));
    toolkit.press(dialog, SY_TERTIARY);
    EXPECT_TRUE(toolkit.enabled(dialog, SY_TERTIARY_BYTE));
    toolkit.press(dialog, SY_MULTIPLE_OUT);
    EXPECT_EQ(enabled(dialog, SPLIT_CONTROLS), std::vector<bool>(3, true));
    toolkit.press(dialog, SY_MULTIPLE_IN);
    EXPECT_TRUE(toolkit.enabled(dialog, SY_CONCATENATE));
    EXPECT_FALSE(toolkit.enabled(dialog, SY_MULTIPLE_OUT));
    EXPECT_EQ(enabled(dialog, SPLIT_CONTROLS), std::vector<bool>(3, false));
  });
  EXPECT_TRUE(SgyParams.sort && SgyParams.useTertiary && SgyParams.multipleIn && SgyParams.multipleOut);
  EXPECT_FALSE(SgyParams.rangeLimit || SgyParams.concatInputs || SgyParams.reportFFIDs);
}

TEST_F(SegyDialogsTest, OptionsTakeNumbersTypesAndNonsense) {
  options([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, SY_PART_SIZE), "10.000");
    EXPECT_EQ(toolkit.rows(dialog, SY_RECORD_TYPE),
              (std::vector<std::string>{"1 byte integer", "2 byte integer", "4 byte integer", "4 byte float"}));
    EXPECT_EQ(toolkit.selected(dialog, SY_RECORD_TYPE), std::vector<std::string>{"4 byte integer"});
    toolkit.press(dialog, SY_SORT);
    toolkit.press(dialog, SY_MULTIPLE_OUT);
    EXPECT_EQ(toolkit.typed(dialog, SY_PRIMARY_BYTE, " 17 bytes"), "17");
    EXPECT_EQ(toolkit.typed(dialog, SY_SECONDARY_BYTE, "-4"), "1");
    EXPECT_EQ(toolkit.typed(dialog, SY_RECORD_BYTE, "nonsense"), "1");
    toolkit.select(dialog, SY_RECORD_TYPE, DT_FLOAT32);
    for (const char* text : {"nan", "-2", "", "much", "1e999", "1e300"})
      EXPECT_EQ(toolkit.typed(dialog, SY_PART_SIZE, text), "10.000") << text;
    EXPECT_EQ(toolkit.typed(dialog, SY_PART_SIZE, "0.5 GB"), "0.500");
  });
  EXPECT_EQ(std::tuple(SgyParams.sortPrimByte, SgyParams.sortSecByte, SgyParams.recordType, SgyParams.bytesPerPart),
            std::tuple(17, 1, DT_FLOAT32, 536870912.0));
}

TEST_F(SegyDialogsTest, TheSortFileIsChosenAndCancelForgetsEverything) {
  options([this](WINDOW dialog) {
    toolkit.press(dialog, SY_SORT);
    choose(dialog, SY_SORT_FILE, "/tmp/sorted.tmp");
    EXPECT_EQ(toolkit.text(dialog, SY_SORT_PATH), "/tmp/sorted.tmp");
    toolkit.answerCancel();
    toolkit.press(dialog, SY_SORT_FILE);
    toolkit.answerBadFile();
    toolkit.press(dialog, SY_SORT_FILE);
    choose(dialog, SY_SORT_FILE, pathWithoutRoom());
    EXPECT_EQ(toolkit.text(dialog, SY_SORT_PATH), "/tmp/sorted.tmp");
  });
  EXPECT_EQ(toolkit.errors, std::vector<std::string>(2, "Error getting file name."));
  EXPECT_EQ(toolkit.fileRequests[0].title, "Select File");
  EXPECT_EQ(toolkit.fileRequests[1].directory, "/tmp");
  EXPECT_STREQ(SgyParams.sortDir, "/tmp");
  EXPECT_STREQ(SgyParams.sortFile, "sorted.tmp");
  options([this](WINDOW dialog) { toolkit.press(dialog, SY_SORT); }, SY_CANCEL);
  EXPECT_TRUE(SgyParams.sort);
}

TEST_F(SegyDialogsTest, TheLimitsDialogsStoreForThemselves) {
  options([this](WINDOW dialog) {
    toolkit.press(dialog, SY_RANGE_LIMIT);
    toolkit.onModal(DLG_SEGY_POLYGON, [this](WINDOW polygonDialog) {
      toolkit.press(polygonDialog, PG_EXCLUSION);
      toolkit.press(polygonDialog, PG_OK);
    });
    toolkit.press(dialog, SY_LIMIT);
    toolkit.press(dialog, SY_LIMIT_LIST);
    toolkit.onModal(DLG_SEGY_LIST, [this](WINDOW listDialog) {
      toolkit.press(listDialog, LL_EXCLUSION);
      toolkit.press(listDialog, LL_OK);
    });
    toolkit.press(dialog, SY_LIMIT);
    toolkit.failNextDialog(DLG_SEGY_LIST);
    toolkit.press(dialog, SY_LIMIT);
  });
  EXPECT_EQ(toolkit.errors, std::vector<std::string>{"Can't open dialog"});
  EXPECT_EQ(SgyParams.limitType, LT_LIST);
  EXPECT_EQ(SgyParams.polyParams.polyType, LS_EXCLUSION);
  EXPECT_EQ(SgyParams.listParams.listType, LS_EXCLUSION);
}

TEST_F(SegyDialogsTest, ThePolygonHasTenRowsOfWhichThePointsCount) {
  polygon([this](WINDOW dialog) {
    EXPECT_FALSE(toolkit.enabled(dialog, PG_FIRST_PRIMARY));
    EXPECT_EQ(toolkit.text(dialog, PG_FIRST_PRIMARY + 3), "0");
    EXPECT_EQ(toolkit.text(dialog, PG_FIRST_PRIMARY + 4), " ");
    toolkit.press(dialog, PG_TYPED);
    EXPECT_FALSE(toolkit.enabled(dialog, PG_CHOOSE_FILE));
    EXPECT_TRUE(toolkit.enabled(dialog, PG_FIRST_SECONDARY + 3));
    EXPECT_FALSE(toolkit.enabled(dialog, PG_FIRST_SECONDARY + 4));
    EXPECT_EQ(toolkit.typed(dialog, PG_FIRST_PRIMARY + 3, "12.25"), "12");
    toolkit.select(dialog, PG_PRIMARY_TYPE, DT_FLOAT32);
    EXPECT_EQ(toolkit.text(dialog, PG_FIRST_PRIMARY + 3), "12.250");
    EXPECT_EQ(toolkit.typed(dialog, PG_FIRST_PRIMARY + 3, "x"), "12.250");
    toolkit.typeInto(dialog, PG_FIRST_SECONDARY, "-7");
    toolkit.typeInto(dialog, PG_POINTS, "3");
    EXPECT_EQ(toolkit.text(dialog, PG_FIRST_PRIMARY + 3), " ");
    EXPECT_EQ(toolkit.typed(dialog, PG_POINTS, "4000"), "10");
    EXPECT_EQ(toolkit.text(dialog, PG_FIRST_PRIMARY + 3), "0.000");
    EXPECT_TRUE(toolkit.enabled(dialog, PG_FIRST_SECONDARY + 9));
    EXPECT_EQ(toolkit.typed(dialog, PG_POINTS, "0"), "1");
  });
  EXPECT_EQ(std::tuple(SgyParams.polyParams.numPoints, SgyParams.polyParams.type, SgyParams.polyParams.secondary[0],
                       SgyParams.polyParams.primary[3]),
            std::tuple(1, PS_TYPED, -7.0, 0.0));
  polygon([this](WINDOW dialog) {
    toolkit.press(dialog, PG_FROM_FILE);
    choose(dialog, PG_CHOOSE_FILE, given("field.poly"));
    EXPECT_EQ(toolkit.text(dialog, PG_PATH), folder.path("field.poly"));
  });
  EXPECT_STREQ(SgyParams.polyParams.file, "field.poly");
}

TEST_F(SegyDialogsTest, TheListNamesItselfByItsKind) {
  list([this](WINDOW dialog) {
    EXPECT_EQ(toolkit.text(dialog, LL_FILE_LABEL), "Inclusion List File");
    EXPECT_FALSE(toolkit.enabled(dialog, LL_SECONDARY_BYTE));
    toolkit.press(dialog, LL_EXCLUSION);
    EXPECT_EQ(toolkit.text(dialog, LL_FILE_LABEL), "Exclusion List File");
    EXPECT_EQ(toolkit.text(dialog, LL_KEYS_LABEL), "Exclusion List Trace Header Fields");
    toolkit.press(dialog, LL_USE_SECONDARY);
    EXPECT_EQ(toolkit.typed(dialog, LL_SECONDARY_BYTE, "0"), "1");
    toolkit.select(dialog, LL_SECONDARY_TYPE, DT_INT16);
  });
  EXPECT_TRUE(SgyParams.listParams.useSec);
  EXPECT_EQ(SgyParams.listParams.secByte, 1);
  EXPECT_EQ(SgyParams.listParams.secType, DT_INT16);
  list([this](WINDOW dialog) { toolkit.press(dialog, LL_INCLUSION); }, LL_CANCEL);
  EXPECT_EQ(SgyParams.listParams.listType, LS_EXCLUSION);
}

}  // namespace
