// Scripts and boxes against real windows: each run is a small application in a process of its own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/test_files.h"
#include "tests/xvt/offered.h"
#include "xvt/resource.h"
#include "xvt/script/script.h"
#include "xvt/xvt.h"

namespace fs = std::filesystem;

namespace {

// ---- the application --------------------------------------------------------------------------------------------

constexpr int BENCH = 20, GO = 1, STOP = 2, NAME = 3, MIRROR = 4, MARK = 5, ROWS = 6, CHOICE = 7, METER = 8, FAIL = 9,
              ASK = 10, OPEN = 11, SAVE = 12, FOLDER = 13, LONG_NOTE = 14, DIE = 15, SETTINGS = 16, PLACE = 17,
              CMD_TOGGLE = 501, CMD_NEVER = 502;

constexpr DLG_ITEM BENCH_ITEMS[] = {
    ui::row(),
    ui::push(GO, "go", "~Go"),
    ui::push(STOP, "stop", "Stop", IF_DISABLED),
    ui::push(FAIL, "fail", "Fail"),
    ui::push(ASK, "ask", "Ask"),
    ui::push(OPEN, "open", "Open"),
    ui::push(SAVE, "save", "Save"),
    ui::push(FOLDER, "folder", "Folder"),
    ui::push(LONG_NOTE, "long-note", "Long note"),
    ui::push(DIE, "die", "Die"),
    ui::push(SETTINGS, "settings", "Settings"),
    ui::push(PLACE, "place", "Place"),
    ui::endOf(),
    ui::edit(NAME, "name", 20),
    ui::value(MIRROR, "mirror", 30, "Idle"),
    ui::check(MARK, "mark", "Marked"),
    ui::multi(ROWS, "rows", 20, 4),
    ui::option(CHOICE, "choice", 10),
    ui::meter(METER, "meter", 20),
};
constexpr DLG_ITEM SETTINGS_ITEMS[] = {ui::push(GO, "ok", "OK")};
constexpr DLG_RES DIALOGS[] = {{BENCH, "bench", "Work Bench", BENCH_ITEMS, std::size(BENCH_ITEMS)},
                               {SETTINGS, "settings", "Settings", SETTINGS_ITEMS, std::size(SETTINGS_ITEMS)}};
constexpr MENU_ITEM MENU_ITEMS[] = {ui::menu("~File"), ui::checkItem(CMD_TOGGLE, "toggle", "~Toggle"),
                                    ui::command(CMD_NEVER, "never", "~Never", nullptr, false)};
constexpr MENU_RES MENUS[] = {{1, MENU_ITEMS, std::size(MENU_ITEMS)}};
constexpr RESOURCES TABLES = {MENUS, 1, DIALOGS, 2};

WINDOW bench = NULL_WIN;
WINDOW console = NULL_WIN;
bool running = false;
bool stopped = false;

WINDOW ctl(int id) { return xvt_win_get_ctl(bench, id); }

void say(const std::string& line) { xvt_tx_add_par(xvt_tx_get(console, 1), -1, line.c_str()); }

/// A job that never ends by itself: the stop button and the program's end stop it.
void job() {
  running = true;
  stopped = false;
  xvt_vobj_set_enabled(ctl(STOP), true);
  long steps = 0;
  while (!stopped && !xvt_app_is_ending()) {
    xvt_app_process_pending_events();
    if (++steps == 1000) say("working");
    usleep(20);
  }
  running = false;
  if (xvt_app_is_ending()) return;
  xvt_vobj_set_enabled(ctl(STOP), false);
  say("job stopped");
}

void saySpec(const char* kind, FL_STATUS status, const FILE_SPEC& file) {
  say(std::string(kind) + " " + std::to_string(status) + " " + file.dir.path + " | " + file.name + " | " + file.type);
}

void placeBox() {
  FILE_SPEC file{};
  const FL_STATUS status = xvt_dm_post_file_place(&file, "Place it");
  saySpec("place", status, file);
}

void fileBox(bool save) {
  FILE_SPEC file{};
  std::snprintf(file.type, sizeof file.type, "tpf");
  if (save) std::snprintf(file.name, sizeof file.name, "proposed.tpf");
  char before[4096];
  char after[4096];
  const bool known = getcwd(before, sizeof before) != nullptr;
  const FL_STATUS status = save ? xvt_dm_post_file_save(&file, "Save it") : xvt_dm_post_file_open(&file, "Open it");
  if (!known || getcwd(after, sizeof after) == nullptr || std::string(before) != after) say("the directory changed");
  saySpec(save ? "save" : "open", status, file);
}

void folderBox() {
  DIRECTORY directory{};
  const FL_STATUS status = xvt_dm_post_dir_sel(&directory, "Choose a folder");
  say("folder " + std::to_string(status) + " " + directory.path);
}

/// A dialog that is closed and then still has work to do: only behind it does its opener know the answer.
void settings() {
  const auto handler = [](WINDOW window, EVENT* event) {
    if (event->type != E_CONTROL || event->ctl.what != CTL_PRESS) return 0L;
    xvt_vobj_destroy(window);
    for (int step = 0; step < 50; ++step, usleep(1000)) xvt_app_process_pending_events();
    return 0L;
  };
  xvt_dlg_create_res(WD_MODAL, SETTINGS, handler, nullptr);
  say("settings taken");
}

void pressed(int id) {
  if (id == GO) job();
  if (id == STOP) stopped = true;
  if (id == FAIL) xvt_dm_post_error("The tape is torn. It was torn at block %d.", 12);
  if (id == OPEN || id == SAVE) fileBox(id == SAVE);
  if (id == FOLDER) folderBox();
  if (id == PLACE) placeBox();
  if (id == SETTINGS) settings();
  if (id == MARK) xvt_ctl_set_checked(ctl(MARK), !xvt_ctl_is_checked(ctl(MARK)));
  if (id == LONG_NOTE) xvt_dm_post_note("%s\nand a second line", std::string(500, 'w').c_str());
  if (id == DIE) xvt_app_destroy();
  if (id == ASK)
    say("answer " + std::to_string(xvt_dm_post_ask("Overwrite", "Keep", "Cancel",
                                                   "The output tape is not empty. Overwrite it from the beginning? The "
                                                   "%d files now on it are lost.",
                                                   240)));
}

void fillBench(WINDOW window) {
  bench = window;
  for (const char* row : {"alpha", "beta", "gamma", "7"}) xvt_list_add(ctl(ROWS), -1, row);
  for (const char* row : {"first", "second"}) xvt_list_add(ctl(CHOICE), -1, row);
  xvt_list_set_selected(ctl(CHOICE), 0, true);
  xvt_ctl_set_meter(ctl(METER), 40);
}

long benchHandler(WINDOW window, EVENT* event) {
  if (event->type == E_CREATE) fillBench(window);
  if (event->type == E_CLOSE) xvt_vobj_destroy(window);
  if (event->type != E_CONTROL) return 0;
  if (event->ctl.what == CTL_PRESS) pressed(event->ctl.id);
  if (event->ctl.what == CTL_DOUBLE) say("double " + std::to_string(xvt_list_get_selected(ctl(ROWS))));
  if (event->ctl.what == CTL_FOCUS_LOSS) {
    char text[64];
    xvt_vobj_set_title(ctl(MIRROR), xvt_vobj_get_title(ctl(NAME), text, sizeof text));
  }
  return 0;
}

long taskHandler(WINDOW window, EVENT* event) {
  if (event->type == E_CREATE) {
    static const WIN_DEF definition[] = {{W_DOC, {100, 900, 500, 1400}, "Console", 0, NULL_FNTID, WSF_SIZE | WSF_CLOSE},
                                         {WC_TEXTEDIT, {0, 0, 400, 500}, nullptr, 1, NULL_FNTID, 0},
                                         {}};
    console = xvt_win_create_def(
        definition, TASK_WIN, [](WINDOW, EVENT*) { return 0L; }, nullptr);
    xvt_dlg_create_res(WD_MODELESS, BENCH, benchHandler, nullptr);
  }
  if (event->type == E_CLOSE && !running) xvt_app_destroy();
  if (event->type == E_QUIT && event->quit.query) xvt_app_allow_quit();
  if (event->type == E_COMMAND)
    xvt_menu_set_item_checked(window, event->cmd.tag, !xvt_menu_is_item_checked(window, event->cmd.tag));
  return 0;
}

[[noreturn]] void application(const char* script) {
  xvt_res_use(&TABLES);
  offerTested();
  if (script != nullptr && !xvt_script_load({script, {}, {}, {}})) std::exit(2);
  static char name[] = "bench";
  static char* arguments[] = {name, nullptr};
  XVT_CONFIG config;
  config.menu_bar_ID = 1;
  config.base_appl_name = "bench";
  config.appl_name = "Bench";
  config.taskwin_title = "Bench";
  std::exit(xvt_app_create(1, arguments, 0, taskHandler, &config));
}

// ---- running it -------------------------------------------------------------------------------------------------

struct Result {
  int status;
  std::string out, err;
};

class Scripts : public testing::Test {
 protected:
  Scripts() { setenv("WORK", root_.c_str(), 1); }

