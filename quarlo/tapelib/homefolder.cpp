#include "quarlo/tapelib/homefolder.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
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
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  if (static bool told = false; program.empty() && !std::exchange(told, true))
    std::fprintf(stderr, "quarlo: /proc/self/exe: %s: jobs, format modules and documents are not found without /proc\n",
                 unknown.message().c_str());
  return program.parent_path().string();
}
