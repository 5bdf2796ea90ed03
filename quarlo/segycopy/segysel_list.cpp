#include "quarlo/segycopy/segysel_list.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string_view>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

// ---- lines and words --------------------------------------------------------------------------------------------

/// Lines that are not blank, with their numbers.
class LineReader {
 public:
  explicit LineReader(std::FILE* stream) : file_(stream) {}

  bool next() {
    do {
      if (!readTextLine(file_, &text_)) return false;
      ++number_;
    } while (text_.empty());
    return true;
  }
  const std::string& line() const { return text_; }
  int lineNumber() const { return number_; }
  bool failed() const { return std::ferror(file_) != 0; }

 private:
  std::FILE* file_;
  std::string text_;
  int number_ = 0;
};

bool isNumber(std::string_view text) {
  const std::string word(text);
  char* end = nullptr;
  return std::isfinite(std::strtod(word.c_str(), &end)) && end != word.c_str() && end == word.c_str() + word.size();
}

/// "10-20", or "10-" in front of "20", as a range is written; empty for any other word.
std::string spacedRange(std::string_view word, std::string_view behind) {
  std::size_t dash = isNumber(word) ? std::string_view::npos : word.find('-', 1);
  for (; dash != std::string_view::npos; dash = word.find('-', dash + 1))
    if (isNumber(word.substr(0, dash)) && isNumber(word.substr(dash + 1)))
      return std::string(word.substr(0, dash)) + " - " + std::string(word.substr(dash + 1));
  const bool isOpen = word.ends_with('-') && isNumber(word.substr(0, word.size() - 1)) && isNumber(behind);
  return isOpen ? std::string(word.substr(0, word.size() - 1)) + " - " + std::string(behind) : "";
}

bool isHeader(std::string_view line) { return line.starts_with('H'); }

/// The words of a line one after another; an empty word behind the last.
class Words {
 public:
  explicit Words(std::string_view line) : rest_(line) {}

  std::string_view next() {
    rest_ = trimText(rest_);
    const std::string_view word = rest_.substr(0, rest_.find_first_of(" \t\r\n\v\f"));
    rest_.remove_prefix(word.size());
    return word;
  }
  /// The next word as a number; a word that is not there leaves the value. @return false for a word that is no number
  bool number(double* value) {
    const std::string word(next());
    if (word.empty()) return true;
    char* end = nullptr;
    const double parsed = std::strtod(word.c_str(), &end);
    if (end != word.c_str() + word.size() || !std::isfinite(parsed)) return false;
    *value = parsed;
    return true;
  }
  /// Passes over a lone "-". @return whether it came next
  bool dash() {
    const std::string_view before = rest_;
    if (next() == "-") return true;
    rest_ = before;
    return false;
  }
  bool end() { return trimText(rest_).empty(); }

 private:
  std::string_view rest_;
};

void complain(const char* what, const std::string& path, const LineReader& lines) {
  console_printf("  *** Line %d of %s %s: %s", lines.lineNumber(), path.c_str(), what,
                 lines.line().substr(0, 60).c_str());
}

// ---- range form -------------------------------------------------------------------------------------------------

struct Span {
  double start = 0;
  double end = 0;
};

struct RangeLine {
  Span primary;
  Span secondary;
};

/// "A" or "A - B".
bool parseSpan(Words* words, Span* span) {
  if (!words->number(&span->start)) return false;
  span->end = span->start;
  double last = 0;  // stays when nothing stands behind the "-"
  if (words->dash()) {
    if (!words->number(&last)) return false;
    span->end = std::max(span->start, last);
  }
  return true;
}

bool parseRange(std::string_view line, bool useSecondary, RangeLine* range) {
  *range = {};
  if (isHeader(line)) return true;
  Words words(line);
  return parseSpan(&words, &range->primary) && (!useSecondary || parseSpan(&words, &range->secondary));
}

