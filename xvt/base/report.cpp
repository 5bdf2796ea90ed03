#include "xvt/base/report.h"

#include <cstdio>
#include <set>
#include <string>

namespace xvt {

namespace {

void (*listener)(const std::string&) = nullptr;

}  // namespace

void setReporter(void (*reporter)(const std::string& line)) { listener = reporter; }

void report(std::string_view function, std::string_view reason) {
  static std::set<std::string> said;
  std::string line = "xvt: ";
  line.append(function).append(": ").append(reason);
  if (listener != nullptr)
    listener(line);
  else if (said.insert(line).second)
    std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace xvt
