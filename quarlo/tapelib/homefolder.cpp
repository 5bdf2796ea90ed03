#include "quarlo/tapelib/homefolder.h"

#include <filesystem>
#include <utility>

#include "libkyr/files.h"

namespace {

std::string& rememberedFolder() {
  static std::string folder;
  return folder;
}

}  // namespace

void setHomeFolder(std::string path) { rememberedFolder() = std::move(path); }

const std::string& homeFolder() { return rememberedFolder(); }

std::string inHomeFolder(const char* name) { return homeFolder().empty() ? name : joinPath(homeFolder(), name); }

std::string programFolder() {
  std::error_code unknown;
  return std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path().string();
}
