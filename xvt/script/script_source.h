/// The text of a script with all that it includes, and the variables that its head declares.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "xvt/script/script_words.h"

namespace xvt::script {

/// What is wrong with a script and where.
struct ParseError {
  std::string file;
  int line = 0;
  std::string reason;
};

/// A variable that a head declares.
struct Variable {
  std::string name;
  std::string values;                   ///< what it may be: see fits() of script_values.h
  std::optional<std::string> fallback;  ///< nothing: it must be given
  std::string meaning;
};

struct SourceLine {
  std::shared_ptr<const std::string> file;
  int number = 0;
  std::string text;
};

struct Source {
  std::string title;  ///< empty when the script has no head
  std::vector<Variable> variables;
  std::vector<SourceLine> lines;
};

/// Reads a script. A file that it includes is looked for beside the one that says so, then in `folders`.
std::optional<Source> readSource(const std::string& path, const std::vector<std::string>& folders, ParseError* error);

/// The values of a run: what was given, and the defaults of the head. Where there is a head, what it does not declare
/// or allow is refused, and what it needs must be there.
/// @return nothing, with `reason`, when the values cannot be taken
std::optional<Values> takeValues(const Source& source, const std::vector<std::pair<std::string, std::string>>& given,
                                 std::string* reason);

}  // namespace xvt::script
