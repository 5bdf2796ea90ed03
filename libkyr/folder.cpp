#include "libkyr/folder.h"

#include <system_error>

namespace fs = std::filesystem;

// Not by the loop over a range, whose steps throw.
std::vector<fs::path> pathsIn(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code failed;
  for (fs::directory_iterator each(folder, failed), end; !failed && each != end; each.increment(failed))
    paths.push_back(each->path());
  return paths;
}
