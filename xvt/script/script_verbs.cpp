/// What the statements of a script do.
#include <fnmatch.h>
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "xvt/base/fsys.h"
#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/resource.h"
#include "xvt/script/script_player.h"
#include "xvt/script/script_values.h"

namespace xvt::script {

namespace {

Outcome notYet(const std::string& reason) { return {Outcome::notYet, reason}; }
Outcome failed(const std::string& reason) { return {Outcome::failed, reason}; }
Outcome unless(bool fulfilled, const std::string& reason) { return fulfilled ? Outcome{} : notYet(reason); }

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

/// The window or control that a statement names, or why there is none.
struct Target {
  WINDOW handle = NULL_WIN;
  std::string missing;
};

Target findWindow(const std::string& name) {
  const WINDOW window = probe::window(name);
  if (window != NULL_WIN) return {window, ""};
  std::string open;
  for (const std::string& each : probe::openWindows()) open += (open.empty() ? "" : ", ") + each;
  return {NULL_WIN, "there is no window " + quoted(name) + " (open: " + open + ")"};
}

Target findControl(const std::string& target) {
  const std::size_t dot = target.find('.');
  Target window = findWindow(target.substr(0, dot));
  if (window.handle == NULL_WIN) return window;
  const WINDOW control = probe::control(window.handle, target.substr(dot + 1));
  if (control != NULL_WIN) return {control, ""};
  return {NULL_WIN, "window " + quoted(target.substr(0, dot)) + " has no control " + quoted(target.substr(dot + 1))};
}

bool isList(WINDOW control) {
  const int kind = probe::kind(control);
  return kind == IK_LIST || kind == IK_MULTI || kind == IK_OPTION;
}

bool isMarkable(WINDOW control) {
  const int kind = probe::kind(control);
  return kind == IK_CHECK || kind == IK_RADIO;
}

/// Boxes break long texts into lines; a script need not know where.
std::string flat(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

/// The rows of a list that a text means: the first that is exactly this text, else all that are like it as a glob.
std::vector<int> findRows(WINDOW list, const std::string& text) {
  std::vector<int> like;
  const int count = xvt_list_count(list);
  for (int row = 0; row < count; ++row) {
    const std::string found = rowText(list, row);
    if (found == text) return {row};
    if (isLike(text, found)) like.push_back(row);
  }
  return like;
}

// ---- actions ----------------------------------------------------------------------------------------------------

/// What became of an action on a target: its reason comes from whoever refused it.
template <typename Action>
Outcome act(const std::string& what, const Target& target, Action action) {
  const probe::Refusal why = target.handle != NULL_WIN ? action(target.handle) : target.missing;
  return why ? notYet(what + ": " + *why) : Outcome{};
}

Outcome press(Player&, const Statement& s) { return act("press " + s.text(0), findControl(s.text(0)), probe::press); }

Outcome type(Player&, const Statement& s) {
  return act("type " + s.text(0), findControl(s.text(0)), [&](WINDOW edit) { return probe::type(edit, s.text(1)); });
}

/// The rows that there are, for who looked for another one.
std::string rowsOf(WINDOW list) {
  constexpr int kNamed = 5;
  const int count = xvt_list_count(list);
  std::string text;
  for (int row = 0; row < std::min(count, kNamed); ++row) text += (row > 0 ? ", " : "") + quoted(rowText(list, row));
  return count == 0 ? "" : " (it has " + text + (count > kNamed ? " ..." : "") + ")";
}

/// The row that a statement means, or -1 and why there is none. Among several rows nothing is chosen by chance.
int findRow(WINDOW list, const Statement& s, std::string* missing) {
  const bool byText = s.arguments[1].quoted || !isWholeNumber(s.text(1));
  const std::vector<int> rows =
      byText ? findRows(list, s.text(1)) : std::vector<int>{static_cast<int>(std::min(s.number(1), 1e9))};
  if (rows.size() == 1 && rows[0] < xvt_list_count(list)) return rows[0];
  const std::string wanted = byText ? quoted(s.text(1)) : s.text(1);
  *missing = rows.size() > 1 ? std::to_string(rows.size()) + " rows are like " + wanted
                             : "it has no row " + wanted + rowsOf(list);
  return -1;
}

/// Does something with the row that a statement means.
template <typename Action>
Outcome actOnRow(const std::string& verb, const Statement& s, Action action) {
  return act(verb + " " + s.text(0), findControl(s.text(0)), [&](WINDOW list) -> probe::Refusal {
    std::string missing = "it is not a list";
    const int row = isList(list) ? findRow(list, s, &missing) : -1;
    return row >= 0 ? action(list, row) : missing;
  });
}

Outcome select(Player&, const Statement& s) {
  return actOnRow("select", s, [&](WINDOW list, int row) { return probe::select(list, row, s.has(2)); });
}

Outcome doubleClick(Player&, const Statement& s) { return actOnRow("doubleclick", s, probe::doubleClick); }

Outcome menu(Player&, const Statement& s) {
  const int command = probe::menuCommand(s.text(0));
  if (command == 0) return failed("there is no menu item " + quoted(s.text(0)));
  return act("menu " + s.text(0), {TASK_WIN, ""}, [&](WINDOW) { return probe::menu(command); });
}

Outcome close(Player&, const Statement& s) { return act("close " + s.text(0), findWindow(s.text(0)), probe::close); }

Outcome key(Player&, const Statement& s) {
  return act("key " + s.text(1), findWindow(s.text(0)), [&](WINDOW window) { return probe::key(window, s.text(1)); });
}

Outcome answer(Player& player, const Statement& s) {
  player.addWindowAnswer(s);
  return {};
}

Outcome again(Player& player, const Statement&) {
  return player.beginAgain() ? Outcome{} : failed("again: no answer is being given");
}

Outcome answerFile(Player& player, const Statement& s) {
  player.addAnswer({&s, scriptPath(s.text(0))});
  return {};
}

Outcome answerCancel(Player& player, const Statement& s) {
  player.addAnswer({&s, std::nullopt});
  return {};
}

Outcome prompt(Player& player, const Statement& s) {
  bool atEnd = false;
  const std::optional<std::string> line = player.lineFromTerminal(s.text(0), &atEnd);
  if (!line) return notYet("nobody answered at the terminal");
  return atEnd || *line == s.text(1) ? act("press " + s.text(2), findControl(s.text(2)), probe::press) : Outcome{};
}

Outcome expectTerminal(Player&, const Statement&) {
  return isatty(STDIN_FILENO) != 0 ? Outcome{} : failed("standard input is no terminal");
}

/// Does something with what a control shows, or with a text, which is in quotes where it could be a control.
template <typename Use>
Outcome useText(const Statement& s, Use use) {
  const bool isText = s.arguments[0].quoted || !isTarget(s.text(0));
  const Target control = isText ? Target{} : findControl(s.text(0));
  if (!control.missing.empty()) return notYet(control.missing);
  use(isText ? s.text(0) : flat(shownText(control.handle)));
  return {};
}

Outcome print(Player& player, const Statement& s) {
  return useText(s, [&](const std::string& text) {
    player.echo().update(true);
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
  });
}

Outcome report(Player& player, const Statement& s) {
  return useText(s, [&](const std::string& text) { player.report(s, text); });
}

Outcome giveUp(Player&, const Statement& s) { return failed(s.text(0)); }

Outcome follow(Player& player, const Statement& s) {
  player.echo().follow(s.text(0));
  return {};
}

Outcome watch(Player& player, const Statement& s) {
  player.echo().watch(s.text(0));
  return {};
}

Outcome sleep(Player& player, const Statement& s) {
  return unless(player.secondsSinceBegin() >= s.number(0), "this sleep was cut short");
}

Outcome patience(Player& player, const Statement& s) {
  player.setPatience(s.number(0));
  return {};
}

Outcome mark(Player& player, const Statement& s) {
  const std::string window = s.has(0) ? s.text(0) : "console";
  const Target target = findWindow(window);
  if (target.handle == NULL_WIN) return notYet(target.missing);
  player.mark(window);
  return {};
}

Outcome screenshot(Player&, const Statement& s) {
  const bool whole = s.text(0) == "screen";
  return act("screenshot", whole ? Target{TASK_WIN, ""} : findWindow(s.text(0)),
             [&](WINDOW window) { return probe::screenshot(whole ? NULL_WIN : window, scriptPath(s.text(1))); });
}

/// Runs a shell command where the program was started.
Outcome run(Player&, const Statement& s) {
  std::fflush(stdout);
  if (!xvt_fsys_save_dir()) return failed("run: the working directory cannot be kept");
  xvt_fsys_set_dir_startup();
  const int status = std::system(s.text(0).c_str());
  xvt_fsys_restore_dir();
  if (status == 0) return {};
  const std::string end = WIFEXITED(status) ? "status " + std::to_string(WEXITSTATUS(status)) : "a signal";
  return failed("the command ended with " + end + ": " + s.text(0));
}

Outcome copyLines(Player&, const Statement& s) {
  const Target window = findWindow(s.text(0));
  if (window.handle == NULL_WIN) return notYet(window.missing);
  const TXEDIT text = probe::textField(window.handle);
  if (text == NULL_TXEDIT) return failed("window " + quoted(s.text(0)) + " has no lines");
  const std::string path = scriptPath(s.text(1));
  std::ofstream file(path, std::ios::binary);
  const T_LNUM count = xvt_tx_get_num_pars(text);
  for (T_LNUM line = 0; line < count; ++line) file << xvt_tx_get_par(text, line, nullptr) << '\n';
  file.close();
  return file ? Outcome{} : failed("cannot write " + path);
}

Outcome quit(Player& player, const Statement&) {
  const Outcome outcome = player.quit();
  return outcome.kind == Outcome::done ? outcome : notYet("quit: " + outcome.reason);
}

Outcome nothing(Player&, const Statement&) { return {}; }

// ---- waits and expectations -------------------------------------------------------------------------------------

Outcome window(Player&, const Statement& s) {
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  return unless(xvt_vobj_is_visible(target.handle), "window " + quoted(s.text(0)) + " is hidden");
}

Outcome noWindow(Player&, const Statement& s) {
  const WINDOW found = probe::window(s.text(0));
  return unless(found == NULL_WIN || !xvt_vobj_is_visible(found), "window " + quoted(s.text(0)) + " is open");
}

Outcome title(Player&, const Statement& s) {
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  const std::string found = titleOf(target.handle);
  return unless(found == s.text(1), "the title of " + s.text(0) + " is " + quoted(found));
}

Outcome textIs(Player&, const Statement& s) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  const std::string found = flat(shownText(control.handle));
  return unless(found == flat(s.text(1)), s.text(0) + " shows " + quoted(found) + ", not " + quoted(s.text(1)));
}

Outcome textLike(Player&, const Statement& s) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  const std::string found = flat(shownText(control.handle));
  return unless(isLike(flat(s.text(1)), found),
                s.text(0) + " shows " + quoted(found) + ", not like " + quoted(s.text(1)));
}

Outcome state(const Statement& s, bool (*ask)(WINDOW), bool wanted, const char* word) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  return unless(ask(control.handle) == wanted, s.text(0) + " is " + word);
}

