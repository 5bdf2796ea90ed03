/// The end of a command-line program's standard output.
#pragma once

/// What a program does last: nothing that it printed may be lost in silence, as on a full device.
/// @return `status`, or `failure` when standard output cannot take all of it, after a line on standard error that
/// begins with the program's name
int endOfOutput(const char* program, int status, int failure);