  Result inChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      if (freopen((root_ / "out").c_str(), "w", stdout) == nullptr) _exit(99);
      if (freopen((root_ / "err").c_str(), "w", stderr) == nullptr) _exit(99);
      alarm(60);
      body();
      std::exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), readFile(root_ / "out"),
            readFile(root_ / "err")};
  }

  Result play(const std::string& script) {
    std::ofstream(root_ / "test.qs") << script;
    const std::string path = (root_ / "test.qs").string();
    return inChild([&] {
      if (chdir("/") != 0) _exit(99);  // relative paths begin where the program was started all the same
      application(path.c_str());
    });
  }

  void succeeds(const std::string& script) {
    const Result run = play(script);
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
  }

  /// Runs a script that must fail with this reason at this line.
  void fails(const std::string& script, int line, const std::string& reason) {
    const Result run = play(script);
    EXPECT_EQ(run.status, 1) << script << run.err;
    const std::string expected = "script " + (root_ / "test.qs").string() + ":" + std::to_string(line) + ": " + reason;
    EXPECT_NE(run.err.find(expected), std::string::npos) << script << "\nsaid: " << run.err << "\nnot: " << expected;
  }

  const fs::path start_ = fs::current_path();
  const TestFolder folder_;
  const fs::path root_ = fs::current_path();
};