Outcome enabled(Player&, const Statement& s) { return state(s, xvt_vobj_is_enabled, true, "disabled"); }
Outcome disabled(Player&, const Statement& s) { return state(s, xvt_vobj_is_enabled, false, "enabled"); }
Outcome visible(Player&, const Statement& s) { return state(s, xvt_vobj_is_visible, true, "hidden"); }
Outcome hidden(Player&, const Statement& s) { return state(s, xvt_vobj_is_visible, false, "visible"); }

Outcome checkMark(const Statement& s, bool wanted) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  if (!isMarkable(control.handle)) return failed(s.text(0) + " is neither a check box nor a radio button");
  return unless(xvt_ctl_is_checked(control.handle) == wanted, s.text(0) + (wanted ? " is not checked" : " is checked"));
}

Outcome checked(Player&, const Statement& s) { return checkMark(s, true); }
Outcome unchecked(Player&, const Statement& s) { return checkMark(s, false); }

/// A list that a statement is about, or why there is none.
Outcome onList(const Statement& s, Outcome (*look)(WINDOW, const Statement&)) {
  const Target list = findControl(s.text(0));
  if (list.handle == NULL_WIN) return notYet(list.missing);
  return isList(list.handle) ? look(list.handle, s) : failed(s.text(0) + " is not a list");
}

