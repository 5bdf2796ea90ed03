#include "xvt/boxes/listing.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "xvt/base/naturalorder.h"
#include "xvt/base/urilist.h"
#include "xvt/base/utf8.h"

namespace xvt {

void ListOrder::press(SortBy head) {
  reversed = head == by && !reversed;
  by = head;
}

std::string ListOrder::headOf(SortBy head) const {
  static constexpr std::array kWords = {"Name", "Size", "Date"};
  std::string word = kWords[static_cast<std::size_t>(head)];
  if (head != by) return word;
  // The arrow points to where the larger ones are.
  return word + ((head == SortBy::name) != reversed ? " \xE2\x96\xB2" : " \xE2\x96\xBC");
}

namespace {

/// An entry with what it is compared by.
struct Keyed {
  std::string key;
  std::size_t at;
};

long long valueOf(const DirectoryEntry& entry, SortBy by) {
  if (by == SortBy::size) return entry.isDirectory ? 0 : entry.size;
  return by == SortBy::date ? static_cast<long long>(entry.changed) : 0;
}

int compareNames(const Keyed& one, const Keyed& other, const Entries& entries) {
  if (const int order = compareNatural(one.key, other.key); order != 0) return order;
  return entries[one.at].name.compare(entries[other.at].name);
}

}  // namespace

void sortEntries(Entries* entries, ListOrder order) {
  std::vector<Keyed> places;
  places.reserve(entries->size());
  for (std::size_t at = 0; at < entries->size(); ++at) places.push_back({folded((*entries)[at].name), at});
  std::sort(places.begin(), places.end(), [&](const Keyed& one, const Keyed& other) {
    const DirectoryEntry& a = (*entries)[one.at];
    const DirectoryEntry& b = (*entries)[other.at];
    if (a.isDirectory != b.isDirectory) return a.isDirectory;
    const long long left = valueOf(a, order.by);
    const long long right = valueOf(b, order.by);
    if (left != right) return (left > right) != order.reversed;
    const int names = compareNames(one, other, *entries);
    return order.by == SortBy::name && order.reversed ? names > 0 : names < 0;
  });
  Entries sorted;
  sorted.reserve(places.size());
  for (const Keyed& place : places) sorted.push_back(std::move((*entries)[place.at]));
  *entries = std::move(sorted);
}

std::string shownName(std::string_view name) {
  std::string shown;
  for (const char byte : validUtf8(name)) {
    const bool control = static_cast<unsigned char>(byte) < ' ' || byte == '\x7F';
    control ? shown += "\xEF\xBF\xBD" : shown += byte;
  }
  return shown;
}

std::string shownSize(long long bytes) {
  static constexpr std::array kUnits = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1000) return std::to_string(bytes) + " B";
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  // What would be rounded to a thousand is one of the next unit.
  for (; value >= 999.5 && unit + 1 < kUnits.size(); ++unit) value /= 1000;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), value < 99.95 ? "%.1f %s" : "%.0f %s", value, kUnits.at(unit));
  return text.data();
}

std::string shownDate(std::time_t time) {
  std::tm parts{};
  std::array<char, 64> text{};
  if (localtime_r(&time, &parts) == nullptr) return "";
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &parts);
  return text.data();
}

std::string rowOf(const DirectoryEntry& entry, bool withSize) {
  std::string row = shownName(entry.name) + (entry.isDirectory ? "/" : "");
  if (withSize) row += '\t';
  if (withSize && !entry.isDirectory) row += entry.leadsNowhere ? "leads nowhere" : shownSize(entry.size);
  return row + '\t' + (entry.changed != 0 ? shownDate(entry.changed) : "");
}

namespace {

/// What two texts begin with both, in whole characters.
std::string commonBegin(const std::string& one, const std::string& other) {
  const auto end = std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first;
  auto length = static_cast<std::size_t>(end - one.begin());
  while (length > 0 && length < one.size() && (static_cast<unsigned char>(one[length]) & 0xC0U) == 0x80U) --length;
  return one.substr(0, length);
}

template <typename Begins>
Completion completionWhere(const Entries& entries, Begins begins) {
  Completion found;
  for (const DirectoryEntry& entry : entries) {
    const std::string name = shownName(entry.name);
    if (!begins(name)) continue;
    found.text = found.count++ == 0 ? name : commonBegin(found.text, name);
    if (found.first == nullptr) found.first = &entry;
  }
  return found;
}

}  // namespace

Completion completionOf(const Entries& entries, const std::string& begin) {
  const bool hidden = begin.starts_with('.');
  const auto seen = [hidden](const std::string& name) { return hidden || !name.starts_with('.'); };
  Completion exact =
      completionWhere(entries, [&](const std::string& name) { return seen(name) && name.starts_with(begin); });
  if (exact.count > 0) return exact;
  const std::string key = folded(begin);
  Completion any =
      completionWhere(entries, [&](const std::string& name) { return seen(name) && folded(name).starts_with(key); });
  // Names in several cases: what they have in common may be shorter than what stands there.
  if (any.text.size() < begin.size()) any.text = begin;
  return any;
}

namespace {

bool isAround(const std::string& text, char mark) {
  return text.size() > 2 && text.front() == mark && text.back() == mark;
}

}  // namespace

std::string pathFrom(std::string text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t from = text.find_first_not_of(kBlanks);
  if (from == std::string::npos) return "";
  text = text.substr(from, text.find_last_not_of(kBlanks) - from + 1);
  if (isAround(text, '"') || isAround(text, '\'')) text = text.substr(1, text.size() - 2);
  const std::vector<std::string> paths = pathsOf(text);
  return paths.empty() ? text : paths.front();
}

}  // namespace xvt
