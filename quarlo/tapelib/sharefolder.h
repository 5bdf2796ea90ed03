/// Where the files that come with the program lie, and the user's own beside them: ready-made jobs, descriptions of SEG
/// Y, the pages of the guide.
#pragma once

#include <string>
#include <vector>

/// The folders of one kind ("jobs", "formats", "docs") in the order in which they are looked through: the user's below
/// $XDG_DATA_HOME/quarlo (~/.local/share/quarlo), then the program's own. None of them need exist.
std::vector<std::string> shareFolders(const std::string& kind);

/// The user's folder of this kind; empty when the environment names no home.
std::string userShareFolder(const std::string& kind);

/// The path of the first file of this name; empty when no folder has one.
std::string findShared(const std::string& kind, const std::string& name);
