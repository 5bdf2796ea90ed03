#include "quarlo/help/plaintext.h"

#include <algorithm>
#include <cctype>

#include "xvt/base/utf8.h"

namespace {

bool isSpaceAt(std::string_view text, std::size_t at) { return at >= text.size() || text[at] == ' '; }

/// Reads marked text from its beginning to its end.
class Reader {
 public:
  explicit Reader(std::string_view marked) : rest_(marked) {}

  std::string read() {
    while (!rest_.empty())
      if (!code() && !escape() && !link() && !emphasis()) copy(1);
    return plain_;
  }

 private:
  void copy(std::size_t bytes) {
    plain_ += rest_.substr(0, bytes);
    rest_.remove_prefix(bytes);
  }

  bool code() {
    const std::size_t ticks = std::min(rest_.find_first_not_of('`'), rest_.size());
    const std::size_t end = ticks == 0 ? std::string_view::npos : rest_.find(rest_.substr(0, ticks), ticks);
    if (end == std::string_view::npos) return false;
    plain_ += rest_.substr(ticks, end - ticks);
    rest_.remove_prefix(end + ticks);
    return true;
  }

  bool escape() {
    if (rest_.size() < 2 || rest_[0] != '\\' || std::ispunct(static_cast<unsigned char>(rest_[1])) == 0) return false;
    rest_.remove_prefix(1);
    copy(1);
    return true;
  }

  bool link() {
    const bool picture = rest_.starts_with("![");
    const std::size_t open = picture ? 1 : 0;
    const std::size_t middle = rest_.substr(open).starts_with('[') ? rest_.find("](", open) : std::string_view::npos;
    const std::size_t end = middle == std::string_view::npos ? middle : rest_.find(')', middle);
    if (end == std::string_view::npos) return false;
    const std::string words = plainText(rest_.substr(open + 1, middle - open - 1));
    const std::string target(rest_.substr(middle + 2, end - middle - 2));
    rest_.remove_prefix(end + 1);
    if (!picture) plain_ += words == target ? "[" + target + "]" : words + reference(target);
    return true;
  }

  static std::string reference(const std::string& target) {
    if (target.starts_with("http")) return " <" + target + ">";
    const bool page = target.find(".md") != std::string::npos && !target.starts_with("..");
    return page ? " [" + target + "]" : "";
  }

  /// Stars beside a word are marks, stars between blanks are meant.
  bool emphasis() {
    const std::size_t stars = std::min(rest_.find_first_not_of('*'), rest_.size());
    if (stars == 0) return false;
    const bool alone = (plain_.empty() || plain_.back() == ' ') && isSpaceAt(rest_, stars);
    if (alone) return false;
    rest_.remove_prefix(stars);
    return true;
  }

  std::string_view rest_;
  std::string plain_;
};

}  // namespace

std::string plainText(std::string_view marked) { return Reader(marked).read(); }

std::string referenceIn(std::string_view line) {
  for (std::size_t open = line.find('['); open != std::string_view::npos; open = line.find('[', open + 1)) {
    const std::size_t end = line.find(']', open);
    if (end == std::string_view::npos) break;
    const std::string_view inside = line.substr(open + 1, end - open - 1);
    if (inside.find(".md") != std::string_view::npos && inside.find(' ') == std::string_view::npos)
      return std::string(inside);
  }
  return "";
}

std::string sectionName(std::string_view heading) {
  std::string name;
  for (const char letter : plainText(heading)) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte >= 0x80 || std::isalnum(byte) != 0 || letter == '-' || letter == '_')
      name += static_cast<char>(byte < 0x80 ? std::tolower(byte) : byte);
    else if (letter == ' ')
      name += '-';
  }
  return name;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t blank = text.find(' ');
    const std::string_view word = text.substr(0, blank);
    text.remove_prefix(blank == std::string_view::npos ? text.size() : blank + 1);
    if (word.empty()) continue;
    if (lines.empty() || xvt::utf8Characters(lines.back()) + 1 + xvt::utf8Characters(word) > width)
      lines.emplace_back(word);
    else
      lines.back().append(" ").append(word);
  }
  return lines;
}