TEST_F(Scripts, WorkControlsAsAUserWould) {
  succeeds(R"(
    wait window bench 10
    expect window task
    expect title bench "Work Bench"
    type bench.name "A \"name\""
    expect text bench.mirror Idle
    press bench.mark            # leaving the field writes it back
    expect text bench.mirror "A \"name\""
    expect checked bench.mark
    try press note-box.ok
    try expect unchecked bench.mark
    try press bench.mark
    expect unchecked bench.mark
    select bench.rows 0
    select bench.rows "7" add
    expect text bench.rows "alpha 7"
    select bench.rows "b*[!y]a"
    expect text bench.rows beta
    doubleclick bench.rows "gamma"
    wait console "double 2" 2
    expect rows bench.rows 4
    expect row bench.rows "alpha"
    expect no-row bench.rows "delta"
    expect text bench.choice first
    select bench.choice "second"
    expect like bench.choice "s*d"
    expect text bench.meter 40
    expect disabled bench.stop
    expect visible bench.stop
    expect menu-enabled toggle
    expect menu-disabled never
    menu toggle
    expect menu-checked toggle
    close bench
    expect no-window bench
    quit
  )");
}

TEST_F(Scripts, GoOnInsideAJobThatTheyStarted) {
  succeeds(R"(
    press bench.go
    wait console "work*" 5
    expect enabled bench.stop
    press bench.stop
    wait console "job stopped" 5
    expect disabled bench.stop
    mark
    run "test -f $WORK/test.qs"
    copy-lines console $WORK/lines
    expect file $WORK/lines size 20
    expect line console "job stopped"
    expect no-line console "job*failed"
  )");
  EXPECT_EQ(readFile(root_ / "lines"), "working\njob stopped\n");
}

TEST_F(Scripts, EndAJobWithTheProgramWhenTheyFail) {
  fails("press bench.go\nwait console \"never\" 0.2\n", 2, "no line like \"never\" came to console");
}