/// The first range of a line that has not a blank on each side of its "-", as it should be written; empty when there is
/// none.
std::string unspacedRange(std::string_view line) {
  Words words(line);
  std::string range;
  while (range.empty() && !words.end()) {
    const std::string_view word = words.next();
    Words rest = words;
    range = spacedRange(word, rest.next());
  }
  return range;
}

/// Points that memory is surely there for: half of the machine's.
std::size_t pointLimit() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageBytes = sysconf(_SC_PAGESIZE);
  const std::size_t bytes = pages > 0 && pageBytes > 0
                                ? static_cast<std::size_t>(pages) / 2 * static_cast<std::size_t>(pageBytes)
                                : std::size_t{1} << 30;
  return std::min<std::size_t>(bytes / sizeof(RangeItem), INT_MAX);
}

/// Points of one line, 0 when there are too many.
std::size_t pointsOf(const RangeLine& range, std::size_t limit) {
  const std::size_t primaries = stepsOf(range.primary.start, range.primary.end, limit);
  const std::size_t secondaries = stepsOf(range.secondary.start, range.secondary.end, limit);
  if (primaries == 0 || secondaries == 0 || primaries > limit / secondaries) return 0;
  return primaries * secondaries;
}

void expand(const RangeLine& range, std::vector<RangeItem>* points) {
  double primary = range.primary.start;
  do {
    double secondary = range.secondary.start;
    do {
      points->push_back({primary, secondary});
      secondary += 1.0;
    } while (secondary <= range.secondary.end);
    primary += 1.0;
  } while (primary <= range.primary.end);
}

// ---- a list file's two passes -----------------------------------------------------------------------------------

/// What the first pass finds.
struct ListSurvey {
  std::size_t entries = 0;
  std::size_t headers = 0;
  bool rangeForm = false;
};

class ListFile {
 public:
  ListFile(const std::string& listPath, bool secondary) : path_(listPath), useSecondary_(secondary) {}

  bool read(std::vector<RangeItem>* points);

 private:
  bool survey(std::FILE* file);
  bool readPoints(std::FILE* file, std::vector<RangeItem>* points);
  bool readRanges(std::FILE* file, std::vector<RangeItem>* points);
  template <typename Use>
  bool forEachRange(std::FILE* file, Use use);
  bool readError() const {
    console_printf("  *** Error reading list file: %s", path_.c_str());
    return false;
  }

  const std::string& path_;
  bool useSecondary_;
  ListSurvey found_;
};

bool ListFile::survey(std::FILE* file) {
  LineReader lines(file);
  while (lines.next()) {
    found_.rangeForm = found_.rangeForm || lines.line().find('-') != std::string::npos;
    ++(isHeader(lines.line()) ? found_.headers : found_.entries);
    const std::string range = isHeader(lines.line()) ? "" : unspacedRange(lines.line());
    if (!range.empty()) {
      complain(formatText("holds a range without blanks, which is written %s", range.c_str()).c_str(), path_, lines);
      return false;
    }
  }
  if (found_.entries > pointLimit()) {
    console_printf("  *** More entries than can be held in list file: %s", path_.c_str());
    return false;
  }
  return !lines.failed() || readError();
}

bool ListFile::readPoints(std::FILE* file, std::vector<RangeItem>* points) {
  std::rewind(file);
  LineReader lines(file);
  while (lines.next()) {
    if (isHeader(lines.line())) continue;
    RangeItem point{};
    Words words(lines.line());
    if (!words.number(&point.primary) || (useSecondary_ && !words.number(&point.secondary))) {
      complain("holds no number", path_, lines);
      return false;
    }
    points->push_back(point);
  }
  return !lines.failed() || readError();
}

/// Runs over as many lines as there are entries, headers not passed over.
template <typename Use>
bool ListFile::forEachRange(std::FILE* file, Use use) {
  std::rewind(file);
  LineReader lines(file);
  for (std::size_t i = 0; i < found_.entries; ++i) {
    RangeLine range;
    if (!lines.next()) return readError();
    if (!parseRange(lines.line(), useSecondary_, &range)) {
      complain("holds no number", path_, lines);
      return false;
    }
    if (!use(range, lines)) return false;
  }
  return true;
}

