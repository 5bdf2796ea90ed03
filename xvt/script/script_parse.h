/// The text of a script made into statements. The verbs are described in docs/scripts.md.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace xvt::script {

enum class Verb {
  press,
  type,
  select,
  doubleClick,
  menu,
  close,
  key,
  answer,
  answerFile,
  answerCancel,
  waitWindow,
  waitNoWindow,
  waitText,
  waitEnabled,
  waitConsole,
  waitLine,
  mark,
  expectText,
  expectLike,
  expectEnabled,
  expectDisabled,
  expectChecked,
  expectUnchecked,
  expectVisible,
  expectHidden,
  expectRow,
  expectNoRow,
  expectRows,
  expectMenuEnabled,
  expectMenuDisabled,
  expectMenuChecked,
  expectMenuUnchecked,
  expectWindow,
  expectNoWindow,
  expectTitle,
  expectLine,
  expectNoLine,
  expectFile,
  copyLines,
  print,
  sleep,
  patience,
  screenshot,
  run,
  dumpWindows,
  stay,
  quit
};

/// One word of a line, quotes taken off, escapes and environment variables put in.
struct Word {
  std::string text;
  bool quoted = false;
};

/// One line of a script: the verb's number and words of the right number and shape.
struct Statement {
  int line = 0;
  Verb verb = Verb::quit;
  std::vector<Word> arguments;
  bool optional = false;  ///< behind "try": done if it can be done now, else passed over

  [[nodiscard]] const std::string& text(std::size_t at) const { return arguments[at].text; }
  /// A number of seconds, rows or bytes; its shape was checked.
  [[nodiscard]] double number(std::size_t at) const;
  [[nodiscard]] bool has(std::size_t at) const { return at < arguments.size(); }
};

/// What is wrong with a script and where.
struct ParseError {
  int line = 0;
  std::string reason;
};

/// Splits one line into words; a "#" that begins a word begins a comment. Nothing when the line is wrong: `reason` says
/// how (an open quote, a variable that is not set).
std::optional<std::vector<Word>> splitWords(std::string_view line, std::string* reason);

/// All statements of a script's text, or nothing and `error`.
std::optional<std::vector<Statement>> parse(std::string_view text, ParseError* error);

}  // namespace xvt::script