Outcome row(Player&, const Statement& s) {
  return onList(s, [](WINDOW list, const Statement& is) {
    return unless(!findRows(list, is.text(1)).empty(), is.text(0) + " has no row " + quoted(is.text(1)));
  });
}

Outcome noRow(Player&, const Statement& s) {
  return onList(s, [](WINDOW list, const Statement& is) {
    return unless(findRows(list, is.text(1)).empty(), is.text(0) + " has a row " + quoted(is.text(1)));
  });
}

Outcome rows(Player&, const Statement& s) {
  return onList(s, [](WINDOW list, const Statement& is) {
    const int count = xvt_list_count(list);
    return unless(count == static_cast<int>(is.number(1)), is.text(0) + " has " + std::to_string(count) + " rows");
  });
}

Outcome menuState(const Statement& s, bool (*ask)(WINDOW, int), bool wanted, const char* word) {
  const int command = probe::menuCommand(s.text(0));
  if (command == 0) return failed("there is no menu item " + quoted(s.text(0)));
  return unless(ask(TASK_WIN, command) == wanted, "menu item " + s.text(0) + " is " + word);
}

Outcome menuEnabled(Player&, const Statement& s) { return menuState(s, xvt_menu_is_item_enabled, true, "disabled"); }
Outcome menuDisabled(Player&, const Statement& s) { return menuState(s, xvt_menu_is_item_enabled, false, "enabled"); }
Outcome menuChecked(Player&, const Statement& s) { return menuState(s, xvt_menu_is_item_checked, true, "not checked"); }
Outcome menuUnchecked(Player&, const Statement& s) { return menuState(s, xvt_menu_is_item_checked, false, "checked"); }

