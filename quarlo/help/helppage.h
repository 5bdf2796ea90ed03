/// The pages of the guide as lines of plain text, as a text window shows them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct HelpHeading {
  std::string text;     ///< without marks
  std::string section;  ///< what links call it
  long line = 0;        ///< where it stands
};

struct HelpPage {
  std::string name;  ///< of its file: "merge.md"
  std::vector<std::string> lines;
  std::vector<HelpHeading> headings;

  /// The page's own heading, or its name.
  const std::string& title() const { return headings.empty() ? name : headings.front().text; }
  /// The line of a section; nothing when there is none of this name.
  std::optional<long> lineOf(std::string_view section) const;
};

/// A page of the text that its file holds: paragraphs wrapped, tables in columns, code as it stands.
HelpPage readPage(const std::string& name, std::string_view text);

/// The page of a file of the guide; nothing when that is not there.
std::optional<HelpPage> findPage(const std::string& name);

/// Where a file of the guide lies; empty when it is nowhere.
std::string pagePath(const std::string& name);

/// The names of all pages, the guide first.
std::vector<std::string> allPages();

/// A page that lists all pages.
HelpPage contentsPage();

/// A page in the place of one that is not there: it tells where that was looked for.
HelpPage missingPage(const std::string& name);
