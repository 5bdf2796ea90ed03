/// Text helpers: bounded copies into the fixed fields of records, formatted strings, trimming.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

/// Copies `text` into a field of `size` bytes, the terminator included. A text that is too long is cut behind its last
/// whole UTF-8 character; the rest of the field is filled with zero bytes, so that records compare and store alike.
/// `text` must not lie within the field.
/// @return true when the whole text fitted
bool copyText(char* field, std::size_t size, std::string_view text);

template <std::size_t N>
bool copyText(char (&field)[N], std::string_view text) {
  return copyText(field, N, text);
}

/// The text of a fixed field that may lack its terminator.
template <std::size_t N>
std::string_view fieldText(const char (&field)[N]) {
  const std::string_view whole(field, N);
  return whole.substr(0, whole.find('\0'));
}

/// Whether such a field holds this text. Most comparisons end at the first character.
template <std::size_t N>
bool fieldIs(const char (&field)[N], const char* text) {
  return field[0] == text[0] && std::strncmp(field, text, N) == 0 && fieldText(field).size() == std::strlen(text);
}

/// `text` without the blanks, tabs and line ends around it.
std::string_view trimText(std::string_view text);

/// The ending of a plural: "s" for counts above one.
constexpr const char* plural(long long count) { return count > 1 ? "s" : ""; }

/// printf into a string of any length. A format that the C library refuses gives an empty string.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);
[[gnu::format(printf, 1, 0)]] std::string formatTextV(const char* format, std::va_list arguments);
