/// What the statements of a script name and see: windows, controls, rows, texts.
#pragma once

#include <string>
#include <vector>

#include "xvt/script/script_player.h"
#include "xvt/xvt.h"

namespace xvt::script {

inline Outcome notYet(const std::string& reason) { return {Outcome::notYet, reason}; }
inline Outcome failed(const std::string& reason) { return {Outcome::failed, reason}; }
inline Outcome unless(bool fulfilled, const std::string& reason) { return fulfilled ? Outcome{} : notYet(reason); }

inline std::string inQuotes(const std::string& text) { return "\"" + text + "\""; }

/// The window or control that a statement names, or why there is none.
struct Target {
  WINDOW handle = NULL_WIN;
  std::string missing;
};

Target findWindow(const std::string& name);
/// @param target WINDOW.CONTROL
Target findControl(const std::string& target);

bool isList(WINDOW control);
/// Check boxes and radio buttons.
bool isMarkable(WINDOW control);

/// The rows of a list that a text means: the first that is exactly this text, else all that are like it as a glob.
std::vector<int> findRows(WINDOW list, const std::string& text);
/// The rows that there are, for who looked for another one.
std::string rowsOf(WINDOW list);

/// Boxes break long texts into lines; a script need not know where.
std::string flat(std::string text);

/// What a control shows, as one text: its label or contents, the selected rows of a list, a meter's number.
std::string shownText(WINDOW control);
/// What a box says, in one line; of other windows the title.
std::string textOf(WINDOW window);
/// Whether a window is open and not hidden.
bool isShown(WINDOW window);
/// Whether a text is like a glob.
bool isLike(const std::string& glob, const std::string& text);

/// Whether one of a statement's arguments names this window or a control of it.
bool names(const Statement& statement, const std::string& window);

/// The dialog or box that keeps input from all others, as a failure names it, behind "; "; empty when there is none.
std::string inputKeeper();

/// A path of the script or of the environment: relative ones begin where the program was started.
std::string scriptPath(const std::string& path);

}  // namespace xvt::script
