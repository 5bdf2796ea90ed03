#include "xvt/script/script_targets.h"

#include <fnmatch.h>

#include <algorithm>

#include "xvt/base/fsys.h"
#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/resource.h"

namespace xvt::script {

Target findWindow(const std::string& name) {
  const WINDOW window = probe::window(name);
  if (window != NULL_WIN) return {window, ""};
  std::string open;
  for (const std::string& each : probe::openWindows()) open += (open.empty() ? "" : ", ") + each;
  return {NULL_WIN, "there is no window " + inQuotes(name) + " (open: " + open + ")"};
}

Target findControl(const std::string& target) {
  const std::size_t dot = target.find('.');
  Target window = findWindow(target.substr(0, dot));
  if (window.handle == NULL_WIN) return window;
  const WINDOW control = probe::control(window.handle, target.substr(dot + 1));
  if (control != NULL_WIN) return {control, ""};
  return {NULL_WIN,
          "window " + inQuotes(target.substr(0, dot)) + " has no control " + inQuotes(target.substr(dot + 1))};
}

bool isList(WINDOW control) {
  const int kind = probe::kind(control);
  return kind == IK_LIST || kind == IK_MULTI || kind == IK_OPTION;
}

bool isMarkable(WINDOW control) {
  const int kind = probe::kind(control);
  return kind == IK_CHECK || kind == IK_RADIO;
}

std::string flat(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

std::vector<int> findRows(WINDOW list, const std::string& text) {
  std::vector<int> like;
  const int count = xvt_list_count(list);
  for (int row = 0; row < count; ++row) {
    const std::string found = rowText(list, row);
    const std::string name = found.substr(0, found.find('\t'));
    if (found == text || name == text) return {row};
    if (isLike(text, found) || isLike(text, name)) like.push_back(row);
  }
  return like;
}

std::string rowsOf(WINDOW list) {
  constexpr int kNamed = 5;
  const int count = xvt_list_count(list);
  std::string text;
  for (int row = 0; row < std::min(count, kNamed); ++row) text += (row > 0 ? ", " : "") + inQuotes(rowText(list, row));
  return count == 0 ? "" : " (it has " + text + (count > kNamed ? " ..." : "") + ")";
}

bool isLike(const std::string& glob, const std::string& text) { return fnmatch(glob.c_str(), text.c_str(), 0) == 0; }

bool isShown(WINDOW window) { return xvt_vobj_is_valid(window) && xvt_vobj_is_visible(window); }

std::string textOf(WINDOW window) {
  const WINDOW text = probe::control(window, "text");
  return flat(titleOf(text != NULL_WIN ? text : window));
}

bool names(const Statement& statement, const std::string& window) {
  return std::any_of(
      statement.arguments.begin(), statement.arguments.end(),
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
  return "; " + probe::nameOf(keeper) + " keeps input: " + inQuotes(words);
}

std::string scriptPath(const std::string& path) {
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  return joinPath(startup.path, path);
}

}  // namespace xvt::script