bool ListFile::readRanges(std::FILE* file, std::vector<RangeItem>* points) {
  if (found_.headers > 0) {
    const std::size_t lost = std::min(found_.headers, found_.entries);
    console_printf(
        "  ** The list file holds a \"-\" and is read in range form: its header lines (%zu) are taken as entries and "
        "its "
        "last entries (%zu) are not read.",
        found_.headers, lost);
  }
  const std::size_t limit = pointLimit();
  std::size_t total = 0;
  const bool counted = forEachRange(file, [&](const RangeLine& range, const LineReader& lines) {
    const std::size_t count = pointsOf(range, limit - total);
    total += count;
    if (count == 0) complain("stands for more points than can be held", path_, lines);
    return count != 0;
  });
  if (!counted) return false;
  points->reserve(total);
  return forEachRange(file, [points](const RangeLine& range, const LineReader&) {
    expand(range, points);
    logBlank();
    return true;
  });
}

bool ListFile::read(std::vector<RangeItem>* points) {
  const FileHandle file = openFile(path_.c_str(), "r");
  if (!file) {
    console_printf("  *** Error opening list file: %s", path_.c_str());
    return false;
  }
  try {
    return survey(file.get()) && (found_.rangeForm ? readRanges(file.get(), points) : readPoints(file.get(), points));
  } catch (const std::bad_alloc&) {
    console_printf("  *** Not enough memory for the points of list file: %s", path_.c_str());
    return false;
  }
}

}  // namespace

int getRange(std::FILE* file, double* primStart, double* primEnd, double* secStart, double* secEnd) {
  LineReader lines(file);
  RangeLine range;
  if (!lines.next() || !parseRange(lines.line(), SgyParams.listParams.useSec, &range)) return 0;
  *primStart = range.primary.start;
  *primEnd = range.primary.end;
  *secStart = range.secondary.start;
  *secEnd = range.secondary.end;
  return 1;
}

std::size_t stepsOf(double start, double end, std::size_t limit) {
  if (!(end > start)) return limit > 0 ? 1 : 0;
  // The ends advance, so all between them does: doubles grow coarser away from zero only.
  if (end - start >= static_cast<double>(limit) || start + 1.0 == start || end + 1.0 == end) return 0;
  std::size_t count = 0;
  double value = start;
  while (value <= end) {
    ++count;
    value += 1.0;
  }
  return count <= limit ? count : 0;
}

bool readListFile(const std::string& path, bool useSecondary, std::vector<RangeItem>* points) {
  points->clear();
  return ListFile(path, useSecondary).read(points);
}

bool readPolygonFile(const std::string& path, std::vector<PolygonElement>* points) {
  points->clear();
  const FileHandle file = openFile(path.c_str(), "r");
  if (!file) {
    console_printf("  *** Error opening polygon file: %s", path.c_str());
    return false;
  }
  LineReader lines(file.get());
  if (!lines.next()) {
    console_printf("  *** Error reading polygon file: %s", path.c_str());
    return false;
  }
  char* end = nullptr;
  const long count = std::strtol(lines.line().c_str(), &end, 10);
  if (end == lines.line().c_str() || count < 1 || count > INT_MAX - 1) {
    complain("is no number of points", path, lines);
    return false;
  }
  // Grown point by point: a count that the file does not hold costs nothing.
  for (long i = 0; i < count; ++i) {
    if (!lines.next()) {
      console_printf("  *** Error reading polygon file: %s", path.c_str());
      return false;
    }
    PolygonElement point{};
    Words words(lines.line());
    if (!words.number(&point.x) || words.end() || !words.number(&point.y)) {
      complain("holds no point", path, lines);
      return false;
    }
    points->push_back(point);
  }
  return true;
}
