/// Files of a test: a folder of its own that goes with it, whole files in and out.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

class TestFolder {
 public:
  TestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quarlo-test-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before, ignored);
    std::filesystem::remove_all(folder, ignored);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string path(const std::string& name) const { return (folder / name).string(); }

 private:
  std::filesystem::path folder;
  std::filesystem::path before;
};

/// No file of this process grows beyond `bytes` while this stands: a full disk.
class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit small = before_;
    small.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The code block of a document that begins with `start`, without what it is set in by.
inline std::string documentExample(const std::string& document, const std::string& start) {
  std::istringstream text(readFile(document));
  std::string example;
  for (std::string line; std::getline(text, line);) {
    const bool within = line.starts_with("    ") || (line.empty() && !example.empty());
    if (!within && !example.empty()) break;
    if (within && (!example.empty() || line.starts_with("    " + start)))
      example += line.substr(line.empty() ? 0 : 4) + '\n';
  }
  return example;
}

inline void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}
