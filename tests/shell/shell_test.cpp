// The application shell: start and end, the menu, the main panel, what is refused or put off while a job runs.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <optional>
#include <span>

#include "quarlo/help/helppage.h"
#include "quarlo/help/helptopics.h"
#include "quarlo/help/messagehelp.h"
#include "quarlo/help/plaintext.h"
#include "quarlo/shell/menubar.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/jobstate.h"
#include "resources/dialogs.h"
#include "tests/support/shell_fixture.h"
#include "xvt/probe.h"

namespace {

constexpr int tapeItems[] = {1022, 1023, 1025, 1026, 1027, 1036, 1038};

bool tapeItemsAre(bool enabled) {
  return std::ranges::all_of(tapeItems, [&](int item) { return xvt_menu_is_item_enabled(TASK_WIN, item) == enabled; });
}

using ShellStart = ShellTest;

class Shell : public ShellTest {
 protected:
  Shell() { startUp(); }
  /// Makes the input look like an open tape, to those who only look.
  void pretendTape() {
    units->state = 1;
    units->type = UT_TAPE;
    tellUnitsChanged();
  }
  ~Shell() override {
    units->state = 0;
    units->type = UT_NONE;
  }
};

TEST_F(ShellStart, StartUpReportsTheBlockLimitAndOpensTheMainDialog) {
  unsetenv("ST_BUFFER");
  startUp();
  EXPECT_EQ(console(), (Lines{"I/O will be limited to 32k bytes per block.", " ", " "}));
  EXPECT_EQ(readFile("console.txt"), "I/O will be limited to 32k bytes per block.\n \n \n");
  EXPECT_EQ(toolkit.opened, std::vector<int>{DLG_MAIN});
  EXPECT_EQ(gMainDialogWindow, toolkit.dialog(DLG_MAIN));
  EXPECT_EQ(gMainWindowUp, 1);
  EXPECT_TRUE(xvt_menu_is_item_checked(TASK_WIN, 1032));
  for (const int item : {32026, 32027, 32028, 32029, 1008, 1009, 1010, 1011})
    EXPECT_TRUE(xvt_menu_is_item_enabled(TASK_WIN, item)) << item;
  EXPECT_TRUE(tapeItemsAre(false));
}

TEST_F(ShellStart, TheBlockLimitFollowsTheEnvironment) {
  setenv("ST_BUFFER", "64", 1);
  startUp();
  unsetenv("ST_BUFFER");
  EXPECT_EQ(console().front(), "I/O will be limited to 64k bytes per block.");
}

TEST_F(Shell, TapeItemsFollowTheInputUnit) {
  pretendTape();
  EXPECT_TRUE(tapeItemsAre(true));
  units->type = UT_DISK;
  tellUnitsChanged();
  EXPECT_TRUE(tapeItemsAre(false));
}

TEST_F(Shell, MainDialogIsReopenedFromTheMenu) {
  toolkit.chooseMenu(1030);
  EXPECT_EQ(toolkit.opened, std::vector<int>{DLG_MAIN}) << "one that is up is raised";
  toolkit.close(gMainDialogWindow);
  EXPECT_EQ(gMainWindowUp, 0);
  toolkit.chooseMenu(1030);
  EXPECT_EQ(toolkit.opened, (std::vector<int>{DLG_MAIN, DLG_MAIN}));
  EXPECT_EQ(gMainWindowUp, 1);
}

TEST_F(Shell, EveryButtonOfTheMainDialogAnswers) {
  const DLG_RES& main = kShellDialogs[0];
  ASSERT_EQ(main.id, DLG_MAIN);
  for (std::size_t n = 0; n < main.count; ++n) {
    if (main.items[n].kind != IK_PUSH) continue;
    const std::size_t before = toolkit.opened.size() + toolkit.notes.size() + toolkit.errors.size();
    toolkit.press(gMainDialogWindow, main.items[n].id);
    EXPECT_GT(toolkit.opened.size() + toolkit.notes.size() + toolkit.errors.size(), before) << main.items[n].name;
  }
}

TEST_F(Shell, CopyDialogOpensOnceAndItsFailureIsTold) {
  toolkit.failNextDialog(DLG_COPY);
  toolkit.press(gMainDialogWindow, MAIN_IMAGE_COPY);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening Image Copy dialog"});
  toolkit.press(gMainDialogWindow, MAIN_IMAGE_COPY);
  toolkit.press(gMainDialogWindow, MAIN_IMAGE_COPY);
  EXPECT_EQ(toolkit.opened, (std::vector<int>{DLG_MAIN, DLG_COPY}));
}

TEST_F(Shell, DumpButtonsDoNothingWhileTheirDialogsAreUp) {
  gTAnlsWindowUp = 1;
  gFAnlsWindowUp = 1;
  toolkit.press(gMainDialogWindow, MAIN_TAPE_DUMP);
  toolkit.press(gMainDialogWindow, MAIN_FILE_DUMP);
  gTAnlsWindowUp = 0;
  gFAnlsWindowUp = 0;
  EXPECT_TRUE(toolkit.notes.empty());
  EXPECT_TRUE(toolkit.errors.empty());
  EXPECT_EQ(toolkit.opened.size(), 1U);
}

TEST_F(Shell, CountingFilemarksWantsTheTapeDumpDialog) {
  pretendTape();
  mark();
  toolkit.chooseMenu(1038);
  EXPECT_EQ(toolkit.errors, Lines{"Error: this option requires the Tape Analysis window to be open."});
  EXPECT_TRUE(newLines().empty()) << "no tape was touched";

  gTAnlsWindowUp = 1;
  toolkit.chooseMenu(1038);
  gTAnlsWindowUp = 0;
  EXPECT_EQ(toolkit.errors.back(), "Error: this feature has not been implemented on Linux.");
  EXPECT_EQ(std::ranges::count(newLines(), "Counted -1 filemarks on tape."), 1);
}

TEST_F(Shell, CompanionProgramsAnswerInEveryCase) {
  for (int item = 1008; item <= 1011; ++item) toolkit.chooseMenu(item);
  EXPECT_EQ(toolkit.notes.size(), 4U);
  EXPECT_EQ(toolkit.notes.front(), "Companion program 1 is not set up in this build.");

  std::filesystem::create_directory("elsewhere");
  std::filesystem::current_path("elsewhere");
  const auto before = std::filesystem::current_path();
  startCompanion(2, "no-such-program-anywhere", "Velocity Picker");
  EXPECT_EQ(toolkit.errors, Lines{"Error: could not start Velocity Picker."});
  startCompanion(3, "true", "Truth");
  EXPECT_EQ(toolkit.errors.size(), 1U);
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(Shell, QuitEndsConsoleAndApplication) {
  toolkit.chooseMenu(1035);
  EXPECT_TRUE(xvt_app_is_ending());
  EXPECT_EQ(toolkit.windowTitled("Console"), NULL_WIN);
  EXPECT_EQ(units->ioBuffer, nullptr);
}

TEST_F(Shell, SessionEndIsAllowedAndObeyed) {
  EXPECT_EQ(xvt::probe::endSession(), std::nullopt);
  EXPECT_TRUE(xvt_app_is_ending());
}

TEST_F(Shell, ClosingWaitsForTheJobsEnd) {
  int outerFlag = 0;
  int innerFlag = 0;
  {
    const RunningJob outer(&outerFlag);
    {
      const RunningJob inner(&innerFlag);
      toolkit.answerAsk(RESP_2);
      toolkit.close(TASK_WIN);
      EXPECT_EQ(outerFlag + innerFlag, 0) << "the user thought better of it";
      toolkit.answerAsk(RESP_DEFAULT);
      toolkit.chooseMenu(CMD_QUIT);
      EXPECT_EQ(toolkit.asks, Lines(2, "A job is running. Stop it and quit?"));
      toolkit.close(TASK_WIN);
      EXPECT_EQ(toolkit.asks.size(), 2U) << "it is stopping already";
      EXPECT_EQ(outerFlag, 1);
      EXPECT_EQ(innerFlag, 1);
      EXPECT_NE(units->ioBuffer, nullptr);
    }
    EXPECT_FALSE(xvt_app_is_ending()) << "the outer job still runs";
    int late = 0;
    const RunningJob next(&late);
    EXPECT_EQ(late, 1) << "begun after the stop was wished for";
    EXPECT_TRUE(jobIsRunning());
  }
  EXPECT_FALSE(jobIsRunning());
  EXPECT_TRUE(xvt_app_is_ending());
  EXPECT_EQ(units->ioBuffer, nullptr);
}

TEST_F(Shell, WishesAreCarriedOutInTheirOrder) {
  Lines done;
  {
    const RunningJob job(nullptr);
    requestStopOfJobs([&done] { done.push_back("dialog"); });
    requestStopOfJobs([&done] { done.push_back("program"); });
    EXPECT_TRUE(done.empty());
  }
  requestStopOfJobs([&done] { done.push_back("at once"); });
  EXPECT_EQ(done, (Lines{"dialog", "program", "at once"}));
}

TEST_F(Shell, TapeIsLeftAloneWhileAJobRuns) {
  pretendTape();
  toolkit.chooseMenu(1029);
  ASSERT_EQ(gControlWindowUp, 1);
  mark();
  int flag = 0;
  const RunningJob job(&flag);
  for (const int item : tapeItems) toolkit.chooseMenu(item);
  for (const int button : {3, 4, 5, 6, 16, 23, 24}) toolkit.press(gControlWindow, button);
  EXPECT_EQ(newLines(), Lines(14, kJobIsRunning)) << "each is refused once";
  EXPECT_EQ(toolkit.beeps, 14);
  EXPECT_TRUE(toolkit.notes.empty()) << "a box would hold the job up";
  EXPECT_EQ(flag, 0);
  EXPECT_EQ(toolkit.opened, (std::vector<int>{DLG_MAIN, DLG_TAPE_CONTROL}));
}

TEST_F(Shell, TapeControlFollowsAJob) {
  pretendTape();
  toolkit.chooseMenu(CMD_TAPE_CONTROL);
  int traces = 0;
  JobFrame frame(JOB_SEGY, UT_TAPE, &traces, &traces, &traces);
  units->blockNum = 4711;
  toolkit.advance(kProgressPeriod);
  EXPECT_EQ(toolkit.text(gControlWindow, TC_BLOCK_NUMBER), "4711");
}

std::string mnemonicOf(const DLG_ITEM& item) {
  const std::string label = item.label != nullptr ? item.label : "";
  const std::size_t tilde = label.find('~');
  return tilde == std::string::npos ? "" : std::string(1, static_cast<char>(std::tolower(label.at(tilde + 1))));
}

template <typename Value>
bool areUnique(std::vector<Value> values) {
  std::ranges::sort(values);
  return std::ranges::adjacent_find(values) == values.end();
}

// Every button answers to a key of its own (Return and Escape for the last ones), every control to a name and a number.
TEST(Resources, KeysNamesAndNumbersAreUnique) {
  for (const DLG_RES& dialog : std::span(quarloResources()->dialogs, quarloResources()->dialog_count)) {
    std::vector<std::string> keys;
    std::vector<std::string> names;
    std::vector<int> numbers;
    for (const DLG_ITEM& item : std::span(dialog.items, dialog.count)) {
      if (const std::string key = mnemonicOf(item); !key.empty()) keys.push_back(key);
      if (item.name != nullptr) names.emplace_back(item.name);
      if (item.id != 0 && item.kind != IK_LABEL) numbers.push_back(item.id);
      const bool byReturnOrEscape = (item.flags & (IF_DEFAULT | IF_CANCEL)) != 0;
      EXPECT_TRUE(item.kind != IK_PUSH || byReturnOrEscape || !mnemonicOf(item).empty())
          << dialog.name << ": " << item.label;
    }
    EXPECT_TRUE(areUnique(keys)) << dialog.name;
    EXPECT_TRUE(areUnique(names)) << dialog.name;
    EXPECT_TRUE(areUnique(numbers)) << dialog.name;
  }
}

// ---- help

bool leadsSomewhere(const std::string& place) {
  static std::map<std::string, std::optional<HelpPage>> pages;
  const HelpPlace to = placeOf(place);
  const auto& page =
      pages.try_emplace(to.page, pages.contains(to.page) ? std::nullopt : findPage(to.page)).first->second;
  return page && (to.section.empty() || page->lineOf(to.section));
}

TEST(Help, EveryWindowHasItsPlaceAndEveryReferenceLeadsSomewhere) {
  std::map<std::string, std::string> windows{{"segy-input", "SEG Y input"},
                                             {"segy-output", "SEG Y output"},
                                             {"segd-input", "SEG D input"},
                                             {"dataset-input", "Dataset input"}};
  for (const char* name : {"task", "console", "tape-dump-window", "file-dump-window", "file-box", "dir-box",
                           "error-box", "note-box", "ask-box", "help"})
    windows[name] = "";
  for (std::size_t at = 0; at < quarloResources()->dialog_count; ++at)
    windows[quarloResources()->dialogs[at].name] = quarloResources()->dialogs[at].title;
  for (const auto& [name, title] : windows) {
    const std::string place = helpPlaceOf(name, title);
    EXPECT_TRUE(leadsSomewhere(place)) << name << ": " << place;
  }
  EXPECT_TRUE(leadsSomewhere(kShortcuts));
  for (const std::string& name : allPages())
    for (const HelpPage page = *findPage(name); const std::string& line : page.lines) {
      const std::string place = referenceIn(line);
      EXPECT_TRUE(place.empty() || leadsSomewhere(place)) << name << ": " << line;
    }
}

TEST(Help, PagesBecomePlainText) {
  const HelpPage page =
      readPage("x.md",
               "# A *page* & more\n\nSee [the run](merge.md#run), `a*b  c`,\n2 * 3 and\n**bold**.\n\n"
               "- one\n  and on\n2. two\n\n    code [x](y.md)\n\n| a | bb |\n|---|:--|\n| `x` \\| | y |\n"
               "### `%d of %s`\n### Two\n\n![A picture](p.png)\n");
  EXPECT_EQ(page.lines, (Lines{"A page & more", "=============", "",
                               "See the run [merge.md#run], a*b c, 2 * 3 and bold.", "", "- one and on", "2. two", "",
                               "    code [x](y.md)", "", "a    bb", "---  --", "x |  y", "", "%d of %s", "Two", ""}));
  EXPECT_EQ(page.lineOf("two"), 15);
  EXPECT_EQ(page.lineOf("a-page--more"), 0);
  EXPECT_EQ(explanationOf(page, "  hello  "), nullptr);
}

TEST(Help, AMessageFindsTheTextItWasMadeFrom) {
  const HelpPage page = readPage("x.md",
                                 "### `  *** Error %s.`\n### `  *** Error reading \"%s\", %d%% done.`\n### `%s`\n"
                                 "### ` (or %5d) bytes`\n### `Not so`\n");
  const auto found = [&page](const char* message) {
    const HelpHeading* heading = explanationOf(page, message);
    return heading != nullptr ? heading->line : -1;
  };
  EXPECT_EQ(found("  *** Error writing."), 0);
  EXPECT_EQ(found("  *** Error reading \"a.b\", 7% done."), 1);
  EXPECT_EQ(found("  *** Error reading \"a.b\"."), 0);
  EXPECT_EQ(found("Block of 5 (or    12) bytes left"), 3);
  EXPECT_EQ(found(" "), -1);
  EXPECT_EQ(found("anything"), -1);
}

TEST_F(Shell, HelpTellsOfTheWindowTheLineAndTheBox) {
  const WINDOW log = toolkit.windowTitled("Console");
  const auto helpOn = [](WINDOW window) {
    EVENT event;
    event.type = E_HELP;
    event.help.window = window;
    xvt_win_dispatch_event(TASK_WIN, &event);
    return xvt::probe::window("help");
  };
  const auto selected = [this](WINDOW window) {
    std::size_t begin = 0;
    std::size_t end = 0;
    return toolkit.lines(window)[static_cast<std::size_t>(xvt_tx_get_selection(xvt_tx_get(window, 1), &begin, &end))];
  };
  EXPECT_EQ(selected(helpOn(log)), "I/O will be limited to %dk bytes per block.");
  xvt_tx_select(xvt_tx_get(log, 1), 1, 0, 1);
  EXPECT_EQ(selected(helpOn(log)), "Windows with text");
  EXPECT_EQ(selected(helpOn(gMainDialogWindow)), "The main window");
  EXPECT_EQ(toolkit.title(helpOn(TASK_WIN)), "Help: User guide");
  toolkit.chooseMenu(CMD_HELP_SHORTCUTS);
  EXPECT_EQ(selected(xvt::probe::window("help")), "Keys and shortcuts");
  toolkit.chooseMenu(CMD_HELP_CONTENTS);
  const WINDOW contents = xvt::probe::window("help");
  const Lines lines = toolkit.lines(contents);
  const auto line = std::ranges::find(lines, "- Dataset merge [merge.md]") - lines.begin();
  xvt_tx_select(xvt_tx_get(contents, 1), line, 0, 0);
  EXPECT_EQ(toolkit.title(helpOn(contents)), "Help: Dataset merge");
  toolkit.chooseMenu(CMD_HELP_BACK);
  EXPECT_EQ(selected(xvt::probe::window("help")), "- Dataset merge [merge.md]");
  toolkit.chooseMenu(CMD_TEXT_CLOSE);
  EXPECT_EQ(xvt::probe::window("help"), NULL_WIN);
}

}  // namespace
