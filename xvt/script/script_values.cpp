#include "xvt/script/script_values.h"

#include <algorithm>
#include <array>

namespace xvt::script {

namespace {

/// The row of a drive in the list of drives, as the verb "select" takes it.
bool isDrive(const std::string& text) {
  return isWholeNumber(text) || (text.find('*') != std::string::npos && text.find(',') == std::string::npos);
}

bool isDrives(const std::string& text) {
  const std::vector<std::string> all = splitAt(text, ',');
  return !all.empty() &&
         std::all_of(all.begin(), all.end(), [](const std::string& each) { return each == "next" || isDrive(each); });
}

bool isPath(const std::string& text) { return !text.empty() && !isDrive(text); }

bool isText(const std::string& text) { return !text.empty(); }

struct Kind {
  std::string_view name;
  bool (*fits)(const std::string& text);
  const char* words;
};

constexpr std::array kKinds = {
    Kind{"NUMBER", isWholeNumber, "a whole number"},
    Kind{"DECIMAL", isDecimal, "a number"},
    Kind{"DRIVE", isDrive, "a drive (its row in the list of drives, from 0, or the row's text with *)"},
    Kind{"DRIVES", isDrives, "drives or \"next\", with commas between them"},
    Kind{"FILE", isPath, "a file (./ before a name that is a number or has a *)"},
    Kind{"FOLDER", isPath, "a folder"},
    Kind{"TEXT", isText, "a text"},
};

const Kind* kindOf(std::string_view name) {
  const auto* found = std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& kind) { return kind.name == name; });
  return found != kKinds.end() ? found : nullptr;
}

bool isSmall(char c) { return c >= 'a' && c <= 'z'; }
bool isLetter(char c) { return isSmall(c) || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What stands for itself among the values.
bool isPlain(std::string_view text) { return !text.empty() && (isSmall(text.front()) || isDigit(text.front())); }

}  // namespace

bool fits(std::string_view values, const std::string& text) {
  const std::vector<std::string> all = splitAt(values, '|');
  return std::any_of(all.begin(), all.end(), [&](const std::string& each) {
    const Kind* kind = kindOf(each);
    return kind != nullptr ? kind->fits(text) : each == text;
  });
}

std::string describe(std::string_view values) {
  const std::vector<std::string> all = splitAt(values, '|');
  std::string text;
  for (std::size_t at = 0; at < all.size(); ++at) {
    const Kind* kind = kindOf(all[at]);
    text += at == 0 ? "" : at + 1 == all.size() ? " or " : ", ";
    text += kind != nullptr ? kind->words : all[at];
  }
  return text;
}

bool areValues(std::string_view values) {
  const std::vector<std::string> all = splitAt(values, '|');
  return !all.empty() && std::all_of(all.begin(), all.end(),
                                     [](const std::string& each) { return kindOf(each) != nullptr || isPlain(each); });
}

bool isWholeNumber(const std::string& text) {
  return !text.empty() && text.size() <= 15 && std::all_of(text.begin(), text.end(), isDigit);
}

bool isDecimal(const std::string& text) {
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return isWholeNumber(text);
  return isWholeNumber(text.substr(0, point)) && isWholeNumber(text.substr(point + 1));
}

bool isVariableName(std::string_view name) {
  return !name.empty() && isLetter(name.front()) &&
         std::all_of(
             name.begin(), name.end(), [](char c) { return isLetter(c) || isDigit(c) || c == '-'; });
}

std::vector<std::string> splitAt(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.emplace_back(text.substr(0, end));
    const bool more = end < text.size();
    text.remove_prefix(std::min(end + 1, text.size()));
    if (more && text.empty()) parts.emplace_back();
  }
  return parts;
}

}  // namespace xvt::script
