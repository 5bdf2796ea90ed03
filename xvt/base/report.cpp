#include "xvt/base/report.h"

#include <cstdio>
#include <set>
#include <string>

namespace xvt {

void report(std::string_view function, std::string_view reason) {
  static std::set<std::string> said;
  std::string line = "xvt: ";
  line.append(function).append(": ").append(reason).append("\n");
  if (said.insert(line).second) std::fputs(line.c_str(), stderr);
}

}  // namespace xvt
