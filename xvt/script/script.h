/// Scripted runs: a plain-text script played against the real windows. The verbs stand in docs/scripts.md.
#pragma once

/// Reads a script and arms it: it starts when the task window is up and its steps run whenever events are pumped, also
/// inside modal dialogs and running jobs. Called before xvt_app_create, whose answer is then the script's.
/// @return false after a line on standard error when the file cannot be read or a line of it makes no sense
bool xvt_script_load(const char* path);
