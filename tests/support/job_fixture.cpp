#include "tests/support/job_fixture.h"

#include <regex>

// Not in the header: the compiler takes five seconds for it, in each test that has it.
std::string withoutDates(const std::string& line) {
  static const std::regex date("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}");
  return std::regex_replace(line, date, "DATE");
}