TEST_F(Scripts, AnswerBoxes) {
  succeeds(R"(
    press bench.fail
    expect text error-box.text "The tape is torn. It was torn at block 12."
    press error-box.ok
    press bench.ask
    expect like ask-box.text "*the beginning? The 240 files*"
    press ask-box.second
    wait console "answer 2" 2
    press bench.ask
    close ask-box
    wait console "answer 3" 2
    press bench.ask
    wait window ask-box 2
    key ask-box Escape
    wait console "answer 3" 2
    press bench.ask
    wait window ask-box 2
    key ask-box Return
    wait console "answer 1" 2
    patience 0                   # what opened a box has its answer when the next statement comes
    press bench.ask
    press ask-box.first
    expect line console "answer 1"
    answer-cancel
    press bench.open
    wait console "open 1*" 0
    press bench.settings
    press settings.ok
    expect line console "settings taken"
    mark
    answer ask-box.third
    answer ask-box.second
    press bench.ask
    press bench.ask
    wait console "answer 3" 0
    wait console "answer 2" 0
    patience 2
    press bench.long-note
    expect like note-box.text "www*www and a second line"
    press note-box.ok
  )");
}

TEST_F(Scripts, DriveTheFileBoxes) {
  fs::create_directories(root_ / "sub");
  for (const char* name : {"b.TPF", "a.tpf", "x.sgy", "odd\xFF.tpf", ".hidden.tpf", "sub/deep.tpf"})
    std::ofstream(root_ / name) << "data";
  std::ofstream(root_ / "a.tpf") << "more data";
  fs::create_symlink("nowhere", root_ / "lost.sgy");
  mkfifo((root_ / "pipe.tpf").c_str(), 0600);
  succeeds(R"(
    answer-file $WORK/x.sgy
    press bench.open
    wait console "open 2 $WORK | x.sgy | tpf" 2
    answer-cancel
    press bench.open
    wait console "open 1*" 2

    press bench.open
    expect title file-box "Open it"
    expect text file-box.folder $WORK
    expect rows file-box.files 6
    select file-box.show "All files"
    expect row file-box.files "x.sgy"
    select file-box.show 0
    expect no-row file-box.files "x.sgy"
    press file-box.ok
    expect like file-box.hint "Type a name*"
    type file-box.name absent.tpf
    press file-box.ok
    expect text file-box.hint "There is no file of this name."
    select file-box.files "pipe.tpf"
    press file-box.ok
    expect text file-box.hint "This is not an ordinary file."
    type file-box.name sub
    press file-box.ok
    expect text file-box.folder $WORK/sub
    press file-box.up
    expect text file-box.folder $WORK
    type file-box.folder nowhere
    press file-box.ok
    expect text file-box.hint "Cannot enter nowhere: No such file or directory"
    type file-box.folder $WORK/sub
    key file-box Return
    expect rows file-box.files 2
    expect window file-box
    doubleclick file-box.files "../"
    expect text file-box.folder $WORK
    select file-box.files 4
    expect like file-box.name odd*.tpf
    press file-box.ok
    wait console "open 2 $WORK | odd?.tpf | tpf" 2

    press bench.open
    press file-box.by-size
    press file-box.by-size
    expect text file-box.by-size "Size ▲"
    select file-box.files 2
    expect text file-box.name pipe.tpf
    key file-box "Ctrl+H"
    expect row file-box.files ".hidden.tpf*4 B*20??-??-?? ??:??"
    select file-box.places "Start folder"
    expect text file-box.places "Start folder"
    type file-box.folder $WORK/a.tpf
    key file-box Return
    expect text file-box.name a.tpf
    press file-box.by-name
    key file-box "Ctrl+H"
    expect rows file-box.files 6
    type file-box.name ab
    key file-box BackSpace
    expect text file-box.name a
    expect text file-box.folder $WORK
    type file-box.name $WORK/lost.sgy
    press file-box.ok
    expect text file-box.hint "This link leads nowhere."
    type file-box.name PI
    key file-box Tab
    expect text file-box.name pipe.tpf
    type file-box.name ./s
    key file-box Tab
    expect text file-box.name ./sub/
    key file-box Return
    expect text file-box.folder $WORK/sub
    select file-box.files 0
    key file-box BackSpace
    expect text file-box.folder $WORK
    expect like file-box.files "sub/*"
    key file-box o
    expect like file-box.name odd*.tpf
    key file-box Home
    key file-box Down
    key file-box Return
    expect text file-box.folder $WORK/sub
    key file-box "Alt+Up"
    type file-box.name "  file://$WORK/%61.tpf  "
    press file-box.ok
    wait console "open 2 $WORK | a.tpf | tpf" 2

    press bench.open
    doubleclick file-box.files "b.TPF"
    wait console "open 2 $WORK | b.TPF | tpf" 2

    press bench.folder
    expect rows dir-box.files 2
    select dir-box.files "sub/"
    press dir-box.ok
    wait console "folder 2 $WORK/sub" 2
    press bench.folder
    expect text dir-box.folder $WORK/sub
    press dir-box.ok
    wait console "folder 2 $WORK/sub" 2
    press bench.place
    type file-box.name fresh
    press file-box.new-folder
    expect text file-box.folder $WORK/sub/fresh
    press file-box.ok
    wait console "place 2 $WORK/sub/fresh |  | " 2
    press bench.place
    type file-box.name free.sgd
    press file-box.ok
    wait console "place 2 $WORK/sub/fresh | free.sgd | " 2
    press bench.save
    expect enabled file-box.new-folder
    press file-box.cancel
    expect no-line console "the directory changed"
    copy-lines console $WORK/lines
  )");
  EXPECT_NE(readFile(root_ / "lines").find("odd\xFF.tpf"), std::string::npos) << "the name's own bytes are kept";
}

