/// The words of a script's line.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xvt::script {

/// The variables of a run, by name. What is not among them is looked up in the environment.
using Values = std::map<std::string, std::string, std::less<>>;

/// One word of a line, quotes taken off, escapes and variables put in.
struct Word {
  std::string text;
  bool quoted = false;
  bool variable = false;  ///< a variable stands in it
};

/// Splits one line into words; a "#" that begins a word begins a comment. Nothing when the line is wrong: `reason` says
/// how (an open quote, a variable that is not set).
std::optional<std::vector<Word>> splitWords(std::string_view line, const Values& values, std::string* reason);

}  // namespace xvt::script
