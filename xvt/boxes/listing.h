/// What the file box shows of a folder's names, and in which order. Knows no disk and no window.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "xvt/base/fsys.h"

namespace xvt {

using Entries = std::vector<DirectoryEntry>;

enum class SortBy { name, size, date };

/// Names begin with "a", sizes with the largest, dates with the newest, unless reversed.
struct ListOrder {
  SortBy by = SortBy::name;
  bool reversed = false;

  /// The head of a column was pressed: the list is sorted by it, the other way round if it was so already.
  void press(SortBy head);
  /// What the head says: its word, with an arrow when the list is sorted by it.
  [[nodiscard]] std::string headOf(SortBy head) const;
};

/// Folders first; where sizes or dates are the same, by name.
void sortEntries(Entries* entries, ListOrder order);

/// A name as it can be shown: U+FFFD for each byte that is not valid UTF-8, and for control characters.
std::string shownName(std::string_view name);

/// "999 B", "1.2 kB" (a thousand bytes), ... "1.2 TB".
std::string shownSize(long long bytes);

/// Local time, "2026-11-22 11:49".
std::string shownDate(std::time_t time);

/// The row of a list with columns.
std::string rowOf(const DirectoryEntry& entry, bool withSize);

/// What of a list of names begins like a text.
struct Completion {
  std::size_t count = 0;                  ///< of names that do
  std::string text;                       ///< what they begin with all, as it is shown
  const DirectoryEntry* first = nullptr;  ///< the first of them in the list
};

/// Names in the very case of `begin`, or else in any. Those that begin with a dot only if it does.
Completion completionOf(const Entries& entries, const std::string& begin);

/// The path that somebody has typed or pasted: without the blanks, line ends and quotation marks around it; a file:
/// address as the path of this host that it stands for.
std::string pathFrom(std::string text);

}  // namespace xvt