TEST_F(Scripts, SaveUnderSafeNames) {
  std::ofstream(root_ / "old.tpf") << "data";
  fs::create_directories(root_ / "sub");
  succeeds(R"(
    press bench.save
    expect text file-box.name proposed.tpf
    expect text file-box.ok Save
    sleep 0.1
    key file-box x
    expect text file-box.name x.tpf
    press file-box.cancel
    press bench.save
    press file-box.new-folder
    expect like file-box.hint "Type the new folder's name*"
    type file-box.folder $WORK
    type file-box.name new
    select file-box.files "sub/"
    key file-box Return
    expect text file-box.folder $WORK/sub
    expect text file-box.name new
    press file-box.up
    type file-box.name old.tpf
    press file-box.new-folder
    expect text file-box.hint "A file has this name."
    type file-box.name new
    key file-box Return
    wait console "save 2 $WORK | new.tpf | tpf" 2

    press bench.save
    type file-box.name sub
    press file-box.ok
    expect text file-box.folder $WORK/sub
    expect text file-box.name proposed.tpf
    type file-box.name "nowhere/x"
    press file-box.ok
    expect text file-box.hint "There is no folder $WORK/sub/nowhere."
    type file-box.name ../old
    press file-box.ok
    expect text ask-box.text "Overwrite this file? $WORK/old.tpf"
    press ask-box.second
    expect window file-box
    press file-box.ok
    press ask-box.first
    wait console "save 2 $WORK | old.tpf | tpf" 2
  )");
}

