#include "xvt/script/script_parse.h"

#include <utility>

#include "xvt/script/script_values.h"

namespace xvt::script {

namespace {

/// Reads statements and blocks from the first line to the last.
class Parser {
 public:
  Parser(const Source& source, Values values, ParseError* error)
      : lines_(source.lines), values_(std::move(values)), error_(error) {}

  bool all(std::vector<Statement>* statements) {
    const Stop stop = readBlock(true, statements);
    if (stop == Stop::end || stop == Stop::otherwise) wrong(stop == Stop::end ? kEnd : kElse, "there is no block here");
    return stop == Stop::text;
  }

 private:
  /// What a block stopped at.
  enum class Stop { text, end, otherwise, wrong };
  using Words = std::vector<Word>;
  static constexpr int kDeepest = 20;
  static constexpr const char* kEnd = "end";
  static constexpr const char* kElse = "else";

  Stop wrong(const std::string& what, const std::string& reason) {
    const SourceLine& line = lines_[next_ - 1];
    *error_ = {*line.file, line.number, what + ": " + reason};
    return Stop::wrong;
  }

  /// Reads statements up to the end of their block.
  Stop readBlock(bool live, std::vector<Statement>* statements) {
    while (next_ < lines_.size()) {
      const SourceLine& line = lines_[next_++];
      std::string reason;
      const std::optional<Words> words = splitWords(line.text, values_, &reason);
      if (!words) {
        *error_ = {*line.file, line.number, reason};
        return Stop::wrong;
      }
      if (words->empty()) continue;
      if (words->size() == 1 && words->front().text == kEnd) return Stop::end;
      if (words->size() == 1 && words->front().text == kElse) return Stop::otherwise;
      if (!readLine(*words, live, statements)) return Stop::wrong;
    }
    return Stop::text;
  }

  bool readLine(const Words& words, bool live, std::vector<Statement>* statements) {
    if (words[0].text == "when") return readWhen(words, live, statements);
    if (words[0].text == "each") return readEach(words, live, statements);
    Statement statement;
    const SourceLine& line = lines_[next_ - 1];
    statement.file = line.file;
    statement.line = line.number;
    const std::string reason = makeStatement(words, live, &statement);
    if (!reason.empty()) {
      *error_ = {*line.file, line.number, reason};
      return false;
    }
    if (statement.verb == Verb::answer || statement.verb == Verb::answerAlways)
      if (!readAnswer(live, &statement)) return false;
    statements->push_back(std::move(statement));
    return true;
  }

  /// An inner block, which ends with "end" (or "else", where that may be).
  /// @param opening number of the line that opens it, for the message when its end is missing
  Stop readInner(std::size_t opening, const std::string& what, bool live, std::vector<Statement>* statements,
                 bool mayHaveElse = false) {
    if (depth_ == kDeepest) return wrong(what, "the blocks stand too deep in each other");
    ++depth_;
    const Stop stop = readBlock(live, statements);
    --depth_;
    if (stop == Stop::otherwise && !mayHaveElse) return wrong(kElse, "there is no \"when\" that it belongs to");
    if (stop != Stop::text) return stop;
    next_ = opening;
    return wrong(what, "its \"end\" is missing");
  }

  /// when NAME=VALUES ... else ... end
  bool readWhen(const Words& words, bool live, std::vector<Statement>* statements) {
    const std::size_t opening = next_;
    const std::string& text = words.size() == 2 ? words[1].text : words[0].text;
    const std::size_t sign = text.find('=');
    const std::string values = sign != std::string::npos ? text.substr(sign + 1) : "";
    if (!areValues(values)) return wrong("when", "NAME=VALUE is missing") == Stop::end;
    const auto variable = values_.find(text.substr(0, sign));
    if (variable == values_.end())
      return wrong("when", "there is no variable \"" + text.substr(0, sign) + "\"") == Stop::end;
    const bool holds = fits(values, variable->second);
    std::vector<Statement> passedOver;
    Stop stop = readInner(opening, "when", live && holds, holds ? statements : &passedOver, true);
    if (stop == Stop::otherwise) stop = readInner(opening, "when", live && !holds, holds ? &passedOver : statements);
    return stop == Stop::end;
  }

  /// each NAME LIST ... end: once for each of the list's parts
  bool readEach(const Words& words, bool live, std::vector<Statement>* statements) {
    const std::size_t opening = next_;
    if (words.size() != 3 || !isVariableName(words[1].text))
      return wrong("each", "the name of a variable and a list are wanted") == Stop::end;
    const std::string name = words[1].text;
    if (values_.contains(name)) return wrong("each", "there is a variable " + name + " already") == Stop::end;
    std::vector<std::string> parts = splitAt(words[2].text, ',');
    std::vector<Statement> passedOver;
    const bool none = parts.empty();
    if (none) parts.emplace_back();
    for (const std::string& part : parts) {
      next_ = opening;
      values_[name] = part;
      if (readInner(opening, "each", live && !none, none ? &passedOver : statements) != Stop::end) return false;
    }
    values_.erase(name);
    return true;
  }

  /// answer WINDOW.CONTROL presses the control; answer WINDOW ... end does what stands in the block.
  bool readAnswer(bool live, Statement* statement) {
    const std::string& target = statement->text(0);
    const std::size_t dot = target.find('.');
    if (dot == std::string::npos) return readInner(next_, "answer", live, &statement->body) == Stop::end;
    Statement press = {statement->file, statement->line, Verb::press, {{target}}, false, "", {}};
    if (!isTarget(target)) return wrong("answer", "\"" + target + "\" is not WINDOW.CONTROL") == Stop::end;
    statement->body.push_back(std::move(press));
    statement->arguments[0].text.resize(dot);
    return true;
  }

  const std::vector<SourceLine>& lines_;
  std::size_t next_ = 0;  ///< the line that is read next
  Values values_;
  ParseError* error_;
  int depth_ = 0;
};

}  // namespace

std::optional<std::vector<Statement>> parse(const Source& source, const Values& values, ParseError* error) {
  std::vector<Statement> statements;
  if (!Parser(source, values, error).all(&statements)) return std::nullopt;
  return statements;
}

}  // namespace xvt::script
