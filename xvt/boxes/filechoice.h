/// What the file box takes, and the words for what it does not.
#pragma once

#include <string>
#include <utility>

namespace xvt {

enum class Purpose { open, save, place, directory };

/// Directory and last name of a path that has a slash in it.
std::pair<std::string, std::string> splitPath(const std::string& path);

/// Why a path cannot be chosen; empty when it can.
std::string refusalOf(Purpose purpose, const std::string& path);

/// Makes a folder. Why it could not be made, empty when it was.
std::string makeFolder(const std::string& path);

}  // namespace xvt
