// The console and the dump windows: text windows that keep every line in order.
#include "quarlo/common/dump_win.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/jobstate.h"
#include "resources/ids.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"
#include "xvt/probe.h"

namespace {

XVT_FNTID font() { return xvt_font_create("courier", 10, FS_PLAIN); }

int lineHeight() {
  int leading = 0;
  int ascent = 0;
  int descent = 0;
  xvt_font_get_metrics(font(), &leading, &ascent, &descent);
  return leading + ascent + descent;
}

int characterWidth() { return xvt_font_get_text_width(font(), "m", 1); }

class TextWindowTest : public testing::Test {
 protected:
  void SetUp() override {
    kit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
  }
  void TearDown() override {
    for (DumpWindow* dump : {&tDumpWin, &fDumpWin})
      if (dump->theWindow != NULL_WIN) xvt_vobj_destroy(dump->theWindow);
    killConsole();
  }

  static void size(WINDOW window, int lines, int columns) {
    EVENT event;
    event.type = E_SIZE;
    event.size.height = lines * lineHeight();
    event.size.width = columns * characterWidth();
    xvt_win_dispatch_event(window, &event);
  }
  static void scroll(WINDOW window, EVENT_TYPE bar, SCROLL_CONTROL what, int position = 0) {
    EVENT event;
    event.type = bar;
    event.scroll.what = what;
    event.scroll.position = position;
    xvt_win_dispatch_event(window, &event);
  }
  static long origin(WINDOW window, int* offset = nullptr) { return xvt_tx_get_origin(xvt_tx_get(window, 1), offset); }
  WINDOW console() { return kit.windowTitled("Console"); }
  bool consoleIsChecked() { return xvt_menu_is_item_checked(TASK_WIN, 1032); }

  TestFolder folder;
  TestToolkit kit;
};

TEST_F(TextWindowTest, TheConsoleKeepsEveryLineOnScreenAndInTheFile) {
  writeFile("console.txt", "of an earlier run\n");
  consInit();
  console_out("Copy started at noon.");
  console_out(" ");
  console_printf("%s %d", std::string(5000, 'x').c_str(), 7);
  console_out("two\nlines");
  console_out(nullptr);
  EXPECT_EQ(kit.lines(console()), (Lines{"Copy started at noon.", " ", std::string(5000, 'x') + " 7", "two", "lines"}));
  // Read while the console is open: every line is flushed.
  EXPECT_EQ(readFile("console.txt"), "Copy started at noon.\n \n" + std::string(5000, 'x') + " 7\ntwo\nlines\n");
  kit.scarce = TestToolkit::Scarce::lines;
  testing::internal::CaptureStderr();
  console_out("last words");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "xvt: event handler: std::bad_alloc\n");
  EXPECT_TRUE(readFile("console.txt").ends_with("lines\nlast words\n"));
}

TEST_F(TextWindowTest, ClosingHidesTheConsoleAndTheCommandShowsItAgain) {
  consInit();
  const WINDOW window = console();
  console_out("before");
  kit.close(window);
  EXPECT_TRUE(xvt_vobj_is_valid(window));
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  EXPECT_FALSE(consoleIsChecked());
  EXPECT_EQ(gConsIsVisible, 0);
  console_out("hidden");
  raiseConsole();
  EXPECT_TRUE(xvt_vobj_is_visible(window));
  EXPECT_TRUE(consoleIsChecked());
  EXPECT_EQ(gConsIsVisible, 1);
  EXPECT_EQ(kit.lines(window), (Lines{"before", "hidden"}));
  raiseConsole();
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  raiseConsole();
  killConsole();
  EXPECT_FALSE(xvt_vobj_is_valid(window));
  console_out("nobody hears");
  raiseConsole();
  EXPECT_EQ(readFile("console.txt"), "before\nhidden\n");
}

TEST_F(TextWindowTest, AConsoleWithoutItsFileWorksOnScreen) {
  std::filesystem::create_directory("console.txt");
  consInit();
  console_out("on screen only");
  EXPECT_EQ(kit.lines(console()),
            (Lines{"  ** \"console.txt\" cannot be written (Is a directory). These lines stand here only.",
                   "on screen only"}));
}

