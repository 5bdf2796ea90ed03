#include "xvt/script/script_words.h"

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
  WordReader(std::string_view line, const Values& values, std::string* reason)
      : rest_(line), values_(values), reason_(reason) {}

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
    while (!rest_.empty() && (isNameCharacter(rest_.front()) || (braced && rest_.front() == '-'))) name += take();
    if (braced && (rest_.empty() || take() != '}')) return wrong("${" + name + " is not closed");
    if (name.empty()) {
      word->text += '$';
      return !braced || wrong("${} has no name");
    }
    word->variable = true;
    const auto given = values_.find(name);
    const char* value = given != values_.end() ? given->second.c_str() : std::getenv(name.c_str());
    if (value == nullptr) return wrong("the variable " + name + " is not set");
    word->text += value;
    return true;
  }

  std::string_view rest_;
  const Values& values_;
  std::string* reason_;
};

}  // namespace

std::optional<std::vector<Word>> splitWords(std::string_view line, const Values& values, std::string* reason) {
  return WordReader(line, values, reason).all();
}

}  // namespace xvt::script
