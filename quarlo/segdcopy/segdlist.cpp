#include "quarlo/segdcopy/segdlist.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy_log.h"
#include "quarlo/segdcopy/segdcopy_params.h"

SortedIntArray FFIDList;
SortedIntArray ZeroList;

// ---- sets of numbers --------------------------------------------------------------------------------------------

int CompareInts(const IntRange& one, const IntRange& other) {
  return one.start < other.start ? -1 : one.start > other.start ? 1 : 0;
}

void SortedIntArray::add(int start, int end) {
  runs_.push_back({start, std::max(start, end)});
  settled_ = false;
}

void SortedIntArray::clear() {
  runs_.clear();
  settled_ = true;
}

void SortedIntArray::settle() const {
  if (settled_) return;
  std::sort(runs_.begin(), runs_.end(),
            [](const IntRange& one, const IntRange& other) { return CompareInts(one, other) < 0; });
  std::size_t last = 0;
  for (std::size_t i = 1; i < runs_.size(); ++i)
    if (runs_[i].start - 1LL <= runs_[last].end)
      runs_[last].end = std::max(runs_[last].end, runs_[i].end);
    else
      runs_[++last] = runs_[i];
  runs_.resize(last + 1);
  settled_ = true;
}

std::span<const IntRange> SortedIntArray::ranges() const {
  settle();
  return runs_;
}

bool SortedIntArray::contains(int value) const {
  settle();
  const auto behind = std::upper_bound(runs_.begin(), runs_.end(), value,
                                       [](int wanted, const IntRange& run) { return wanted < run.start; });
  return behind != runs_.begin() && value <= (behind - 1)->end;
}

long long SortedIntArray::indexOf(int value) const {
  long long before = 0;
  for (const IntRange& run : ranges()) {
    if (value >= run.start && value <= run.end) return before + value - run.start;
    before += run.end - 1LL * run.start + 1;
  }
  return -1;
}

// ---- lines ------------------------------------------------------------------------------------------------------

namespace {

/// The number at the beginning of a text, behind blanks, or 0. @param end receives what stands behind it
int leadingNumber(const char* text, const char** end) {
  char* behind = nullptr;
  const long long number = std::strtoll(text, &behind, 10);
  *end = behind;
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

/// What a line of a list says.
struct ListLine {
  IntRange range{0, 0};
  bool isNumber = false;
  bool lostRest = false;  // what stands behind the number is no range
};

ListLine parse(const char* text) {
  ListLine line;
  const char* rest = nullptr;
  line.range.start = line.range.end = leadingNumber(text, &rest);
  line.isNumber = rest != text;
  const std::string_view behind = trimText(rest);
  if (!line.isNumber || behind.empty()) return line;
  const std::string_view word = behind.substr(0, behind.find_first_of(" \t\r\n\v\f"));
  const auto mayBeMeant = [](std::string_view remark) {
    return remark.find_first_of("-0123456789") != std::string_view::npos;  // another remark is no loss
  };
  if (word != "-") {
    line.lostRest = mayBeMeant(behind);
    return line;
  }
  const char* const last = behind.data() + word.size();
  const int end = leadingNumber(last, &rest);
  line.range.end = rest == last ? line.range.start : std::max(line.range.start, end);
  line.lostRest = mayBeMeant(rest);
  return line;
}

void warnOfLine(const ListLine& line, int number, const std::string& text, const std::string& path) {
  if (line.isNumber && !line.lostRest) return;
  const IntRange range = line.range;
  const std::string taken =
      range.start == range.end ? formatText("%d", range.start) : formatText("%d - %d", range.start, range.end);
  logMessagef("  ** Line %d of %s is taken as %s only: %s", number, path.c_str(), taken.c_str(),
              text.substr(0, 60).c_str());
}

int readList(const std::string& path, SortedIntArray* list) {
  list->clear();
  const FileHandle file = openFile(path.c_str(), "r");
  if (!file) {
    logMessagef("  *** Error opening list file: %s", path.c_str());
    return -1;
  }
  std::string text;
  for (int number = 1; readTextLine(file.get(), &text); ++number) {
    if (!text.empty()) {
      const ListLine line = parse(text.c_str());
      warnOfLine(line, number, text, path);
      list->add(line.range.start, line.range.end);
    }
    logMessage(" ");
  }
  if (std::ferror(file.get()) != 0) {
    logMessagef("  *** Error reading list file: %s", path.c_str());
    return -1;
  }
  return 0;
}

void announce(const char* line) {
  logMessage(" ");
  logMessage(line);
  logMessage(" ");
}

}  // namespace

void getRange(const char* str, int* start, int* end) {
  const ListLine line = parse(str);
  *start = line.range.start;
  *end = line.range.end;
}

int initFFIDList() {
  announce(SgdParams.recLimType == SEGD_INCLUDE ? "Initializing inclusion files list..."
                                                : "Initializing exclusion files list...");
  return readList(joinPath(fieldText(SgdParams.recLimDir), fieldText(SgdParams.recLimFile)), &FFIDList);
}

int initTraceList() {
  announce("Initializing zero trace header list...");
  return readList(joinPath(fieldText(SgdParams.trcLimDir), fieldText(SgdParams.trcLimFile)), &ZeroList);
}

bool fieldFileInRange(int fieldFile) { return FFIDList.contains(fieldFile) == (SgdParams.recLimType == SEGD_INCLUDE); }

bool traceInZeroRange(int trace) { return ZeroList.contains(trace); }
