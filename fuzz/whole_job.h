/// What a fuzz target needs that runs a whole job from disk to disk. It works in a folder of its own: name a fuzzer's
/// corpus by an absolute path.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "quarlo/tapelib/tlv_fcn.h"
#include "tests/support/test_toolkit.h"

inline void require(bool holds) {
  if (!holds) std::abort();
}

/// The program's folder, with "out" in it, and its windows; made once.
class Program {
 public:
  Program() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quarlo-fuzz-XXXXXX").string();
    require(mkdtemp(pattern.data()) != nullptr);
    folder = pattern;
    std::filesystem::create_directory(folder + "/out");
    std::filesystem::current_path(folder);
    toolkit.openTaskWindow([](WINDOW, EVENT*) -> long { return 0; });
    initIO(getDevPtr());
  }
  ~Program() {
    unInitIO(getDevPtr());
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  std::string folder;
  TestToolkit toolkit;
};

inline std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void makeFile(const char* name, const std::string& bytes) {
  std::filesystem::remove(name);  // a file cut to nothing and written anew is slow on some file systems
  std::ofstream(name, std::ios::binary) << bytes;
}
