/// What the waits and expectations of a script look at.
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>

#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/script/script_targets.h"

namespace xvt::script {

namespace {

Outcome window(Player&, const Statement& s) {
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  return unless(xvt_vobj_is_visible(target.handle), "window " + inQuotes(s.text(0)) + " is hidden");
}

Outcome noWindow(Player&, const Statement& s) {
  const WINDOW found = probe::window(s.text(0));
  return unless(found == NULL_WIN || !xvt_vobj_is_visible(found), "window " + inQuotes(s.text(0)) + " is open");
}

Outcome title(Player&, const Statement& s) {
  const Target target = findWindow(s.text(0));
  if (target.handle == NULL_WIN) return notYet(target.missing);
  const std::string found = titleOf(target.handle);
  return unless(found == s.text(1), "the title of " + s.text(0) + " is " + inQuotes(found));
}

Outcome textIs(Player&, const Statement& s) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  const std::string found = flat(shownText(control.handle));
  return unless(found == flat(s.text(1)), s.text(0) + " shows " + inQuotes(found) + ", not " + inQuotes(s.text(1)));
}

Outcome textLike(Player&, const Statement& s) {
  const Target control = findControl(s.text(0));
  if (control.handle == NULL_WIN) return notYet(control.missing);
  const std::string found = flat(shownText(control.handle));
  return unless(isLike(flat(s.text(1)), found),
                s.text(0) + " shows " + inQuotes(found) + ", not like " + inQuotes(s.text(1)));
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
  return onList(
      s,
      [](WINDOW list, const Statement& is) {
        return unless(!findRows(list, is.text(1)).empty(), is.text(0) + " has no row " + inQuotes(is.text(1)));
      });
}

Outcome noRow(Player&, const Statement& s) {
  return onList(
      s,
      [](WINDOW list, const Statement& is) {
        return unless(findRows(list, is.text(1)).empty(), is.text(0) + " has a row " + inQuotes(is.text(1)));
      });
}

Outcome rows(Player&, const Statement& s) {
  return onList(
      s,
      [](WINDOW list, const Statement& is) {
        const int count = xvt_list_count(list);
        return unless(count == static_cast<int>(is.number(1)), is.text(0) + " has " + std::to_string(count) + " rows");
      });
}

Outcome menuState(const Statement& s, bool (*ask)(WINDOW, int), bool wanted, const char* word) {
  const int command = probe::menuCommand(s.text(0));
  if (command == 0) return failed("there is no menu item " + inQuotes(s.text(0)));
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
  return unless(found, s.text(0) + " has no line " + inQuotes(s.text(1)));
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
    if (isUnwanted(each, s) && ++found <= kNamed) culprits += (found > 1 ? ", " : "") + inQuotes(each);
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

Outcome expectTerminal(Player&, const Statement&) {
  return isatty(STDIN_FILENO) != 0 ? Outcome{} : failed("standard input is no terminal");
}

}  // namespace

Outcome lookAt(Player& player, const Statement& statement) {
  using Look = Outcome (*)(Player&, const Statement&);
  static const std::map<Verb, Look> kLooks = {
      {Verb::waitWindow, window},
      {Verb::waitNoWindow, noWindow},
      {Verb::waitText, textLike},
      {Verb::waitEnabled, enabled},
      {Verb::waitConsole, waitConsole},
      {Verb::waitLine, waitLine},
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
  };
  return kLooks.at(statement.verb)(player, statement);
}

}  // namespace xvt::script
