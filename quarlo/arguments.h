/// The program's arguments.
#pragma once

/// Where the windows are to stand, and the files.
struct Run {
  bool scripted = false;
  bool headless = false;
  bool fromMenu = false;  ///< nobody knows the working directory
};

/// Does the arguments' work so far as it is not the toolkit's: shows what was asked for, loads a script or a job.
/// @return -1 to go on, else the exit status
int readArguments(int argc, char** argv, Run* run);
