#include "quarlo/readyjobs.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

#include "libkyr/folder.h"
#include "quarlo/tapelib/sharefolder.h"
#include "xvt/script/script_source.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".qs";

/// Every job's file by its name.
std::map<std::string, fs::path> allJobs() {
  std::map<std::string, fs::path> jobs;
  for (const std::string& folder : jobFolders())
    for (const fs::path& path : pathsIn(folder))
      if (path.extension() == kExtension) jobs.emplace(path.stem().string(), path);
  return jobs;
}

void printVariable(const xvt::script::Variable& variable) {
  const std::string fallback = variable.fallback ? "else " + *variable.fallback : "needed";
  std::printf("    %s=%s, %s\n        %s\n", variable.name.c_str(), variable.values.c_str(), fallback.c_str(),
              variable.meaning.c_str());
}

bool printJob(const std::string& name, const fs::path& path, bool isUsers) {
  xvt::script::ParseError error;
  const auto source = xvt::script::readSource(path.string(), jobFolders(), &error);
  if (source && source->title.empty()) error.reason = "the head has no title";
  if (!source || source->title.empty()) {
    std::fprintf(stderr, "quarlo: %s:%d: %s\n", error.file.c_str(), error.line, error.reason.c_str());
    return false;
  }
  std::printf("%s: %s\n", name.c_str(), source->title.c_str());
  if (isUsers) std::printf("    (%s)\n", path.c_str());
  for (const auto& variable : source->variables) printVariable(variable);
  std::printf("\n");
  return true;
}

}  // namespace

std::vector<std::string> jobFolders() { return shareFolders("jobs"); }

std::string jobFile(const std::string& name) {
  const auto jobs = allJobs();
  const auto found = jobs.find(name);
  return found != jobs.end() ? found->second.string() : "";
}

std::string jobNames() {
  std::string names;
  for (const auto& [name, path] : allJobs()) names += (names.empty() ? "" : ", ") + name;
  return names;
}

bool listJobs() {
  bool good = true;
  const std::string own = userShareFolder("jobs");
  for (const auto& [name, path] : allJobs()) {
    const bool isUsers = path.parent_path() == fs::path(own);
    good = printJob(name, path, isUsers) && good;
  }
  return good;
}
