#include "xvt/script/script_parse.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace xvt::script {

namespace {

bool isNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

/// Reads the words of one line from left to right.
class WordReader {
 public:
  WordReader(std::string_view line, std::string* reason) : rest_(line), reason_(reason) {}

  std::optional<std::vector<Word>> all() {
    std::vector<Word> words;
    for (;;) {
      while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
      if (rest_.empty() || rest_.front() == '#') return words;
      Word word;
      if (!readWord(&word)) return std::nullopt;
      words.push_back(std::move(word));
    }
  }

 private:
  char take() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  bool wrong(const std::string& reason) {
    *reason_ = reason;
    return false;
  }

  bool readWord(Word* word) {
    bool inQuotes = false;
    while (!rest_.empty() && (inQuotes || !isBlank(rest_.front()))) {
      const char c = take();
      if (c == '"') {
        inQuotes = !inQuotes;
        word->quoted = true;
      } else if (c == '\\') {
        if (!readEscape(word)) return false;
      } else if (c == '$') {
        if (!readVariable(word)) return false;
      } else {
        word->text += c;
      }
    }
    return !inQuotes || wrong("a quote is not closed");
  }

  bool readEscape(Word* word) {
    if (rest_.empty()) return wrong("nothing follows the last \\");
    const char c = take();
    word->text += c == 'n' ? '\n' : c == 't' ? '\t' : c;
    return true;
  }

  bool readVariable(Word* word) {
    const bool braced = rest_.starts_with('{');
    if (braced) rest_.remove_prefix(1);
    std::string name;
    while (!rest_.empty() && isNameCharacter(rest_.front())) name += take();
    if (braced && (rest_.empty() || take() != '}')) return wrong("${" + name + " is not closed");
    if (name.empty()) {
      word->text += '$';
      return !braced || wrong("${} has no name");
    }
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return wrong("the environment variable " + name + " is not set");
    word->text += value;
    return true;
  }

  std::string_view rest_;
  std::string* reason_;
};

/// How a verb is written: its words, then the shapes of its arguments.
///   c WINDOW.CONTROL   w window   t any text   r row number or "text"   s seconds   n whole number   a the word "add"
///   f exists, absent or size   behind a "?": need not be there
struct VerbForm {
  std::string_view words;
  std::string_view shapes;
  Verb verb;
};

constexpr std::array VERBS = {
    VerbForm{"press", "c", Verb::press},
    VerbForm{"type", "ct", Verb::type},
    VerbForm{"select", "cr?a", Verb::select},
    VerbForm{"doubleclick", "cr", Verb::doubleClick},
    VerbForm{"menu", "t", Verb::menu},
    VerbForm{"close", "w", Verb::close},
    VerbForm{"key", "wt", Verb::key},
    VerbForm{"answer", "c", Verb::answer},
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
    VerbForm{"expect no-line", "wt", Verb::expectNoLine},
    VerbForm{"expect file", "tf?n", Verb::expectFile},
    VerbForm{"copy-lines", "wt", Verb::copyLines},
    VerbForm{"print", "t", Verb::print},
    VerbForm{"sleep", "s", Verb::sleep},
    VerbForm{"patience", "s", Verb::patience},
    VerbForm{"screenshot", "wt", Verb::screenshot},
    VerbForm{"run", "t", Verb::run},
    VerbForm{"dump-windows", "", Verb::dumpWindows},
    VerbForm{"stay", "", Verb::stay},
    VerbForm{"quit", "", Verb::quit},
};

bool isWholeNumber(const std::string& text) {
  return !text.empty() && text.size() <= 15 && text.find_first_not_of("0123456789") == std::string::npos;
}

bool isSeconds(const std::string& text) {
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return isWholeNumber(text);
  return isWholeNumber(text.substr(0, point)) && isWholeNumber(text.substr(point + 1));
}

bool isTarget(const std::string& text) {
  const std::size_t dot = text.find('.');
  return dot != std::string::npos && dot > 0 && dot + 1 < text.size();
}

bool fits(char shape, const Word& word) {
  switch (shape) {
    case 'c':
      return isTarget(word.text);
    case 'w':
      return !word.text.empty();
    case 's':
      return isSeconds(word.text);
    case 'n':
      return isWholeNumber(word.text);
    case 'r':
      return word.quoted || isWholeNumber(word.text);
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
  const auto* found = std::find_if(VERBS.begin(), VERBS.end(),
                                   [&](const VerbForm& form) { return form.words == one || form.words == two; });
  return found != VERBS.end() ? found : nullptr;
}

/// What is wrong with the arguments, empty when nothing is.
std::string shapeError(const VerbForm& form, const std::vector<Word>& arguments) {
  std::size_t at = 0;
  bool optional = false;
  for (const char shape : form.shapes) {
    if (shape == '?') {
      optional = true;
      continue;
    }
    if (at == arguments.size())
      return optional ? "" : std::string(form.words) + ": " + shapeName(shape) + " is missing";
    if (!fits(shape, arguments[at]))
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

/// Makes a statement of the words of a line; what is wrong is the answer, empty when nothing is.
std::string makeStatement(std::vector<Word> words, Statement* statement) {
  statement->optional = words.size() > 1 && words[0].text == "try";
  if (statement->optional) words.erase(words.begin());
  const VerbForm* form = formOf(words);
  if (form == nullptr) {
    const bool family = words[0].text == "wait" || words[0].text == "expect";
    return "there is no verb \"" + words[0].text + (family && words.size() > 1 ? " " + words[1].text : "") + "\"";
  }
  statement->verb = form->verb;
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(wordCount(form->words)));
  statement->arguments = std::move(words);
  const std::string wrong = shapeError(*form, statement->arguments);
  return wrong.empty() ? fileShapeError(*statement) : wrong;
}

}  // namespace

double Statement::number(std::size_t at) const { return std::strtod(text(at).c_str(), nullptr); }

std::optional<std::vector<Word>> splitWords(std::string_view line, std::string* reason) {
  return WordReader(line, reason).all();
}

std::optional<std::vector<Statement>> parse(std::string_view text, ParseError* error) {
  std::vector<Statement> statements;
  for (int line = 1; !text.empty(); ++line) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    error->line = line;
    std::optional<std::vector<Word>> words = splitWords(text.substr(0, end), &error->reason);
    if (!words) return std::nullopt;
    text.remove_prefix(std::min(end + 1, text.size()));
    if (words->empty()) continue;
    Statement statement;
    statement.line = line;
    error->reason = makeStatement(std::move(*words), &statement);
    if (!error->reason.empty()) return std::nullopt;
    statements.push_back(std::move(statement));
  }
  return statements;
}

}  // namespace xvt::script
