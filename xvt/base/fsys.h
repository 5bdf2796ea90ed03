/// Directories read without going there.
#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace xvt {

/// One name in a directory. Links count as what they lead to.
struct DirectoryEntry {
  std::string name;  ///< the bytes on the disk, whatever they are
  bool isDirectory = false;
  bool leadsNowhere = false;  ///< a link to nothing
  long long size = 0;         ///< bytes
  std::time_t changed = 0;    ///< when its contents were written last
};

enum class Reading {
  names,  ///< those beginning with a dot left out, neither sizes nor times
  all     ///< every name but "." and "..", with sizes and times
};

/// Names in the directory `path`, sorted by byte value.
/// @return false with errno set when it cannot be read
bool readDirectory(const std::string& path, std::vector<DirectoryEntry>* entries, Reading reading = Reading::names);

/// Whether the name matches a shell pattern; an empty pattern matches everything.
bool matchesPattern(const std::string& name, const std::string& pattern);

/// The path as seen from `directory`: itself when it is absolute, "~" at its beginning being the home directory.
std::string joinPath(const std::string& directory, std::string_view path);

/// The absolute path without links and dots, empty when nothing stands there.
std::string truePath(const std::string& path);

bool isDirectory(const std::string& path);

}  // namespace xvt