Outcome waitLine(Player& player, const Statement& s) {
  const Target target = findWindow(s.text(0));
  return target.handle != NULL_WIN ? player.findLine(s.text(0), s.text(1)) : notYet(target.missing);
}

Outcome waitConsole(Player& player, const Statement& s) { return player.findLine("console", s.text(0)); }

/// Whether any line of a window fulfils a condition.
template <typename Condition>
bool anyLine(WINDOW window, Condition condition) {
  const TXEDIT text = probe::textField(window);
  const T_LNUM count = text != NULL_TXEDIT ? xvt_tx_get_num_pars(text) : 0;
  for (T_LNUM line = 0; line < count; ++line)
    if (condition(xvt_tx_get_par(text, line, nullptr))) return true;
  return false;
}

Outcome line(Player&, const Statement& s) {
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  const bool found = anyLine(target.handle, [&](const char* each) { return s.text(1) == each; });
  return unless(found, s.text(0) + " has no line " + quoted(s.text(1)));
}

/// Whether a line is like one of a statement's globs and like none of those behind "except".
bool isUnwanted(const std::string& line, const Statement& s) {
  bool found = false;
  for (std::size_t at = 1; s.has(at); ++at) {
    if (s.text(at) == "except" && !s.arguments[at].quoted)
      return found && std::none_of(s.arguments.begin() + static_cast<std::ptrdiff_t>(at) + 1, s.arguments.end(),
                                   [&](const Word& glob) { return isLike(glob.text, line); });
    found = found || isLike(s.text(at), line);
  }
  return found;
}

