#include "xvt/script/script_statement.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "xvt/script/script_values.h"

namespace xvt::script {

namespace {

/// How a verb is written: its words, then the shapes of its arguments.
///   c WINDOW.CONTROL   w window   t any text   r row number or "text"   s seconds   n whole number   a the word "add"
///   f exists, absent or size   + one or more texts   behind a "?": need not be there
struct VerbForm {
  std::string_view words;
  std::string_view shapes;
  Verb verb;
};

constexpr std::array kVerbs = {
    VerbForm{"press", "c", Verb::press},
    VerbForm{"type", "ct", Verb::type},
    VerbForm{"select", "cr?a", Verb::select},
    VerbForm{"doubleclick", "cr", Verb::doubleClick},
    VerbForm{"menu", "t", Verb::menu},
    VerbForm{"close", "w", Verb::close},
    VerbForm{"key", "wt", Verb::key},
    VerbForm{"answer", "w?t", Verb::answer},
    VerbForm{"answer-always", "w?t", Verb::answerAlways},
    VerbForm{"again", "", Verb::again},
    VerbForm{"answer-file", "t", Verb::answerFile},
    VerbForm{"answer-cancel", "", Verb::answerCancel},
    VerbForm{"wait window", "ws", Verb::waitWindow},
    VerbForm{"wait no-window", "ws", Verb::waitNoWindow},
    VerbForm{"wait text", "cts", Verb::waitText},
    VerbForm{"wait enabled", "cs", Verb::waitEnabled},
    VerbForm{"wait console", "ts", Verb::waitConsole},
    VerbForm{"wait line", "wts", Verb::waitLine},
    VerbForm{"mark", "?w", Verb::mark},
    VerbForm{"expect text", "ct", Verb::expectText},
    VerbForm{"expect like", "ct", Verb::expectLike},
    VerbForm{"expect enabled", "c", Verb::expectEnabled},
    VerbForm{"expect disabled", "c", Verb::expectDisabled},
    VerbForm{"expect checked", "c", Verb::expectChecked},
    VerbForm{"expect unchecked", "c", Verb::expectUnchecked},
    VerbForm{"expect visible", "c", Verb::expectVisible},
    VerbForm{"expect hidden", "c", Verb::expectHidden},
    VerbForm{"expect row", "ct", Verb::expectRow},
    VerbForm{"expect no-row", "ct", Verb::expectNoRow},
    VerbForm{"expect rows", "cn", Verb::expectRows},
    VerbForm{"expect menu-enabled", "t", Verb::expectMenuEnabled},
    VerbForm{"expect menu-disabled", "t", Verb::expectMenuDisabled},
    VerbForm{"expect menu-checked", "t", Verb::expectMenuChecked},
    VerbForm{"expect menu-unchecked", "t", Verb::expectMenuUnchecked},
    VerbForm{"expect window", "w", Verb::expectWindow},
    VerbForm{"expect no-window", "w", Verb::expectNoWindow},
    VerbForm{"expect title", "wt", Verb::expectTitle},
    VerbForm{"expect line", "wt", Verb::expectLine},
    VerbForm{"expect no-line", "w+", Verb::expectNoLine},
    VerbForm{"expect file", "tf?n", Verb::expectFile},
    VerbForm{"expect no-file", "t", Verb::expectNoFile},
    VerbForm{"expect terminal", "", Verb::expectTerminal},
    VerbForm{"copy-lines", "wt", Verb::copyLines},
    VerbForm{"print", "t", Verb::print},
    VerbForm{"sleep", "s", Verb::sleep},
    VerbForm{"patience", "s", Verb::patience},
    VerbForm{"screenshot", "wt", Verb::screenshot},
    VerbForm{"run", "t", Verb::run},
    VerbForm{"follow", "w", Verb::follow},
    VerbForm{"watch", "w?t", Verb::watch},
    VerbForm{"prompt", "ttc", Verb::prompt},
    VerbForm{"report", "t", Verb::report},
    VerbForm{"give-up", "t", Verb::giveUp},
    VerbForm{"dump-windows", "", Verb::dumpWindows},
    VerbForm{"stay", "", Verb::stay},
    VerbForm{"quit", "", Verb::quit},
};

bool hasShape(char shape, const Word& word) {
  switch (shape) {
    case 'c':
      return isTarget(word.text);
    case 'w':
      return !word.text.empty();
    case 's':
      return isDecimal(word.text);
    case 'n':
      return isWholeNumber(word.text);
    case 'r':
      return word.quoted || word.variable || isWholeNumber(word.text);
    case 'a':
      return word.text == "add";
    case 'f':
      return word.text == "exists" || word.text == "absent" || word.text == "size";
    default:
      return true;
  }
}

std::string shapeName(char shape) {
  switch (shape) {
    case 'c':
      return "WINDOW.CONTROL";
    case 'w':
      return "a window's name";
    case 's':
      return "a number of seconds";
    case 'n':
      return "a whole number";
    case 'r':
      return "a row number or a row's text in quotes";
    case 'a':
      return "\"add\"";
    case 'f':
      return "\"exists\", \"absent\" or \"size\"";
    default:
      return "a text";
  }
}

std::size_t wordCount(std::string_view words) {
  return 1 + static_cast<std::size_t>(std::count(words.begin(), words.end(), ' '));
}

const VerbForm* formOf(const std::vector<Word>& words) {
  const std::string one = words[0].text;
  const std::string two = words.size() > 1 ? one + " " + words[1].text : one;
  const auto* found = std::find_if(kVerbs.begin(), kVerbs.end(),
                                   [&](const VerbForm& form) { return form.words == one || form.words == two; });
  return found != kVerbs.end() ? found : nullptr;
}

/// What is wrong with the arguments, empty when nothing is.
/// @param live false where a condition does not hold: there a variable may have a value that would not fit
std::string shapeError(const VerbForm& form, const std::vector<Word>& arguments, bool live) {
  std::size_t at = 0;
  bool optional = false;
  for (const char shape : form.shapes) {
    if (shape == '?') {
      optional = true;
      continue;
    }
    if (at == arguments.size() && optional && shape != '+') return "";
    if (at == arguments.size()) return std::string(form.words) + ": " + shapeName(shape) + " is missing";
    if (shape == '+') return "";
    if (!hasShape(shape, arguments[at]) && (live || !arguments[at].variable))
      return std::string(form.words) + ": \"" + arguments[at].text + "\" is not " + shapeName(shape);
    ++at;
  }
  return at == arguments.size() ? "" : std::string(form.words) + ": \"" + arguments[at].text + "\" is too much";
}

std::string fileShapeError(const Statement& statement) {
  if (statement.verb != Verb::expectFile) return "";
  const bool wantsNumber = statement.text(1) == "size";
  if (wantsNumber == statement.has(2)) return "";
  return wantsNumber ? "expect file: the size is missing" : "expect file: \"" + statement.text(2) + "\" is too much";
}

/// Takes 'else "LINE"' off the end of a line.
void takeOtherwise(std::vector<Word>* words, Statement* statement) {
  if (words->size() < 3) return;
  const Word& mark = (*words)[words->size() - 2];
  if (mark.quoted || mark.text != "else") return;
  statement->otherwise = words->back().text;
  words->resize(words->size() - 2);
}

}  // namespace

bool isTarget(const std::string& text) {
  const std::size_t dot = text.find('.');
  return dot != std::string::npos && dot > 0 && dot + 1 < text.size();
}

std::string makeStatement(std::vector<Word> words, bool live, Statement* statement) {
  statement->optional = words.size() > 1 && words[0].text == "try";
  if (statement->optional) words.erase(words.begin());
  takeOtherwise(&words, statement);
  const VerbForm* form = formOf(words);
  if (form == nullptr) {
    const bool family = words[0].text == "wait" || words[0].text == "expect";
    return "there is no verb \"" + words[0].text + (family && words.size() > 1 ? " " + words[1].text : "") + "\"";
  }
  statement->verb = form->verb;
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(wordCount(form->words)));
  statement->arguments = std::move(words);
  const std::string wrong = shapeError(*form, statement->arguments, live);
  return wrong.empty() ? fileShapeError(*statement) : wrong;
}

double Statement::number(std::size_t at) const { return std::strtod(text(at).c_str(), nullptr); }

}  // namespace xvt::script
