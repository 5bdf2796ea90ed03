#include "quarlo/tapelib/sharefolder.h"

#include <cstdlib>
#include <filesystem>

#include "quarlo/tapelib/homefolder.h"

namespace {

namespace fs = std::filesystem;

/// The user's data, as the XDG base directories have it; a relative XDG_DATA_HOME counts as none.
fs::path dataHome() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && *data == '/') return data;
  const char* home = std::getenv("HOME");
  return home != nullptr && *home == '/' ? fs::path(home) / ".local/share" : fs::path();
}

}  // namespace

std::string userShareFolder(const std::string& kind) {
  const fs::path own = dataHome();
  return own.empty() ? "" : (own / "quarlo" / kind).string();
}

std::vector<std::string> shareFolders(const std::string& kind) {
  std::vector<std::string> folders;
  if (const std::string own = userShareFolder(kind); !own.empty()) folders.push_back(own);
  const fs::path program = programFolder();
  // Installed, the program stands in bin, beside share; where it was built, share stands beside the program itself.
  for (const fs::path& above : {program.parent_path(), program})
    if (!above.empty()) folders.push_back((above / "share/quarlo" / kind).string());
  return folders;
}

std::string findShared(const std::string& kind, const std::string& name) {
  for (const std::string& folder : shareFolders(kind)) {
    const fs::path path = fs::path(folder) / name;
    std::error_code unknown;
    if (fs::is_regular_file(path, unknown)) return path.string();
  }
  return "";
}