TEST_F(TextWindowTest, AFullDiskIsReportedOnce) {
  std::filesystem::create_symlink("/dev/full", "console.txt");
  consInit();
  testing::internal::CaptureStderr();
  console_out("first");
  console_out("second");
  killConsole();
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(said, "quarlo:  *** Error writing to \"console.txt\": No space left on device.\n");
}

TEST_F(TextWindowTest, TheNewestLineStaysInViewUnlessTheUserScrolledBack) {
  consInit();
  const WINDOW window = console();
  size(window, 10, 40);
  for (int line = 0; line < 10; ++line) console_printf("%d", line);
  EXPECT_EQ(origin(window), 0);
  console_out("10");
  EXPECT_EQ(origin(window), 1);
  for (int line = 11; line < 100; ++line) console_printf("%d", line);
  EXPECT_EQ(origin(window), 90);
  EXPECT_EQ(kit.scrollPosition(window, VSCROLL), 90 * lineHeight());
  EXPECT_EQ(kit.scrollLimit(window, VSCROLL), 100 * lineHeight());
  scroll(window, E_VSCROLL, SC_PAGE_UP);
  EXPECT_EQ(origin(window), 80);
  console_out("100");
  EXPECT_EQ(origin(window), 80);
  // The field moves by itself, by the wheel; the bar follows, and at the end new lines are followed again.
  consScrollCallback(xvt_tx_get(window, 1), 42, 101, 0);
  EXPECT_EQ(kit.scrollPosition(window, VSCROLL), 42 * lineHeight());
  scroll(window, E_VSCROLL, SC_THUMB, 1'000'000);
  EXPECT_EQ(origin(window), 91);
  console_out("101");
  EXPECT_EQ(origin(window), 92);
  // Smaller, larger, larger than the text.
  size(window, 5, 40);
  EXPECT_EQ(origin(window), 97);
  size(window, 20, 40);
  EXPECT_EQ(origin(window), 82);
  size(window, 200, 40);
  EXPECT_EQ(origin(window), 0);
  size(window, 0, 0);
  console_out("into nothing");
}

TEST_F(TextWindowTest, ScrollBarsMoveByLinesPagesAndTheThumb) {
  consInit();
  const WINDOW window = console();
  size(window, 10, 40);
  for (int line = 0; line < 50; ++line) console_out(line == 7 ? std::string(100, 'w').c_str() : "line");
  const int height = lineHeight();
  const int wide = characterWidth();
  struct Case {
    EVENT_TYPE bar;
    SCROLL_CONTROL what;
    int position;
    long line;
    int offset;
  };
  const int snap = height / 7 * 6;
  for (const Case& c :
       {Case{E_VSCROLL, SC_THUMB, 0, 0, 0}, Case{E_VSCROLL, SC_LINE_UP, 0, 0, 0},
        Case{E_VSCROLL, SC_LINE_DOWN, 0, 1, 0}, Case{E_VSCROLL, SC_PAGE_DOWN, 0, 11, 0},
        Case{E_VSCROLL, SC_THUMBTRACK, 5 * height + height - 1, 5, 0},
        Case{E_VSCROLL, SC_THUMB, 40 * height - snap, 39, 0}, Case{E_VSCROLL, SC_THUMB, 40 * height - snap + 1, 40, 0},
        Case{E_VSCROLL, SC_LINE_DOWN, 0, 40, 0}, Case{E_VSCROLL, SC_PAGE_UP, 0, 30, 0},
        Case{E_HSCROLL, SC_LINE_DOWN, 0, 30, 2 * wide}, Case{E_HSCROLL, SC_PAGE_DOWN, 0, 30, 42 * wide},
        Case{E_HSCROLL, SC_PAGE_DOWN, 0, 30, 60 * wide}, Case{E_HSCROLL, SC_LINE_UP, 0, 30, 58 * wide},
        Case{E_HSCROLL, SC_THUMB, 33, 30, 33}, Case{E_HSCROLL, SC_PAGE_UP, 0, 30, 0}}) {
    scroll(window, c.bar, c.what, c.position);
    int offset = -1;
    EXPECT_EQ(origin(window, &offset), c.line) << c.bar << ' ' << c.what << ' ' << c.position;
    EXPECT_EQ(offset, c.offset) << c.bar << ' ' << c.what << ' ' << c.position;
  }
}

