/// What the actions of a script do.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "xvt/base/fsys.h"
#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/script/script_targets.h"
#include "xvt/script/script_values.h"

namespace xvt::script {

namespace {

/// What became of an action on a target: its reason comes from whoever refused it.
template <typename Action>
Outcome act(const std::string& what, const Target& target, Action action) {
  const probe::Refusal why = target.handle != NULL_WIN ? action(target.handle) : target.missing;
  return why ? notYet(what + ": " + *why) : Outcome{};
}

Outcome press(Player&, const Statement& s) { return act("press " + s.text(0), findControl(s.text(0)), probe::press); }

Outcome type(Player&, const Statement& s) {
  return act(
      "type " + s.text(0), findControl(s.text(0)), [&](WINDOW edit) { return probe::type(edit, s.text(1)); });
}

/// The row that a statement means, or -1 and why there is none. Among several rows nothing is chosen by chance.
int findRow(WINDOW list, const Statement& s, std::string* missing) {
  const bool byText = s.arguments[1].quoted || !isWholeNumber(s.text(1));
  const std::vector<int> rows =
      byText ? findRows(list, s.text(1)) : std::vector<int>{static_cast<int>(std::min(s.number(1), 1e9))};
  if (rows.size() == 1 && rows[0] < xvt_list_count(list)) return rows[0];
  const std::string wanted = byText ? inQuotes(s.text(1)) : s.text(1);
  *missing = rows.size() > 1 ? std::to_string(rows.size()) + " rows are like " + wanted
                             : "it has no row " + wanted + rowsOf(list);
  return -1;
}

/// Does something with the row that a statement means.
template <typename Action>
Outcome actOnRow(const std::string& verb, const Statement& s, Action action) {
  return act(
      verb + " " + s.text(0), findControl(s.text(0)),
      [&](WINDOW list) -> probe::Refusal {
        std::string missing = "it is not a list";
        const int row = isList(list) ? findRow(list, s, &missing) : -1;
        return row >= 0 ? action(list, row) : missing;
      });
}

Outcome select(Player&, const Statement& s) {
  return actOnRow(
      "select", s, [&](WINDOW list, int row) { return probe::select(list, row, s.has(2)); });
}

Outcome doubleClick(Player&, const Statement& s) { return actOnRow("doubleclick", s, probe::doubleClick); }

Outcome menu(Player&, const Statement& s) {
  const int command = probe::menuCommand(s.text(0));
  if (command == 0) return failed("there is no menu item " + inQuotes(s.text(0)));
  return act("menu " + s.text(0), {TASK_WIN, ""}, [&](WINDOW) { return probe::menu(command); });
}

Outcome close(Player&, const Statement& s) { return act("close " + s.text(0), findWindow(s.text(0)), probe::close); }

Outcome key(Player&, const Statement& s) {
  return act(
      "key " + s.text(1), findWindow(s.text(0)), [&](WINDOW window) { return probe::key(window, s.text(1)); });
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
  return useText(
      s,
      [&](const std::string& text) {
        player.echo().update(true);
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
      });
}

Outcome report(Player& player, const Statement& s) {
  return useText(
      s, [&](const std::string& text) { player.report(s, text); });
}

Outcome giveUp(Player&, const Statement& s) { return failed(s.text(0)); }

Outcome follow(Player& player, const Statement& s) {
  player.echo().follow(s.text(0));
  return {};
}

Outcome watch(Player& player, const Statement& s) {
  player.echo().watch(s.text(0), s.has(1) ? s.text(1) : "");
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
  if (text == NULL_TXEDIT) return failed("window " + inQuotes(s.text(0)) + " has no lines");
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

}  // namespace

Outcome perform(Player& player, const Statement& statement) {
  using Action = Outcome (*)(Player&, const Statement&);
  static const std::map<Verb, Action> kActions = {
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
      {Verb::mark, mark},
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
  const auto found = kActions.find(statement.verb);
  return found != kActions.end() ? found->second(player, statement) : lookAt(player, statement);
}

}  // namespace xvt::script
