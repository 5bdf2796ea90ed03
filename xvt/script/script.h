/// Scripted runs: a plain-text script played against the real windows. The verbs stand in docs/scripts.md.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// A script to be played.
struct XVT_SCRIPT {
  std::string path;
  std::vector<std::pair<std::string, std::string>> values;  ///< variables, before those of the environment
  std::vector<std::string> folders;                         ///< where what it includes may stand, beside its own
  std::string speaker;  ///< begins what is said of it on standard error; left empty: the script's path and line
};

/// Reads a script and arms it: it starts when the task window is up and its steps run whenever events are pumped, also
/// inside modal dialogs and running jobs. Called before xvt_app_create, whose answer is then the script's.
/// @return false after a line on standard error when the file cannot be read, a line of it makes no sense, or the
/// values are not those that its head declares
bool xvt_script_load(const XVT_SCRIPT& script);
