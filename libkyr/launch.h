/// Starting companion programs.
#pragma once

/// Starts a program by its command: an executable's name and, after blanks, its arguments (quotes as in a shell, no
/// substitution of commands). A bare name is looked up in PATH, then beside the running program's own executable.
/// The program runs on its own: it is not waited for, is nobody's zombie, outlives this process, has no terminal and
/// inherits no open file, no drive in particular.
/// @return true when the program was started; false, with errno set, when it could not be
bool wxExecuteHack(const char* command);
