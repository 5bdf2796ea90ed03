#include "libkyr/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int endOfOutput(const char* program, int status, int failure) {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  std::fprintf(stderr, "%s: standard output: %s\n", program, errno != 0 ? std::strerror(errno) : "cannot be written");
  return failure;
}
