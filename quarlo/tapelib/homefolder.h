/// The folder of the program's own files (the console's log, the tape dump's text, what is proposed for others): the
/// working directory of the start, wherever a job has gone since.
#pragma once

#include <string>

/// Called once by main, when the working directory is what it is to be. Until then (and for "") files are opened in the
/// working directory of the moment.
void setHomeFolder(std::string path);
const std::string& homeFolder();
/// The path of a file in that folder.
std::string inHomeFolder(const char* name);
/// The folder of the program's own executable; empty where the system does not tell.
std::string programFolder();