// The paragraph counter is 16 bits wide: past 32767 and 65535 a line must still come last.
TEST_F(TextWindowTest, SeventyThousandLinesStayInOrder) {
  consInit();
  for (int line = 0; line < 70000; ++line) console_printf("%d", line);
  const Lines lines = kit.lines(console());
  ASSERT_EQ(lines.size(), 70000U);
  for (int line = 0; line < 70000; ++line) ASSERT_EQ(lines[static_cast<std::size_t>(line)], std::to_string(line));
}

// Behind a job's beginning the first error is that of the job, and behind the last one comes the first again.
TEST_F(TextWindowTest, WordsAndErrorsAreFoundAndTheTextIsSaved) {
  consInit();
  const WINDOW window = console();
  const TXEDIT text = xvt_tx_get(window, 1);
  size(window, 10, 40);
  const auto chosen = [text] {
    std::size_t begin = 0;
    std::size_t end = 0;
    const T_LNUM line = xvt_tx_get_selection(text, &begin, &end);
    return std::to_string(line) + ":" + std::to_string(begin) + "-" + std::to_string(end);
  };
  console_out("  *** Error of an earlier job");
  {
    const RunningJob job(nullptr);
    for (int line = 1; line < 100; ++line)
      console_out(line == 40 ? "Needle, needle" : line == 70 ? "  ** Warning needle" : line == 90 ? "Error 7." : "hay");
  }
  kit.chooseMenu(CMD_TEXT_FIND);
  const WINDOW box = kit.dialog(DLG_FIND);
  kit.typeInto(box, FIND_TEXT, "needle");
  const auto find = [&](int button) {
    kit.press(box, button);
    return chosen() + " " + kit.text(box, FIND_HINT);
  };
  EXPECT_EQ(find(FIND_NEXT), "40:0-6 Line 41 of 100.");
  EXPECT_EQ(origin(window), 35);
  EXPECT_EQ(kit.scrollPosition(window, VSCROLL), 35 * lineHeight());
  console_out("the text grows");
  EXPECT_EQ(origin(window), 35);
  EXPECT_EQ(find(FIND_NEXT), "40:8-14 Line 41 of 101.");
  EXPECT_EQ(find(FIND_NEXT), "70:13-19 Line 71 of 101.");
  EXPECT_EQ(find(FIND_NEXT), "40:0-6 Line 41 of 101, from the beginning again.");
  EXPECT_EQ(find(FIND_PREVIOUS), "70:13-19 Line 71 of 101, from the end again.");
  kit.press(box, FIND_CASE);
  kit.typeInto(box, FIND_TEXT, "Needle");
  EXPECT_EQ(find(FIND_PREVIOUS), "40:0-6 Line 41 of 101.");
  EXPECT_EQ(find(FIND_NEXT), "40:0-6 Line 41 of 101, from the beginning again.");
  kit.typeInto(box, FIND_TEXT, "cow");
  EXPECT_EQ(find(FIND_NEXT), "40:0-6 Not found: cow");
  kit.chooseMenu(CMD_TEXT_ERROR);
  EXPECT_EQ(chosen(), "90:0-8");
  kit.chooseMenu(CMD_TEXT_ERROR);
  EXPECT_EQ(chosen(), "90:0-8");
  const int before = kit.scrollLimit(window, VSCROLL);
  const long first = origin(window);
  kit.chooseMenu(CMD_TEXT_SMALLER);
  EXPECT_LT(kit.scrollLimit(window, VSCROLL), before);
  EXPECT_EQ(kit.scrollPosition(window, VSCROLL), origin(window) * kit.scrollLimit(window, VSCROLL) / 101);
  kit.chooseMenu(CMD_TEXT_USUAL_SIZE);
  EXPECT_EQ(kit.scrollLimit(window, VSCROLL), before);
  EXPECT_LE(origin(window), first);
  kit.answerFile(folder.path("saved.txt"));
  kit.chooseMenu(CMD_TEXT_SAVE);
  EXPECT_EQ(readFile("saved.txt"), readFile("console.txt"));
  EXPECT_EQ(xvt::probe::key(box, "Escape"), std::nullopt);
  EXPECT_FALSE(xvt_vobj_is_valid(box));
  EXPECT_EQ(xvt::probe::key(window, "Ctrl+Shift+g"), std::nullopt);
  EXPECT_EQ(kit.text(kit.dialog(DLG_FIND), FIND_HINT), "Not found: cow");
  kit.close(window);
  EXPECT_EQ(kit.dialog(DLG_FIND), NULL_WIN);
}

