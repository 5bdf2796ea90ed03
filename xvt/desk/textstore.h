/// What a text field holds: lines in chunks of memory that are never moved, and selections over them. Knows no X.
#pragma once

#include <compare>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xvt {

/// Lines of bytes. A line costs its bytes, a length, a NUL and one pointer; nothing is copied when the store grows
/// except the pointers.
class TextStore {
 public:
  /// Inserts before line `index` (0 to count()). Constant time at the end.
  void insert(std::size_t index, std::string_view text);
  void clear();
  std::size_t count() const { return lines_.size(); }
  /// The bytes of a line, a NUL behind them; empty out of range. Valid until clear().
  std::string_view line(std::size_t index) const;

 private:
  char* room(std::size_t bytes);

  std::vector<std::unique_ptr<char[]>> chunks_;
  std::size_t used_ = 0;      ///< bytes used of the newest chunk
  std::size_t capacity_ = 0;  ///< and its size
  std::vector<const char*> lines_;
};

/// A place between two characters.
struct TextPosition {
  std::size_t line = 0;
  std::size_t byte = 0;
  auto operator<=>(const TextPosition&) const = default;  // NOLINT(modernize-use-nullptr): taken for a 0
};

/// From `begin` up to, not including, `end`.
struct TextRange {
  TextPosition begin;
  TextPosition end;
  bool empty() const { return begin == end; }
};

/// What one step of a selection takes in: one click, two, three.
enum class TextUnit { character, word, line };

/// The character, word or line at a place.
TextRange unitAt(const TextStore& store, TextPosition place, TextUnit unit);
/// The place one character or word before or behind; the same place at the ends of the text.
TextPosition placeBefore(const TextStore& store, TextPosition place, TextUnit unit);
TextPosition placeBehind(const TextStore& store, TextPosition place, TextUnit unit);
/// The place behind the last character.
TextPosition endOf(const TextStore& store);
/// The line in which a range begins, and the bytes of that line which are in it.
long partOfFirstLine(const TextStore& store, TextRange range, std::size_t* begin, std::size_t* end);
/// The bytes of a range, lines joined by newlines.
std::string textOf(const TextStore& store, TextRange range);

}  // namespace xvt