TEST_F(Scripts, SayWhereAndWhyTheyFailed) {
  fails("patience 0.1\n\npress bench.nothing\n", 3, "press bench.nothing: window \"bench\" has no control \"nothing\"");
  fails("patience 0.1\npress absent.ok\n", 2, "press absent.ok: there is no window \"absent\" (open: task");
  for (const auto& [statement, reason] : std::vector<std::pair<std::string, std::string>>{
           {"press bench.stop", "\"stop\" is disabled"},
           {"press bench.name", "\"name\" cannot be pressed"},
           {"type bench.go x", "\"go\" is not an edit field"},
           {"select bench.rows 4", "it has no row 4"},
           {"select bench.rows \"delta*\"", "it has no row \"delta*\""},
           {"select bench.rows \"*a\"", "3 rows are like \"*a\""},
           {"doubleclick bench.choice 0", "\"choice\" has no rows to double-click"},
           {"menu never", "it is disabled"},
           {"close absent", "there is no window \"absent\""},
           {"key bench Hyper+x", "there is no key \"Hyper+x\""}})
    fails(
        "patience 0\n" + statement + "\n", 2,
        (statement.starts_with("key") ? "key Hyper+x" : statement.substr(0, statement.find(' ', 12))) + ": " + reason);
  fails("patience 0\nscreenshot bench /nowhere/x.png\n", 2,
        isHeadless() ? "screenshot: there is no screen" : "screenshot: /nowhere/x.png: No such file or directory");
  fails(
      "press bench.ask\nwait window ask-box 5\npatience 0\nclose bench\n", 4,
      "close bench: \"bench\" is kept from input by \"ask-box\"; ask-box keeps input: \"The output tape is not empty. "
      "Overwrite it from the beginning? The 240 files now on it are lost.\"");
  fails("patience 0.1\nexpect text bench.mirror Busy\n", 2, "bench.mirror shows \"Idle\", not \"Busy\"");
  fails("expect checked bench.go\n", 1, "bench.go is neither a check box nor a radio button");
  fails("menu nothing\n", 1, "there is no menu item \"nothing\"");
  fails("run \"exit 3\"\n", 1, "the command ended with status 3: exit 3");
  fails("press bench.fail\nwait console \"x\" 30\n", 2,
        "no line like \"x\" came to console; error-box keeps input: \"The tape is torn. It was torn at block 12.\"");
  fails("press bench.fail\n", 1, "the script ends with an error; error-box keeps input: \"The tape is torn.");
  succeeds("press bench.ask\nwait window ask-box 5\n");
  fails("answer-file $WORK/none\npress bench.open\nsleep 5\n", 1,
        "the file box did not take \"" + root_.string() + "/none\": There is no file of this name.");
  fails("patience 0\nanswer bench.stop\nsleep 5\n", 2, "press bench.stop: \"stop\" is disabled");
  fails("press bench.die\nsleep 60\n", 2, "the program ended before this statement");
}

TEST_F(Scripts, LeaveAPictureOfTheirFailure) {
  if (isHeadless()) GTEST_SKIP() << "there is no screen";
  setenv("QUARLO_SCRIPT_SHOT", fs::relative(root_ / "shot.png", start_).c_str(), 1);
  fails("patience 0\nexpect window nothing\n", 2, "there is no window");
  unsetenv("QUARLO_SCRIPT_SHOT");
  EXPECT_EQ(readFile(root_ / "shot.png").substr(1, 3), "PNG");
  succeeds("screenshot bench $WORK/bench.png\nscreenshot screen $WORK/screen.png\n");
  EXPECT_EQ(readFile(root_ / "bench.png").substr(1, 3), "PNG");
  EXPECT_GT(fs::file_size(root_ / "screen.png"), fs::file_size(root_ / "bench.png"));
}

TEST_F(Scripts, PrintTheWindowsForTheirWriters) {
  const Result run = play("wait window bench 5\nprint begin\ndump-windows\n");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out.find("begin\n"), 0U);
  for (const char* part : {"bench \"Work Bench\"\n", "    bench.go ", "button     \"Go\"\n", "disabled \"Stop\"",
                           "check      [ ] \"Marked\"", "      * 0 \"first\"\n", "console \"Console\"\n"})
    EXPECT_NE(run.out.find(part), std::string::npos) << part << "\nin\n" << run.out;
}

TEST_F(Scripts, AreRefusedBeforeTheProgramStarts) {
  Result run = play("press bench.go\npresss bench.go\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "script " + (root_ / "test.qs").string() + ":2: there is no verb \"presss\"\n");
  run = inChild([] { application("/nowhere/x.qs"); });
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "script /nowhere/x.qs: cannot be read\n");
}

TEST_F(Scripts, BoxesWithoutWindowsGoToStandardError) {
  const Result run = inChild([] {
    xvt_dm_post_error("%s of %d", "early", 5);
    xvt_dm_post_note("a note");
    const ASK_RESPONSE answer = xvt_dm_post_ask("Yes", "No", nullptr, "really?");
    FILE_SPEC file{};
    std::printf("%d %d\n", answer, xvt_dm_post_file_open(&file, "Open"));
  });
  EXPECT_EQ(run.out, "2 0\n");
  EXPECT_EQ(run.err.substr(0, run.err.find("xvt:")), "early of 5\na note\nreally?\n");
}

}  // namespace