TEST_F(TextWindowTest, ADumpWindowStartsHiddenGivesItsTextAndClears) {
  gTDumpIsVisible = gFDumpIsVisible = 1;
  const WINDOW window = dumpInit(kTapeDump);
  EXPECT_EQ(window, tDumpWin.theWindow);
  EXPECT_EQ(aDumpWin, &tDumpWin);
  EXPECT_EQ(kit.title(window), "Tape Dump Window");
  EXPECT_EQ(gTDumpIsVisible + gFDumpIsVisible, 0);
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  EXPECT_EQ(getTextLength(window), 0U);
  dumpOut("ab", window);
  dumpOut("c", window);
  ASSERT_EQ(getTextLength(window), 5U);
  std::string text(6, '#');
  dumpTextGet(window, text.data());
  EXPECT_EQ(text, "ab\nc\n#");
  size(window, 10, 40);
  for (int line = 0; line < 100; ++line) dumpOut("more", window);
  EXPECT_EQ(origin(window), 92);
  dumpClear(window);
  dumpOut("new", window);
  EXPECT_EQ(kit.lines(window), Lines{"new"});
  EXPECT_EQ(origin(window), 0);
  gTDumpIsVisible = gFDumpIsVisible = 1;
  xvt_vobj_set_visible(window, true);
  kit.close(window);
  EXPECT_EQ(gTDumpIsVisible + gFDumpIsVisible, 0);
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  EXPECT_EQ(kit.lines(window), Lines{"new"});
}

// One counter serves both windows, and clearing either resets it; the lines of each stay in the order they came in.
TEST_F(TextWindowTest, TwoDumpWindowsDoNotMixTheirLines) {
  const WINDOW tape = dumpInit(kTapeDump);
  const WINDOW file = dumpInit(1);
  EXPECT_EQ(kit.title(file), "File Dump Window");
  ASSERT_NE(tape, file);
  Lines onTape;
  Lines ofFile;
  for (int line = 0; line < 60; ++line) {
    onTape.push_back("t" + std::to_string(line));
    dumpOut(onTape.back().c_str(), tape);
    if (line % 20 == 13) {
      dumpClear(file);
      ofFile.clear();
    }
    ofFile.push_back("f" + std::to_string(line));
    dumpOut(ofFile.back().c_str(), file);
  }
  EXPECT_EQ(kit.lines(tape), onTape);
  EXPECT_EQ(kit.lines(file), ofFile);
  EVENT end;
  end.type = E_DESTROY;
  xvt_win_dispatch_event(tape, &end);
  EXPECT_FALSE(xvt_vobj_is_valid(tape));
  EXPECT_EQ(tDumpWin.theWindow, NULL_WIN);
  dumpOut("still there", file);
  EXPECT_EQ(kit.lines(file).back(), "still there");
  // Opened again while it is open, a window of the same kind takes its place.
  const WINDOW again = dumpInit(1);
  EXPECT_FALSE(xvt_vobj_is_valid(file));
  EXPECT_EQ(getTextLength(again), 0U);
}

}  // namespace
