#include "xvt/desk/textstore.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "xvt/base/utf8.h"

namespace xvt {

namespace {

using LineLength = std::uint32_t;

constexpr std::size_t kChunk = std::size_t{256} << 10;
constexpr std::size_t kLongestLine = UINT32_MAX;

bool isWordByte(char byte) {
  const auto c = static_cast<unsigned char>(byte);
  return c >= 0x80 || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
         c == '-' || c == '.' || c == '/';
}

/// Bytes of the same kind stand together as a word.
bool sameKind(char a, char b) {
  if (isWordByte(a) || isWordByte(b)) return isWordByte(a) && isWordByte(b);
  return a == b;
}

std::size_t characterLength(std::string_view rest) { return std::max<std::size_t>(1, utf8SequenceLength(rest)); }

/// A valid sequence that ends at `end` is one character, anything else is one byte.
std::size_t characterStart(std::string_view line, std::size_t end) {
  for (std::size_t length = 4; length > 1; --length)
    if (end >= length && utf8SequenceLength(line.substr(end - length)) == length) return end - length;
  return end - 1;
}

TextRange wordAt(std::string_view line, TextPosition place) {
  if (line.empty()) return {place, place};
  const std::size_t at = std::min(place.byte, line.size() - 1);
  std::size_t begin = at;
  std::size_t end = at + 1;
  while (begin > 0 && sameKind(line[begin - 1], line[at])) --begin;
  while (end < line.size() && sameKind(line[end], line[at])) ++end;
  return {{place.line, begin}, {place.line, end}};
}

}  // namespace

char* TextStore::room(std::size_t bytes) {
  if (bytes > capacity_ - used_) {
    const std::size_t size = std::max(bytes, kChunk);
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(size));
    used_ = 0;
    capacity_ = size;
  }
  char* place = chunks_.back().get() + used_;
  used_ += bytes;
  return place;
}

void TextStore::insert(std::size_t index, std::string_view text) {
  text = text.substr(0, kLongestLine);
  const auto length = static_cast<LineLength>(text.size());
  char* place = room(sizeof length + text.size() + 1);
  std::memcpy(place, &length, sizeof length);
  place += sizeof length;
  std::copy(text.begin(), text.end(), place);
  place[text.size()] = '\0';
  index = std::min(index, lines_.size());
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(index), place);
}

void TextStore::clear() {
  std::vector<const char*>().swap(lines_);
  chunks_.clear();
  used_ = capacity_ = 0;
}

std::string_view TextStore::line(std::size_t index) const {
  if (index >= lines_.size()) return "";
  LineLength length = 0;
  std::memcpy(&length, lines_[index] - sizeof length, sizeof length);
  return {lines_[index], length};
}

TextRange unitAt(const TextStore& store, TextPosition place, TextUnit unit) {
  switch (unit) {
    case TextUnit::word:
      return wordAt(store.line(place.line), place);
    case TextUnit::line:
      return {{place.line, 0}, place.line + 1 < store.count() ? TextPosition{place.line + 1, 0} : endOf(store)};
    default:
      return {place, place};
  }
}

TextPosition placeBefore(const TextStore& store, TextPosition place, TextUnit unit) {
  if (place.byte == 0) {
    if (place.line == 0) return place;
    return {place.line - 1, store.line(place.line - 1).size()};
  }
  const std::string_view line = store.line(place.line);
  if (unit == TextUnit::character) return {place.line, characterStart(line, std::min(place.byte, line.size()))};
  std::size_t at = place.byte;
  while (at > 0 && line[at - 1] == ' ') --at;
  return at == 0 ? TextPosition{place.line, 0} : wordAt(line, {place.line, at - 1}).begin;
}

TextPosition placeBehind(const TextStore& store, TextPosition place, TextUnit unit) {
  const std::string_view line = store.line(place.line);
  if (place.byte >= line.size()) return place.line + 1 < store.count() ? TextPosition{place.line + 1, 0} : place;
  if (unit == TextUnit::character) return {place.line, place.byte + characterLength(line.substr(place.byte))};
  std::size_t at = place.byte;
  while (at < line.size() && line[at] == ' ') ++at;
  return at == line.size() ? TextPosition{place.line, at} : wordAt(line, {place.line, at}).end;
}

TextPosition endOf(const TextStore& store) {
  if (store.count() == 0) return {};
  return {store.count() - 1, store.line(store.count() - 1).size()};
}

long partOfFirstLine(const TextStore& store, TextRange range, std::size_t* begin, std::size_t* end) {
  const std::size_t length = store.line(range.begin.line).size();
  *begin = std::min(range.begin.byte, length);
  *end = range.end.line == range.begin.line ? std::min(range.end.byte, length) : length;
  return static_cast<long>(range.begin.line);
}

std::string textOf(const TextStore& store, TextRange range) {
  std::string text;
  for (std::size_t number = range.begin.line; number <= range.end.line && number < store.count(); ++number) {
    std::string_view line = store.line(number);
    if (number == range.end.line) line = line.substr(0, range.end.byte);
    if (number == range.begin.line) line.remove_prefix(std::min(range.begin.byte, line.size()));
    text += line;
    if (number != range.end.line) text += '\n';
  }
  return text;
}

}  // namespace xvt
