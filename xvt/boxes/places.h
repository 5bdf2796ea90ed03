/// Folders that the file box offers to go to.
#pragma once

#include <string>
#include <vector>

namespace xvt {

struct Place {
  std::string shown;
  std::string path;
};

/// Where a box of this run was left, the last one first.
const std::vector<std::string>& recentFolders();
void rememberFolder(const std::string& path);

/// The home folder, the one that the program was started in, those of this run; what is no folder now is left out.
std::vector<Place> places();

}  // namespace xvt