Outcome noLine(Player&, const Statement& s) {
  constexpr int kNamed = 10;
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  int found = 0;
  std::string culprits;
  (void)anyLine(target.handle, [&](const std::string& each) {
    if (isUnwanted(each, s) && ++found <= kNamed) culprits += (found > 1 ? ", " : "") + quoted(each);
    return false;
  });
  if (found == 0) return {};
  const std::string more = found > kNamed ? " and " + std::to_string(found - kNamed) + " more" : "";
  return failed(s.text(0) + " has the line" + (found > 1 ? "s " : " ") + culprits + more);
}

/// No file's name is like a glob.
Outcome noFile(Player&, const Statement& s) {
  glob_t found{};
  const bool any = glob(scriptPath(s.text(0)).c_str(), GLOB_NOSORT, nullptr, &found) == 0 && found.gl_pathc > 0;
  const std::string first = any ? found.gl_pathv[0] : "";
  globfree(&found);
  return unless(!any, first + " exists");
}

Outcome file(Player&, const Statement& s) {
  const std::string path = scriptPath(s.text(0));
  struct stat facts {};
  const bool exists = stat(path.c_str(), &facts) == 0;
  if (s.text(1) == "absent") return unless(!exists, path + " exists");
  if (!exists) return notYet("there is no file " + path);
  if (s.text(1) == "exists") return {};
  return unless(facts.st_size == static_cast<off_t>(s.number(2)),
                path + " has " + std::to_string(facts.st_size) + " bytes, not " + s.text(2));
}

// ---- the windows, for those who write scripts -------------------------------------------------------------------

const char* kindName(int kind) {
  switch (kind) {
    case IK_LABEL:
    case IK_HEADING:
    case IK_VALUE:
    case IK_HINT:
    case IK_STATUS:
      return "text";
    case IK_EDIT:
      return "edit";
    case IK_CHECK:
      return "check";
    case IK_RADIO:
      return "radio";
    case IK_PUSH:
      return "button";
    case IK_LIST:
      return "list";
    case IK_MULTI:
      return "multi-list";
    case IK_OPTION:
      return "option";
    case IK_METER:
      return "meter";
    default:
      return "item";
  }
}

void dumpRows(WINDOW list) {
  constexpr int MOST_ROWS = 20;
  const int count = xvt_list_count(list);
  for (int each = 0; each < std::min(count, MOST_ROWS); ++each)
    std::printf("      %c %d \"%s\"\n", xvt_list_is_selected(list, each) ? '*' : ' ', each,
                rowText(list, each).c_str());
  if (count > MOST_ROWS) std::printf("        ... %d rows\n", count);
}

void dumpControl(const std::string& name, WINDOW control) {
  std::printf("    %-32s %-10s", name.c_str(), kindName(probe::kind(control)));
  if (isMarkable(control)) std::printf(" %s", xvt_ctl_is_checked(control) ? "[x]" : "[ ]");
  if (!xvt_vobj_is_enabled(control)) std::printf(" disabled");
  if (!xvt_vobj_is_visible(control)) std::printf(" hidden");
  std::printf(" \"%s\"\n", flat(shownText(control)).c_str());
  if (isList(control)) dumpRows(control);
}

Outcome dumpWindows(Player&, const Statement&) {
  for (const std::string& name : probe::openWindows()) {
    const WINDOW handle = probe::window(name);
    std::printf("%s \"%s\"\n", name.c_str(), titleOf(handle).c_str());
    for (const std::string& control : probe::controls(handle))
      dumpControl(std::string(name).append(".").append(control), probe::control(handle, control));
    const TXEDIT text = probe::textField(handle);
    if (text != NULL_TXEDIT) std::printf("    %ld lines\n", xvt_tx_get_num_pars(text));
  }
  std::fflush(stdout);
  return {};
}

}  // namespace

