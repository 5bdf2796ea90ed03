/// The check floor's voice.
#pragma once

#include <string>
#include <string_view>

namespace xvt {

/// Says on standard error that a call was given something impossible: "xvt: FUNCTION: reason". Each such line is
/// written once in a run, so that a faulty call in a loop does not flood the terminal.
void report(std::string_view function, std::string_view reason);

/// Who is told each such line from now on instead, every time; null for standard error.
void setReporter(void (*reporter)(const std::string& line));

}  // namespace xvt
