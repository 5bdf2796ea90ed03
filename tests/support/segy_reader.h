/// An independent reader of SEG Y files, where it is installed: segyio under the system's Python.
#pragma once

#include <cstdio>
#include <string>

/// What a Python program prints; nothing when it fails. The program has no single quote; `path` is its argument.
inline std::string python(const std::string& program, const std::string& path) {
  const std::string command = "/usr/bin/python3 -c '" + program + "' '" + path + "' 2>/dev/null";
  std::string printed;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return printed;
  char piece[4096];
  for (std::size_t count = 0; (count = std::fread(piece, 1, sizeof piece, pipe)) > 0;) printed.append(piece, count);
  return pclose(pipe) == 0 ? printed : "";
}

inline bool haveSegyReader() { return python("import segyio; print(1)", "") == "1\n"; }
