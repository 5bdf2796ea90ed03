#include "xvt/script/script_source.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "xvt/script/script_values.h"

namespace xvt::script {

namespace {

constexpr std::string_view kHeadMark = "#:";
constexpr std::size_t kDeepest = 10;

/// Takes the first word off a line; quotes hold blanks together.
std::string takeWord(std::istringstream* line) {
  std::string word;
  *line >> std::ws;
  if (line->peek() != '"') {
    *line >> word;
  } else {
    line->get();
    std::getline(*line, word, '"');
  }
  return word;
}

std::string restOf(std::istringstream* line) {
  std::string rest;
  std::getline(*line >> std::ws, rest);
  while (!rest.empty() && (rest.back() == '\r' || rest.back() == ' ')) rest.pop_back();
  return rest;
}

class SourceReader {
 public:
  SourceReader(const std::vector<std::string>& folders, ParseError* error) : folders_(folders), error_(error) {}

  bool read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) return wrong("cannot be read");
    const auto name = std::make_shared<const std::string>(path);
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
      if (!take({name, number, line})) return false;
    return true;
  }

  Source source;

 private:
  bool wrong(const std::string& reason) {
    error_->reason = reason;
    return false;
  }

  bool take(const SourceLine& line) {
    error_->file = *line.file;
    error_->line = line.number;
    if (line.text.starts_with(kHeadMark)) return declare(line.text.substr(kHeadMark.size()));
    std::istringstream words(line.text);
    if (takeWord(&words) != "include") {
      source.lines.push_back(line);
      return true;
    }
    const std::string name = restOf(&words);
    return name.empty() ? wrong("include: a file's name is missing") : include(*line.file, name);
  }

  bool include(const std::string& from, const std::string& name) {
    std::vector<std::string> folders = {std::filesystem::path(from).parent_path().string()};
    folders.insert(folders.end(), folders_.begin(), folders_.end());
    for (const std::string& folder : folders) {
      const std::string path = (std::filesystem::path(folder) / name).string();
      std::error_code unknown;
      if (!std::filesystem::is_regular_file(path, unknown)) continue;
      if (depth_ == kDeepest) return wrong("include: the files include each other too deeply");
      ++depth_;
      const bool read = this->read(path);
      --depth_;
      return read;
    }
    return wrong("include: there is no file \"" + name + "\"");
  }

  /// A line of the head: "title TEXT", "needs NAME VALUES MEANING" or "takes NAME VALUES DEFAULT MEANING".
  bool declare(const std::string& text) {
    std::istringstream line(text);
    const std::string what = takeWord(&line);
    if (what == "title") return declareTitle(restOf(&line));
    if (what != "needs" && what != "takes")
      return wrong("the head: \"" + what + "\" is not \"title\", \"needs\" or \"takes\"");
    Variable variable;
    variable.name = takeWord(&line);
    variable.values = takeWord(&line);
    if (what == "takes") variable.fallback = takeWord(&line);
    variable.meaning = restOf(&line);
    const std::string place = error_->file + ":" + std::to_string(error_->line);
    const auto [declared, isNew] = declared_.emplace(variable.name, place);
    if (!isNew && declared->second == place) return true;  // of a file that is included again
    const std::string reason = isNew ? faultOf(variable) : variable.name + " is declared twice";
    if (!reason.empty()) return wrong("the head: " + reason);
    source.variables.push_back(variable);
    return true;
  }

  bool declareTitle(const std::string& title) {
    if (title.empty() || !source.title.empty() || depth_ > 0)
      return wrong("the head: one title, with a text, stands in the script itself");
    source.title = title;
    return true;
  }

  static std::string faultOf(const Variable& variable) {
    if (!isVariableName(variable.name)) return "\"" + variable.name + "\" is no name of a variable";
    if (!areValues(variable.values)) return variable.name + ": \"" + variable.values + "\" are no values";
    if (variable.meaning.empty()) return variable.name + ": its meaning is missing";
    if (variable.fallback && !fits(variable.values, *variable.fallback))
      return variable.name + ": its default \"" + *variable.fallback + "\" is not " + describe(variable.values);
    return "";
  }

  const std::vector<std::string>& folders_;
  ParseError* error_;
  std::map<std::string, std::string> declared_;  ///< where each variable is declared
  std::size_t depth_ = 0;
};

std::string namesOf(const std::vector<Variable>& variables) {
  std::string names;
  for (const Variable& each : variables) names += (names.empty() ? "" : ", ") + each.name;
  return names;
}

}  // namespace

std::optional<Source> readSource(const std::string& path, const std::vector<std::string>& folders, ParseError* error) {
  *error = {path, 0, ""};
  SourceReader reader(folders, error);
  if (!reader.read(path)) return std::nullopt;
  return std::move(reader.source);
}

std::optional<Values> takeValues(const Source& source, const std::vector<std::pair<std::string, std::string>>& given,
                                 std::string* reason) {
  Values values;
  for (const auto& [name, value] : given) {
    if (values.emplace(name, value).second) continue;
    *reason = name + " is given twice";
    return std::nullopt;
  }
  if (source.title.empty() && source.variables.empty()) return values;
  for (const auto& [name, value] : values) {
    const auto isIt = [&name = name](const Variable& each) { return each.name == name; };
    const auto found = std::find_if(source.variables.begin(), source.variables.end(), isIt);
    if (found == source.variables.end()) {
      *reason = "there is no variable \"" + name + "\"; there are " + namesOf(source.variables);
      return std::nullopt;
    }
    if (!fits(found->values, value)) {
      *reason = std::string(name).append("=").append(value).append(": it must be ").append(describe(found->values));
      return std::nullopt;
    }
  }
  for (const Variable& each : source.variables) {
    if (!each.fallback && !values.contains(each.name)) {
      *reason = each.name + "=" + each.values + " is missing: " + each.meaning;
      return std::nullopt;
    }
    values.emplace(each.name, each.fallback.value_or(""));
  }
  return values;
}

}  // namespace xvt::script
