#include "quarlo/help/helppage.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <set>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/folder.h"
#include "libkyr/text.h"
#include "quarlo/help/plaintext.h"
#include "quarlo/tapelib/sharefolder.h"
#include "xvt/base/utf8.h"

namespace {

constexpr std::size_t kWidth = 84;
constexpr const char* kKind = "docs";
constexpr const char* kFirstPage = "user-guide.md";

using Row = std::vector<std::string>;

/// The cells of a line of a table, without marks.
Row cellsOf(std::string_view line) {
  Row cells;
  std::string cell;
  line.remove_prefix(1);
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\\' && at + 1 < line.size() && line[at + 1] == '|') {
      cell += line[++at];
    } else if (line[at] == '|') {
      cells.push_back(plainText(trimText(cell)));
      cell.clear();
    } else {
      cell += line[at];
    }
  }
  return cells;
}

bool isRule(std::string_view line) { return line.find_first_not_of("|-: ") == std::string_view::npos; }

/// The widths of the columns; the widest give way until all fit.
std::vector<std::size_t> columnWidths(const std::vector<Row>& rows) {
  constexpr std::size_t kLeast = 12;
  constexpr std::size_t kGap = 2;
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t at = 0; at < row.size(); ++at) widths[at] = std::max(widths[at], xvt::utf8Characters(row[at]));
  }
  while (!widths.empty() && std::reduce(widths.begin(), widths.end()) + kGap * (widths.size() - 1) > kWidth) {
    const auto widest = std::ranges::max_element(widths);
    if (*widest <= kLeast) break;
    --*widest;
  }
  return widths;
}

std::string padded(std::string text, std::size_t width) {
  const std::size_t characters = xvt::utf8Characters(text);
  return text.append(width > characters ? width - characters : 0, ' ');
}

std::string withoutTail(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

/// Reads a page line by line.
class PageReader {
 public:
  explicit PageReader(HelpPage* page) : page_(*page) {}

  void take(std::string_view line) {
    if (line.starts_with("```")) {
      flush();
      fenced_ = !fenced_;
    } else if (fenced_) {
      put("    " + std::string(line));
    } else if (line.empty()) {
      flush();
      blank();
    } else if (line.starts_with('#')) {
      flush();
      heading(line);
    } else if (line.starts_with('|')) {
      if (table_.empty()) flush();
      if (!isRule(line)) table_.push_back(cellsOf(line));
    } else if (line.starts_with("    ") && words_.empty()) {
      put(std::string(line));
    } else {
      paragraph(line);
    }
  }

  void flush() {
    const std::string start = std::exchange(start_, "");
    const std::string indent(xvt::utf8Characters(start), ' ');
    const auto lines = wrapped(plainText(std::exchange(words_, "")), kWidth - indent.size());
    for (std::size_t at = 0; at < lines.size(); ++at) put((at == 0 ? start : indent) + lines[at]);
    table();
  }

 private:
  void put(std::string line) { page_.lines.push_back(std::move(line)); }

  void blank() {
    if (!page_.lines.empty() && !page_.lines.back().empty()) put("");
  }

  /// A line of a paragraph, or the first of a point of a list.
  void paragraph(std::string_view line) {
    const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
    const std::string_view text = line.substr(indent);
    const std::size_t figures = std::min(text.find_first_not_of("0123456789"), text.size());
    const bool counted = figures > 0 && text.substr(figures).starts_with(". ");
    if (text.starts_with("- ") || counted) {
      flush();
      const std::size_t mark = counted ? figures + 2 : 2;
      start_ = std::string(indent, ' ') + std::string(text.substr(0, mark));
      words_ = text.substr(mark);
    } else {
      words_ += (words_.empty() ? "" : " ") + std::string(text);
    }
  }

  void heading(std::string_view line) {
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    std::string_view marked = line.substr(level);
    if (marked.starts_with(' ')) marked.remove_prefix(1);
    const std::string text = plainText(marked);
    // Headings that follow each other share what stands below them.
    const bool shares =
        !page_.headings.empty() && page_.headings.back().line + 1 == static_cast<long>(page_.lines.size()) && level > 2;
    if (!shares) blank();
    page_.headings.push_back({text, sectionName(marked), static_cast<long>(page_.lines.size())});
    put(text);
    if (level <= 2) put(std::string(xvt::utf8Characters(text), level == 1 ? '=' : '-'));
  }

  void table() {
    const std::vector<std::size_t> widths = columnWidths(table_);
    for (std::size_t number = 0; number < table_.size(); ++number) {
      row(table_[number], widths);
      if (number == 0) row(underlines(widths), widths);
    }
    table_.clear();
  }

  static Row underlines(const std::vector<std::size_t>& widths) {
    Row row;
    for (const std::size_t width : widths) row.emplace_back(width, '-');
    return row;
  }

  void row(const Row& cells, const std::vector<std::size_t>& widths) {
    std::vector<Row> columns;
    std::size_t height = 1;
    for (std::size_t at = 0; at < cells.size(); ++at) {
      columns.push_back(wrapped(cells[at], widths[at]));
      height = std::max(height, columns.back().size());
    }
    for (std::size_t line = 0; line < height; ++line) {
      std::string text;
      for (std::size_t at = 0; at < columns.size(); ++at)
        text += padded(line < columns[at].size() ? columns[at][line] : "", widths[at] + 2);
      put(withoutTail(std::move(text)));
    }
  }

  HelpPage& page_;
  bool fenced_ = false;
  std::string start_;  ///< what the paragraph begins with: the mark of a list
  std::string words_;
  std::vector<Row> table_;
};

}  // namespace

std::optional<long> HelpPage::lineOf(std::string_view section) const {
  const auto found = std::ranges::find(headings, section, &HelpHeading::section);
  return found == headings.end() ? std::nullopt : std::optional(found->line);
}

HelpPage readPage(const std::string& name, std::string_view text) {
  HelpPage page{name, {}, {}};
  PageReader reader(&page);
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    reader.take(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  reader.flush();
  return page;
}

std::string pagePath(const std::string& name) { return findShared(kKind, name); }

std::optional<HelpPage> findPage(const std::string& name) {
  if (name.find('/') != std::string::npos) return std::nullopt;
  const FileHandle file = openFile(pagePath(name).c_str(), "r");
  if (!file) return std::nullopt;
  std::string text;
  for (std::string line; readTextLine(file.get(), &line);) text += line + "\n";
  return readPage(name, text);
}

std::vector<std::string> allPages() {
  std::set<std::string> names;
  for (const std::string& folder : shareFolders(kKind))
    for (const auto& path : pathsIn(folder))
      if (path.extension() == ".md") names.insert(path.filename().string());
  std::vector<std::string> pages(names.begin(), names.end());
  std::stable_partition(pages.begin(), pages.end(), [](const std::string& name) { return name == kFirstPage; });
  return pages;
}

HelpPage contentsPage() {
  const std::vector<std::string> names = allPages();
  if (names.empty()) return missingPage(kFirstPage);
  std::string text =
      "# Contents\n\n"
      "F1 on a line with a page's name in brackets opens that page, and on any other line this list. Ctrl+F finds "
      "words, "
      "F3 finds them again; Ctrl+W closes this window.\n\n";
  for (const std::string& name : names)
    if (const auto page = findPage(name)) text += "- " + page->title() + " [" + name + "]\n";
  return readPage("", text);
}

HelpPage missingPage(const std::string& name) {
  std::string text = "# No help\n\nThe page \"" + name + "\" was not found. It was looked for in\n\n";
  for (const std::string& folder : shareFolders(kKind)) text += "    " + folder + "\n";
  return readPage(name, text);
}