Outcome perform(Player& player, const Statement& statement) {
  using Action = Outcome (*)(Player&, const Statement&);
  static const std::map<Verb, Action> ACTIONS = {
      {Verb::press, press},
      {Verb::type, type},
      {Verb::select, select},
      {Verb::doubleClick, doubleClick},
      {Verb::menu, menu},
      {Verb::close, close},
      {Verb::key, key},
      {Verb::answer, answer},
      {Verb::answerAlways, answer},
      {Verb::again, again},
      {Verb::answerFile, answerFile},
      {Verb::answerCancel, answerCancel},
      {Verb::waitWindow, window},
      {Verb::waitNoWindow, noWindow},
      {Verb::waitText, textLike},
      {Verb::waitEnabled, enabled},
      {Verb::waitConsole, waitConsole},
      {Verb::waitLine, waitLine},
      {Verb::mark, mark},
      {Verb::expectText, textIs},
      {Verb::expectLike, textLike},
      {Verb::expectEnabled, enabled},
      {Verb::expectDisabled, disabled},
      {Verb::expectChecked, checked},
      {Verb::expectUnchecked, unchecked},
      {Verb::expectVisible, visible},
      {Verb::expectHidden, hidden},
      {Verb::expectRow, row},
      {Verb::expectNoRow, noRow},
      {Verb::expectRows, rows},
      {Verb::expectMenuEnabled, menuEnabled},
      {Verb::expectMenuDisabled, menuDisabled},
      {Verb::expectMenuChecked, menuChecked},
      {Verb::expectMenuUnchecked, menuUnchecked},
      {Verb::expectWindow, window},
      {Verb::expectNoWindow, noWindow},
      {Verb::expectTitle, title},
      {Verb::expectLine, line},
      {Verb::expectNoLine, noLine},
      {Verb::expectFile, file},
      {Verb::expectNoFile, noFile},
      {Verb::expectTerminal, expectTerminal},
      {Verb::copyLines, copyLines},
      {Verb::print, print},
      {Verb::sleep, sleep},
      {Verb::patience, patience},
      {Verb::screenshot, screenshot},
      {Verb::run, run},
      {Verb::follow, follow},
      {Verb::watch, watch},
      {Verb::prompt, prompt},
      {Verb::report, report},
      {Verb::giveUp, giveUp},
      {Verb::dumpWindows, dumpWindows},
      {Verb::stay, nothing},
      {Verb::quit, quit},
  };
  return ACTIONS.at(statement.verb)(player, statement);
}

bool isLike(const std::string& glob, const std::string& text) { return fnmatch(glob.c_str(), text.c_str(), 0) == 0; }

bool isShown(WINDOW window) { return xvt_vobj_is_valid(window) && xvt_vobj_is_visible(window); }

std::string textOf(WINDOW window) {
  const WINDOW text = probe::control(window, "text");
  return flat(titleOf(text != NULL_WIN ? text : window));
}

bool names(const Statement& statement, const std::string& window) {
  return std::any_of(statement.arguments.begin(), statement.arguments.end(),
                     [&](const Word& word) { return word.text == window || word.text.starts_with(window + "."); });
}

std::string shownText(WINDOW control) {
  if (probe::kind(control) == IK_METER) return std::to_string(xvt_ctl_get_meter(control));
  if (!isList(control)) return titleOf(control);
  std::string text;
  const int count = xvt_list_count(control);
  for (int each = 0; each < count; ++each)
    if (xvt_list_is_selected(control, each)) text += (text.empty() ? "" : "\n") + rowText(control, each);
  return text;
}

std::string inputKeeper() {
  const WINDOW keeper = probe::inputKeeper();
  if (keeper == NULL_WIN) return "";
  const WINDOW hint = probe::control(keeper, "hint");
  std::string words = textOf(keeper);
  if (hint != NULL_WIN && !shownText(hint).empty()) words += ": " + flat(shownText(hint));
  return "; " + probe::nameOf(keeper) + " keeps input: " + quoted(words);
}

std::string scriptPath(const std::string& path) {
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  return joinPath(startup.path, path);
}

}  // namespace xvt::script
