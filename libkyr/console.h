/// Where console lines go: a sink, standard error until a program gives another.
#pragma once

using ConsoleSink = void (*)(const char* line);

/// Where lines go from now on that have no console of their own (see ProcessConsole); null, as at start, is standard
/// error.
void SetDefaultConsole(ConsoleSink sink);
/// One line, without its newline, to the sink.
void DefaultConsole(const char* line);
