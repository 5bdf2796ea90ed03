/// One statement of a script. The verbs are described in docs/scripts.md.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "xvt/script/script_words.h"

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
  answerAlways,
  again,
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
  expectNoFile,
  expectTerminal,
  copyLines,
  print,
  sleep,
  patience,
  screenshot,
  run,
  follow,
  watch,
  prompt,
  report,
  giveUp,
  dumpWindows,
  stay,
  quit
};

/// One statement of a script: the verb's number and words of the right number and shape.
struct Statement {
  std::shared_ptr<const std::string> file;
  int line = 0;
  Verb verb = Verb::quit;
  std::vector<Word> arguments;
  bool optional = false;        ///< behind "try": done if it can be done now, else passed over
  std::string otherwise;        ///< behind "else": said when it fails, in place of the reason
  std::vector<Statement> body;  ///< of an answer: what is done when its window comes up

  [[nodiscard]] const std::string& text(std::size_t at) const { return arguments[at].text; }
  /// A number of seconds, rows or bytes; its shape was checked.
  [[nodiscard]] double number(std::size_t at) const;
  [[nodiscard]] bool has(std::size_t at) const { return at < arguments.size(); }
};

/// Makes a statement of the words of a line, its verb first.
/// @param live false where a condition does not hold: there a variable may have a value that would not fit
/// @return what is wrong, empty when nothing is
std::string makeStatement(std::vector<Word> words, bool live, Statement* statement);

/// Whether a text has the form WINDOW.CONTROL.
bool isTarget(const std::string& text);

}  // namespace xvt::script
